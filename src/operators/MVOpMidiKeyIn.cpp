// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpMidiKeyIn.h"

#include "dsp/MVBlockMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr double defaultRatio = 0.3000000119;

constexpr ParameterSpec parameters[] {
    intSpec ("Key Transposition", "The detuning transposition for this node, in key key increments.",
             offsetof (MidiKeyInAttributes, keyTransposition), { -24, 48 }, 0),
    boolSpec ("Percussive Mode", "Percussive mode enable, for decaying velocity.",
              offsetof (MidiKeyInAttributes, percussiveMode), false),
    floatSpec ("Velocity Decay Rate", "Percussive mode velocity decay factor.",
               offsetof (MidiKeyInAttributes, velocityDecayRate), { 0.0, 4.0 }, defaultRatio),
    floatSpec ("Rest Velocity Ratio", "Rest velocity as ratio of initial velocity.",
               offsetof (MidiKeyInAttributes, restVelocityRatio), { 0.0, 4.0 }, defaultRatio)
};

constexpr const char* outputNames[] { "Output Pitch in Hz", "Output Midi Key Velocity" };

constexpr double centreBend = 0.5;
constexpr int highestKey = 127;

/** Hz of a key in equal temperament, A4 = key 69 = 440 Hz; the octave is divided in single precision. */
double pitchOfKey (int key)
{
    const float octaves = static_cast<float> (key - 69) / 12.0f;
    return 440.0 * std::exp2 (static_cast<double> (octaves));
}

/** Factor of a bend of 0 to 1: an octave down to an octave up. */
double bendFactor (double bend) { return bend == centreBend ? 1.0 : std::exp2 (2.0 * bend - 1.0); }

} // namespace

constinit const OperatorSpec MVOpMidiKeyIn::spec {
    .typeId = 0xA70004,
    .className = "MVOpMidiKeyIn",
    .shortName = "Midi Key In",
    .description = "A midi key-value to frequency value translator, with event velocity and percussive mode.",
    .numOutputs = 2,
    .outputNames = outputNames,
    .attributeSize = sizeof (MidiKeyInAttributes),
    .parameters = parameters,
};

MVOpMidiKeyIn::MVOpMidiKeyIn (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    bend.reset (centreBend);
    setAttributes (nullptr);
}

void MVOpMidiKeyIn::setActive (bool flag)
{
    MVOperator::setActive (flag);
    clearNote();
}

void MVOpMidiKeyIn::reset()
{
    clearNote();
    bend.reset (centreBend);
}

void MVOpMidiKeyIn::clearNote()
{
    pitch = previousPitch = 0.0;
    velocity = previousVelocity = targetVelocity = restVelocity = 0.0;
    decayTime = 0.0;
    decayStep = blockFrames / sampleRate();
    pitchRamp.reset();
    velocityRamp.reset();
}

void MVOpMidiKeyIn::setPitchBendControl (MVControlValue* control)
{
    bendControl = control;
    refreshControls();
}

void MVOpMidiKeyIn::noteEvent (int key, double newVelocity)
{
    if (newVelocity > 0.0)
    {
        pitch = pitchOfKey (std::max (1, std::clamp (key, 0, highestKey) + values.keyTransposition));
        velocity = targetVelocity = newVelocity;
        restVelocity = newVelocity * values.restVelocityRatio;
        decayTime = 0.0;
    }
    else if (values.percussiveMode == 0)
    {
        pitch = targetVelocity = 0.0;
        decayTime = 0.0;
    }
}

void MVOpMidiKeyIn::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                             int frames, const MVOpExecDesc& desc)
{
    if (values.percussiveMode != 0)
        decayVelocity();

    renderPitch (outputs[0], frames);
    velocityRamp.render (outputs[1], frames, previousVelocity, targetVelocity);
    previousPitch = pitch;
    previousVelocity = targetVelocity;
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

void MVOpMidiKeyIn::decayVelocity()
{
    constexpr double base = 2.718281828;
    const double envelope = std::pow (base, -values.velocityDecayRate * decayTime);
    decayTime += decayStep;
    targetVelocity = envelope * velocity + restVelocity;
}

void MVOpMidiKeyIn::renderPitch (double* out, int frames)
{
    bend.advance();

    if (values.percussiveMode != 0)
    {
        pitchRamp.render (out, frames, pitch, pitch);
        return;
    }

    // Not a slip: the old pitch takes the new bend and the new pitch the old one, as patches have always sounded.
    const double startFactor = bendFactor (bend.start (centreBend));
    const double endFactor = bendFactor (bend.end (centreBend));
    pitchRamp.render (out, frames, previousPitch * endFactor, pitch * startFactor);
}

void MVOpMidiKeyIn::SmoothedRamp::reset()
{
    smoother.reset();
    resting = false;
}

void MVOpMidiKeyIn::SmoothedRamp::render (double* out, int frames, double start, double end)
{
    const bool isHeld = start == end;

    if (isHeld && resting && start == heldValue)
    {
        blockFill (out, frames, restingValue);
        return;
    }

    rampFill (out, frames, start, end);
    smoother.processInPlace (out, frames);

    // Two equal values in a row, under an input that stands still: every further one is the same.
    const double last = out[frames - 1];
    resting = isHeld && frames > 1 && last == out[frames - 2] && std::isfinite (last);
    heldValue = start;
    restingValue = last;
}

} // namespace morvanelab
