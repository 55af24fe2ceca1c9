// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVAppPersistentProps.h"
#include "banks/MVBankFileManager.h"
#include "foundation/MVLocker.h"

#include <memory>
#include <vector>

namespace morvanelab
{

/** A stored patch that several threads may hold: our own smart pointers belong to one thread at a time. */
using SordelinPatchBytes = std::shared_ptr<const std::vector<std::uint8_t>>;

/** Settings, bank manager and the way from a slot to a patch that the engine takes.

    The bank manager knows no threads, while hosts restore states on any thread they like: every call here locks. */
class SordelinBankShelf
{
public:
    /** A patch as it came from a bank. */
    struct Patch
    {
        std::string name; ///< "unnamed" without metadata
        std::string author;
        std::string description;
        std::string genre;
        MVBankUuid bankUuid;
        int slot = -1;
        SordelinPatchBytes stream; ///< what loadPatchData takes; never null where readPatch was true
        SordelinPatchBytes image;  ///< the encoded picture of its metadata; null without one
    };

    /** A bank with the names of its slots, for a menu; an empty name is an empty slot. */
    struct BankNames
    {
        std::string title;
        std::vector<std::string> slots;
    };

    /** Opens the settings and the list of banks. The prompt outlives the shelf. */
    explicit SordelinBankShelf (MVUserPrompt& prompt);

    /** On the first run of the program, adds every bank file in directory and below, by path, that is not loaded
        yet. Further calls, and later runs, do nothing. A file that is no bank is told to the user. */
    void addBanksOnFirstRun (const juce::File& directory);

    /** Back to how it was before the first run: forgets all settings and the list of banks, in memory and on disk, but
        for the list of presets, which are the user's work as banks are; such files themselves stay. The next
        addBanksOnFirstRun is one. False if something on disk could not be deleted. */
    bool reset();

    /** -1 if no bank has that identity, also among those that other instances have added meanwhile. */
    int findBank (const MVBankUuid& uuid);
    /** See MVBankFileManager. */
    bool takeSelection (int& bank, int& slot);
    /** Reads a slot. False, with no more than the image, if it is empty or out of range. Raises MVException as the
        bank's file does. */
    bool readPatch (int bank, int slot, Patch& patch);
    std::vector<BankNames> listBanks();

    MVAppPersistentProps& getProperties() { return properties; }
    /** Hold getLock while using it. */
    MVBankFileManager& getBankManager() { return bankManager; }
    MVLocker& getLock() { return bankManager.getLock(); }

private:
    void open();

    MVUserPrompt& prompt;
    MVAppPersistentProps properties;
    MVBankFileManager bankManager;
    bool firstRun = false;
};

} // namespace morvanelab
