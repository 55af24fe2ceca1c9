// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** Measures of a block of n samples. Any thread; an empty block measures 0. */
class MVPcmAnalyzer
{
public:
    /** Greatest absolute value; values that are not numbers do not count. */
    static double peak (const double* block, int n);
    static double rootMeanSquare (const double* block, int n);
    /** Samples from the second on whose sign differs from the one before. 0 counts as positive. */
    static int zeroCrossings (const double* block, int n);
};

} // namespace morvanelab
