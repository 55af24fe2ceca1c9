// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVBlockMath.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace morvanelab
{

namespace
{

double rampStep (int frames, double start, double end) { return (end - start) / frames; }

/** Four lanes let the compiler keep several additions or comparisons in flight; the lanes are part of the result. */
constexpr int lanes = 4;

// The polynomials below are summed in pairs, pairs of pairs and so on: the terms of one value are then worked out side
// by side instead of one behind the other.

/** ln (m) = 2 s (1 + s^2 / 3 + s^4 / 5 + ...) with s = (m - 1) / (m + 1), up to s^20. */
double logOfMantissa (double m)
{
    const double s = (m - 1.0) / (m + 1.0);
    const double z = s * s;
    const double z2 = z * z;
    const double z4 = z2 * z2;
    const double low = (1.0 / 3.0 + z * (1.0 / 5.0)) + z2 * (1.0 / 7.0 + z * (1.0 / 9.0));
    const double middle = (1.0 / 11.0 + z * (1.0 / 13.0)) + z2 * (1.0 / 15.0 + z * (1.0 / 17.0));
    const double high = 1.0 / 19.0 + z * (1.0 / 21.0);
    const double sum = low + z4 * (middle + z4 * high);
    return 2.0 * (sum * z * s + s);
}

/** The exponential series up to t^13, for |t| up to ln (2) / 2. */
double expOfFraction (double t)
{
    const double t2 = t * t;
    const double t4 = t2 * t2;
    const double low = (1.0 + t) + t2 * (1.0 / 2.0 + t * (1.0 / 6.0));
    const double middle = (1.0 / 24.0 + t * (1.0 / 120.0)) + t2 * (1.0 / 720.0 + t * (1.0 / 5040.0));
    const double high = (1.0 / 40320.0 + t * (1.0 / 362880.0)) + t2 * (1.0 / 3628800.0 + t * (1.0 / 39916800.0));
    const double top = 1.0 / 479001600.0 + t * (1.0 / 6227020800.0);
    return (low + t4 * middle) + t4 * t4 * (high + t4 * top);
}

constexpr double ln2 = 0.6931471805599453;
/** Adding and subtracting this rounds to a whole number, which then stands in the low bits of the sum. */
constexpr double rounder = 6755399441055744.0;
/** Beyond this exponent of two a result may leave the normal numbers. */
constexpr double largestPower = 1000.0;

/** log2 of a positive normal number. */
double fastLog2 (double x)
{
    constexpr std::uint64_t one = 0x3FF0000000000000ULL;
    constexpr std::uint64_t rootOfHalf = 0x3FE6A09E667F3BCDULL;

    // The mantissa is taken between the root of 1/2 and the root of 2, so that its logarithm never cancels the
    // exponent.
    const auto bits = std::bit_cast<std::uint64_t> (x);
    const std::uint64_t biased = (bits + (one - rootOfHalf)) >> 52;
    const double mantissa = std::bit_cast<double> (bits + one - (biased << 52));
    const double exponent = std::bit_cast<double> (biased | 0x4330000000000000ULL) - (4503599627370496.0 + 1023.0);
    return logOfMantissa (mantissa) * (1.0 / ln2) + exponent;
}

/** 2 to the power of p, for |p| up to largestPower. */
double fastExp2 (double p)
{
    const double shifted = p + rounder;
    const double fraction = p - (shifted - rounder);
    const auto scale = std::bit_cast<std::uint64_t> (shifted) << 52;
    return std::bit_cast<double> (std::bit_cast<std::uint64_t> (expOfFraction (fraction * ln2)) + scale);
}

/** One run of up to chunk values; what the fast way does not cover is done by std::pow. */
constexpr int chunk = 64;

/** 0 if the fast way holds for a source whose result is 2 to the power of p. */
std::uint64_t slowBits (double source, double p)
{
    constexpr double aboveOne = 1.0 + std::numeric_limits<double>::epsilon();
    return outsideBits (source, std::numeric_limits<double>::min(), aboveOne)
           | outsideBits (p, -largestPower, largestPower);
}

void powChunk (double* out, const double* in, int count, double exponent)
{
    double powers[chunk];
    double source[chunk];
    std::uint64_t slow = 0;

    for (int i = 0; i < count; ++i)
    {
        source[i] = in[i];
        powers[i] = fastLog2 (source[i]) * exponent;
        slow |= slowBits (source[i], powers[i]);
    }

    for (int i = 0; i < count; ++i)
        out[i] = fastExp2 (powers[i]);

    for (int i = 0; slow != 0 && i < count; ++i)
        if (slowBits (source[i], powers[i]) != 0)
            out[i] = std::pow (source[i], exponent);
}

} // namespace

void blockClear (double* out, int frames) { blockFill (out, frames, 0.0); }

void blockFill (double* out, int frames, double value)
{
    if (frames > 0)
        std::fill_n (out, frames, value);
}

void blockCopy (double* out, const double* in, int frames)
{
    if (frames > 0 && out != in)
        std::copy_n (in, frames, out);
}

void blockAdd (double* out, const double* in, int frames)
{
    for (int i = 0; i < frames; ++i)
        out[i] += in[i];
}

void blockMultiply (double* out, const double* in, int frames)
{
    for (int i = 0; i < frames; ++i)
        out[i] *= in[i];
}

void blockProduct (double* out, const double* a, const double* b, int frames)
{
    for (int i = 0; i < frames; ++i)
        out[i] = a[i] * b[i];
}

void blockScale (double* buffer, int frames, double gain)
{
    for (int i = 0; i < frames; ++i)
        buffer[i] *= gain;
}

void rampFill (double* out, int frames, double start, double end)
{
    const double step = rampStep (frames, start, end);
    for (int i = 0; i < frames; ++i)
        out[i] = start + i * step;
}

void rampCopy (double* out, const double* in, int frames, double start, double end)
{
    const double step = rampStep (frames, start, end);
    for (int i = 0; i < frames; ++i)
        out[i] = in[i] * (start + i * step);
}

void rampMix (double* out, const double* in, int frames, double start, double end)
{
    const double step = rampStep (frames, start, end);
    for (int i = 0; i < frames; ++i)
        out[i] += in[i] * (start + i * step);
}

void rampMultiply (double* buffer, int frames, double start, double end)
{
    const double step = rampStep (frames, start, end);
    for (int i = 0; i < frames; ++i)
        buffer[i] *= start + i * step;
}

void rampProduct (double* out, const double* in, int frames, double start, double end)
{
    const double step = rampStep (frames, start, end);
    for (int i = 0; i < frames; ++i)
        out[i] *= in[i] * (start + i * step);
}

bool blockIsConstant (const double* in, int frames)
{
    if (frames < 1)
        return true;

    // A moving signal mostly shows at its end or in its middle.
    const double value = in[0];
    if (in[frames - 1] != value || in[frames / 2] != value)
        return false;

    // Without a way out of the loop, several values are compared at a time.
    std::uint64_t different = 0;
    for (int i = 0; i < frames; ++i)
        different |= std::bit_cast<std::uint64_t> (in[i] == value ? 0.0 : 1.0);
    return different == 0;
}

double blockPeak (const double* in, int frames)
{
    double peaks[lanes] {};
    int i = 0;

    for (; i + lanes <= frames; i += lanes)
        for (int lane = 0; lane < lanes; ++lane)
        {
            const double a = std::abs (in[i + lane]);
            peaks[lane] = a > peaks[lane] ? a : peaks[lane];
        }

    for (; i < frames; ++i)
        peaks[0] = std::max (peaks[0], std::abs (in[i]));

    return std::max (std::max (peaks[0], peaks[1]), std::max (peaks[2], peaks[3]));
}

double blockPower (const double* in, int frames)
{
    double sums[lanes] {};
    int i = 0;

    for (; i + lanes <= frames; i += lanes)
        for (int lane = 0; lane < lanes; ++lane)
            sums[lane] += in[i + lane] * in[i + lane];

    for (; i < frames; ++i)
        sums[0] += in[i] * in[i];

    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

double blockRms (const double* in, int frames)
{
    return frames > 0 ? std::sqrt (blockPower (in, frames) / frames) : 0.0;
}

void powBlock (double* out, const double* in, int count, double exponent)
{
    // Exact by definition, and common: a straight line needs no powers.
    if (exponent == 1.0)
    {
        blockCopy (out, in, count);
        return;
    }

    for (int i = 0; i < count; i += chunk)
        powChunk (out + i, in + i, std::min (chunk, count - i), exponent);
}

} // namespace morvanelab
