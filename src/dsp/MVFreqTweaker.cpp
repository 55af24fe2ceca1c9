// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVFreqTweaker.h"

#include "dsp/MVBlockMath.h"
#include "dsp/MVSpectralMath.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

/** A frame that goes beyond this is dropped: the sum of two is still a number. */
constexpr double greatestSample = 1e300;

} // namespace

constinit const MVFreqTweaker::Algorithm MVFreqTweaker::algorithms[tweakCount] {
    { &MVFreqTweaker::stretch, false },   { &MVFreqTweaker::shift, false },
    { &MVFreqTweaker::convolve, true },   { &MVFreqTweaker::convolveSelf, false },
    { &MVFreqTweaker::swapPhases, true }, { &MVFreqTweaker::swapMagnitudes, true },
    { &MVFreqTweaker::reverse, true },    { &MVFreqTweaker::wrap, false },
    { &MVFreqTweaker::twist, false },     { &MVFreqTweaker::attract, false },
    { &MVFreqTweaker::morph, true },      { &MVFreqTweaker::blur, false },
};

MVFreqTweaker::MVFreqTweaker() = default;

void MVFreqTweaker::setActive (bool flag)
{
    MVDspBase::setActive (flag);

    const std::size_t samples = flag ? fftSize : 0;
    for (Numbers* const buffer : { &frameA, &frameB, &workOut, &window })
        *buffer = Numbers (samples);
    for (Numbers* const buffer : { &overlap, &line })
        *buffer = Numbers (samples / 2);

    if (flag)
    {
        prepareSpectra (hopSize);
        window.assign (fftSize, 1.0);
        applyWindow (window.data(), fftSize);
    }
}

void MVFreqTweaker::reset()
{
    for (Numbers* const buffer : { &frameA, &frameB, &workOut, &overlap, &line })
        std::fill (buffer->begin(), buffer->end(), 0.0);
}

void MVFreqTweaker::setAlgorithm (std::int32_t storedValue)
{
    const bool isKnown = storedValue >= tweakStretched && storedValue <= tweakCount;
    pending = (isKnown ? storedValue : tweakStretched) - 1;
}

void MVFreqTweaker::process (double* out, const double* inA, const double* inB, double control)
{
    if (workOut.empty())
    {
        blockClear (out, hopSize);
        return;
    }

    adoptPending();
    const Algorithm& algorithm = algorithms[current];

    analyse (frameA, inA);
    if (algorithm.needsSecondInput)
        analyse (frameB, inB);
    else
        frameB[0] = inB[0];

    std::fill (workOut.begin(), workOut.end(), 0.0);
    (this->*algorithm.routine) (control);

    // The frames have served; out may be one of the inputs.
    blockCopy (frameA.data(), inA, hopSize);
    if (algorithm.needsSecondInput)
        blockCopy (frameB.data(), inB, hopSize);
    synthesise (out);
}

void MVFreqTweaker::adoptPending()
{
    if (current == pending)
        return;

    current = pending;
    std::fill (line.begin(), line.end(), 0.0);
}

void MVFreqTweaker::analyse (Numbers& frame, const double* in) const
{
    blockCopy (frame.data() + hopSize, in, hopSize);
    blockMultiply (frame.data(), window.data(), fftSize);
    forwardFft (frame.data(), hopSize);
}

void MVFreqTweaker::synthesise (double* out)
{
    inverseFft (workOut.data(), hopSize);
    blockMultiply (workOut.data(), window.data(), fftSize);

    std::uint64_t outside = 0;
    for (const double sample : workOut)
        outside |= outsideBits (sample, -greatestSample, greatestSample);
    if (outside != 0)
        std::fill (workOut.begin(), workOut.end(), 0.0);

    blockAdd (workOut.data(), overlap.data(), hopSize);
    blockCopy (out, workOut.data(), hopSize);
    blockCopy (overlap.data(), workOut.data() + hopSize, hopSize);
}

} // namespace morvanelab
