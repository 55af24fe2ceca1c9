// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/BankTestSupport.h"
#include "banks/ChildProcess.h"

#include "banks/MVBankFileManager.h"
#include "banks/MVDirectoryLock.h"

#include <gtest/gtest.h>

#include <thread>
#include <unistd.h>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

MVBankUuid uuidOf (int number)
{
    MVBankUuid uuid;
    uuid.bytes.fill (static_cast<std::uint8_t> (number));
    return uuid;
}

/** A list of banks named by single letters. */
MVBankList listOf (std::string_view letters)
{
    MVBankList list;
    for (const char letter : letters)
        list.entries.push_back (
            MVBankListEntry::make (juce::File ("/" + juce::String::charToString (letter)), uuidOf (letter), false, {}));
    return list;
}

std::string lettersOf (const MVBankList& list)
{
    std::string letters;
    for (const auto& entry : list.entries)
        letters += entry.file.getFileName().toStdString();
    return letters;
}

class SharedList : public testing::Test
{
protected:
    TestFolder folder;
    ScriptedPrompt prompt;
    juce::File list = folder.file ("Sordelin_Banks.mv_bankmgr");
    MVBankFileManager a { prompt };
    MVBankFileManager b { prompt };

    void SetUp() override
    {
        for (auto* const manager : { &a, &b })
        {
            manager->setManagerFile (list);
            ASSERT_TRUE (manager->loadBanks());
        }
    }
    juce::File bankFile (const juce::String& name) const { return folder.folder.getChildFile (name + ".mv_onbank"); }
    std::string stored() const
    {
        MVBankList inFile;
        EXPECT_EQ (MVBankList::read (list, inFile), MVBankListState::good);
        return names (inFile.entries.size(), [&] (std::size_t i) { return inFile.entries[i].file; });
    }
    static std::string shown (const MVBankFileManager& manager)
    {
        return names (static_cast<std::size_t> (manager.getBankCount()),
                      [&] (std::size_t i) { return manager.getBank (static_cast<int> (i))->bank.getPath(); });
    }

private:
    template <typename FileAt>
    static std::string names (std::size_t count, FileAt fileAt)
    {
        std::string result;
        for (std::size_t i = 0; i < count; ++i)
            result += fileAt (i).getFileNameWithoutExtension().toStdString();
        return result;
    }
};

} // namespace

TEST (BankList, joinsWhatTwoHaveMadeOfIt)
{
    struct
    {
        const char* what;
        const char* base;
        const char* ours;
        const char* theirs;
        const char* expected;
    } const cases[] {
        { "both add at the end", "ab", "abx", "aby", "abyx" },
        { "both add in front", "ab", "xab", "yab", "yxab" },
        { "both add in the middle", "ab", "axb", "ayb", "ayxb" },
        { "both add the same", "a", "axb", "axc", "axcb" },
        { "both add to nothing", "", "x", "y", "yx" },
        { "a run stays together", "ab", "ba", "axyzb", "baxyz" },
        { "they remove, we add behind it", "abc", "abxc", "ac", "axc" },
        { "we remove, they add behind it", "abc", "ac", "abyc", "ayc" },
        { "both remove", "abcd", "acd", "abd", "ad" },
        { "they remove what we moved", "abc", "cab", "ab", "ab" },
        { "we move, they add", "abc", "cab", "abyc", "caby" },
        { "they move, we add", "abc", "abxc", "cab", "cabx" },
        { "both move", "abc", "cab", "bca", "cab" },
        { "only they changed", "abc", "abc", "cya", "cya" },
        { "only we changed", "abc", "cxa", "abc", "cxa" },
        { "one file twice", "a", "aa", "ay", "aya" },
        { "they empty it", "abc", "abcx", "", "x" },
    };
    for (const auto& each : cases)
        EXPECT_EQ (lettersOf (MVBankList::merge (listOf (each.base), listOf (each.ours), listOf (each.theirs))),
                   each.expected)
            << each.what;
}

TEST (BankList, takesOverIdentitiesThatWeHaveNotChanged)
{
    struct
    {
        int base;
        int ours;
        int theirs;
        int expected;
    } const cases[] { { 1, 1, 2, 2 }, { 1, 3, 1, 3 }, { 1, 3, 2, 3 }, { 0, 3, 2, 2 } };

    for (const auto& each : cases)
    {
        // Base 0: both have added the bank, and theirs is on disk already.
        auto base = listOf (each.base == 0 ? "" : "a");
        auto ours = listOf ("ab");
        auto theirs = listOf ("ca");
        if (each.base != 0)
            base.entries[0].uuid = uuidOf (each.base);
        ours.entries[0] = MVBankListEntry::make (ours.entries[0].file, uuidOf (each.ours), true, {});
        theirs.entries[1].uuid = uuidOf (each.theirs);

        const auto merged = MVBankList::merge (base, ours, theirs);
        ASSERT_EQ (lettersOf (merged), "cab");
        EXPECT_TRUE (merged.entries[1].selected);
        // What is written says the same.
        const auto packed = merged.pack();
        MVBankList again;
        ASSERT_TRUE (MVBankList::parse ({ bytesOf (packed).data(), bytesOf (packed).size() }, again));
        for (const MVBankList* const result : { &merged, static_cast<const MVBankList*> (&again) })
            EXPECT_EQ (result->entries[1].uuid, uuidOf (each.expected)) << each.base << each.ours << each.theirs;
    }
}

TEST (BankList, isEditedInPlaceWithoutItsBanks)
{
    const TestFolder folder;
    const auto file = folder.file ("x.mv_bankmgr");
    const auto append = [] (MVBankList& list)
    {
        list.entries.push_back (listOf (list.entries.empty() ? "a" : "b").entries[0]);
        return true;
    };
    auto state = MVBankListState::damaged;
    EXPECT_TRUE (MVBankList::edit (file, append, state));
    EXPECT_EQ (state, MVBankListState::missing);
    const Bytes first = readBytes (file);
    EXPECT_TRUE (MVBankList::edit (file, append, state));
    EXPECT_EQ (readBytes (folder.file ("x_bak.mv_bankmgr")), first);
    const Bytes second = readBytes (file);
    EXPECT_FALSE (MVBankList::edit (
        file, [] (MVBankList&) { return false; }, state));
    EXPECT_EQ (readBytes (file), second);

    MVBankList list;
    MVBankList::read (file, list);
    EXPECT_EQ (lettersOf (list), "ab");
    writeBytes (file, { 1 });
    EXPECT_FALSE (MVBankList::edit (file, append, state));
    EXPECT_EQ (state, MVBankListState::damaged);
    EXPECT_EQ (readBytes (file), Bytes { 1 });
}

TEST_F (SharedList, keepsTheChangesOfBothManagers)
{
    a.addBankFile (0, bankFile ("a"));
    b.addBankFile (0, bankFile ("b"));
    EXPECT_EQ (stored(), "ab");
    EXPECT_EQ (shown (b), "ab");
    EXPECT_EQ (shown (a), "a");
    EXPECT_TRUE (a.syncWithFile());
    EXPECT_FALSE (a.syncWithFile());
    EXPECT_EQ (shown (a), "ab");

    a.addBankFile (9, bankFile ("c"));
    EXPECT_TRUE (b.moveBank (1, 0));
    EXPECT_EQ (shown (b), "bca");
    a.removeBank (0); // a, as this manager still shows it
    EXPECT_EQ (stored(), "bc");
    b.addBankFile (9, bankFile ("d"));
    EXPECT_EQ (stored(), "bcd");
    EXPECT_EQ (shown (b), "bcd");
    EXPECT_FALSE (b.moveBank (3, 0) || b.moveBank (-1, 0));
    EXPECT_TRUE (prompt.told.empty());
}

TEST_F (SharedList, passesIdentitiesOnButNotSelections)
{
    a.addBankFile (0, bankFile ("a"));
    b.addBankFile (0, bankFile ("b"));
    a.syncWithFile();
    EXPECT_EQ (a.getBankUuid (1), b.getBankUuid (1));

    b.setBankSelected (1, true);
    EXPECT_FALSE (b.getPatch (3)->occupied);
    auto bytes = toBlock ({ 1, 2, 3 });
    EXPECT_TRUE (a.setPatch (1, 3, {}, bytes));
    EXPECT_FALSE (a.getBankUuid (1) == b.getBankUuid (1));
    EXPECT_TRUE (b.syncWithFile());
    EXPECT_EQ (a.getBankUuid (1), b.getBankUuid (1));
    EXPECT_TRUE (b.getPatch (3)->occupied);

    b.saveBanks();
    a.syncWithFile();
    int index = 0;
    EXPECT_EQ (a.getSelectedBankIndex (index), 0);
    EXPECT_EQ (b.getSelectedBankIndex (index), 1);
}

TEST_F (SharedList, keepsBanksThatOnlyTheOtherCanOpen)
{
    a.addBankFile (0, bankFile ("a"));
    a.addBankFile (1, bankFile ("x"));
    a.addBankFile (2, bankFile ("c"));
    const auto uuid = a.getBankUuid (1);
    bankFile ("x").moveFileTo (bankFile ("away"));
    b.addBankFile (9, bankFile ("d"));
    EXPECT_EQ (shown (b), "acd");
    EXPECT_EQ (stored(), "axcd");
    b.removeBank (0);
    EXPECT_EQ (stored(), "xcd");
    EXPECT_TRUE (prompt.told.empty() && prompt.asked.empty());

    bankFile ("away").moveFileTo (bankFile ("x"));
    a.addBankFile (9, bankFile ("e"));
    EXPECT_EQ (stored(), "xcde");
    b.saveBanks();
    EXPECT_EQ (shown (b), "xcde");
    EXPECT_EQ (b.getBankUuid (0), uuid);
}

TEST_F (SharedList, takesAnEmptyOrMissingFileForNoRemoval)
{
    a.addBankFile (0, bankFile ("a"));
    for (const bool missing : { true, false })
    {
        list.deleteFile();
        if (! missing)
            list.create();
        EXPECT_FALSE (a.syncWithFile());
        EXPECT_TRUE (a.saveBanks());
        EXPECT_EQ (stored(), "a");
    }
}

TEST_F (SharedList, losesNothingBetweenTwoProcesses)
{
    constexpr int count = 12;
    const auto addAll = [&] (const char* prefix)
    {
        for (int i = 0; i < count; ++i)
            a.addBankFile (0, bankFile (prefix + juce::String (i)));
    };
    ChildProcess child ([&] { addAll ("b"); });
    addAll ("a");
    EXPECT_TRUE (child.waitForEnd());

    EXPECT_TRUE (b.loadBanks());
    EXPECT_EQ (b.getBankCount(), 2 * count);
    for (int i = 0; i < count; ++i)
        EXPECT_TRUE (b.isBankPathLoaded (bankFile ("a" + juce::String (i)))
                     && b.isBankPathLoaded (bankFile ("b" + juce::String (i))))
            << i;
}

TEST (DirectoryLock, excludesThreadsAndProcessesForAWhile)
{
    const TestFolder folder;
    constexpr int shortWait = 30;
    EXPECT_FALSE (MVDirectoryLock (folder.file ("missing")).isHeld());

    const auto isFree = [&]
    {
        bool result = false;
        std::thread ([&] { result = MVDirectoryLock (folder.folder, shortWait).isHeld(); }).join();
        return result;
    };
    {
        const MVDirectoryLock outer (folder.folder);
        EXPECT_TRUE (outer.isHeld());
        {
            // The same directory by another path.
            EXPECT_TRUE (MVDirectoryLock (juce::File (folder.folder.getFullPathName() + "/.")).isHeld());
        }
        EXPECT_FALSE (isFree());
    }
    EXPECT_TRUE (isFree());
    EXPECT_EQ (folder.fileCount(), 0);

    int ready[2];
    ASSERT_EQ (pipe (ready), 0);
    ChildProcess child (
        [&]
        {
            const MVDirectoryLock lock (folder.folder);
            if (write (ready[1], "r", 1) == 1)
                pause();
        });
    char byte = 0;
    ASSERT_EQ (read (ready[0], &byte, 1), 1);
    EXPECT_FALSE (MVDirectoryLock (folder.folder, shortWait).isHeld());
    child.kill();
    EXPECT_TRUE (isFree());
    close (ready[0]);
    close (ready[1]);
}
