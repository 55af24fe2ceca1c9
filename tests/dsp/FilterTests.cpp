// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVBiquadFilter.h"
#include "dsp/MVDcFilter.h"
#include "dsp/MVSignalSmoother.h"
#include "dsp/MVWaveforms.h"
#include "tests/support/TestRandom.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <vector>

namespace morvanelab
{

namespace
{

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double tinyOutput = 0.0010000000474974513;
constexpr double pi = std::numbers::pi;
using Complex = std::complex<double>;

/** The filter's answer to a sine of hz, a multiple of 100, after the start has died away. */
Complex measuredResponse (MVBiquadFilter& filter, double hz, double rate)
{
    const int settle = static_cast<int> (rate / 2);
    const int window = static_cast<int> (rate / 100) * 10;
    std::vector<double> signal (static_cast<std::size_t> (settle + window));
    for (std::size_t i = 0; i < signal.size(); ++i)
        signal[i] = std::cos (2.0 * pi * hz * static_cast<double> (i) / rate);

    filter.process (signal.data(), signal.data(), static_cast<int> (signal.size()), false);

    Complex sum = 0.0;
    for (std::size_t i = static_cast<std::size_t> (settle); i < signal.size(); ++i)
        sum += signal[i] * std::polar (1.0, -2.0 * pi * hz * static_cast<double> (i) / rate);
    return sum * 2.0 / static_cast<double> (window);
}

/** The analogue prototype under the bilinear transform, which the recipes are derived from. */
Complex expectedResponse (std::int32_t type, double hz, double centre, double band, double rate)
{
    const double w0 = 2.0 * pi * centre / rate;
    const Complex s (0.0, std::tan (pi * hz / rate) / std::tan (w0 / 2.0));
    const bool inOctaves = type == filterBandpass || type == filterNotch;
    const double q = inOctaves ? 1.0 / (2.0 * std::sinh (std::log (2.0) / 2.0 * band * w0 / std::sin (w0))) : band;
    const Complex denominator = s * s + s / q + 1.0;

    switch (type)
    {
        case filterLowpass:
            return 1.0 / denominator;
        case filterHighpass:
            return s * s / denominator;
        case filterBandpass:
            return s / q / denominator;
        case filterNotch:
            return (s * s + 1.0) / denominator;
        default:
            return (s * s - s / q + 1.0) / denominator;
    }
}

/** The filter sample by sample as it is defined, without any shortcut. */
struct PlainBiquad
{
    MVBiquadFilter::Coefficients c;
    double z1 = 0.0, z2 = 0.0;

    double next (double x, const MVBiquadFilter::Coefficients& goal, double rate)
    {
        const double y = x * c.b0 + z1;
        z1 = x * c.b1 - y * c.a1 + z2;
        z2 = c.b2 * x - y * c.a2;
        c.a1 += (goal.a1 - c.a1) * rate;
        c.a2 += (goal.a2 - c.a2) * rate;
        c.b0 += (goal.b0 - c.b0) * rate;
        c.b1 += (goal.b1 - c.b1) * rate;
        c.b2 += (goal.b2 - c.b2) * rate;
        return y;
    }
};

std::vector<double> noise (int count, std::uint64_t seed)
{
    test::TestRandom random (seed);
    std::vector<double> values (static_cast<std::size_t> (count));
    for (double& value : values)
        value = random.between (-1.0, 1.0);
    return values;
}

double rms (const std::vector<double>& values)
{
    double sum = 0.0;
    for (const double value : values)
        sum += value * value;
    return std::sqrt (sum / static_cast<double> (values.size()));
}

} // namespace

TEST (BiquadFilter, respondsLikeItsAnaloguePrototype)
{
    struct Row
    {
        std::int32_t type;
        double band;
    };

    for (const Row row : { Row { filterLowpass, 0.7 }, Row { filterLowpass, 4.0 }, Row { filterHighpass, 0.7 },
                           Row { filterBandpass, 1.0 }, Row { filterBandpass, 0.35 }, Row { filterNotch, 1.0 },
                           Row { filterAllpass, 0.7 } })
        for (const double rate : { 44100.0, 48000.0, 96000.0 })
            for (const double hz : { 500.0, 2000.0, 8000.0 })
            {
                MVBiquadFilter filter;
                filter.init (true, rate);
                filter.setFilterType (row.type);
                filter.setBandwidth (row.band);
                filter.setFrequency (700.0);
                double warmUp = 1.0;
                filter.process (&warmUp, &warmUp, 1, false);

                // The coefficients glide here from 700 Hz, under the smoothing of init.
                filter.setFrequency (2000.0);
                const Complex measured = measuredResponse (filter, hz, rate);
                const Complex expected = expectedResponse (row.type, hz, 2000.0, row.band, rate);
                EXPECT_LT (std::abs (measured - expected), 1.0e-5)
                    << "type " << row.type << " band " << row.band << " rate " << rate << " hz " << hz;
            }
}

TEST (BiquadFilter, knownGainsInDecibels)
{
    struct Row
    {
        std::int32_t type;
        double band, hz, decibels;
    };

    // A corner has the gain Q, a centre 0 dB; an octave below the corner a gentle low-pass has lost 0.26 dB, and two
    // octaves above it about 24.4 dB (warped from 24.1 by the bilinear transform).
    for (const Row row :
         { Row { filterLowpass, 0.70710678, 1000.0, -3.0103 }, Row { filterLowpass, 2.0, 1000.0, 6.0206 },
           Row { filterLowpass, 0.70710678, 500.0, -0.262 }, Row { filterLowpass, 0.70710678, 4000.0, -24.4 },
           Row { filterHighpass, 0.70710678, 1000.0, -3.0103 }, Row { filterBandpass, 1.0, 1000.0, 0.0 },
           Row { filterAllpass, 2.0, 3000.0, 0.0 } })
    {
        MVBiquadFilter filter;
        filter.init (true, 48000.0);
        filter.setFilterType (row.type);
        filter.setBandwidth (row.band);
        filter.setFrequency (1000.0);
        const double gain = std::abs (measuredResponse (filter, row.hz, 48000.0));
        EXPECT_NEAR (20.0 * std::log10 (gain), row.decibels, 0.1) << "type " << row.type << " hz " << row.hz;
    }
}

TEST (BiquadFilter, startsAtOnceAndGlidesLater)
{
    MVBiquadFilter filter;
    filter.init (true, 48000.0);
    filter.setSmoothing (0.25);
    filter.setFrequency (1000.0);

    std::vector<double> block (8, 0.5);
    filter.process (block.data(), block.data(), 8, false);
    const auto first = filter.getCurrent();
    EXPECT_EQ (first.a1, filter.getTarget().a1);

    filter.setFrequency (4000.0);
    filter.process (block.data(), block.data(), 8, false);
    const auto goal = filter.getTarget();
    const double left = std::pow (0.75, 8.0);
    EXPECT_NE (goal.a1, first.a1);
    EXPECT_NEAR (filter.getCurrent().a1, goal.a1 + (first.a1 - goal.a1) * left, 1.0e-12);
    EXPECT_NEAR (filter.getCurrent().b2, goal.b2 + (first.b2 - goal.b2) * left, 1.0e-12);

    filter.reset();
    filter.process (block.data(), block.data(), 8, false);
    EXPECT_EQ (filter.getCurrent().a1, filter.getTarget().a1);
}

TEST (BiquadFilter, shortcutsKeepEveryBit)
{
    // Stretches that stand still, glide slowly and glide fast; an idle quaver must not show.
    MVBiquadFilter filter;
    filter.init (true, 44100.0);
    filter.setQuaver (0.0, 7.0);
    PlainBiquad plain;
    const std::vector<double> in = noise (256, 5);
    std::vector<double> out (256);

    for (int block = 0; block < 60; ++block)
    {
        const double rate = block < 20 ? 0.3 : (block < 40 ? 0.02 : 1.0 / 44100.0);
        filter.setSmoothing (rate);
        if (block % 10 == 5)
            filter.setFrequency (300.0 * block);

        filter.process (out.data(), in.data(), 256, false);
        if (block == 0)
            plain.c = filter.getTarget();
        for (std::size_t i = 0; i < in.size(); ++i)
            ASSERT_EQ (out[i], plain.next (in[i], filter.getTarget(), rate)) << "block " << block << " sample " << i;
    }
}

TEST (BiquadFilter, replacesUnusableSettings)
{
    struct Row
    {
        double given, frequency, bandwidth;
    };

    for (const Row row : { Row { 0.0, 16.0, 0.0010000000474974513 }, Row { nan, 16.0, 0.0010000000474974513 },
                           Row { -5.0, 16.0, 0.0010000000474974513 }, Row { 1.0e-16, 16.0, 0.0010000000474974513 },
                           Row { 15.9, 16.0, 15.9 }, Row { 22051.0, 22050.0, 32.0 }, Row { infinity, 22050.0, 32.0 } })
    {
        MVBiquadFilter filter;
        filter.init (true, 44100.0);
        filter.setFrequency (row.given);
        filter.setBandwidth (row.given);
        EXPECT_EQ (filter.getFrequency(), row.frequency) << row.given;
        EXPECT_EQ (filter.getBandwidth(), row.bandwidth) << row.given;
    }
}

TEST (BiquadFilter, limitsTheAngleAndTheUsedBandwidth)
{
    struct Row
    {
        double frequency, angle;
    };

    for (const Row row : { Row { 0.0, 0.015707964077591896 }, Row { 24000.0, 1.533097267150879 } })
    {
        MVBiquadFilter filter;
        filter.init (true, 48000.0);
        filter.setFilterType (filterLowpass);
        filter.setFrequency (row.frequency);
        filter.setBandwidth (20.0);
        double sample = 1.0;
        filter.process (&sample, &sample, 1, false);

        EXPECT_EQ (filter.getBandwidth(), 4.0);
        const double alpha = std::sin (row.angle) / 8.0;
        EXPECT_NEAR (filter.getTarget().a1, -2.0 * std::cos (row.angle) / (1.0 + alpha), 1.0e-12);
        EXPECT_NEAR (filter.getTarget().a2, (1.0 - alpha) / (1.0 + alpha), 1.0e-12);
    }
}

TEST (BiquadFilter, emitsSmallValueWhileBlownUpAndThenRecovers)
{
    for (const double bad : { nan, infinity, -infinity })
    {
        MVBiquadFilter filter;
        filter.init (true, 48000.0);
        std::vector<double> block = noise (64, 3);
        block[10] = bad;
        filter.process (block.data(), block.data(), 64, true);
        for (std::size_t i = 11; i < block.size(); ++i)
            EXPECT_EQ (block[i], tinyOutput);

        std::vector<double> after = noise (64, 4);
        std::vector<double> fresh = after;
        filter.process (after.data(), after.data(), 64, true);
        MVBiquadFilter other;
        other.init (true, 48000.0);
        other.process (fresh.data(), fresh.data(), 64, true);
        EXPECT_EQ (after, fresh);
    }
}

TEST (BiquadFilter, raisesTheFaintestOutputs)
{
    MVBiquadFilter filter;
    filter.init (true, 48000.0);
    double samples[] { 0.0, 1.0e-18, 0.0 };
    filter.process (samples, samples, 3, false);
    EXPECT_EQ (samples[0], 0.0);
    EXPECT_EQ (samples[1], tinyOutput);
    EXPECT_EQ (samples[2], tinyOutput);
}

TEST (BiquadFilter, gainOptionFollowsTheInputOneBlockLate)
{
    MVBiquadFilter followed, plain;
    for (MVBiquadFilter* filter : { &followed, &plain })
    {
        filter->init (true, 48000.0);
        filter->setFilterType (filterLowpass);
        filter->setBandwidth (4.0);
        filter->setFrequency (1000.0);
    }

    std::vector<double> in (480);
    for (std::size_t i = 0; i < in.size(); ++i)
        in[i] = std::sin (2.0 * pi * static_cast<double> (i) / 48.0);
    std::vector<double> out (480), reference (480);
    double lastRatio = 1.0;

    for (int block = 0; block < 40; ++block)
    {
        followed.process (out.data(), in.data(), 480, true);
        plain.process (reference.data(), in.data(), 480, false);
        // The gain starts where the block before last put it and moves to what the last block found.
        EXPECT_NEAR (out[479], reference[479] * lastRatio, 0.02);
        lastRatio = std::min (1.0, rms (in) / rms (reference));
    }

    EXPECT_NEAR (rms (out), rms (in), 1.0e-6);
    EXPECT_NEAR (rms (reference), 4.0 * rms (in), 1.0e-3);
}

TEST (BiquadFilter, gainOptionNeverAmplifies)
{
    MVBiquadFilter followed, plain;
    for (MVBiquadFilter* filter : { &followed, &plain })
    {
        filter->init (true, 48000.0);
        filter->setFrequency (10000.0);
    }

    // A band-pass far from its centre, then silence: the ratio of two sums of 0 counts as 1.
    std::vector<double> in (256), out (256), reference (256);
    for (int block = 0; block < 8; ++block)
    {
        for (std::size_t i = 0; i < in.size(); ++i)
            in[i] = block < 4 ? std::sin (0.01 * static_cast<double> (i)) : 0.0;
        if (block == 4)
        {
            followed.reset();
            plain.reset();
        }
        followed.process (out.data(), in.data(), 256, true);
        plain.process (reference.data(), in.data(), 256, false);
        EXPECT_EQ (out, reference) << block;
    }
}

TEST (BiquadFilter, quaverPushesTheNumerator)
{
    // A quarter of the sine table a sample: 0, 1, about 0, -1.
    MVBiquadFilter filter;
    filter.init (true, 240.0);
    filter.setFrequency (30.0);
    filter.setSmoothing (1.0);
    filter.setQuaver (0.5, 60.0);
    const double push = 0.5 * 0.02500000037252903;
    double samples[2] { 1.0, 1.0 };

    filter.process (samples, samples, 2, false);
    EXPECT_NEAR (filter.getCurrent().b0 / filter.getTarget().b0, 1.0 + push, 1.0e-9);
    EXPECT_EQ (filter.getCurrent().a1, filter.getTarget().a1);
    filter.process (samples, samples, 2, false);
    EXPECT_NEAR (filter.getCurrent().b2 / filter.getTarget().b2, 1.0 - push, 1.0e-9);

    // The push feeds back into the value that glides: without a glide home it accumulates.
    filter.setSmoothing (0.0);
    filter.process (samples, samples, 2, false);
    filter.process (samples, samples, 2, false);
    EXPECT_NEAR (filter.getCurrent().b0 / filter.getTarget().b0, (1.0 - push) * (1.0 + push) * (1.0 - push), 1.0e-6);
}

TEST (BiquadFilter, soundReturnsAfterRunawayQuaver)
{
    MVBiquadFilter filter;
    filter.init (true, 44100.0);
    filter.setSmoothing (0.0);
    filter.setQuaver (1.0, 0.01);
    std::vector<double> block (256);
    for (int i = 0; i < 1000; ++i)
    {
        std::fill (block.begin(), block.end(), 0.5);
        filter.process (block.data(), block.data(), 256, false);
    }

    filter.setQuaver();
    filter.setSmoothing (1.0);
    // Long enough for what was finite, but enormous, to ring out.
    for (int i = 0; i < 400; ++i)
    {
        block = noise (256, 1);
        filter.process (block.data(), block.data(), 256, false);
    }
    EXPECT_GT (rms (block), 0.01);
    EXPECT_LT (rms (block), 1.0);
}

TEST (DcFilter, stepDecaysWithThePole)
{
    MVDcFilter filter;
    std::vector<double> block (1000, 2.0);
    filter.process (block.data(), 1000);
    for (const int n : { 0, 1, 10, 999 })
        EXPECT_NEAR (block[static_cast<std::size_t> (n)], 2.0 * std::pow (0.9950000047683716, n + 1), 1.0e-12);
}

TEST (DcFilter, recoversWithTheNextBlock)
{
    for (const double bad : { infinity, nan })
    {
        MVDcFilter filter;
        std::vector<double> block { 0.5, bad, 0.5 };
        filter.process (block.data(), 3);
        double step[] { 1.0, 1.0 };
        filter.setPole (0.5);
        filter.process (step, 2);
        EXPECT_EQ (step[0], 0.5);
        EXPECT_EQ (step[1], 0.25);
    }
}

TEST (SignalSmoother, approachesExponentially)
{
    MVSignalSmoother smoother;
    smoother.setRate (0.1);
    std::vector<double> out (50, 1.0);
    smoother.processInPlace (out.data(), 50);
    for (std::size_t n = 0; n < out.size(); ++n)
        EXPECT_NEAR (out[n], 1.0 - std::pow (0.9, static_cast<double> (n + 1)), 1.0e-12);

    smoother.reset();
    smoother.setRate (1.0);
    double bad[] { 0.25, nan };
    double through[2];
    smoother.process (through, bad, 2);
    EXPECT_EQ (through[0], 0.25);
    smoother.setRate (0.5);
    double good = 1.0;
    smoother.processInPlace (&good, 1);
    EXPECT_EQ (good, 0.5);
}

} // namespace morvanelab
