// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVChunks.h"
#include "foundation/MVMath.h"
#include "foundation/MVMetaData.h"
#include "foundation/MVRandom.h"
#include "foundation/MVTime.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <limits>

namespace morvanelab
{

TEST (Random, firstNumbersMatchHandWork)
{
    MVRandom random (0);
    EXPECT_EQ (random.next32(), 0U);
    EXPECT_EQ (random.getState(), 11U);
    EXPECT_EQ (random.next32(), 4232237U); // (11 * 25214903917 + 11) / 65536
}

TEST (Random, rangesReachBothEndsAndNoFurther)
{
    MVRandom random (5);
    std::array<int, 3> hits {};
    for (int i = 0; i < 300; ++i)
        ++hits.at (static_cast<std::size_t> (random.nextInRange ({ -1, 2 }) + 1));
    for (const int count : hits)
        EXPECT_GT (count, 60);

    const auto state = random.getState();
    EXPECT_EQ (random.nextInRange ({ 9, 0 }), 9);
    EXPECT_EQ (random.getState(), state);
    for (int i = 0; i < 100; ++i)
        EXPECT_GE (random.nextInRange ({ -5, std::numeric_limits<int>::max() }), -5);

    // The scale is one bit pattern: the largest draw times it is 1 (2^31 - 1 is drawn from this state).
    EXPECT_EQ (std::bit_cast<std::uint64_t> (1.0 / 2147483647.0), 0x3E00000000200000ULL);
    double lowest = 1e9, highest = -1e9;
    for (int i = 0; i < 2000; ++i)
    {
        const double value = random.nextInFloatRange ({ -1.0, 2.0 });
        lowest = std::min (lowest, value);
        highest = std::max (highest, value);
    }
    EXPECT_GE (lowest, -1.0);
    EXPECT_LE (highest, 1.0);
    EXPECT_LT (lowest, -0.99);
    EXPECT_GT (highest, 0.99);
}

TEST (Random, chanceAndWeightsFollowTheirProbabilities)
{
    MVRandom random (77);
    const auto state = random.getState();
    EXPECT_TRUE (random.chance (1.0));
    EXPECT_FALSE (random.chance (0.0));
    EXPECT_EQ (random.getState(), state);

    MVVector<double> weights;
    EXPECT_EQ (random.weightedChoice (nullptr), -1);
    EXPECT_EQ (random.weightedChoice (&weights), -1);
    for (const double weight : { 1.0, 0.0, 3.0 })
        weights.add (weight);

    int rare = 0, taken = 0;
    for (int i = 0; i < 4000; ++i)
    {
        const int choice = random.weightedChoice (&weights);
        ASSERT_NE (choice, 1);
        rare += choice == 0 ? 1 : 0;
        taken += random.chance (0.25) ? 1 : 0;
    }
    EXPECT_NEAR (rare, 1000, 150); // five standard deviations
    EXPECT_NEAR (taken, 1000, 150);
}

TEST (Random, flipsExactlyOneBitInside)
{
    MVRandom random (3);
    std::array<std::uint8_t, 6> guarded {};
    for (int i = 0; i < 200; ++i)
    {
        guarded.fill (0);
        random.flipRandomBit (guarded.data() + 1, 4);
        int bits = 0;
        for (const auto byte : guarded)
            bits += std::popcount (byte);
        EXPECT_EQ (bits, 1);
        EXPECT_EQ (guarded.front() + guarded.back(), 0);
    }
    random.flipRandomBit (guarded.data(), 0);
    random.flipRandomBit (nullptr, 4);
}

TEST (Random, sourcesCanAllStartFromOneState)
{
    MVRandom::startAllFrom (1234);
    MVRandom first, second;
    EXPECT_EQ (first.next32(), second.next32());
    EXPECT_EQ (MVRandom().getState(), 1234U);
    MVRandom::startAllFrom (0);
    EXPECT_EQ (MVRandom().getState(), 0U);
    MVRandom::startAllFromClock();
    EXPECT_GT (MVRandom().getState(), 1234U);
}

TEST (Time, millisecondsPassThroughSinglePrecision)
{
    EXPECT_EQ (MVTime::toNanos (3, 0), 3000000000);
    // 250e9 is stored as 249999998976; times the single 0.001 that is 250000010.85, and singles there are 16 apart.
    EXPECT_EQ (MVTime::toNanos (0, 250), 250000016);
    // 999e9 is stored as 998999982080; the product 999000029.5 has singles 64 apart.
    EXPECT_EQ (MVTime::toNanos (0, 999), 999000000);

    MVTime time;
    EXPECT_GT (time.elapsedNanos(), std::int64_t { 1600000000 } * 1000000000);
    time.resetStart();
    EXPECT_LT (time.elapsedNanos(), std::int64_t { 60 } * 1000000000);
}

TEST (MetaData, packsInTheTablesOrder)
{
    MVMetaData meta;
    meta.setGenre ("Pad");
    meta.setName ("Warm");
    meta.setUuid ("u-1");
    meta.addSearchTag (4);
    meta.addSearchTag (-2);
    auto image = makeSmart<MVRiffPacker> (fourCC ("ilog"), "img", 3);
    meta.setImage (image);
    EXPECT_TRUE (image == nullptr);

    const auto packed = meta.packRiff();
    const std::uint32_t expected[] { fourCC ("name"), fourCC ("lock"), fourCC ("uuid"), fourCC ("gnre"),
                                     fourCC ("stag"), fourCC ("stag"), fourCC ("ilog") };
    ASSERT_EQ (packed->childCount(), 7);
    EXPECT_EQ (packed->getChunkId(), fourCC ("meta"));
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ (packed->childAt (i)->getChunkId(), expected[i]) << i;

    MVMetaData copy;
    copy.setAuthor ("kept");
    copy.addSearchTag (99);
    copy.unpackRiff (*packed);
    EXPECT_TRUE (copy.getName().equals ("Warm"));
    EXPECT_TRUE (copy.getAuthor().equals ("kept"));
    EXPECT_EQ (copy.searchTagCount(), 2);
    EXPECT_EQ (copy.getSearchTag (1), -2);
    EXPECT_EQ (copy.getSearchTag (2), -1);
    EXPECT_EQ (copy.getSearchTag (-1), -1);
    EXPECT_EQ (copy.getImage()->getPayloadSize(), 3);
}

TEST (MetaData, emptyTimeIsFilledInAndMissingTimeLeft)
{
    MVMetaData meta;
    meta.setTimestamp ("kept");
    meta.unpackRiff (MVRiffPacker (1));
    EXPECT_TRUE (meta.getTimestamp().equals ("kept"));

    MVRiffPacker form (MVMetaData::chunkType);
    form.addChild (makeSmart<MVRiffPacker> (fourCC ("time")));
    meta.unpackRiff (form);
    EXPECT_EQ (meta.getTimestamp().length(), 24); // such as "Thu Jan  1 00:00:00 1970"
    EXPECT_EQ (meta.getTimestamp().charAt (13), ':');
}

TEST (MetaData, lockAndItsHashSurvive)
{
    auto lock = makeChunk (fourCC ("lock"), std::int32_t { 1 });
    lock->addChild (makeSmart<MVRiffPacker> (fourCC ("pswd"), "hash", 4));
    MVRiffPacker form (MVMetaData::chunkType);
    form.addChild (lock);

    MVMetaData meta;
    meta.unpackRiff (form);
    const auto packed = MVMetaData (meta).packRiff();
    const auto stored = packed->findChild (fourCC ("lock"));
    EXPECT_EQ (chunkNumber<std::int32_t> (stored), 1);
    EXPECT_EQ (stored->findChild (fourCC ("pswd"))->readablePayload(), 4);
}

TEST (MetaData, searchLooksAtThreeFields)
{
    MVMetaData meta;
    meta.setName ("Warm Pad");
    meta.setAuthor ("Ann");
    meta.setDescription ("Slow strings");
    meta.setGenre ("Ambient");
    for (const char* const hit : { "pad", "ANN", "string", "" })
        EXPECT_TRUE (meta.matches (hit)) << hit;
    EXPECT_FALSE (meta.matches ("ambient"));
}

} // namespace morvanelab
