// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpPassThrough.h"

#include "dsp/MVBlockMath.h"

namespace morvanelab
{

namespace
{
constexpr const char* inputNames[] { "Input Signal" };
constexpr const char* outputNames[] { "Output Signal" };
} // namespace

// The class name is not the class's own, on purpose.
constinit const OperatorSpec MVOpPassThrough::spec {
    .typeId = 0xA7000B,
    .className = "MVOpWire",
    .shortName = "Thru",
    .description = "An inactive operator, which simply copies its input to its output",
    .numInputs = 1,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
};

MVOpPassThrough::MVOpPassThrough (MVRenderEngineAttributes* renderAttributes,
                                  const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpPassThrough::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                               int frames, const MVOpExecDesc& desc)
{
    blockCopy (outputs[0], inputs[0], frames);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
