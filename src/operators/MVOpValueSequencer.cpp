// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpValueSequencer.h"

#include <cmath>

namespace morvanelab
{

namespace
{

constexpr double triggerLevel = 0.5;
constexpr double fullScale = 32767.0;
constexpr double highestQuantization = 0.25;
constexpr double lowestSmoothing = 0.009999999776482582;
constexpr double highestSmoothing = 0.9999989867210388;
constexpr double startScale = 16.0;
/** An end offset of 1.0 is the last stage. */
constexpr double endScale = 15.99899959564209;

enum Input : int
{
    stepTrigger,
    quantizationFactor,
    smoothingFactor,
    startOffset,
    endOffset
};

constexpr ParameterSpec parameters[] { sequenceSpec ("Stage Values", "Sequencer stage values",
                                                     offsetof (ValueSequencerAttributes, stageValues)) };

constexpr const char* inputNames[] { "Step Trigger", "Quantization Factor", "Smoothing Factor", "Start Stage Offset",
                                     "End Stage Offset" };
constexpr const char* outputNames[] { "Output Value", "Stage Counter" };

} // namespace

constinit const OperatorSpec MVOpValueSequencer::spec {
    .typeId = 0xA70014,
    .className = "MVOpValueSequencer",
    .shortName = "Value Sequence",
    .description = "A multistage triggered value sequencer.",
    .numInputs = 5,
    .numOutputs = 2,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (ValueSequencerAttributes),
    .parameters = parameters,
};

MVOpValueSequencer::MVOpValueSequencer (MVRenderEngineAttributes* renderAttributes,
                                        const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpValueSequencer::reset()
{
    triggered = false;
    stage.reset();
    target = output = 0.0;
}

double MVOpValueSequencer::stageTarget (double quantization) const
{
    int value = values.stageValues[stage.index()];
    const int grid = truncToInt (limitTo (quantization, 0.0, highestQuantization) * fullScale);
    if (grid != 0)
        value -= value % grid;
    return value / fullScale;
}

void MVOpValueSequencer::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                                  int frames, const MVOpExecDesc& desc)
{
    const double quantization = controlFactor (quantizationFactor);
    const double smoothing = controlFactor (smoothingFactor);
    const double start = controlFactor (startOffset);
    const double end = controlFactor (endOffset);

    double level = output;
    double counter = stage.index();

    for (int i = 0; i < frames; ++i)
    {
        const double trigger = inputs[stepTrigger][i];

        if (! triggered && trigger >= triggerLevel)
        {
            triggered = true;
            stage.step (start * inputs[startOffset][i] * startScale, end * inputs[endOffset][i] * endScale);
            target = stageTarget (quantization * inputs[quantizationFactor][i]);
            counter = stage.index();
        }
        else if (triggered && trigger < triggerLevel)
        {
            triggered = false;
        }

        const double kept =
            std::sqrt (limitTo (smoothing * inputs[smoothingFactor][i], lowestSmoothing, highestSmoothing));
        level += (1.0 - kept) * (target - level);
        outputs[0][i] = level;
        outputs[1][i] = counter;
    }

    output = level;
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
