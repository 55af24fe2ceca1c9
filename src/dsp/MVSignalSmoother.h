// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"

namespace morvanelab
{

/** One-pole low-pass: y = (x - y) * rate + y. One channel. */
class MVSignalSmoother : public MVDspBase
{
public:
    /** Back to a value of 0; the rate stays. */
    void reset() override { value = 0.0; }
    /** out and in may be the same array. A value that is not finite at the end of the block becomes 0. */
    virtual void process (double* out, const double* in, int frames);
    virtual void processInPlace (double* buffer, int frames) { process (buffer, buffer, frames); }
    /** 0 holds the value, 1.0 passes the signal unchanged. Default 0.5. */
    virtual void setRate (double newRate) { rate = newRate; }

private:
    double value = 0.0;
    double rate = 0.5;
};

} // namespace morvanelab
