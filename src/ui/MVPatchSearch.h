// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVLibrarianCatalogue.h"

#include <optional>
#include <vector>

namespace morvanelab
{

/** Finding patches in a catalogue. Message thread; no file is touched. */
struct MVPatchSearch
{
    static constexpr int allBanks = -1;

    juce::String text;   ///< sought in name, author and description; blanks around it do not count; empty finds all
    juce::String genre;  ///< only this genre, whatever its case; empty for any
    int bank = allBanks; ///< only this bank

    /** Whether it narrows down by text or genre. */
    bool isActive() const { return text.trim().isNotEmpty() || genre.isNotEmpty(); }

    /** The occupied slots that match, in the order of the list. */
    std::vector<MVPatchAddress> find (const MVLibrarianCatalogue& catalogue) const;

    /** The genres of the occupied slots within the bank (or all banks), each once whatever its case, sorted. */
    static juce::StringArray genres (const MVLibrarianCatalogue& catalogue, int bank = allBanks);

    /** The result behind (direction 1) or before (-1) an address, from the last to the first and back. An address that
       is no result itself leads to its neighbour in the order of the list; none leads to the first or last. Nothing if
       there are no results. */
    static std::optional<MVPatchAddress> step (const std::vector<MVPatchAddress>& results,
                                               std::optional<MVPatchAddress> from, int direction);
};

} // namespace morvanelab
