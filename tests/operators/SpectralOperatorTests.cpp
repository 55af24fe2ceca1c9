// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorRig.h"
#include "dsp/MVFreqTweaker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

constexpr int hop = MVFreqTweaker::hopSize;

std::vector<double> sineBlock (double periods)
{
    std::vector<double> block (blockFrames);
    for (std::size_t i = 0; i < block.size(); ++i)
        block[i] = std::sin (2.0 * std::numbers::pi * periods * static_cast<double> (i) / blockFrames);
    return block;
}

/** Feeds a long signal to the first inputs, block by block, and returns the output. */
std::vector<double> play (OperatorRig& rig, const std::vector<double>& a, const std::vector<double>& b, int frames)
{
    std::vector<double> out;
    for (std::size_t done = 0; done + static_cast<std::size_t> (frames) <= a.size();
         done += static_cast<std::size_t> (frames))
    {
        for (const auto& [port, signal] : { std::pair { 0, &a }, std::pair { 1, &b } })
        {
            std::vector<double> block (blockFrames, 0.0);
            std::copy_n (signal->begin() + static_cast<std::ptrdiff_t> (done), frames, block.begin());
            rig.setInput (port, block);
        }
        rig.process (frames);
        out.insert (out.end(), rig.output (0), rig.output (0) + frames);
    }
    return out;
}

std::vector<double> longSignal (double periods, std::size_t count)
{
    std::vector<double> signal (count);
    for (std::size_t i = 0; i < count; ++i)
        signal[i] = std::sin (0.01 * periods * static_cast<double> (i)) + 0.3 * std::cos (static_cast<double> (i));
    return signal;
}

TEST (FreqTweakerOperator, deliversTheHopsOfItsTweakerAtAnyBlockSize)
{
    const auto a = longSignal (7.0, 8 * hop);
    const auto b = longSignal (3.0, 8 * hop);
    // How late a hop leaves: what the blocks before it asked for in vain.
    const struct
    {
        int frames;
        std::size_t late;
    } cases[] { { 256, 256 }, { 128, 384 }, { 1, 511 } };

    for (const int algorithm : { tweakShifted, tweakMagSwapped, tweakBlur })
        for (const auto& c : cases)
        {
            OperatorRig rig (specOf ("MVOpFreqTweaker"));
            rig.op().setChoiceParameter (0, algorithm - 1);
            rig.setInput (2, 1.2);
            rig.op().setInputScale (2, 0.5);
            rig.setControl (4, 0.5);
            rig.follow (2, 4);
            rig.activate();
            const auto out = play (rig, a, b, c.frames);

            MVFreqTweaker tweaker;
            tweaker.init (true, 44100.0);
            tweaker.setAlgorithm (algorithm);
            std::vector<double> hops (a.size());
            for (std::size_t i = 0; i < a.size(); i += hop)
                tweaker.process (&hops[i], &a[i], &b[i], 1.2 * 0.5 * rig.control (4)->getValue());

            EXPECT_EQ (std::count (out.begin(), out.begin() + hop, 0.0), hop);
            for (std::size_t i = hop; i < out.size(); ++i)
                ASSERT_EQ (out[i], hops[i - c.late]) << algorithm << ' ' << c.frames << ' ' << i;
        }
}

TEST (FreqTweakerOperator, oddBlocksLoseNothingOnceRunning)
{
    // A constant under the squared window repeats from hop to hop, so a sample lost or doubled breaks the period.
    OperatorRig rig (specOf ("MVOpFreqTweaker"));
    rig.setInput (2, 1.0);
    rig.activate();
    const std::vector<double> ones (100 * hop, 1.0);
    const auto out = play (rig, ones, ones, 200);
    // A block of 200 starts at each multiple of 8 of a hop's samples; from then on no more is asked than is there.
    for (std::size_t i = 25 * hop + hop; i < out.size(); ++i)
        ASSERT_NEAR (out[i], out[i - hop], 1e-13) << i;
    EXPECT_NEAR (*std::max_element (out.end() - hop, out.end()), 1.0, 1e-6);
    EXPECT_NEAR (*std::min_element (out.end() - hop, out.end()), 0.5, 1e-3);
}

TEST (FreqTweakerOperator, portNamesFollowTheAlgorithm)
{
    OperatorRig rig (specOf ("MVOpFreqTweaker"));
    const char* const names[][3] {
        { "Input Signal", "(Not Used)", "Stretch Factor" },
        { "Input Signal", "(Not Used)", "Shift Ratio" },
        { "First Convolved Signal", "Second Convolved Signal", "(Not Used)" },
        { "Self-convolved Signal", "Second Pre-Convolution Signal", "(Not Used)" },
        { "Phase Component Signal", "Magnitude Component Signal", "(Not Used)" },
        { "Magnitude Component Signal", "Phase Component Signal", "(Not Used)" },
        { "Input Signal", "(Not Used)", "(Not Used)" },
        { "Input Signal", "(Not Used)", "Wrap Frequency Ratio" },
        { "Input Signal", "Twist Center Frequency", "Twist Frequency Spread" },
        { "Input Signal", "Attraction Magnitude", "Center Attraction Position" },
        { "First Extreme Morphed Signal", "Second Extreme Morphed Signal", "Morph Balance" },
        { "Input Signal", "Blurring Direction", "Persistence Factor" },
    };
    for (int position = 0; position < 12; ++position)
    {
        EXPECT_EQ (rig.op().setChoiceParameter (0, position), 1);
        for (int port = 0; port < 3; ++port)
            EXPECT_STREQ (rig.op().portName (portsIn, port)->text(), names[position][port]);
        EXPECT_STREQ (rig.op().portName (portsOut, 0)->text(), "Tweaked Signal");
    }
    EXPECT_EQ (rig.op().setChoiceParameter (0, 12), 17);
    EXPECT_FALSE (rig.op().portName (portsIn, 3));

    // A record that nobody folded yet has names, too.
    for (const std::int32_t stored : { 0, 13, -7, std::numeric_limits<std::int32_t>::min() })
        EXPECT_NE (specOf ("MVOpFreqTweaker").portName (&stored, portsIn, 2), "");
}

TEST (PitchTrackerOperator, givesTheFrequencyOfATone)
{
    // Two samples make one complex point, so a tone of p periods in 256 samples is strongest in the mirror image's
    // bin, 128 - p; the output, which falls as the bin rises, is the tone's own p / 256 of the rate.
    for (const double periods : { 3.0, 20.0, 50.0 })
        for (const double rate : { 44100.0, 96000.0 })
        {
            OperatorRig rig (specOf ("MVOpPitchTracker"));
            rig.attributes().sampleRate = rate;
            rig.setInput (0, sineBlock (periods));
            rig.activate();
            const double target = periods / 256.0 * rate;
            rig.process();
            for (const int i : { 0, 64, 255 })
                EXPECT_NEAR (rig.output (0)[i], target * i / 256.0, 1e-8);
            rig.process();
            EXPECT_DOUBLE_EQ (rig.output (0)[0], target);
            EXPECT_DOUBLE_EQ (rig.output (0)[255], target);
        }
}

TEST (PitchTrackerOperator, silenceIsAboveHalfTheRate)
{
    OperatorRig rig (specOf ("MVOpPitchTracker"));
    rig.attributes().sampleRate = 48000.0;
    rig.activate();
    rig.render (2);
    EXPECT_DOUBLE_EQ (rig.output (0)[255], 129.0 / 128.0 * 24000.0);
}

TEST (PitchTrackerOperator, holdsWhileAFrameFillsAndDropsWhatIsBeyondIt)
{
    OperatorRig rig (specOf ("MVOpPitchTracker"));
    rig.attributes().sampleRate = 25600.0;
    rig.activate();
    const double silence = 129.0 * 100.0;

    rig.process (200);
    EXPECT_EQ (rig.output (0)[199], 0.0);
    rig.process (200); // complete after 56 samples; the ramp takes the whole block
    EXPECT_DOUBLE_EQ (rig.output (0)[100], silence / 2.0);
    // Had the other 144 samples been kept, 150 more would complete the next frame.
    rig.setInput (0, sineBlock (20.0));
    rig.process (150);
    EXPECT_EQ (rig.output (0)[149], silence);
    rig.process (150);
    EXPECT_LT (rig.output (0)[149], silence);

    rig.op().reset();
    rig.process (200);
    EXPECT_EQ (rig.output (0)[199], 0.0);
}

} // namespace
