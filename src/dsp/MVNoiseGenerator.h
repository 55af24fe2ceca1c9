// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"
#include "foundation/MVRandom.h"

#include <cstdint>

namespace morvanelab
{

enum MVNoiseType_t : std::int32_t
{
    noiseWhite = 1,
    noiseBrown = 2
};

/** White, brownian and stepped noise in -1..1. */
class MVNoiseGenerator : public MVDspBase
{
public:
    /** Stores the rate in Hz and clears the walk. The random source runs on. */
    void init (bool on, double newRate) override;
    /** Walk at 0, a new value due with the next sample. */
    void reset() override;
    /** What stepped draws: noiseWhite or noiseBrown. */
    virtual void setNoiseType (std::int32_t type) { noiseType = type; }
    /** Whether stepped moves to each value in a straight line. */
    virtual void setInterpolate (bool on) { interpolate = on; }

    virtual void white (double* out, int frames);
    /** A random walk with steps of up to deviationSignal * deviationScale either way, reflected in sign at its
        limits. A deviation is held to +-32768; not a number counts as -32768. out may be deviationSignal. */
    virtual void brownian (double* out, const double* deviationSignal, double deviationScale, int frames);
    /** A new value every intervalSignal * intervalScale milliseconds (read when the value is drawn), white or walking
        by the deviation. Without interpolation a walk keeps stepping from its last interpolated position.
        out may be either signal. */
    virtual void stepped (double* out, const double* intervalSignal, const double* deviationSignal,
                          double deviationScale, int frames, double intervalScale);
    /** Adds uniform noise of +-deviation to buffer. The deviation of the first call in the process holds for every
        later call of every generator; a negative first one adds its constant instead of noise. */
    virtual void addNoise (double* buffer, double deviation, int frames);

    MVRandom& getRandom() { return random; }

private:
    void pickTarget (double deviation, double interval);
    void glide (double* out, int frames);

    std::int32_t noiseType = noiseWhite;
    bool interpolate = false;
    double current = 1.0;
    double target = 1.0;
    std::int32_t samplesLeft = 1;
    double step = 1.0;
    double sampleRate = 44100.0;
    double samplesPerMs = 1.0;
    MVRandom random;
};

} // namespace morvanelab
