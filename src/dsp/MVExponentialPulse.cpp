// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVExponentialPulse.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <limits>

namespace morvanelab
{

namespace
{

constexpr double fixedPointOne = 2147483647.0;

std::int32_t sumOf (std::int32_t a, std::int32_t b)
{
    const std::int64_t sum = static_cast<std::int64_t> (a) + b;
    return static_cast<std::int32_t> (std::min<std::int64_t> (sum, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

MVExponentialPulse::MVExponentialPulse (const MVExponentialPulse& other)
    : MVDspBase (other), shape (other.shape), totalSamples (other.totalSamples), position (other.position),
      startLevel (other.startLevel), lastLevelFixed (other.lastLevelFixed.load()), pending (other.pending.load())
{
}

void MVExponentialPulse::setShape (const Shape& newShape)
{
    const bool resting = position >= totalSamples;

    shape = newShape;
    shape.attackSamples = std::max (0, shape.attackSamples);
    shape.decaySamples = std::max (0, shape.decaySamples);
    totalSamples = sumOf (shape.attackSamples, shape.decaySamples);

    if (resting)
        position = totalSamples;
}

void MVExponentialPulse::trigger() { pending.store (true, std::memory_order_release); }

void MVExponentialPulse::reset()
{
    pending.store (false, std::memory_order_release);
    startLevel = shape.fullOff;
    position = totalSamples;
    storeLevel (shape.fullOff);
}

void MVExponentialPulse::storeLevel (double level)
{
    lastLevelFixed.store (truncToInt (level * fixedPointOne), std::memory_order_release);
}

void MVExponentialPulse::process (double* out, int frames)
{
    if (frames <= 0)
        return;

    if (pending.exchange (false, std::memory_order_acq_rel))
    {
        position = 0;
        startLevel = getLastLevel();
    }

    int done = runAttack (out, frames);
    done += runDecay (out + done, frames - done);
    blockFill (out + done, frames - done, shape.fullOff);

    position += std::min (totalSamples - position, frames - done);
    storeLevel (out[frames - 1]);
}

/** Samples at positions 1 to the end of the attack; the curve as a whole may end before it. */
int MVExponentialPulse::runAttack (double* out, int frames)
{
    const int count = std::min (frames, shape.attackSamples - position);
    if (count <= 0 || position >= totalSamples)
        return 0;

    const double length = shape.attackSamples;
    const double start = startLevel;
    const double span = shape.fullOn - start;

    for (int i = 0; i < count; ++i)
        out[i] = (position + 1 + i) / length;
    powBlock (out, out, count, shape.attackPower);
    for (int i = 0; i < count; ++i)
        out[i] = out[i] * span + start;

    position += count;
    return count;
}

/** Samples behind the attack and before the last one, which is at rest already. */
int MVExponentialPulse::runDecay (double* out, int frames)
{
    const int count = std::min (frames, totalSamples - 1 - position);
    if (count <= 0)
        return 0;

    const double length = shape.decaySamples;
    const int first = position + 1 - shape.attackSamples;
    const double off = shape.fullOff;
    const double span = shape.fullOn - off;

    for (int i = 0; i < count; ++i)
        out[i] = (first + i) / length;
    powBlock (out, out, count, 1.0 / shape.decayPower);
    for (int i = 0; i < count; ++i)
        out[i] = (1.0 - out[i]) * span + off;

    position += count;
    return count;
}

} // namespace morvanelab
