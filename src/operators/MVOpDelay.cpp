// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpDelay.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <cmath>

namespace morvanelab
{

namespace
{

constexpr ParameterSpec parameters[] {
    floatSpec ("Post Delay Scalar", "After delay signal scaled by this amount.  Should be an attenuation value.",
               offsetof (DelayAttributes, postDelayScalar), { 0.0010000000474974513, 0.9890000094892457 }, 0.5),
    floatSpec ("Max Delay (sec)", "Maximum time duration of delay, in seconds.", offsetof (DelayAttributes, maxDelay),
               { 0.0, 5.0 }, 1.0)
};

constexpr const char* inputNames[] { "Input Signal", "Duration Ratio" };
constexpr const char* outputNames[] { "Output Signal" };

} // namespace

constinit const OperatorSpec MVOpDelay::spec {
    .typeId = 0xA70003,
    .className = "MVOpDelay",
    .shortName = "Delay",
    .description = "A signal delay of variant time duration.",
    .numInputs = 2,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .controlInputs = 0b10,
    .attributeSize = sizeof (DelayAttributes),
    .parameters = parameters,
};

MVOpDelay::MVOpDelay (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpDelay::prepareLine()
{
    lineSeconds = values.maxDelay;
    line.setMaxDelay (lineSeconds);
    line.init (isActive(), sampleRate());
    lastRatio = noRatio;
}

void MVOpDelay::attributesChanged()
{
    if (values.maxDelay != lineSeconds)
        prepareLine();
}

void MVOpDelay::setActive (bool flag)
{
    MVOperator::setActive (flag);
    prepareLine();
}

void MVOpDelay::reset()
{
    line.reset();
    lastRatio = noRatio;
}

std::size_t MVOpDelay::runtimeBytes() const
{
    const double samples = std::ceil (values.maxDelay * sampleRate()) + 1.0;
    return sizeof (*this) + static_cast<std::size_t> (truncToInt (samples)) * sizeof (double);
}

void MVOpDelay::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                         int frames, const MVOpExecDesc& desc)
{
    const double ratio = limitTo (limitTo (inputs[1][0], 0.0, 1.0) * controlFactor (1), 0.0, 1.0);

    if (ratio != lastRatio)
    {
        line.setDuration (ratio);
        lastRatio = ratio;
    }

    line.process (frames, inputs[0], outputs[0]);
    blockScale (outputs[0], frames, values.postDelayScalar);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
