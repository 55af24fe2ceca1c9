// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVPulseWidthMod.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace morvanelab
{

namespace
{

constexpr double lowestWidth = dspSmallValue;
/** Stands in for a frequency of 0 or not a number, in Hz. */
constexpr double idleFrequency = 0.10000000149011612;
/** Above this a shape-modulated pulse is taken for a fault, in Hz. */
constexpr double highestShapeFrequency = 22050.0;
constexpr int chunk = 64;
constexpr double size = MVPulseWidthMod::tableSize;

double exponentFor (double modulation)
{
    return modulation < 0.5 ? modulation * 1.75 + 0.125 : (modulation - 0.5) * 14.0 + 1.0;
}

/** What is left of a phase of 0 or more beyond whole periods; 0 for one that is not finite. */
double fractionOf (double phase)
{
    if (phase < 1.0) [[likely]]
        return phase;
    if (phase < 2.0)
        return phase - 1.0;
    return std::isfinite (phase) ? phase - std::trunc (phase) : 0.0;
}

} // namespace

MVPulseWidthMod::MVPulseWidthMod() : generate (&MVPulseWidthMod::periodLocked) {}

void MVPulseWidthMod::init (bool on, double sampleRate)
{
    MVDspBase::init (on, sampleRate);
    phasePerHz = sampleRate > 0.0 ? 1.0 / sampleRate : 0.0;
    reset();
}

void MVPulseWidthMod::reset() { phase = lastOutput = 0.0; }

void MVPulseWidthMod::setModulationType (std::int32_t type)
{
    switch (type)
    {
        case pulseStretchedAndOffset:
            generate = &MVPulseWidthMod::stretchedAndOffset;
            break;
        case pulsePeriodLocked:
            generate = &MVPulseWidthMod::periodLocked;
            break;
        case pulseShapeModulated:
            generate = &MVPulseWidthMod::shapeModulated;
            break;
        default:
            break;
    }
}

void MVPulseWidthMod::process (double* out, const double* frequencySignal, int frames, double startFrequency,
                               double /*endFrequency*/, double pulseWidth, double modulation)
{
    if (table == nullptr)
    {
        blockClear (out, frames);
        return;
    }

    const double width = limitTo (pulseWidth, lowestWidth, 1.0);
    const double shape = limitTo (modulation, lowestWidth, 1.0);
    double increments[chunk];

    for (int done = 0; done < frames; done += chunk)
    {
        const int count = std::min (chunk, frames - done);
        findIncrements (increments, frequencySignal != nullptr ? frequencySignal + done : nullptr, count,
                        startFrequency);
        (this->*generate) (out + done, increments, count, width, shape);
    }
}

void MVPulseWidthMod::findIncrements (double* increments, const double* factors, int count, double frequency) const
{
    const double highest =
        generate == &MVPulseWidthMod::shapeModulated ? highestShapeFrequency : std::numeric_limits<double>::infinity();
    const double scale = phasePerHz;

    for (int i = 0; i < count; ++i)
    {
        const double f = std::abs (factors != nullptr ? frequency * factors[i] : frequency);
        const double audible = f <= highest ? f : 0.0;
        increments[i] = (audible > 0.0 ? audible : idleFrequency) * scale;
    }
}

/** Phase and one-pole step run in one loop: neither waits for the other. */
template <typename Value>
void MVPulseWidthMod::render (double* out, const double* increments, int count, Value&& valueAt)
{
    double at = phase;
    double last = lastOutput;

    for (int i = 0; i < count; ++i)
    {
        const double value = valueAt (at);
        last = (value - last) * 0.5 + last;
        out[i] = last;
        at = fractionOf (increments[i] + at);
    }

    phase = at;
    lastOutput = last;
}

void MVPulseWidthMod::stretchedAndOffset (double* out, const double* increments, int count, double width,
                                          double modulation)
{
    render (out, increments, count,
            [entries = table, width, modulation] (double at)
            {
                // Truncation takes everything above -1 to entry 0.
                const double n = (at - modulation) * size / width;
                return n > -1.0 && n < size ? entries[static_cast<int> (n)] : 0.0;
            });
}

void MVPulseWidthMod::periodLocked (double* out, const double* increments, int count, double width,
                                    double /*modulation*/)
{
    render (out, increments, count,
            [entries = table, width] (double at)
            {
                const double n = size * at / width;
                return n < size ? entries[static_cast<int> (n)] : 0.0;
            });
}

void MVPulseWidthMod::shapeModulated (double* out, const double* increments, int count, double width, double modulation)
{
    constexpr double last = tableSize - 1;
    // Far more than powBlock may err: only where a power lies this near to the next entry is the entry in doubt.
    constexpr double doubt = 1.0e-6;
    const double exponent = exponentFor (modulation);
    double places[chunk] {};
    double powers[chunk];
    int inside = 0;

    // A place is below 1 exactly where the phase is below the width.
    double ahead = phase;
    for (int i = 0; i < count; ++i)
    {
        places[inside] = ahead;
        inside += ahead < width ? 1 : 0;
        ahead = fractionOf (increments[i] + ahead);
    }
    for (int i = 0; i < inside; ++i)
        places[i] /= width;

    powBlock (powers, places, inside, exponent);

    int next = 0;
    render (out, increments, count,
            [&] (double at)
            {
                if (at >= width)
                    return 0.0;

                const int i = next++;
                const double n = powers[i] * last;
                const double fraction = n - static_cast<int> (n);
                const bool certain = fraction >= doubt && fraction <= 1.0 - doubt;
                return table[static_cast<int> (certain ? n : std::pow (places[i], exponent) * last)];
            });
}

} // namespace morvanelab
