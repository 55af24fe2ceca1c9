// SPDX-License-Identifier: GPL-3.0-or-later
#include "ManagerEdit.h"

#include "BankSlots.h"
#include "CommandFailure.h"
#include "ManagerList.h"

#include "banks/MVDirectoryLock.h"
#include "banks/MVFileSwap.h"

#include <algorithm>
#include <cstdio>
#include <functional>

namespace morvanelab
{

namespace
{

using Entries = std::vector<MVBankListEntry>;

/** Changes the list. What change throws comes through. */
void edit (const std::string& path, const std::function<void (Entries&)>& change)
{
    MVBankListState state {};
    const bool done = MVBankList::edit (
        fileAt (path),
        [&change] (MVBankList& list)
        {
            change (list.entries);
            return true;
        },
        state);

    if (done)
        return;
    if (state == MVBankListState::damaged)
        askAboutDamagedList (false);
    if (state == MVBankListState::unreadable)
        throw badData ("Could not open banks file.  " + path);
    throw badData ("Save Bank Librarian State: Permissions or file path issue, could not save.  " + path);
}

void expectIndex (const Entries& entries, int index)
{
    if (index >= static_cast<int> (entries.size()))
        throw badData ("There is no bank " + std::to_string (index) + ": the list holds "
                       + std::to_string (entries.size()));
}

Entries::iterator at (Entries& entries, int index)
{
    return entries.begin() + std::min (index, static_cast<int> (entries.size()));
}

void refuseIfListed (const Entries& entries, const juce::File& bank)
{
    for (const MVBankListEntry& entry : entries)
        if (entry.file.getFullPathName().equalsIgnoreCase (bank.getFullPathName()))
            throw badData (std::string ("Already Loaded  ") + bank.getFullPathName().toRawUTF8());
}

/** Keeps a damaged list under its backup's name and leaves an empty one. */
void beginAnew (const juce::File& file, const juce::MemoryBlock& damaged)
{
    const juce::File kept = backupSiblingOf (file);
    if (! replaceFileContents (kept, damaged.getData(), damaged.getSize()) || ! replaceFileContents (file, nullptr, 0))
        throw badData ("Save Bank Librarian State: Permissions or file path issue, could not save.");
    std::fprintf (stderr, "The damaged list is kept as %s\n", kept.getFullPathName().toRawUTF8());
}

/** A bank that was made for the list, and goes again if the list does not take it. */
class NewBank
{
public:
    explicit NewBank (const juce::File& bankFile) : file (bankFile)
    {
        if (file.exists() || MVFilePacker::recoverLeftover (file))
            return;
        MVBankFile().createBank (file);
        made = true;
    }
    NewBank (const NewBank&) = delete;
    NewBank& operator= (const NewBank&) = delete;
    ~NewBank()
    {
        if (made && ! kept)
            file.deleteFile();
    }

    void keep()
    {
        kept = true;
        if (made)
            std::fprintf (stderr, "A new bank: %s\n", file.getFullPathName().toRawUTF8());
    }

private:
    juce::File file;
    bool made = false;
    bool kept = false;
};

} // namespace

void addToList (const std::string& listPath, const std::string& bankPath, std::optional<int> position, bool yes)
{
    const juce::File file = fileAt (bankPath);
    const MVDirectoryLock lock (fileAt (listPath).getParentDirectory());
    MVBankList list;
    juce::MemoryBlock bytes;
    const MVBankListState state = MVBankList::read (fileAt (listPath), list, bytes);
    if (state == MVBankListState::damaged)
        askAboutDamagedList (yes);
    refuseIfListed (list.entries, file);

    NewBank created (file);
    const auto bank = openBank (bankPath, yes);
    if (const std::string problem = whyNoBank (*bank); ! problem.empty())
        throw badData (problem);
    if (state == MVBankListState::damaged)
        beginAnew (fileAt (listPath), bytes);

    edit (listPath,
          [&] (Entries& entries)
          {
              refuseIfListed (entries, file);
              entries.insert (at (entries, position.value_or (static_cast<int> (entries.size()))),
                              MVBankListEntry::make (file, MVBankUuid::createRandom(), false, bank->getBankMeta()));
          });
    created.keep();
}

void removeFromList (const std::string& listPath, int index)
{
    (void)readManagerList (listPath);
    edit (listPath,
          [index] (Entries& entries)
          {
              expectIndex (entries, index);
              entries.erase (at (entries, index));
          });
}

void moveInList (const std::string& listPath, int from, int to)
{
    (void)readManagerList (listPath);
    edit (listPath,
          [from, to] (Entries& entries)
          {
              expectIndex (entries, from);
              MVBankListEntry entry = std::move (*at (entries, from));
              entries.erase (at (entries, from));
              entries.insert (at (entries, to), std::move (entry));
          });
}

} // namespace morvanelab
