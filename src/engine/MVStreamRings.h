// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVRenderEngineAttributes.h"

#include <algorithm>

namespace morvanelab
{

/** Bytes of a sample and of an internal block in the rings between host and patches, which hold doubles. */
constexpr int streamSampleBytes = static_cast<int> (sizeof (double));
constexpr int streamBlockBytes = blockFrames * streamSampleBytes;

/** The largest announced block that sizes rings. A host that sends larger ones is served in pieces. */
constexpr int maxRingFrames = 65536;

/** Bytes of a ring of bytesPerFrame bytes for each frame of the announced block (256 at least), rounded up to whole
    internal blocks, so that one is always contiguous for the side that works in whole blocks. */
constexpr int streamRingBytes (int announcedBlock, int bytesPerFrame)
{
    const int frames = std::min (std::max (announcedBlock, blockFrames), maxRingFrames);
    return (frames * bytesPerFrame + streamBlockBytes - 1) / streamBlockBytes * streamBlockBytes;
}

} // namespace morvanelab
