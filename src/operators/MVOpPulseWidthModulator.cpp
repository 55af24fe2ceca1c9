// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpPulseWidthModulator.h"

namespace morvanelab
{

namespace
{

constexpr ChoiceSpec pulseChoices[] { { 1, "Sine Period" },           { 2, "Square Period" },
                                      { 3, "Triangle Period" },       { 4, "Sawtooth Period" },
                                      { 5, "Hanning Pulse" },         { 6, "Square Pulse" },
                                      { 7, "Parabolic Pulse" },       { 8, "Glottal Pulse" },
                                      { 9, "Inverse Glottal Pulse" }, { 10, "Cardinal Sine Pulse" },
                                      { 11, "Glottal Derivative" } };
static_assert (std::size (pulseChoices) == waveformCount);

constexpr ChoiceSpec modulationChoices[] { { pulseStretchedAndOffset, "Stretched and Offset" },
                                           { pulsePeriodLocked, "Period Locked" },
                                           { pulseShapeModulated, "Shape Modulated" } };

constexpr ParameterSpec parameters[] {
    choiceSpec ("Pulse Type", "Pulse shape function.", offsetof (PulseWidthModulatorAttributes, pulseType),
                pulseChoices, waveSquarePulse + 1),
    choiceSpec ("Modulation Type", "Pulse duty cycle modulation type.",
                offsetof (PulseWidthModulatorAttributes, modulationType), modulationChoices, pulsePeriodLocked)
};

constexpr const char* inputNames[] { "Frequency", "Pulse Width", "Modulator" };
constexpr const char* outputNames[] { "Periodic Pulse" };

} // namespace

constinit const OperatorSpec MVOpPulseWidthModulator::spec {
    .typeId = 0xA70017,
    .className = "MVOpPulseWidthModulator",
    .shortName = "PWM",
    .description = "Pulse Width Modulation Generator",
    .numInputs = 3,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (PulseWidthModulatorAttributes),
    .parameters = parameters,
};

MVOpPulseWidthModulator::MVOpPulseWidthModulator (MVRenderEngineAttributes* renderAttributes,
                                                  const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpPulseWidthModulator::attributesChanged()
{
    pulse.setTable (MVWaveforms::instance().table (values.pulseType - 1));
    pulse.setModulationType (values.modulationType);
}

void MVOpPulseWidthModulator::setActive (bool flag)
{
    MVOperator::setActive (flag);
    pulse.init (flag, sampleRate());
}

void MVOpPulseWidthModulator::reset()
{
    pulse.reset();
    frequency.reset();
}

void MVOpPulseWidthModulator::process (int inputCount, const double* const* inputs, int outputCount,
                                       double* const* outputs, int frames, const MVOpExecDesc& desc)
{
    frequency.advance();
    const double scale = getInputScale (0);
    const double pulseWidth = inputs[1][0] * controlFactor (1);
    const double modulation = inputs[2][0] * controlFactor (2);
    pulse.process (outputs[0], inputs[0], frames, scale * frequency.start(), scale * frequency.end(), pulseWidth,
                   modulation);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
