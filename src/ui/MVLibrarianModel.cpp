// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianModel.h"

#include "foundation/MVException.h"

#include <algorithm>

// What is shown: contents, selection, search and the patch that plays. The operations are in MVLibrarianOperations.cpp
// and MVLibrarianSlots.cpp.

namespace morvanelab
{

MVLibrarianModel::MVLibrarianModel (MVBankFileManager& managerToUse, MVUserPrompt& promptToUse)
    : manager (managerToUse), prompt (promptToUse), writer (managerToUse)
{
}

const MVLibrarianCatalogue& MVLibrarianModel::getCatalogue()
{
    if (! catalogueRead)
    {
        const MVScopedLock lock (manager.getLock());
        catalogueRead = true;
        catalogue.update (manager);
        resultsStale = true;
    }
    return catalogue;
}

void MVLibrarianModel::refresh()
{
    {
        const MVScopedLock lock (manager.getLock());
        manager.syncWithFile();
        catalogueRead = true;
        if (! catalogue.update (manager))
            return;
        restoreSelection();
        resultsStale = true;
    }
    notify();
}

void MVLibrarianModel::takeInChanges()
{
    const MVScopedLock lock (manager.getLock());
    catalogueRead = true;
    catalogue.update (manager);
    restoreSelection();
    resultsStale = true;
}

void MVLibrarianModel::notify()
{
    if (onChange)
        onChange();
}

/** Reading the slots anew, and any change of the list, has dropped the manager's selection of slots. */
void MVLibrarianModel::restoreSelection()
{
    int bank = -1;
    manager.clearPatchSelection();
    if (manager.getSelectedBankIndex (bank) != 1)
    {
        selectedSlots.reset();
        return;
    }

    manager.refreshPatches();
    const auto slots = selectedSlots;
    applySelection (slots);
}

MVSmartPtr<MVMetaData> MVLibrarianModel::readSlotMetadata (MVPatchAddress address)
{
    const MVScopedLock lock (manager.getLock());
    try
    {
        return manager.getPatchMeta (address.bank, address.slot);
    }
    catch (const MVException&)
    {
        return makeSmart<MVMetaData>();
    }
}

MVSmartPtr<MVMetaData> MVLibrarianModel::readBankMetadata (int bank)
{
    const MVScopedLock lock (manager.getLock());
    const auto wrapper = manager.getBank (bank);
    try
    {
        return wrapper ? wrapper->bank.getBankMeta() : makeSmart<MVMetaData>();
    }
    catch (const MVException&)
    {
        return makeSmart<MVMetaData>();
    }
}

int MVLibrarianModel::getSelectedBank()
{
    const MVScopedLock lock (manager.getLock());
    int bank = -1;
    manager.getSelectedBankIndex (bank);
    return bank;
}

void MVLibrarianModel::selectBank (int bank)
{
    if (bank == getSelectedBank())
        return;
    {
        const MVScopedLock lock (manager.getLock());
        manager.clearPatchSelection();
        selectedSlots.reset();
        for (int i = 0; i < manager.getBankCount(); ++i)
            manager.getBank (i)->selected = false;
        manager.setBankSelected (bank, true, true);
        resultsStale = true;
    }
    notify();
}

void MVLibrarianModel::selectSlots (const MVSlotSet& slots)
{
    applySelection (MVSlotSet (slots)); // a copy, as they may be the ones that are selected now
    notify();
}

void MVLibrarianModel::applySelection (const MVSlotSet& slots)
{
    const MVScopedLock lock (manager.getLock());
    int bank = -1;
    manager.clearPatchSelection();
    selectedSlots.reset();
    if (manager.getSelectedBankIndex (bank) != 1)
        return;

    selectedSlots = slots;
    // The selection file is written once, when all flags stand.
    int last = -1;
    for (int i = 0; i < MVBankFile::maxPatchesPerBank; ++i)
    {
        if (! slots[static_cast<std::size_t> (i)])
            continue;
        manager.getPatch (i)->selected = true;
        last = i;
    }
    if (last >= 0)
        manager.selectPatch (last, true);
}

bool MVLibrarianModel::selectForLoading (MVPatchAddress address)
{
    if (! getCatalogue().slot (address).occupied)
        return false;
    selectBank (address.bank);
    selectSlots (MVSlotSet().set (static_cast<std::size_t> (address.slot)));
    return true;
}

void MVLibrarianModel::setLoadedPatch (const MVBankUuid& bank, int slot)
{
    {
        const MVScopedLock lock (manager.getLock());
        const auto wrapper = manager.getBank (manager.findBankByUuid (bank));
        const bool isSlot = slot >= 0 && slot < MVBankFile::maxPatchesPerBank;
        // An identity that is no longer known may be one that an operation here has replaced.
        if (! wrapper && isSlot && toldPlace == Place { bank, slot })
            return;
        toldPlace = { bank, slot };
        knownPlace = toldPlace;
        loaded.reset();
        if (wrapper && isSlot)
            loaded = Loaded { wrapper->bank.getPath(), slot };
    }
    notify();
}

std::optional<MVPatchAddress> MVLibrarianModel::getLoadedPatch()
{
    const int bank = loaded ? getCatalogue().indexOf (loaded->file) : -1;
    return bank >= 0 ? std::optional<MVPatchAddress> ({ bank, loaded->slot }) : std::nullopt;
}

void MVLibrarianModel::setSearch (const MVPatchSearch& newSearch)
{
    search = newSearch;
    resultsStale = true;
    notify();
}

const std::vector<MVPatchAddress>& MVLibrarianModel::getResults()
{
    const auto& all = getCatalogue();
    if (resultsStale)
    {
        auto query = search;
        if (query.bank != MVPatchSearch::allBanks)
            query.bank = std::max (0, getSelectedBank());
        results = query.find (all);
        resultsStale = false;
    }
    return results;
}

std::optional<MVPatchAddress> MVLibrarianModel::neighbour (int direction)
{
    auto from = getLoadedPatch();
    if (! from && selectedSlots.count() == 1)
        for (int i = 0; i < MVBankFile::maxPatchesPerBank; ++i)
            if (selectedSlots[static_cast<std::size_t> (i)])
                from = MVPatchAddress { getSelectedBank(), i };
    return MVPatchSearch::step (getResults(), from, direction);
}

} // namespace morvanelab
