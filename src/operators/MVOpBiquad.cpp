// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpBiquad.h"

namespace morvanelab
{

namespace
{

constexpr double initialBandwidth = 0.5;

constexpr ChoiceSpec typeChoices[] { { filterLowpass, "Lowpass" },
                                     { filterHighpass, "Highpass" },
                                     { filterBandpass, "Bandpass" },
                                     { filterNotch, "Notch" },
                                     { filterAllpass, "Allpass" } };

constexpr ParameterSpec parameters[] { choiceSpec (
    "Filter Type", "Filter Type", offsetof (BiquadAttributes, filterType), typeChoices, filterBandpass) };

constexpr const char* inputNames[] { "Center Frequency ", "Q", "Unused", "Input Signal" };
constexpr const char* outputNames[] { "Output Signal" };

} // namespace

constinit const OperatorSpec MVOpBiquad::spec {
    .typeId = 0xA7000F,
    .className = "MVOpBiquad",
    .shortName = "Biquad",
    .description = "Biquad IIR Filter",
    .numInputs = 4,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .controlInputs = 0b0111,
    .attributeSize = sizeof (BiquadAttributes),
    .parameters = parameters,
};

MVOpBiquad::MVOpBiquad (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpBiquad::attributesChanged()
{
    filter.emplace();
    filter->setFilterType (values.filterType);
    filter->init (isActive(), sampleRate());
}

void MVOpBiquad::setActive (bool flag)
{
    MVOperator::setActive (flag);
    filter->init (flag, sampleRate());
    slowDown();
}

void MVOpBiquad::reset()
{
    filter->reset();
    slowDown();
}

void MVOpBiquad::slowDown()
{
    filter->setSmoothing (1.0 / sampleRate());
    filter->setBandwidth (initialBandwidth);
}

void MVOpBiquad::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                          int frames, const MVOpExecDesc& desc)
{
    filter->setFrequency (getInputScale (0) * controlFactor (0) * inputs[0][0]);
    filter->setBandwidth (getInputScale (1) * controlFactor (1) * inputs[1][0]);
    filter->process (outputs[0], inputs[3], frames, true);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
