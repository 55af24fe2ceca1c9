// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpSampler.h"

#include "foundation/MVMath.h"

namespace morvanelab
{

namespace
{

/** The rate at which the capacity counts in seconds, whatever rate the engine runs at. */
constexpr double capacityRate = 44100.0;

constexpr ParameterSpec parameters[] { floatSpec ("Sampler time capacity",
                                                  "Time capacity of sampler, in seconds at default sample rate.",
                                                  offsetof (SamplerAttributes, capacity), { 0.25, 9.75 }, 2.0) };

constexpr const char* inputNames[] { "Input Signal", "Input Record Trigger", "Input Loop Start Offset",
                                     "Input Loop Duration", "Input Playback Rate" };
constexpr const char* outputNames[] { "Output Signal" };

} // namespace

constinit const OperatorSpec MVOpSampler::spec {
    .typeId = 0xA70011,
    .className = "MVOpSampler",
    .shortName = "Sampler",
    .description = "A signal sampler of variant time duration.",
    .numInputs = 5,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (SamplerAttributes),
    .parameters = parameters,
};

MVOpSampler::MVOpSampler (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpSampler::attributesChanged()
{
    const int samples = isActive() ? truncToInt (values.capacity * capacityRate) : 0;
    if (samples != looper.getCapacity())
        looper.setCapacity (samples);
}

std::size_t MVOpSampler::runtimeBytes() const
{
    return sizeof (*this) + static_cast<std::size_t> (truncToInt (values.capacity * capacityRate)) * sizeof (double);
}

void MVOpSampler::setActive (bool flag)
{
    MVOperator::setActive (flag);
    attributesChanged();
    looper.reset();
}

void MVOpSampler::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                           int frames, const MVOpExecDesc& desc)
{
    const double offsetFactor = controlOfInput (2) != nullptr ? controlFactor (2) : 0.0;

    looper.process (outputs[0], inputs[0], frames,
                    { .recordTrigger = inputs[1][0] * controlFactor (1),
                      .startOffset = inputs[2][0] * offsetFactor,
                      .loopDuration = inputs[3][0] * controlFactor (3),
                      .playbackRate = inputs[4][0] * controlFactor (4) });
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
