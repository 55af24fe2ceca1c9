// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OutputFile.h"

#include "engine/PatchTextChunks.h"

#include <optional>

namespace morvanelab
{

/** What a slot stores around its patch, in the list of a bank: the keys "comment", "panel" and "stored". */
struct SlotForm
{
    MVSmartPtr<MVRiffPacker> comment; ///< 'pcom', or null
    MVSmartPtr<MVRiffPacker> panel;   ///< 'pane', or null
    /** The slot's whole data, where it cannot be had from the patch, a comment and a panel. */
    std::optional<Bytes> stored;

    /** The parts of a slot's data. What stands in stored as well, if anything is lost without. */
    static SlotForm of (const Bytes& slotData);
    /** Takes the three keys of an entry. Raises MVException with the place. */
    static SlotForm fromJson (const patchText::Json& entry, const TextPlace& place);
    /** Adds the keys to an entry: "stored" alone, or "comment" and "panel" as far as they exist. */
    void addTo (patchText::Json& entry) const;

    /** Whether stored holds that very patch, and is the slot's data as it is. */
    bool isStoredWith (const Bytes& patch) const;
    /** A slot's data around a patch file's bytes; an empty slot for an empty patch. */
    Bytes slotData (const Bytes& patch) const;
};

} // namespace morvanelab
