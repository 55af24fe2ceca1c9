// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/BankTestSupport.h"
#include "banks/DiskTrouble.h"

#include "banks/MVBankFileManager.h"
#include "banks/MVFileSwap.h"
#include "foundation/MVResult.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <sys/stat.h>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

namespace fs = std::filesystem;
using Boxes = std::vector<std::string>;

constexpr const char* fileBox = "File I/O Exception|Failed to access.  File moved?";
constexpr const char* notSaved = "Save Bank Librarian State|Permissions or file path issue, could not save.";

const Bytes patch { 1, 2, 3, 4 };

fs::path pathOf (const juce::File& file) { return fs::path (file.getFullPathName().toStdString()); }

MVSmartPtr<MVMetaData> namedMeta (const char* name)
{
    auto meta = makeSmart<MVMetaData>();
    meta->setName (name);
    return meta;
}

class BankAccess : public testing::Test
{
protected:
    TestFolder folder;
    ScriptedPrompt prompt;
    MVBankFileManager manager { prompt };
    juce::File list = folder.file ("Sordelin_Banks.mv_bankmgr");
    juce::File first = folder.file ("first.mv_onbank");
    juce::File second = folder.file ("second.mv_onbank");

    void SetUp() override
    {
        fs::permissions (folder.path(), fs::perms::all);
        manager.setManagerFile (list);
        manager.addBankFile (0, first);
        manager.addBankFile (1, second);
        manager.setBankSelected (0, true);
        ASSERT_TRUE (store (5, patch));
    }
    void TearDown() override { fs::permissions (folder.path(), fs::perms::owner_all); }
    bool store (int slot, const Bytes& bytes)
    {
        auto block = toBlock (bytes);
        return manager.setSelectedBankPatch (slot, block);
    }
    bool put (int bank, int slot, const Bytes& bytes, const MVSmartPtr<MVMetaData>& meta = {})
    {
        auto block = toBlock (bytes);
        return manager.setPatch (bank, slot, meta, block);
    }
};

} // namespace

TEST_F (BankAccess, changesAnySlotAndDrawsAnIdentityWithEachPatch)
{
    struct
    {
        const char* what;
        std::function<bool()> change;
        bool newIdentity;
    } const cases[] {
        { "patch", [&] { return put (1, 7, patch, namedMeta ("lead")); }, true },
        { "metadata", [&] { return manager.setPatchMeta (1, 7, namedMeta ("bass")); }, false },
        { "two slots at once",
          [&] {
              return manager.writePatches (1, { { 7, {}, toBlock ({ 0 }) }, { 8, {}, toBlock (patch) } });
          },
          true },
        { "clear", [&] { return manager.clearPatch (1, 8); }, true },
        { "bank metadata", [&] { return manager.setBankMeta (1, namedMeta ("bank")); }, false },
        { "no such slot", [&] { return put (1, 64, patch); }, false },
        { "one of two slots is none",
          [&] {
              return manager.writePatches (1, { { 1, {}, toBlock (patch) }, { -1, {}, toBlock (patch) } });
          },
          false },
        { "no such bank", [&] { return manager.clearPatch (2, 0); }, false },
        { "no metadata", [&] { return manager.setPatchMeta (1, 0, {}) || manager.setBankMeta (1, {}); }, false },
    };
    const auto isRefused = [] (const std::string& what) { return what.starts_with ("no") || what.starts_with ("one"); };

    for (const auto& each : cases)
    {
        const auto before = manager.getBankUuid (1);
        const Bytes contents = readBytes (second);
        EXPECT_EQ (each.change(), ! isRefused (each.what)) << each.what;
        EXPECT_EQ (manager.getBankUuid (1) == before, ! each.newIdentity) << each.what;
        EXPECT_EQ (readBytes (second) == contents, isRefused (each.what)) << each.what;

        MVBankList stored;
        MVBankList::read (list, stored);
        EXPECT_EQ (stored.entries.at (1).uuid, manager.getBankUuid (1)) << each.what;
    }
    EXPECT_EQ (manager.getPatchMeta (1, 7)->getName(), "bass");
    EXPECT_FALSE (MVBankFile::isOccupied (manager.getPatchData (1, 7)));
    EXPECT_FALSE (MVBankFile::isOccupied (manager.getPatchData (1, 8)));
    EXPECT_EQ (manager.getBank (1)->metadata->getName(), "bank");
    EXPECT_TRUE (prompt.told.empty());
}

TEST_F (BankAccess, showsWhatWasChangedInTheSelectedBank)
{
    manager.selectPatch (5, true);
    EXPECT_TRUE (put (0, 6, patch, namedMeta ("pad")));
    EXPECT_TRUE (put (1, 9, patch));
    EXPECT_TRUE (manager.getPatch (6)->occupied);
    EXPECT_EQ (manager.getPatch (6)->metadata->getName(), "pad");
    EXPECT_FALSE (manager.getPatch (9)->occupied);
    EXPECT_TRUE (manager.getPatch (5)->selected);
    manager.clearPatch (0, 6);
    EXPECT_FALSE (manager.getPatch (6)->occupied);
    EXPECT_TRUE (manager.getPatch (6)->metadata->getName().isEmpty());
}

TEST_F (BankAccess, givesABoxAndLeavesTheRestWorking)
{
    const Bytes whole = readBytes (first);
    const auto put = [&] (const Bytes& bytes) { return [this, bytes] { writeBytes (first, bytes); }; };

    struct
    {
        const char* what;
        std::function<void()> spoil;
        const char* raised; ///< by a read; empty if it goes on working
        const char* opening;
    } const cases[] {
        { "gone", [&] { first.deleteFile(); }, "13 No input stream.  File moved?", "16 File does not exist." },
        { "a folder",
          [&]
          {
              first.deleteFile();
              first.createDirectory();
          },
          "13 No input stream.  File moved?", "16 File does not exist." },
        { "a pipe",
          [&]
          {
              first.deleteFile();
              mkfifo (pathOf (first).c_str(), 0777);
          },
          "13 No input stream.  File moved?", "16 File does not exist." },
        { "unreadable", [&] { fs::permissions (pathOf (first), fs::perms::none); }, "13 No input stream.  File moved?",
          "12 File read access not allowed." },
        { "cut in its data", put (Bytes (whole.begin(), whole.begin() + 300)), "13 No input stream.  File moved?",
          "15 File read access not allowed." },
        { "cut in its header", put (Bytes (20)), "15 File read access not allowed.",
          "15 File read access not allowed." },
        { "emptied", put ({}), "15 File read access not allowed.", "15 File read access not allowed." },
        { "text", put (Bytes (50000, 'x')), "13 No input stream.  File moved?", "15 File read access not allowed." },
        { "another container", put (handContainer (handBank(), "cpck")), "13 No input stream.  File moved?", "" },
        { "a smaller bank", put (handContainer (handBank (1, 2, 2))), "", "" },
    };

    for (const auto& each : cases)
    {
        each.spoil();
        const auto spoilt = isPlainFile (first) ? readBytes (first) : Bytes();
        prompt = {};
        std::optional<Unprivileged> user (std::in_place);
        if (! user->isGood())
            GTEST_SKIP() << "permissions do not count here";

        EXPECT_EQ (raisedBy ([&] { manager.getPatchData (0, 5); }), each.raised) << each.what;
        EXPECT_EQ (raisedBy ([&] { manager.getPatchMeta (0, 5); }), each.raised) << each.what;
        EXPECT_EQ (raisedBy ([&] { MVFilePacker().openFile (first, false); }), each.opening) << each.what;
        manager.refreshPatches();
        EXPECT_FALSE (manager.getPatch (5)->occupied) << each.what;
        EXPECT_TRUE (prompt.told.empty()) << each.what;

        EXPECT_FALSE (this->put (0, 5, patch)) << each.what;
        EXPECT_FALSE (manager.clearPatch (0, 5)) << each.what;
        EXPECT_FALSE (manager.setPatchMeta (0, 5, namedMeta ("x"))) << each.what;
        EXPECT_EQ (prompt.told, Boxes (3, fileBox)) << each.what;
        EXPECT_EQ (manager.getBankCount(), 2) << each.what;

        EXPECT_FALSE (store (5, patch)) << each.what;
        EXPECT_EQ (prompt.told, Boxes (4, fileBox)) << each.what;
        ASSERT_EQ (manager.getBankCount(), 1) << each.what;
        EXPECT_TRUE (this->put (0, 5, patch)) << each.what;
        EXPECT_EQ (toBytes (manager.getPatchData (0, 5)), patch) << each.what;

        user.reset();
        EXPECT_EQ (isPlainFile (first) ? readBytes (first) : Bytes(), spoilt) << each.what;
        EXPECT_FALSE (temporarySiblingOf (first).exists()) << each.what;

        first.isDirectory() ? first.deleteRecursively() : first.deleteFile();
        writeBytes (first, whole);
        manager.addBankFile (0, first);
        manager.setBankSelected (0, true);
        EXPECT_EQ (toBytes (manager.getPatchData (0, 5)), patch) << each.what;
    }
}

TEST_F (BankAccess, followsABankThatWasSwappedForAnother)
{
    auto other = handBank();
    other[2].bytes = { 8, 8 };
    writeBytes (first, handContainer (other));
    EXPECT_EQ (toBytes (manager.getPatchData (0, 0)), (Bytes { 8, 8 }));
    EXPECT_TRUE (put (0, 1, patch));
    MVBankFile again;
    again.openFile (first, true);
    EXPECT_TRUE (again.isLayoutValid());
    EXPECT_EQ (toBytes (again.getPatchData (0)), (Bytes { 8, 8 }));
}

TEST_F (BankAccess, losesNothingOnAFullOrProtectedDisk)
{
    const Bytes listBefore = readBytes (list);
    const Bytes bankBefore = readBytes (first);
    const auto files = folder.fileCount();

    const auto attempt = [&] (const char* what)
    {
        prompt = {};
        EXPECT_FALSE (manager.saveBanks()) << what;
        EXPECT_FALSE (put (0, 5, { 9, 9 })) << what;
        EXPECT_FALSE (manager.setBankMeta (0, namedMeta ("x"))) << what;
        EXPECT_EQ (prompt.told, (Boxes { notSaved, fileBox, fileBox })) << what;
        EXPECT_EQ (raisedBy ([&] { manager.createBankFile (0, folder.file ("new.mv_onbank")); }).substr (0, 1), "1")
            << what;
        EXPECT_EQ (readBytes (list), listBefore) << what;
        EXPECT_EQ (readBytes (first), bankBefore) << what;
        EXPECT_EQ (folder.fileCount(), files) << what;
    };

    for (const int room : { 0, 1, 100 })
    {
        const FullDisk disk (room);
        attempt ("full");
    }
    {
        fs::permissions (folder.path(),
                         fs::perms::all & ~(fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write));
        const Unprivileged user;
        if (user.isGood())
            attempt ("read-only folder");
    }
    fs::permissions (folder.path(), fs::perms::all);
    EXPECT_TRUE (manager.saveBanks());
    EXPECT_TRUE (put (0, 5, { 9, 9 }));
}

TEST (FileContents, areReplacedWholeOrNotAtAll)
{
    const TestFolder folder;
    const auto file = folder.file ("a/b/x");
    const auto replace = [&] (const Bytes& bytes) { return replaceFileContents (file, bytes.data(), bytes.size()); };
    EXPECT_TRUE (replace ({ 1, 2 }));
    for (const int room : { 0, 1, 99999 })
    {
        const FullDisk disk (room);
        EXPECT_FALSE (replace (Bytes (100000, 3))) << room;
        EXPECT_EQ (readBytes (file), (Bytes { 1, 2 })) << room;
        EXPECT_FALSE (temporarySiblingOf (file).exists()) << room;
    }
    EXPECT_TRUE (replaceFileContents (file, nullptr, 0));
    EXPECT_EQ (file.getSize(), 0);
    EXPECT_FALSE (replaceFileContents (file.getChildFile ("under a file"), "x", 1));
    EXPECT_FALSE (replaceFileContents (folder.folder, "x", 1));
    EXPECT_FALSE (replaceFileContents ({}, "x", 1));
    EXPECT_EQ (backupSiblingOf (folder.file ("a.b.c")), folder.file ("a.b_bak.c"));
    EXPECT_EQ (backupSiblingOf (folder.file ("abc")), folder.file ("abc_bak"));
}
