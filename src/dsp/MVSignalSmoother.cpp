// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVSignalSmoother.h"

#include <cmath>

namespace morvanelab
{

void MVSignalSmoother::process (double* out, const double* in, int frames)
{
    double y = value;
    const double share = rate;

    for (int i = 0; i < frames; ++i)
    {
        y = (in[i] - y) * share + y;
        out[i] = y;
    }

    value = std::isfinite (y) ? y : 0.0;
}

} // namespace morvanelab
