// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVChunks.h"
#include "foundation/MVMath.h"
#include "foundation/MVRiffPacker.h"
#include "support/TestRandom.h"

#include <gtest/gtest.h>

#include <vector>

namespace morvanelab
{

namespace
{

using Bytes = std::vector<std::uint8_t>;

Bytes packed (const MVRiffPacker& chunk, bool withChecksum)
{
    Bytes bytes (static_cast<std::size_t> (chunk.packedSize()), 0xEE);
    EXPECT_TRUE (chunk.pack (bytes.data(), withChecksum));
    return bytes;
}

MVRiffPacker parsed (const Bytes& bytes, bool verify = false)
{
    return MVRiffPacker (bytes.data(), static_cast<int> (bytes.size()), verify);
}

MVRiffPacker sampleTree()
{
    MVRiffPacker root (fourCC ("RIFF"));
    auto inner = makeSmart<MVRiffPacker> (fourCC ("list"));
    inner->addChild (makeSmart<MVRiffPacker> (fourCC ("leaf"), "\1\2\3", 3));
    inner->addChild (makeSmart<MVRiffPacker> (fourCC ("leaf"), "\4", 1));
    root.addChild (inner);
    root.addChild (makeSmart<MVRiffPacker> (fourCC ("leaf"), "\5\6", 2));
    return MVRiffPacker (packed (root, false).data(), root.packedSize(), false);
}

MVSmartPtr<MVRiffPacker> nested (int depth)
{
    auto chunk = makeSmart<MVRiffPacker> (1U, "x", 1);
    for (int i = 1; i < depth; ++i)
    {
        auto outer = makeSmart<MVRiffPacker> (1U);
        outer->addChild (chunk);
        chunk = outer;
    }
    return chunk;
}

void addWord (Bytes& bytes, std::uint32_t word)
{
    for (int i = 0; i < 4; ++i)
        bytes.push_back (static_cast<std::uint8_t> (word >> (8 * i)));
}

Bytes words (std::initializer_list<std::uint32_t> list)
{
    Bytes bytes;
    for (const std::uint32_t word : list)
        addWord (bytes, word);
    return bytes;
}

} // namespace

TEST (RiffPacker, checksumMatchesHandWork)
{
    // 1; then -256 + 1 on 1, in wrapping arithmetic, modulo 134217727; then 3 << 2 and 2.
    const std::uint8_t bytes[] { 1, 0x80, 3 };
    EXPECT_EQ (MVRiffPacker::checksum (bytes, 0), 0U);
    EXPECT_EQ (MVRiffPacker::checksum (bytes, 1), 1U);
    EXPECT_EQ (MVRiffPacker::checksum (bytes, 2), 134217505U);
    EXPECT_EQ (MVRiffPacker::checksum (bytes, 3), 134217519U);

    // The index starts again after 32767: 32766 * 32767 / 2 over zeros, then 0 and 1.
    const Bytes zeros (32769, 0);
    EXPECT_EQ (MVRiffPacker::checksum (zeros.data(), 32767), 32766U * 32767U / 2 % 0x7FFFFFFU);
    EXPECT_EQ (MVRiffPacker::checksum (zeros.data(), 32769), (32766U * 32767U / 2 + 1) % 0x7FFFFFFU);
}

TEST (RiffPacker, bytesAreThoseOfTheFormat)
{
    MVRiffPacker root (fourCC ("RIFF"), "AB", 2);
    root.addChild (makeSmart<MVRiffPacker> (fourCC ("str "), "h", 1));

    Bytes expected { 'F', 'R', 'V', 'M', 1, 4, 0, 1, 'F', 'F', 'I', 'R', 59, 0, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0,
                     // the child, with its own empty trailer
                     'F', 'R', 'V', 'M', 1, 4, 0, 0, 0x20, 'r', 't', 's', 29, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 'h', 0,
                     0, 0, 0,
                     // the payload comes behind the children
                     'A', 'B' };
    addWord (expected, MVRiffPacker::checksum (expected.data(), 55));
    EXPECT_EQ (packed (root, true), expected);

    EXPECT_EQ (MVRiffPacker (1).packedSize(), 28);
    EXPECT_TRUE (parsed (expected, true).isWellFormed());
}

TEST (RiffPacker, treesComeBackAsTheyWere)
{
    const MVRiffPacker tree = sampleTree();
    ASSERT_TRUE (tree.isWellFormed());
    EXPECT_EQ (tree.countChildren (fourCC ("leaf")), 1);
    EXPECT_EQ (tree.findDeep (fourCC ("leaf"))->getPayload()[0], 5); // a direct child wins
    const auto list = tree.findDeep (fourCC ("list"));
    EXPECT_EQ (list->findChild (fourCC ("leaf"), 1)->getPayload()[0], 4);
    EXPECT_TRUE (list->findChild (fourCC ("leaf"), 2) == nullptr);
    EXPECT_TRUE (list->findChild (fourCC ("leaf"), -1) == nullptr);
    EXPECT_TRUE (tree.childAt (2) == nullptr);
    EXPECT_TRUE (tree.findDeep (fourCC ("none")) == nullptr);
    EXPECT_EQ (packed (tree, true), packed (MVRiffPacker (tree), true));
}

TEST (RiffPacker, copyOfAChunkWithChildrenLosesItsBytesOnly)
{
    MVRiffPacker both (1, "abc", 3);
    both.addChild (makeSmart<MVRiffPacker> (2U, "d", 1));
    const MVRiffPacker copy (both);
    EXPECT_EQ (copy.getPayload(), nullptr);
    EXPECT_EQ (copy.getPayloadSize(), 3);
    EXPECT_EQ (copy.readablePayload(), 0);
    EXPECT_EQ (copy.childAt (0)->readablePayload(), 1);

    const Bytes bytes = packed (copy, false);
    EXPECT_EQ (bytes.size(), packed (both, false).size());
    EXPECT_EQ (bytes[24 + 29], 0);
}

TEST (RiffPacker, everyChangedByteFailsTheChecksum)
{
    const Bytes good = packed (sampleTree(), true);
    ASSERT_TRUE (parsed (good, true).isWellFormed());

    for (std::size_t i = 0; i < good.size(); ++i)
    {
        Bytes bad = good;
        bad[i] = static_cast<std::uint8_t> (bad[i] ^ 0x10);
        EXPECT_FALSE (parsed (bad, true).isWellFormed() && i >= 4) << "byte " << i;
    }

    // The trailer of the first leaf: 24 of the root, 24 of the list, 24 and 3 of the leaf.
    Bytes unnoticed = good;
    unnoticed[24 + 24 + 24 + 3] = 0x55;
    EXPECT_TRUE (parsed (unnoticed, false).isWellFormed());
    EXPECT_FALSE (parsed (unnoticed, true).isWellFormed());
}

TEST (RiffPacker, cutFilesAreNotWellFormed)
{
    const Bytes good = packed (sampleTree(), true);

    for (std::size_t length = 0; length < good.size(); ++length)
    {
        const Bytes cut (good.begin(), good.begin() + static_cast<std::ptrdiff_t> (length));
        const MVRiffPacker chunk = parsed (cut);
        EXPECT_FALSE (chunk.isWellFormed()) << length;
        EXPECT_EQ (chunk.childCount(), 0);
        EXPECT_EQ (chunk.getChunkId(), 0U);
    }

    EXPECT_TRUE (parsed (good).isWellFormed());
    EXPECT_FALSE (MVRiffPacker (nullptr, 15, false).isWellFormed());
    EXPECT_TRUE (MVRiffPacker (nullptr, 16, false).isWellFormed());
}

TEST (RiffPacker, cutEmptyChunkCountsAsEmpty)
{
    Bytes bytes = packed (MVRiffPacker (fourCC ("abcd")), false);
    bytes.resize (26);
    EXPECT_TRUE (parsed (bytes).isWellFormed());
    EXPECT_EQ (parsed (bytes).getChunkId(), 0U);
    EXPECT_FALSE (parsed (bytes, true).isWellFormed());
}

TEST (RiffPacker, forgedNumbersAreRejected)
{
    struct Lie
    {
        const char* what;
        std::size_t offset;
        std::uint32_t value;
    };
    const Lie lies[] {
        { "total too small", 12, 27 },
        { "total zero", 12, 0 },
        { "total huge", 12, 0xFFFFFFFF },
        { "total one more", 12, 134 },
        { "payload huge", 16, 0x80000000 },
        { "payload one", 16, 1 },
        { "one child more", 20, 3 },
        { "one child less", 20, 1 },
        { "billions of children", 20, 0xFFFFFFFF },
        { "inner total reaches outside", 24 + 12, 110 },
        { "inner total huge", 24 + 12, 0x7FFFFFFF },
        { "inner payload", 24 + 16, 40 },
        { "inner children", 24 + 20, 0x01000000 },
    };
    const Bytes good = packed (sampleTree(), false);
    ASSERT_EQ (good.size(), 28U + 28 + 31 + 29 + 30);

    for (const Lie& lie : lies)
    {
        Bytes bad = good;
        storeNumber (bad.data() + lie.offset, lie.value);
        EXPECT_FALSE (parsed (bad).isWellFormed()) << lie.what;
    }
}

TEST (RiffPacker, randomDamageNeverEscapesTheBuffer)
{
    test::TestRandom random (17);
    const Bytes good = packed (sampleTree(), true);

    for (int round = 0; round < 20000; ++round)
    {
        // An exact heap copy lets an address sanitizer see one byte too many.
        Bytes bad = good;
        for (int i = random.below (4); i >= 0; --i)
            bad[static_cast<std::size_t> (random.below (static_cast<int> (bad.size())))] =
                static_cast<std::uint8_t> (random.next());
        const Bytes cut (bad.begin(), bad.begin() + random.below (static_cast<int> (bad.size()) + 1));
        const MVRiffPacker chunk = parsed (cut, random.chance (0.2));
        EXPECT_TRUE (chunk.isWellFormed() || chunk.childCount() == 0);
    }
}

TEST (RiffPacker, depthIsBounded)
{
    const auto deepest = nested (MVRiffPacker::maxDepth);
    Bytes bytes = packed (*deepest, false);
    ASSERT_TRUE (parsed (bytes).isWellFormed());

    // One level more around the same bytes.
    Bytes outer = words ({ 0x4D565246, 0x00000401, 1, static_cast<std::uint32_t> (bytes.size()) + 28, 0, 1 });
    outer.insert (outer.end(), bytes.begin(), bytes.end());
    addWord (outer, 0);
    EXPECT_FALSE (parsed (outer).isWellFormed());

    EXPECT_EQ (nested (MVRiffPacker::maxDepth + 1)->packedSize(), 0);
    const auto tower = nested (200000); // must neither be packed, copied whole, searched nor destroyed by recursion
    EXPECT_TRUE (tower->packToBlock (true) == nullptr);
    EXPECT_EQ (MVRiffPacker (*tower).packedSize(), 0);
    EXPECT_TRUE (tower->findDeep (2) == nullptr);
}

TEST (RiffPacker, olderFormIsRead)
{
    // A chunk with one child that has a payload, and a payload of its own.
    const Bytes plain = words ({ 0x11, 36, 1, 0x22, 16, 0, 0xAABBCCDD, 0x1234, 0x5678 });
    const MVRiffPacker chunk = parsed (plain);
    ASSERT_TRUE (chunk.isWellFormed());
    EXPECT_EQ (chunk.getChunkId(), 0x11U);
    EXPECT_EQ (chunkNumber<std::uint32_t> (chunk.childAt (0)), 0xAABBCCDDU);
    EXPECT_EQ (chunk.getPayloadSize(), 8);
    EXPECT_EQ (chunk.legacySize(), 36);

    EXPECT_FALSE (parsed (words ({ 0x11, 37, 1, 0x22, 16, 0, 0xAABBCCDD, 0x1234, 0x5678 })).isWellFormed());
    EXPECT_FALSE (parsed (words ({ 0x11, 16, 4, 0 })).isWellFormed());
    EXPECT_FALSE (parsed (words ({ 0x11, 28, 1, 0x22, 30, 0, 0 })).isWellFormed());
}

TEST (RiffPacker, olderFormWithChecksumTakesFourBytesFromBehind)
{
    Bytes bytes = words ({ 0x11, 20, 0, 0, 0xA1A2A3A4, 0xB1B2B3B4 });
    storeNumber (bytes.data() + 8, MVRiffPacker::checksum (bytes.data() + 12, 8));
    const MVRiffPacker chunk = parsed (bytes, true);
    ASSERT_TRUE (chunk.isWellFormed());
    EXPECT_EQ (chunk.getPayloadSize(), 8);
    EXPECT_EQ (chunk.getPayload()[7], 0xB1);

    Bytes exact (bytes.begin(), bytes.begin() + 20); // nothing is behind it
    EXPECT_FALSE (parsed (exact, true).isWellFormed());
    bytes[16] = 0;
    EXPECT_FALSE (parsed (bytes, true).isWellFormed());
}

TEST (Chunks, tooShortCountsAsAbsent)
{
    MVRiffPacker form (fourCC ("RIFF"));
    addChunk (form, fourCC ("numb"), std::int32_t { -7 });
    form.addChild (makeSmart<MVRiffPacker> (fourCC ("shrt"), "abc", 3));
    addTextChunk (form, fourCC ("name"), "Bell");
    EXPECT_EQ (childNumber<std::int32_t> (form, fourCC ("numb")), -7);
    EXPECT_FALSE (childNumber<double> (form, fourCC ("numb")).has_value());
    EXPECT_FALSE (childNumber<std::int32_t> (form, fourCC ("shrt")).has_value());
    EXPECT_FALSE (chunkNumber<std::uint16_t> (form.findChild (fourCC ("shrt")), 1).has_value());
    EXPECT_FALSE (chunkNumber<std::uint16_t> (form.findChild (fourCC ("shrt")), -1).has_value());
    EXPECT_TRUE (childText (form, fourCC ("name"))->equals ("Bell"));
    EXPECT_FALSE (childText (form, fourCC ("none")).has_value());

    double record[2] { 1.0, 2.0 };
    EXPECT_FALSE (chunkRecord (form.findChild (fourCC ("numb")), record));
    EXPECT_EQ (record[0], 1.0);
}

TEST (Chunks, versionIsSixteenBytesAndComparesByItsFirstThreeNumbers)
{
    MVRiffPacker form (1);
    EXPECT_FALSE (storedVersionCode (form).has_value());
    addVersionChunk (form);
    const auto chunk = form.childAt (0);
    const Bytes stored (chunk->getPayload(), chunk->getPayload() + chunk->getPayloadSize());
    EXPECT_EQ (stored, words ({ 1, 4, 0, 1 }));
    EXPECT_EQ (storedVersionCode (form), currentVersionCode);

    MVRiffPacker twelve (1);
    twelve.addChild (makeSmart<MVRiffPacker> (fourCC ("ver "), words ({ 0, 9, 3 }).data(), 12));
    EXPECT_EQ (storedVersionCode (twelve), 9300U);
    MVRiffPacker eleven (1);
    eleven.addChild (makeSmart<MVRiffPacker> (fourCC ("ver "), words ({ 0, 9, 3 }).data(), 11));
    EXPECT_FALSE (storedVersionCode (eleven).has_value());
}

TEST (ByteReader, failureSticks)
{
    const Bytes bytes = words ({ 0x01020304, 0x05060708 });
    MVByteReader reader (bytes.data(), bytes.size());
    EXPECT_EQ (reader.read<std::uint16_t>(), 0x0304);
    EXPECT_TRUE (reader.canHold (3, 2));
    EXPECT_FALSE (reader.canHold (0xFFFFFFFFFFFFFFFF, 2));
    EXPECT_EQ (reader.read<double>(), 0.0);
    EXPECT_TRUE (reader.hasFailed());
    EXPECT_EQ (reader.read<std::uint8_t>(), 0);
    EXPECT_FALSE (reader.seek (0));
    EXPECT_EQ (reader.remaining(), 0U);
}

} // namespace morvanelab
