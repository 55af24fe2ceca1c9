// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVBankFile_wrapper.h"
#include "banks/MVPatch_wrapper.h"
#include "foundation/MVVector.h"

namespace morvanelab
{

class MVAppPersistentProps;

/** The banks loaded in the plug-in, in the user's order, and which bank and patches are selected.

    The list is kept in a ".mv_bankmgr" file: a packed form 'bmgr' with one form 'bank' for each bank, holding
    'uuid' (the 16 identity bytes as payload), 'path' (the full path, UTF-8, as a packed MVString), the bank's
    metadata ('meta', not read back) and 'selc' (one byte). Every addition and removal saves it. A selection travels
    from the librarian to the loader in the sibling file "mv_bank_patch_selection.txt": two signed 32-bit
    numbers, bank and slot.

    Message thread only: boxes come up in here. */
class MVBankFileManager
{
public:
    static constexpr const char* managerFileName = "Sordelin_Banks.mv_bankmgr";
    static constexpr const char* selectionFileName = "mv_bank_patch_selection.txt";

    /** The prompt must outlive the manager. */
    explicit MVBankFileManager (MVUserPrompt& prompt = MVUserPrompt::cautious());
    MVBankFileManager (const MVBankFileManager&) = delete;
    MVBankFileManager& operator= (const MVBankFileManager&) = delete;

    /** Where the manager file lies: in the directory that the property `banks_path` names, else in the settings
        directory. A list of release 1.0 in the settings directory is copied to the present name if that is missing.
        An empty file if there is no settings directory. */
    static juce::File findManagerFile (MVAppPersistentProps& properties);

    /** Stores the path and starts with a fresh, empty selection file beside it. Loads nothing. */
    void setManagerFile (const juce::File& file);
    juce::File getManagerFile() const { return managerFile; }
    juce::File getSelectionFile() const { return selectionFile; }

    /** Replaces the list by the one in the manager file; a missing manager file is created and means an empty list.
        A bank that cannot be opened or is refused repair is dropped, the list saved and a box shown.
        Returns whether every bank was good. Raises nothing. */
    bool loadBanks();

    /** Backs the manager file up under "<name>_bak" and writes it anew. Banks whose file has gone are left out of it.
        False, after a box, if any was left out or the file could not be written; a failed write leaves the old one. */
    bool saveBanks();

    /** Opens a bank file, creating it first if it does not exist, and inserts it at position (beyond the end means
        at the end). Returns what saveBanks returned. Raises MVException: 9 "Error:  Not a bank file.",
        9 "Error:  Incompatible version." (older than 1.0.0), and those of MVFilePacker. */
    bool addBankFile (int position, const juce::File& path);

    /** Creates a new bank on disk and inserts it. Raises like MVBankFile::createBank, also for a path that
        already holds something. */
    bool createBankFile (int position, const juce::File& path);

    /** Takes the bank out of the list and saves; the file stays. Out of range does nothing. */
    void removeBank (int index);

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

    /** Counts selected banks; index is the one selected, or -1 unless the count is 1. */
    int getSelectedBankIndex (int& index) const;
    /** The same for the slots. */
    int getSelectedPatchIndex (int& index) const;

    /** Sets a bank's flag. The slots are read anew if the one selected bank changed, or in any case with
        alwaysRefresh. */
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
    bool readManagerFile (juce::MemoryBlock& bytes) const;
    bool loadBankForm (const MVRiffPacker& form);
    bool purgeManagerFile();
    void saveAfterFailedLoad();
    bool backUpManagerFile() const;
    MVSmartPtr<MVRiffPacker> packBanks (bool& allPresent) const;
    static MVSmartPtr<MVRiffPacker> packBank (const MVBankFile_wrapper& wrapper, bool withMetadata);
    void deleteSelectionFile();

    MVUserPrompt& prompt;
    juce::File managerFile;
    juce::File selectionFile;
    MVVector<MVSmartPtr<MVBankFile_wrapper>> banks;
    MVVector<MVSmartPtr<MVPatch_wrapper>> patches;
};

} // namespace morvanelab
