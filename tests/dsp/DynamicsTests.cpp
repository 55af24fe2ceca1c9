// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVBreakPointEnv.h"
#include "dsp/MVCompressor.h"
#include "dsp/MVEnvFollower.h"
#include "dsp/MVPowerFollower.h"
#include "dsp/MVSignalDistorter.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace morvanelab
{

namespace
{

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
using Frame = std::array<double, 32>;

/** Sends one frame of a constant through and returns what leaves. */
Frame pass (MVCompressor& limiter, double level)
{
    Frame frame;
    frame.fill (level);
    limiter.process (frame.data(), 32);
    return frame;
}

} // namespace

TEST (PowerFollower, correctsOneBlockLate)
{
    MVPowerFollower follower;
    const std::vector<double> reference (4, 1.0);
    const auto process = [&] (double level)
    {
        std::vector<double> buffer (4, level);
        follower.process (buffer.data(), reference.data(), 4);
        return buffer;
    };

    EXPECT_EQ (process (4.0), (std::vector<double> { 4.0, 4.0, 4.0, 4.0 }));
    EXPECT_EQ (process (4.0), (std::vector<double> { 4.0, 3.25, 2.5, 1.75 }));
    EXPECT_EQ (process (4.0), (std::vector<double> { 1.0, 1.0, 1.0, 1.0 }));
    // A silent buffer has no ratio: back to 1, over two blocks.
    process (0.0);
    EXPECT_EQ (process (1.0)[0], 0.25);
    EXPECT_EQ (process (1.0)[0], 1.0);
    // An infinity silences one block; what is not a number counts as no ratio.
    process (infinity);
    process (1.0);
    EXPECT_EQ (process (1.0)[0], 0.0);
    EXPECT_EQ (process (1.0)[0], 1.0);
    process (nan);
    process (1.0);
    EXPECT_EQ (process (1.0)[0], 1.0);
}

TEST (EnvFollower, risesAtOnceAndFallsInAStraightLine)
{
    MVEnvFollower follower;
    follower.setDecayStep (100.0);
    follower.init (true, 200.0);
    EXPECT_EQ (follower.getDecayStep(), 0.5);

    const std::vector<double> in { -1.0, 0.25, 0.75, 0.0, 0.0, nan, 1.0e6, 0.0, infinity };
    const std::vector<double> expected { 1.0, 0.5, 0.75, 0.25, -0.25, -0.75, 32768.0, 32767.5, 32768.0 };
    std::vector<double> out (in.size());
    follower.process (out.data(), in.data(), static_cast<int> (in.size()));
    EXPECT_EQ (out, expected);

    follower.reset();
    double silence = 0.0;
    follower.process (&silence, &silence, 1);
    EXPECT_EQ (silence, 0.0);
}

TEST (EnvFollower, hasNoFloorButTheInput)
{
    // Silence lies above what fell below zero; only what is not a number does not lift it.
    MVEnvFollower follower;
    follower.setDecayStep (0.25);
    std::vector<double> block { 0.125, 0.0, 0.0, 0.0, nan, nan, nan };
    follower.process (block.data(), block.data(), 7);
    EXPECT_EQ (block, (std::vector<double> { 0.125, -0.125, 0.0, 0.0, -0.25, -0.5, -0.75 }));
}

TEST (Compressor, delaysQuietSoundByOneFrameUnchanged)
{
    MVCompressor limiter;
    limiter.init (true, 48000.0);
    std::vector<double> block (256, 0.0);
    block[5] = 0.85;
    block[200] = -0.7;
    limiter.process (block.data(), 256);
    for (std::size_t i = 0; i < block.size(); ++i)
        EXPECT_EQ (block[i], i == 37 ? 0.85 : (i == 232 ? -0.7 : 0.0)) << i;
}

TEST (Compressor, gainHasFallenWhenThePeakArrives)
{
    MVCompressor limiter;
    limiter.init (true, 48000.0);
    pass (limiter, 0.5);
    // Excess 1 - 0.9 + 2 = 2.1: the quiet frame leaves under a ramp from 1 towards 1 / 2.1.
    const Frame ramp = pass (limiter, 2.0);
    for (const std::size_t i : { 0U, 1U, 16U, 31U })
        EXPECT_NEAR (ramp[i], 0.5 * (1.0 + static_cast<double> (i) * (1.0 / 2.1 - 1.0) / 32.0), 1.0e-12);

    const Frame loud = pass (limiter, 2.0);
    for (const double value : loud)
        EXPECT_NEAR (value, 2.0 / 2.1, 1.0e-12);
}

TEST (Compressor, neverPassesFullScale)
{
    for (const double ceiling : { 1.0, 0.5 })
        for (const double level : { 0.95, 1.0, 3.0, -3.0, 1000.0 })
        {
            MVCompressor limiter;
            limiter.init (true, 48000.0);
            limiter.setCeiling (ceiling);
            limiter.setRollOff (0.01);
            for (int i = 0; i < 40; ++i)
                for (const double value : pass (limiter, i == 0 ? 0.0 : level))
                    EXPECT_LE (std::abs (value), 1.0 + 1.0e-9) << ceiling << " " << level;
        }
}

TEST (Compressor, holdsAndReleasesAsTheRollOffSays)
{
    struct Row
    {
        double rollOffFrames;
        std::vector<double> peaks; ///< behind each quiet frame after one loud one of excess 2.1
    };

    // With 10 frames the peak falls by a tenth a frame from the second quiet frame on, as long as it stays above 1.
    // With 0 frames nothing ever lets go of it.
    for (const Row& row :
         { Row { 10.0, { 2.1, 2.1, 1.89, 1.68, 1.47, 1.26, 1.05, 1.05, 1.05 } }, Row { 0.0, { 2.1, 2.1, 2.1, 2.1 } } })
    {
        MVCompressor limiter;
        limiter.setRollOff ((row.rollOffFrames * 32.0 + 30.5) / 48000.0);
        limiter.init (true, 48000.0);
        pass (limiter, 2.0);
        pass (limiter, 0.5);

        for (std::size_t i = 1; i < row.peaks.size(); ++i)
            EXPECT_NEAR (pass (limiter, 0.5)[0], 0.5 / row.peaks[i], 1.0e-9) << row.rollOffFrames << " frame " << i;

        limiter.reset();
        pass (limiter, 0.5);
        EXPECT_EQ (pass (limiter, 0.5)[31], 0.5);
    }
}

TEST (Compressor, aRollOffTakenAwayDuringAHoldLetsGo)
{
    MVCompressor limiter;
    limiter.init (true, 48000.0);
    limiter.setRollOff (1.0);
    pass (limiter, 2.0);
    pass (limiter, 0.5);
    pass (limiter, 0.5);
    limiter.setRollOff (0.0);
    pass (limiter, 0.4);
    EXPECT_EQ (pass (limiter, 0.5)[0], 0.4); // no peak lies below 1
}

TEST (Compressor, anInfiniteSampleDoesNotMuteTheRest)
{
    for (const double bad : { infinity, nan })
    {
        MVCompressor limiter;
        limiter.init (true, 48000.0);
        limiter.setRollOff (0.5);
        pass (limiter, bad);
        pass (limiter, 0.5);
        pass (limiter, 0.5);
        EXPECT_EQ (pass (limiter, 0.5)[0], 0.5) << bad;
    }
}

TEST (Compressor, leavesAnIncompleteFrameAlone)
{
    MVCompressor limiter;
    limiter.init (true, 48000.0);
    std::vector<double> block (40, 0.25);
    limiter.process (block.data(), 40);
    EXPECT_EQ (block[31], 0.0);
    EXPECT_EQ (block[32], 0.25);
    limiter.process (block.data(), 0);
    limiter.process (block.data(), -32);
}

TEST (BreakPointEnv, rendersRampsBetweenPoints)
{
    struct Row
    {
        std::vector<MVCurvePoint> points;
        int count;
        std::vector<double> expected;
    };

    const std::vector<Row> rows {
        { { { 0, 0 }, { 1, 1 } }, 4, { 0, 0.25, 0.5, 0.75 } },
        { { { 0, 1 }, { 0.5, 0 }, { 1, 0.5 } }, 4, { 1, 0.5, 0, 0.25 } },
        // 0.625 of 4 samples rounds up to 3, 0.375 to 2: the last one finds no room.
        { { { 0, 0 }, { 0.625, 3 }, { 1, 0 } }, 4, { 0, 1, 2, 3 } },
        // A short curve repeats its last value; a vertical step renders nothing of its own.
        { { { 0, 0 }, { 0.5, 2 }, { 0.5, 7 } }, 4, { 0, 1, 1, 1 } },
        { { { 0.5, 4 }, { 0.5, 5 } }, 2, { 4, 4 } },
        { { { 0, 0 }, { 1.0e300, 1 } }, 2, { 0, 1.0 / 2147483647.0 } },
    };

    for (const Row& row : rows)
    {
        MVBreakPointEnv curve;
        ASSERT_TRUE (curve.setPoints (row.points.data(), static_cast<int> (row.points.size())));
        std::vector<double> out (static_cast<std::size_t> (row.count), nan);
        curve.render (out.data(), row.count);
        for (std::size_t i = 0; i < out.size(); ++i)
            EXPECT_DOUBLE_EQ (out[i], row.expected[i]) << i;
    }
}

TEST (BreakPointEnv, valuesBetweenAndOutsideThePoints)
{
    MVBreakPointEnv curve;
    const MVCurvePoint points[] { { 0.0, 1.0 }, { 0.5, 3.0 }, { 1.0, 2.0 } };
    curve.setPoints (points, 3);

    struct Row
    {
        double x, step, line;
    };
    for (const Row row : { Row { -1, 1, 1 }, Row { 0, 1, 1 }, Row { 0.25, 1, 2 }, Row { 0.5, 3, 3 },
                           Row { 0.75, 3, 2.5 }, Row { 1, 2, 2 }, Row { 9, 2, 2 } })
    {
        EXPECT_EQ (curve.value (row.x, false), row.step) << row.x;
        EXPECT_EQ (curve.value (row.x, true), row.line) << row.x;
    }
}

TEST (BreakPointEnv, staysSortedAndWithinItsEndsWhileEdited)
{
    MVBreakPointEnv curve;
    EXPECT_EQ (curve.addPoint (0.5, 0.2), 1);
    EXPECT_EQ (curve.addPoint (0.25, 0.4), 1);
    EXPECT_EQ (curve.addPoint (0.5, 0.9), 3); // behind the one of the same x
    EXPECT_TRUE (curve.removePoint (3));
    EXPECT_EQ (curve.addPoint (7.0, 0.6), 3);
    EXPECT_EQ (curve.addPoint (nan, 0.6), -1);
    EXPECT_EQ (curve.count(), 5);

    EXPECT_TRUE (curve.movePoint (1, 0.9, 0.8)); // held by its neighbour at 0.5
    EXPECT_TRUE (curve.movePoint (0, 0.3, 0.7)); // an end keeps its x
    EXPECT_TRUE (curve.movePoint (2, nan, nan)); // keeps both
    EXPECT_FALSE (curve.movePoint (5, 0.0, 0.0));
    EXPECT_FALSE (curve.movePoint (-1, 0.0, 0.0));

    const std::unique_ptr<MVBreakPointEnv> copy (static_cast<MVBreakPointEnv*> (curve.clone()));
    const MVCurvePoint expected[] { { 0, 0.7 }, { 0.5, 0.8 }, { 0.5, 0.2 }, { 1, 0.6 }, { 1, 1 } };
    double x = 0.0, y = 0.0;
    for (int i = 0; i < 5; ++i)
    {
        ASSERT_TRUE (copy->pointAt (i, x, y));
        EXPECT_EQ (x, expected[i].x) << i;
        EXPECT_EQ (y, expected[i].y) << i;
    }
    EXPECT_FALSE (copy->pointAt (5, x, y));
    EXPECT_FALSE (copy->pointAt (-1, x, y));

    EXPECT_FALSE (curve.removePoint (0));
    EXPECT_FALSE (curve.removePoint (4));
    EXPECT_TRUE (curve.removePoint (1));
    EXPECT_EQ (curve.count(), 4);
    EXPECT_EQ (curve.low(), 0.0);
    EXPECT_EQ (curve.high(), 1.0);
}

TEST (BreakPointEnv, holdsTwoToSixteenPoints)
{
    MVBreakPointEnv curve;
    std::vector<MVCurvePoint> points (17, { 0.5, 0.5 });
    EXPECT_FALSE (curve.setPoints (points.data(), 17));
    EXPECT_FALSE (curve.setPoints (points.data(), 1));
    EXPECT_FALSE (curve.setPoints (nullptr, 2));
    EXPECT_EQ (curve.count(), 2);
    EXPECT_TRUE (curve.setPoints (points.data(), 16));
    EXPECT_EQ (curve.addPoint (0.5, 0.5), -1);

    const MVCurvePoint unsorted[] { { 0.9, 1 }, { nan, infinity }, { 0.1, 2 } };
    EXPECT_TRUE (curve.setPoints (unsorted, 3));
    EXPECT_EQ (curve.low(), 0.0);
    EXPECT_EQ (curve.high(), 0.9);
    EXPECT_EQ (curve.value (0.0, false), 0.0);
}

TEST (BreakPointEnv, findsTheNearestPoint)
{
    MVBreakPointEnv curve;
    EXPECT_EQ (curve.nearest (0.1, 0.0, 0.2), 0);
    EXPECT_EQ (curve.nearest (0.1, 0.0, 0.1), -1); // strictly nearer
    EXPECT_EQ (curve.nearest (0.9, 0.9, 0.2), 1);
    EXPECT_EQ (curve.nearest (5.0, 5.0, 10.0), -1); // beyond the root of 2 nothing counts
}

TEST (SignalDistorter, mapsTheTableBipolarly)
{
    MVSignalDistorter shaper;
    // Half the curve flat at the bottom, half at the top.
    const MVCurvePoint points[] { { 0, 0.25 }, { 0.5, 0.25 }, { 0.5, 1.0 }, { 1, 1.0 } };
    shaper.getCurve().setPoints (points, 4);
    shaper.rebuild();

    const std::vector<double> in { -1.0, 1.0, -0.001, 0.0, -50.0, 50.0, nan, -infinity, infinity };
    const std::vector<double> expected { -0.5, 1.0, -0.5, 1.0, -0.5, 1.0, -0.5, -0.5, 1.0 };
    std::vector<double> out (in.size());
    shaper.process (out.data(), in.data(), static_cast<int> (in.size()), 1.0, 1.0);
    EXPECT_EQ (out, expected);
}

TEST (SignalDistorter, readsTheEndEntriesAndRampsTheScale)
{
    MVSignalDistorter shaper;
    double ends[] { 1.0, -1.0 };
    shaper.process (ends, ends, 2, 1.0, 1.0);
    EXPECT_EQ (ends[0], 4095.0 / 4096.0 * 2.0 - 1.0);
    EXPECT_EQ (ends[1], -1.0);

    // A straight line under a scale from 0 to 1, which is not reached within the block.
    double ramp[] { 0.5, 0.5, 0.5, 0.5 };
    shaper.process (ramp, ramp, 4, 0.0, 1.0);
    const double expected[] { 0.0, 0.125, 0.25, 0.375 };
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ (ramp[i], expected[i]);
}

TEST (SignalDistorter, powerModeOnlyFillsTheTable)
{
    MVSignalDistorter law;
    law.setMode (MVSignalDistorter::modePower);
    law.setPower (0.5);
    law.rebuild();
    EXPECT_EQ (law.getTable()[0], 0.0);
    EXPECT_EQ (law.getTable()[1024], 0.5);
    double sample = 0.3;
    law.process (&sample, &sample, 1, 1.0, 1.0);
    EXPECT_EQ (sample, 0.3);
}

} // namespace morvanelab
