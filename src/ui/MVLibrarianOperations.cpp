// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianModel.h"

#include "banks/MVBankBytes.h"
#include "foundation/MVException.h"

#include <algorithm>

// The librarian's operations on banks, and the steps that all operations are made of.

namespace morvanelab
{

void MVLibrarianModel::tell (const std::string& title, const std::string& text)
{
    prompt.tell (title, text);
    refresh();
}

void MVLibrarianModel::ask (std::function<void()> operation)
{
    if (runAsking)
        runAsking (std::move (operation));
    else
        attempt (
            [&]
            {
                operation();
                return true;
            });
}

/** Runs what may raise for a file that cannot be read. */
bool MVLibrarianModel::attempt (const std::function<bool()>& operation)
{
    try
    {
        return operation();
    }
    catch (const MVBankAccessFailure& failure)
    {
        tellFailure (MVLibrarianWriter::outcomeOf (failure));
    }
    catch (const MVException& failure)
    {
        tell (boxTitle, failure.text());
    }
    return false;
}

void MVLibrarianModel::tellFailure (const MVLibrarianOutcome& outcome)
{
    if (outcome.stale)
        steps.clear();
    if (outcome.vanished != juce::File())
    {
        const MVScopedLock lock (manager.getLock());
        manager.removeBank (writer.indexOf (outcome.vanished));
    }
    takeInChanges();
    notify();
    prompt.tell (outcome.title, outcome.text);
}

// ---- Banks

bool MVLibrarianModel::checkBankPath (const juce::File& file, bool create)
{
    const MVScopedLock lock (manager.getLock());
    const int present = writer.indexOf (file);
    if (present >= 0)
    {
        selectBank (present);
        return false;
    }
    if (create && file.exists())
    {
        prompt.tell (boxTitle, "There is a file of that name already.  Choose another name.");
        return false;
    }
    if (! create && ! file.existsAsFile())
    {
        prompt.tell (boxTitle, "File does not exist.");
        return false;
    }
    return true;
}

bool MVLibrarianModel::addBank (const juce::File& file, int position)
{
    if (! checkBankPath (file, false))
        return false;
    ask ([this, file, position] { addBankNow (file, position, false); });
    const MVScopedLock lock (manager.getLock());
    return writer.indexOf (file) >= 0;
}

bool MVLibrarianModel::createBank (const juce::File& file, int position)
{
    return checkBankPath (file, true) && attempt ([&] { return addBankNow (file, position, true); });
}

bool MVLibrarianModel::addBankNow (const juce::File& file, int position, bool create)
{
    MVLibrarianStep step;
    int index = -1;
    {
        const MVScopedLock lock (manager.getLock());
        if (position < 0)
            position = manager.getBankCount();
        if (create)
            manager.createBankFile (position, file);
        else
            manager.addBankFile (position, file);
        index = writer.indexOf (file);
        if (index < 0)
            return false;
        step.name = create ? "Create Bank" : "Add Bank";
        step.listEdit = MVBankListEdit { file, manager.getBankUuid (index), -1, index };
    }
    steps.add (std::move (step));
    takeInChanges();
    selectBank (index);
    notify();
    return true;
}

bool MVLibrarianModel::removeBank (int bank)
{
    MVLibrarianStep step { "Remove Bank", {}, {} };
    {
        const MVScopedLock lock (manager.getLock());
        const auto wrapper = manager.getBank (bank);
        if (! wrapper)
            return false;
        step.listEdit = MVBankListEdit { wrapper->bank.getPath(), wrapper->uuid, bank, -1 };
    }
    const bool wasSelected = getSelectedBank() == bank;
    if (! doStep (std::move (step)))
        return false;
    // What stood behind it, or else before it, is shown next.
    if (wasSelected && catalogue.bankCount() > 0)
        selectBank (std::min (bank, catalogue.bankCount() - 1));
    return true;
}

bool MVLibrarianModel::moveBank (int from, int to)
{
    MVLibrarianStep step { "Move Bank", {}, {} };
    {
        const MVScopedLock lock (manager.getLock());
        const auto wrapper = manager.getBank (from);
        to = std::clamp (to, 0, std::max (0, manager.getBankCount() - 1));
        if (! wrapper || from == to)
            return false;
        step.listEdit = MVBankListEdit { wrapper->bank.getPath(), wrapper->uuid, from, to };
    }
    return doStep (std::move (step));
}

bool MVLibrarianModel::setBankMetadata (int bank, const MVMetaData& metadata)
{
    return writeMetadata ("Edit Bank Info", bank, MVLibrarianWriter::bankMetaType, 0, metadata);
}

bool MVLibrarianModel::setSlotMetadata (MVPatchAddress address, const MVMetaData& metadata)
{
    return address.slot >= 0 && address.slot < MVBankFile::maxPatchesPerBank
           && writeMetadata ("Edit Patch Info", address.bank, MVLibrarianWriter::slotMetaType, address.slot, metadata);
}

bool MVLibrarianModel::writeMetadata (const juce::String& name, int bank, std::uint32_t type, int index,
                                      const MVMetaData& metadata)
{
    const auto packed = packChunks (metadata.packRiff());
    const auto bytes = bytesOf (packed);
    if (bytes.empty())
        return false;

    return attempt (
        [&]
        {
            MVLibrarianStep step { name, {}, {} };
            {
                const MVScopedLock lock (manager.getLock());
                const auto wrapper = manager.getBank (bank);
                if (! wrapper)
                    return false;
                auto edit = writer.editOf (bank, type, index, { bytes.begin(), bytes.end() });
                if (edit.before == edit.after)
                    return true;
                step.bankEdits.push_back ({ wrapper->bank.getPath(), { std::move (edit) } });
            }
            return doStep (std::move (step));
        });
}

// ---- Steps

bool MVLibrarianModel::doStep (MVLibrarianStep step)
{
    if (! carryOut (step))
        return false;
    steps.add (std::move (step));
    notify();
    return true;
}

bool MVLibrarianModel::carryOut (const MVLibrarianStep& step)
{
    MVLibrarianOutcome outcome;
    {
        const MVScopedLock lock (manager.getLock());
        getCatalogue();
        outcome = writer.apply (step);
        for (const auto& edit : step.bankEdits)
            catalogue.forget (edit.file);
    }
    if (! outcome.done)
    {
        tellFailure (outcome);
        return false;
    }

    takeInChanges();
    followLoaded (step);
    tellLoadedPlace();
    return true;
}

/** The mark of the patch that plays goes with the patch's bytes. */
void MVLibrarianModel::followLoaded (const MVLibrarianStep& step)
{
    if (! loaded)
        return;

    const MVCompartmentEdit* replaced = nullptr;
    for (const auto& bank : step.bankEdits)
        for (const auto& edit : bank.compartments)
            if (edit.type == MVLibrarianWriter::slotPatchType && bank.file == loaded->file
                && edit.index == loaded->slot)
                replaced = &edit;
    if (replaced == nullptr)
        return;

    loaded.reset();
    for (const auto& bank : step.bankEdits)
        for (const auto& edit : bank.compartments)
            if (edit.type == MVLibrarianWriter::slotPatchType && edit.after == replaced->before)
                loaded = Loaded { bank.file, edit.index };
}

void MVLibrarianModel::tellLoadedPlace()
{
    const int bank = loaded ? catalogue.indexOf (loaded->file) : -1;
    if (bank < 0)
        return;
    const Place place { catalogue.bank (bank).uuid, loaded->slot };
    if (place == knownPlace)
        return;
    knownPlace = place;
    if (onLoadedPatchMoved)
        onLoadedPatchMoved (place.first, place.second);
}

juce::String MVLibrarianModel::undoName() const { return canUndo() ? "Undo " + steps.nextUndo().name : "Undo"; }
juce::String MVLibrarianModel::redoName() const { return canRedo() ? "Redo " + steps.nextRedo().name : "Redo"; }

bool MVLibrarianModel::undo()
{
    if (! canUndo())
        return false;
    const auto step = steps.nextUndo().reversed();
    if (! carryOut (step))
        return false;
    steps.undone();
    notify();
    return true;
}

bool MVLibrarianModel::redo()
{
    if (! canRedo())
        return false;
    const auto step = steps.nextRedo();
    if (! carryOut (step))
        return false;
    steps.redone();
    notify();
    return true;
}

} // namespace morvanelab
