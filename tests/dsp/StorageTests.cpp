// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVCircularBuffer.h"
#include "dsp/MVDelayLine.h"
#include "dsp/MVPcmResampler.h"
#include "dsp/MVRawPcmMultitrackMgr.h"
#include "dsp/MVResampleLooper.h"
#include "tests/support/TestRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

namespace morvanelab
{

namespace
{

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr int intMax = std::numeric_limits<int>::max();
constexpr int sampleBytes = sizeof (double);

std::vector<double> countUp (int count, double first = 1.0)
{
    std::vector<double> values (static_cast<std::size_t> (count));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = first + static_cast<double> (i);
    return values;
}

/** Appends as many samples as find room and returns their number. */
int put (MVCircularBuffer& ring, const double* samples, int count)
{
    int done = 0;
    while (done < count)
    {
        int bytes = (count - done) * sampleBytes;
        std::byte* const room = ring.writePointer (bytes);
        if (bytes < sampleBytes)
            break;
        std::memcpy (room, samples + done, static_cast<std::size_t> (bytes));
        ring.commitWrite (bytes);
        done += bytes / sampleBytes;
    }
    return done;
}

std::vector<double> delay (MVDelayLine& line, const std::vector<double>& in)
{
    std::vector<double> out (in.size());
    line.process (static_cast<int> (in.size()), in.data(), out.data());
    return out;
}

MVDelayLine makeDelay (double samples)
{
    MVDelayLine line;
    line.setMaxDelay (samples / 1000.0);
    line.init (true, 1000.0);
    return line;
}

std::vector<double> loop (MVResampleLooper& looper, const std::vector<double>& in,
                          const MVResampleLooper::Controls& controls)
{
    std::vector<double> out (in.size(), nan);
    looper.process (out.data(), in.data(), static_cast<int> (in.size()), controls);
    return out;
}

} // namespace

TEST (CircularBuffer, behavesLikeAQueueUnderAnyRequests)
{
    for (const bool mirrored : { false, true })
    {
        constexpr int size = 1000;
        MVCircularBuffer ring (size, mirrored);
        ring.setActive (true);
        std::deque<unsigned char> model;
        test::TestRandom random (mirrored ? 1 : 2);
        unsigned char next = 0;

        for (int round = 0; round < 20000; ++round)
        {
            const int asked = random.chance (0.05) ? (random.chance (0.5) ? intMax : -intMax) : random.below (1200);
            int bytes = asked;

            if (random.chance (0.5))
            {
                std::byte* const room = ring.writePointer (bytes);
                const int free = size - static_cast<int> (model.size());
                ASSERT_LE (bytes, std::max (0, std::min (asked, free)));
                if (mirrored)
                {
                    ASSERT_EQ (bytes, std::clamp (asked, 0, free)); // always in one piece
                }
                for (int i = 0; i < bytes; ++i)
                {
                    room[i] = std::byte { next };
                    model.push_back (next++);
                }
                ring.commitWrite (bytes);
            }
            else
            {
                const std::byte* const run = ring.readPointer (bytes);
                ASSERT_LE (bytes, std::min (std::max (asked, 0), static_cast<int> (model.size())));
                ASSERT_TRUE (bytes > 0 || model.empty() || asked <= 0);
                for (int i = 0; i < bytes; ++i)
                {
                    ASSERT_EQ (std::to_integer<int> (run[i]), model.front());
                    model.pop_front();
                }
                ring.commitRead (bytes);
            }

            ASSERT_EQ (ring.fillLevel(), static_cast<int> (model.size()));
            ASSERT_EQ (ring.freeSpace(), size - ring.fillLevel());
        }
    }
}

TEST (CircularBuffer, commitsBeyondTheRingKeepItsFooting)
{
    MVCircularBuffer ring (64);
    ring.setActive (true);
    ring.commitWrite (intMax);
    EXPECT_EQ (ring.fillLevel(), 64);
    ring.commitWrite (8);
    ring.commitRead (-8);
    EXPECT_EQ (ring.fillLevel(), 64);
    ring.commitRead (intMax);
    EXPECT_EQ (ring.fillLevel(), 0);
    int bytes = 100;
    EXPECT_NE (ring.writePointer (bytes), nullptr);
    EXPECT_EQ (bytes, 64);
}

TEST (CircularBuffer, primingAndClearing)
{
    MVCircularBuffer ring (64);
    ring.setActive (true);
    const std::vector<double> samples = countUp (5);
    put (ring, samples.data(), 5);

    ring.prime (16);
    EXPECT_EQ (ring.fillLevel(), 16);
    put (ring, samples.data(), 1);
    int bytes = intMax;
    const auto* const run = reinterpret_cast<const double*> (ring.readPointer (bytes));
    ASSERT_EQ (bytes, 24);
    EXPECT_EQ (run[0], 0.0);
    EXPECT_EQ (run[1], 0.0);
    EXPECT_EQ (run[2], 1.0);

    ring.prime (intMax);
    EXPECT_EQ (ring.freeSpace(), 0);
    ring.clear();
    EXPECT_EQ (ring.freeSpace(), 64);
}

TEST (CircularBuffer, withoutDataAnswersNothing)
{
    for (const int size : { 0, -8, 64 })
    {
        MVCircularBuffer ring (size);
        ring.setActive (size != 64);
        int bytes = 16;
        ring.readPointer (bytes);
        EXPECT_EQ (bytes, 0);
        bytes = 16;
        ring.writePointer (bytes);
        EXPECT_EQ (bytes, 0);
        ring.commitWrite (16);
        ring.prime (16);
        ring.clear();
        EXPECT_EQ (ring.fillLevel(), 0);
        EXPECT_EQ (ring.freeSpace(), 0);
    }
}

TEST (CircularBuffer, cloneIsARingOfItsOwn)
{
    MVCircularBuffer ring (64, true);
    ring.setActive (true);
    const std::vector<double> samples = countUp (3);
    put (ring, samples.data(), 3);
    const std::unique_ptr<MVCircularBuffer> copy (static_cast<MVCircularBuffer*> (ring.clone()));
    ring.clear();
    EXPECT_NE (copy->getId(), ring.getId());
    EXPECT_EQ (copy->fillLevel(), 24);
    int bytes = 24;
    EXPECT_EQ (reinterpret_cast<const double*> (copy->readPointer (bytes))[2], 3.0);
}

TEST (CircularBuffer, oneReaderAndOneWriterNeedNoLock)
{
    constexpr int total = 200000;
    for (const bool mirrored : { false, true })
    {
        MVCircularBuffer ring (37 * sampleBytes, mirrored);
        ring.setActive (true);
        std::thread writer (
            [&]
            {
                const std::vector<double> numbers = countUp (total);
                for (int done = 0; done < total;)
                {
                    const int placed = put (ring, numbers.data() + done, std::min (11, total - done));
                    done += placed;
                    if (placed == 0)
                        std::this_thread::yield();
                }
            });

        int wrong = 0;
        for (int expected = 1; expected <= total;)
        {
            int bytes = 7 * sampleBytes;
            const auto* const run = reinterpret_cast<const double*> (ring.readPointer (bytes));
            for (int i = 0; i < bytes / sampleBytes; ++i)
                wrong += run[i] == expected++ ? 0 : 1;
            ring.commitRead (bytes);
            if (bytes == 0)
                std::this_thread::yield();
        }
        writer.join();
        EXPECT_EQ (wrong, 0);
    }
}

TEST (DelayLine, delaysByTheRatioOfItsLength)
{
    struct Row
    {
        double longest, ratio;
        int samples;
    };

    for (const Row row : { Row { 10.0, 0.0, 0 }, Row { 10.0, 1.0, 10 }, Row { 10.0, 0.59, 5 }, Row { 9.5, 1.0, 10 },
                           Row { 10.0, 7.0, 10 }, Row { 10.0, nan, 0 }, Row { 10.0, -1.0, 0 }, Row { 0.0, 1.0, 0 },
                           Row { nan, 1.0, 0 } })
    {
        MVDelayLine line = makeDelay (row.longest);
        line.setDuration (row.ratio);
        const std::vector<double> in = countUp (25);
        const std::vector<double> out = delay (line, in);
        for (int i = 0; i < 25; ++i)
            EXPECT_EQ (out[static_cast<std::size_t> (i)], std::max (0, i + 1 - row.samples)) << row.ratio << " " << i;
    }
}

TEST (DelayLine, fadesBetweenTwoReadPositions)
{
    MVDelayLine line = makeDelay (100.0);
    line.setDuration (0.2);
    const std::vector<double> in = countUp (2000);
    delay (line, std::vector<double> (in.begin(), in.begin() + 300));

    // On a rising line a delay of d reads n - d, so the fade from 20 to 70 falls behind by 50 / 512 a sample.
    line.setDuration (0.7);
    const std::vector<double> out = delay (line, std::vector<double> (in.begin() + 300, in.begin() + 1000));
    for (int i = 0; i < 700; ++i)
    {
        const double behind = 20.0 + 50.0 * std::min (1.0, i / 512.0);
        ASSERT_NEAR (out[static_cast<std::size_t> (i)], 301 + i - behind, 1.0e-9) << i;
    }
    EXPECT_FALSE (line.isFading());
    EXPECT_EQ (line.getDelaySamples(), 70);
}

TEST (DelayLine, theLastRequestDuringAFadeWaitsForItsEnd)
{
    MVDelayLine line = makeDelay (100.0);
    const std::vector<double> in = countUp (4000);
    auto run = [&, at = 0] (int count) mutable
    {
        const std::vector<double> out = delay (line, { in.begin() + at, in.begin() + at + count });
        at += count;
        return at - out.back(); // how far the last sample lies behind
    };

    run (200);
    line.setDuration (0.5);
    run (100);
    line.setDuration (0.9);
    line.setDuration (0.3);
    EXPECT_EQ (line.getDelaySamples(), 0);
    EXPECT_NEAR (run (156), 50.0 * 255.0 / 512.0, 1.0e-9);
    EXPECT_NEAR (run (256), 50.0 * 511.0 / 512.0, 1.0e-9);
    EXPECT_NEAR (run (257), 50.0 - 20.0 * 256.0 / 512.0, 1.0e-9);
    EXPECT_NEAR (run (256), 30.0, 1.0e-9);
    EXPECT_FALSE (line.isFading());
}

TEST (DelayLine, blockSizesDoNotMatter)
{
    test::TestRandom random (3);
    std::vector<double> in (6000);
    for (double& value : in)
        value = random.between (-1.0, 1.0);

    MVDelayLine whole = makeDelay (333.0), parts = makeDelay (333.0);
    std::vector<double> expected, result;
    for (const double ratio : { 0.3, 0.9, 0.0, 1.0 })
    {
        const auto begin = in.begin() + static_cast<std::ptrdiff_t> (expected.size());
        whole.setDuration (ratio);
        parts.setDuration (ratio);
        const std::vector<double> once = delay (whole, { begin, begin + 1500 });
        expected.insert (expected.end(), once.begin(), once.end());
        for (int done = 0; done < 1500;)
        {
            const int count = std::min (1 + random.below (97), 1500 - done);
            const std::vector<double> piece = delay (parts, { begin + done, begin + done + count });
            result.insert (result.end(), piece.begin(), piece.end());
            done += count;
        }
    }
    EXPECT_EQ (result, expected);
}

TEST (DelayLine, resetKeepsTheLengthAndForgetsTheSignal)
{
    MVDelayLine line = makeDelay (10.0);
    line.setDuration (0.2);
    delay (line, countUp (5));
    line.setDuration (0.4);
    line.reset();
    EXPECT_EQ (delay (line, countUp (6)), (std::vector<double> { 0, 0, 0, 0, 1, 2 }));
    line.init (false, 1000.0);
    EXPECT_EQ (delay (line, countUp (2)), (std::vector<double> { 0, 0 }));
}

TEST (PcmResampler, weightsAreCrossed)
{
    MVPcmResampler reader;
    const double source[] { 10.0, 20.0, 40.0, 80.0 };
    double out[4];
    double position = 0.0;

    // At 0.25 three quarters of the right-hand neighbour count, and so on.
    reader.setPosition (0.25);
    reader.process (out, source, 2, 4, 1.5, 1.0, 1.0, position);
    EXPECT_DOUBLE_EQ (out[0], 0.75 * 20.0 + 0.25 * 10.0);
    EXPECT_DOUBLE_EQ (out[1], 0.25 * 40.0 + 0.75 * 20.0);
    EXPECT_DOUBLE_EQ (position, 3.25); // behind the last sample read, not behind the end

    reader.setPosition (0.0);
    reader.process (out, source, 3, 4, 1.0, 1.0, 0.25, position);
    EXPECT_DOUBLE_EQ (out[0], 20.0);
    EXPECT_DOUBLE_EQ (out[1], 40.0 * 0.75);
    EXPECT_DOUBLE_EQ (out[2], 80.0 * 0.5);
    EXPECT_DOUBLE_EQ (position, 3.0);
    EXPECT_EQ (reader.takeWholeSamples(), 3);
    EXPECT_EQ (reader.getPosition(), 0.0);
}

TEST (PcmResampler, silentWhereTheSourceEnds)
{
    struct Row
    {
        double position, rate;
        int length;
    };

    const std::vector<double> source = countUp (8);
    for (const Row row :
         { Row { 0.0, 2.1, 8 }, Row { 4.0, 1.0, 8 }, Row { 6.5, 0.5, 8 }, Row { 7.0, 0.0, 8 }, Row { 0.0, 1.0, 0 },
           Row { 0.0, 1.0, -5 }, Row { 0.0, 1.0, 1 }, Row { 1.0, -1.0, 8 }, Row { 0.0, nan, 8 },
           Row { 0.0, infinity, 8 }, Row { 1.0e300, 1.0, 8 }, Row { nan, 3.0, 8 } })
    {
        MVPcmResampler reader;
        reader.setPosition (row.position);
        double out[4] { nan, nan, nan, nan };
        double position = nan;
        reader.process (out, source.data(), 4, row.length, row.rate, 1.0, 1.0, position);
        for (const double value : out)
            EXPECT_EQ (value, 0.0) << row.position << " " << row.rate << " " << row.length;
        EXPECT_EQ (position, 0.0);
    }
}

TEST (PcmResampler, atRateOneARingPassesUnchanged)
{
    MVCircularBuffer ring (500 * sampleBytes);
    ring.setActive (true);
    MVPcmResampler reader;
    test::TestRandom random (9);
    const std::vector<double> stream = countUp (20000);
    std::vector<double> heard;
    int fed = 0;

    while (fed < 20000)
    {
        fed += put (ring, stream.data() + fed, std::min (random.below (300), 20000 - fed));
        double block[256];
        const int pulled = reader.pull (ring, block, 256, 1.0);
        heard.insert (heard.end(), block, block + pulled);
    }

    EXPECT_GT (heard.size(), 19000U);
    EXPECT_TRUE (std::equal (heard.begin(), heard.end(), stream.begin()));
}

TEST (PcmResampler, aRingReadsLikeOneLongSource)
{
    for (const double rate : { 0.25, 0.875, 1.125, 2.75, 9.0 })
    {
        // The window starts one sample back, so the stream appears behind a sample of silence.
        std::vector<double> source = countUp (6000);
        source.insert (source.begin(), 0.0);
        const int frames = static_cast<int> (5900 / rate);
        std::vector<double> expected (static_cast<std::size_t> (frames));
        MVPcmResampler whole, pulling;
        double position = 0.0;
        whole.process (expected.data(), source.data(), frames, static_cast<int> (source.size()), rate, 1.0, 1.0,
                       position);

        MVCircularBuffer ring (64 * sampleBytes);
        ring.setActive (true);
        std::vector<double> heard (expected.size());
        int fed = 1, done = 0;
        while (done < frames)
        {
            fed += put (ring, source.data() + fed, std::min (50, 6001 - fed));
            done += pulling.pull (ring, heard.data() + done, std::min (17, frames - done), rate);
        }
        EXPECT_EQ (heard, expected) << rate; // these rates step without rounding
    }
}

TEST (PcmResampler, aDryRingLeavesTheRestAsItWas)
{
    MVCircularBuffer ring (64 * sampleBytes);
    ring.setActive (true);
    const std::vector<double> samples = countUp (3);
    put (ring, samples.data(), 3);
    MVPcmResampler reader;
    double out[5] { -1, -1, -1, -1, -1 };
    EXPECT_EQ (reader.pull (ring, out, 5, 1.0), 3);
    EXPECT_EQ (out[2], 3.0);
    EXPECT_EQ (out[3], -1.0);
    for (const double rate : { 0.0, -1.0, nan, infinity })
        EXPECT_EQ (reader.pull (ring, out, 5, rate), 0);
}

TEST (RawPcmMultitrackMgr, cutsEveryAccessToItsTracks)
{
    MVRawPcmMultitrackMgr tracks;
    EXPECT_FALSE (tracks.allocate (65, 10));
    EXPECT_FALSE (tracks.allocate (64, intMax));
    EXPECT_FALSE (tracks.allocate (-1, 10));
    EXPECT_EQ (tracks.getTrackCount(), 0);

    ASSERT_TRUE (tracks.allocate (2, 4));
    const std::vector<double> source = countUp (10);
    EXPECT_EQ (tracks.write (1, 1, source.data(), 10), 3);
    EXPECT_EQ (tracks.write (2, 0, source.data(), 1), 0);
    EXPECT_EQ (tracks.write (1, 4, source.data(), 1), 0);
    EXPECT_EQ (tracks.write (1, -1, source.data(), 1), 0);
    double out[4] {};
    EXPECT_EQ (tracks.read (1, 2, out, 4), 2);
    EXPECT_EQ (out[1], 3.0);
    EXPECT_EQ (tracks.read (0, 0, out, 4), 4);
    EXPECT_EQ (out[3], 0.0); // the other track is untouched
    EXPECT_EQ (tracks.track (-1), nullptr);
    EXPECT_EQ (tracks.track (2), nullptr);
}

TEST (ResampleLooper, recordsWhileTriggeredAndThenLoops)
{
    MVResampleLooper looper;
    ASSERT_TRUE (looper.setCapacity (1000));
    MVResampleLooper::Controls controls;
    const std::vector<double> silence (100, 0.0);
    EXPECT_EQ (loop (looper, silence, controls), silence); // nothing recorded yet

    controls.recordTrigger = 0.5;
    const std::vector<double> in = countUp (300);
    EXPECT_EQ (loop (looper, in, controls), std::vector<double> (300, 0.0));
    EXPECT_TRUE (looper.isRecording());
    controls.recordTrigger = 0.4999;
    const std::vector<double> out = loop (looper, std::vector<double> (700, -9.0), controls);
    EXPECT_EQ (looper.getRecordedLength(), 300);

    for (int i = 0; i < 700; ++i)
    {
        // In front of the recording its first sample, 1.0, holds: the seam fades into that.
        const int at = i % 300;
        const double share = std::max (0.0, (at - 236) / 64.0);
        ASSERT_NEAR (out[static_cast<std::size_t> (i)], (1.0 - share) * (at + 1) + share, 1.0e-9) << i;
    }
}

TEST (ResampleLooper, aFullStoreEndsTheRecording)
{
    MVResampleLooper looper;
    looper.setCapacity (100);
    MVResampleLooper::Controls controls;
    controls.recordTrigger = 1.0;
    const std::vector<double> out = loop (looper, countUp (130), controls);
    EXPECT_FALSE (looper.isRecording());
    EXPECT_EQ (looper.getRecordedLength(), 100);
    EXPECT_EQ (out[99], 0.0);
    EXPECT_EQ (out[100], 1.0); // plays on within the block

    // A trigger that is held does not record again; a new rise does.
    loop (looper, countUp (10, 500.0), controls);
    EXPECT_EQ (looper.getRecordedLength(), 100);
    controls.recordTrigger = nan;
    loop (looper, countUp (1), controls);
    controls.recordTrigger = 1.0;
    loop (looper, countUp (70, 500.0), controls);
    controls.recordTrigger = 0.0;
    EXPECT_EQ (loop (looper, countUp (1), controls)[0], 500.0);
    EXPECT_EQ (looper.getRecordedLength(), 70);
}

TEST (ResampleLooper, loopPointsAndRates)
{
    struct Row
    {
        double offset, duration, rate;
        int frames;
        double expected; ///< the last sample
    };

    // The recording holds 0 to 999.
    for (const Row row : { Row { 0.5, 0.2, 1.0, 11, 510.0 }, Row { 0.5, 0.2, 1.0, 201, 500.0 }, // a whole round
                           Row { 0.5, 0.2, 0.5, 10, 504.5 }, Row { 0.5, 0.2, 0.0, 300, 500.0 },
                           Row { 0.25, 0.5, -1.0, 101, 650.0 }, // backward over the seam
                           Row { 0.1, 0.0, 1.0, 65, 100.0 },    // at least 64 samples
                           Row { 0.9, 1.0, 1.0, 101, 900.0 },   // ends with the recording
                           Row { 1.0, 1.0, 1.0, 65, 936.0 }, Row { nan, nan, nan, 9, 0.0 },
                           Row { 0.5, 0.2, 200.0, 50, 500.0 }, Row { 0.5, 0.2, infinity, 5, 500.0 },
                           // The middle of the seam: half 668, half 468.
                           Row { 0.5, 0.2, 1.0, 169, 568.0 } })
    {
        MVResampleLooper looper;
        looper.setCapacity (1000);
        MVResampleLooper::Controls controls;
        controls.recordTrigger = 1.0;
        loop (looper, countUp (1000, 0.0), controls);

        controls = { 0.0, row.offset, row.duration, row.rate };
        const std::vector<double> out =
            loop (looper, std::vector<double> (static_cast<std::size_t> (row.frames)), controls);
        EXPECT_NEAR (out.back(), row.expected, 1.0e-6) << row.offset << " " << row.duration << " " << row.rate;
    }
}

TEST (ResampleLooper, seamIsContinuousInBothDirections)
{
    for (const double rate : { 0.37, -0.37 })
    {
        MVResampleLooper looper;
        looper.setCapacity (2000);
        MVResampleLooper::Controls controls;
        controls.recordTrigger = 1.0;
        std::vector<double> wave (2000);
        for (std::size_t i = 0; i < wave.size(); ++i)
            wave[i] = std::sin (0.0123 * static_cast<double> (i));
        loop (looper, wave, controls);

        controls = { 0.0, 0.3, 0.4, rate };
        const std::vector<double> out = loop (looper, std::vector<double> (9000), controls);
        for (std::size_t i = 1; i < out.size(); ++i)
            ASSERT_LT (std::abs (out[i] - out[i - 1]), 0.37 * (0.0123 + 2.0 / 64.0)) << i;
    }
}

TEST (ResampleLooper, smallAndMissingStores)
{
    MVResampleLooper looper;
    MVResampleLooper::Controls controls;
    controls.recordTrigger = 1.0;
    EXPECT_EQ (loop (looper, countUp (4), controls), std::vector<double> (4, 0.0));
    EXPECT_FALSE (looper.setCapacity (-1));
    EXPECT_FALSE (looper.setCapacity (intMax));

    looper.setCapacity (1);
    controls.recordTrigger = 0.0;
    loop (looper, countUp (1), controls);
    controls.recordTrigger = 1.0;
    loop (looper, countUp (4), controls);
    for (const double rate : { 1.0, -0.3, 1.0e-300, -1.0e-300, 1.0e300 })
    {
        controls.playbackRate = rate;
        for (const double value : loop (looper, countUp (70), controls))
            EXPECT_EQ (value, 1.0);
    }
}

} // namespace morvanelab
