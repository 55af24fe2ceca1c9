// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"

namespace morvanelab
{

/** Peak follower with a linear fall. One channel. */
class MVEnvFollower : public MVDspBase
{
public:
    /** Divides the decay step by the sample rate: a decay stored per second becomes one per sample. */
    void init (bool on, double sampleRate) override;
    /** Level 0; the decay stays. */
    void reset() override { value = 0.0; }
    /** Fall per second before init, per sample after it. */
    virtual void setDecayStep (double step) { decayStep = step; }
    double getDecayStep() const { return decayStep; }
    /** Writes the level after each sample; out and in may be the same array. The level rises at once, at most to
        32768. There is no floor: it may fall below zero, where any number lifts it again. */
    virtual void process (double* out, const double* in, int frames);

private:
    double value = 0.0;
    double decayStep = 0.0;
};

} // namespace morvanelab
