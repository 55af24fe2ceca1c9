// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpSampleHold.h"

#include "foundation/MVResult.h"

#include <cmath>

namespace morvanelab
{

namespace
{

constexpr double triggerLevel = 0.5;
constexpr double glideRate = 0.10000000149011612;

constexpr ParameterSpec parameters[] { choiceSpec ("Damping Type", "Damping Filter Type for Value Transitions",
                                                   offsetof (SampleHoldAttributes, dampingType), {}, 0) };

constexpr const char* inputNames[] { "Capture Signal", "Hold Trigger" };
constexpr const char* outputNames[] { "Hold Value" };

} // namespace

constinit const OperatorSpec MVOpSampleHold::spec {
    .typeId = 0xA70016,
    .className = "MVOpSampleHold",
    .shortName = "Sample Hold",
    .description = "Sample Hold and Capture.",
    .numInputs = 2,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (SampleHoldAttributes),
    .parameters = parameters,
    .sequenceRefusal = resultRefusedByClass,
};

MVOpSampleHold::MVOpSampleHold (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpSampleHold::reset()
{
    held = false;
    heldValue = output = 0.0;
}

void MVOpSampleHold::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                              int frames, const MVOpExecDesc& desc)
{
    double level = output;
    double target = heldValue;
    bool holding = held;

    for (int i = 0; i < frames; ++i)
    {
        const double trigger = inputs[1][i];

        if (! holding && trigger >= triggerLevel)
        {
            holding = true;
            target = std::isfinite (inputs[0][i]) ? inputs[0][i] : 0.0;
        }
        else if (holding && trigger < triggerLevel)
        {
            holding = false;
        }

        level += (target - level) * glideRate;
        outputs[0][i] = level;
    }

    held = holding;
    heldValue = target;
    // The way between two huge values may not be a number.
    output = std::isfinite (level) ? level : 0.0;
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
