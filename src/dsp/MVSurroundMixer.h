// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVSignalDistorter.h"
#include "foundation/MVObject.h"

namespace morvanelab
{

/** Mixes a signal into the output channels under a constant-power pan law. One object for the process, without any
    state of a call, so that every voice may use it on any thread.

    The first call of instance builds the pan table under a lock: whoever mixes calls it once when it is activated. */
class MVSurroundMixer : public MVObject
{
public:
    static MVSurroundMixer& instance();

    /** Adds signal to the channel buffers. Pan scale and gain ramp over the block.

        One channel: the signal under the gain. Two: with p = pan scale * panSignal, the left channel gets the root of
        |1 - p|, the right one that of |p|. More (an odd number counts as the even one below): p is multiplied by
        2 / (channels / 2 - 2), its whole part selects the pair of adjacent channels and its fraction the place between
        them; a position outside the list, and every position of four channels, plays between the last two.
        The third and the fourth signal are not used by these layouts. */
    virtual void mix (double* const* channels, int channelCount, const double* signal, const double* panSignal,
                      const double* third, const double* fourth, int frames, double panStart, double panEnd,
                      double gainStart, double gainEnd) const;

    const char* className() const override { return "MVSurroundMixer"; }

private:
    MVSurroundMixer();
    void mixPair (double* left, double* right, const double* signal, const double* panSignal, int frames,
                  double panStart, double panEnd, double gainStart, double gainEnd) const;
    void mixRing (double* const* channels, int channelCount, const double* signal, const double* panSignal, int frames,
                  double panStart, double panEnd, double gainStart, double gainEnd) const;

    MVSignalDistorter panLaw;
};

} // namespace morvanelab
