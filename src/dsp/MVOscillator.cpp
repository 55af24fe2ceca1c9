// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVOscillator.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace morvanelab
{

namespace
{

constexpr double highestPhaseOffset = 0.9900000095367432;
/** Stands in for a frequency of 0 or not a number, in Hz. */
constexpr double idleFrequency = 0.10000000149011612;
constexpr int chunk = 128;
constexpr double size = MVOscillator::tableSize;

double guarded (double g) { return std::abs (g) > 0.0 ? g : idleFrequency; }

/** A position reflected at the start of the table and wrapped at its end. */
double folded (double position)
{
    if (position < 0.0)
        position = -position;
    if (position >= size)
        position = std::fmod (position, size);
    return position < size ? position : 0.0;
}

/** For increments of 0 to a whole table: the position wraps by one subtraction, which is exact. */
template <typename Increment>
double runTame (double* out, int frames, const double* entries, double at, Increment&& incrementAt)
{
    for (int i = 0; i < frames; ++i)
    {
        out[i] = entries[static_cast<int> (at)];
        at += incrementAt (i);
        if (at >= size) [[unlikely]]
            at -= size;
    }

    return at;
}

/** For any increments. */
template <typename Increment>
double runFolded (double* out, int frames, const double* entries, double at, Increment&& incrementAt)
{
    for (int i = 0; i < frames; ++i)
    {
        out[i] = entries[static_cast<int> (at)];
        at = folded (at + incrementAt (i));
    }

    return at;
}

} // namespace

void MVOscillator::init (bool on, double sampleRate)
{
    MVDspBase::init (on, sampleRate);
    table = MVWaveforms::instance().table (waveType - 1);
    positionPerHz = tableSize / sampleRate;
}

void MVOscillator::reset() { position = tableSize * phaseOffset; }

void MVOscillator::setPhaseOffset (double fraction)
{
    phaseOffset = wrapToRange (fraction, 0.0, highestPhaseOffset);
    reset();
}

void MVOscillator::process (double* out, const double* frequencySignal, int frames, double startFrequency,
                            double endFrequency)
{
    if (table == nullptr)
        blockClear (out, frames);
    else if (frequencySignal != nullptr)
        processSignal (out, frequencySignal, frames, startFrequency, endFrequency);
    else
        processRamp (out, frames, startFrequency, endFrequency);
}

void MVOscillator::processSignal (double* out, const double* factors, int frames, double start, double end)
{
    const double step = (end - start) / frames;
    const double scale = positionPerHz;
    double increments[chunk];

    for (int done = 0; done < frames; done += chunk)
    {
        const int count = std::min (chunk, frames - done);
        std::uint64_t wild = 0;

        for (int i = 0; i < count; ++i)
        {
            increments[i] = guarded ((start + (done + i) * step) * factors[done + i]) * scale;
            wild |= outsideBits (increments[i], 0.0, size);
        }

        const auto incrementAt = [&increments] (int i) { return increments[i]; };
        position = wild == 0 ? runTame (out + done, count, table, position, incrementAt)
                             : runFolded (out + done, count, table, position, incrementAt);
    }
}

void MVOscillator::processRamp (double* out, int frames, double start, double end)
{
    const double scale = positionPerHz;
    const double step = (end - start) / frames;
    const auto frequencyAt = [start, step] (int i) { return start + i * step; };
    const double last = frequencyAt (frames - 1);
    // The ramp lies between its first and its last value, rounding included, so these two speak for all.
    const bool tame = start > 0.0 && last > 0.0 && start * scale < size && last * scale < size;

    if (! tame)
        position = runFolded (out, frames, table, position, [&] (int i) { return guarded (frequencyAt (i)) * scale; });
    else if (step == 0.0)
        position = runTame (out, frames, table, position, [increment = start * scale] (int) { return increment; });
    else
        position = runTame (out, frames, table, position, [&] (int i) { return frequencyAt (i) * scale; });
}

} // namespace morvanelab
