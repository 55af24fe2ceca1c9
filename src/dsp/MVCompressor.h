// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"

#include <array>

namespace morvanelab
{

/** Peak limiter of one channel with a look-ahead of 32 samples: audio leaves 32 samples later than it entered, so
    that the gain has fallen before the peak arrives. One division a frame of 32 samples. */
class MVCompressor : public MVDspBase
{
public:
    static constexpr int frameSize = 32;

    /** Sets the rate in Hz that the roll-off is counted in. */
    void init (bool on, double sampleRate) override;
    /** Gain 1.0, an empty delay, no hold. */
    void reset() override;
    /** Seconds for which a peak goes on ducking; whole frames of 32 samples. 0 does not hold. */
    virtual void setRollOff (double seconds);
    /** Level at which limiting begins, as a fraction of the ceiling. Default 0.9. */
    virtual void setThreshold (double level);
    /** Level that the output approaches. Default 1.0. */
    virtual void setCeiling (double level);
    /** In place. frames is a multiple of 32; samples behind the last whole frame are left as they are. */
    virtual void process (double* buffer, int frames);

private:
    void processFrame (double* buffer);
    double nextPeak (double excess, double gain, double& step);

    double threshold = 0.9;
    double ceiling = 1.0;
    double knee = 0.9;
    double sampleRate = 44100.0;
    double rollOffSeconds = 0.0;
    double rollOffFrames = 0.0;
    double holdFrames = 0.0;
    double holdStep = 0.0;
    double peak = 1.0;
    double lastExcess = 0.0;
    std::array<double, frameSize> delayed {};
    std::array<double, frameSize> incoming {};
};

} // namespace morvanelab
