// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVSpectrumAnalyzer.h"

namespace morvanelab
{

MVSpectrumAnalyzer& MVSpectrumAnalyzer::instance()
{
    static MVSpectrumAnalyzer shared;
    return shared;
}

int MVSpectrumAnalyzer::peakBin (const double* spectrum, int n) const
{
    int strongest = -1;
    double greatest = 0.0;

    for (int bin = 0; bin < n / 2; ++bin, spectrum += 2)
    {
        const double power = spectrum[0] * spectrum[0] + spectrum[1] * spectrum[1];
        if (power > greatest)
        {
            greatest = power;
            strongest = bin;
        }
    }

    return strongest;
}

} // namespace morvanelab
