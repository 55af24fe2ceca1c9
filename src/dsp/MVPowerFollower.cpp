// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVPowerFollower.h"

#include "dsp/MVBlockMath.h"

#include <cmath>

namespace morvanelab
{

void MVPowerFollower::reset() { gain = nextGain = 1.0; }

void MVPowerFollower::process (double* buffer, const double* reference, int frames)
{
    if (frames <= 0)
        return;

    const double referencePower = blockPower (reference, frames);
    const double power = blockPower (buffer, frames);

    rampMultiply (buffer, frames, gain, nextGain);
    gain = nextGain;

    const double ratio = power == 0.0 ? 1.0 : std::sqrt (referencePower / power);
    nextGain = std::isfinite (ratio) ? ratio : 1.0;
}

} // namespace morvanelab
