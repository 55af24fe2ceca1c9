// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVPcmResampler.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

void MVPcmResampler::reset()
{
    position = 0.0;
    previous = 0.0;
}

void MVPcmResampler::setPosition (double newPosition)
{
    position = std::isfinite (newPosition) && newPosition >= 0.0 ? newPosition : 0.0;
}

int MVPcmResampler::takeWholeSamples()
{
    const int whole = truncToInt (position);
    position -= whole;
    return whole;
}

void MVPcmResampler::process (double* out, const double* source, int frames, int sourceLength, double rate,
                              double startGain, double endGain, double& positionOut)
{
    const double end = position + frames * rate;
    const double lastRead = end - rate;
    // Every sample read needs its right-hand neighbour; what cannot be compared is outside, too.
    const bool inside = end >= 0.0 && end <= sourceLength && position < sourceLength - 1 && lastRead < sourceLength - 1;

    if (! inside)
    {
        blockClear (out, frames);
        position = positionOut = 0.0;
        return;
    }

    const double gainStep = (endGain - startGain) / frames;
    double at = position;

    for (int i = 0; i < frames; ++i)
    {
        const int index = std::clamp (static_cast<int> (at), 0, sourceLength - 2);
        const double t = at - index;
        out[i] = ((1.0 - t) * source[index + 1] + t * source[index]) * (startGain + i * gainStep);
        at += rate;
    }

    position = at > 0.0 ? at : 0.0;
    positionOut = position;
}

int MVPcmResampler::pull (MVCircularBuffer& ring, double* out, int frames, double rate)
{
    constexpr int sampleBytes = static_cast<int> (sizeof (double));
    if (! (rate > 0.0) || ! std::isfinite (rate))
        return 0;

    int written = 0;

    while (written < frames)
    {
        int bytes = ring.fillLevel();
        const auto* const run = reinterpret_cast<const double*> (ring.readPointer (bytes));
        const int available = bytes / sampleBytes;
        if (available == 0)
            break;

        written += readRun (run, available, out + written, frames - written, rate);

        // The position may lie beyond this run; the rest is taken from the next one.
        const int passed = std::min (truncToInt (position), available);
        if (passed > 0)
            previous = run[passed - 1];
        position -= passed;
        ring.commitRead (passed * sampleBytes);
    }

    return written;
}

/** Reads while the right-hand neighbour lies in the run; the window is the sample before the run, then the run. */
int MVPcmResampler::readRun (const double* run, int available, double* out, int frames, double rate)
{
    int count = 0;
    double at = position;

    if (rate == 1.0 && at == 0.0)
    {
        count = std::min (frames, available);
        std::copy_n (run, count, out);
        position = count;
        return count;
    }

    for (; count < frames && at < available; ++count)
    {
        const int index = static_cast<int> (at);
        const double t = at - index;
        const double left = index == 0 ? previous : run[index - 1];
        out[count] = (1.0 - t) * run[index] + t * left;
        at += rate;
    }

    position = at;
    return count;
}

} // namespace morvanelab
