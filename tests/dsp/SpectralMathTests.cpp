// SPDX-License-Identifier: GPL-3.0-or-later
#include "SpectralTestSupport.h"
#include "dsp/MVPcmAnalyzer.h"
#include "dsp/MVSpectralMath.h"
#include "dsp/MVSpectrumAnalyzer.h"
#include "dsp/MVWaveforms.h"

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

TEST (SpectralMath, forwardIsTheFourierSum)
{
    for (const int n : { 1, 2, 4, 8, 64, 512 })
    {
        const Values in = noise (2 * n);
        Values spectrum = in;
        forwardFft (spectrum.data(), n);

        for (int bin = 0; bin < n; bin += std::max (1, n / 16))
        {
            std::complex<double> sum;
            for (int i = 0; i < n; ++i)
                sum += std::complex<double> (in[static_cast<std::size_t> (2 * i)],
                                             in[static_cast<std::size_t> (2 * i + 1)])
                       * std::polar (1.0, -2.0 * std::numbers::pi * bin * i / n);
            // The single-precision angle is off by 2.8e-8.
            EXPECT_NEAR (spectrum[static_cast<std::size_t> (2 * bin)], sum.real(), 1e-6 * n);
            EXPECT_NEAR (spectrum[static_cast<std::size_t> (2 * bin + 1)], sum.imag(), 1e-6 * n);
        }
    }
}

TEST (SpectralMath, twiddlesComeFromTheSinglePrecisionAngle)
{
    // A unit impulse at point 1 transforms to the twiddles themselves.
    Values spectrum (2 * 512, 0.0);
    spectrum[2] = 1.0;
    forwardFft (spectrum.data(), 512);
    const double step = static_cast<double> (-6.2831855f / 512.0f);
    for (const int k : { 1, 100, 255 })
    {
        EXPECT_NEAR (spectrum[static_cast<std::size_t> (2 * k)], std::cos (k * step), 1e-15);
        EXPECT_NEAR (spectrum[static_cast<std::size_t> (2 * k + 1)], std::sin (k * step), 1e-15);
    }
}

TEST (SpectralMath, roundTripAndEnergyAreExactToRounding)
{
    for (int n = 1; n <= largestSpectrum; n *= 2)
    {
        const Values in = noise (2 * n);
        Values spectrum = in;
        forwardFft (spectrum.data(), n);
        EXPECT_NEAR (sumOfSquares (spectrum) / (n * sumOfSquares (in)), 1.0, 1e-13) << n;
        inverseFft (spectrum.data(), n);
        expectNear (spectrum, in, 1e-14);
    }
}

TEST (SpectralMath, otherSizesAreLeftAlone)
{
    for (const int n : { 0, -4, 3, 511, 2 * largestSpectrum })
    {
        const Values in = noise (16);
        Values buffer = in;
        if (n < 8)
        {
            forwardFft (buffer.data(), n);
            inverseFft (buffer.data(), n);
        }
        prepareSpectra (n);
        EXPECT_EQ (buffer, in) << n;
    }
}

TEST (SpectralMath, windowReadsTheSharedTable)
{
    const double* const table = MVWaveforms::instance().table (waveHanningPulse);
    for (const int n : { 1024, 256, 300 })
    {
        Values ones (static_cast<std::size_t> (n), 2.0);
        applyWindow (ones.data(), n);
        EXPECT_EQ (ones[0], 0.0);
        EXPECT_EQ (ones[static_cast<std::size_t> (n / 2)], 2.0 * table[16384]);
        EXPECT_EQ (ones[static_cast<std::size_t> (n - 1)], 2.0 * table[(n - 1) * 32768 / n]);
    }
}

TEST (SpectralMath, polarPhaseSpansHalfACircle)
{
    const double third = std::numbers::pi / 3.0;
    const double root = std::sqrt (3.0);
    const struct
    {
        double re, im, magnitude, phase, backRe, backIm;
    } cases[] {
        { 1.0, root, 2.0, third, 1.0, root },   { -1.0, root, 2.0, -third, 1.0, -root },
        { -1.0, -root, 2.0, third, 1.0, root }, { -3.0, 0.0, 3.0, 0.0, 3.0, 0.0 },
        { 0.0, -5.0, 5.0, 0.0, 5.0, 0.0 },      { 0.0, 0.0, 0.0, 0.0, 0.0, 0.0 },
    };
    for (const auto& c : cases)
    {
        double bin[] { c.re, c.im };
        toPolar (1, bin);
        EXPECT_DOUBLE_EQ (bin[0], c.magnitude);
        EXPECT_NEAR (bin[1], c.phase, 1e-15);
        toCartesian (1, bin);
        EXPECT_NEAR (bin[0], c.backRe, 1e-14);
        EXPECT_NEAR (bin[1], c.backIm, 1e-14);
    }
}

TEST (SpectralMath, sineStandsInItsBin)
{
    Values spectrum (256);
    for (std::size_t i = 0; i < 128; ++i)
    {
        const auto point = std::polar (0.5, 2.0 * std::numbers::pi * 9.0 * static_cast<double> (i) / 128.0);
        spectrum[2 * i] = point.real();
        spectrum[2 * i + 1] = point.imag();
    }
    forwardFft (spectrum.data(), 128);
    EXPECT_EQ (MVSpectrumAnalyzer::instance().peakBin (spectrum.data(), 256), 9);
    EXPECT_NEAR (std::hypot (spectrum[18], spectrum[19]), 64.0, 1e-4);
    EXPECT_NEAR (std::hypot (spectrum[20], spectrum[21]), 0.0, 1e-4);
}

// The analysers

TEST (SpectrumAnalyzer, lowestOfTheStrongestWins)
{
    auto& analyzer = MVSpectrumAnalyzer::instance();
    EXPECT_EQ (&analyzer, &MVSpectrumAnalyzer::instance());
    Values spectrum (16, 0.0);
    EXPECT_EQ (analyzer.peakBin (spectrum.data(), 16), -1);
    spectrum[5] = -3.0;
    spectrum[12] = 3.0;
    EXPECT_EQ (analyzer.peakBin (spectrum.data(), 16), 2);
    spectrum[13] = 0.1;
    EXPECT_EQ (analyzer.peakBin (spectrum.data(), 16), 6);
    EXPECT_EQ (analyzer.peakBin (spectrum.data(), 12), 2); // bin 6 lies beyond
    spectrum.assign (16, nan);
    EXPECT_EQ (analyzer.peakBin (spectrum.data(), 16), -1);
    EXPECT_EQ (analyzer.peakBin (spectrum.data(), 0), -1);
}

TEST (PcmAnalyzer, measuresBlocks)
{
    const Values block { 3.0, -4.0, 0.0, -0.5, -1.0, 0.0, 2.0 };
    const int n = static_cast<int> (block.size());
    EXPECT_EQ (MVPcmAnalyzer::peak (block.data(), n), 4.0);
    EXPECT_DOUBLE_EQ (MVPcmAnalyzer::rootMeanSquare (block.data(), 2), std::sqrt (12.5));
    EXPECT_EQ (MVPcmAnalyzer::zeroCrossings (block.data(), n), 4);
    EXPECT_EQ (MVPcmAnalyzer::zeroCrossings (block.data(), 1), 0);
    EXPECT_EQ (MVPcmAnalyzer::peak (block.data(), 0), 0.0);
    EXPECT_EQ (MVPcmAnalyzer::rootMeanSquare (block.data(), 0), 0.0);
    EXPECT_EQ (MVPcmAnalyzer::zeroCrossings (block.data(), 0), 0);
}

} // namespace

} // namespace morvanelab
