// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVCircularBuffer.h"
#include "dsp/MVDspBase.h"

namespace morvanelab
{

/** Reads samples at a variable rate. Between two samples the weights are crossed: at a position i + t the result is
    (1 - t) * source[i + 1] + t * source[i]. At rate 1 from a whole position this is source[i + 1], the source unchanged
    and one sample ahead, which is why a window on a stream starts one sample back. */
class MVPcmResampler : public MVDspBase
{
public:
    /** Position 0 and no sample heard. */
    void reset() override;

    /** Reads a stored block from position on, scaled by a gain that ramps from startGain to endGain. Afterwards the
        position, also put into positionOut, is the one at the start plus frames * rate. If that lies outside
        the source, or a sample of the block has no right-hand neighbour there, the block is silent and the position
        is 0.

        To walk along a stream by hand: advance source by takeWholeSamples() after each block; the fraction stays. */
    virtual void process (double* out, const double* source, int frames, int sourceLength, double rate,
                          double startGain, double endGain, double& positionOut);

    /** Pulls up to frames samples at the given rate (source samples an output sample, above 0) from a ring of doubles,
        as its reader, and returns how many were written; when the ring runs dry the rest of out is left as it was.
        This is what an engine calls for a block of input:

            resampler.pull (*inputRings[channel], inputBlocks[channel], 256, resampleRatio);

        It keeps the last sample read, the start of the window, and the fraction of the position from call to call, and
        takes exactly the whole samples passed off the ring, over its end as well. At rate 1 the result is the ring's
        next samples, bit for bit. */
    virtual int pull (MVCircularBuffer& ring, double* out, int frames, double rate);

    double getPosition() const { return position; }
    virtual void setPosition (double newPosition);
    /** Takes the whole samples off the position and returns their number. */
    int takeWholeSamples();

protected:
    double position = 0.0;

private:
    int readRun (const double* run, int available, double* out, int frames, double rate);

    double previous = 0.0;
};

} // namespace morvanelab
