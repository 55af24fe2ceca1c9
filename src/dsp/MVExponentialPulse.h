// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"

#include <atomic>
#include <cstdint>

namespace morvanelab
{

/** A triggered attack and decay along power curves. A retrigger goes on from the level reached.

    Threads: trigger from any thread; it takes effect at the head of the next block. The rest as MVDspBase. */
class MVExponentialPulse : public MVDspBase
{
public:
    /** Durations in samples, levels, and the exponents of the two curves. Negative durations count as 0. */
    struct Shape
    {
        std::int32_t attackSamples = 0;
        std::int32_t decaySamples = 0;
        double fullOn = 1.0;
        double fullOff = 0.0;
        double attackPower = 1.0;
        double decayPower = 1.0;
    };

    MVExponentialPulse() = default;
    /** A pulse of its own, at the same place of the curve. */
    MVExponentialPulse (const MVExponentialPulse& other);

    /** Takes effect with the next block. A pulse at rest stays at rest; a running one goes on from its position. */
    virtual void setShape (const Shape& newShape);
    const Shape& getShape() const { return shape; }

    virtual void trigger();
    /** At rest, at the level fullOff. */
    void reset() override;
    /** Writes a block: rising (position / attack)^attackPower of the way from the level at the trigger to fullOn,
        then falling from fullOn to fullOff by 1 - u^(1 / decayPower), then fullOff. Sample n of a pulse stands at
        position n + 1. Powers are computed by powBlock, within 1e-12 of std::pow. */
    virtual void process (double* out, int frames);

    /** The level reached, as of the last block. Any thread. */
    double getLastLevel() const { return lastLevelFixed.load (std::memory_order_acquire) / 2147483647.0; }
    bool isAtRest() const { return position >= totalSamples && ! pending.load (std::memory_order_acquire); }

private:
    int runAttack (double* out, int frames);
    int runDecay (double* out, int frames);
    void storeLevel (double level);

    Shape shape;
    std::int32_t totalSamples = 0;
    std::int32_t position = 0;
    double startLevel = 0.0;
    std::atomic<std::int32_t> lastLevelFixed { 0 };
    std::atomic<bool> pending { false };
};

} // namespace morvanelab
