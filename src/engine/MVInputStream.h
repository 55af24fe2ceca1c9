// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVCircularBuffer.h"
#include "dsp/MVPcmResampler.h"
#include "engine/MVRenderStreamFormat.h"
#include "engine/MVSampleConverters.h"
#include "operators/MVRenderEngineAttributes.h"

#include <array>
#include <atomic>
#include <memory>
#include <vector>

namespace morvanelab
{

/** The host's input on its way to the patches: a ring of doubles for each channel, and the blocks of 256 that are
    pulled from it at the ratio of engine rate to stream rate. At ratio 1 a block is the next 256 samples, unchanged.

    When the announced block is no multiple of 256 the rings start with 256 zeros, so that they do not run dry
    while whole internal blocks are taken from host blocks of another size.

    Threads: write and pull on the audio thread; the rest while that is excluded, levels aside. */
class MVInputStream
{
public:
    /** Channels that reach the patches. */
    static constexpr int maxProcessed = 4;
    static constexpr int maxChannels = 8;

    /** Takes a format whose input side is known to be supported, and makes new, inactive rings. */
    void configure (const MVRenderStreamFormat& format);
    /** Allocates and primes, or frees. */
    void setActive (bool on);
    /** Empties and primes the rings. */
    void clear();

    /** Converts numFrames frames of the first channels channels into the rings; data as in MVRenderEngine. Frames
        that find no room are dropped. */
    void write (const void* const* data, int channels, int numFrames);
    /** Pulls the next 256 samples of each processed channel. Where a ring runs dry the rest of its block stays as it
        was. */
    void pull();
    /** maxChannels pointers to blocks of 256; channels that are not processed read silence. */
    const double* const* blocks (const double* silence);

    void setLevelsEnabled (bool on) { levelsEnabled.store (on, std::memory_order_relaxed); }
    /** The highest level, 0 to 1, since the last call. Any thread. */
    double takeLevel (int channel);

private:
    struct Channel
    {
        explicit Channel (int ringBytes) : ring (ringBytes) {}

        MVCircularBuffer ring;
        MVPcmResampler resampler;
        std::array<double, blockFrames> block {};
    };

    void writeChannel (Channel& channel, const std::byte* source, int numFrames);
    void raiseLevel (int channel, const double* block);

    std::vector<std::unique_ptr<Channel>> channels;
    std::array<const double*, maxChannels> pointers {};
    std::array<std::atomic<int>, maxProcessed> levels {};
    std::atomic<bool> levelsEnabled { false };
    MVSampleReader convert = nullptr;
    int sampleBytes = 0;
    int stride = 1;
    bool interleaved = false;
    bool primed = false;
    bool active = false;
    double ratio = 1.0;
};

} // namespace morvanelab
