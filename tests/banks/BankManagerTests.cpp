// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/BankTestSupport.h"

#include "banks/MVBankFileManager.h"
#include "foundation/MVResult.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

using Boxes = std::vector<std::string>;

constexpr const char* someFailed = "Bank Librarian|Some bank files failed to load.";
constexpr const char* notSaved = "Save Bank Librarian State|Permissions or file path issue, could not save.";
constexpr const char* mismatch = "Bank state mismatch|Have you moved or deleted bank files?";
constexpr const char* corruptBox =
    "Load Banks Failure|Ondrelith has detected that persistent state for your loaded banks is corrupt.  Do you wish to "
    "purge this state and load reload banks manually (recommended)?";

const Bytes patch { 1, 2, 3, 4 };

class BankManager : public testing::Test
{
protected:
    TestFolder folder;
    ScriptedPrompt prompt;
    MVBankFileManager manager { prompt };
    juce::File list = folder.file ("Sordelin_Banks.mv_bankmgr");
    juce::File backup = folder.file ("Sordelin_Banks_bak.mv_bankmgr");
    juce::File first = folder.file ("first.mv_onbank");
    juce::File second = folder.file ("second.mv_onbank");

    void SetUp() override
    {
        manager.setManagerFile (list);
        ASSERT_TRUE (manager.loadBanks());
    }
    void addBoth()
    {
        ASSERT_TRUE (manager.addBankFile (0, first));
        ASSERT_TRUE (manager.addBankFile (99, second));
    }
    juce::String nameAt (int index) const { return manager.getBank (index)->bank.getPath().getFileName(); }
    bool store (int slot, const Bytes& bytes)
    {
        auto block = toBlock (bytes);
        return manager.setSelectedBankPatch (slot, block);
    }
};

/** The list's form of one bank, written by hand. */
Bytes handBankForm (const MVBankUuid& uuid, const juce::File& file, bool selected)
{
    const auto path = file.getFullPathName().toStdString();
    const auto text = handChunk ("str ", {}, Bytes (path.begin(), path.end()), false);
    auto meta = handEmptyMeta();
    meta[7] = 0;
    putNumber (meta, meta.size() - 4, 0, 4);
    return handChunk ("bank",
                      { handChunk ("uuid", {}, Bytes (uuid.bytes.begin(), uuid.bytes.end()), false),
                        handChunk ("path", { text }, {}, false), meta,
                        handChunk ("selc", {}, { static_cast<std::uint8_t> (selected ? 1 : 0) }, false) },
                      {}, false);
}

} // namespace

TEST_F (BankManager, startsWithEmptyFilesAndForgetsAFormerSelection)
{
    EXPECT_TRUE (list.existsAsFile());
    EXPECT_EQ (list.getSize(), 0);
    EXPECT_TRUE (manager.loadBanks());

    const auto selection = folder.file ("mv_bank_patch_selection.txt");
    writeBytes (selection, { 1, 2, 3 });
    manager.setManagerFile (list);
    EXPECT_TRUE (selection.existsAsFile());
    EXPECT_EQ (selection.getSize(), 0);
}

TEST_F (BankManager, writesAndReadsTheListByteForByte)
{
    addBoth();
    manager.setBankSelected (1, true);
    const Bytes formerList = readBytes (list);
    ASSERT_TRUE (manager.saveBanks());
    EXPECT_EQ (readBytes (backup), formerList);

    const auto expected = handChunk (
        "bmgr",
        { handBankForm (manager.getBankUuid (0), first, false), handBankForm (manager.getBankUuid (1), second, true) },
        {}, true);
    EXPECT_EQ (readBytes (list), expected);

    MVBankFileManager again (prompt);
    again.setManagerFile (list);
    EXPECT_TRUE (again.loadBanks());
    ASSERT_EQ (again.getBankCount(), 2);
    EXPECT_EQ (again.findBankByUuid (manager.getBankUuid (1)), 1);
    EXPECT_FALSE (again.getBank (0)->selected);
    EXPECT_TRUE (again.getBank (1)->selected);
    EXPECT_TRUE (again.saveBanks());
    EXPECT_EQ (readBytes (list), expected);
    EXPECT_TRUE (prompt.told.empty());
}

TEST_F (BankManager, keepsTheUsersOrder)
{
    addBoth();
    manager.createBankFile (1, folder.file ("third.mv_onbank"));
    EXPECT_EQ (nameAt (0), "first.mv_onbank");
    EXPECT_EQ (nameAt (1), "third.mv_onbank");
    EXPECT_EQ (nameAt (2), "second.mv_onbank");
    EXPECT_NE (manager.getBankUuid (0), manager.getBankUuid (1));
    EXPECT_NE (manager.getBankUuid (9), manager.getBankUuid (9));

    manager.removeBank (0);
    manager.removeBank (7);
    manager.removeBank (-1);
    EXPECT_EQ (manager.getBankCount(), 2);
    EXPECT_TRUE (first.existsAsFile());
    EXPECT_FALSE (manager.isBankPathLoaded (first));
    EXPECT_TRUE (manager.isBankPathLoaded (folder.file ("SECOND.MV_OnBank")));
    EXPECT_EQ (raisedBy ([&] { manager.createBankFile (0, first); }), "12 Could not create file");
    EXPECT_EQ (manager.getBankCount(), 2);
}

TEST_F (BankManager, refusesWhatIsNoBank)
{
    auto old = handContainer (handBank());
    putNumber (old, 16, 0, 4);
    putNumber (old, 20, 99, 4);
    sealContainer (old);
    auto oldest = old;
    putNumber (oldest, 16, 1, 4);
    putNumber (oldest, 20, 0, 4);
    sealContainer (oldest);
    auto broken = handContainer (handBank());
    broken.back() ^= 1;

    struct
    {
        const char* what;
        Bytes bytes;
        const char* raised;
    } const cases[] {
        { "another container", handContainer (handBank(), "cpck"), "9 Error:  Not a bank file." },
        { "damaged, repair refused", handContainer (handBank (1, 3, 3)), "9 Error:  Not a bank file." },
        { "0.99", old, "9 Error:  Incompatible version." },
        { "1.0.0", oldest, "" },
        { "corrupt", broken, "17 File checksum incorrect.  Corrupted?" },
        { "text", { 'h', 'i' }, "15 File read access not allowed." },
    };

    for (const auto& each : cases)
    {
        writeBytes (first, each.bytes);
        const int before = manager.getBankCount();
        EXPECT_EQ (raisedBy ([&] { manager.addBankFile (0, first); }), each.raised) << each.what;
        EXPECT_EQ (manager.getBankCount(), before + (*each.raised == 0 ? 1 : 0)) << each.what;
        EXPECT_EQ (readBytes (first), each.bytes) << each.what;
    }
}

TEST_F (BankManager, dropsBanksThatCannotBeLoadedAndSaysSo)
{
    const auto breakFirst = [this]
    {
        auto bytes = readBytes (first);
        bytes.back() ^= 1;
        writeBytes (first, bytes);
    };

    struct
    {
        const char* what;
        std::function<void()> spoil;
        std::size_t questions;
    } const cases[] {
        { "deleted", [this] { first.deleteFile(); }, 0 },
        { "corrupt, so never a matter of repair", breakFirst, 0 },
        { "damaged and refused", [this] { writeBytes (first, handContainer (handBank (1, 2, 2))); }, 1 },
        { "cut", [this] { writeBytes (first, Bytes (39)); }, 0 },
    };

    for (const auto& each : cases)
    {
        list.deleteFile();
        first.deleteFile();
        second.deleteFile();
        manager.loadBanks();
        addBoth();
        each.spoil();
        prompt = {};

        EXPECT_FALSE (manager.loadBanks()) << each.what;
        EXPECT_EQ (prompt.told, Boxes { someFailed }) << each.what;
        EXPECT_EQ (prompt.asked.size(), each.questions) << each.what;
        ASSERT_EQ (manager.getBankCount(), 1) << each.what;
        EXPECT_EQ (nameAt (0), "second.mv_onbank") << each.what;
        EXPECT_TRUE (manager.loadBanks()) << each.what;
    }
}

TEST_F (BankManager, loadsADamagedBankAfterItsRepair)
{
    addBoth();
    const auto uuid = manager.getBankUuid (0);
    writeBytes (first, handContainer (handBank (1, 64, 63)));
    prompt.answer = true;
    EXPECT_TRUE (manager.loadBanks());
    EXPECT_EQ (prompt.asked.size(), 1u);
    EXPECT_EQ (manager.findBankByUuid (uuid), 0);
    EXPECT_EQ (readBytes (first), handContainer (handBank()));
}

TEST_F (BankManager, neitherDeletesNorOverwritesACorruptListWithoutAYes)
{
    addBoth();
    const Bytes good = readBytes (list);
    // The last bank's selected flag, before three trailers: only the checksum can tell.
    Bytes flipped = good;
    flipped[good.size() - 13] ^= 1;
    const Bytes backupBefore = readBytes (backup);

    for (const auto& corrupt : { flipped, Bytes (good.begin(), good.end() - 9), Bytes { 7 },
                                 handChunk ("ptch", {}, {}, true), handContainer (handBank()) })
    {
        writeBytes (list, corrupt);
        writeBytes (backup, backupBefore);
        prompt = {};
        EXPECT_FALSE (manager.loadBanks());
        EXPECT_EQ (prompt.asked, Boxes { corruptBox });
        EXPECT_EQ (prompt.told, Boxes { someFailed });
        EXPECT_EQ (manager.getBankCount(), 0);

        // A refused list stays, whatever is done to the banks, and each save asks again.
        EXPECT_FALSE (manager.addBankFile (0, first));
        EXPECT_EQ (prompt.asked, (Boxes { corruptBox, corruptBox }));
        EXPECT_EQ (prompt.told, (Boxes { someFailed, notSaved }));
        EXPECT_EQ (manager.getBankCount(), 1);
        EXPECT_EQ (readBytes (list), corrupt);
        EXPECT_EQ (readBytes (backup), backupBefore);

        prompt.answer = true;
        EXPECT_TRUE (manager.saveBanks());
        EXPECT_EQ (readBytes (list),
                   handChunk ("bmgr", { handBankForm (manager.getBankUuid (0), first, false) }, {}, true));
        EXPECT_EQ (readBytes (backup), corrupt);
    }
}

TEST_F (BankManager, keepsWhatItPurges)
{
    const Bytes corrupt { 1, 2, 3 };
    writeBytes (list, corrupt);
    prompt.answer = true;
    EXPECT_FALSE (manager.loadBanks());
    EXPECT_EQ (prompt.asked, Boxes { corruptBox });
    EXPECT_EQ (prompt.told, Boxes { someFailed });
    EXPECT_EQ (readBytes (list), handChunk ("bmgr", {}, {}, true));
    EXPECT_EQ (readBytes (backup), corrupt);
    EXPECT_TRUE (manager.addBankFile (0, first));
    EXPECT_EQ (readBytes (backup), corrupt);

    // The same, answered later. Nothing is purged that cannot be kept.
    writeBytes (list, corrupt);
    backup.deleteFile();
    backup.getChildFile ("in the way").create();
    EXPECT_TRUE (manager.isListDamaged());
    EXPECT_FALSE (manager.purgeDamagedList());
    EXPECT_EQ (readBytes (list), corrupt);
    backup.deleteRecursively();
    EXPECT_TRUE (manager.purgeDamagedList());
    EXPECT_FALSE (manager.isListDamaged() || manager.purgeDamagedList());
    EXPECT_EQ (readBytes (backup), corrupt);
    EXPECT_EQ (list.getSize(), 0);
}

TEST_F (BankManager, survivesHostileLists)
{
    addBoth();
    const auto uuid = handChunk ("uuid", {}, Bytes (15, 3), false);
    const auto pathOf = [] (const Bytes& text)
    { return handChunk ("path", { handChunk ("str ", {}, text, false) }, {}, false); };
    const auto path = first.getFullPathName().toStdString();
    const Bytes good (path.begin(), path.end());

    struct
    {
        const char* what;
        std::vector<Bytes> children;
        bool loads;
    } const cases[] {
        { "nothing in it", {}, false },
        { "path missing", { uuid }, false },
        { "relative path", { pathOf ({ 'a' }) }, false },
        { "path is no UTF-8", { pathOf ({ '/', 0xFF, 0xC0 }) }, false },
        { "path is the folder", { pathOf (Bytes (good.begin(), good.end() - 15)) }, false },
        { "short identity", { uuid, pathOf (good) }, true },
    };

    for (const auto& each : cases)
    {
        writeBytes (list, handChunk ("bmgr", { handChunk ("bank", each.children, {}, false) }, {}, true));
        EXPECT_EQ (manager.loadBanks(), each.loads) << each.what;
        EXPECT_EQ (manager.getBankCount(), each.loads ? 1 : 0) << each.what;
    }
    // The fifteen bytes count as absent: the bank has drawn an identity of its own.
    const auto drawn = manager.getBankUuid (0).bytes;
    EXPECT_NE (Bytes (drawn.begin(), drawn.begin() + 15), Bytes (15, 3));

    const Bytes whole = handChunk ("bmgr", { handBankForm ({}, first, true) }, {}, true);
    for (std::size_t length = 1; length < whole.size(); length += 5)
    {
        writeBytes (list, Bytes (whole.begin(), whole.begin() + static_cast<std::ptrdiff_t> (length)));
        EXPECT_FALSE (manager.loadBanks()) << length;
    }
}

TEST_F (BankManager, reportsWhatItCannotSave)
{
    addBoth();
    const Bytes before = readBytes (list);
    const std::filesystem::path path (list.getFullPathName().toStdString());
    std::filesystem::permissions (path, std::filesystem::perms::owner_read);
    EXPECT_FALSE (manager.saveBanks());
    EXPECT_EQ (prompt.told, Boxes { notSaved });
    EXPECT_EQ (readBytes (list), before);
    std::filesystem::permissions (path, std::filesystem::perms::owner_all);

    prompt = {};
    first.deleteFile();
    EXPECT_FALSE (manager.saveBanks());
    EXPECT_EQ (prompt.told, Boxes { mismatch });
    EXPECT_EQ (readBytes (list),
               handChunk ("bmgr", { handBankForm (manager.getBankUuid (1), second, false) }, {}, true));

    prompt = {};
    first.create();
    manager.setManagerFile (first.getChildFile ("under_a_file.mv_bankmgr"));
    EXPECT_FALSE (manager.saveBanks());
    EXPECT_EQ (prompt.told, Boxes { notSaved });
}

TEST_F (BankManager, storesAPatchInTheOneSelectedBank)
{
    addBoth();
    EXPECT_FALSE (store (5, patch));
    manager.setBankSelected (1, true);
    const auto uuidBefore = manager.getBankUuid (1);

    EXPECT_TRUE (store (5, patch));
    EXPECT_FALSE (store (64, patch));
    EXPECT_EQ (toBytes (manager.getPatchData (1, 5)), patch);
    EXPECT_TRUE (manager.getPatch (5)->selected && manager.getPatch (5)->occupied);
    EXPECT_EQ (manager.findBankByUuid (uuidBefore), -1);

    // The new identity holds over a restart.
    MVBankFileManager again (prompt);
    again.setManagerFile (list);
    again.loadBanks();
    EXPECT_EQ (again.findBankByUuid (manager.getBankUuid (1)), 1);

    second.deleteFile();
    EXPECT_FALSE (store (6, patch));
    EXPECT_EQ (prompt.told.back(), "File I/O Exception|Failed to access.  File moved?");
    EXPECT_EQ (manager.getBankCount(), 1);
    EXPECT_TRUE (toBytes (manager.getPatchData (1, 5)).empty());
    EXPECT_TRUE (manager.getPatchMeta (1, 5)->getName().isEmpty());
}

TEST_F (BankManager, showsTheSlotsOfTheOneSelectedBank)
{
    addBoth();
    auto meta = makeSmart<MVMetaData>();
    meta->setName ("lead");
    auto& bank = manager.getBank (0)->bank;
    bank.setPatchMeta (0, meta);
    bank.setPatchData (0, toBlock (patch));
    bank.setPatchData (1, toBlock ({ 77 }));

    int index = 0;
    EXPECT_EQ (manager.getSelectedBankIndex (index), 0);
    EXPECT_EQ (index, -1);
    manager.setBankSelected (0, true);
    EXPECT_EQ (manager.getPatch (0)->metadata->getName(), "lead");
    EXPECT_TRUE (manager.getPatch (0)->occupied);
    EXPECT_EQ (manager.firstEmptySlot(), 1);

    // With two banks selected the slots stay as they were.
    manager.setBankSelected (1, true);
    EXPECT_EQ (manager.getSelectedBankIndex (index), 2);
    EXPECT_EQ (index, -1);
    EXPECT_TRUE (manager.getPatch (0)->occupied);
    manager.setBankSelected (0, false);
    EXPECT_FALSE (manager.getPatch (0)->occupied);
    EXPECT_EQ (manager.firstEmptySlot(), 0);

    // A bank that has gone shows empty slots and harms nothing.
    manager.clearBankSelection();
    manager.setBankSelected (0, true);
    first.deleteFile();
    manager.refreshPatches();
    EXPECT_FALSE (manager.getPatch (0)->occupied);
    EXPECT_TRUE (manager.getPatch (0)->metadata->getName().isEmpty());
}

TEST_F (BankManager, carriesASelectionInItsFile)
{
    addBoth();
    const auto selection = manager.getSelectionFile();
    int bank = 0;
    int slot = 0;
    manager.selectPatch (3, true);
    EXPECT_FALSE (manager.takeSelection (bank, slot));

    manager.setBankSelected (1, true);
    manager.selectPatch (3, true);
    EXPECT_EQ (readBytes (selection), (Bytes { 1, 0, 0, 0, 3, 0, 0, 0 }));
    manager.selectPatch (4, true);
    EXPECT_EQ (readBytes (selection), (Bytes { 1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF }));
    EXPECT_FALSE (manager.takeSelection (bank, slot));
    EXPECT_FALSE (selection.exists());

    manager.selectPatch (3, false);
    EXPECT_TRUE (manager.takeSelection (bank, slot));
    EXPECT_EQ (bank, 1);
    EXPECT_EQ (slot, 4);

    manager.selectPatch (4, true);
    manager.clearPatchSelection();
    EXPECT_FALSE (selection.exists());
    EXPECT_EQ (manager.getSelectedPatchIndex (slot), 0);
    manager.selectPatch (64, true);
    EXPECT_FALSE (selection.exists());
}
