// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpAdsrEnvelope.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr double releaseThreshold = 0.009999999776482582;
constexpr double shortestStage = 0.0010000000474974513;
constexpr MVFRange stageRange { shortestStage, 1.9989999999525025 };
constexpr MVFRange ratioRange { 0.009999999776482582, 0.9890000130981207 };

constexpr ParameterSpec parameters[] {
    floatSpec ("Attack", "Time duration of attack, in seconds", offsetof (AdsrEnvelopeAttributes, attack), stageRange,
               0.01),
    floatSpec ("Decay", "Time duration of decay, in seconds", offsetof (AdsrEnvelopeAttributes, decay), stageRange,
               0.1),
    floatSpec ("Release", "Time duration to release, in seconds", offsetof (AdsrEnvelopeAttributes, release),
               { shortestStage, 14.998999999952503 }, 0.3),
    floatSpec ("Sustain Ratio", "Amplitude of sustain segment, as ratio of attack velocity",
               offsetof (AdsrEnvelopeAttributes, sustainRatio), ratioRange, 0.6000000238418579),
    floatSpec ("Trigger Trheshold", "Amplitude of trigger signal required to trigger envelope",
               offsetof (AdsrEnvelopeAttributes, triggerThreshold), ratioRange, 0.1)
        .unfolded()
};

constexpr const char* inputNames[] { "Input Signal", "Trigger Signal" };
constexpr const char* outputNames[] { "Output Scaled", "Output Envelope" };

} // namespace

constinit const OperatorSpec MVOpAdsrEnvelope::spec {
    .typeId = 0xA70001,
    .className = "MVOpAdsrEnvelope",
    .shortName = "ADSR-Env",
    .description = "A signal-triggered ADSR envelope generator/filter with attack, decay, sustain, release parts.",
    .numInputs = 2,
    .numOutputs = 2,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (AdsrEnvelopeAttributes),
    .parameters = parameters,
};

MVOpAdsrEnvelope::MVOpAdsrEnvelope (MVRenderEngineAttributes* renderAttributes,
                                    const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpAdsrEnvelope::attributesChanged()
{
    // At least a sample, whatever the rate: a step is a share of the stage.
    const auto samplesOf = [this] (double seconds) { return std::max (1, truncToInt (seconds * sampleRate())); };

    attackSamples = samplesOf (values.attack);
    attackStep = 1.0 / attackSamples;
    decaySamples = samplesOf (values.decay);
    decayStep = (1.0 - values.sustainRatio) / decaySamples;
    releaseSamples = samplesOf (values.release);
    // Stands until the next release; one that runs goes on with it.
    releaseStep = 1.0 / releaseSamples;
}

void MVOpAdsrEnvelope::setActive (bool flag)
{
    MVOperator::setActive (flag);
    attributesChanged();
    reset();
}

void MVOpAdsrEnvelope::reset()
{
    enter (Stage::idle);
    level = 0.0;
}

void MVOpAdsrEnvelope::enter (Stage next)
{
    stage = next;
    stageSample = 0;
}

void MVOpAdsrEnvelope::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                                int frames, const MVOpExecDesc& desc)
{
    readTrigger (std::abs (inputs[1][0]) * controlFactor (1));
    render (outputs[1], frames);
    blockProduct (outputs[0], inputs[0], outputs[1], frames);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

void MVOpAdsrEnvelope::readTrigger (double trigger)
{
    const bool isOff = stage == Stage::idle || stage == Stage::release;

    if (! isOff && trigger < releaseThreshold)
    {
        enter (Stage::release);
        releaseStep = level / releaseSamples;
    }
    else if (isOff && trigger > values.triggerThreshold)
    {
        enter (Stage::attack);
    }
}

/** A stage that ends within the block hands over to the next one at the next sample. */
void MVOpAdsrEnvelope::render (double* out, int frames)
{
    int done = 0;

    if (stage == Stage::attack)
    {
        done += ramp (out, frames, attackSamples, attackStep);
        if (stageSample >= attackSamples)
            enter (Stage::decay);
    }
    if (stage == Stage::decay)
    {
        done += ramp (out + done, frames - done, decaySamples, -decayStep);
        if (stageSample >= decaySamples)
            enter (Stage::sustain);
    }
    if (stage == Stage::sustain)
    {
        blockFill (out + done, frames - done, level);
        done = frames;
    }
    if (stage == Stage::release)
        done += fall (out + done, frames - done);
    if (stage == Stage::idle)
        blockClear (out + done, frames - done);
}

/** Steps before it stores. A stage that was shortened while it ran has nothing left. */
int MVOpAdsrEnvelope::ramp (double* out, int room, int length, double step)
{
    const int count = std::clamp (length - stageSample, 0, room);
    double running = level;

    for (int i = 0; i < count; ++i)
    {
        running += step;
        out[i] = running;
    }

    level = running;
    stageSample += count;
    return count;
}

/** Stores before it steps, so that a release starts at the level it found. */
int MVOpAdsrEnvelope::fall (double* out, int room)
{
    const int count = std::clamp (releaseSamples - stageSample, 0, room);
    double running = level;

    for (int i = 0; i < count; ++i)
    {
        out[i] = running;
        running -= releaseStep;
    }

    level = running;
    stageSample += count;
    if (stageSample >= releaseSamples)
        reset();
    return count;
}

} // namespace morvanelab
