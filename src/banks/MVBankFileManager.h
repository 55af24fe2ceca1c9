// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVBankFile_wrapper.h"
#include "banks/MVBankList.h"
#include "banks/MVPatch_wrapper.h"
#include "foundation/MVLocker.h"
#include "foundation/MVVector.h"

#include <set>
#include <string>
#include <vector>

namespace morvanelab
{

class MVAppPersistentProps;

/** The banks loaded in the plug-in, in the user's order, and which bank and patches are selected.

    The list is kept in a ".mv_bankmgr" file (see MVBankList). Every addition, removal and move saves it. Several
    managers, of one process or of many, may share one file: each save takes in first what the others have written, so
    that banks may appear, go, move or change their identity with any operation that saves, and with syncWithFile.
    Read indices anew after each of them.

    A list that cannot be read is never overwritten: while a damaged one is on disk, a save asks first, and only a yes
    replaces it, after its bytes were kept under "_bak".

    A selection travels from the librarian to the loader in the sibling file "mv_bank_patch_selection.txt": two signed
    32-bit numbers, bank and slot.

    Boxes come up in here. One thread at a time: callers on several threads hold getLock for each call and for as
    long as they use a wrapper or metadata that one returned. */
class MVBankFileManager
{
public:
    static constexpr const char* managerFileName = "Sordelin_Banks.mv_bankmgr";
    static constexpr const char* selectionFileName = "mv_bank_patch_selection.txt";

    /** The prompt must outlive the manager. */
    explicit MVBankFileManager (MVUserPrompt& prompt = MVUserPrompt::cautious());
    MVBankFileManager (const MVBankFileManager&) = delete;
    MVBankFileManager& operator= (const MVBankFileManager&) = delete;

    /** Recursive. The manager itself does not take it. */
    MVLocker& getLock() const { return locker; }

    /** Where the manager file lies: in the directory that the property `banks_path` names, else in the settings
        directory. A list of release 1.0 in the settings directory is copied to the present name if that is missing.
        An empty file if there is no settings directory. */
    static juce::File findManagerFile (MVAppPersistentProps& properties);

    /** Deletes the list in the settings directory, with its backup and the selection; banks stay where they are. False
        if any of it could not be deleted. */
    static bool deleteListIn (const juce::File& settingsDirectory);

    /** Stores the path and starts with a fresh, empty selection file beside it. Loads nothing. */
    void setManagerFile (const juce::File& file);
    juce::File getManagerFile() const { return managerFile; }
    juce::File getSelectionFile() const { return selectionFile; }

    /** Replaces the list by the one in the manager file; a missing manager file is created and means an empty list.
        A bank that cannot be opened or is refused repair is dropped, the list saved and a box shown. A damaged list
        gives an empty one, after a question: yes keeps its bytes under "_bak" and starts anew, no leaves the file.
        Returns whether every bank was good. Raises nothing. */
    bool loadBanks();

    /** Takes in what others have written, backs the manager file up under "<name>_bak" and writes it anew. Banks whose
        file has gone are left out of it. False, after a box, if any was left out, if the file could not be written, or
        if a damaged list is there and the question whether to purge it was answered with no; what could not be
        written leaves the old file. An empty list does not replace a backup. */
    bool saveBanks();

    /** Takes in what others have written since the file was last read or written, without writing or asking.
        Returns whether the list has changed by it. */
    bool syncWithFile();

    /** Whether the manager file holds something that is no list. */
    bool isListDamaged() const;
    /** What a yes to the question about a damaged list does, for callers whose question is answered later: keeps
        its bytes under "_bak" and leaves an empty list. False if the list is not damaged, or could not be kept
        (the file is then untouched). */
    bool purgeDamagedList();

    /** Opens a bank file, creating it first if it does not exist, and inserts it at position (beyond the end or
        negative means at the end). Returns what saveBanks returned. Raises MVException: 9 "Error:  Not a bank file.",
        9 "Error:  Incompatible version." (older than 1.0.0), and those of MVFilePacker. */
    bool addBankFile (int position, const juce::File& path);

    /** Creates a new bank on disk and inserts it. Raises like MVBankFile::createBank, also for a path that
        already holds something. */
    bool createBankFile (int position, const juce::File& path);

    /** Takes the bank out of the list and saves; the file stays. Out of range does nothing. */
    void removeBank (int index);

    /** Moves a bank so that it stands at index to (taken into the list) and saves. Returns what saveBanks
        returned; false, with nothing done, if from is out of range. */
    bool moveBank (int from, int to);

    int getBankCount() const { return banks.size(); }
    /** Null out of range. */
    MVSmartPtr<MVBankFile_wrapper> getBank (int index) const;
    /** Slot 0 to 63 of the selected bank; null out of range. */
    MVSmartPtr<MVPatch_wrapper> getPatch (int index) const;

    /** The first bank with that identity, or -1. */
    int findBankByUuid (const MVBankUuid& uuid) const;
    /** A new random one out of range. */
    MVBankUuid getBankUuid (int index) const;
    /** Compares full paths, ignoring case. */
    bool isBankPathLoaded (const juce::File& path) const;

    /** A slot's raw bytes; empty out of range, never null. Raises like MVFilePacker::readCompartment. */
    MVSmartPtr<MVDataBlock> getPatchData (int bank, int patch) const;
    /** A slot's metadata; a fresh object out of range, never null. Raises like MVFilePacker::readCompartment. */
    MVSmartPtr<MVMetaData> getPatchMeta (int bank, int patch) const;
    /** See MVBankFile. */
    MVSmartPtr<MVDataBlock> buildPatchStream (const MVSmartPtr<MVMetaData>& meta,
                                              const MVSmartPtr<MVDataBlock>& bytes) const;

    /** Stores bytes in a slot of the one selected bank, selects the slot and draws the bank a new identity, which is
        saved. If the file cannot be written, the bank leaves the list and a box says so. Returns whether it was
        stored. The reference to the bytes is taken over. */
    bool setSelectedBankPatch (int patch, MVSmartPtr<MVDataBlock>& bytes);

    /** Replaces slots of any bank in one step: on disk are either all or none of them. If any bytes are among them,
        the bank gets a new identity, which is saved. The shown slots follow if the bank is the one selected.
        False, with nothing changed, for an index out of range; and, after the box "File I/O Exception", if the bank's
        file cannot be read or written: the bank then stays in the list. */
    bool writePatches (int bank, const std::vector<MVBankFile::SlotContent>& slots);
    /** writePatches for one slot. Null metadata leaves the slot's. The reference to the bytes is taken over. */
    bool setPatch (int bank, int patch, const MVSmartPtr<MVMetaData>& meta, MVSmartPtr<MVDataBlock>& bytes);
    /** Makes a slot empty, its metadata too. Like writePatches, with a new identity. */
    bool clearPatch (int bank, int patch);
    /** Replaces a slot's metadata; the identity stays. False for null, else like writePatches. */
    bool setPatchMeta (int bank, int patch, const MVSmartPtr<MVMetaData>& meta);
    /** Replaces a bank's metadata, in its file and in the list, which is saved; the identity stays. False for null,
        else like writePatches. */
    bool setBankMeta (int bank, const MVSmartPtr<MVMetaData>& meta);

    /** Counts selected banks; index is the one selected, or -1 unless the count is 1. */
    int getSelectedBankIndex (int& index) const;
    /** The same for the slots. */
    int getSelectedPatchIndex (int& index) const;

    /** Sets a bank's flag, which is stored with the next save. The slots are read anew if the one selected bank
        changed, or in any case with alwaysRefresh. */
    void setBankSelected (int index, bool on, bool alwaysRefresh = false);
    /** Reads the 64 slots of the one selected bank; without one does nothing. A slot that cannot be read shows as
        empty. */
    void refreshPatches();
    /** Sets a slot's flag and, with one bank selected, writes bank and slot index (-1 unless one slot is selected) to
        the selection file. */
    void selectPatch (int patch, bool on);
    void clearPatchSelection();
    void clearBankSelection();
    /** Reads the selection file and deletes it. True if it held a bank and a slot, both at least 0. */
    bool takeSelection (int& bank, int& patch);
    /** The first slot without a patch, or 64. */
    int firstEmptySlot() const;

private:
    enum class WriteResult
    {
        done,
        someMissing,
        damaged,
        failed
    };

    bool loadEntry (const MVBankListEntry& entry, MVUserPrompt& prompt);
    bool loadDamagedList();
    void saveAfterFailedLoad();
    WriteResult writeList();
    bool backUp (const juce::MemoryBlock& bytes, const MVBankList& list) const;
    MVBankList ownList() const;
    MVBankList listToWrite (bool& allPresent) const;
    /** Joins what others have written with the banks of this session. Returns whether these have changed by it. */
    bool takeIn (const MVBankList& theirs, const juce::MemoryBlock& bytes);
    static bool takeIdentity (MVBankFile_wrapper& wrapper, const MVBankUuid& uuid);
    /** Runs an operation on a bank's file, which returns a code and may raise. Returns whether it was done. */
    template <typename Operation>
    bool changeFile (MVBankFile_wrapper& wrapper, Operation operation);
    void tellFileFailure();
    /** Reads a slot into its wrapper, whose selection stays. One that cannot be read shows as empty. */
    void showSlot (int patch, MVBankFile& bank);
    void deleteSelectionFile();

    mutable MVLocker locker;
    MVUserPrompt& prompt;
    juce::File managerFile;
    juce::File selectionFile;
    MVVector<MVSmartPtr<MVBankFile_wrapper>> banks;
    MVVector<MVSmartPtr<MVPatch_wrapper>> patches;

    juce::MemoryBlock knownBytes;       ///< of the manager file, when it was last read or written
    MVBankList known;                   ///< the list in them
    std::set<std::string> unopenedKeys; ///< of known: what others have added and this manager could not open
};

} // namespace morvanelab
