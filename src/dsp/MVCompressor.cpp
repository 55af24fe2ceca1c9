// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVCompressor.h"

#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

/** Where the peak scan of a frame starts: a frame without a single number in it lies far below every knee. */
constexpr double lowestPeak = -999999999.0;
constexpr double stepPerSample = 1.0 / MVCompressor::frameSize;
constexpr int lanes = 4;

double framePeak (const double* in)
{
    double peaks[lanes] { lowestPeak, lowestPeak, lowestPeak, lowestPeak };

    for (int i = 0; i < MVCompressor::frameSize; i += lanes)
        for (int lane = 0; lane < lanes; ++lane)
        {
            const double a = std::abs (in[i + lane]);
            peaks[lane] = a > peaks[lane] ? a : peaks[lane];
        }

    return std::max (std::max (peaks[0], peaks[1]), std::max (peaks[2], peaks[3]));
}

} // namespace

void MVCompressor::init (bool on, double newRate)
{
    MVDspBase::init (on, newRate);
    sampleRate = newRate;
    setRollOff (rollOffSeconds);
}

void MVCompressor::reset()
{
    peak = 1.0;
    holdFrames = holdStep = lastExcess = 0.0;
    delayed.fill (0.0);
    incoming.fill (0.0);
}

void MVCompressor::setRollOff (double seconds)
{
    rollOffSeconds = seconds;
    rollOffFrames = truncToInt (seconds * sampleRate) / frameSize;
}

void MVCompressor::setThreshold (double level)
{
    threshold = level;
    knee = threshold * ceiling;
}

void MVCompressor::setCeiling (double level)
{
    ceiling = level;
    knee = threshold * ceiling;
}

void MVCompressor::process (double* buffer, int frames)
{
    for (int done = 0; done + frameSize <= frames; done += frameSize)
        processFrame (buffer + done);
}

void MVCompressor::processFrame (double* buffer)
{
    std::copy_n (buffer, frameSize, incoming.data());

    const double excess = ceiling - knee + framePeak (incoming.data());
    const double gain = 1.0 / peak;
    double step = 0.0;
    const double reached = nextPeak (excess, gain, step);

    for (int i = 0; i < frameSize; ++i)
        buffer[i] = delayed[static_cast<std::size_t> (i)] * (gain + i * step);

    // An infinite sample must not mute what comes after it.
    if (! std::isfinite (reached) || ! std::isfinite (excess))
    {
        peak = 1.0;
        holdFrames = lastExcess = 0.0;
    }
    else
    {
        peak = std::max (reached, 1.0);
        lastExcess = excess;
    }

    delayed = incoming;
}

/** The peak that the gain is to have reached at the end of the frame, and the gain's step a sample towards it. */
double MVCompressor::nextPeak (double excess, double gain, double& step)
{
    double held = 1.0;

    if (holdFrames > 0.0)
    {
        held = peak - holdStep;
        holdFrames -= 1.0;
    }

    if (! (lastExcess > 1.0 || excess > 1.0 || held > 1.0))
        return peak;

    double reached = held;
    const bool falling = rollOffFrames > 0.0 && held > lastExcess && held > excess;

    if (! falling)
    {
        reached = excess == lastExcess ? peak : std::max (excess, lastExcess);
        holdFrames = rollOffFrames;
        holdStep = rollOffFrames > 0.0 ? reached / rollOffFrames : 0.0;
    }

    step = (ceiling / reached - gain) * stepPerSample;
    return reached;
}

} // namespace morvanelab
