// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"

#include <vector>

namespace morvanelab
{

/** A delay of variable length. A new length is reached by a linear cross-fade between the old and the new read
    position, so it never clicks and never bends the pitch. */
class MVDelayLine : public MVDspBase
{
public:
    /** Length of a fade in samples. */
    static constexpr int fadeSamples = 512;
    /** No line is longer than this many samples (over three minutes at 44.1 kHz). */
    static constexpr int maxSamples = 1 << 23;

    /** Longest delay in seconds; takes effect with init. */
    virtual void setMaxDelay (double seconds) { maxDelay = seconds; }
    /** Allocates the ring for the longest delay, rounded up to whole samples; zeroed. off frees it. */
    void init (bool on, double sampleRate) override;
    /** Forgets the signal and ends a fade; the length asked for last stays. */
    void reset() override;

    /** Asks for the delay trunc(ratio * longest), ratio held to 0..1 (not a number is 0). Before the first block after
        init or reset it holds at once; else a fade of 512 samples begins with the next block. A request during a fade
        waits for its end; the last one wins. */
    virtual void setDuration (double ratio);
    /** out and in may be the same array. A delay of 0 passes the signal. Inactive: silence. */
    virtual void process (int frames, const double* in, double* out);

    int getDelaySamples() const { return delaySamples; }
    int getMaxDelaySamples() const { return size > 0 ? size - 1 : 0; }
    bool isFading() const { return fading; }

private:
    void runPlain (int frames, const double* in, double* out);
    void runFade (int frames, const double* in, double* out);
    void moveTo (int newDelay);
    void beginFade (int newDelay);
    void finishFade();
    int indexBehind (int distance) const;

    double maxDelay = 1.0;
    double lastRatio = 0.0;
    std::vector<double> buffer;
    int size = 0;
    int readIndex = 0;
    int writeIndex = 0;
    int fadeIndex = 0;
    int delaySamples = 0;
    int fadeDelay = 0;
    int waitingDelay = -1;
    int fadePosition = 0;
    bool fading = false;
    bool untouched = true;
};

} // namespace morvanelab
