// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpNoise.h"

#include "dsp/MVBlockMath.h"

namespace morvanelab
{

namespace
{

constexpr ChoiceSpec typeChoices[] { { noiseWhite, "White" }, { noiseBrown, "Brown" } };

constexpr ParameterSpec parameters[] {
    choiceSpec ("Noise Type", "The noise type.", offsetof (NoiseAttributes, noiseType), typeChoices, noiseWhite),
    boolSpec ("Interpolate", "Interpolates between random samples.", offsetof (NoiseAttributes, interpolate), false)
};

constexpr const char* inputNames[] { "Brownian Deviation", "Change Interval" };
constexpr const char* outputNames[] { "Noise Signal" };

} // namespace

constinit const OperatorSpec MVOpNoise::spec {
    .typeId = 0xA70012,
    .className = "MVOpNoise",
    .shortName = "Noise",
    .description = "A random signal source, which may be either brown or white noise pattern.",
    .numInputs = 2,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (NoiseAttributes),
    .parameters = parameters,
};

MVOpNoise::MVOpNoise (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpNoise::attributesChanged()
{
    if (! generator)
        return;
    generator->setNoiseType (values.noiseType);
    generator->setInterpolate (values.interpolate != 0);
}

void MVOpNoise::setActive (bool flag)
{
    MVOperator::setActive (flag);
    generator.reset();

    if (flag)
    {
        generator.emplace();
        generator->init (true, sampleRate());
        attributesChanged();
    }
}

void MVOpNoise::reset()
{
    if (generator)
    {
        generator->reset();
        generator->getRandom().restart();
    }

    interval.reset();
}

void MVOpNoise::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                         int frames, const MVOpExecDesc& desc)
{
    interval.advance();
    const double intervalScale = getInputScale (1) * interval.end();
    const MVControlValue* const control = controlOfInput (0);
    const double deviationScale = control != nullptr ? control->getPreviousValue() : 1.0;

    if (! generator)
        blockClear (outputs[0], frames);
    else if (desc.isInputConnected (1))
        generator->stepped (outputs[0], inputs[1], inputs[0], deviationScale, frames, intervalScale);
    else if (values.noiseType == noiseWhite)
        generator->white (outputs[0], frames);
    else
        generator->brownian (outputs[0], inputs[0], deviationScale, frames);

    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
