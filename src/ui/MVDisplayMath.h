// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <vector>

/** What several displays compute alike. Any thread. */
namespace morvanelab::displayMath
{

/** Position of the first sample above 0 whose neighbour before is at or below 0; n if there is none. */
int upwardCrossing (const double* samples, int n);

/** Transforms points samples as real parts with imaginary parts of 0 into points complex pairs (see forwardFft). A
    sample that is not a number or beyond all reason counts as 0. */
void transformStretch (const double* samples, double* pairs, int points);

/** Magnitudes of points complex pairs, over points. The pairs may lie where the magnitudes go. Returns the greatest. */
double takeMagnitudes (const double* pairs, int points, double* magnitudes);

/** Turns magnitudes into heights: span / peak times the magnitude plus baseline; baseline throughout for a peak of 0.
 */
void scaleToPeak (double* magnitudes, int n, double peak, double baseline, double span);

/** The spectrum of the samples (at least points of them) as such heights. pairs has room for points pairs, heights for
    points numbers. */
void spectrumHeights (const double* samples, int points, double* pairs, double* heights, double baseline, double span);

} // namespace morvanelab::displayMath

namespace morvanelab
{

/** A logarithmic frequency axis for a spectrum of so many bins up to half the sample rate. Its left end is half a bin,
    where the bin of 0 Hz stands. */
class MVFrequencyAxis
{
public:
    explicit MVFrequencyAxis (int binsToHalfRate);

    /** Where a bin (not only whole ones) stands: 0 left to 1 right. */
    double positionOfBin (double bin) const;
    /** Where a frequency stands at a sample rate; may lie outside 0 to 1. */
    double positionOf (double hz, double sampleRate) const;
    /** The 1, 2 and 5 times powers of ten that stand on the axis. */
    std::vector<double> marks (double sampleRate) const;

    /** Draws the bins (0 to binsToHalfRate, that is one more than given) as a curve of count points evenly along the
        axis: smooth between bins that are far apart, the greatest of those that share a point. largestIsHighest tells
        which of two is the greater: false for y coordinates that count downward. */
    void curve (const double* bins, float* points, int count, bool largestIsHighest) const;

private:
    double binAt (double position) const;

    int numBins;
    double octaves; ///< log2 from the left to the right end
};

} // namespace morvanelab
