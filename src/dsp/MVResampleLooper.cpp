// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVResampleLooper.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr double triggerLevel = 0.5;

} // namespace

bool MVResampleLooper::setCapacity (int samples)
{
    const bool fits = store.allocate (1, samples);
    reset();
    return fits;
}

void MVResampleLooper::reset()
{
    MVPcmResampler::reset();
    writeIndex = recordedLength = 0;
    recording = triggered = false;
    atLoopStart = true;
}

void MVResampleLooper::process (double* out, const double* in, int frames, const Controls& controls)
{
    const bool wasTriggered = triggered;
    triggered = controls.recordTrigger >= triggerLevel;

    if (triggered && ! wasTriggered)
    {
        recording = getCapacity() > 0;
        writeIndex = recordedLength = 0;
    }
    else if (! triggered && recording)
    {
        stopRecording();
    }

    const int recorded = recording ? record (in, frames) : 0;
    blockClear (out, recorded);

    if (recordedLength > 0)
        play (out + recorded, frames - recorded, loopFor (controls), controls.playbackRate);
    else
        blockClear (out + recorded, frames - recorded);
}

/** Records up to the end of the store and returns the samples taken. */
int MVResampleLooper::record (const double* in, int frames)
{
    const int taken = store.write (0, writeIndex, in, frames);
    writeIndex += taken;
    if (writeIndex == getCapacity())
        stopRecording();
    return taken;
}

void MVResampleLooper::stopRecording()
{
    recording = false;
    recordedLength = writeIndex;
    atLoopStart = true;
}

MVResampleLooper::Loop MVResampleLooper::loopFor (const Controls& controls) const
{
    const double length = recordedLength;
    const double shortest = std::min (length, static_cast<double> (minLoopSamples));
    const double start = std::min (limitTo (controls.startOffset, 0.0, 1.0) * length, length - shortest);
    const double wanted = std::max (limitTo (controls.loopDuration, 0.0, 1.0) * length, shortest);
    return { start, std::min (wanted, length - start) };
}

void MVResampleLooper::play (double* out, int frames, const Loop& loop, double rate)
{
    const double speed = std::isfinite (rate) ? std::fmod (rate, loop.length) : 0.0;
    const double* const samples = store.track (0);
    // Offsets from the start of the loop, so that moved loop points keep the place within it.
    double at = atLoopStart ? 0.0 : std::fmod (position, loop.length);
    atLoopStart = false;

    for (int i = 0; i < frames; ++i)
    {
        out[i] = seamedSample (samples, at, loop);
        at += speed;
        if (at >= loop.length)
            at -= loop.length;
        if (at < 0.0)
            at += loop.length;
        // A step of less than an ulp below 0 comes back as the whole length.
        if (at >= loop.length)
            at = 0.0;
    }

    position = at;
}

/** Linear interpolation; in front of the recording and behind it its first and last samples hold. */
double MVResampleLooper::sampleAt (const double* samples, double at) const
{
    const double below = std::floor (at);
    const int index = static_cast<int> (below);
    const int last = recordedLength - 1;
    const double left = samples[std::clamp (index, 0, last)];
    const double right = samples[std::clamp (index + 1, 0, last)];
    return left + (right - left) * (at - below);
}

/** Towards its end the loop fades into what leads up to its start: there the next round goes on without a step. */
double MVResampleLooper::seamedSample (const double* samples, double at, const Loop& loop) const
{
    const double seam = std::min (static_cast<double> (seamSamples), loop.length);
    const double sample = sampleAt (samples, loop.start + at);
    const double into = at - (loop.length - seam);
    if (into <= 0.0)
        return sample;

    const double share = into / seam;
    return (1.0 - share) * sample + share * sampleAt (samples, loop.start + at - loop.length);
}

} // namespace morvanelab
