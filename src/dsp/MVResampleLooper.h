// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVPcmResampler.h"
#include "dsp/MVRawPcmMultitrackMgr.h"

namespace morvanelab
{

/** Records a stretch of signal and loops it at any rate, in either direction.

    A rise of the trigger to 0.5 or above starts recording at the beginning of the store. It ends when the trigger falls
    below 0.5 or the store is full, which sets the recorded length. While it records the output is silent, and so it is
    before the first recording. Then the recorded part is looped, with linear interpolation and a cross-fade of 64
   samples before the loop's end into what leads up to its start, so that the seam is continuous in either direction. */
class MVResampleLooper : public MVPcmResampler
{
public:
    static constexpr int seamSamples = 64;
    static constexpr int minLoopSamples = 64;

    /** What steers one block. */
    struct Controls
    {
        double recordTrigger = 0.0;
        double startOffset = 0.0;  ///< start of the loop as a ratio of the recorded length, 0..1
        double loopDuration = 1.0; ///< length of the loop as a ratio of the recorded length, 0..1
        double playbackRate = 1.0; ///< store samples an output sample; negative plays backward, 0 holds
    };

    /** Takes the memory for a recording; drops what was recorded. 0 frees it. False if it is too much. */
    virtual bool setCapacity (int samples);
    /** Forgets the recording; the capacity stays. */
    void reset() override;

    /** One block; out and in may be the same array. The loop is at least 64 samples long where the recording is, starts
       at most that far from its end, and ends at the end of the recording at the latest. Controls that are not numbers
        count as 0. */
    virtual void process (double* out, const double* in, int frames, const Controls& controls);

    bool isRecording() const { return recording; }
    int getRecordedLength() const { return recordedLength; }
    int getCapacity() const { return store.getLength(); }

private:
    using MVPcmResampler::process;

    struct Loop
    {
        double start, length;
    };

    int record (const double* in, int frames);
    void stopRecording();
    Loop loopFor (const Controls& controls) const;
    void play (double* out, int frames, const Loop& loop, double rate);
    double sampleAt (const double* samples, double at) const;
    double seamedSample (const double* samples, double at, const Loop& loop) const;

    MVRawPcmMultitrackMgr store;
    int writeIndex = 0;
    int recordedLength = 0;
    bool recording = false;
    bool triggered = false;
    bool atLoopStart = true;
};

} // namespace morvanelab
