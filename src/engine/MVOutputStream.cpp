// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVOutputStream.h"

#include "engine/MVStreamRings.h"

#include <algorithm>

namespace morvanelab
{

void MVOutputStream::configure (const MVRenderStreamFormat& format)
{
    convert = sampleWriterFor (format.outputSampleType);
    sampleBytes = bytesPerSample (format.outputSampleType);
    interleaved = format.outputLayout == layoutInterleaved;
    stride = interleaved ? format.numOut : 1;

    const int ringBytes = streamRingBytes (format.maxBlock, 48);
    // One internal block may overshoot what was asked for.
    largestPiece = (ringBytes - streamBlockBytes) / streamSampleBytes;

    rings.clear();
    for (int i = 0; i < std::min (format.numOut, maxChannels); ++i)
        rings.push_back (std::make_unique<MVCircularBuffer> (ringBytes));
}

void MVOutputStream::setActive (bool on)
{
    for (auto& ring : rings)
        ring->setActive (on);
}

void MVOutputStream::clear()
{
    for (auto& ring : rings)
        ring->clear();
}

int MVOutputStream::framesReady() const { return rings.empty() ? 0 : rings.front()->fillLevel() / streamSampleBytes; }

double* const* MVOutputStream::beginBlock()
{
    for (std::size_t i = 0; i < rings.size(); ++i)
    {
        int bytes = streamBlockBytes;
        pointers[i] = reinterpret_cast<double*> (rings[i]->writePointer (bytes));
    }

    return pointers.data();
}

void MVOutputStream::commitBlock()
{
    for (auto& ring : rings)
        ring->commitWrite (streamBlockBytes);
}

void MVOutputStream::drain (void* const* out, int channels, int frames, int offset)
{
    for (int i = 0; i < numChannels(); ++i)
    {
        MVCircularBuffer& ring = *rings[static_cast<std::size_t> (i)];
        void* const buffer = i < channels ? (interleaved ? out[0] : out[i]) : nullptr;

        if (buffer == nullptr)
        {
            ring.commitRead (frames * streamSampleBytes);
            continue;
        }

        const std::ptrdiff_t first = std::ptrdiff_t { offset } * stride + (interleaved ? i : 0);
        drainChannel (ring, static_cast<std::byte*> (buffer) + first * sampleBytes, frames);
    }
}

void MVOutputStream::drainChannel (MVCircularBuffer& ring, std::byte* dest, int frames) const
{
    while (frames > 0)
    {
        int bytes = frames * streamSampleBytes;
        const auto* const source = reinterpret_cast<const double*> (ring.readPointer (bytes));
        const int run = bytes / streamSampleBytes;
        if (source == nullptr || run < 1)
            return;

        convert (dest, source, run, stride);
        ring.commitRead (run * streamSampleBytes);
        dest += std::ptrdiff_t { run } * stride * sampleBytes;
        frames -= run;
    }
}

} // namespace morvanelab
