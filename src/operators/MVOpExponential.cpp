// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpExponential.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr MVFRange velocityRange { -10.0, 20.0 };
constexpr MVFRange levelRange { -1.0, 2.0 };

constexpr ParameterSpec parameters[] {
    floatSpec ("Attack Velocity", "Attack Velocity, power value of attack curve",
               offsetof (ExponentialAttributes, attackVelocity), velocityRange, 1.0),
    floatSpec ("Decay Velocity", "Decay Velocity, power value of decay curve",
               offsetof (ExponentialAttributes, decayVelocity), velocityRange, 2.0),
    floatSpec ("Full On", "Full On exponential value at end of attack", offsetof (ExponentialAttributes, fullOn),
               levelRange, 1.0),
    floatSpec ("Full Off", "Full Off exponential value at end of decay", offsetof (ExponentialAttributes, fullOff),
               levelRange, 0.0),
    floatSpec ("Attack Duration", "Attack Duration, time for full-on value to be reached",
               offsetof (ExponentialAttributes, attackDuration), { 0.009999999776482582, 4.990000000223517 }, 0.01),
    floatSpec ("Release Duration", "Decay Duration, time for full-off value to be reached after attack",
               offsetof (ExponentialAttributes, releaseDuration), { 0.004999999888241291, 9.995000000111759 }, 0.5),
    floatSpec ("Threshold", "Trigger Threshold, instantaneous trigger input value to start exponential envelope",
               offsetof (ExponentialAttributes, threshold), { 0.25, 0.7490000128746033 }, 0.8999999761581421)
};

constexpr const char* inputNames[] { "Input Modulated Signal", "Input Trigger Signal" };
constexpr const char* outputNames[] { "Output Modulated Signal", "Output Exponential Envelope" };

/** A slightly negative velocity asks for powers beyond the range of doubles; there the envelope is off. */
void replaceOverflow (double* out, int frames, double off)
{
    std::replace_if (
        out, out + frames, [] (double x) { return ! std::isfinite (x); }, off);
}

} // namespace

constinit const OperatorSpec MVOpExponential::spec {
    .typeId = 0xA70010,
    .className = "MVOpExponential",
    .shortName = "Exp-Env",
    .description = "An exponential envelope generator/filter.",
    .numInputs = 2,
    .numOutputs = 2,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (ExponentialAttributes),
    .parameters = parameters,
};

MVOpExponential::MVOpExponential (MVRenderEngineAttributes* renderAttributes,
                                  const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpExponential::attributesChanged()
{
    const auto samplesOf = [this] (double seconds) { return std::max (1, truncToInt (seconds * sampleRate())); };

    pulse.setShape ({ .attackSamples = samplesOf (values.attackDuration),
                      .decaySamples = samplesOf (values.releaseDuration),
                      .fullOn = values.fullOn,
                      .fullOff = values.fullOff,
                      .attackPower = values.attackVelocity,
                      .decayPower = values.decayVelocity });
}

void MVOpExponential::setActive (bool flag)
{
    MVOperator::setActive (flag);
    attributesChanged();
    pulse.reset();
}

bool MVOpExponential::isTriggered (const double* in, int frames, const MVOpExecDesc& desc) const
{
    return desc.isInputConnected (1)
           && values.threshold <= blockPeak (in, frames) * (getInputScale (1) * controlFactor (1));
}

void MVOpExponential::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                               int frames, const MVOpExecDesc& desc)
{
    if (isTriggered (inputs[1], frames, desc))
        pulse.trigger();

    const bool isMoving = ! pulse.isAtRest();
    pulse.process (outputs[1], frames);
    if (isMoving && values.decayVelocity <= 0.0)
        replaceOverflow (outputs[1], frames, values.fullOff);

    blockProduct (outputs[0], inputs[0], outputs[1], frames);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
