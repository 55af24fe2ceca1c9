// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVCircularBuffer.h"
#include "engine/MVRenderStreamFormat.h"
#include "engine/MVSampleConverters.h"

#include <array>
#include <memory>
#include <vector>

namespace morvanelab
{

/** The patches' output on its way to the host: a ring of doubles for each channel, filled by blocks of 256 and
    drained by any number of frames. All rings always hold the same number of samples.

    Threads: the block operations on the audio thread, the rest while that is excluded. */
class MVOutputStream
{
public:
    static constexpr int maxChannels = 8;

    /** Takes a format whose output side is known to be supported, and makes new, inactive rings. */
    void configure (const MVRenderStreamFormat& format);
    void setActive (bool on);
    void clear();

    int numChannels() const { return static_cast<int> (rings.size()); }
    /** Frames that wait in every ring. */
    int framesReady() const;
    /** The most frames that can be made ready at once, whatever waits already. */
    int maxFrames() const { return largestPiece; }

    /** Places for the next 256 samples of every channel; commitBlock makes them ready. */
    double* const* beginBlock();
    void commitBlock();

    /** Takes frames off every ring and converts the first channels of them into out, offset frames from its start;
        out as in MVRenderEngine. A null channel buffer is passed over. */
    void drain (void* const* out, int channels, int frames, int offset);

private:
    void drainChannel (MVCircularBuffer& ring, std::byte* dest, int frames) const;

    std::vector<std::unique_ptr<MVCircularBuffer>> rings;
    std::array<double*, maxChannels> pointers {};
    MVSampleWriter convert = nullptr;
    int sampleBytes = 0;
    int stride = 1;
    bool interleaved = false;
    int largestPiece = 0;
};

} // namespace morvanelab
