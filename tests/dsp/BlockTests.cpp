// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVBiquadFilter.h"
#include "dsp/MVBlockMath.h"
#include "dsp/MVCompressor.h"
#include "dsp/MVDcFilter.h"
#include "dsp/MVDelayLine.h"
#include "dsp/MVEnvFollower.h"
#include "dsp/MVExponentialPulse.h"
#include "dsp/MVNoiseGenerator.h"
#include "dsp/MVOscillator.h"
#include "dsp/MVPowerFollower.h"
#include "dsp/MVPulseWidthMod.h"
#include "dsp/MVResampleLooper.h"
#include "dsp/MVSignalDistorter.h"
#include "dsp/MVSignalSmoother.h"
#include "dsp/MVSurroundMixer.h"
#include "tests/support/AllocationWatch.h"
#include "tests/support/TestRandom.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace morvanelab
{

namespace
{

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
using Block = std::array<double, 256>;
using Values = std::vector<double>;

/** Everything that turns one block into another, under one roof. */
struct Rig
{
    static constexpr double rate = 44100.0;
    MVBiquadFilter biquad;
    MVCompressor compressor;
    MVDcFilter dcFilter;
    MVDelayLine delayLine;
    MVEnvFollower envFollower;
    MVExponentialPulse pulse;
    MVNoiseGenerator noise;
    MVOscillator oscillator;
    MVPowerFollower powerFollower;
    MVPulseWidthMod pulseWidth;
    MVResampleLooper looper;
    MVSignalDistorter distorter;
    MVSignalSmoother smoother;
    Block second {};

    Rig()
    {
        for (MVDspBase* object : std::initializer_list<MVDspBase*> { &biquad, &compressor, &dcFilter, &delayLine,
                                                                     &noise, &oscillator, &pulseWidth })
            object->init (true, rate);
        pulseWidth.setTable (MVWaveforms::instance().table (waveGlottalDerivative));
        pulseWidth.setModulationType (pulseShapeModulated);
        pulse.setShape ({ 500, 700, 1.0, 0.0, 0.3, 3.0 });
        looper.setCapacity (1000);
        MVSurroundMixer::instance();
        second.fill (0.5);
    }

    using Process = std::function<void (Rig&, double* out, const double* in)>;
    struct Row
    {
        const char* name;
        Process process;
    };

    static const std::vector<Row>& rows()
    {
        static const std::vector<Row> all {
            { "biquad", [] (Rig& r, double* out, const double* in) { r.biquad.process (out, in, 256, true); } },
            { "biquad controls",
              [] (Rig& r, double* out, const double* in)
              {
                  r.biquad.setFrequency (in[0]);
                  r.biquad.setBandwidth (in[1]);
                  r.biquad.setSmoothing (in[2]);
                  r.biquad.setQuaver (in[3], in[4]);
                  r.biquad.process (out, r.second.data(), 256, true);
              } },
            { "compressor",
              [] (Rig& r, double* out, const double* in)
              {
                  blockCopy (out, in, 256);
                  r.compressor.process (out, 256);
              } },
            { "dc filter",
              [] (Rig& r, double* out, const double* in)
              {
                  blockCopy (out, in, 256);
                  r.dcFilter.process (out, 256);
              } },
            { "delay line",
              [] (Rig& r, double* out, const double* in)
              {
                  r.delayLine.setDuration (in[0]);
                  r.delayLine.process (256, r.second.data(), out);
              } },
            { "env follower", [] (Rig& r, double* out, const double* in) { r.envFollower.process (out, in, 256); } },
            { "exponential pulse",
              [] (Rig& r, double* out, const double*)
              {
                  r.pulse.trigger();
                  r.pulse.process (out, 256);
              } },
            { "brown noise", [] (Rig& r, double* out, const double* in) { r.noise.brownian (out, in, in[0], 256); } },
            { "stepped noise",
              [] (Rig& r, double* out, const double* in)
              {
                  r.noise.setNoiseType (noiseBrown);
                  r.noise.setInterpolate (true);
                  r.noise.stepped (out, in, in, in[0], 256, in[1]);
              } },
            { "oscillator",
              [] (Rig& r, double* out, const double* in) { r.oscillator.process (out, in, 256, in[0], in[1]); } },
            { "power follower",
              [] (Rig& r, double* out, const double* in)
              {
                  blockCopy (out, r.second.data(), 256);
                  r.powerFollower.process (out, in, 256);
              } },
            { "pulse width", [] (Rig& r, double* out, const double* in)
              { r.pulseWidth.process (out, in, 256, in[0], in[1], in[2], in[3]); } },
            { "looper",
              [] (Rig& r, double* out, const double* in) {
                  r.looper.process (out, r.second.data(), 256, { in[0], in[1], in[2], in[3] });
              } },
            { "distorter",
              [] (Rig& r, double* out, const double* in) { r.distorter.process (out, in, 256, in[0], in[1]); } },
            { "smoother", [] (Rig& r, double* out, const double* in) { r.smoother.process (out, in, 256); } },
            { "surround mixer",
              [] (Rig& r, double* out, const double* in)
              {
                  Block other {};
                  double* const channels[] { out, other.data() };
                  blockClear (out, 256);
                  MVSurroundMixer::instance().mix (channels, 2, r.second.data(), in, in, in, 256, in[0], 0.5, 0.5, 0.5);
              } },
        };
        return all;
    }
};

std::vector<Block> hostileBlocks()
{
    test::TestRandom random (4);
    const double values[] { nan, infinity, -infinity, 1.0e308, -1.0e308, 1.0e-320, 0.0, -1.0, 1.0, 3.0e9 };
    std::vector<Block> blocks;
    for (const double value : values)
        blocks.emplace_back().fill (value);
    for (int i = 0; i < 20; ++i)
        for (double& value : blocks.emplace_back())
            value = values[random.below (std::size (values))];
    return blocks;
}

/** Buffers of six channels, and what mixing into them gave. */
std::vector<Values> mix (int channelCount, const Values& signal, const Values& pan, double panStart, double panEnd,
                         double gainStart, double gainEnd)
{
    std::vector<Values> buffers (8, Values (signal.size(), 0.0));
    std::vector<double*> channels;
    for (Values& buffer : buffers)
        channels.push_back (buffer.data());
    MVSurroundMixer::instance().mix (channels.data(), channelCount, signal.data(), pan.data(), nullptr, nullptr,
                                     static_cast<int> (signal.size()), panStart, panEnd, gainStart, gainEnd);
    return buffers;
}

} // namespace

TEST (EveryProcessor, isFiniteAgainSoonAfterHostileBlocks)
{
    Block calm, out;
    calm.fill (0.25);

    for (const Rig::Row& row : Rig::rows())
        for (const Block& hostile : hostileBlocks())
        {
            Rig rig;
            for (int i = 0; i < 3; ++i)
            {
                out = hostile; // in place, where that is allowed, is the harder case elsewhere
                row.process (rig, out.data(), hostile.data());
            }
            // One block to recover in, then the one that counts.
            row.process (rig, out.data(), calm.data());
            out.fill (nan);
            row.process (rig, out.data(), calm.data());
            for (const double value : out)
                ASSERT_TRUE (std::isfinite (value)) << row.name << " after " << hostile[0];
        }
}

TEST (EveryProcessor, touchesNoHeap)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();
    Block in, out {};
    in.fill (0.7);
    for (const Rig::Row& row : Rig::rows())
    {
        Rig rig;
        const test::AllocationWatch watch;
        for (int i = 0; i < 8; ++i)
            row.process (rig, out.data(), in.data());
        EXPECT_EQ (watch.count(), 0) << row.name;
    }
}

TEST (BlockMath, rampsStopOneStepBeforeTheirEnd)
{
    const Values in { 1.0, 2.0, 4.0, 8.0 };
    const auto with = [&] (auto&& operation, Values buffer)
    {
        operation (buffer.data());
        return buffer;
    };

    EXPECT_EQ (with ([] (double* b) { rampFill (b, 4, 1.0, 3.0); }, Values (4)), (Values { 1.0, 1.5, 2.0, 2.5 }));
    EXPECT_EQ (with ([&] (double* b) { rampCopy (b, in.data(), 4, 1.0, 3.0); }, Values (4)), (Values { 1, 3, 8, 20 }));
    EXPECT_EQ (with ([&] (double* b) { rampMix (b, in.data(), 4, 1.0, 3.0); }, Values (4, 1.0)),
               (Values { 2, 4, 9, 21 }));
    EXPECT_EQ (with ([] (double* b) { rampMultiply (b, 4, 1.0, 3.0); }, in), (Values { 1, 3, 8, 20 }));
    EXPECT_EQ (with ([&] (double* b) { rampProduct (b, in.data(), 4, 1.0, 3.0); }, Values (4, 2.0)),
               (Values { 2, 6, 16, 40 }));
    EXPECT_EQ (with ([&] (double* b) { blockAdd (b, in.data(), 4); }, Values (4, 1.0)), (Values { 2, 3, 5, 9 }));
    EXPECT_EQ (with ([&] (double* b) { blockMultiply (b, in.data(), 4); }, Values (4, 3.0)), (Values { 3, 6, 12, 24 }));
    EXPECT_EQ (with (
                   [] (double* b)
                   {
                       rampFill (b, 0, 1.0, 3.0);
                       blockFill (b, -1, 9.0);
                       blockClear (b, 0);
                   },
                   in),
               in);
}

TEST (BlockMath, constantMeansEverySampleIsTheFirst)
{
    for (const int frames : { 1, 2, 7, 64, 256 })
    {
        Values block (static_cast<std::size_t> (frames), -0.5);
        EXPECT_TRUE (blockIsConstant (block.data(), frames));
        for (std::size_t i = 0; i < block.size() && frames > 1; ++i)
        {
            block[i] = -0.25;
            EXPECT_FALSE (blockIsConstant (block.data(), frames)) << i << " of " << frames;
            block[i] = -0.5;
        }
    }

    const Values zeros { 0.0, -0.0, 0.0 };
    const Values unusual { nan, nan };
    EXPECT_TRUE (blockIsConstant (zeros.data(), 3));
    EXPECT_TRUE (blockIsConstant (zeros.data(), 0));
    EXPECT_FALSE (blockIsConstant (unusual.data(), 2));
    EXPECT_FALSE (blockIsConstant (unusual.data(), 1));
}

TEST (BlockMath, peakAndLevel)
{
    for (const int frames : { 1, 3, 4, 7, 64 })
        for (int loudest = 0; loudest < frames; ++loudest)
        {
            Values block (static_cast<std::size_t> (frames), 0.5);
            block[static_cast<std::size_t> (loudest)] = -2.0;
            EXPECT_EQ (blockPeak (block.data(), frames), 2.0);
            EXPECT_DOUBLE_EQ (blockPower (block.data(), frames), 4.0 + 0.25 * (frames - 1));
            EXPECT_DOUBLE_EQ (blockRms (block.data(), frames), std::sqrt ((4.0 + 0.25 * (frames - 1)) / frames));
        }

    const Values unusual { nan, -1.0, nan, nan, nan };
    EXPECT_EQ (blockPeak (unusual.data(), 5), 1.0);
    EXPECT_EQ (blockPeak (unusual.data(), 0), 0.0);
    EXPECT_EQ (blockRms (unusual.data(), 0), 0.0);
}

TEST (BlockMath, powersMatchTheLibraryFunction)
{
    test::TestRandom random (6);
    Values source {
        0.0, 1.0, 5.0e-324, 1.0e-310, 0.5, std::nextafter (1.0, 0.0), std::sqrt (0.5), 2.2250738585072014e-308
    };
    while (source.size() < 1000)
        source.push_back (random.chance (0.2) ? std::exp2 (-1000.0 * random.uniform()) : random.uniform());

    for (const double exponent :
         { 1.0, 0.5, 0.125, 0.825, 2.0, 8.0, 10.0, -10.0, 333.3, 0.0, 1.0e-9, infinity, -infinity })
    {
        Values out = source;
        powBlock (out.data(), out.data(), static_cast<int> (out.size()), exponent);
        for (std::size_t i = 0; i < out.size(); ++i)
        {
            const double expected = std::pow (source[i], exponent);
            if (std::isfinite (expected))
                ASSERT_NEAR (out[i], expected, std::abs (expected) * 1.0e-12) << source[i] << " ^ " << exponent;
            else
                ASSERT_EQ (out[i], expected) << source[i] << " ^ " << exponent;
        }
    }

    double outside[] { nan, -0.5, 2.0, infinity };
    powBlock (outside, outside, 4, 2.0);
    EXPECT_TRUE (std::isnan (outside[0]));
    EXPECT_EQ (outside[1], 0.25);
    EXPECT_EQ (outside[2], 4.0);
    EXPECT_EQ (outside[3], infinity);
}

TEST (SurroundMixer, panIsConstantPower)
{
    const Values signal (5, 2.0);
    const auto channels = mix (2, signal, { 0.0, 0.25, 0.5, 0.75, 1.0 }, 1.0, 1.0, 0.5, 0.5);
    for (std::size_t i = 0; i < signal.size(); ++i)
    {
        const double p = static_cast<double> (i) / 4.0;
        // The last entry, read for a share of 1, lies one step below it.
        EXPECT_NEAR (channels[0][i], std::sqrt (1.0 - p), 2.0e-4);
        EXPECT_NEAR (channels[1][i], std::sqrt (p), 2.0e-4);
        EXPECT_NEAR (channels[0][i] * channels[0][i] + channels[1][i] * channels[1][i], 1.0, 3.0e-4);
    }
    EXPECT_EQ (channels[0][0], std::sqrt (4095.0 / 4096.0));
}

TEST (SurroundMixer, indicesOutsideTheTableReadItsEnds)
{
    const double top = std::sqrt (4095.0 / 4096.0);
    const auto channels = mix (2, Values (5, 1.0), { -3.0, 7.0, nan, infinity, -0.5 }, 1.0, 1.0, 1.0, 1.0);
    EXPECT_EQ (channels[0], (Values { top, top, 0.0, top, top }));
    EXPECT_EQ (channels[1], (Values { top, top, 0.0, top, std::sqrt (0.5) }));
}

TEST (SurroundMixer, panAndGainRamp)
{
    // Pan 0, 0.25, 0.5, 0.75 under gain 1, 2, 3, 4.
    const auto channels = mix (2, Values (4, 1.0), Values (4, 1.0), 0.0, 1.0, 1.0, 5.0);
    for (std::size_t i = 1; i < 4; ++i)
    {
        const double p = static_cast<double> (i) / 4.0;
        const double gain = 1.0 + static_cast<double> (i);
        EXPECT_DOUBLE_EQ (channels[0][i], std::sqrt (1.0 - p) * gain);
        EXPECT_DOUBLE_EQ (channels[1][i], std::sqrt (p) * gain);
    }
}

TEST (SurroundMixer, aSteadyPanSoundsBitForBitAsOneLookedUpPerSample)
{
    test::TestRandom random (8);
    Values signal (256);
    for (double& sample : signal)
        sample = random.between (-1.0, 1.0);

    for (const double position : { 0.0, -0.0, 0.25, 0.3, 1.0, -0.5, 7.0, 1.0e-320, infinity, nan })
        for (const double scale : { 1.0, -0.0, 0.7, -2.0, infinity })
        {
            const Values steady (256, position);
            Values moving = steady;
            moving.back() = 0.123; // one sample that differs, so that every one is looked up
            const auto fast = mix (2, signal, steady, scale, scale, 0.1, 0.9);
            const auto slow = mix (2, signal, moving, scale, scale, 0.1, 0.9);
            for (std::size_t channel = 0; channel < 2; ++channel)
                for (std::size_t i = 0; i < 255; ++i)
                    ASSERT_EQ (std::bit_cast<std::uint64_t> (fast[channel][i]),
                               std::bit_cast<std::uint64_t> (slow[channel][i]))
                        << position << " * " << scale << " at " << i;
        }
}

TEST (SurroundMixer, otherChannelCounts)
{
    struct Row
    {
        int channels;
        double pan;
        int left; ///< first of the pair, or -1 for none
        double place;
    };

    for (const Row row : { Row { 0, 0.5, -1, 0.0 }, Row { 3, 0.25, 0, 0.25 }, Row { 4, 0.25, 2, 0.25 },
                           Row { 6, 0.125, 0, 0.25 }, Row { 6, 0.75, 1, 0.5 }, Row { 7, 0.75, 1, 0.5 },
                           Row { 6, 2.125, 4, 0.25 }, Row { 6, -0.125, 4, -0.25 }, Row { 8, 2.5, 2, 0.5 } })
    {
        const auto channels = mix (row.channels, { 1.0 }, { row.pan }, 1.0, 1.0, 1.0, 1.0);
        for (int c = 0; c < 8; ++c)
        {
            const double share = c == row.left ? std::abs (1.0 - row.place) : std::abs (row.place);
            const bool sounds = row.left >= 0 && (c == row.left || c == row.left + 1);
            EXPECT_NEAR (channels[static_cast<std::size_t> (c)][0], sounds ? std::sqrt (std::min (share, 1.0)) : 0.0,
                         2.0e-4)
                << row.channels << " " << row.pan << " channel " << c;
        }
    }

    const auto mono = mix (1, { 1.0, 1.0 }, { 9.0, 9.0 }, 1.0, 1.0, 0.0, 1.0);
    EXPECT_EQ (mono[0], (Values { 0.0, 0.5 }));
}

} // namespace morvanelab
