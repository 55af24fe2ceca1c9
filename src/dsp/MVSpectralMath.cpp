// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVSpectralMath.h"

#include "dsp/MVWaveforms.h"

#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace morvanelab
{

namespace
{

constexpr int sizeCount = std::countr_zero (static_cast<unsigned> (largestSpectrum)) + 1;
static_assert (largestSpectrum == 1 << (sizeCount - 1));

bool isSpectrumSize (int n) { return n > 0 && n <= largestSpectrum && std::has_single_bit (static_cast<unsigned> (n)); }

/** Everything that is constant about one size. */
struct SpectralTables
{
    explicit SpectralTables (int n);

    /** Stage by stage: s / 2 twiddles of the stage of s points begin at index s / 2 - 1. */
    std::vector<double> cosines, sines;
    /** For every point the one whose index has the same bits in reverse order. */
    std::vector<std::uint16_t> reversed;
};

SpectralTables::SpectralTables (int n) : reversed (static_cast<std::size_t> (n))
{
    for (int stage = 2; stage <= n; stage *= 2)
    {
        const float step = -6.2831855f / static_cast<float> (stage);
        for (int k = 0; k < stage / 2; ++k)
        {
            const double angle = k * static_cast<double> (step);
            cosines.push_back (std::cos (angle));
            sines.push_back (std::sin (angle));
        }
    }

    for (std::size_t i = 1; i < reversed.size(); ++i)
        reversed[i] = static_cast<std::uint16_t> ((reversed[i / 2] + (i % 2) * reversed.size()) / 2);
}

const double* windowTable()
{
    static const double* const table = MVWaveforms::instance().table (waveHanningPulse);
    return table;
}

std::array<std::atomic<const SpectralTables*>, sizeCount> builtTables {};

/** The tables of a size that has some. */
const SpectralTables& tablesOf (int n)
{
    auto& built = builtTables[static_cast<std::size_t> (std::countr_zero (static_cast<unsigned> (n)))];
    if (const SpectralTables* const tables = built.load (std::memory_order_acquire))
        return *tables;

    static std::mutex lock;
    static std::array<std::unique_ptr<const SpectralTables>, sizeCount> owned;
    const std::lock_guard guard (lock);
    auto& own = owned[static_cast<std::size_t> (&built - builtTables.data())];
    if (own == nullptr)
        own = std::make_unique<const SpectralTables> (n);
    built.store (own.get(), std::memory_order_release);
    return *own;
}

/** Real and imaginary parts apart, so that compilers work on several points at a time. */
struct SplitSpectrum
{
    explicit SplitSpectrum (int n) : count (static_cast<std::size_t> (n)) {}

    std::size_t count;
    // Not initialised, which would cost more than a small transform: the first loop writes all that is used.
    std::array<double, largestSpectrum> re;
    std::array<double, largestSpectrum> im;
};

/** One stage of forwardFft over groups of 2 * half points. */
void forwardStage (double* re, double* im, std::size_t count, std::size_t half, const double* cosines,
                   const double* sines)
{
    for (std::size_t group = 0; group < count; group += 2 * half)
    {
        double* const re0 = re + group;
        double* const im0 = im + group;
        double* const re1 = re0 + half;
        double* const im1 = im0 + half;

        for (std::size_t k = 0; k < half; ++k)
        {
            const double turnedRe = re1[k] * cosines[k] - im1[k] * sines[k];
            const double turnedIm = re1[k] * sines[k] + im1[k] * cosines[k];
            re1[k] = re0[k] - turnedRe;
            im1[k] = im0[k] - turnedIm;
            re0[k] += turnedRe;
            im0[k] += turnedIm;
        }
    }
}

/** Takes a forwardStage back, up to a factor of 2. */
void inverseStage (double* re, double* im, std::size_t count, std::size_t half, const double* cosines,
                   const double* sines)
{
    for (std::size_t group = 0; group < count; group += 2 * half)
    {
        double* const re0 = re + group;
        double* const im0 = im + group;
        double* const re1 = re0 + half;
        double* const im1 = im0 + half;

        for (std::size_t k = 0; k < half; ++k)
        {
            const double differenceRe = re0[k] - re1[k];
            const double differenceIm = im0[k] - im1[k];
            re0[k] += re1[k];
            im0[k] += im1[k];
            re1[k] = differenceRe * cosines[k] + differenceIm * sines[k];
            im1[k] = differenceIm * cosines[k] - differenceRe * sines[k];
        }
    }
}

} // namespace

void prepareSpectra (int n)
{
    windowTable();
    if (isSpectrumSize (n))
        tablesOf (n);
}

void applyWindow (double* buffer, int n)
{
    const double* const table = windowTable();
    for (std::int64_t i = 0; i < n; ++i)
        buffer[i] *= table[i * MVWaveforms::tableSize / n];
}

void forwardFft (double* buffer, int n)
{
    if (! isSpectrumSize (n))
        return;

    const SpectralTables& tables = tablesOf (n);
    SplitSpectrum work (n);

    for (std::size_t i = 0; i < work.count; ++i)
    {
        const std::size_t source = 2 * std::size_t { tables.reversed[i] };
        work.re[i] = buffer[source];
        work.im[i] = buffer[source + 1];
    }

    for (std::size_t half = 1; half < work.count; half *= 2)
        forwardStage (work.re.data(), work.im.data(), work.count, half, &tables.cosines[half - 1],
                      &tables.sines[half - 1]);

    for (std::size_t i = 0; i < work.count; ++i)
    {
        buffer[2 * i] = work.re[i];
        buffer[2 * i + 1] = work.im[i];
    }
}

void inverseFft (double* buffer, int n)
{
    if (! isSpectrumSize (n))
        return;

    const SpectralTables& tables = tablesOf (n);
    SplitSpectrum work (n);

    for (std::size_t i = 0; i < work.count; ++i)
    {
        work.re[i] = buffer[2 * i];
        work.im[i] = buffer[2 * i + 1];
    }

    for (std::size_t half = work.count / 2; half > 0; half /= 2)
        inverseStage (work.re.data(), work.im.data(), work.count, half, &tables.cosines[half - 1],
                      &tables.sines[half - 1]);

    const double scale = 1.0 / n;
    for (std::size_t i = 0; i < work.count; ++i)
    {
        const std::size_t target = 2 * std::size_t { tables.reversed[i] };
        buffer[target] = work.re[i] * scale;
        buffer[target + 1] = work.im[i] * scale;
    }
}

void toPolar (int n, double* buffer)
{
    for (int i = 0; i < n; ++i, buffer += 2)
    {
        const double re = buffer[0];
        const double im = buffer[1];
        buffer[0] = std::sqrt (re * re + im * im);
        buffer[1] = re == 0.0 ? 0.0 : std::atan (im / re);
    }
}

void toCartesian (int n, double* buffer)
{
    for (int i = 0; i < n; ++i, buffer += 2)
    {
        const double magnitude = buffer[0];
        const double phase = buffer[1];
        buffer[0] = magnitude * std::cos (phase);
        buffer[1] = magnitude * std::sin (phase);
    }
}

} // namespace morvanelab
