// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpPitchTracker.h"

#include "dsp/MVBlockMath.h"
#include "dsp/MVSpectralMath.h"
#include "dsp/MVSpectrumAnalyzer.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

constexpr const char* inputNames[] { "Input Signal" };
constexpr const char* outputNames[] { "Instant Pitch Value" };

} // namespace

constinit const OperatorSpec MVOpPitchTracker::spec {
    .typeId = 0xA7000E,
    .className = "MVOpPitchTracker",
    .shortName = "Pitch Tracker",
    .description = "Performs a frequency analysis of PCM input signal and generates "
                   "                                                    a control value to represent the dominant "
                   "frequency in Hz.",
    .numInputs = 1,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
};

MVOpPitchTracker::MVOpPitchTracker (MVRenderEngineAttributes* renderAttributes,
                                    const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpPitchTracker::setActive (bool flag)
{
    MVOperator::setActive (flag);
    if (flag)
    {
        prepareSpectra (frameSize / 2);
        MVSpectrumAnalyzer::instance();
    }
    reset();
}

void MVOpPitchTracker::reset()
{
    fill = 0;
    lastPitch = 0.0;
}

void MVOpPitchTracker::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                                int frames, const MVOpExecDesc& desc)
{
    const int taken = std::min (frames, frameSize - fill);
    blockCopy (frame.data() + fill, inputs[0], taken);
    fill += taken;

    double pitch = lastPitch;
    if (fill == frameSize)
    {
        fill = 0;
        pitch = pitchOfFrame();
    }

    rampFill (outputs[0], frames, lastPitch, pitch);
    lastPitch = pitch;
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

double MVOpPitchTracker::pitchOfFrame()
{
    constexpr double half = frameSize / 2;
    applyWindow (frame.data(), frameSize);
    forwardFft (frame.data(), frameSize / 2);
    const int bin = MVSpectrumAnalyzer::instance().peakBin (frame.data(), frameSize);
    return (half - bin) / half * sampleRate() * 0.5;
}

} // namespace morvanelab
