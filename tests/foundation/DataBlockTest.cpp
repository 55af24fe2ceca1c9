// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVDataBlock.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

namespace morvanelab
{

namespace
{

std::string contents (MVDataBlock& block)
{
    const auto* const bytes = block.flatBytes();
    return bytes != nullptr
               ? std::string (reinterpret_cast<const char*> (bytes), static_cast<std::size_t> (block.getUsed()))
               : std::string();
}

} // namespace

TEST (DataBlock, keepsOrderOnceAPieceWaits)
{
    MVDataBlock block (4);
    char later[] = "cdef";
    EXPECT_TRUE (block.appendCopy ("ab", 2));
    EXPECT_TRUE (block.appendReference (later, 4));
    EXPECT_TRUE (block.appendCopy ("g", 1)); // would fit, but has to wait behind the others
    EXPECT_EQ (block.getUsed(), 2);
    EXPECT_EQ (block.totalSize(), 7);
    later[0] = 'C'; // a reference is read at the flattening
    EXPECT_TRUE (block.appendZeros (1));
    EXPECT_EQ (contents (block), std::string ("abCdefg\0", 8));
    EXPECT_EQ (block.getCapacity(), 8);
}

TEST (DataBlock, refusesWhatItCannotHold)
{
    MVDataBlock block;
    EXPECT_FALSE (block.appendCopy (nullptr, 1));
    EXPECT_FALSE (block.appendZeros (-1));
    const char byte = 'x';
    EXPECT_TRUE (block.appendCopy (&byte, 1));
    EXPECT_FALSE (block.appendReference (&byte, std::numeric_limits<int>::max()));
    EXPECT_EQ (contents (block), "x");
}

TEST (DataBlock, sizesFollowTheirOwnRules)
{
    MVDataBlock block (100);
    block.appendZeros (10);
    EXPECT_EQ (block.dataWithSize (101), nullptr);
    EXPECT_EQ (block.dataWithSize (-1), nullptr);
    EXPECT_NE (block.dataWithSize (20), nullptr);
    EXPECT_EQ (block.getUsed(), 20);
    EXPECT_EQ (block.setSize (100), 20);
    EXPECT_EQ (block.setSize (-5), 20);
    EXPECT_EQ (block.setSize (99), 99);
    block.dataWithSize (0);
    EXPECT_EQ (block.getUsed(), 100);

    block.clear (false);
    EXPECT_EQ (block.getCapacity(), 100);
    block.zeroFill();
    EXPECT_EQ (contents (block), std::string (100, '\0'));
    block.clear (true);
    EXPECT_EQ (block.getCapacity(), 0);
    EXPECT_EQ (block.flatBytes(), nullptr);
}

TEST (DataBlock, elementsAreAddressedWithinBounds)
{
    MVDataBlock block ("0123456789", 10);
    int remaining = 0;
    EXPECT_EQ (*block.pointerAt (1, 4, &remaining), '4');
    EXPECT_EQ (remaining, 1);
    EXPECT_EQ (block.pointerAt (2, 4, &remaining), nullptr); // two bytes are no element
    EXPECT_EQ (remaining, 0);
    EXPECT_EQ (block.pointerAt (3, 4, &remaining), nullptr);
    EXPECT_EQ (block.pointerAt (-1, 4), nullptr);
    EXPECT_EQ (block.pointerAt (2, 4), nullptr);
    EXPECT_EQ (block.pointerAt (std::numeric_limits<int>::max(), 8), nullptr);
    EXPECT_EQ (block.pointerAt (0, 0), nullptr);
}

TEST (DataBlock, ringsWrapBothWays)
{
    MVDataBlock block ("abcdefgh", 8);
    char out[13] {};
    block.readRing (out, 3, 6, 2); // starts at byte 6, goes round once and a half
    EXPECT_STREQ (out, "ghabcdefghab");

    std::memset (out, 0, sizeof (out));
    block.readRing (out, -1, 2, 1);
    EXPECT_STREQ (out, "ha");

    block.writeRing ("XYZ", 7, 3, 1);
    EXPECT_EQ (contents (block), "YZcdefgX");
    block.writeRing ("1234", std::numeric_limits<std::int64_t>::max(), 2, 2); // byte 14 of 8 is 6
    EXPECT_EQ (contents (block), "34cdef12");
    block.writeRing (nullptr, 0, 4, 1);
    block.readRing (out, 0, -4, 1);

    MVDataBlock empty (8);
    empty.writeRing ("x", 0, 1, 1);
    empty.readRing (out, 0, 1, 1);
    EXPECT_EQ (out[0], 'h');
}

TEST (DataBlock, copiesTakeTheFlatBytesOnly)
{
    MVDataBlock block (2);
    block.appendCopy ("ab", 2);
    block.appendCopy ("cd", 2);
    MVDataBlock copy (block);
    EXPECT_EQ (contents (copy), "ab");
    EXPECT_EQ (contents (block), "abcd");
}

} // namespace morvanelab
