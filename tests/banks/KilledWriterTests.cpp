// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/BankTestSupport.h"
#include "banks/ChildProcess.h"
#include "support/TestRandom.h"

#include "banks/MVBankFileManager.h"
#include "foundation/MVResult.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <unistd.h>

// Processes that are killed in the middle of their writing. What they leave must be a complete old or a complete new
// file, always.

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

constexpr int instants = 200;
constexpr int busySlot = 20;

/** Longer than any stream's buffer, so that a write takes several steps. */
Bytes patchOf (std::uint8_t value) { return Bytes (120000, value); }

class KilledWriter : public testing::Test
{
protected:
    TestFolder folder;
    ScriptedPrompt prompt;
    TestRandom random { 4711 };
    juce::File list = folder.file ("Sordelin_Banks.mv_bankmgr");
    juce::File kept = folder.file ("kept.mv_onbank");
    juce::File passing = folder.file ("passing.mv_onbank");

    /** Lets a child do its work over and over, and kills it some time after it has begun. */
    template <typename Work>
    void killAmid (Work work)
    {
        int ready[2];
        ASSERT_EQ (pipe (ready), 0);
        ChildProcess child (
            [&]
            {
                if (write (ready[1], "r", 1) == 1)
                    for (;;)
                        work();
            });
        close (ready[1]);
        if (! child.hasStarted())
            GTEST_SKIP() << "no process can be forked here";

        char byte = 0;
        ASSERT_EQ (read (ready[0], &byte, 1), 1);
        close (ready[0]);
        constexpr int longestLife = 40000;
        std::this_thread::sleep_for (std::chrono::microseconds (random.below (longestLife)));
        child.kill();
    }
};

} // namespace

TEST_F (KilledWriter, leavesACompleteBank)
{
    MVBankFile().createBank (kept);
    {
        MVBankFile bank;
        bank.openFile (kept, true);
        bank.setPatchData (0, toBlock (patchOf (7)));
        bank.setPatchData (busySlot, toBlock (patchOf (1)));
    }

    int seen[3] {};
    for (int instant = 0; instant < instants && ! HasFatalFailure() && ! IsSkipped(); ++instant)
    {
        killAmid (
            [&]
            {
                MVBankFile bank;
                bank.openFile (kept, true);
                for (const auto value : { std::uint8_t { 2 }, std::uint8_t { 1 } })
                    bank.setPatchData (busySlot, toBlock (patchOf (value)));
            });

        MVBankFile bank;
        ASSERT_EQ (raisedBy ([&] { bank.openFile (kept, true); }), "") << instant;
        ASSERT_TRUE (bank.isLayoutValid()) << instant;
        const auto busy = toBytes (bank.getPatchData (busySlot));
        ASSERT_TRUE (busy == patchOf (1) || busy == patchOf (2)) << instant;
        ++seen[busy[0]];
        for (int slot = 0; slot < MVBankFile::maxPatchesPerBank; ++slot)
        {
            const auto expected = slot == busySlot ? busy : slot == 0 ? patchOf (7) : Bytes { 0 };
            ASSERT_EQ (toBytes (bank.getPatchData (slot)), expected) << instant;
        }
        ASSERT_LE (folder.fileCount(), 2) << instant;
    }
    // Else nobody has written.
    EXPECT_TRUE (IsSkipped() || (seen[1] > 0 && seen[2] > 0));
}

TEST_F (KilledWriter, leavesACompleteListAndNoHalfMadeBank)
{
    {
        MVBankFileManager manager (prompt);
        manager.setManagerFile (list);
        manager.addBankFile (0, kept);
    }
    const Bytes emptyBank = handContainer (handBank());

    int seen[3] {};
    for (int instant = 0; instant < instants && ! HasFatalFailure() && ! IsSkipped(); ++instant)
    {
        killAmid (
            [&]
            {
                MVBankFileManager manager (prompt);
                manager.setManagerFile (list);
                manager.loadBanks();
                while (manager.getBankCount() > 1)
                    manager.removeBank (1);
                passing.deleteFile();
                manager.addBankFile (9, passing);
            });

        MVBankList stored;
        ASSERT_EQ (MVBankList::read (list, stored), MVBankListState::good) << instant;
        ASSERT_GE (stored.entries.size(), 1u) << instant;
        ASSERT_LE (stored.entries.size(), 2u) << instant;
        ASSERT_EQ (stored.entries[0].file, kept) << instant;
        ASSERT_TRUE (stored.entries.size() == 1 || stored.entries[1].file == passing) << instant;
        ++seen[stored.entries.size()];
        ASSERT_TRUE (! passing.exists() || readBytes (passing) == emptyBank) << instant;
        ASSERT_TRUE (prompt.told.empty()) << instant;

        // The killed one's lock has gone with it, and what it left behind is in nobody's way.
        MVBankFileManager manager (prompt);
        manager.setManagerFile (list);
        ASSERT_TRUE (manager.loadBanks() && manager.saveBanks()) << instant;
    }
    EXPECT_TRUE (IsSkipped() || (seen[1] > 0 && seen[2] > 0));
}
