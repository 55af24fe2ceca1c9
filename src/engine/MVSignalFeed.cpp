// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVSignalFeed.h"

#include <algorithm>

namespace morvanelab
{

MVSignalFeed::MVSignalFeed() : blocks (std::make_unique<Block[]> (capacity)) {}

void MVSignalFeed::push (const double* samples, int frames)
{
    if (! isEnabled() || frames < 1)
        return;

    const std::size_t position = written.load (std::memory_order_relaxed);
    if (position - taken.load (std::memory_order_acquire) >= capacity)
        return;

    Block& block = blockAt (position);
    block.frames = std::min (frames, maxFrames);
    std::copy_n (samples, block.frames, block.samples.data());
    written.store (position + 1, std::memory_order_release);
}

void MVSignalFeed::setEnabled (bool on)
{
    if (on)
        clear();
    enabled.store (on, std::memory_order_relaxed);
}

int MVSignalFeed::pull (double* out)
{
    const std::size_t position = taken.load (std::memory_order_relaxed);
    if (position == written.load (std::memory_order_acquire))
        return 0;

    const Block& block = blockAt (position);
    const int frames = block.frames;
    std::copy_n (block.samples.data(), frames, out);
    taken.store (position + 1, std::memory_order_release);
    return frames;
}

void MVSignalFeed::clear() { taken.store (written.load (std::memory_order_acquire), std::memory_order_release); }

int MVSignalFeed::numReady() const
{
    return static_cast<int> (written.load (std::memory_order_acquire) - taken.load (std::memory_order_relaxed));
}

} // namespace morvanelab
