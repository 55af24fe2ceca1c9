// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpProduct.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

/** A request from here on is refused; below it, it is bounded to what can be bound. */
constexpr int refusedPortCount = 64;

std::string inputName (const void*, int port) { return numberedPortName ("Product Input Signal #", port); }

constexpr const char* outputNames[] { "Product Output Signal" };

} // namespace

constinit const OperatorSpec MVOpProduct::spec {
    .typeId = 0xA70007,
    .className = "MVOpProduct",
    .shortName = "Product",
    .description = "Multiplies all of its inputs (by signal type) and directs "
                   "                                                   the arithmetic product to its output.",
    .numInputs = 4,
    .numOutputs = 1,
    .outputNames = outputNames,
    .inputNameOf = inputName,
    .inputCountOf = inputCountOf,
    .attributeSize = sizeof (VariableInputAttributes),
    .fields = variableInputFields,
};

MVOpProduct::MVOpProduct (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpVariableInputs (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

bool MVOpProduct::setPortCount (int direction, int count)
{
    if ((direction != portsIn && direction != portsOut) || count < 0 || count == portCount (direction)
        || count >= refusedPortCount)
        return false;

    if (direction == portsIn)
        storeInputCount (count);
    else
        changePortCount (portsOut, count);
    return true;
}

void MVOpProduct::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                           int frames, const MVOpExecDesc& desc)
{
    for (int i = 1; i < outputCount; ++i)
        blockClear (outputs[i], frames);

    if (outputCount > 0)
    {
        startWithFirstInput (outputs[0], inputCount, inputs, frames);

        for (int i = 1; i < std::min (inputCount, maxOperatorPorts); ++i)
        {
            const GainEnds gain = nextGain (i);
            if (! desc.isInputConnected (i))
                continue;
            if (gain.isUnity())
                blockMultiply (outputs[0], inputs[i], frames);
            else
                rampProduct (outputs[0], inputs[i], frames, gain.start, gain.end);
        }
    }

    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
