// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"
#include "dsp/MVWaveforms.h"

#include <cstdint>

namespace morvanelab
{

enum MVPulseModulation_t : std::int32_t
{
    pulseStretchedAndOffset = 1,
    pulsePeriodLocked = 2,
    pulseShapeModulated = 3
};

/** Plays a pulse from a wave table once a period, over a share of the period given by the pulse width. A one-pole
    step takes the edge off every shape. */
class MVPulseWidthMod : public MVDspBase
{
public:
    static constexpr int tableSize = MVWaveforms::tableSize;

    MVPulseWidthMod();

    void init (bool on, double sampleRate) override;
    /** Phase and last output to 0; table and routine stay. */
    void reset() override;

    /** A table of MVWaveforms, such as MVWaveforms::instance().table (waveGlottalDerivative). Null is silence. */
    virtual void setTable (const double* newTable) { table = newTable; }
    /** A value of MVPulseModulation_t; any other is ignored. A new object is period locked. */
    virtual void setModulationType (std::int32_t type);

    /** Writes a block. The frequency is |startFrequency * frequencySignal| in Hz (a null signal counts as 1.0) and
        stays at startFrequency for the whole block; 0 and not a number run at 0.1 Hz, and so does anything above
        22050 Hz when shape modulated. pulseWidth and modulation are held to 0.001..1.0. out may be
        frequencySignal. */
    virtual void process (double* out, const double* frequencySignal, int frames, double startFrequency,
                          double endFrequency, double pulseWidth, double modulation);

    double getPhase() const { return phase; }

private:
    /** Renders count samples from their phase increments. */
    using Routine = void (MVPulseWidthMod::*) (double* out, const double* increments, int count, double width,
                                               double modulation);

    void stretchedAndOffset (double* out, const double* increments, int count, double width, double modulation);
    void periodLocked (double* out, const double* increments, int count, double width, double modulation);
    void shapeModulated (double* out, const double* increments, int count, double width, double modulation);
    void findIncrements (double* increments, const double* factors, int count, double frequency) const;
    template <typename Value>
    void render (double* out, const double* increments, int count, Value&& valueAt);

    double phasePerHz = 1.0 / 44100.0;
    const double* table = nullptr;
    double phase = 0.0;
    double lastOutput = 0.0;
    Routine generate = nullptr;
};

} // namespace morvanelab
