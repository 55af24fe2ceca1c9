// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorRig.h"
#include "dsp/MVWaveforms.h"
#include "foundation/MVRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

constexpr double rate = 44100.0;

TEST (OscillatorOperator, readsItsTableAtTheScaledFrequency)
{
    // 32768 entries at 44100 Hz: 44100 / 32768 Hz steps one entry a sample.
    OperatorRig rig (specOf ("MVOpOscillator"));
    rig.op().setInputScale (0, 2.0);
    rig.setInput (0, rate / 32768.0);
    rig.activate();
    rig.process();
    for (int i = 0; i < blockFrames; ++i)
        EXPECT_NEAR (rig.output (0)[i], std::sin (2.0 * i * 2.0 * M_PI / 32768.0), 1e-3) << i;
}

TEST (OscillatorOperator, firstBlockOfAControlRampsFromZero)
{
    OperatorRig rig (specOf ("MVOpOscillator"));
    rig.op().setChoiceParameter (0, 3); // sawtooth: the output tells the position
    rig.setControl (4, 1.0);
    rig.follow (0, 4);
    rig.setInput (0, rate / 32768.0 * 50.0);
    rig.activate();
    rig.process();
    // The increment of sample i is 50 * i / 256; position before sample 255 is the sum up to 254.
    EXPECT_NEAR ((rig.output (0)[255] + 1.0) * 16384.0, 50.0 * (254.0 * 255.0 / 2.0) / 256.0, 1.5);
    const double atEnd = (rig.output (0)[255] + 1.0) * 16384.0;
    rig.process();
    EXPECT_NEAR ((rig.output (0)[255] + 1.0) * 16384.0 - atEnd, 50.0 * 256.0, 2.0);
}

TEST (OscillatorOperator, followsItsControlOnlyWhileActive)
{
    OperatorRig rig (specOf ("MVOpOscillator"));
    rig.op().setChoiceParameter (0, 3);
    rig.setControl (4, 0.0);
    rig.setInput (0, 4410.0);
    rig.activate();
    rig.op().setInputControl (0, 4); // not looked up before it is told
    rig.process();
    EXPECT_GT (rig.output (0)[2], rig.output (0)[0]);
    rig.op().refreshControls();
    rig.process();
    const double resting = rig.output (0)[1];
    // 0 Hz runs at a tenth of a hertz; the sawtooth rises by 2 a period.
    EXPECT_NEAR (rig.output (0)[255] - resting, 2.0 * 0.1 * 254.0 / rate, 1.0 / 16384.0);
}

TEST (OscillatorOperator, constantFrequencyTakesTheSameStepsAsAMovingOne)
{
    for (const double hz : { 441.3, -441.3, 0.0, 1e6 })
    {
        OperatorRig steady (specOf ("MVOpOscillator"));
        OperatorRig moving (specOf ("MVOpOscillator"));
        std::vector<double> signal (blockFrames, hz);
        steady.setInput (0, signal);
        signal.back() = hz + 1.0; // acts behind the last sample of the block
        moving.setInput (0, signal);
        steady.activate();
        moving.activate();
        EXPECT_EQ (steady.render (1), moving.render (1)) << hz;
    }
}

TEST (OscillatorOperator, parameterChangeRestartsAtThePhase)
{
    OperatorRig rig (specOf ("MVOpOscillator"));
    rig.setInput (0, 440.0);
    rig.activate();
    rig.render (3);
    rig.op().setFloatParameter (1, 0.25);
    rig.process();
    EXPECT_NEAR (rig.output (0)[0], 1.0, 1e-6); // a quarter of the sine's period
}

TEST (OscillatorOperator, recordOfEarlyVersionsIsIgnored)
{
    const struct
    {
        double phase;
        std::int32_t type[2];
    } record { 0.5, { 3, 0 } };
    const struct
    {
        int major, minor, revision;
        int position;
    } cases[] { { 0, 9, 2, 0 }, { 0, 9, 3, 2 }, { 1, 4, 0, 2 }, { -1, 0, 0, 2 } };

    for (const auto& c : cases)
    {
        OperatorRig rig (specOf ("MVOpOscillator"),
                         storedOperator (0xA70005, &record, sizeof (record), c.major, c.minor, c.revision));
        EXPECT_EQ (rig.op().choiceParameter (0), c.position) << c.major << c.minor << c.revision;
        EXPECT_EQ (rig.op().floatParameter (1), c.position == 0 ? 0.0 : 0.5);
    }
}

TEST (PulseWidthModulatorOperator, widthIsTheFirstSampleTimesItsControl)
{
    OperatorRig rig (specOf ("MVOpPulseWidthModulator"));
    const double period = 128.0;
    rig.setInput (0, rate / period);
    std::vector<double> width (blockFrames, 0.0);
    width[0] = 0.5;
    rig.setInput (1, width);
    rig.setInput (2, 0.5);
    rig.setControl (2, 0.5);
    rig.follow (1, 2);
    rig.activate();
    rig.process();
    rig.process();
    // A square pulse over a quarter of each period, its edges softened.
    EXPECT_NEAR (rig.output (0)[24], 0.999, 0.01);
    EXPECT_NEAR (rig.output (0)[60], 0.0, 0.01);
    EXPECT_NEAR (rig.output (0)[120], 0.0, 0.01);
    EXPECT_NEAR (rig.output (0)[128 + 24], 0.999, 0.01);
}

TEST (PulseWidthModulatorOperator, modulationTypeChoosesTheRoutine)
{
    // Modulation 0.5 offsets the pulse in routine 1, does nothing in 2 and leaves the shape alone in 3.
    const double expected[3][2] { { 0.0, 1.0 }, { 1.0, 0.0 }, { 1.0, 0.0 } };
    for (int type = 0; type < 3; ++type)
    {
        OperatorRig rig (specOf ("MVOpPulseWidthModulator"));
        rig.op().setChoiceParameter (1, type);
        rig.setInput (0, rate / 256.0);
        rig.setInput (1, 0.4);
        rig.setInput (2, 0.5);
        rig.activate();
        rig.process();
        EXPECT_NEAR (rig.output (0)[51], expected[type][0], 0.02) << type;  // a fifth of the period
        EXPECT_NEAR (rig.output (0)[179], expected[type][1], 0.02) << type; // seven tenths
    }
}

class NoiseOperator : public testing::Test
{
protected:
    void SetUp() override { MVRandom::startAllFrom (99); }
    void TearDown() override { MVRandom::startAllFromClock(); }
};

TEST_F (NoiseOperator, whiteNoiseIsUniformAndIgnoresInterpolation)
{
    OperatorRig rig (specOf ("MVOpNoise"));
    rig.op().setBoolParameter (1, true);
    rig.activate();
    const auto noise = rig.render (200);
    double sum = 0.0;
    double squares = 0.0;
    int repeats = 0;
    for (std::size_t i = 1; i < noise.size(); ++i)
    {
        sum += noise[i];
        squares += noise[i] * noise[i];
        repeats += noise[i] == noise[i - 1] ? 1 : 0;
    }
    EXPECT_NEAR (sum / static_cast<double> (noise.size()), 0.0, 0.02);
    EXPECT_NEAR (squares / static_cast<double> (noise.size()), 1.0 / 3.0, 0.02); // variance of -1 to 1
    EXPECT_EQ (repeats, 0);
}

TEST_F (NoiseOperator, brownStepsStayWithinTheDeviationScaledByThePreviousControlValue)
{
    OperatorRig rig (specOf ("MVOpNoise"));
    rig.op().setChoiceParameter (0, 1);
    rig.setInput (0, 0.1);
    // The first update sets current and previous value; later ones only the current: 0.5 goes on scaling.
    rig.setControl (0, 0.5);
    rig.setControl (0, 1.0);
    ASSERT_NEAR (rig.control (0)->getPreviousValue(), 0.5, 1e-9);
    rig.follow (0, 0);
    rig.activate();
    const auto walk = rig.render (20);
    double largest = 0.0;
    for (std::size_t i = 1; i < walk.size(); ++i)
        largest = std::max (largest, std::abs (walk[i] - walk[i - 1]));
    EXPECT_LE (largest, 0.05 + 1e-12);
    EXPECT_GT (largest, 0.045);
}

TEST_F (NoiseOperator, connectedIntervalHoldsEachValueForItsMilliseconds)
{
    OperatorRig rig (specOf ("MVOpNoise"));
    rig.op().setInputScale (1, 2.0);
    rig.setInput (1, 0.5); // 1 ms, 44.1 samples, so 44
    rig.activate();
    const auto noise = rig.render (2);
    for (std::size_t i = 0; i + 1 < noise.size(); ++i)
        EXPECT_EQ (noise[i] == noise[i + 1], (i + 1) % 44 != 0) << i;
}

TEST_F (NoiseOperator, resetDrawsANewValueAtOnce)
{
    OperatorRig rig (specOf ("MVOpNoise"));
    rig.setInput (1, 3.0); // 132 samples: a block ends inside the second value
    rig.activate();
    const auto first = rig.render (1);
    rig.op().reset();
    EXPECT_EQ (rig.render (1), first);
}

TEST (ConstantOperator, fillsTheBlock)
{
    OperatorRig rig (specOf ("MVOpConstantPcm"));
    rig.op().setFloatParameter (0, 12.5);
    rig.activate();
    rig.process();
    EXPECT_EQ (std::count (rig.output (0), rig.output (0) + blockFrames, 12.5), blockFrames);
}

TEST (InputOperator, copiesItsChannelOrIsSilent)
{
    OperatorRig rig (specOf ("MVOpInput"));
    rig.setInput (0, 0.25);
    rig.setInput (1, -0.5);
    rig.op().setIntParameter (0, 1);
    rig.activate();
    rig.process();
    EXPECT_EQ (rig.output (0)[100], -0.5);
    rig.attributes().numInputChannels = 1; // fewer channels than when the record was folded
    rig.process();
    EXPECT_EQ (rig.output (0)[100], 0.0);
}

class MidiKeyInOperator : public testing::Test
{
protected:
    void SetUp() override
    {
        rig.op().setPitchBendControl (rig.control (0));
        rig.setControl (0, 0.5);
        rig.activate();
    }

    /** Pitch once the smoother has settled. */
    double settledPitch()
    {
        rig.render (2);
        return rig.output (0)[255];
    }

    OperatorRig rig { specOf ("MVOpMidiKeyIn") };
};

TEST_F (MidiKeyInOperator, playsEqualTemperament)
{
    const struct
    {
        int key;
        int transposition;
        double hz;
    } cases[] { { 69, 0, 440.0 },        { 57, 0, 220.0 },        { 60, 0, 261.6255653 },
                { 127, 0, 12543.85395 }, { 69, 12, 880.0 },       { 0, -24, 8.661957218 }, // never below key 1
                { 1, 0, 8.661957218 },   { 20, -24, 8.661957218 } };

    for (const auto& c : cases)
    {
        rig.op().setIntParameter (0, c.transposition);
        rig.op().noteEvent (c.key, 0.7);
        EXPECT_NEAR (settledPitch(), c.hz, c.hz * 1e-6) << c.key << " " << c.transposition; // single precision
        EXPECT_NEAR (rig.output (1)[255], 0.7, 1e-9);
    }

    rig.op().noteEvent (69, 0.0);
    EXPECT_NEAR (settledPitch(), 0.0, 1e-9);
    EXPECT_NEAR (rig.output (1)[255], 0.0, 1e-9);
}

TEST_F (MidiKeyInOperator, pitchRampsAcrossTheFirstBlockThroughTheSmoother)
{
    rig.op().noteEvent (69, 1.0);
    rig.process();
    // A ramp of 440 / 256 a sample; the one-pole at 0.5 lags a ramp by one sample in the long run.
    EXPECT_NEAR (rig.output (0)[200], 440.0 * 199.0 / 256.0, 1e-6);
    EXPECT_EQ (rig.output (0)[0], 0.0);
}

TEST_F (MidiKeyInOperator, restingOutputsStayAndStartAgainWithTheNextNote)
{
    rig.op().noteEvent (61, 0.37);
    rig.render (4);
    const double pitch = rig.output (0)[255];
    const double velocity = rig.output (1)[255];
    for (int block = 0; block < 3; ++block)
    {
        rig.process();
        EXPECT_EQ (std::count (rig.output (0), rig.output (0) + blockFrames, pitch), blockFrames);
        EXPECT_EQ (std::count (rig.output (1), rig.output (1) + blockFrames, velocity), blockFrames);
    }

    rig.op().noteEvent (61, 0.0);
    rig.render (4);
    EXPECT_NEAR (rig.output (0)[255], 0.0, 1e-12);
    rig.op().noteEvent (61, 0.37); // the same pitch as it rested on before
    rig.process();
    EXPECT_LT (rig.output (0)[0], 1.0);
}

TEST_F (MidiKeyInOperator, bendSpansAnOctaveEachWay)
{
    rig.op().noteEvent (69, 1.0);
    for (const auto& [bend, hz] : { std::pair (1.0, 880.0), std::pair (0.0, 220.0), std::pair (0.75, 622.2539674) })
    {
        rig.setControl (0, bend);
        rig.render (3);
        EXPECT_NEAR (rig.output (0)[255], hz, hz * 1e-6) << bend;
    }
}

TEST_F (MidiKeyInOperator, newBendGoesWithTheOldPitchWithinABlock)
{
    rig.op().noteEvent (69, 1.0);
    rig.render (4);
    rig.setControl (0, 1.0);
    rig.process();
    // The block runs from 440 * 2 down to 440 * 1, not up.
    EXPECT_GT (rig.output (0)[10], 800.0);
    EXPECT_LT (rig.output (0)[255], 450.0);
}

TEST_F (MidiKeyInOperator, percussiveVelocityDecaysOnceABlockAndIgnoresNoteOff)
{
    rig.op().setBoolParameter (1, true);
    rig.op().setFloatParameter (2, 2.0);
    rig.op().setFloatParameter (3, 0.5);
    rig.op().noteEvent (69, 0.8);
    rig.render (100);
    // In its 100th block t is 99 blocks of 256 / 44100 s.
    const double t = 99.0 * 256.0 / rate;
    const double step = 256.0 / rate * 2.0; // relative fall over the last ramp, an upper bound
    const double expected = 0.8 * std::exp (-2.0 * t) + 0.4;
    EXPECT_NEAR (rig.output (1)[255], expected, expected * step / 64.0);

    rig.op().noteEvent (69, 0.0);
    rig.setControl (0, 1.0);
    rig.render (2);
    EXPECT_NEAR (rig.output (0)[255], 440.0, 1e-6); // neither silenced nor bent
    EXPECT_GT (rig.output (1)[255], 0.4);

    rig.op().noteEvent (57, 0.8); // no ramp leads to the next key
    EXPECT_NEAR (settledPitch(), 220.0, 1e-6);
}

} // namespace
