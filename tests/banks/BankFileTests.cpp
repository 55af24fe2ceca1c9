// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/BankTestSupport.h"

#include "banks/MVBankFile.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <gtest/gtest.h>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

constexpr const char* damagedBox =
    "Bank File Damaged|The bank file you are trying to load appears to be damaged.  Would "
    "you like Ondrelith to attempt repair?";

class BankFile : public testing::Test
{
protected:
    TestFolder folder;
    juce::File file = folder.file ("some.mv_onbank");
    MVBankFile bank;
    ScriptedPrompt prompt;

    void open (const std::vector<HandCompartment>& compartments)
    {
        writeBytes (file, handContainer (compartments));
        ASSERT_EQ (bank.openFile (file, true), resultDone);
    }
};

MVSmartPtr<MVMetaData> namedMeta (const char* name)
{
    auto meta = makeSmart<MVMetaData>();
    meta->setName (name);
    return meta;
}

} // namespace

TEST_F (BankFile, createdAtOnceEqualsTheOneWrittenByHandAndTheOneBuiltStepByStep)
{
    bank.createBank (file);
    EXPECT_EQ (readBytes (file), handContainer (handBank()));
    EXPECT_EQ (bank.validateAndRepair (prompt), resultDone);
    EXPECT_TRUE (prompt.asked.empty());

    MVFilePacker steps;
    steps.createFile (folder.file ("steps.mv_onbank"));
    const auto meta = MVMetaData().packRiff();
    steps.addRiffCompartment (fourCC ("meta"), 0, meta);
    for (int i = 0; i < MVBankFile::maxPatchesPerBank; ++i)
    {
        steps.addRiffCompartment (fourCC ("pmta"), i, meta);
        steps.addRawPatchData (i, toBlock ({ 0 }));
    }
    EXPECT_EQ (readBytes (steps.getPath()), readBytes (file));
}

TEST_F (BankFile, validatesAndRepairsByTheCounts)
{
    const HandCompartment emptyMeta { "pmta", 2, handEmptyMeta() };
    const HandCompartment emptyPatch { "pdat", 1, { 0 } };
    const auto slots = [&] (std::size_t metas, std::size_t patches)
    {
        std::vector<HandCompartment> result (metas, emptyMeta);
        result.insert (result.end(), patches, emptyPatch);
        return result;
    };
    auto everything = slots (64, 64);
    everything.insert (everything.begin(), { "meta", 2, handEmptyMeta() });

    struct
    {
        const char* what;
        std::vector<HandCompartment> before;
        std::vector<HandCompartment> added;
        bool goodBefore;
        bool goodAfter;
    } const cases[] {
        { "whole", handBank(), {}, true, true },
        { "nothing", {}, everything, false, true },
        { "no slots", handBank (1, 0, 0), slots (64, 64), false, true },
        { "patches without metadata", handBank (1, 0, 64), slots (64, 0), false, true },
        { "few slots", handBank (1, 2, 5), slots (62, 59), false, true },
        { "63 of each", handBank (1, 63, 63), slots (1, 1), false, true },
        { "one patch short", handBank (1, 64, 63), slots (0, 1), false, true },
        { "no metadata", handBank (0), { { "meta", 2, handEmptyMeta() } }, false, true },
        { "two metadata", handBank (2), {}, false, false },
        { "70 patches", handBank (1, 64, 70), {}, false, false },
        { "70 of each", handBank (1, 70, 70), {}, false, false },
    };

    for (const auto& each : cases)
    {
        prompt.asked.clear();
        prompt.answer = false;
        open (each.before);
        EXPECT_EQ (bank.validateAndRepair (prompt), each.goodBefore ? resultDone : resultRepairRefused) << each.what;
        EXPECT_EQ (bank.isOpen(), each.goodBefore) << each.what;
        EXPECT_EQ (readBytes (file), handContainer (each.before)) << each.what;
        EXPECT_EQ (prompt.asked, std::vector<std::string> (each.goodBefore ? 0 : 1, damagedBox)) << each.what;

        prompt.answer = true;
        bank.openFile (file, true);
        EXPECT_EQ (bank.validateAndRepair (prompt), resultDone) << each.what;
        auto expected = each.before;
        expected.insert (expected.end(), each.added.begin(), each.added.end());
        EXPECT_EQ (readBytes (file), handContainer (expected)) << each.what;
        EXPECT_EQ (bank.isLayoutValid(), each.goodAfter) << each.what;
    }
}

TEST_F (BankFile, keepsMetadataAndPatchesApartBySlot)
{
    bank.createBank (file);
    const Bytes patch { 1, 2, 3, 4 };
    EXPECT_TRUE (bank.setBankMeta (namedMeta ("the bank")));
    EXPECT_TRUE (bank.setPatchMeta (63, namedMeta ("the last")));
    EXPECT_EQ (bank.setPatchData (63, toBlock (patch)), resultDone);

    const Bytes before = readBytes (file);
    EXPECT_FALSE (bank.setBankMeta ({}));
    EXPECT_FALSE (bank.setPatchMeta (0, {}));
    for (const int outside : { -1, 64 })
    {
        EXPECT_FALSE (bank.setPatchMeta (outside, namedMeta ("nowhere")));
        EXPECT_EQ (bank.setPatchData (outside, toBlock (patch)), resultOutOfRange);
        EXPECT_TRUE (bank.getPatchMeta (outside)->getName().isEmpty());
        EXPECT_TRUE (toBytes (bank.getPatchData (outside)).empty());
    }
    EXPECT_EQ (readBytes (file), before);

    MVBankFile again;
    again.openFile (file, true);
    EXPECT_TRUE (again.isLayoutValid());
    EXPECT_EQ (again.getBankMeta()->getName(), "the bank");
    EXPECT_EQ (again.getPatchMeta (63)->getName(), "the last");
    EXPECT_TRUE (again.getPatchMeta (62)->getName().isEmpty());
    EXPECT_EQ (toBytes (again.getPatchData (63)), patch);
    EXPECT_FALSE (MVBankFile::isOccupied (again.getPatchData (62)));

    // Nothing at all would delete the compartment and move the slots behind it.
    again.setPatchData (10, {});
    EXPECT_TRUE (again.isLayoutValid());
    again.clearSlot (63);
    EXPECT_TRUE (again.isLayoutValid());
    EXPECT_EQ (readBytes (file).size(),
               handContainer (handBank()).size()
                   + handChunk ("name", { handChunk ("str ", {}, Bytes (8), false) }, {}, false).size());
}

TEST_F (BankFile, yieldsEmptyMetadataForMalformedBytes)
{
    auto compartments = handBank();
    compartments[0].bytes = { 1, 2, 3 };
    compartments[1].bytes = Bytes (40, 0xFF);
    open (compartments);
    EXPECT_TRUE (bank.getBankMeta()->getName().isEmpty());
    EXPECT_TRUE (bank.getPatchMeta (0)->getName().isEmpty());
}

TEST (BankSlot, isStoredAsAFormAroundThePatch)
{
    const Bytes patch { 9, 8, 7 };
    const auto data = handChunk ("data", {}, patch, false);
    const auto comment = handChunk ("pcom", { handChunk ("str ", {}, { 'h', 'i' }, false) }, {}, false);
    const auto panel = handChunk ("pane", {}, { 5 }, false);
    const auto former = handChunk ("RIFF", { panel, handChunk ("data", {}, { 1 }, false), comment }, {}, true);

    const auto plain = MVBankFile::packSlot (toBlock (patch));
    EXPECT_EQ (toBytes (plain), handChunk ("RIFF", { data }, {}, true));
    const auto kept = MVBankFile::packSlot (toBlock (patch), toBlock (former));
    EXPECT_EQ (toBytes (kept), handChunk ("RIFF", { data, comment, panel }, {}, true));

    EXPECT_EQ (toBytes (MVBankFile::unpackSlot (kept)), patch);
    EXPECT_TRUE (toBytes (MVBankFile::unpackSlot (toBlock ({ 0 }))).empty());
    EXPECT_TRUE (toBytes (MVBankFile::unpackSlot (toBlock (handChunk ("RIFF", { comment }, {}, true)))).empty());
    EXPECT_TRUE (toBytes (MVBankFile::packSlot ({})).empty());
}

TEST (BankSlot, becomesAStreamForTheEngine)
{
    const auto data = handChunk ("data", {}, { 9, 8, 7 }, false);
    const auto comment = handChunk ("pcom", {}, { 4 }, false);
    const auto other = handChunk ("what", {}, { 1 }, false);
    auto meta = handEmptyMeta();
    // As a child it has neither the flag nor the sum.
    meta[7] = 0;
    putNumber (meta, meta.size() - 4, 0, 4);

    auto slot = handChunk ("RIFF", { other, comment, data }, {}, true);
    EXPECT_EQ (toBytes (MVBankFile::buildPatchStream (makeSmart<MVMetaData>(), toBlock (slot))),
               handChunk ("RIFF", { data, comment, meta }, {}, true));
    // A wrong root checksum is no reason to refuse a slot.
    slot.back() ^= 1;
    EXPECT_EQ (toBytes (MVBankFile::buildPatchStream ({}, toBlock (slot))),
               handChunk ("RIFF", { data, comment }, {}, true));
    EXPECT_TRUE (toBytes (MVBankFile::buildPatchStream (makeSmart<MVMetaData>(), toBlock ({ 0 }))).empty());
    EXPECT_TRUE (toBytes (MVBankFile::buildPatchStream ({}, {})).empty());
}
