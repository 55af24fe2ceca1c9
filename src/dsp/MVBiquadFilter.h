// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"

#include <cstdint>

namespace morvanelab
{

enum MVFilterType_t : std::int32_t
{
    filterLowpass = 1,
    filterHighpass = 2,
    filterBandpass = 3,
    filterNotch = 4,
    filterAllpass = 5
};

/** Second-order filter in transposed direct form II whose coefficients glide to their targets, with an optional
    level follower and a quaver (a slow push on the numerator). One channel of doubles.

    Coefficients after the well-known audio equaliser recipes; they are computed at the head of process, and only
    if a setter changed something they depend on. The first computation after reset or init takes effect at once. */
class MVBiquadFilter : public MVDspBase
{
public:
    struct Coefficients
    {
        double a1 = 0.5, a2 = 0.5, b0 = 0.5, b1 = 0.5, b2 = 0.5;
    };

    /** Sets the rate, a smoothing of 0.01, and clears state and level. Frequency, bandwidth and type stay. */
    void init (bool on, double sampleRate) override;
    void reset() override;

    /** Filters a block; out and in may be the same array. With applyGain the output follows the level of the
        input with one block of lag, never louder than unfollowed. A sample that is not finite, or not 0 but
        nearer to 0 than 1e-15, leaves as 0.001. State that is not finite at the end of the block is cleared. */
    virtual void process (double* out, const double* in, int frames, bool applyGain);

    /** Centre or corner in Hz, held to 16.0..sampleRate / 2; not a number gives 16.0. */
    virtual void setFrequency (double hz);
    /** Q for types 1, 2 and 5, bandwidth in octaves for 3 and 4; held to 0.001..32.0, and to 4.0 when used.
        Not a number or a value near 0 gives 0.001. */
    virtual void setBandwidth (double q);
    /** Depth 0..1 and rate 0.01..60 Hz of the quaver; not a number gives the low end. */
    virtual void setQuaver (double depth = 0.0, double rateHz = 0.0);
    /** A value of MVFilterType_t; any other is ignored. */
    virtual void setFilterType (std::int32_t type);
    /** Share of the remaining way that a coefficient glides with each sample, 0..1; 1.0 is at once. */
    virtual void setSmoothing (double rate);

    double getFrequency() const { return frequency; }
    double getBandwidth() const { return bandwidth; }
    std::int32_t getFilterType() const { return filterType; }
    /** The coefficients in use now and those they glide to. */
    const Coefficients& getCurrent() const { return current; }
    const Coefficients& getTarget() const { return target; }

private:
    /** What moves the coefficients within a block. */
    enum class Motion
    {
        none,
        gliding,
        quavering
    };

    void updateCoefficients();
    bool isSettled() const;
    double filter (double* out, const double* in, int frames, double start, double step);
    template <Motion motion>
    double filterBlock (double* out, const double* in, int frames, double start, double step);
    void advanceQuaver (int frames);
    void recover();

    bool dirty = true;
    bool firstRun = true;
    std::int32_t filterType = filterBandpass;
    Coefficients current, target;
    double smoothing = 1.0;
    double z1 = 0.0, z2 = 0.0;
    double sampleRate = 44100.0;
    double frequency = 440.0;
    double bandwidth = 0.5;
    double quaverDepth = 0.0, quaverStep = 0.0, quaverPosition = 0.0;
    const double* quaverTable = nullptr;
    double gain = 1.0, nextGain = 1.0;
};

} // namespace morvanelab
