// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianModel.h"

#include "foundation/MVException.h"
#include "foundation/MVResult.h"
#include "ui/MVLibrarianPatchFile.h"

#include <algorithm>

// The librarian's operations on slots.

namespace morvanelab
{

namespace
{

constexpr int slotCount = MVBankFile::maxPatchesPerBank;

juce::String counted (const juce::String& verb, std::size_t patches)
{
    return patches == 1 ? verb + " Patch" : verb + " " + juce::String (static_cast<int> (patches)) + " Patches";
}

/** Calls use (slot) for each slot of a set, in order. */
template <typename Use>
void forEachSlot (const MVSlotSet& slots, Use use)
{
    for (int i = 0; i < slotCount; ++i)
        if (slots[static_cast<std::size_t> (i)])
            use (i);
}

} // namespace

std::vector<MVSlotBytes> MVLibrarianModel::readSlots (int bank, const MVSlotSet& slots) const
{
    const MVScopedLock lock (manager.getLock());
    std::vector<MVSlotBytes> result;
    forEachSlot (slots, [&] (int slot) { result.push_back (writer.readSlot (bank, slot)); });
    return result;
}

bool MVLibrarianModel::writeSlots (const juce::String& name, const SlotWrites& writes)
{
    MVLibrarianStep step { name, {}, {} };
    {
        const MVScopedLock lock (manager.getLock());
        for (const auto& [address, contents] : writes)
        {
            const auto wrapper = manager.getBank (address.bank);
            if (! wrapper || address.slot < 0 || address.slot >= slotCount)
                return false;

            const auto file = wrapper->bank.getPath();
            if (step.bankEdits.empty() || step.bankEdits.back().file != file)
                step.bankEdits.push_back ({ file, {} });
            auto& edits = step.bankEdits.back().compartments;
            for (const bool isPatch : { true, false })
            {
                auto edit = writer.editOf (address.bank,
                                           isPatch ? MVLibrarianWriter::slotPatchType : MVLibrarianWriter::slotMetaType,
                                           address.slot, isPatch ? contents.patch : contents.metadata);
                if (edit.before != edit.after)
                    edits.push_back (std::move (edit));
            }
            if (edits.empty())
                step.bankEdits.pop_back();
        }
    }
    return step.bankEdits.empty() || doStep (std::move (step));
}

bool MVLibrarianModel::clearSlots (int bank, const MVSlotSet& slots)
{
    if (slots.none())
        return false;
    return attempt (
        [&]
        {
            SlotWrites writes;
            forEachSlot (slots, [&] (int slot) { writes[{ bank, slot }] = MVSlotBytes::empty(); });
            return writeSlots (counted ("Clear", slots.count()), writes);
        });
}

bool MVLibrarianModel::copySlots (int bank, const MVSlotSet& slots, MVPatchAddress target)
{
    return transfer (counted ("Copy", slots.count()), bank, slots, target, false);
}

bool MVLibrarianModel::moveSlots (int bank, const MVSlotSet& slots, MVPatchAddress target)
{
    return transfer (counted ("Move", slots.count()), bank, slots, target, true);
}

bool MVLibrarianModel::transfer (const juce::String& name, int bank, const MVSlotSet& slots, MVPatchAddress target,
                                 bool clearSource)
{
    if (slots.none() || target.slot < 0)
        return false;
    if (target.slot + static_cast<int> (slots.count()) > slotCount)
    {
        tell (boxTitle, "There is not enough room behind that slot.");
        return false;
    }
    return attempt (
        [&]
        {
            SlotWrites writes;
            if (clearSource)
                forEachSlot (slots, [&] (int slot) { writes[{ bank, slot }] = MVSlotBytes::empty(); });
            int place = target.slot;
            for (auto& contents : readSlots (bank, slots))
                writes[{ target.bank, place++ }] = std::move (contents);
            return writeSlots (name, writes);
        });
}

MVLibrarianModel::SlotWrites MVLibrarianModel::intoEmptySlots (std::vector<MVSlotBytes> contents, MVPatchAddress target)
{
    SlotWrites writes;
    int slot = std::max (0, target.slot);
    for (auto& each : contents)
    {
        while (slot < slotCount && getCatalogue().slot ({ target.bank, slot }).occupied)
            ++slot;
        if (slot == slotCount)
            throw MVException (resultFailed, "The bank has not enough empty slots.");
        writes[{ target.bank, slot++ }] = std::move (each);
    }
    return writes;
}

bool MVLibrarianModel::copyToEmptySlots (int bank, const MVSlotSet& slots, int targetBank)
{
    return attempt (
        [&]
        {
            auto contents = readSlots (bank, slots);
            std::erase_if (contents, [] (const auto& each) { return ! each.isOccupied(); });
            const auto name = counted ("Copy", contents.size());
            return ! contents.empty() && writeSlots (name, intoEmptySlots (std::move (contents), { targetBank, 0 }));
        });
}

bool MVLibrarianModel::swapSlots (MVPatchAddress first, MVPatchAddress second)
{
    return attempt (
        [&]
        {
            SlotWrites writes;
            {
                const MVScopedLock lock (manager.getLock());
                writes[second] = writer.readSlot (first.bank, first.slot);
                writes[first] = writer.readSlot (second.bank, second.slot);
            }
            return writeSlots ("Swap Patches", writes);
        });
}

bool MVLibrarianModel::copyToClipboard (int bank, const MVSlotSet& slots)
{
    if (slots.none())
        return false;
    return attempt (
        [&]
        {
            clipboard = readSlots (bank, slots);
            return true;
        });
}

bool MVLibrarianModel::cutToClipboard (int bank, const MVSlotSet& slots)
{
    if (! copyToClipboard (bank, slots))
        return false;
    return attempt (
        [&]
        {
            SlotWrites writes;
            forEachSlot (slots, [&] (int slot) { writes[{ bank, slot }] = MVSlotBytes::empty(); });
            return writeSlots (counted ("Cut", slots.count()), writes);
        });
}

bool MVLibrarianModel::paste (MVPatchAddress target)
{
    if (clipboard.empty() || target.slot < 0)
        return false;
    if (target.slot + static_cast<int> (clipboard.size()) > slotCount)
    {
        tell (boxTitle, "There is not enough room behind that slot.");
        return false;
    }
    return attempt (
        [&]
        {
            SlotWrites writes;
            int place = target.slot;
            for (const auto& contents : clipboard)
                writes[{ target.bank, place++ }] = contents;
            return writeSlots (counted ("Paste", clipboard.size()), writes);
        });
}

// ---- Files

bool MVLibrarianModel::addPatch (const juce::File& file, MVPatchAddress target)
{
    if (target.slot < 0)
        return addPatches ({ file }, target);
    return attempt ([&] { return writeSlots ("Add Patch", { { target, readPatchFile (file) } }); });
}

bool MVLibrarianModel::addPatches (const std::vector<juce::File>& files, MVPatchAddress target)
{
    return attempt (
        [&]
        {
            std::vector<MVSlotBytes> contents;
            for (const auto& file : files)
                contents.push_back (readPatchFile (file));
            return writeSlots (counted ("Add", files.size()), intoEmptySlots (std::move (contents), target));
        });
}

bool MVLibrarianModel::addFiles (const juce::StringArray& paths, MVPatchAddress target)
{
    bool any = false;
    std::vector<juce::File> patches;
    for (const auto& path : paths)
    {
        const juce::File file (path);
        if (isPatchFile (file))
            patches.push_back (file);
        else if (isBankFile (file))
            any = addBank (file) || any;
    }
    if (! patches.empty())
    {
        if (target.bank < 0)
            tell (boxTitle, "Add or create a bank first, so that the patches have a place to go.");
        else
            any = addPatches (patches, target) || any;
    }
    return any;
}

bool MVLibrarianModel::exportPatch (MVPatchAddress source, const juce::File& file)
{
    return attempt (
        [&]
        {
            const MVScopedLock lock (manager.getLock());
            writePatchFile (writer.readSlot (source.bank, source.slot), file);
            return true;
        });
}

} // namespace morvanelab
