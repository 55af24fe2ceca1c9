// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVInputStream.h"

#include "engine/MVStreamRings.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr double levelScale = 2147483647.0;

} // namespace

void MVInputStream::configure (const MVRenderStreamFormat& format)
{
    convert = sampleReaderFor (format.inputSampleType);
    sampleBytes = bytesPerSample (format.inputSampleType);
    interleaved = format.inputLayout == layoutInterleaved;
    stride = interleaved ? format.numIn : 1;
    ratio = format.engineSampleRate / format.streamSampleRate;
    primed = format.maxBlock % blockFrames != 0;
    active = false;

    channels.clear();
    for (int i = 0; i < std::min (format.numIn, maxChannels); ++i)
        channels.push_back (std::make_unique<Channel> (streamRingBytes (format.maxBlock, 128)));
}

void MVInputStream::setActive (bool on)
{
    active = on;

    for (auto& channel : channels)
    {
        channel->ring.setActive (on);
        channel->resampler.setActive (on);
        channel->block.fill (0.0);
    }

    clear();
}

void MVInputStream::clear()
{
    for (auto& channel : channels)
    {
        channel->resampler.reset();

        if (active && primed)
            channel->ring.prime (streamBlockBytes);
        else
            channel->ring.reset();
    }
}

void MVInputStream::write (const void* const* data, int channelCount, int numFrames)
{
    const int count = std::min (channelCount, static_cast<int> (channels.size()));

    for (int i = 0; i < count; ++i)
    {
        const void* const buffer = interleaved ? data[0] : data[i];
        if (buffer == nullptr)
            continue;

        const int offset = interleaved ? i * sampleBytes : 0;
        writeChannel (*channels[static_cast<std::size_t> (i)], static_cast<const std::byte*> (buffer) + offset,
                      numFrames);
    }
}

void MVInputStream::writeChannel (Channel& channel, const std::byte* source, int numFrames)
{
    while (numFrames > 0)
    {
        int bytes = static_cast<int> (
            std::min<std::int64_t> (std::int64_t { numFrames } * streamSampleBytes, channel.ring.getSize()));
        auto* const dest = channel.ring.writePointer (bytes);
        const int frames = bytes / streamSampleBytes;
        if (dest == nullptr || frames < 1)
            return;

        convert (reinterpret_cast<double*> (dest), source, frames, stride);
        channel.ring.commitWrite (frames * streamSampleBytes);
        source += std::ptrdiff_t { frames } * stride * sampleBytes;
        numFrames -= frames;
    }
}

void MVInputStream::pull()
{
    const bool measure = levelsEnabled.load (std::memory_order_relaxed);
    const int count = std::min (maxProcessed, static_cast<int> (channels.size()));

    for (int i = 0; i < count; ++i)
    {
        Channel& channel = *channels[static_cast<std::size_t> (i)];
        channel.resampler.pull (channel.ring, channel.block.data(), blockFrames, ratio);
        if (measure)
            raiseLevel (i, channel.block.data());
    }
}

const double* const* MVInputStream::blocks (const double* silence)
{
    for (int i = 0; i < maxChannels; ++i)
    {
        const bool processed = i < maxProcessed && i < static_cast<int> (channels.size());
        pointers[static_cast<std::size_t> (i)] =
            processed ? channels[static_cast<std::size_t> (i)]->block.data() : silence;
    }

    return pointers.data();
}

void MVInputStream::raiseLevel (int channel, const double* block)
{
    double peak = 0.0;
    for (int i = 0; i < blockFrames; ++i)
        if (const double magnitude = std::fabs (block[i]); magnitude > peak)
            peak = magnitude;

    const int level = truncToInt (limitTo (peak, 0.0, 1.0) * levelScale);
    std::atomic<int>& highest = levels[static_cast<std::size_t> (channel)];

    // One writer: a reader that clears in between only makes this level count as new.
    if (level > highest.load (std::memory_order_relaxed))
        highest.store (level, std::memory_order_relaxed);
}

double MVInputStream::takeLevel (int channel)
{
    if (channel < 0 || channel >= maxProcessed)
        return 0.0;
    return levels[static_cast<std::size_t> (channel)].exchange (0, std::memory_order_relaxed) / levelScale;
}

} // namespace morvanelab
