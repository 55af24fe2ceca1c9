// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVNoiseGenerator.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr MVFRange fullRange { -1.0, 2.0 };
constexpr double deviationLimit = 32768.0;

bool isInFullRange (double value) { return value >= -1.0 && value < 1.0; }

/** Not a number counts as the low limit. */
double held (double deviation)
{
    const double above = deviation > -deviationLimit ? deviation : -deviationLimit;
    return above < deviationLimit ? above : deviationLimit;
}

/** The range between a and -a. */
MVFRange rangeAround (double a)
{
    const double low = std::min (a, -a);
    return { low, std::max (a, -a) - low };
}

/** One step of a walk; what leaves the full range comes back with its sign reversed. */
double walkFrom (double from, double deviation, MVRandom& source)
{
    const double walked = source.nextInFloatRange (rangeAround (deviation)) + from;
    return isInFullRange (walked) ? walked : -wrapToRange (walked, -1.0, 1.0);
}

} // namespace

void MVNoiseGenerator::init (bool on, double newRate)
{
    MVDspBase::init (on, newRate);
    sampleRate = newRate;
    samplesPerMs = sampleRate / 1000.0;
    step = 0.0;
    reset();
}

void MVNoiseGenerator::reset()
{
    current = target = 0.0;
    samplesLeft = 0;
}

void MVNoiseGenerator::white (double* out, int frames)
{
    MVRandom source = random;

    for (int i = 0; i < frames; ++i)
        out[i] = source.nextInFloatRange (fullRange);

    random = source;
}

void MVNoiseGenerator::brownian (double* out, const double* deviationSignal, double deviationScale, int frames)
{
    MVRandom source = random;
    double walk = current;

    for (int i = 0; i < frames; ++i)
    {
        const double deviation = held (deviationSignal[i]) * deviationScale;
        walk = walkFrom (walk, deviation, source);
        out[i] = walk;
    }

    random = source;
    if (frames > 0)
        target = current = walk;
}

void MVNoiseGenerator::pickTarget (double deviation, double interval)
{
    target = noiseType == noiseWhite ? random.nextInFloatRange (fullRange) : walkFrom (current, deviation, random);

    samplesLeft = truncToInt (interval);
    if (samplesLeft == 0)
        samplesLeft = 1;
    step = (target - current) / samplesLeft;
}

void MVNoiseGenerator::stepped (double* out, const double* intervalSignal, const double* deviationSignal,
                                double deviationScale, int frames, double intervalScale)
{
    for (int i = 0; i < frames;)
    {
        if (samplesLeft < 1)
            pickTarget (deviationSignal[i] * deviationScale, samplesPerMs * intervalSignal[i] * intervalScale);

        // An interval below zero is over after one sample, however far below it lies.
        const int count = std::clamp (samplesLeft, 1, frames - i);
        if (interpolate)
            glide (out + i, count);
        else
            blockFill (out + i, count, target);

        if (samplesLeft > 0)
            samplesLeft -= count;
        i += count;
    }
}

void MVNoiseGenerator::glide (double* out, int frames)
{
    double value = current;
    const double stride = step;

    for (int i = 0; i < frames; ++i)
    {
        value += stride;
        if (! isInFullRange (value)) [[unlikely]]
            value = wrapToRange (value, -1.0, 1.0);
        out[i] = value;
    }

    current = value;
}

void MVNoiseGenerator::addNoise (double* buffer, double deviation, int frames)
{
    const double usable = std::isfinite (deviation) ? deviation : 0.0;
    // Fixed by the first call in the process: every later caller shares that deviation.
    static const MVFRange range { -usable, std::max (0.0, 2.0 * usable) };

    MVRandom source = random;

    for (int i = 0; i < frames; ++i)
        buffer[i] += source.nextInFloatRange (range);

    random = source;
}

} // namespace morvanelab
