// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpSum.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

/** The highest mean level that leaves the sum. */
constexpr double fullLevel = 32768.0;

std::string inputName (const void*, int port) { return numberedPortName ("Mixer Input Signal #", port); }

constexpr const char* outputNames[] { "Mixed Output Signal" };

} // namespace

constinit const OperatorSpec MVOpSum::spec {
    .typeId = 0xA70009,
    .className = "MVOpSum",
    .shortName = "Sum",
    .description = "Adds all of its inputs (by signal type) and directs the arithmetic sum to its output.",
    .numInputs = 4,
    .numOutputs = 1,
    .outputNames = outputNames,
    .inputNameOf = inputName,
    .inputCountOf = inputCountOf,
    .attributeSize = sizeof (VariableInputAttributes),
    .fields = variableInputFields,
};

MVOpSum::MVOpSum (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpVariableInputs (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

bool MVOpSum::setPortCount (int direction, int count)
{
    if (direction != portsIn || count < 0 || count == portCount (portsIn) || count >= maxOperatorPorts)
        return false;

    storeInputCount (count);
    return true;
}

void MVOpSum::reset()
{
    MVOpVariableInputs::reset();
    lastGain = 1.0;
}

void MVOpSum::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                       const MVOpExecDesc& desc)
{
    double* const out = outputs[0];
    startWithFirstInput (out, inputCount, inputs, frames);

    for (int i = 1; i < std::min (inputCount, maxOperatorPorts); ++i)
    {
        const GainEnds gain = nextGain (i);
        if (gain.isUnity())
            blockAdd (out, inputs[i], frames);
        else
            rampMix (out, inputs[i], frames, gain.start, gain.end);
    }

    limitLevel (out, frames);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

void MVOpSum::limitLevel (double* out, int frames)
{
    const double level = blockRms (out, frames);
    if (! (level > 0.0))
        return;

    const double gain = std::min (1.0, fullLevel / level);

    // A gain of 1.0 throughout would give the same bits.
    if (gain != 1.0 || lastGain != 1.0)
        rampMultiply (out, frames, lastGain, gain);
    lastGain = gain;
}

} // namespace morvanelab
