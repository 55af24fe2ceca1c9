// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVBankFileManager.h"
#include "ui/MVLibrarianCatalogue.h"
#include "ui/MVLibrarianUndo.h"
#include "ui/MVLibrarianWriter.h"
#include "ui/MVPatchSearch.h"

#include <bitset>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace morvanelab
{

/** Slots of one bank. */
using MVSlotSet = std::bitset<MVBankFile::maxPatchesPerBank>;

/** Everything the librarian does, without any component: what is in the banks, what is selected, found and loaded, and
   the operations on banks and slots with their undo.

    Nothing is read before it is asked for. Every operation holds the manager's lock while it works, changes a bank file
   in one rewrite (all or nothing), and after a failure, of which the user is told through the prompt, everything is as
   it was: a bank changed first is put back. The exception is a bank whose file has vanished: it leaves the list. An
   operation that returns bool tells whether it was done.

    Message thread. */
class MVLibrarianModel
{
public:
    /** What a patch file may be called, for a file dialog. */
    static constexpr const char* patchFilePattern = "*.mv_patch;*.mv_onpatch";
    static constexpr const char* bankFilePattern = "*.mv_onbank";
    static constexpr const char* patchFileExtension = ".mv_onpatch";
    static constexpr const char* boxTitle = "Bank Librarian";

    /** Both must outlive the model. */
    MVLibrarianModel (MVBankFileManager& managerToUse, MVUserPrompt& promptToUse);
    MVLibrarianModel (const MVLibrarianModel&) = delete;
    MVLibrarianModel& operator= (const MVLibrarianModel&) = delete;

    // ---- Hooks of the owner

    /** Runs an operation that may ask a question which cannot be waited for: the owner may run it once more when the
       answer has come. An MVException that leaves the operation is told by the owner, in a box titled boxTitle. Unset:
       the operation is just run. */
    std::function<void (std::function<void()>)> runAsking;
    /** Something that is shown has changed. */
    std::function<void()> onChange;
    /** The patch that plays is still stored, but its bank has got a new identity because a patch in it was replaced, or
       it was moved to another slot: where a state has to look for it from now on. */
    std::function<void (const MVBankUuid& bank, int slot)> onLoadedPatchMoved;

    // ---- What there is

    /** Looks for changes made elsewhere (by another window, another instance, a host's state) and tells them by
     * onChange. */
    void refresh();
    /** The contents of all banks; read on the first call. */
    const MVLibrarianCatalogue& getCatalogue();
    /** A slot's stored metadata with its image, read from the file; an empty one if it cannot be read. Never null. */
    MVSmartPtr<MVMetaData> readSlotMetadata (MVPatchAddress address);
    MVSmartPtr<MVMetaData> readBankMetadata (int bank);

    // ---- Selection

    /** The one bank whose slots are shown, or -1. */
    int getSelectedBank();
    /** Selects that bank alone, and no slot. */
    void selectBank (int bank);
    const MVSlotSet& getSelectedSlots() const { return selectedSlots; }
    /** Selects these slots of the selected bank; the manager's selection follows, and its selection file names the slot
       if it is just one. */
    void selectSlots (const MVSlotSet& slots);
    /** Selects bank and slot so that the loader finds them in the selection file. False for an empty slot. */
    bool selectForLoading (MVPatchAddress address);

    /** The patch that plays, for its mark; an unknown bank or slot -1 for none. The mark follows the patch when it is
        moved or swapped, and goes when the patch is replaced. Told once more what it was told last, it stays where it
       has gone since. */
    void setLoadedPatch (const MVBankUuid& bank, int slot);
    std::optional<MVPatchAddress> getLoadedPatch();

    // ---- Search

    const MVPatchSearch& getSearch() const { return search; }
    /** search.bank is either MVPatchSearch::allBanks or anything else, which stands for the selected bank. */
    void setSearch (const MVPatchSearch& newSearch);
    /** What the search finds; without text and genre, every patch there is (in the selected bank, or in all). */
    const std::vector<MVPatchAddress>& getResults();
    /** The neighbour, in the results, of the loaded patch, else of the selected one; from end to beginning and back.
        Nothing if the results are empty. */
    std::optional<MVPatchAddress> nextPatch() { return neighbour (1); }
    std::optional<MVPatchAddress> previousPatch() { return neighbour (-1); }

    // ---- Banks

    /** Adds an existing bank file at a place of the list (-1 for the end) and selects it. */
    bool addBank (const juce::File& file, int position = -1);
    /** Makes an empty bank, adds and selects it. An existing file is never overwritten. Undo takes the bank out of the
       list and leaves the file. */
    bool createBank (const juce::File& file, int position = -1);
    /** Takes a bank out of the list; the file stays. */
    bool removeBank (int bank);
    /** Moves a bank so that it stands at index to. */
    bool moveBank (int from, int to);
    bool setBankMetadata (int bank, const MVMetaData& metadata);

    // ---- Slots

    /** Stores a patch file in a slot, named after the file; slot -1 takes the first empty one. */
    bool addPatch (const juce::File& file, MVPatchAddress target);
    /** Adds bank files to the list and patch files to slots (an empty one each, beginning with target.slot); as one
       step for all patches. Returns whether any was added. */
    bool addFiles (const juce::StringArray& paths, MVPatchAddress target);
    static bool isBankFile (const juce::File& file) { return file.hasFileExtension ("mv_onbank"); }
    static bool isPatchFile (const juce::File& file) { return file.hasFileExtension ("mv_patch;mv_onpatch"); }
    /** Writes a slot's patch as a patch file, replacing it. */
    bool exportPatch (MVPatchAddress source, const juce::File& file);

    bool clearSlots (int bank, const MVSlotSet& slots);
    /** Copies or moves slots, in order, to target.slot and the slots behind it. Slots that lie beyond the bank's end
       are a failure. */
    bool copySlots (int bank, const MVSlotSet& slots, MVPatchAddress target);
    bool moveSlots (int bank, const MVSlotSet& slots, MVPatchAddress target);
    /** Copies the patches in slots to the first empty slots of another bank. */
    bool copyToEmptySlots (int bank, const MVSlotSet& slots, int targetBank);
    bool swapSlots (MVPatchAddress first, MVPatchAddress second);
    bool setSlotMetadata (MVPatchAddress address, const MVMetaData& metadata);

    // ---- Clipboard, of this librarian alone

    bool copyToClipboard (int bank, const MVSlotSet& slots);
    /** Copies, then clears the slots. */
    bool cutToClipboard (int bank, const MVSlotSet& slots);
    bool canPaste() const { return ! clipboard.empty(); }
    /** The copied slots go to target.slot and those behind it, replacing what is there. */
    bool paste (MVPatchAddress target);

    // ---- Undo

    bool canUndo() const { return steps.canUndo(); }
    bool canRedo() const { return steps.canRedo(); }
    /** "Undo Clear 3 Patches"; plain "Undo" if there is nothing to undo. */
    juce::String undoName() const;
    juce::String redoName() const;
    /** Takes the last step back: files and list are, byte for byte, what they were before. If something else has
       changed what the step left, nothing is done, the user is told, and all steps are forgotten. */
    bool undo();
    bool redo();

private:
    struct Loaded
    {
        juce::File file;
        int slot = -1;
    };
    using Place = std::pair<MVBankUuid, int>;
    /** New contents of slots, all of one step. */
    using SlotWrites = std::map<MVPatchAddress, MVSlotBytes>;

    void tell (const std::string& title, const std::string& text);
    void ask (std::function<void()> operation);
    bool attempt (const std::function<bool()>& operation);
    void takeInChanges();
    void notify();
    void restoreSelection();
    void applySelection (const MVSlotSet& slots);
    std::optional<MVPatchAddress> neighbour (int direction);

    bool addBankNow (const juce::File& file, int position, bool create);
    bool checkBankPath (const juce::File& file, bool create);
    bool writeSlots (const juce::String& name, const SlotWrites& writes);
    bool writeMetadata (const juce::String& name, int bank, std::uint32_t type, int index, const MVMetaData& metadata);
    bool doStep (MVLibrarianStep step);
    void tellFailure (const MVLibrarianOutcome& outcome);
    bool carryOut (const MVLibrarianStep& step);
    void followLoaded (const MVLibrarianStep& step);
    void tellLoadedPlace();
    bool transfer (const juce::String& name, int bank, const MVSlotSet& slots, MVPatchAddress target, bool clearSource);
    std::vector<MVSlotBytes> readSlots (int bank, const MVSlotSet& slots) const;
    bool addPatches (const std::vector<juce::File>& files, MVPatchAddress target);
    SlotWrites intoEmptySlots (std::vector<MVSlotBytes> contents, MVPatchAddress target);

    MVBankFileManager& manager;
    MVUserPrompt& prompt;
    MVLibrarianWriter writer;
    MVLibrarianCatalogue catalogue;
    MVLibrarianUndo steps;
    MVPatchSearch search;
    MVSlotSet selectedSlots;
    std::vector<MVPatchAddress> results;
    bool resultsStale = true;
    bool catalogueRead = false;
    std::optional<Loaded> loaded;
    Place toldPlace { {}, -1 };  ///< of the patch that plays, as the owner told it
    Place knownPlace { {}, -1 }; ///< as the owner knows it, from then or by onLoadedPatchMoved
    std::vector<MVSlotBytes> clipboard;
};

} // namespace morvanelab
