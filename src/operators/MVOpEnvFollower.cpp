// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpEnvFollower.h"

namespace morvanelab
{

namespace
{

constexpr ParameterSpec parameters[] { floatSpec (
    "Decay Rate", "A decay factor for following envelope (larger = longer).",
    offsetof (EnvFollowerAttributes, decayRate), { 0.004999999888241291, 9.995000000111759 }, 1.0) };

constexpr const char* inputNames[] { "Input Signal" };
constexpr const char* outputNames[] { "Output Follower Signal" };

} // namespace

constinit const OperatorSpec MVOpEnvFollower::spec {
    .typeId = 0xA7000D,
    .className = "MVOpEnvFollower",
    .shortName = "Env Follower",
    .description = "An implementation of a positive value asignal amplitude envelope follower, varying decay time.",
    .numInputs = 1,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (EnvFollowerAttributes),
    .parameters = parameters,
};

MVOpEnvFollower::MVOpEnvFollower (MVRenderEngineAttributes* renderAttributes,
                                  const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpEnvFollower::setActive (bool flag)
{
    MVOperator::setActive (flag);
    follower.setDecayStep (values.decayRate);
    follower.init (flag, sampleRate());
    follower.reset();
}

void MVOpEnvFollower::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                               int frames, const MVOpExecDesc& desc)
{
    follower.process (outputs[0], inputs[0], frames);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
