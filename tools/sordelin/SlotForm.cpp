// SPDX-License-Identifier: GPL-3.0-or-later
#include "SlotForm.h"

#include "BankSlots.h"

#include "banks/MVBankBytes.h"
#include "foundation/MVMath.h"

namespace morvanelab
{

using patchText::Json;
using patchText::member;

namespace
{

constexpr std::uint32_t commentChunk = fourCC ("pcom");
constexpr std::uint32_t panelChunk = fourCC ("pane");

MVSmartPtr<MVRiffPacker> chunkIn (const Json& entry, const char* key, std::uint32_t chunkId, const TextPlace& place)
{
    const Json* const json = member (entry, key);
    if (json == nullptr)
        return {};
    auto chunk = patchText::chunkFromJson (*json, place / key);
    if (chunk->getChunkId() != chunkId)
        (place / key / "id").expected (chunkId == commentChunk ? "\"pcom\"" : "\"pane\"");
    return chunk;
}

} // namespace

SlotForm SlotForm::of (const Bytes& slotData)
{
    SlotForm parts;
    const Bytes patch = patchIn (slotData);
    if (const auto form = parseChunks (spanOf (slotData)); form && ! patch.empty())
    {
        parts.comment = form->findChild (commentChunk);
        parts.panel = form->findChild (panelChunk);
    }

    Json entry = Json::object();
    parts.addTo (entry);
    if (fromJson (entry, TextPlace ("")).slotData (patch) != slotData)
        parts.stored = slotData;
    return parts;
}

SlotForm SlotForm::fromJson (const Json& entry, const TextPlace& place)
{
    SlotForm parts { chunkIn (entry, "comment", commentChunk, place), chunkIn (entry, "panel", panelChunk, place), {} };
    if (const Json* const hex = member (entry, "stored"); hex != nullptr)
    {
        parts.stored = hex->is_string() ? patchText::bytesOfHex (hex->get_ref<const std::string&>()) : std::nullopt;
        if (! parts.stored || parts.stored->empty())
            (place / "stored").expected ("hexadecimal text, two digits a byte");
    }
    return parts;
}

void SlotForm::addTo (Json& entry) const
{
    if (stored)
    {
        entry["stored"] = patchText::hexOf (stored->data(), stored->size());
        return;
    }
    if (comment)
        entry["comment"] = patchText::chunkToJson (*comment);
    if (panel)
        entry["panel"] = patchText::chunkToJson (*panel);
}

bool SlotForm::isStoredWith (const Bytes& patch) const { return stored && patchIn (*stored) == patch; }

Bytes SlotForm::slotData (const Bytes& patch) const
{
    if (isStoredWith (patch))
        return *stored;
    if (patch.empty())
        return emptySlot().data;

    MVSmartPtr<MVDataBlock> former;
    if (stored)
        former = blockOf (*stored);
    else if (comment || panel)
    {
        auto form = makeSmart<MVRiffPacker> (fourCC ("RIFF"));
        form->addChild (MVSmartPtr<MVRiffPacker> (comment));
        form->addChild (MVSmartPtr<MVRiffPacker> (panel));
        former = packChunks (form);
    }
    return bytesOf (*MVBankFile::packSlot (blockOf (patch), former));
}

} // namespace morvanelab
