// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVBankFileManager.h"

#include "banks/MVBankBytes.h"
#include "banks/MVDirectoryLock.h"
#include "banks/MVFileSwap.h"
#include "foundation/MVException.h"
#include "foundation/MVLog.h"
#include "foundation/MVResult.h"

#include <algorithm>
#include <map>
#include <utility>

// The manager's file: reading, joining, writing and backing up the list of banks.

namespace morvanelab
{

bool MVBankFileManager::loadBanks()
{
    banks.clear();
    unopenedKeys.clear();

    const auto state = MVBankList::read (managerFile, known, knownBytes);
    if (state == MVBankListState::missing && managerFile != juce::File())
        managerFile.create();
    if (state == MVBankListState::unreadable)
        prompt.tell ("Bank Librarian", "Could not open banks file.");
    if (state == MVBankListState::damaged)
        return loadDamagedList();

    bool allGood = true;
    for (const auto& entry : known.entries)
        allGood = loadEntry (entry, prompt) && allGood;

    if (! allGood)
        saveAfterFailedLoad();
    return allGood;
}

bool MVBankFileManager::loadDamagedList()
{
    if (MVBankList::askToPurge (prompt) && purgeDamagedList())
        saveAfterFailedLoad();
    else
        // It stays as it is; the next save asks again.
        prompt.tell ("Bank Librarian", "Some bank files failed to load.");
    return false;
}

void MVBankFileManager::saveAfterFailedLoad()
{
    saveBanks();
    prompt.tell ("Bank Librarian", "Some bank files failed to load.");
}

bool MVBankFileManager::isListDamaged() const
{
    MVBankList list;
    return MVBankList::read (managerFile, list) == MVBankListState::damaged;
}

bool MVBankFileManager::purgeDamagedList()
{
    const MVDirectoryLock lock (managerFile.getParentDirectory());

    // Another one may have mended it while the user was thinking.
    MVBankList list;
    juce::MemoryBlock bytes;
    if (MVBankList::read (managerFile, list, bytes) != MVBankListState::damaged || isWriteProtected (managerFile)
        || ! replaceFileContents (backupSiblingOf (managerFile), bytes.getData(), bytes.getSize())
        || ! replaceFileContents (managerFile, nullptr, 0))
        return false;

    knownBytes.reset();
    known = {};
    unopenedKeys.clear();
    return true;
}

bool MVBankFileManager::loadEntry (const MVBankListEntry& entry, MVUserPrompt& repairPrompt)
{
    auto wrapper = makeSmart<MVBankFile_wrapper>();
    try
    {
        if (! MVFilePacker::recoverLeftover (entry.file) || wrapper->bank.openFile (entry.file, true) != resultDone
            || wrapper->bank.validateAndRepair (repairPrompt) != resultDone)
            return false;
        wrapper->metadata = wrapper->bank.getBankMeta();
    }
    catch (const MVException& failure)
    {
        mvLog ("ERROR", "morvanelab::MVBankFileManager::loadEntry", "%s: %u %s",
               entry.file.getFullPathName().toRawUTF8(), failure.getCode(), failure.text());
        return false;
    }

    wrapper->selected = entry.selected;
    wrapper->uuid = entry.uuid;
    banks.add (wrapper);
    return true;
}

bool MVBankFileManager::saveBanks()
{
    auto result = isWriteProtected (managerFile) ? WriteResult::failed : writeList();
    // The question is asked with no lock held: others need not wait for the user.
    if (result == WriteResult::damaged && MVBankList::askToPurge (prompt))
    {
        purgeDamagedList();
        result = writeList();
    }

    if (result == WriteResult::someMissing)
        prompt.tell ("Bank state mismatch", "Have you moved or deleted bank files?");
    else if (result != WriteResult::done)
        prompt.tell ("Save Bank Librarian State", "Permissions or file path issue, could not save.");
    return result == WriteResult::done;
}

MVBankFileManager::WriteResult MVBankFileManager::writeList()
{
    managerFile.getParentDirectory().createDirectory();
    const MVDirectoryLock lock (managerFile.getParentDirectory());

    MVBankList theirs;
    juce::MemoryBlock bytes;
    const auto state = MVBankList::read (managerFile, theirs, bytes);
    if (state == MVBankListState::damaged)
        return WriteResult::damaged;
    if (state == MVBankListState::unreadable)
        return WriteResult::failed;
    // A file that has gone or was emptied tells of no removals.
    if (state == MVBankListState::good && bytes != knownBytes)
        takeIn (theirs, bytes);
    if (state != MVBankListState::missing && ! backUp (bytes, theirs))
        mvLog ("ERROR", "morvanelab::MVBankFileManager::writeList", "No backup of the bank list could be made");

    bool allPresent = true;
    auto written = listToWrite (allPresent);
    const auto packed = written.pack();
    const auto packedBytes = bytesOf (packed);
    if (packedBytes.empty() || ! replaceFileContents (managerFile, packedBytes.data(), packedBytes.size()))
        return WriteResult::failed;

    knownBytes.replaceAll (packedBytes.data(), packedBytes.size());
    known = std::move (written);
    return allPresent ? WriteResult::done : WriteResult::someMissing;
}

bool MVBankFileManager::backUp (const juce::MemoryBlock& bytes, const MVBankList& list) const
{
    const auto backup = backupSiblingOf (managerFile);
    // After a purge it holds the only copy of what was there.
    if (list.entries.empty() && backup.existsAsFile())
        return true;
    return replaceFileContents (backup, bytes.getData(), bytes.getSize());
}

MVBankList MVBankFileManager::ownList() const
{
    MVBankList list;
    for (const auto& wrapper : banks)
        list.entries.push_back (
            MVBankListEntry::make (wrapper->bank.getPath(), wrapper->uuid, wrapper->selected, wrapper->metadata));
    return list;
}

MVBankList MVBankFileManager::listToWrite (bool& allPresent) const
{
    // A bank whose file has gone stays in the list of this session, and comes back into the file if its own does.
    auto list = ownList();
    const auto isGone = [] (const MVBankListEntry& entry) { return ! entry.file.existsAsFile(); };
    allPresent = std::erase_if (list.entries, isGone) == 0;

    list.insertMissing (known, [this] (const std::string& key) { return unopenedKeys.count (key) != 0; });
    return list;
}

bool MVBankFileManager::syncWithFile()
{
    MVBankList theirs;
    juce::MemoryBlock bytes;
    return MVBankList::read (managerFile, theirs, bytes) == MVBankListState::good && bytes != knownBytes
           && takeIn (theirs, bytes);
}

bool MVBankFileManager::takeIn (const MVBankList& theirs, const juce::MemoryBlock& bytes)
{
    auto ours = ownList();
    const auto ownKeys = ours.keys();
    ours.insertMissing (known, [this] (const std::string& key) { return unopenedKeys.count (key) != 0; });
    const auto merged = MVBankList::merge (known, ours, theirs);

    std::map<std::string, MVSmartPtr<MVBankFile_wrapper>> opened;
    for (std::size_t i = 0; i < ownKeys.size(); ++i)
        opened[ownKeys[i]] = banks[static_cast<int> (i)];

    int shownIndex = -1;
    getSelectedBankIndex (shownIndex);
    const auto shown = getBank (shownIndex);
    bool shownChanged = false;
    bool changed = false;

    const auto former = std::exchange (banks, {});
    unopenedKeys.clear();
    const auto keys = merged.keys();
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        auto entry = merged.entries[i];
        if (const auto found = opened.find (keys[i]); found != opened.end())
        {
            const auto& wrapper = found->second;
            if (takeIdentity (*wrapper, entry.uuid))
            {
                changed = true;
                shownChanged = shownChanged || wrapper == shown;
            }
            banks.add (wrapper);
            continue;
        }
        // What another one has selected is no concern of this session. Nor is repair: whoever added it was asked.
        entry.selected = false;
        if (! loadEntry (entry, MVUserPrompt::cautious()))
            unopenedKeys.insert (keys[i]);
    }

    for (int i = 0; shownChanged && i < patches.size(); ++i)
        showSlot (i, shown->bank);

    known = theirs;
    knownBytes = bytes;
    return changed || ! std::equal (banks.begin(), banks.end(), former.begin(), former.end());
}

bool MVBankFileManager::takeIdentity (MVBankFile_wrapper& wrapper, const MVBankUuid& uuid)
{
    if (wrapper.uuid == uuid)
        return false;
    wrapper.uuid = uuid;

    // Another one has replaced a patch in it.
    try
    {
        wrapper.metadata = wrapper.bank.getBankMeta();
    }
    catch (const MVException& failure)
    {
        mvLog ("ERROR", "morvanelab::MVBankFileManager::takeIdentity", "%u: %s", failure.getCode(), failure.text());
    }
    return true;
}

} // namespace morvanelab
