// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"

namespace morvanelab
{

/** Keeps a processed signal at the power of a reference, always one block late. */
class MVPowerFollower : public MVDspBase
{
public:
    /** Back to a gain of 1.0. */
    void reset() override;
    /** Scales buffer in place by a gain that ramps to the value found in the block before, and finds the next one:
        the root of the ratio of the two sums of squares, 1.0 if buffer is silent or the ratio is not finite. */
    virtual void process (double* buffer, const double* reference, int frames);

private:
    double gain = 1.0;
    double nextGain = 1.0;
};

} // namespace morvanelab
