// SPDX-License-Identifier: GPL-3.0-or-later
#include "SpectralTestSupport.h"
#include "dsp/MVFreqTweaker.h"
#include "dsp/MVPcmAnalyzer.h"
#include "dsp/MVSpectralMath.h"
#include "dsp/MVSpectrumAnalyzer.h"
#include "tests/support/AllocationWatch.h"
#include "tests/support/LockWatch.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

namespace morvanelab
{

namespace
{

using namespace test;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr int hop = MVFreqTweaker::hopSize;
constexpr int frameSize = MVFreqTweaker::fftSize;

/** An active tweaker, and what its analysis must see. */
struct Rig
{
    MVFreqTweaker tweaker;

    explicit Rig (int algorithm)
    {
        tweaker.init (true, 44100.0);
        tweaker.setAlgorithm (algorithm);
    }

    Values run (const Values& a, const Values& b, double control)
    {
        Values out (a.size(), nan);
        for (std::size_t i = 0; i < a.size(); i += hop)
            tweaker.process (out.data() + i, a.data() + i, b.data() + i, control);
        return out;
    }

    Values run (const Values& a, double second, double control) { return run (a, Values (a.size(), second), control); }
};

Values windowed (Values frame)
{
    applyWindow (frame.data(), frameSize);
    return frame;
}

Values spectrumOf (const Values& samples)
{
    Values spectrum = windowed (samples);
    forwardFft (spectrum.data(), hop);
    return spectrum;
}

/** The frame that a lone burst of one hop gives after the edit: silence, then the burst. */
Values burstFrame (const Values& burst)
{
    Values frame (frameSize, 0.0);
    std::copy (burst.begin(), burst.end(), frame.begin() + hop);
    return frame;
}

/** What the first hop of a new tweaker gives must be the lower half of this spectrum's frame. */
void expectEdit (int algorithm, const Values& a, const Values& b, double control, Values edit)
{
    SCOPED_TRACE (algorithm);
    inverseFft (edit.data(), hop);
    edit = windowed (edit);
    const double loudest = MVPcmAnalyzer::peak (edit.data(), frameSize);

    Rig rig (algorithm);
    expectNear (rig.run (a, b, control), { edit.begin(), edit.begin() + hop }, 1e-12 * loudest);
}

/** bin periods a frame. */
Values tone (int bin, int hops, double amplitude = 1.0)
{
    Values samples (static_cast<std::size_t> (hops * hop));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = amplitude * std::sin (2.0 * std::numbers::pi * bin * static_cast<double> (i) / frameSize);
    return samples;
}

/** Strongest of the lower bins of a frame of steady output. */
int toneOf (const Values& out)
{
    Values frame (out.end() - frameSize, out.end());
    frame = spectrumOf (frame);
    return MVSpectrumAnalyzer::instance().peakBin (frame.data(), hop);
}

Values hopsOf (const Values& in, std::size_t first, std::size_t count)
{
    return { in.begin() + static_cast<std::ptrdiff_t> (first * hop),
             in.begin() + static_cast<std::ptrdiff_t> ((first + count) * hop) };
}

TEST (FreqTweaker, identitiesGiveTheInputUnderTheSquaredWindow)
{
    const Values in = noise (4 * hop);
    const Values other = noise (4 * hop, 8);
    const Values window = windowed (Values (frameSize, 1.0));
    Values expected (4 * hop, 0.0);
    Values expectedOther = expected;
    for (std::size_t i = hop; i < expected.size(); ++i)
    {
        const double low = window[i % hop];
        const double high = window[i % hop + hop];
        expected[i] = in[i - hop] * (low * low + high * high);
        expectedOther[i] = other[i - hop] * (low * low + high * high);
    }

    expectNear (Rig (tweakStretched).run (in, other, 1.0), expected, 1e-13);
    expectNear (Rig (tweakWrapped).run (in, other, 0.0), expected, 1e-13);
    expectNear (Rig (tweakTwisted).run (in, 0.3, 0.0), expected, 1e-13);
    expectNear (Rig (tweakAttractor).run (in, 0.0, 0.7), expected, 1e-13);
    expectNear (Rig (tweakMorph).run (in, other, 0.0), expected, 1e-13);
    expectNear (Rig (tweakMorph).run (in, other, 1.0), expectedOther, 1e-13);
}

TEST (FreqTweaker, editsMatchTheirFormulas)
{
    const Values a = noise (hop);
    const Values b = noise (hop, 9);
    const Values spectrumA = spectrumOf (burstFrame (a));
    const Values spectrumB = spectrumOf (burstFrame (b));
    Values polarA = spectrumA;
    Values polarB = spectrumB;
    toPolar (hop, polarA.data());
    toPolar (hop, polarB.data());

    const auto fromBins = [] (auto&& binOf)
    {
        Values edit (frameSize);
        for (int k = 0; k < hop; ++k)
        {
            const std::complex<double> bin = binOf (k);
            edit[static_cast<std::size_t> (2 * k)] = bin.real();
            edit[static_cast<std::size_t> (2 * k + 1)] = bin.imag();
        }
        return edit;
    };
    const auto cartesian = [] (const Values& s, int k)
    { return std::complex<double> (s[static_cast<std::size_t> (2 * k)], s[static_cast<std::size_t> (2 * k + 1)]); };
    const auto magnitude = [] (const Values& s, int k) { return s[static_cast<std::size_t> (2 * k)]; };
    const auto phase = [] (const Values& s, int k) { return s[static_cast<std::size_t> (2 * k + 1)]; };
    using Complex = std::complex<double>;

    expectEdit (tweakConvolved, a, b, 0.0,
                fromBins ([&] (int k) { return cartesian (spectrumA, k) * cartesian (spectrumB, k); }));
    expectEdit (tweakSelfConvolved, a, b, 0.0,
                fromBins ([&] (int k) { return cartesian (spectrumA, k) * cartesian (spectrumA, k); }));
    expectEdit (tweakPhaseSwapped, a, b, 0.0,
                fromBins ([&] (int k) { return std::polar (magnitude (polarB, k), phase (polarA, k)); }));
    expectEdit (tweakMagSwapped, a, b, 0.0,
                fromBins ([&] (int k) { return std::polar (magnitude (polarA, k), phase (polarB, k)); }));
    for (const int n : { 0, 5, -256 })
        expectEdit (tweakShifted, a, b, n / 256.0,
                    fromBins (
                        [&] (int k)
                        {
                            const int source = k - n;
                            return source < 0 || source >= hop
                                       ? Complex()
                                       : std::polar (magnitude (polarA, source), phase (polarA, source));
                        }));
    expectEdit (tweakStretched, a, b, 2.0,
                fromBins (
                    [&] (int k)
                    {
                        const int next = std::min (k / 2 + k % 2, hop - 1);
                        const double top = k == 2 * hop - 1 ? 0.0 : 0.5;
                        return std::polar (0.5 * magnitude (polarA, k / 2) + top * magnitude (polarA, next),
                                           0.5 * phase (polarA, k / 2) + top * phase (polarA, next));
                    }));
    expectEdit (tweakReversed, a, b, 0.0,
                fromBins (
                    [&] (int k)
                    {
                        const int half = k / 256 * 256;
                        return cartesian (spectrumA, half + 255 - k % 256) * (1.0 - 0.98 * (k % 256) / 256.0);
                    }));
    Values wrapped = spectrumA;
    std::rotate (wrapped.begin(), wrapped.end() - 101, wrapped.end());
    expectEdit (tweakWrapped, a, b, 101.5 / 512.0, wrapped);
    expectEdit (tweakBlur, a, Values (hop, 0.0), 0.9,
                fromBins ([&] (int k) { return std::polar (magnitude (polarA, k), phase (polarA, k)); }));
}

/** Adds one bin, weighted, of one spectrum to another. */
void addBin (Values& out, int to, const Values& in, int from, double weight)
{
    for (const int part : { 0, 1 })
        out[static_cast<std::size_t> (2 * to + part)] += weight * in[static_cast<std::size_t> (2 * from + part)];
}

TEST (FreqTweaker, twistMirrorsNextToItsCentre)
{
    const Values a = noise (hop);
    const Values spectrum = spectrumOf (burstFrame (a));
    const struct
    {
        double centre, spread;
    } cases[] {
        { 50.2, 90.1 }, { 51.1, 255.0 }, { 10.2, 250.0 }, { 246.2, 254.0 }
    }; // the last two reach beyond an end

    for (const auto& c : cases)
    {
        Values edit (frameSize, 0.0);
        for (int k = 0; k < hop; ++k)
        {
            const int lower = k <= 256 ? k : hop - k;
            const double e = lower - c.centre;
            double source = lower;
            if (std::abs (e) < c.spread && lower < 256)
                source = std::abs (c.centre + e * (2.0 * std::abs (e) / c.spread - 1.0));
            const int from =
                static_cast<int> (std::floor ((source > 255.0 && k != 256 ? 510.0 - source : source) + 0.5));
            addBin (edit, k, spectrum, k <= 256 || from == 0 ? from : hop - from, (lower - from) % 2 == 0 ? 1.0 : -1.0);
        }
        expectEdit (tweakTwisted, a, Values (hop, c.centre / 255.0), c.spread / 255.0, edit);
    }
}

TEST (FreqTweaker, attractorAddsMovedBinsBetweenNeighbours)
{
    const Values a = noise (hop);
    const Values spectrum = spectrumOf (burstFrame (a));
    for (const double attraction : { 2.0, -1.5 })
    {
        const double centre = 100.0, r = std::pow (2.0, attraction);
        Values edit (frameSize, 0.0);
        addBin (edit, 256, spectrum, 256, 1.0);
        for (int k = 0; k < 256; ++k)
        {
            const double way = k < centre ? -centre : 255.0 - centre;
            const double position = centre + way * std::pow ((k - centre) / way, r);
            const int below = static_cast<int> (position);
            for (const int to : { below, below + 1 })
            {
                const double sign = (k - to) % 2 == 0 ? 1.0 : -1.0;
                const double weight = sign * (1.0 - std::abs (position - to));
                if (to > 255)
                    continue;
                addBin (edit, to, spectrum, k, weight);
                if (k > 0)
                    addBin (edit, to == 0 ? 0 : hop - to, spectrum, hop - k, weight);
            }
        }
        expectEdit (tweakAttractor, a, Values (hop, attraction), centre / 255.0, edit);
    }
}

TEST (FreqTweaker, morphMovesBinsWithTheirPeaks)
{
    const Values a = noise (hop), b = noise (hop, 4);
    Values spectra[] { spectrumOf (burstFrame (a)), spectrumOf (burstFrame (b)) };
    for (Values& spectrum : spectra)
    {
        toPolar (hop, spectrum.data());
        toCartesian (hop, spectrum.data());
    }

    const auto peakNear = [] (const Values& spectrum, int k)
    {
        const int first = std::max (0, k - 64), last = std::min (hop - 1, k + 64);
        return first
               + MVSpectrumAnalyzer::instance().peakBin (&spectrum[static_cast<std::size_t> (2 * first)],
                                                         2 * (last - first + 1));
    };

    const double balance = 0.3;
    Values edit (frameSize, 0.0);
    for (int k = 0; k < hop; ++k)
    {
        const int distance = peakNear (spectra[1], k / 2 * 2) - peakNear (spectra[0], k / 2 * 2);
        const int moved = static_cast<int> (std::lround (balance * distance));
        if (k + moved >= 0 && k + moved < hop)
            addBin (edit, k + moved, spectra[0], k, 1.0 - balance);
        if (k + moved - distance >= 0 && k + moved - distance < hop)
            addBin (edit, k + moved - distance, spectra[1], k, balance);
    }
    expectEdit (tweakMorph, a, b, balance, edit);
}

TEST (FreqTweaker, unknownAlgorithmIsStretched)
{
    const Values in = noise (2 * hop);
    for (const int value : { 0, 13, -1, std::numeric_limits<int>::min() })
        EXPECT_EQ (Rig (value).run (in, 0.0, 0.7), Rig (tweakStretched).run (in, 0.0, 0.7)) << value;
}

TEST (FreqTweaker, silenceStaysSilent)
{
    const Values loud = noise (4 * hop);
    const Values silent (4 * hop, 0.0);
    for (int algorithm = 1; algorithm <= tweakCount; ++algorithm)
        for (const double control : { -1.0, 0.0, 0.4, 1.0 })
            EXPECT_EQ (Rig (algorithm).run (silent, silent, control), silent) << algorithm;

    EXPECT_EQ (Rig (tweakPhaseSwapped).run (silent, loud, 0.0), silent);
    EXPECT_EQ (Rig (tweakPhaseSwapped).run (loud, silent, 0.0), silent);
    EXPECT_EQ (Rig (tweakConvolved).run (loud, silent, 0.0), silent);
}

TEST (FreqTweaker, tonesMoveAsTheControlsSay)
{
    const Values in = tone (40, 8);
    const double edge = 255.0;
    EXPECT_EQ (toneOf (in), 40);
    EXPECT_EQ (toneOf (Rig (tweakShifted).run (in, 0.0, 30.0 / 256.0)), 70);
    EXPECT_EQ (toneOf (Rig (tweakShifted).run (in, 0.0, -30.0 / 256.0)), 10);
    EXPECT_EQ (toneOf (Rig (tweakStretched).run (in, 0.0, 2.0)), 80);
    EXPECT_EQ (toneOf (Rig (tweakSelfConvolved).run (in, 0.0, 0.0)), 40);
    // An attraction of 1 squares the share of the way: (200 - 40) / 200 = 0.8 becomes 0.64.
    EXPECT_EQ (toneOf (Rig (tweakAttractor).run (in, 1.0, 200.0 / edge)), 72);
    // Driven away, the root: 0.8 becomes 0.894, a place between 21 and 22.
    EXPECT_NEAR (toneOf (Rig (tweakAttractor).run (in, -1.0, 200.0 / edge)), 21, 1);
    EXPECT_NEAR (toneOf (Rig (tweakMorph).run (in, tone (60, 8), 0.25)), 45, 1);
    EXPECT_NEAR (toneOf (Rig (tweakMorph).run (in, tone (60, 8), 0.75)), 55, 1);
}

TEST (FreqTweaker, convolvingMultipliesLevels)
{
    const Values quiet = Rig (tweakSelfConvolved).run (tone (40, 6), 0.0, 0.0);
    const Values loud = Rig (tweakSelfConvolved).run (tone (40, 6, 3.0), 0.0, 0.0);
    EXPECT_NEAR (sumOfSquares (loud) / sumOfSquares (quiet), 81.0, 1e-9);
}

TEST (FreqTweaker, attractionKeepsAllContent)
{
    // At full attraction all that is in the lower half meets next to its centre.
    Rig rig (tweakAttractor);
    const Values out = rig.run (tone (200, 6), 10.0, 64.0 / 255.0);
    EXPECT_EQ (toneOf (out), 64);
    EXPECT_GT (sumOfSquares (hopsOf (out, 3, 3)), 0.05 * sumOfSquares (tone (200, 3)));
}

TEST (FreqTweaker, blurPersistsAndFades)
{
    Values in = tone (40, 1);
    in.resize (40 * hop, 0.0);
    const auto energyAt = [] (const Values& out, std::size_t hopIndex)
    { return sumOfSquares (hopsOf (out, hopIndex, 1)); };

    const Values none = Rig (tweakBlur).run (in, 0.0, 0.0);
    const Values half = Rig (tweakBlur).run (in, 0.0, 0.5);
    const Values most = Rig (tweakBlur).run (in, 0.0, 0.95);
    EXPECT_EQ (energyAt (none, 5), 0.0);
    EXPECT_GT (energyAt (half, 4), 0.0);
    EXPECT_GT (energyAt (most, 20), 1e3 * energyAt (half, 20));
    EXPECT_LT (energyAt (most, 39), energyAt (most, 20));

    // The line begins anew when the algorithm is chosen again.
    Rig rig (tweakBlur);
    rig.run (tone (40, 4), 0.0, 1.0);
    rig.tweaker.setAlgorithm (tweakStretched);
    const Values silent (3 * hop, 0.0);
    rig.run (silent, 0.0, 1.0);
    rig.tweaker.setAlgorithm (tweakBlur);
    EXPECT_EQ (rig.run (silent, 0.0, 1.0), silent);
}

TEST (FreqTweaker, blurFollowsItsRecursion)
{
    const Values in = noise (2 * hop);
    Values first = burstFrame (hopsOf (in, 0, 1));
    Values line = spectrumOf (first);
    toPolar (hop, line.data());
    const double persistence = 0.6;
    const double rate = 0.8; // direction 0.6

    Values second = spectrumOf (in);
    toPolar (hop, second.data());
    double y = 0.0;
    for (std::size_t k = 0; k < hop; ++k)
        line[2 * k] = y += (line[2 * k] - y) * rate;
    y = 0.0;
    for (std::size_t k = hop; k-- > 0;)
    {
        y += (line[2 * k] - y) * (1.0 - rate);
        second[2 * k] += persistence * y;
    }
    toCartesian (hop, second.data());
    inverseFft (second.data(), hop);
    second = windowed (second);

    Rig rig (tweakBlur);
    const Values out = rig.run (in, 0.6, persistence);
    Values overlap = spectrumOf (first);
    toPolar (hop, overlap.data());
    toCartesian (hop, overlap.data());
    inverseFft (overlap.data(), hop);
    overlap = windowed (overlap);
    for (std::size_t i = 0; i < hop; ++i)
        ASSERT_NEAR (out[hop + i], overlap[hop + i] + second[i], 1e-12) << i;
}

TEST (FreqTweaker, algorithmChangesAtTheHeadOfAHopAndResetForgets)
{
    const Values in = noise (6 * hop);
    Rig rig (tweakMorph);
    EXPECT_TRUE (rig.tweaker.needsSecondInput());
    const Values fresh = rig.run (in, noise (6 * hop, 5), 0.4);
    rig.tweaker.setAlgorithm (tweakStretched);
    EXPECT_FALSE (rig.tweaker.needsSecondInput());
    rig.run (in, 0.0, 0.8);
    rig.tweaker.setAlgorithm (tweakMorph);
    rig.tweaker.reset();
    EXPECT_EQ (rig.run (in, noise (6 * hop, 5), 0.4), fresh);
}

TEST (FreqTweaker, inactiveIsSilentAndInPlaceIsTheSame)
{
    const Values in = noise (hop);
    Values out (hop, nan);
    MVFreqTweaker idle;
    idle.process (out.data(), in.data(), in.data(), 1.0);
    EXPECT_EQ (out, Values (hop, 0.0));

    for (const int algorithm : { tweakStretched, tweakConvolved })
    {
        Rig apart (algorithm), inPlace (algorithm);
        for (int i = 0; i < 3; ++i)
        {
            const Values expected = apart.run (in, in, 1.0);
            Values buffer = in;
            inPlace.tweaker.process (buffer.data(), buffer.data(), buffer.data(), 1.0);
            EXPECT_EQ (buffer, expected);
        }
    }
}

TEST (FreqTweaker, anyInputLeavesEveryOutputANumberAndSoundReturns)
{
    const Values good = tone (40, 4);
    const Values controls { 0.0,  -0.0, 1.0,    -1.0,  0.5, 16.0,     17.0,      -10.0,
                            11.0, 1e9,  -1e300, 1e300, nan, infinity, -infinity, 5e-324 };
    const Values samples { 1e-320, 1e-160, 1e100, 1e160, -1e300, 1.7e308, nan, infinity, -infinity };

    const auto allNumbers = [] (const Values& out)
    { return std::all_of (out.begin(), out.end(), [] (double value) { return std::isfinite (value); }); };

    for (int algorithm = 1; algorithm <= tweakCount; ++algorithm)
    {
        Rig rig (algorithm);
        for (const double control : controls)
            for (const double second : controls)
                ASSERT_TRUE (allNumbers (rig.run (good, second, control)))
                    << algorithm << ' ' << control << ' ' << second;

        for (const double sample : samples)
        {
            rig.tweaker.reset();
            Values bad = noise (2 * hop);
            for (std::size_t i = 0; i < bad.size(); i += 3)
                bad[i] *= sample;
            EXPECT_TRUE (allNumbers (rig.run (bad, bad, 0.4))) << algorithm << ' ' << sample;
            rig.run (good, good, 0.4);
            const Values after = rig.run (good, good, 0.4);
            EXPECT_TRUE (allNumbers (after));
            if (algorithm != tweakBlur || sample != 1e100) // which has every right to persist
            {
                EXPECT_GT (MVPcmAnalyzer::peak (after.data(), 4 * hop), 1e-3) << algorithm << ' ' << sample;
                EXPECT_LT (MVPcmAnalyzer::peak (after.data(), 4 * hop), 1e4) << algorithm << ' ' << sample;
            }
        }
    }
}

TEST (FreqTweaker, levelStaysBoundedOverManyHops)
{
    TestRandom random (3);
    for (int algorithm = 1; algorithm <= tweakCount; ++algorithm)
    {
        Rig rig (algorithm);
        double peak = 0.0;
        for (int i = 0; i < 300; ++i)
        {
            const Values out =
                rig.run (noise (hop, random.next()), noise (hop, random.next()), random.between (-2.0, 0.99));
            peak = std::max (peak, MVPcmAnalyzer::peak (out.data(), hop));
        }
        // A product of two spectra may reach the square of the frame's sum; nothing else adds up that far.
        EXPECT_LT (peak, algorithm == tweakConvolved || algorithm == tweakSelfConvolved ? 1e4 : 60.0) << algorithm;
    }
}

TEST (FreqTweaker, processTakesNoMemoryAndNoLock)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();
    MV_SKIP_WITHOUT_LOCK_WATCH();
    const Values in = noise (hop);
    Values out (hop);
    MVFreqTweaker tweaker;
    tweaker.init (true, 44100.0);
    const AllocationWatch heap;
    const LockWatch locks;
    for (int algorithm = 1; algorithm <= tweakCount; ++algorithm)
    {
        tweaker.setAlgorithm (algorithm);
        tweaker.process (out.data(), in.data(), in.data(), 0.3);
    }
    tweaker.reset();
    EXPECT_EQ (heap.count(), 0);
    EXPECT_EQ (locks.count(), 0);
}

} // namespace

} // namespace morvanelab
