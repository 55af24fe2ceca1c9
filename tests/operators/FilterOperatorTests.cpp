// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorRig.h"
#include "dsp/MVBlockMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

constexpr double rate = 44100.0;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/** Fills an input with the next block of a signal that is a function of the sample's number. */
template <typename Signal>
void feed (OperatorRig& rig, int port, int block, Signal signal)
{
    std::vector<double> samples (blockFrames);
    for (int i = 0; i < blockFrames; ++i)
        samples[static_cast<std::size_t> (i)] = signal (block * blockFrames + i);
    rig.setInput (port, samples);
}

auto sine (double hz)
{
    return [hz] (int n) { return std::sin (2.0 * M_PI * hz * n / rate); };
}

TEST (BiquadOperator, aCentreBelowItsFloorIsSixteenHertz)
{
    const auto play = [] (double hz, double control)
    {
        OperatorRig rig (specOf ("MVOpBiquad"));
        rig.op().setInputScale (0, 2.0);
        rig.follow (0, 1);
        rig.setControl (1, control);
        rig.setInput (0, hz);
        rig.setInput (1, 1.0);
        rig.setInput (3, 0.5);
        rig.activate();
        return rig.render (3);
    };

    const auto floor = play (16.0, 0.5);
    EXPECT_EQ (play (0.0, 0.5), floor);
    EXPECT_EQ (play (-400.0, 0.5), floor);
    EXPECT_EQ (play (notANumber, 0.5), floor);
    EXPECT_EQ (play (400.0, 0.02), floor); // scale 2 and control 0.02: 16 Hz again
    // The floor of the angle is a quarter of a percent of the rate: only well above it does a centre matter.
    EXPECT_NE (play (400.0, 0.5), floor);
}

TEST (BiquadOperator, loudOutputIsBroughtToTheLevelOfTheInputABlockLater)
{
    OperatorRig rig (specOf ("MVOpBiquad"));
    rig.op().setChoiceParameter (0, 0);
    rig.setInput (0, 1000.0);
    rig.setInput (1, 4.0); // a lowpass is as loud as its Q at its corner
    rig.activate();

    double loudest = 0.0;
    for (int block = 0; block < 40; ++block)
    {
        feed (rig, 3, block, sine (1000.0));
        rig.process();
        loudest = std::max (loudest, blockPeak (rig.output (0), blockFrames));
    }
    EXPECT_GT (loudest, 1.5);
    EXPECT_NEAR (blockRms (rig.output (0), blockFrames), std::sqrt (0.5), 0.02);
}

TEST (BiquadOperator, glidesSlowlyUntilATypeIsChosenAndFasterThen)
{
    for (const bool typeChosen : { false, true })
    {
        OperatorRig rig (specOf ("MVOpBiquad"));
        rig.op().setChoiceParameter (0, 0);
        rig.setInput (1, 0.7);
        rig.activate();
        if (typeChosen)
            rig.op().setChoiceParameter (0, 0);

        const auto play = [&rig] (double hz, int first, int count)
        {
            rig.setInput (0, hz);
            for (int block = first; block < first + count; ++block)
            {
                feed (rig, 3, block, sine (2000.0));
                rig.process();
            }
            return blockRms (rig.output (0), blockFrames);
        };

        EXPECT_LT (play (200.0, 0, 4), 0.02);
        // A thousand samples: a hundredth of the way each is all of it, a 44100th is a fortieth.
        const double after = play (10000.0, 4, 4);
        EXPECT_EQ (after > 0.6, typeChosen) << after;
        rig.op().reset();
        EXPECT_GT (play (10000.0, 8, 4), 0.65); // at once after a reset
    }
}

TEST (DelayOperator, delaysToTheSampleAndScales)
{
    const struct
    {
        double ratio;
        double control;
        int samples;
    } cases[] { { 0.5, 1.0, 220 }, { 1.0, 0.5, 220 },           { 0.0, 1.0, 0 }, { 1.0, 0.999999, 440 },
                { 7.0, 0.5, 220 }, { notANumber, 0.999999, 0 }, { -2.0, 0.9, 0 } };

    for (const auto& c : cases)
    {
        OperatorRig rig (specOf ("MVOpDelay"));
        EXPECT_EQ (rig.op().setFloatParameter (0, 0.25), 1);
        EXPECT_EQ (rig.op().setFloatParameter (1, 441.0 / rate), 1);
        if (c.control < 1.0)
            rig.follow (1, 0);
        rig.setControl (0, c.control);
        rig.setInput (1, c.ratio);
        rig.activate();

        for (int block = 0; block < 3; ++block)
        {
            feed (rig, 0, block, [] (int n) { return n == 3 ? 1.0 : 0.0; });
            rig.process();
            for (int i = 0; i < blockFrames; ++i)
                ASSERT_EQ (rig.output (0)[i], block * blockFrames + i == 3 + c.samples ? 0.25 : 0.0)
                    << c.ratio << " " << block * blockFrames + i;
        }
    }
}

TEST (DelayOperator, aNewRatioIsFadedToOver512Samples)
{
    OperatorRig rig (specOf ("MVOpDelay"));
    rig.op().setFloatParameter (1, 441.0 / rate);
    rig.setInput (1, 0.5);
    rig.activate();
    const auto ramp = [] (int n) { return static_cast<double> (n); };

    for (int block = 0; block < 8; ++block)
    {
        rig.setInput (1, block < 4 ? 0.5 : 1.0);
        feed (rig, 0, block, ramp);
        rig.process();
        for (int i = 0; block >= 3 && i < blockFrames; ++i)
        {
            const int n = block * blockFrames + i;
            const double share = std::clamp ((n - 1024) / 512.0, 0.0, 1.0);
            ASSERT_NEAR (rig.output (0)[i], 0.5 * ((1.0 - share) * (n - 220) + share * (n - 441)), 1e-9) << n;
        }
    }

    // A new scale keeps what is in the line.
    rig.op().setFloatParameter (0, 0.75);
    feed (rig, 0, 8, ramp);
    rig.process();
    EXPECT_NEAR (rig.output (0)[0], 0.75 * (2048 - 441), 1e-9);
}

TEST (SignalShaperOperator, readsTheCurveFromMinusOneToOne)
{
    const double valley[] { 0.0, 1.0, 0.5, 0.0, 1.0, 1.0 };
    const struct
    {
        double in, line, bent;
    } cases[] { { -1.0, -1.0, 1.0 },
                { -9.0, -1.0, 1.0 },
                { 0.0, 0.0, -1.0 },
                { 1.0, 4095.0 / 4096.0 * 2.0 - 1.0, 2047.0 / 2048.0 * 2.0 - 1.0 },
                { notANumber, -1.0, 1.0 } };

    for (const auto& c : cases)
        for (const bool isBent : { false, true })
        {
            OperatorRig rig (specOf ("MVOpSignalShaper"));
            if (isBent)
            {
                EXPECT_EQ (rig.op().setCurveParameter (0, 3, valley), 1);
                const double* points = nullptr;
                EXPECT_EQ (rig.op().curveParameter (0, points), 3);
                EXPECT_EQ (points[2], 16383.0 / 32767.0); // truncated
            }
            rig.op().setInputScale (0, 2.0);
            rig.setInput (0, c.in * 0.5);
            rig.process();
            EXPECT_NEAR (rig.output (0)[255], isBent ? c.bent : c.line, 1e-12) << c.in;
        }
}

TEST (SignalShaperOperator, aControlIsFollowedOverTheBlock)
{
    OperatorRig rig (specOf ("MVOpSignalShaper"));
    rig.follow (0, 6);
    rig.setControl (6, 0.5);
    rig.setInput (0, 1.0);
    rig.activate();
    rig.process();
    for (int i = 0; i < blockFrames; ++i)
        ASSERT_NEAR (rig.output (0)[i], 0.5 * i / 256.0, 1.0 / 2048.0);
    rig.process();
    EXPECT_NEAR (rig.output (0)[0], 0.5, 1.0 / 2048.0);
    EXPECT_EQ (rig.op().setCurveParameter (0, 17, rig.output (0)), 17);
}

/** Four blocks of a ramp, sample n being n + 1, recorded; the loop then starts with the next block. */
struct RecordedRamp : OperatorRig
{
    explicit RecordedRamp (double playbackRate, double duration = 1.0) : OperatorRig (specOf ("MVOpSampler"))
    {
        activate();
        setInput (2, 0.5);
        setInput (3, duration);
        setInput (4, playbackRate);
        for (int block = 0; block < 4; ++block)
        {
            setInput (1, 0.5);
            feed (*this, 0, block, [] (int n) { return n + 1.0; });
            process();
            EXPECT_EQ (blockPeak (output (0), blockFrames), 0.0); // silent while it records
        }
        setInput (1, 0.49);
    }

    std::vector<double> play (int blocks) { return render (blocks); }
};

TEST (SamplerOperator, isSilentBeforeTheFirstRecording)
{
    OperatorRig rig (specOf ("MVOpSampler"));
    rig.activate();
    rig.setInput (0, 1.0);
    rig.setInput (1, 0.4);
    rig.setInput (4, 1.0);
    for (const double sample : rig.render (2))
        EXPECT_EQ (sample, 0.0);
}

TEST (SamplerOperator, loopsForwardWithASeamOf64Samples)
{
    // The start offset is not at work without a control: the loop is the whole recording.
    const auto sound = RecordedRamp (1.0).play (8);
    for (int n = 0; n < 2048; ++n)
    {
        const int at = n % 1024;
        const double share = std::max (0.0, (at - 960) / 64.0);
        ASSERT_NEAR (sound[static_cast<std::size_t> (n)], (1.0 - share) * (at + 1.0) + share, 1e-9) << n;
    }
}

TEST (SamplerOperator, ratesBelowZeroPlayBackwardAndZeroHolds)
{
    const auto backward = RecordedRamp (-0.5).play (2);
    EXPECT_EQ (backward[0], 1.0);
    EXPECT_NEAR (backward[2], 1024.0 / 64.0 + 63.0 / 64.0, 1e-9); // at the last sample, nearly faded over
    for (int n = 130; n < 512; ++n)
        ASSERT_NEAR (backward[static_cast<std::size_t> (n)], 1025.0 - 0.5 * n, 1e-9) << n;

    for (const double sample : RecordedRamp (0.0).play (2))
        ASSERT_EQ (sample, 1.0);
}

TEST (SamplerOperator, aControlMovesTheStartOfTheLoop)
{
    RecordedRamp rig (1.0, 0.25);
    rig.follow (2, 8);
    rig.setControl (8, 0.999999999);
    const auto sound = rig.play (2);
    for (int n = 0; n < 512; ++n)
    {
        const int at = n % 256;
        const double share = std::max (0.0, (at - 192) / 64.0);
        ASSERT_NEAR (sound[static_cast<std::size_t> (n)], 513.0 + at - share * 256.0, 1e-4) << n;
    }
}

TEST (SamplerOperator, aFullStoreEndsTheRecording)
{
    OperatorRig rig (specOf ("MVOpSampler"));
    EXPECT_EQ (rig.op().setFloatParameter (0, 0.25), 1); // 11025 samples: 43 blocks and 17 samples
    rig.activate();
    rig.setInput (0, 0.7);
    rig.setInput (1, 1.0);
    rig.setInput (3, 1.0);
    rig.setInput (4, 1.0);
    rig.render (43);
    rig.process();
    EXPECT_EQ (rig.output (0)[16], 0.0);
    EXPECT_NEAR (rig.output (0)[17], 0.7, 1e-12);
}

} // namespace
