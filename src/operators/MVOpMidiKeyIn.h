// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVSignalSmoother.h"
#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct MidiKeyInAttributes
{
    double velocityDecayRate;
    double restVelocityRatio;
    std::int32_t keyTransposition;
    std::uint8_t percussiveMode;
    std::uint8_t padding[3];
};
static_assert (sizeof (MidiKeyInAttributes) == 24);

/** The pitch in Hz and the velocity of the voice's key, both smoothed. Pitch bend spans an octave either way; in
    percussive mode there is no bend, a note off changes nothing, and the velocity decays block by block. */
class MVOpMidiKeyIn final : public MVOpWithAttributes<MVOpMidiKeyIn, MidiKeyInAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpMidiKeyIn (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    void refreshControls() override { bend.control = isActive() ? bendControl : nullptr; }
    void setPitchBendControl (MVControlValue* control) override;
    void noteEvent (int key, double velocity) override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    /** A smoothed ramp. Once the smoother rests on a held value, the block is filled with where it rests. */
    class SmoothedRamp
    {
    public:
        void reset();
        void render (double* out, int frames, double start, double end);

    private:
        MVSignalSmoother smoother;
        bool resting = false;
        double heldValue = 0.0;
        double restingValue = 0.0;
    };

    void clearNote();
    void renderPitch (double* out, int frames);
    void decayVelocity();

    double pitch = 0.0;
    double previousPitch = 0.0;
    double velocity = 0.0;
    double previousVelocity = 0.0;
    double targetVelocity = 0.0;
    double restVelocity = 0.0;
    double decayTime = 0.0; ///< in seconds of whole blocks
    double decayStep = 0.0;
    SmoothedRamp pitchRamp;
    SmoothedRamp velocityRamp;
    const MVControlValue* bendControl = nullptr;
    PortControlTrack bend;
};

} // namespace morvanelab
