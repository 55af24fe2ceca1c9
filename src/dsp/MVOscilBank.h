// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"
#include "dsp/MVWaveforms.h"

#include <cstdint>
#include <vector>

namespace morvanelab
{

/** Additive bank of sine oscillators whose pitches are spread evenly over octaves. Increments are whole table
    entries, so low partials are quantised in pitch: the inner loop needs no floating-point index. */
class MVOscilBank : public MVDspBase
{
public:
    static constexpr int tableSize = MVWaveforms::tableSize;
    static constexpr int maxPartials = 4096;

    /** What a partial moves to over one block. */
    struct Target
    {
        double gain = 0.0;
        double frequencyRatio = 0.0;
    };

    struct Partial
    {
        double frequency = 0.0;
        double referenceRatio = 0.0;
        double baseIncrement = 0.0;
        double increment = 0.0;
        std::uint32_t position = 0;
        double gainStep = 0.0;
        double gain = 0.0;
    };

    /** Keeps the partials there are, for a new rate. */
    void init (bool on, double newRate) override;
    /** Allocates count partials (0 to maxPartials). Partial i sounds at
        baseFrequency * 2^((i - count) / (count / partialsPerOctave)), the inner division in whole numbers. */
    virtual void init (bool on, double newRate, int count, double baseFrequency, int partialsPerOctave);
    void reset() override;

    /** Adds a block to out. targets holds one entry a partial; the gain ramps to its target over the block, the
        increment is (ratio - reference) / frames + base, truncated. */
    virtual void process (int frames, const Target* targets, double* out);

    int getPartialCount() const { return static_cast<int> (partials.size()); }
    double getFrequency (int index) const;

private:
    std::vector<Partial> partials;
    const double* table = nullptr;
    double sampleRate = 44100.0;
};

} // namespace morvanelab
