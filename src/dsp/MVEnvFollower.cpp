// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVEnvFollower.h"

#include <cmath>

namespace morvanelab
{

namespace
{

constexpr double highestLevel = 32768.0;

} // namespace

void MVEnvFollower::init (bool on, double sampleRate)
{
    MVDspBase::init (on, sampleRate);
    decayStep /= sampleRate;
}

void MVEnvFollower::process (double* out, const double* in, int frames)
{
    double level = value;
    const double step = decayStep;

    for (int i = 0; i < frames; ++i)
    {
        const double a = std::abs (in[i]);
        const double fallen = level - step;
        const double risen = a < highestLevel ? a : highestLevel;
        level = a >= level ? risen : fallen;
        out[i] = level;
    }

    value = level;
}

} // namespace morvanelab
