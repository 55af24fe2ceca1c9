// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVDcFilter.h"

#include <cmath>

namespace morvanelab
{

void MVDcFilter::reset() { y1 = x1 = 0.0; }

void MVDcFilter::process (double* buffer, int frames)
{
    double y = y1;
    double last = x1;

    for (int i = 0; i < frames; ++i)
    {
        const double x = buffer[i];
        y = (x + y - last) * pole;
        last = x;
        buffer[i] = y;
    }

    y1 = y;
    x1 = last;

    if (! std::isfinite (y1))
        reset();
}

} // namespace morvanelab
