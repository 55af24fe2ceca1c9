// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpOscillator.h"

#include "dsp/MVBlockMath.h"

namespace morvanelab
{

namespace
{

constexpr ChoiceSpec functionChoices[] { { 1, "Sine" }, { 2, "Square" }, { 3, "Triangle" }, { 4, "Sawtooth" } };

// The phase is shown as radians of half a turn, yet acts as a fraction of the cycle and is folded as one.
constexpr ParameterSpec parameters[] { choiceSpec ("Function Type", "The oscillating waveform.",
                                                   offsetof (OscillatorAttributes, functionType), functionChoices, 1),
                                       floatSpec ("Phase", "The phase of oscillation in radians.",
                                                  offsetof (OscillatorAttributes, phase), { 0.0, 3.1415927410125732 },
                                                  0.0)
                                           .foldedInto ({ 0.0, 1.0 }) };

// The second name answers for a port that no oscillator has.
constexpr const char* inputNames[] { "Frequency Signal", "Phase Signal" };
constexpr const char* outputNames[] { "Output Signal" };

/** The record of early patches is not read: the defaults stand in. */
StoredRecord readOlderRecord (std::uint32_t version, std::span<const std::byte>, void*)
{
    constexpr std::uint32_t firstReadable = 9300;
    return version < firstReadable ? StoredRecord::older : StoredRecord::current;
}

} // namespace

constinit const OperatorSpec MVOpOscillator::spec {
    .typeId = 0xA70005,
    .className = "MVOpOscillator",
    .shortName = "Oscillator",
    .description = "An oscillating waveform generator.  Available waveforms are SINE, SQUARE, SAWTOOTH, TRIANGLE.",
    .numInputs = 1,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (OscillatorAttributes),
    .parameters = parameters,
    .readOlder = readOlderRecord,
};

MVOpOscillator::MVOpOscillator (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpOscillator::attributesChanged()
{
    oscillator.emplace (values.functionType);
    oscillator->setPhaseOffset (values.phase);
    oscillator->init (isActive(), sampleRate());
}

void MVOpOscillator::setActive (bool flag)
{
    MVOperator::setActive (flag);
    oscillator->init (flag, sampleRate());
}

void MVOpOscillator::reset()
{
    oscillator->reset();
    frequency.reset();
}

void MVOpOscillator::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                              int frames, const MVOpExecDesc& desc)
{
    frequency.advance();
    const double start = getInputScale (0) * frequency.start();
    const double end = getInputScale (0) * frequency.end();

    // A steady frequency gives the same steps without a signal, at half the cost.
    if (start == end && blockIsConstant (inputs[0], frames))
        oscillator->process (outputs[0], nullptr, frames, start * inputs[0][0], end * inputs[0][0]);
    else
        oscillator->process (outputs[0], inputs[0], frames, start, end);

    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
