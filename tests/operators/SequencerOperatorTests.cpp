// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

const double notANumber = std::nan ("");

/** Gives a sequencer's record these whole numbers, from stage 0 on. */
void storeStages (OperatorRig& rig, const std::vector<int>& stored)
{
    std::vector<double> stages;
    for (const int value : stored)
        stages.push_back ((value + (value < 0 ? -0.5 : 0.5)) / 32767.0);
    ASSERT_EQ (rig.op().setSequenceParameter (0, static_cast<int> (stages.size()), stages.data()), 1);
}

std::vector<double> blockOf (const std::vector<double>& start, double rest)
{
    std::vector<double> block (start);
    block.resize (blockFrames, rest);
    return block;
}

/** A value sequencer that is stepped by hand, with next to no smoothing. */
class ValueSequencer : public OperatorRig
{
public:
    ValueSequencer() : OperatorRig (specOf ("MVOpValueSequencer")) { activate(); }

    void step()
    {
        setInput (0, 0.0);
        process();
        setInput (0, 1.0);
        process();
    }

    double value() const { return output (0)[blockFrames - 1]; }
    double counter() const { return output (1)[blockFrames - 1]; }
};

TEST (ValueSequencerOperator, stepsBetweenItsEndsBothWays)
{
    const struct
    {
        double start, end; // in stages
        std::vector<double> expected;
    } cases[] { { 2.5, 5.5, { 1, 2, 3, 4, 5, 2, 3 } },
                { 5.5, 2.5, { 5, 4, 3, 2, 5 } },
                { 0.0, 0.99, { 0, 0 } },
                { 7.5, 7.5, { 0, 0 } },
                { 14.5, 0.0, { 14, 13 } },
                { 16.0, 16.0, { 1, 2, 3 } }, // a full start offset is the first stage, a full end offset the last
                { -3.5, 1.5, { 1, 13, 14, 15, 0, 1, 13 } },
                { -1.5, -3.5, { 15, 14, 13, 15 } },
                { notANumber, 2.5, { 1, 2, 0 } },
                { 1e300, 2.5, { 15, 14 } } };

    for (const auto& c : cases)
    {
        SCOPED_TRACE (testing::Message() << c.start << " to " << c.end);
        ValueSequencer rig;
        std::vector<int> stored;
        for (int i = 0; i < 16; ++i)
            stored.push_back (1000 * (i + 1));
        storeStages (rig, stored);
        rig.setInput (3, c.start / 16.0);
        rig.setInput (4, c.end / 16.0);

        for (const double stage : c.expected)
        {
            rig.step();
            EXPECT_EQ (rig.counter(), stage);
            EXPECT_NEAR (rig.value(), 1000.0 * (stage + 1.0) / 32767.0, 1e-12);
        }
    }
}

TEST (ValueSequencerOperator, stepsOnceForEachRiseToOneHalf)
{
    ValueSequencer rig;
    rig.setInput (4, 1.0);
    rig.setInput (0, blockOf ({ 0.499, 0.5, 1.0, 0.6, notANumber, 0.7, 0.499, 0.5 }, 0.5));
    rig.process();
    const double expected[] { 0, 1, 1, 1, 1, 1, 1, 2, 2 };
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ (rig.output (1)[i], expected[i]) << i;

    rig.setInput (0, 1.0); // still above
    rig.process();
    EXPECT_EQ (rig.counter(), 2.0);
}

TEST (ValueSequencerOperator, quantisesTowardsZero)
{
    const struct
    {
        double input, control;
        int stored, expected;
    } cases[] { { 0.0, 1.0, 20000, 20000 },        { -1.0, 1.0, 20000, 20000 },
                { notANumber, 1.0, 20000, 20000 }, { 3e-5, 1.0, 20000, 20000 },  // less than one step of the store
                { 0.1, 1.0, 20000, 19656 },        { 0.1, 1.0, -20000, -19656 }, // six times 3276
                { 0.2, 0.5, 20000, 19656 },        { 0.25, 1.0, 20000, 16382 },  // twice 8191
                { 1.0, 1.0, 20000, 16382 },        { 0.25, 1.0, -32767, -32764 } };

    for (const auto& c : cases)
    {
        ValueSequencer rig;
        storeStages (rig, { 0, c.stored });
        rig.setInput (4, 1.0);
        rig.setInput (1, c.input);
        rig.setControl (3, c.control);
        rig.follow (1, 3);
        rig.step();
        EXPECT_NEAR (rig.value() * 32767.0, c.expected, 1e-6) << c.input << " of " << c.stored;
    }
}

TEST (ValueSequencerOperator, smoothingKeepsItsRootOfEachStep)
{
    const struct
    {
        double smoothing;
        double kept;
    } cases[] {
        { 0.25, 0.5 }, { 0.81, 0.9 }, { 0.0, 0.1 }, { notANumber, 0.1 }, { 7.0, 1.0 - 0.5 * 1.0132789611816e-6 }
    };

    for (const auto& c : cases)
    {
        ValueSequencer rig;
        storeStages (rig, { 0, 32767 });
        rig.setInput (4, 1.0);
        rig.setInput (2, c.smoothing);
        rig.setInput (0, 1.0);
        rig.process();
        for (int i = 0; i < blockFrames; ++i)
            EXPECT_NEAR (rig.output (0)[i], 1.0 - std::pow (c.kept, i + 1), 1e-7) << c.smoothing << " at " << i;
    }

    // Read with every sample, times its control.
    ValueSequencer rig;
    storeStages (rig, { 0, 32767 });
    rig.setInput (4, 1.0);
    rig.setInput (2, blockOf ({ 0.5 }, 1.62));
    rig.setControl (3, 0.5);
    rig.follow (2, 3);
    rig.setInput (0, 1.0);
    rig.process();
    EXPECT_NEAR (rig.output (0)[0], 0.5, 1e-9);
    EXPECT_NEAR (rig.output (0)[1], 1.0 - 0.5 * 0.9, 1e-9);
}

/** What a time sequencer plays, with its pulses found. */
struct Pulses
{
    Pulses (OperatorRig& rig, int total, int frames)
    {
        std::vector<double> pulse, counter;
        for (int done = 0; done < total; done += frames)
        {
            rig.process (frames);
            pulse.insert (pulse.end(), rig.output (0), rig.output (0) + frames);
            counter.insert (counter.end(), rig.output (1), rig.output (1) + frames);
        }

        for (std::size_t i = 0; i < pulse.size(); ++i)
        {
            if (pulse[i] == 1.0 && (i == 0 || pulse[i - 1] == 0.0))
            {
                starts.push_back (static_cast<int> (i));
                lengths.push_back (0);
                stages.push_back (counter[i]);
            }
            else if (i > 0)
            {
                EXPECT_EQ (counter[i], counter[i - 1]) << "changes at " << i;
            }

            EXPECT_TRUE (pulse[i] == 1.0 || pulse[i] == 0.0);
            if (pulse[i] == 1.0)
                ++lengths.back();
        }
    }

    std::vector<int> starts, lengths;
    std::vector<double> stages;
};

TEST (TimeSequencerOperator, pulsesFallOnTheSampleWhateverTheBlock)
{
    // 74 / 32767 of a second are 99.6 samples, 149 are 200.5 and 1000 are 1345.9.
    const std::vector<int> starts { 0, 99, 299, 1644, 1677, 1710 };

    for (const int frames : { 256, 255, 99, 33, 32, 1 })
    {
        SCOPED_TRACE (frames);
        OperatorRig rig (specOf ("MVOpTimeSequencer"));
        storeStages (rig, { 0, 74, 149, 1000, 0, -5, 32767 });
        rig.activate();
        const Pulses pulses (rig, 1800, frames);
        EXPECT_EQ (pulses.starts, starts);
        EXPECT_EQ (pulses.lengths, std::vector<int> (6, 32));
        EXPECT_EQ (pulses.stages, (std::vector<double> { 1, 2, 3, 4, 5, 6 }));
    }
}

TEST (TimeSequencerOperator, rateDividesTheInterval)
{
    const struct
    {
        double sampleRate;
        int stored;
        int source; // index of the node that feeds the rate
        double input, control;
        int expected;
    } cases[] { { 44100.0, 1000, -1, 0.0, 0.5, 1345 }, // unconnected: 1.0 whatever its control
                { 44100.0, 1000, 0, 2.0, 1.0, 1345 },  // so is what the first node feeds
                { 44100.0, 1000, 1, 2.0, 1.0, 672 },       { 44100.0, 1000, 1, -2.0, 1.0, 672 },
                { 44100.0, 1000, 1, 4.0, 0.5, 672 },       { 44100.0, 1000, 1, 1000.0, 1.0, 33 },
                { 44100.0, 9000, 1, 1000.0, 1.0, 242 }, // 12112 samples at the highest rate, 50
                { 44100.0, 74, 1, 0.0, 1.0, 9900 },     // 99 samples at the lowest, 0.01
                { 44100.0, 74, 1, notANumber, 1.0, 9900 }, { 44100.0, 32767, -1, 0.0, 1.0, 44100 },
                { 48000.0, 1000, -1, 0.0, 1.0, 1464 } };

    for (const auto& c : cases)
    {
        OperatorRig rig (specOf ("MVOpTimeSequencer"));
        storeStages (rig, std::vector<int> (16, c.stored));
        rig.attributes().sampleRate = c.sampleRate;
        rig.setInput (0, c.input);
        rig.descriptor().inputSrcNode.setItem (0, c.source);
        rig.setControl (3, c.control);
        rig.follow (0, 3);
        rig.activate();
        const Pulses pulses (rig, c.expected + 64, 64);
        ASSERT_GE (pulses.starts.size(), 2u) << c.input;
        EXPECT_EQ (pulses.starts[1] - pulses.starts[0], c.expected) << c.input;
    }
}

TEST (TimeSequencerOperator, stepsBetweenItsEndsBothWays)
{
    const struct
    {
        double start, end;
        int startSource, endSource;
        std::vector<double> expected;
    } cases[] { { 0.7, 0.3, 1, 1, { 10, 9, 8, 7, 6, 5, 4, 10 } },
                { -0.2, 0.3, 1, 1, { 1, 2, 3, 4, 3, 4 } },
                { 0.7, 0.3, 0, 1, { 1, 2, 3, 4, 0 } }, // a start that the first node feeds is 0
                { 0.95, 0.0, 1, 0, { 1, 2, 3, 4 } },   // and an end is 1
                { 1.0, 1.0, 1, 1, { 0, 0 } },          // both ends on the last stage
                { notANumber, 0.1, 1, 1, { 1, 0, 1 } } };

    for (const auto& c : cases)
    {
        OperatorRig rig (specOf ("MVOpTimeSequencer"));
        rig.setInput (1, c.start);
        rig.setInput (2, c.end);
        rig.descriptor().inputSrcNode.setItem (1, c.startSource);
        rig.descriptor().inputSrcNode.setItem (2, c.endSource);
        rig.activate();
        const int count = static_cast<int> (c.expected.size());
        const Pulses pulses (rig, 33 * count, 33);
        EXPECT_EQ (pulses.stages, c.expected) << c.start << " to " << c.end;
    }
}

TEST (TimeSequencerOperator, newControlsActFromTheNextStageOn)
{
    OperatorRig rig (specOf ("MVOpTimeSequencer"));
    storeStages (rig, std::vector<int> (16, 1000));
    rig.setInput (0, 1.0);
    rig.activate();
    rig.render (4);
    rig.setInput (0, 4.0);
    // 1024 samples of the first stage's 1345 are gone, then a quarter of 1345 lies between pulses.
    const Pulses pulses (rig, 1024, 256);
    EXPECT_EQ (pulses.starts, (std::vector<int> { 321, 657, 993 }));
}

} // namespace
