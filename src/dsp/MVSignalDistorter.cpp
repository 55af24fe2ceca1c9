// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVSignalDistorter.h"

#include <cmath>

namespace morvanelab
{

void MVSignalDistorter::setMode (std::int32_t newMode)
{
    if (newMode == modePower || newMode == modeCurve)
        mode = newMode;
}

void MVSignalDistorter::rebuild()
{
    if (mode == modeCurve)
    {
        curve.render (table.data(), tableSize);
        return;
    }

    for (int i = 0; i < tableSize; ++i)
        table[static_cast<std::size_t> (i)] = std::pow (i * (1.0 / tableSize), power);
}

void MVSignalDistorter::process (double* out, const double* in, int frames, double startScale, double endScale)
{
    if (mode != modeCurve)
        return;

    constexpr double last = tableSize - 1;
    const double* const entries = table.data();
    const double step = (endScale - startScale) / frames;

    for (int i = 0; i < frames; ++i)
    {
        const double place = (in[i] * (startScale + i * step) + 1.0) * 0.5 * tableSize;
        const double above = place > 0.0 ? place : 0.0; // not a number goes here, too
        const int n = static_cast<int> (above < last ? above : last);
        out[i] = entries[n] * 2.0 - 1.0;
    }
}

} // namespace morvanelab
