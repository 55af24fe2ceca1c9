// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVDelayLine.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

void MVDelayLine::init (bool on, double sampleRate)
{
    MVDspBase::init (on, sampleRate);

    // One sample more than the delay: the sample just written and the oldest one are both there to be read.
    const int longest = std::clamp (truncToInt (std::ceil (maxDelay * sampleRate)), 0, maxSamples);
    size = on ? longest + 1 : 0;
    std::vector<double> (static_cast<std::size_t> (size)).swap (buffer);
    reset();
}

void MVDelayLine::reset()
{
    std::fill (buffer.begin(), buffer.end(), 0.0);
    writeIndex = 0;
    moveTo (truncToInt (lastRatio * getMaxDelaySamples()));
    untouched = true;
}

int MVDelayLine::indexBehind (int distance) const
{
    const int index = writeIndex - distance;
    return index < 0 ? index + size : index;
}

void MVDelayLine::moveTo (int newDelay)
{
    delaySamples = newDelay;
    readIndex = size > 0 ? indexBehind (newDelay) : 0;
    fading = false;
    waitingDelay = -1;
}

void MVDelayLine::beginFade (int newDelay)
{
    waitingDelay = -1;
    if (newDelay == delaySamples)
        return;

    fadeDelay = newDelay;
    fadeIndex = indexBehind (newDelay);
    fadePosition = 0;
    fading = true;
}

void MVDelayLine::finishFade()
{
    fading = false;
    delaySamples = fadeDelay;
    readIndex = fadeIndex;

    if (waitingDelay >= 0)
        beginFade (waitingDelay);
}

void MVDelayLine::setDuration (double ratio)
{
    lastRatio = limitTo (ratio, 0.0, 1.0);
    const int newDelay = truncToInt (lastRatio * getMaxDelaySamples());

    if (untouched || size == 0)
        moveTo (newDelay);
    else if (fading)
        waitingDelay = newDelay;
    else
        beginFade (newDelay);
}

void MVDelayLine::process (int frames, const double* in, double* out)
{
    if (size == 0)
    {
        blockClear (out, frames);
        return;
    }

    untouched = untouched && frames <= 0;

    for (int done = 0; done < frames;)
    {
        const int count = fading ? std::min (frames - done, fadeSamples - fadePosition) : frames - done;
        if (fading)
            runFade (count, in + done, out + done);
        else
            runPlain (count, in + done, out + done);
        done += count;
    }
}

/** In runs up to the nearer end of the ring, so that the loop itself does not wrap. */
void MVDelayLine::runPlain (int frames, const double* in, double* out)
{
    while (frames > 0)
    {
        const int run = std::min (frames, size - std::max (readIndex, writeIndex));
        double* const written = buffer.data() + writeIndex;
        const double* const read = buffer.data() + readIndex;

        for (int i = 0; i < run; ++i)
        {
            written[i] = in[i];
            out[i] = read[i];
        }

        writeIndex = writeIndex + run == size ? 0 : writeIndex + run;
        readIndex = readIndex + run == size ? 0 : readIndex + run;
        frames -= run;
        in += run;
        out += run;
    }
}

void MVDelayLine::runFade (int frames, const double* in, double* out)
{
    const auto next = [this] (int index) { return index + 1 == size ? 0 : index + 1; };
    double* const ring = buffer.data();

    for (int i = 0; i < frames; ++i)
    {
        ring[writeIndex] = in[i];
        writeIndex = next (writeIndex);

        const double share = (fadePosition + i) * (1.0 / fadeSamples);
        out[i] = (1.0 - share) * ring[readIndex] + share * ring[fadeIndex];
        readIndex = next (readIndex);
        fadeIndex = next (fadeIndex);
    }

    fadePosition += frames;
    if (fadePosition >= fadeSamples)
        finishFade();
}

} // namespace morvanelab
