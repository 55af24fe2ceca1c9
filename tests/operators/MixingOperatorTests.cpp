// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorRig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

TEST (SumOperator, addsEachInputUnderItsScaleAndControlRamp)
{
    OperatorRig rig (specOf ("MVOpSum"));
    rig.setInput (0, 1.0);
    rig.setInput (1, 10.0);
    rig.setInput (2, 100.0);
    rig.op().setInputScale (1, 0.5);
    rig.setControl (3, 0.25);
    rig.follow (2, 3);
    rig.activate();
    rig.process();
    // The control's first block runs from 0 to 0.25.
    for (const int i : { 0, 64, 255 })
        EXPECT_NEAR (rig.output (0)[i], 1.0 + 5.0 + 100.0 * 0.25 * i / 256.0, 1e-7) << i;
    rig.process();
    EXPECT_NEAR (rig.output (0)[0], 31.0, 1e-7);
    EXPECT_NEAR (rig.output (0)[255], 31.0, 1e-7);
}

TEST (SumOperator, holdsTheMeanLevelToFullScale)
{
    OperatorRig rig (specOf ("MVOpSum"));
    rig.setInput (0, 65536.0);
    rig.activate();
    rig.process();
    // Halved, over a ramp from the former gain of 1.
    EXPECT_DOUBLE_EQ (rig.output (0)[0], 65536.0);
    EXPECT_DOUBLE_EQ (rig.output (0)[128], 65536.0 * 0.75);
    rig.process();
    EXPECT_DOUBLE_EQ (rig.output (0)[0], 32768.0);
    EXPECT_DOUBLE_EQ (rig.output (0)[255], 32768.0);

    rig.setInput (0, 100.0); // back to 1, over a block
    rig.process();
    EXPECT_DOUBLE_EQ (rig.output (0)[0], 50.0);
    EXPECT_DOUBLE_EQ (rig.output (0)[128], 75.0);
    rig.process();
    EXPECT_DOUBLE_EQ (rig.output (0)[0], 100.0);
}

TEST (SumOperator, resetForgetsTheLimit)
{
    OperatorRig rig (specOf ("MVOpSum"));
    rig.setInput (0, 65536.0);
    rig.activate();
    rig.render (2);
    rig.op().reset();
    rig.setInput (0, 100.0);
    rig.process();
    EXPECT_DOUBLE_EQ (rig.output (0)[0], 100.0);
}

TEST (SumOperator, portCountsHaveTheirLimits)
{
    OperatorRig rig (specOf ("MVOpSum"));
    EXPECT_FALSE (rig.op().setPortCount (portsIn, 4));
    EXPECT_FALSE (rig.op().setPortCount (portsIn, 16));
    EXPECT_FALSE (rig.op().setPortCount (portsIn, -1));
    EXPECT_FALSE (rig.op().setPortCount (portsOut, 2));
    EXPECT_TRUE (rig.op().setPortCount (portsIn, 15));
    EXPECT_EQ (rig.op().portCount (portsIn), 15);
    EXPECT_TRUE (rig.op().canSetPortCount (portsIn));
    EXPECT_FALSE (rig.op().canSetPortCount (portsOut));

    EXPECT_TRUE (rig.op().setPortCount (portsIn, 0));
    rig.activate();
    rig.process();
    EXPECT_EQ (std::count (rig.output (0), rig.output (0) + blockFrames, 0.0), blockFrames);
}

TEST (ProductOperator, multipliesConnectedInputsOnly)
{
    OperatorRig rig (specOf ("MVOpProduct"));
    rig.setInput (0, 3.0);
    rig.setInput (2, 5.0);
    rig.op().setInputScale (2, 2.0);
    rig.op().setInputScale (1, 7.0); // unconnected: its scale plays no part
    rig.activate();
    rig.process();
    EXPECT_DOUBLE_EQ (rig.output (0)[17], 30.0);

    rig.setInput (2, 1e200);
    rig.setInput (3, 1e100);
    rig.process();
    EXPECT_DOUBLE_EQ (rig.output (0)[17], 6e300); // no limit of level

    rig.setInput (0, 0.0);
    rig.connect (0, false); // the first input counts even so
    rig.process();
    EXPECT_EQ (rig.output (0)[17], 0.0);
}

TEST (ProductOperator, portCountsHaveTheirLimits)
{
    OperatorRig rig (specOf ("MVOpProduct"));
    EXPECT_FALSE (rig.op().setPortCount (portsIn, 4));
    EXPECT_FALSE (rig.op().setPortCount (portsIn, 64));
    EXPECT_TRUE (rig.op().setPortCount (portsIn, 63));
    EXPECT_EQ (rig.op().portCount (portsIn), maxOperatorPorts);
    EXPECT_FALSE (rig.op().canSetPortCount (portsIn));

    EXPECT_TRUE (rig.op().setPortCount (portsOut, 3));
    EXPECT_EQ (rig.op().portCount (portsOut), 3);
    rig.activate();
    rig.process();
    EXPECT_TRUE (rig.allFinite());
}

TEST (PassThroughOperator, copiesItsInput)
{
    OperatorRig rig (specOf ("MVOpWire"));
    std::vector<double> ramp (blockFrames);
    for (std::size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = static_cast<double> (i);
    rig.setInput (0, ramp);
    rig.op().setInputScale (0, 0.5); // not applied
    rig.activate();
    rig.process();
    EXPECT_TRUE (std::equal (ramp.begin(), ramp.end(), rig.output (0)));
}

class RouterOperator : public testing::Test
{
protected:
    void SetUp() override
    {
        rig.op().setFloatParameter (1, 0.25); // both inverses become 0.8
        rig.op().setFloatParameter (2, 0.25);
        rig.setInput (0, 1.0);
        rig.setInput (3, 1.0);
        rig.activate();
    }

    /** The output that has the whole signal, or -1. */
    int routed()
    {
        int found = -1;
        for (int port = 0; port < 16; ++port)
        {
            const bool full = rig.output (port)[blockFrames - 1] == 1.0;
            EXPECT_TRUE (full || rig.output (port)[blockFrames - 1] == 0.0) << port;
            if (full)
                found = found < 0 ? port : -2;
        }
        return found;
    }

    OperatorRig rig { specOf ("MVOpRouter") };
};

TEST_F (RouterOperator, addressesChooseSetAndOutput)
{
    const struct
    {
        double x, y;
        int output;
    } cases[] { { 0.0, 0.0, 0 },  { 0.79, 0.79, 0 },   { 0.0, 0.81, 1 },
                { 0.81, 0.0, 4 }, { -0.81, -1.61, 6 }, { 2.41, 2.41, 15 },
                { 3.21, 0.0, 0 }, { 1e30, 0.0, 12 },   { std::nan (""), 0.81, 1 } };

    for (const auto& c : cases)
    {
        rig.setInput (1, c.x);
        rig.setInput (2, c.y);
        rig.render (4); // 441 samples of fade
        EXPECT_EQ (routed(), c.output) << c.x << " " << c.y;
    }
}

TEST_F (RouterOperator, inputScaleAndControlScaleTheAddress)
{
    rig.setInput (2, 1.0);
    rig.op().setInputScale (2, 3.4); // 3.4 / 0.8 is 4.25: wraps to 0
    rig.setControl (5, 0.5);         // 1.7 / 0.8 is 2.1
    rig.follow (2, 5);
    rig.render (4);
    EXPECT_EQ (routed(), 2);
}

TEST_F (RouterOperator, fadesLinearlyAndReadsNoAddressMeanwhile)
{
    rig.setInput (2, 0.9); // to output 1
    rig.setInput (3, 0.5); // half of 10 ms: 220 samples
    rig.process();
    for (const int i : { 0, 110, 219 })
    {
        EXPECT_NEAR (rig.output (0)[i], 1.0 - i / 220.0, 1e-12) << i;
        EXPECT_NEAR (rig.output (1)[i], i / 220.0, 1e-12) << i;
    }
    EXPECT_EQ (rig.output (0)[220], 0.0);
    EXPECT_EQ (rig.output (1)[220], 1.0);

    rig.setInput (2, 1.7); // output 2
    rig.setInput (3, 1.0); // 441 samples
    rig.process();
    rig.setInput (2, 0.0); // ignored: the fade runs on
    rig.process();
    EXPECT_NEAR (rig.output (2)[100], 356.0 / 441.0, 1e-12);
    EXPECT_EQ (rig.output (2)[185], 1.0);
    rig.process();
    EXPECT_NEAR (rig.output (2)[0], 1.0, 1e-12);
    EXPECT_NEAR (rig.output (0)[44], 44.0 / 441.0, 1e-12);
}

TEST_F (RouterOperator, shorterChangeTimeCutsTheRunningFade)
{
    rig.op().setIntParameter (0, 1000);
    rig.setInput (2, 0.9);
    rig.process();
    EXPECT_NEAR (rig.output (0)[255], 1.0 - 255.0 / 44100.0, 1e-6);
    rig.op().setIntParameter (0, 10); // 441 samples left instead of 43844
    rig.render (2);
    EXPECT_EQ (rig.output (1)[441 - 256], 1.0);
}

// The output operator.

class OutputOperator : public testing::Test
{
protected:
    /** Samples by which the compressor delays. */
    static constexpr int delay = 32;

    /** The gain of a mono input of 0.5 in the middle of the block just processed. */
    double gainAt (int sample) const { return rig.output (0)[sample] / 0.5; }

    OperatorRig rig { specOf ("MVOpOutput") };
};

TEST_F (OutputOperator, risesAndReleasesInBlocks)
{
    rig.setInput (0, 0.5);
    rig.activate();
    const double step = 256.0 / (44100.0 * 0.05000000074505806); // 8.6 blocks
    rig.process();
    EXPECT_EQ (gainAt (delay - 1), 0.0);
    EXPECT_NEAR (gainAt (delay + 128), step / 2.0, 1e-12);
    rig.process();
    EXPECT_NEAR (gainAt (delay), step, 1e-12);
    rig.render (8);
    EXPECT_DOUBLE_EQ (gainAt (255), 1.0);
    EXPECT_FALSE (rig.op().isFinished());

    rig.op().release();
    int blocks = 0;
    while (! rig.op().isFinished() && blocks < 100)
    {
        rig.process();
        ++blocks;
    }
    EXPECT_EQ (blocks, 9); // the first count of steps that reaches 0
    rig.render (2);
    EXPECT_TRUE (rig.op().isFinished());
}

TEST_F (OutputOperator, noteStartsAtFullGainAndRevivesAReleasedVoice)
{
    rig.setInput (0, 0.5);
    rig.activate();
    rig.op().noteEvent (60, 1.0);
    rig.process();
    EXPECT_DOUBLE_EQ (gainAt (delay), 1.0);

    for (int i = 0; i < 20; ++i)
    {
        rig.op().release();
        rig.process();
    }
    EXPECT_TRUE (rig.op().isFinished());

    rig.op().noteEvent (60, 1.0);
    EXPECT_FALSE (rig.op().isFinished());
    rig.render (2);
    EXPECT_DOUBLE_EQ (gainAt (255), 1.0);
}

TEST_F (OutputOperator, addsToTheChannelsItIsGiven)
{
    rig.setInput (0, 0.25);
    rig.activate();
    rig.op().noteStart (1.0);
    rig.process();
    rig.op().process (rig.numInputs(), rig.inputPointers(), 1, rig.outputPointers(), blockFrames, rig.descriptor());
    EXPECT_DOUBLE_EQ (rig.output (0)[100], 0.5);
    EXPECT_DOUBLE_EQ (rig.output (1)[100], 0.25); // only one channel was handed over
}

TEST_F (OutputOperator, aSilentPannedSignalChangesNothingWheneverItIsConnected)
{
    // The same loud mono signal, with a silent group connected from the start, or only after a while.
    OperatorRig late (specOf ("MVOpOutput"));
    rig.setInput (1, 0.0);
    for (OperatorRig* const each : { &rig, &late })
    {
        each->setInput (0, 3.0);
        each->activate();
        each->op().noteStart (1.0);
    }

    EXPECT_EQ (rig.render (5), late.render (5));
    late.setInput (1, 0.0);
    EXPECT_EQ (rig.render (5), late.render (5));
}

TEST_F (OutputOperator, pansWithConstantPower)
{
    rig.setInput (1, 0.5);
    rig.activate();
    for (const double position : { 0.0, 0.25, 0.5, 1.0 })
    {
        rig.setInput (2, position);
        rig.op().noteStart (1.0);
        rig.render (2);
        EXPECT_NEAR (rig.output (0)[200], 0.5 * std::sqrt (1.0 - position), 1e-3) << position;
        EXPECT_NEAR (rig.output (1)[200], 0.5 * std::sqrt (position), 1e-3) << position;
    }
}

TEST_F (OutputOperator, panAndVolumeControlsAreThoseOfTheirPorts)
{
    rig.setInput (1, 0.5);
    rig.setInput (2, 1.0);
    rig.op().setInputScale (1, 0.1); // not applied
    rig.op().setInputScale (2, 0.1);
    rig.setControl (1, 0.5);
    rig.setControl (2, 0.25);
    rig.follow (1, 1); // volume
    rig.follow (2, 2); // pan
    rig.activate();
    rig.op().noteStart (1.0);
    rig.render (3);
    EXPECT_NEAR (rig.output (0)[200], 0.5 * 0.5 * std::sqrt (0.75), 1e-4);
    EXPECT_NEAR (rig.output (1)[200], 0.5 * 0.5 * std::sqrt (0.25), 1e-4);
}

TEST_F (OutputOperator, volumeScalesAndTheCompressorHoldsTheCeiling)
{
    rig.setInput (0, 8.0);
    rig.activate();
    rig.op().noteStart (1.0);
    rig.render (4);
    EXPECT_LE (std::abs (rig.output (0)[255]), 1.01);

    rig.op().setFloatParameter (2, 0.0625);
    rig.op().noteStart (1.0);
    rig.render (400); // beyond the roll-off of a second; the gain may stay one step of its fall short of 1
    EXPECT_NEAR (rig.output (0)[255], 0.5, 0.5 * 8.0 * 32.0 / 44100.0);
}

TEST_F (OutputOperator, portCountIsRoundedUpToWholeGroupsAndAlwaysAnswersFalse)
{
    const struct
    {
        int asked;
        int inputs;
    } cases[] { { 6, 9 },    { 9, 9 }, { 12, 13 }, { 14, 13 }, { 16, 13 },
                { 100, 13 }, { 1, 1 }, { 0, 1 },   { -50, 1 }, { 2, 5 } };
    for (const auto& c : cases)
    {
        EXPECT_FALSE (rig.op().setPortCount (portsIn, c.asked));
        EXPECT_EQ (rig.op().portCount (portsIn), c.inputs) << c.asked;
    }
    EXPECT_TRUE (rig.op().canSetPortCount (portsIn));
}

TEST (OutputOperatorStoredForm, readsOlderLayoutsByVersion)
{
    struct
    {
        std::int32_t groups = 2;
        std::int32_t unused[3] {};
        double time = 1.5;
    } const older;
    static_assert (sizeof (older) == 24);

    const struct
    {
        int major, minor, revision;
        int inputs;
        double time;
        double rollOff;
    } cases[] { { 0, 9, 2, 5, 0.05000000074505806, 1.0 }, // ignored
                { 0, 9, 3, 9, 1.5, 3.8 },
                { 1, 0, 0, 9, 1.5, 3.8 },
                { 1, 0, 1, 5, 0.05000000074505806, 1.0 } }; // too short for today's layout

    for (const auto& c : cases)
    {
        OperatorRig rig (specOf ("MVOpOutput"),
                         storedOperator (0xA70006, &older, sizeof (older), c.major, c.minor, c.revision));
        EXPECT_EQ (rig.op().portCount (portsIn), c.inputs) << c.major << c.minor << c.revision;
        EXPECT_DOUBLE_EQ (rig.op().floatParameter (0), c.time);
        EXPECT_DOUBLE_EQ (rig.op().floatParameter (1), c.time);
        EXPECT_DOUBLE_EQ (rig.op().floatParameter (2), 1.0);
        EXPECT_NEAR (rig.op().floatParameter (3), c.rollOff, 1e-7);
    }
}

TEST (OutputOperatorStoredForm, newOneHasFullVolume)
{
    const auto record = specOf ("MVOpOutput").newRecord();
    const auto word = [&record] (std::size_t offset)
    {
        return std::to_integer<unsigned> (record[offset]) | std::to_integer<unsigned> (record[offset + 1]) << 8
               | std::to_integer<unsigned> (record[offset + 2]) << 16
               | std::to_integer<unsigned> (record[offset + 3]) << 24;
    };
    EXPECT_EQ (word (16), 1u);
    EXPECT_EQ (word (20), 0x7FFFFFFFu);
    EXPECT_EQ (word (28), 0x20000000u); // 1.0 of 4.0
    EXPECT_EQ (word (32), 0x730E61B7u); // 0.9 in 0.1 to 0.99
    EXPECT_EQ (word (36), 1u);
}

} // namespace
