// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpTimeSequencer.h"

#include "dsp/MVBlockMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr std::int32_t pulseLength = 32;
constexpr std::int32_t shortestStage = pulseLength + 1;
constexpr double fullScale = 32767.0;
constexpr double lowestRate = 0.009999999776482582;
constexpr double highestRate = 50.0;
constexpr double startScale = 15.0;
/** An end offset of 1.0 is the last stage. */
constexpr double endScale = 15.99899959564209;

enum Input : int
{
    rateScalar,
    startOffset,
    endOffset
};

constexpr ParameterSpec parameters[] { sequenceSpec ("Stage Intervals", "Sequence Intervals",
                                                     offsetof (TimeSequencerAttributes, stageIntervals)) };

constexpr const char* inputNames[] { "Rate Scalar", "Stage Start Offset", "Stage End Offset" };
constexpr const char* outputNames[] { "Output Pulse", "Stage Counter" };

/** Patches rely on it that what the first node of the list feeds does not count. */
bool isFedFromBehindFirstNode (const MVOpExecDesc& desc, int port)
{
    return desc.isInputConnected (port) && desc.inputSrcNode[port] > 0;
}

} // namespace

constinit const OperatorSpec MVOpTimeSequencer::spec {
    .typeId = 0xA70015,
    .className = "MVOpTimeSequencer",
    .shortName = "Time Sequence",
    .description = "A multistage triggered time interval sequencer.",
    .numInputs = 3,
    .numOutputs = 2,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (TimeSequencerAttributes),
    .parameters = parameters,
};

MVOpTimeSequencer::MVOpTimeSequencer (MVRenderEngineAttributes* renderAttributes,
                                      const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpTimeSequencer::attributesChanged()
{
    const double rate = sampleRate();
    std::transform (std::begin (values.stageIntervals), std::end (values.stageIntervals), std::begin (intervals),
                    [rate] (std::int16_t stored)
                    { return std::max (shortestStage, truncToInt (stored / fullScale * rate)); });
}

void MVOpTimeSequencer::setActive (bool flag)
{
    MVOperator::setActive (flag);
    attributesChanged();
}

void MVOpTimeSequencer::reset()
{
    stage.reset();
    samplesLeft = pulseLeft = 0;
}

void MVOpTimeSequencer::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                                 int frames, const MVOpExecDesc& desc)
{
    const auto firstSample = [&] (int port, double unconnected)
    { return isFedFromBehindFirstNode (desc, port) ? std::abs (inputs[port][0]) * controlFactor (port) : unconnected; };
    const double rate = limitTo (firstSample (rateScalar, 1.0), lowestRate, highestRate);
    const double start = firstSample (startOffset, 0.0) * startScale;
    const double end = firstSample (endOffset, 1.0) * endScale;

    for (int i = 0; i < frames;)
    {
        const int pulse = std::min (pulseLeft, frames - i);
        const int rest = std::clamp (samplesLeft - pulse, 0, frames - i - pulse);
        blockFill (outputs[0] + i, pulse, 1.0);
        blockClear (outputs[0] + i + pulse, rest);
        blockFill (outputs[1] + i, pulse + rest, stage.index());
        pulseLeft -= pulse;
        samplesLeft -= pulse + rest;
        i += pulse + rest;

        if (samplesLeft <= 0)
        {
            pulseLeft = pulseLength;
            stage.step (start, end);
            samplesLeft = std::max (shortestStage, truncToInt (intervals[stage.index()] / rate));
        }
    }

    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
