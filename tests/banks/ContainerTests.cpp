// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/BankTestSupport.h"
#include "banks/DiskTrouble.h"

#include "banks/MVContainerFormat.h"
#include "banks/MVFilePacker.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

constexpr std::uint32_t alpha = fourCC ("alfa");
constexpr std::uint32_t beta = fourCC ("beta");
constexpr const char* noAccess = "15 File read access not allowed.";
constexpr const char* badChecksum = "17 File checksum incorrect.  Corrupted?";
constexpr const char* notFound = "16 File does not exist.";
constexpr const char* noStream = "13 No input stream.  File moved?";
constexpr const char* copyFailure = "13 File I/O failure";
constexpr const char* writeFailure = "13 Unexpected file write failure";
constexpr const char* switchFailure = "13 Unexpected file switch failure.";

const Bytes one { 1, 2, 3 };
const Bytes two (300, 0xFE);
const Bytes three { 0x80 };

/** alfa 0, beta 0, alfa 1. */
Bytes smallContainer() { return handContainer ({ { "alfa", 1, one }, { "beta", 2, two }, { "alfa", 1, three } }); }

juce::File temporaryOf (const juce::File& file) { return juce::File (file.getFullPathName() + "_mv_tmp"); }

std::string openingRaises (const juce::File& file, bool verify = true)
{
    MVFilePacker packer;
    const auto raised = raisedBy ([&] { packer.openFile (file, verify); });
    EXPECT_EQ (packer.isOpen(), raised.empty());
    return raised;
}

class Container : public testing::Test
{
protected:
    TestFolder folder;
    juce::File file = folder.file ("some.mv_onbank");
    MVFilePacker packer;

    void openSmall()
    {
        writeBytes (file, smallContainer());
        ASSERT_EQ (packer.openFile (file, true), resultDone);
    }
    int write (std::uint32_t type, int index, const Bytes& bytes, bool insert)
    {
        return packer.writeCompartment (type, index, compartmentRaw, toBlock (bytes), insert);
    }
};

} // namespace

TEST (ContainerChecksum, agreesWithSumsWorkedByHand)
{
    Bytes manyZeros (256, 0);
    struct
    {
        const char* what;
        Bytes bytes;
        std::uint32_t sum;
    } const cases[] {
        { "nothing", {}, 0 },
        { "1, then 1 shifted by 1 plus its position", { 1, 1 }, 4 },
        { "-1 wraps to 4294967295, of which 31 remains", { 0xFF }, 31 },
        { "the positions 0 to 127 add up", Bytes (128, 0), 8128 },
        { "positions restart with every chunk", manyZeros, 16256 },
        { "position 8 shifts by 0 again", { 0, 0, 0, 0, 0, 0, 0, 0, 5 }, 36 + 5 },
    };

    for (const auto& each : cases)
    {
        MVContainerChecksum checksum;
        // Taken in uneven pieces: only the position may count, not how the bytes arrive.
        const std::size_t middle = each.bytes.size() / 3;
        checksum.add (each.bytes.data(), middle);
        checksum.add (each.bytes.data() + middle, each.bytes.size() - middle);
        EXPECT_EQ (checksum.value(), each.sum) << each.what;
    }
}

TEST_F (Container, readsAFileWrittenByHand)
{
    openSmall();
    int count = 0;
    EXPECT_EQ (packer.countCompartments (alpha, count), resultDone);
    EXPECT_EQ (count, 2);
    EXPECT_EQ (packer.getFileType(), fourCC ("cbnk"));
    EXPECT_EQ (packer.getVersion(), (MVFilePacker::Version { 1, 4, 0, 1 }));

    const auto* const node = packer.getCompartments().firstNode();
    EXPECT_EQ (toBytes (packer.readCompartment (node->value)), one);
    EXPECT_EQ (toBytes (packer.readCompartment (node->next->value)), two);
    EXPECT_EQ (toBytes (packer.readCompartment (node->next->next->value)), three);

    MVSmartPtr<MVRiffPacker> riff;
    EXPECT_EQ (packer.readRiffCompartment (beta, 0, riff), resultEmptyData);
    EXPECT_EQ (packer.readRiffCompartment (beta, 1, riff), resultNoEntry);
    EXPECT_EQ (packer.readRiffCompartment (beta, -1, riff), resultNoEntry);
    packer.closeFile();
    EXPECT_EQ (packer.getFileType(), 0u);
    EXPECT_EQ (packer.readRiffCompartment (beta, 0, riff), resultNoEntry);
    EXPECT_EQ (write (beta, 0, one, true), resultNoEntry);
}

TEST_F (Container, everyKindOfChangeGivesTheBytesWrittenByHand)
{
    const HandCompartment a0 { "alfa", 1, one }, b0 { "beta", 2, two }, a1 { "alfa", 1, three };
    const Bytes data (129, 7);
    const HandCompartment newAlpha { "alfa", 1, data }, newBeta { "beta", 1, data };

    struct
    {
        const char* what;
        std::uint32_t type;
        int index;
        Bytes bytes;
        bool insert;
        std::vector<HandCompartment> expected;
    } const cases[] {
        { "replace", alpha, 1, data, false, { a0, b0, newAlpha } },
        { "replace with nothing deletes", alpha, 0, {}, false, { b0, a1 } },
        { "replace a missing one", alpha, 2, data, false, { a0, b0, a1 } },
        { "insert before", alpha, 1, data, true, { a0, b0, newAlpha, a1 } },
        { "insert nothing", alpha, 1, {}, true, { a0, b0, a1 } },
        { "insert beyond the last", beta, 9, data, true, { a0, b0, a1, newBeta } },
        { "append nothing", beta, 9, {}, true, { a0, b0, a1 } },
    };

    for (const auto& each : cases)
    {
        openSmall();
        EXPECT_EQ (write (each.type, each.index, each.bytes, each.insert), resultDone) << each.what;
        EXPECT_EQ (readBytes (file), handContainer (each.expected)) << each.what;
        EXPECT_EQ (folder.fileCount(), 1) << each.what;

        // The directory in memory is that of the new file.
        ASSERT_EQ (packer.getCompartments().count(), static_cast<int> (each.expected.size())) << each.what;
        EXPECT_EQ (toBytes (packer.readCompartment (packer.getCompartments().lastNode()->value)),
                   each.expected.back().bytes)
            << each.what;
    }
}

TEST_F (Container, isRefusedWhereverItIsCut)
{
    const Bytes whole = smallContainer();
    for (std::size_t length = 0; length < whole.size(); ++length)
    {
        writeBytes (file, Bytes (whole.begin(), whole.begin() + static_cast<std::ptrdiff_t> (length)));
        ASSERT_EQ (openingRaises (file, false), noAccess) << length;
        ASSERT_EQ (openingRaises (file, true), noAccess) << length;
    }
}

TEST_F (Container, noticesAFlippedBitOnlyWhenAskedTo)
{
    const Bytes whole = smallContainer();
    for (std::size_t at = 4; at < whole.size(); at += 3)
    {
        Bytes flipped = whole;
        flipped[at] = static_cast<std::uint8_t> (flipped[at] ^ 0x10);
        writeBytes (file, flipped);
        EXPECT_NE (openingRaises (file, true), "") << at;
    }

    Bytes flipped = whole;
    flipped[41] ^= 1;
    writeBytes (file, flipped);
    EXPECT_EQ (openingRaises (file, true), badChecksum);
    EXPECT_EQ (openingRaises (file, false), "");
}

TEST_F (Container, survivesForgedNumbers)
{
    // The first entry of the directory stands behind 40 + 3 + 300 + 1 bytes.
    constexpr std::size_t entry = 344;
    constexpr std::uint64_t huge = 0xFFFFFFFFFFFFFFF0U;
    const auto fileSize = smallContainer().size();

    struct
    {
        const char* what;
        std::size_t position;
        std::uint64_t value;
        int size;
        const char* onOpen;
        const char* onRead;
        const char* onWrite;
    } const cases[] {
        { "negative count", 32, 0xFFFFFFFFU, 4, "", "", "" },
        { "most negative count", 32, 0x80000000U, 4, "", "", "" },
        { "huge count", 32, 0x7FFFFFFF, 4, noAccess, "", "" },
        { "one entry too many", 32, 4, 4, noAccess, "", "" },
        { "directory beyond the end", 8, fileSize + 1, 8, noAccess, "", "" },
        { "directory end wraps round", 8, huge, 8, noAccess, "", "" },
        { "offset beyond the end", entry, fileSize + 1, 8, "", noStream, copyFailure },
        { "huge offset", entry, huge, 8, "", noStream, copyFailure },
        { "size beyond the end", entry + 8, fileSize, 8, "", noStream, copyFailure },
        { "huge size", entry + 8, huge, 8, "", noStream, copyFailure },
        { "negative size", entry + 8, 1ULL << 63, 8, "", noStream, copyFailure },
        { "overlapping giants", entry + 8, fileSize - 40, 8, "", "", copyFailure },
    };

    for (const auto& each : cases)
    {
        Bytes forged = smallContainer();
        putNumber (forged, each.position, each.value, each.size);
        sealContainer (forged);
        writeBytes (file, forged);

        ASSERT_EQ (openingRaises (file), each.onOpen) << each.what;
        if (*each.onOpen != 0)
            continue;
        packer.openFile (file, true);
        if (const auto* const node = packer.getCompartments().firstNode(); node != nullptr)
        {
            EXPECT_EQ (raisedBy ([&] { packer.readCompartment (node->value); }), each.onRead) << each.what;
        }
        EXPECT_EQ (raisedBy ([&] { write (beta, 5, one, true); }), each.onWrite) << each.what;
        if (*each.onWrite != 0)
        {
            EXPECT_EQ (readBytes (file), forged) << each.what;
        }
        EXPECT_EQ (folder.fileCount(), 1) << each.what;
    }
}

TEST_F (Container, createsTheBareHeaderAndNeverOverwrites)
{
    const auto nested = folder.file ("a/b/new.mv_onbank");
    packer.createFile (nested);
    Bytes expected = HandWriter().word (0).append (reversed ("cbnk")).number (0, 8).word (1).word (4).bytes;
    expected = HandWriter { expected }.word (0).word (1).word (0).word (0).bytes;
    EXPECT_EQ (readBytes (nested), expected);
    EXPECT_EQ (openingRaises (nested), "");

    writeBytes (file, one);
    EXPECT_EQ (raisedBy ([&] { packer.createFile (file); }), "12 Could not create file");
    EXPECT_EQ (readBytes (file), one);
    EXPECT_EQ (raisedBy ([&] { packer.createFile (folder.file ("a")); }), "12 Could not create file");
    EXPECT_EQ (raisedBy ([&] { packer.createFile (file.getChildFile ("under_a_file")); }), "12 Could not create file");

    const auto unwritten = folder.file ("full.mv_onbank");
    const FullDisk disk (10);
    EXPECT_EQ (raisedBy ([&] { packer.createFile (unwritten); }), "13 Could not write to file");
    EXPECT_FALSE (unwritten.exists());
}

TEST_F (Container, leavesTheOldFileWhenTheDiskIsFull)
{
    // Full while data is copied, while the directory is written, and one byte short of the end.
    for (const int room : { 20, 100, 400, 418 })
    {
        openSmall();
        {
            const FullDisk disk (room);
            const auto raised = raisedBy ([&] { write (alpha, 0, { 9, 9, 9, 9, 9, 9, 9 }, false); });
            EXPECT_TRUE (raised == writeFailure || raised == copyFailure) << room << raised;
        }
        EXPECT_EQ (readBytes (file), smallContainer()) << room;
        EXPECT_EQ (folder.fileCount(), 1) << room;
        EXPECT_EQ (write (alpha, 0, one, false), resultDone) << room;
    }
}

TEST_F (Container, refusesAProtectedFileAndAnUnusableTemporaryName)
{
    namespace fs = std::filesystem;
    openSmall();
    const fs::path path (file.getFullPathName().toStdString());
    fs::permissions (path, fs::perms::owner_read);
    EXPECT_EQ (raisedBy ([&] { write (alpha, 0, two, false); }), switchFailure);
    EXPECT_EQ (readBytes (file), smallContainer());
    EXPECT_EQ (folder.fileCount(), 1);

    const auto usual = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
    fs::permissions (path, usual);
    temporaryOf (file).getChildFile ("in the way").create();
    EXPECT_EQ (raisedBy ([&] { write (alpha, 0, two, false); }), "12 File permission problem");
    EXPECT_EQ (readBytes (file), smallContainer());

    temporaryOf (file).deleteRecursively();
    EXPECT_EQ (write (alpha, 0, two, false), resultDone);
    EXPECT_EQ (fs::status (path).permissions(), usual);
}

TEST_F (Container, takesACompleteLeftoverOnlyForAMissingFile)
{
    const Bytes old = handContainer ({ { "alfa", 1, two } });
    Bytes wrong = smallContainer();
    wrong[50] ^= 1;
    Bytes onlyBegun = handContainer ({});
    putNumber (onlyBegun, 0, 0, 4);
    putNumber (onlyBegun, 8, 0, 8);

    struct
    {
        const char* what;
        Bytes container;
        Bytes leftover;
        const char* raised;
        Bytes expected;
    } const cases[] {
        { "complete, container missing", {}, smallContainer(), "", smallContainer() },
        { "complete, container there", old, smallContainer(), "", old },
        { "wrong checksum", {}, wrong, notFound, {} },
        { "only the header was begun", {}, onlyBegun, notFound, {} },
        { "cut short", {}, Bytes (39), notFound, {} },
    };

    for (const auto& each : cases)
    {
        file.deleteFile();
        if (! each.container.empty())
            writeBytes (file, each.container);
        writeBytes (temporaryOf (file), each.leftover);
        EXPECT_EQ (openingRaises (file), each.raised) << each.what;
        EXPECT_EQ (readBytes (file), each.expected) << each.what;
    }

    writeBytes (file, old);
    packer.openFile (file, true);
    write (beta, 0, one, true);
    EXPECT_FALSE (temporaryOf (file).exists());
    EXPECT_EQ (openingRaises (juce::File()), notFound);
    EXPECT_EQ (openingRaises (folder.folder), notFound);
}

TEST_F (Container, tellsWhenTheFileHasMoved)
{
    openSmall();
    const auto entry = packer.getCompartments().firstNode()->value;
    file.deleteFile();
    EXPECT_EQ (raisedBy ([&] { packer.readCompartment (entry); }), noStream);
    EXPECT_EQ (raisedBy ([&] { write (alpha, 0, one, false); }), "12 File permission problem");
    EXPECT_EQ (folder.fileCount(), 0);
}

TEST_F (Container, followsAnotherPackersChanges)
{
    openSmall();
    MVFilePacker other;
    other.openFile (file, true);
    other.writeCompartment (alpha, 0, compartmentRaw, toBlock (two), false);

    EXPECT_EQ (write (beta, 1, one, true), resultDone);
    EXPECT_EQ (readBytes (file),
               handContainer ({ { "alfa", 1, two }, { "beta", 2, two }, { "alfa", 1, three }, { "beta", 1, one } }));
}
