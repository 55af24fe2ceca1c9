// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVOscilBank.h"

#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

/** The table size is a power of two, so a mask takes any position, forward or backward, into the table. */
constexpr std::uint32_t positionMask = MVOscilBank::tableSize - 1;

} // namespace

void MVOscilBank::init (bool on, double newRate)
{
    MVDspBase::init (on, newRate);
    sampleRate = newRate;
    table = MVWaveforms::instance().table (waveSinePeriod);
    reset();
}

void MVOscilBank::init (bool on, double newRate, int count, double baseFrequency, int partialsPerOctave)
{
    const int size = std::clamp (count, 0, maxPartials);
    const int octaves = partialsPerOctave != 0 && size / partialsPerOctave != 0 ? size / partialsPerOctave : 1;
    partials.assign (static_cast<std::size_t> (size), Partial {});

    for (int i = 0; i < size; ++i)
        partials[static_cast<std::size_t> (i)].frequency =
            baseFrequency * std::pow (2.0, static_cast<double> (i - size) / octaves);

    init (on, newRate);
}

void MVOscilBank::reset()
{
    for (Partial& partial : partials)
    {
        const double frequency = partial.frequency;
        partial = Partial {};
        partial.frequency = frequency;
        partial.baseIncrement = tableSize * frequency / sampleRate;
    }
}

double MVOscilBank::getFrequency (int index) const
{
    return index >= 0 && index < getPartialCount() ? partials[static_cast<std::size_t> (index)].frequency : 0.0;
}

void MVOscilBank::process (int frames, const Target* targets, double* out)
{
    if (frames <= 0 || table == nullptr)
        return;

    // Partial by partial: every sample still sums the partials in their order.
    for (Partial& partial : partials)
    {
        const Target& goal = *targets++;
        partial.gainStep = (goal.gain - partial.gain) / frames;
        partial.increment = (goal.frequencyRatio - partial.referenceRatio) / frames + partial.baseIncrement;

        const auto entries = static_cast<std::uint32_t> (truncToInt (partial.increment));
        std::uint32_t at = partial.position;

        for (int i = 0; i < frames; ++i)
        {
            out[i] += table[at] * (partial.gain + i * partial.gainStep);
            at = (at + entries) & positionMask;
        }

        partial.position = at;
        partial.gain = goal.gain;
    }
}

} // namespace morvanelab
