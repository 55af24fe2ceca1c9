// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVInputStream.h"
#include "engine/MVOutputStream.h"
#include "support/TestRandom.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

namespace morvanelab::test
{

namespace
{

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

template <typename Sample>
Sample writeOne (int type, double value)
{
    Sample result {};
    sampleWriterFor (type) (&result, &value, 1, 1);
    return result;
}

template <typename Sample>
double readOne (int type, Sample value)
{
    double result = 0.0;
    sampleReaderFor (type) (&result, &value, 1, 1);
    return result;
}

std::vector<float> ramp (int count, float first)
{
    std::vector<float> samples (static_cast<std::size_t> (count));
    std::iota (samples.begin(), samples.end(), first);
    return samples;
}

} // namespace

TEST (SampleConverters, scaleRoundAndSaturate)
{
    struct Row
    {
        double value;
        int as8;
        int as16;
        std::int64_t as32;
    };

    // Half an integer step rounds away from zero: 0.5 / 127 is 0.5 of an 8-bit step.
    const Row rows[] {
        { 0.0, 0, 0, 0 },
        { 1.0, 127, 32767, 2147483647 },
        { -1.0, -127, -32767, -2147483647 },
        { 0.5 / 127.0, 1, 129, 8454660 },
        { 1.5, 127, 32767, 2147483647 },
        { -1.5, -128, -32768, -2147483648LL },
        { infinity, 127, 32767, 2147483647 },
        { -infinity, -128, -32768, -2147483648LL },
        { nan, 0, 0, 0 },
    };

    for (const Row& row : rows)
    {
        EXPECT_EQ (writeOne<std::uint8_t> (1, row.value), row.as8 + 128) << row.value;
        EXPECT_EQ (writeOne<std::int8_t> (2, row.value), row.as8) << row.value;
        EXPECT_EQ (writeOne<std::int16_t> (4, row.value), row.as16) << row.value;
        EXPECT_EQ (writeOne<std::int32_t> (5, row.value), row.as32) << row.value;
    }

    EXPECT_EQ (writeOne<float> (6, 2.5), 2.5f);
    EXPECT_TRUE (std::isnan (writeOne<float> (6, nan)));
}

TEST (SampleConverters, everyIntegerSampleComesBack)
{
    for (int sample = -32768; sample <= 32767; ++sample)
    {
        const auto value = static_cast<std::int16_t> (sample);
        ASSERT_EQ (writeOne<std::int16_t> (4, readOne (4, value)), value);
    }

    for (const std::int32_t value : { -2147483647 - 1, -2147483647, -1, 0, 1, 123456789, 2147483647 })
        EXPECT_EQ (writeOne<std::int32_t> (5, readOne (5, value)), value);
    EXPECT_EQ (readOne (2, std::int8_t { -127 }), -1.0);
    EXPECT_EQ (readOne (6, -3.25f), -3.25);
}

TEST (SampleConverters, strideTouchesOneChannelOnly)
{
    std::int16_t frames[] { 7, 7, 7, 7, 7, 7 };
    const double values[] { 1.0, -1.0, 0.0 };
    sampleWriterFor (4) (frames + 1, values, 3, 2);

    const std::int16_t expected[] { 7, 32767, 7, -32767, 7, 0 };
    EXPECT_EQ (0, std::memcmp (frames, expected, sizeof (frames)));
}

TEST (SampleConverters, typesThatASideDoesNotTake)
{
    EXPECT_EQ (sampleReaderFor (1), nullptr);
    for (const int type : { -1, 0, 3, 7 })
    {
        EXPECT_EQ (sampleReaderFor (type), nullptr) << type;
        EXPECT_EQ (sampleWriterFor (type), nullptr) << type;
    }
}

TEST (InputStream, blocksAreTheNextSamplesAfterThePriming)
{
    struct Row
    {
        int announced;
        float firstSample; ///< of the first block of 256: a primed ring begins with as many zeros
    };

    for (const Row& row : { Row { 512, 1.0f }, Row { 100, 0.0f } })
    {
        MVRenderStreamFormat format;
        format.maxBlock = row.announced;
        MVInputStream stream;
        stream.configure (format);
        stream.setActive (true);

        const auto left = ramp (1024, 1.0f);
        const auto right = ramp (1024, 2001.0f);
        const void* data[] { left.data(), right.data() };
        stream.write (data, 2, 1024);
        stream.pull();

        const std::array<double, 256> silence {};
        const double* const* blocks = stream.blocks (silence.data());
        EXPECT_EQ (blocks[0][0], row.firstSample) << row.announced;
        EXPECT_EQ (blocks[2], silence.data());

        if (row.firstSample == 0.0f)
            stream.pull();
        for (int i = 0; i < 256; ++i)
        {
            ASSERT_EQ (blocks[0][i], 1.0 + i) << row.announced;
            ASSERT_EQ (blocks[1][i], 2001.0 + i) << row.announced;
        }
    }
}

TEST (InputStream, interleavedFramesAreTakenApart)
{
    MVRenderStreamFormat format;
    format.inputLayout = layoutInterleaved;
    format.inputSampleType = sampleInt16;
    MVInputStream stream;
    stream.configure (format);
    stream.setActive (true);

    std::array<std::int16_t, 512> frames {};
    for (std::size_t i = 0; i < 256; ++i)
    {
        frames[2 * i] = 32767;
        frames[2 * i + 1] = -32767;
    }

    const void* data[] { frames.data() };
    stream.write (data, 2, 256);
    stream.pull();
    const std::array<double, 256> silence {};
    for (int i = 0; i < 256; ++i)
    {
        ASSERT_EQ (stream.blocks (silence.data())[0][i], 1.0);
        ASSERT_EQ (stream.blocks (silence.data())[1][i], -1.0);
    }
}

TEST (InputStream, dropsWhatFindsNoRoomAndKeepsABlockThatRanDry)
{
    MVRenderStreamFormat format;
    format.numIn = 1;
    MVInputStream stream;
    stream.configure (format);
    stream.setActive (true);

    // A ring holds 128 bytes for each of the 256 frames announced: 4096 samples.
    const auto samples = ramp (5000, 0.0f);
    const void* data[] { samples.data() };
    stream.write (data, 1, 5000);

    const std::array<double, 256> silence {};
    for (int i = 0; i < 16; ++i)
        stream.pull();
    EXPECT_EQ (stream.blocks (silence.data())[0][255], 4095.0);
    stream.pull();
    EXPECT_EQ (stream.blocks (silence.data())[0][255], 4095.0);

    stream.write (data, 1, 2);
    stream.pull();
    EXPECT_EQ (stream.blocks (silence.data())[0][1], 1.0);
    EXPECT_EQ (stream.blocks (silence.data())[0][2], 3842.0);
}

TEST (InputStream, levelIsThePeakSinceTheLastLook)
{
    MVInputStream stream;
    stream.configure ({});
    stream.setActive (true);
    stream.setLevelsEnabled (true);

    std::vector<float> samples (512, 0.0f);
    samples[100] = -0.5f;
    samples[101] = std::numeric_limits<float>::quiet_NaN();
    samples[300] = 4.0f;
    const void* data[] { samples.data(), samples.data() };
    stream.write (data, 1, 512);

    stream.pull();
    EXPECT_NEAR (stream.takeLevel (0), 0.5, 1e-9);
    EXPECT_EQ (stream.takeLevel (0), 0.0);
    stream.pull();
    EXPECT_EQ (stream.takeLevel (0), 1.0);
    EXPECT_EQ (stream.takeLevel (1), 0.0);
    EXPECT_EQ (stream.takeLevel (-1), 0.0);
    EXPECT_EQ (stream.takeLevel (4), 0.0);
}

TEST (OutputStream, anyPiecesComeOutInOrderAndChannelsStayTogether)
{
    for (const int layout : { 1, 2 })
    {
        MVRenderStreamFormat format;
        format.outputLayout = layout;
        MVOutputStream stream;
        stream.configure (format);
        stream.setActive (true);

        TestRandom random (7);
        double next = 0.0;
        int taken = 0;

        for (int round = 0; round < 200; ++round)
        {
            const int frames = 1 + random.below (stream.maxFrames());
            while (stream.framesReady() < frames)
            {
                double* const* block = stream.beginBlock();
                for (int i = 0; i < 256; ++i)
                {
                    block[0][i] = next;
                    block[1][i] = -next++;
                }
                stream.commitBlock();
            }

            std::vector<float> out (static_cast<std::size_t> (2 * frames));
            void* channels[] { out.data(), out.data() + frames };
            // Every third time only one channel is asked for; the other must not fall behind.
            const int limit = round % 3 == 0 ? 1 : 2;
            stream.drain (channels, limit, frames, 0);

            for (int i = 0; i < frames; ++i)
            {
                const auto at = static_cast<std::size_t> (layout == 1 ? 2 * i : i);
                const auto atOther = static_cast<std::size_t> (layout == 1 ? 2 * i + 1 : frames + i);
                ASSERT_EQ (out[at], static_cast<float> (taken + i)) << layout;
                ASSERT_EQ (out[atOther], limit == 2 ? static_cast<float> (-(taken + i)) : 0.0f) << layout;
            }
            taken += frames;
        }
    }
}

} // namespace morvanelab::test
