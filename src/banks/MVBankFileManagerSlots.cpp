// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVBankFileManager.h"

#include "foundation/MVException.h"
#include "foundation/MVLog.h"
#include "foundation/MVResult.h"

#include <algorithm>

// The manager's slots: reading and changing patches, and what is selected.

namespace morvanelab
{

namespace
{

constexpr int maxPatches = MVBankFile::maxPatchesPerBank;

/** Counts the flagged ones; index is the only one, else -1. */
template <typename Wrappers>
int countSelected (const Wrappers& wrappers, int& index)
{
    int count = 0;
    index = -1;
    for (int i = 0; i < wrappers.size(); ++i)
    {
        if (wrappers[i]->selected)
        {
            index = i;
            ++count;
        }
    }
    if (count != 1)
        index = -1;
    return count;
}

template <typename Wrappers>
void clearSelection (Wrappers& wrappers)
{
    for (auto& wrapper : wrappers)
        wrapper->selected = false;
}

} // namespace

MVSmartPtr<MVDataBlock> MVBankFileManager::getPatchData (int bank, int patch) const
{
    const auto wrapper = getBank (bank);
    return wrapper ? wrapper->bank.getPatchData (patch) : makeSmart<MVDataBlock>();
}

MVSmartPtr<MVMetaData> MVBankFileManager::getPatchMeta (int bank, int patch) const
{
    const auto wrapper = getBank (bank);
    return wrapper ? wrapper->bank.getPatchMeta (patch) : makeSmart<MVMetaData>();
}

MVSmartPtr<MVDataBlock> MVBankFileManager::buildPatchStream (const MVSmartPtr<MVMetaData>& meta,
                                                             const MVSmartPtr<MVDataBlock>& bytes) const
{
    return MVBankFile::buildPatchStream (meta, bytes);
}

template <typename Operation>
bool MVBankFileManager::changeFile (MVBankFile_wrapper& wrapper, Operation operation)
{
    try
    {
        if (operation (wrapper.bank) == resultDone)
            return true;
    }
    catch (const MVException& failure)
    {
        mvLog ("ERROR", "morvanelab::MVBankFileManager::changeFile", "%s: %u %s",
               wrapper.bank.getPath().getFullPathName().toRawUTF8(), failure.getCode(), failure.text());
    }
    return false;
}

bool MVBankFileManager::setSelectedBankPatch (int patch, MVSmartPtr<MVDataBlock>& bytes)
{
    const MVBankFile::SlotContent content { patch, {}, bytes ? std::move (bytes) : makeSmart<MVDataBlock>() };
    bytes.clear();
    int bankIndex = -1;
    const auto slot = getPatch (patch);
    if (getSelectedBankIndex (bankIndex) != 1 || ! slot)
        return false;

    const auto wrapper = banks[bankIndex];
    if (! changeFile (*wrapper, [&] (MVBankFile& bank) { return bank.writeSlots ({ content }); }))
    {
        removeBank (bankIndex);
        tellFileFailure();
        return false;
    }

    showSlot (patch, wrapper->bank);
    slot->selected = true;
    slot->occupied = true;
    wrapper->uuid = MVBankUuid::createRandom();
    saveBanks();
    return true;
}

bool MVBankFileManager::writePatches (int bank, const std::vector<MVBankFile::SlotContent>& slots)
{
    const auto wrapper = getBank (bank);
    const auto isInRange = [] (const auto& slot) { return slot.index >= 0 && slot.index < maxPatches; };
    if (! wrapper || ! std::all_of (slots.begin(), slots.end(), isInRange))
        return false;
    if (! changeFile (*wrapper, [&] (MVBankFile& file) { return file.writeSlots (slots); }))
    {
        tellFileFailure();
        return false;
    }

    int shown = -1;
    if (getSelectedBankIndex (shown) == 1 && shown == bank)
        for (const auto& slot : slots)
            showSlot (slot.index, wrapper->bank);

    if (std::any_of (slots.begin(), slots.end(), [] (const auto& slot) { return static_cast<bool> (slot.bytes); }))
    {
        wrapper->uuid = MVBankUuid::createRandom();
        saveBanks();
    }
    return true;
}

bool MVBankFileManager::setPatch (int bank, int patch, const MVSmartPtr<MVMetaData>& meta,
                                  MVSmartPtr<MVDataBlock>& bytes)
{
    const MVBankFile::SlotContent content { patch, meta, bytes ? std::move (bytes) : makeSmart<MVDataBlock>() };
    bytes.clear();
    return writePatches (bank, { content });
}

bool MVBankFileManager::clearPatch (int bank, int patch)
{
    return writePatches (bank, { { patch, makeSmart<MVMetaData>(), makeSmart<MVDataBlock>() } });
}

bool MVBankFileManager::setPatchMeta (int bank, int patch, const MVSmartPtr<MVMetaData>& meta)
{
    return meta && writePatches (bank, { { patch, meta, {} } });
}

bool MVBankFileManager::setBankMeta (int bank, const MVSmartPtr<MVMetaData>& meta)
{
    const auto wrapper = getBank (bank);
    if (! wrapper || ! meta)
        return false;
    if (! changeFile (*wrapper,
                      [&] (MVBankFile& file) { return file.setBankMeta (meta) ? resultDone : resultNoEntry; }))
    {
        tellFileFailure();
        return false;
    }

    wrapper->metadata = meta;
    saveBanks();
    return true;
}

void MVBankFileManager::tellFileFailure() { prompt.tell ("File I/O Exception", "Failed to access.  File moved?"); }

int MVBankFileManager::getSelectedBankIndex (int& index) const { return countSelected (banks, index); }

int MVBankFileManager::getSelectedPatchIndex (int& index) const { return countSelected (patches, index); }

void MVBankFileManager::setBankSelected (int index, bool on, bool alwaysRefresh)
{
    const auto wrapper = getBank (index);
    if (! wrapper)
        return;

    int before = -1;
    int after = -1;
    getSelectedBankIndex (before);
    wrapper->selected = on;
    getSelectedBankIndex (after);

    if (alwaysRefresh || before != after)
        refreshPatches();
}

void MVBankFileManager::refreshPatches()
{
    int bankIndex = -1;
    if (getSelectedBankIndex (bankIndex) != 1)
        return;

    for (int i = 0; i < patches.size(); ++i)
    {
        patches[i]->selected = false;
        showSlot (i, banks[bankIndex]->bank);
    }
}

void MVBankFileManager::showSlot (int patch, MVBankFile& bank)
{
    auto& slot = *patches[patch];
    slot.occupied = false;
    slot.metadata = makeSmart<MVMetaData>();
    try
    {
        slot.metadata = bank.getPatchMeta (patch);
        slot.occupied = MVBankFile::isOccupied (bank.getPatchData (patch));
    }
    catch (const MVException& failure)
    {
        mvLog ("ERROR", "morvanelab::MVBankFileManager::showSlot", "%u: %s", failure.getCode(), failure.text());
    }
}

void MVBankFileManager::selectPatch (int patch, bool on)
{
    int bankIndex = -1;
    const auto slot = getPatch (patch);
    if (getSelectedBankIndex (bankIndex) != 1 || ! slot)
        return;

    slot->selected = on;
    int patchIndex = -1;
    getSelectedPatchIndex (patchIndex);

    deleteSelectionFile();
    if (selectionFile == juce::File())
        return;
    const std::int32_t record[] { bankIndex, patchIndex };
    selectionFile.appendData (record, sizeof (record));
}

bool MVBankFileManager::takeSelection (int& bank, int& patch)
{
    bank = -1;
    patch = -1;

    // Eight bytes are read however large the file is.
    std::int32_t record[] { -1, -1 };
    {
        juce::FileInputStream stream (selectionFile);
        if (stream.openedOk() && stream.read (record, sizeof (record)) == static_cast<int> (sizeof (record)))
        {
            bank = record[0];
            patch = record[1];
        }
    }

    deleteSelectionFile();
    return bank >= 0 && patch >= 0;
}

void MVBankFileManager::clearPatchSelection()
{
    clearSelection (patches);
    deleteSelectionFile();
}

void MVBankFileManager::clearBankSelection()
{
    clearSelection (banks);
    deleteSelectionFile();
    refreshPatches();
}

void MVBankFileManager::deleteSelectionFile()
{
    if (selectionFile.existsAsFile())
        selectionFile.deleteFile();
}

int MVBankFileManager::firstEmptySlot() const
{
    for (int i = 0; i < patches.size(); ++i)
        if (! patches[i]->occupied)
            return i;
    return MVBankFile::maxPatchesPerBank;
}

} // namespace morvanelab
