// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpInput.h"

#include "dsp/MVBlockMath.h"

namespace morvanelab
{

namespace
{

constexpr int mostInputChannels = 4;

constexpr ParameterSpec parameters[] { intSpec ("Input Channel", "The input channel from which signal originates.",
                                                offsetof (InputAttributes, inputChannel), { 0, mostInputChannels }, 0)
                                           .limitedByInputChannels() };

constexpr const char* outputNames[] { "Signal from Input" };

} // namespace

constinit const OperatorSpec MVOpInput::spec {
    .typeId = 0xA7000C,
    .className = "MVOpInput",
    .shortName = "Input",
    .description = "Input audio signal from OS-routed sources.",
    .numOutputs = 1,
    .outputNames = outputNames,
    .attributeSize = sizeof (InputAttributes),
    .parameters = parameters,
};

MVOpInput::MVOpInput (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpInput::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                         int frames, const MVOpExecDesc& desc)
{
    // The engine may have fewer channels now than when the attributes were folded.
    if (values.inputChannel < inputCount)
        blockCopy (outputs[0], inputs[values.inputChannel], frames);
    else
        blockClear (outputs[0], frames);

    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
