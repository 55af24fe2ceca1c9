// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVBankFile.h"

#include "banks/MVBankBytes.h"
#include "foundation/MVException.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <algorithm>
#include <map>
#include <utility>

namespace morvanelab
{

namespace
{

constexpr std::uint32_t bankMetaType = fourCC ("meta");
constexpr std::uint32_t patchMetaType = fourCC ("pmta");
constexpr std::uint32_t patchDataType = fourCC ("pdat");
constexpr std::uint32_t slotFormType = fourCC ("RIFF");
constexpr std::uint32_t slotPatchType = fourCC ("data");
constexpr std::uint32_t slotCommentType = fourCC ("pcom");
constexpr std::uint32_t slotPanelType = fourCC ("pane");

constexpr std::uint8_t emptySlot[] { 0 };

bool isSlotIndex (int index) { return index >= 0 && index < MVBankFile::maxPatchesPerBank; }

MVSmartPtr<MVDataBlock> emptySlotBytes() { return makeSmart<MVDataBlock> (emptySlot, 1); }

MVSmartPtr<MVDataBlock> emptyMetaBytes() { return packChunks (MVMetaData().packRiff()); }

/** Shares a child rather than copying it: a copied chunk with children of its own would lose its payload. */
void passOn (MVRiffPacker& to, const MVRiffPacker& from, std::uint32_t chunkId)
{
    to.addChild (from.findChild (chunkId));
}

} // namespace

void MVBankFile::createBank (const juce::File& file)
{
    const auto meta = emptyMetaBytes();
    const auto metaBytes = bytesOf (meta);
    std::vector<NewCompartment> layout { { bankMetaType, compartmentRiff, metaBytes } };
    for (int slot = 0; slot < maxPatchesPerBank; ++slot)
    {
        layout.push_back ({ patchMetaType, compartmentRiff, metaBytes });
        layout.push_back ({ patchDataType, compartmentRaw, emptySlot });
    }

    createWith (file, bankFileType, layout);
}

bool MVBankFile::isLayoutValid() const
{
    int bankMetas = 0;
    int patchMetas = 0;
    int patches = 0;
    countCompartments (bankMetaType, bankMetas);
    countCompartments (patchMetaType, patchMetas);
    countCompartments (patchDataType, patches);
    return bankMetas == 1 && patchMetas == maxPatchesPerBank && patches == patchMetas;
}

int MVBankFile::validateAndRepair (MVUserPrompt& prompt)
{
    if (isLayoutValid())
        return resultDone;

    if (! prompt.askYesNo ("Bank File Damaged", "The bank file you are trying to load appears to be damaged.  "
                                                "Would you like Ondrelith to attempt repair?"))
    {
        closeFile();
        return resultRepairRefused;
    }

    repairBank();
    return resultDone;
}

void MVBankFile::repairBank()
{
    int bankMetas = 0;
    int patchMetas = 0;
    int patches = 0;
    countCompartments (bankMetaType, bankMetas);
    countCompartments (patchMetaType, patchMetas);
    countCompartments (patchDataType, patches);

    const auto meta = emptyMetaBytes();
    const auto metaBytes = bytesOf (meta);
    std::vector<NewCompartment> missing;
    if (bankMetas < 1)
        missing.push_back ({ bankMetaType, compartmentRiff, metaBytes });
    for (int i = patchMetas; i < maxPatchesPerBank; ++i)
        missing.push_back ({ patchMetaType, compartmentRiff, metaBytes });
    for (int i = patches; i < maxPatchesPerBank; ++i)
        missing.push_back ({ patchDataType, compartmentRaw, emptySlot });

    if (! missing.empty())
        appendCompartments (missing);
}

MVSmartPtr<MVMetaData> MVBankFile::readMeta (std::uint32_t type, int index)
{
    auto meta = makeSmart<MVMetaData>();
    MVSmartPtr<MVRiffPacker> riff;
    if (readRiffCompartment (type, index, riff) == resultDone)
        meta->unpackRiff (*riff);
    return meta;
}

MVSmartPtr<MVMetaData> MVBankFile::getBankMeta() { return readMeta (bankMetaType, 0); }

bool MVBankFile::setBankMeta (const MVSmartPtr<MVMetaData>& meta)
{
    return meta && replaceRiffCompartment (bankMetaType, 0, meta->packRiff()) == resultDone;
}

MVSmartPtr<MVMetaData> MVBankFile::getPatchMeta (int index)
{
    return isSlotIndex (index) ? readMeta (patchMetaType, index) : makeSmart<MVMetaData>();
}

bool MVBankFile::setPatchMeta (int index, const MVSmartPtr<MVMetaData>& meta)
{
    return meta && isSlotIndex (index) && replaceRiffCompartment (patchMetaType, index, meta->packRiff()) == resultDone;
}

MVSmartPtr<MVDataBlock> MVBankFile::getPatchData (int index)
{
    MVSmartPtr<MVDataBlock> data;
    if (isSlotIndex (index))
        readRawPatchData (index, data);
    return data ? data : makeSmart<MVDataBlock>();
}

int MVBankFile::setPatchData (int index, const MVSmartPtr<MVDataBlock>& bytes)
{
    if (! isSlotIndex (index))
        return resultOutOfRange;
    return writeCompartment (patchDataType, index, compartmentRaw, bytesOf (bytes).empty() ? emptySlotBytes() : bytes,
                             false);
}

int MVBankFile::clearSlot (int index)
{
    return writeSlots ({ { index, makeSmart<MVMetaData>(), makeSmart<MVDataBlock>() } });
}

int MVBankFile::writeSlots (const std::vector<SlotContent>& slots)
{
    if (! std::all_of (slots.begin(), slots.end(), [] (const auto& slot) { return isSlotIndex (slot.index); }))
        return resultOutOfRange;

    // The packed forms have to live until they are written.
    std::vector<MVSmartPtr<MVDataBlock>> blocks;
    std::map<std::pair<std::uint32_t, int>, Replacement> replacements;
    const auto replace = [&] (std::uint32_t type, int index, std::uint32_t format, const MVSmartPtr<MVDataBlock>& block)
    {
        blocks.push_back (bytesOf (block).empty() ? emptySlotBytes() : block);
        replacements[{ type, index }] = { type, index, format, bytesOf (blocks.back()) };
    };
    for (const auto& slot : slots)
    {
        if (slot.metadata)
        {
            const auto packed = packChunks (slot.metadata->packRiff());
            if (packed->totalSize() < 1)
                return resultEmptyData;
            replace (patchMetaType, slot.index, compartmentRiff, packed);
        }
        if (slot.bytes)
            replace (patchDataType, slot.index, compartmentRaw, slot.bytes);
    }

    std::vector<Replacement> all;
    for (const auto& [key, replacement] : replacements)
        all.push_back (replacement);
    return replaceCompartments (all);
}

bool MVBankFile::isOccupied (const MVSmartPtr<MVDataBlock>& bytes) { return bytes && bytes->totalSize() > 1; }

MVSmartPtr<MVDataBlock> MVBankFile::buildPatchStream (const MVSmartPtr<MVMetaData>& meta,
                                                      const MVSmartPtr<MVDataBlock>& bytes)
{
    const auto slot = parseChunks (bytesOf (bytes));
    if (! slot)
        return makeSmart<MVDataBlock>();

    auto form = makeSmart<MVRiffPacker> (slotFormType);
    for (const auto chunkId : { slotPatchType, slotCommentType, slotPanelType })
        passOn (*form, *slot, chunkId);
    if (meta)
        form->addChild (meta->packRiff());
    return packChunks (form);
}

MVSmartPtr<MVDataBlock> MVBankFile::packSlot (const MVSmartPtr<MVDataBlock>& patch,
                                              const MVSmartPtr<MVDataBlock>& formerSlot)
{
    const auto patchBytes = bytesOf (patch);
    if (patchBytes.empty())
        return makeSmart<MVDataBlock>();

    auto form = makeSmart<MVRiffPacker> (slotFormType);
    form->addChild (makeSmart<MVRiffPacker> (slotPatchType, patchBytes.data(), static_cast<int> (patchBytes.size())));

    if (const auto former = parseChunks (bytesOf (formerSlot)); former)
        for (const auto chunkId : { slotCommentType, slotPanelType })
            passOn (*form, *former, chunkId);
    return packChunks (form);
}

MVSmartPtr<MVDataBlock> MVBankFile::unpackSlot (const MVSmartPtr<MVDataBlock>& slot)
{
    const auto form = parseChunks (bytesOf (slot));
    const auto patch = form ? form->findChild (slotPatchType) : MVSmartPtr<MVRiffPacker>();
    if (! patch || patch->readablePayload() < 1)
        return makeSmart<MVDataBlock>();
    return makeSmart<MVDataBlock> (patch->getPayload(), patch->readablePayload());
}

} // namespace morvanelab
