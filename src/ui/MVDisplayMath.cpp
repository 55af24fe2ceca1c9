// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVDisplayMath.h"

#include "dsp/MVSpectralMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace displayMath
{

int upwardCrossing (const double* samples, int n)
{
    for (int i = 1; i < n; ++i)
        if (samples[i - 1] <= 0.0 && samples[i] > 0.0)
            return i;
    return std::max (n, 0);
}

void transformStretch (const double* samples, double* pairs, int points)
{
    constexpr double reason = 1.0e100; // its square is still a number
    for (int i = 0; i < points; ++i)
    {
        pairs[2 * i] = std::abs (samples[i]) < reason ? samples[i] : 0.0;
        pairs[2 * i + 1] = 0.0;
    }
    forwardFft (pairs, points);
}

double takeMagnitudes (const double* pairs, int points, double* magnitudes)
{
    double peak = 0.0;
    for (int i = 0; i < points; ++i)
    {
        const double re = pairs[2 * i];
        const double im = pairs[2 * i + 1];
        magnitudes[i] = std::sqrt (re * re + im * im) / points;
        peak = std::max (peak, magnitudes[i]);
    }
    return peak;
}

void scaleToPeak (double* magnitudes, int n, double peak, double baseline, double span)
{
    // A peak so small that the quotient has no value counts as none.
    const double quotient = peak > 0.0 ? span / peak : 0.0;
    const double scale = std::isfinite (quotient) ? quotient : 0.0;
    for (int i = 0; i < n; ++i)
        magnitudes[i] = scale * magnitudes[i] + baseline;
}

void spectrumHeights (const double* samples, int points, double* pairs, double* heights, double baseline, double span)
{
    transformStretch (samples, pairs, points);
    const double peak = takeMagnitudes (pairs, points, heights);
    scaleToPeak (heights, points, peak, baseline, span);
}

} // namespace displayMath

namespace
{

constexpr double leftmostBin = 0.5;

/** Catmull and Rom's curve between b and c, kept between the two so that it never overshoots. */
double smoothBetween (double a, double b, double c, double d, double t)
{
    const double value = b + 0.5 * t * (c - a + t * (2.0 * a - 5.0 * b + 4.0 * c - d + t * (3.0 * (b - c) + d - a)));
    return std::clamp (value, std::min (b, c), std::max (b, c));
}

} // namespace

MVFrequencyAxis::MVFrequencyAxis (int binsToHalfRate)
    : numBins (std::max (binsToHalfRate, 1)), octaves (std::log2 (numBins / leftmostBin))
{
}

double MVFrequencyAxis::positionOfBin (double bin) const
{
    return bin > leftmostBin ? std::log2 (bin / leftmostBin) / octaves : 0.0;
}

double MVFrequencyAxis::positionOf (double hz, double sampleRate) const
{
    const double bin = hz / (sampleRate * 0.5) * numBins;
    return bin > 0.0 ? std::log2 (bin / leftmostBin) / octaves : -1.0;
}

double MVFrequencyAxis::binAt (double position) const { return leftmostBin * std::exp2 (position * octaves); }

std::vector<double> MVFrequencyAxis::marks (double sampleRate) const
{
    std::vector<double> result;
    for (double power = 1.0; power < 1.0e9; power *= 10.0)
        for (const double factor : { 1.0, 2.0, 5.0 })
        {
            const double position = positionOf (factor * power, sampleRate);
            if (position > 0.0 && position < 1.0)
                result.push_back (factor * power);
        }
    return result;
}

void MVFrequencyAxis::curve (const double* bins, float* points, int count, bool largestIsHighest) const
{
    const auto bin = [&] (int index) { return bins[std::clamp (index, 0, numBins)]; };
    const double sign = largestIsHighest ? 1.0 : -1.0;
    double position = binAt (0.0);
    for (int i = 0; i < count; ++i)
    {
        const double next = binAt ((i + 1.0) / std::max (count - 1, 1));
        const int first = static_cast<int> (std::ceil (position - (next - position) * 0.5));
        const int last = static_cast<int> (std::floor (position + (next - position) * 0.5));
        double value;
        if (first <= last && next - position > 1.0)
        {
            value = bin (first);
            for (int each = first + 1; each <= last; ++each)
                value = sign * std::max (sign * value, sign * bin (each));
        }
        else
        {
            const int low = static_cast<int> (position);
            // Between the left end and bin 1 stands all there is below bin 1.
            const double t = low == 0 ? (position - leftmostBin) / (1.0 - leftmostBin) : position - low;
            value = smoothBetween (bin (low - 1), bin (low), bin (low + 1), bin (low + 2), t);
        }
        points[i] = static_cast<float> (value);
        position = next;
    }
}

} // namespace morvanelab
