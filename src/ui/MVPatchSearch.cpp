// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVPatchSearch.h"

#include "ui/MVLibrarianText.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

/** Calls visit (address, slot) for every occupied slot of a bank, or of all. */
template <typename Visit>
void forEachPatch (const MVLibrarianCatalogue& catalogue, int onlyBank, Visit visit)
{
    for (int bank = 0; bank < catalogue.bankCount(); ++bank)
    {
        if (onlyBank != MVPatchSearch::allBanks && bank != onlyBank)
            continue;
        for (int slot = 0; slot < MVBankFile::maxPatchesPerBank; ++slot)
            if (const auto& info = catalogue.slot ({ bank, slot }); info.occupied)
                visit (MVPatchAddress { bank, slot }, info);
    }
}

} // namespace

std::vector<MVPatchAddress> MVPatchSearch::find (const MVLibrarianCatalogue& catalogue) const
{
    const auto sought = toStoredText (text.trim());
    std::vector<MVPatchAddress> found;
    forEachPatch (catalogue, bank,
                  [&] (MVPatchAddress address, const MVSlotInfo& slot)
                  {
                      if ((genre.isEmpty() || slot.genre.equalsIgnoreCase (genre))
                          && (sought.isEmpty() || slot.metadata->matches (sought)))
                          found.push_back (address);
                  });
    return found;
}

juce::StringArray MVPatchSearch::genres (const MVLibrarianCatalogue& catalogue, int bank)
{
    juce::StringArray result;
    forEachPatch (catalogue, bank,
                  [&] (MVPatchAddress, const MVSlotInfo& slot)
                  {
                      if (slot.genre.isNotEmpty())
                          result.addIfNotAlreadyThere (slot.genre, true);
                  });
    result.sort (true);
    return result;
}

std::optional<MVPatchAddress> MVPatchSearch::step (const std::vector<MVPatchAddress>& results,
                                                   std::optional<MVPatchAddress> from, int direction)
{
    if (results.empty())
        return std::nullopt;
    if (! from)
        return direction > 0 ? results.front() : results.back();

    if (direction > 0)
    {
        const auto next = std::upper_bound (results.begin(), results.end(), *from);
        return next == results.end() ? results.front() : *next;
    }
    const auto notBefore = std::lower_bound (results.begin(), results.end(), *from);
    return notBefore == results.begin() ? results.back() : *std::prev (notBefore);
}

} // namespace morvanelab
