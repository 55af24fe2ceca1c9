// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpSmoother.h"

#include "foundation/MVMath.h"

namespace morvanelab
{

namespace
{

constexpr int centeredAtZero = 1;
constexpr double mostSmoothing = 0.9998999834060669;

constexpr ChoiceSpec centerChoices[] { { centeredAtZero, "Center at zero" }, { 2, "Center at Half" } };

constexpr ParameterSpec parameters[] { choiceSpec ("Center Smooth Pos", "Center smoothing position",
                                                   offsetof (SmootherAttributes, centerSmoothPos), centerChoices,
                                                   centeredAtZero) };

constexpr const char* inputNames[] { "Input Signal", "Smoothing Factor" };
constexpr const char* outputNames[] { "Smoother Signal" };

} // namespace

constinit const OperatorSpec MVOpSmoother::spec {
    .typeId = 0xA7001B,
    .className = "MVOpSmoother",
    .shortName = "Smoother",
    .description = "Lowpass signal smoother",
    .numInputs = 2,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (SmootherAttributes),
    .parameters = parameters,
};

MVOpSmoother::MVOpSmoother (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpSmoother::setActive (bool flag)
{
    MVOperator::setActive (flag);
    smoother.reset();
}

double MVOpSmoother::rateFor (double factor) const
{
    const double smoothing = values.centerSmoothPos == centeredAtZero ? (factor + 1.0) * 0.5 : factor;
    const double rest = 1.0 - limitTo (smoothing, 0.0, mostSmoothing);
    return rest * rest * rest * rest * rest;
}

void MVOpSmoother::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                            int frames, const MVOpExecDesc& desc)
{
    smoother.setRate (rateFor (getInputScale (1) * inputs[1][0] * controlFactor (1)));
    smoother.process (outputs[0], inputs[0], frames);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
