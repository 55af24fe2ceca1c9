// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpConstantPcm.h"

#include "dsp/MVBlockMath.h"

namespace morvanelab
{

namespace
{

constexpr ParameterSpec parameters[] { floatSpec ("value", "Constant value", offsetof (ConstantPcmAttributes, value),
                                                  { 0.0, 32768.0 }, 0.0) };

constexpr const char* outputNames[] { "Output Value" };

} // namespace

constinit const OperatorSpec MVOpConstantPcm::spec {
    .typeId = 0xA70002,
    .className = "MVOpConstantPcm",
    .shortName = "Constant",
    .description = "Generation of a constant, unvarying value.",
    .numOutputs = 1,
    .outputNames = outputNames,
    .attributeSize = sizeof (ConstantPcmAttributes),
    .parameters = parameters,
};

MVOpConstantPcm::MVOpConstantPcm (MVRenderEngineAttributes* renderAttributes,
                                  const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpConstantPcm::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                               int frames, const MVOpExecDesc& desc)
{
    blockFill (outputs[0], frames, values.value);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
