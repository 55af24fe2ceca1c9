// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"
#include "dsp/MVWaveforms.h"

namespace morvanelab
{

/** Reads a wave table at a variable frequency, without interpolation. */
class MVOscillator : public MVDspBase
{
public:
    static constexpr int tableSize = MVWaveforms::tableSize;

    /** storedType counts from 1, as operators store it: 1 to 11 are the tables of MVWaveforms. Any other is silent. */
    explicit MVOscillator (int storedType = 1) : waveType (storedType) {}

    /** Fetches the table; the first call for a shape builds it. The position stays. */
    void init (bool on, double sampleRate) override;
    /** To the phase offset. */
    void reset() override;
    /** Fraction of the period, folded into 0..0.99; moves the position there. */
    virtual void setPhaseOffset (double fraction);

    /** Writes a block. The frequency in Hz ramps from startFrequency towards endFrequency and is multiplied by
        frequencySignal, unless that is null; 0 and not a number run at 0.1 Hz. A negative frequency runs backward
        and is reflected at the start of the table. out may be frequencySignal. */
    virtual void process (double* out, const double* frequencySignal, int frames, double startFrequency,
                          double endFrequency);

    double getPosition() const { return position; }

private:
    void processSignal (double* out, const double* factors, int frames, double start, double end);
    void processRamp (double* out, int frames, double start, double end);

    int waveType;
    const double* table = nullptr;
    double position = 0.0;
    double phaseOffset = 0.0;
    double positionPerHz = tableSize / 44100.0;
};

} // namespace morvanelab
