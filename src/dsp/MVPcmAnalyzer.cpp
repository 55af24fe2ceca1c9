// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVPcmAnalyzer.h"

#include "dsp/MVBlockMath.h"

namespace morvanelab
{

double MVPcmAnalyzer::peak (const double* block, int n) { return blockPeak (block, n); }

double MVPcmAnalyzer::rootMeanSquare (const double* block, int n) { return blockRms (block, n); }

int MVPcmAnalyzer::zeroCrossings (const double* block, int n)
{
    int crossings = 0;
    for (int i = 1; i < n; ++i)
        crossings += (block[i - 1] < 0.0) != (block[i] < 0.0) ? 1 : 0;
    return crossings;
}

} // namespace morvanelab
