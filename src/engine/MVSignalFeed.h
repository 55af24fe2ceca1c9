// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

namespace morvanelab
{

/** Blocks of one signal on their way from the audio thread to a display: a queue of fixed size between one producer
    and one consumer, neither of which ever waits or allocates.

    While the feed is switched off, as it is at first, a push costs one load. While the queue is full new blocks are
    dropped, so a consumer that fell behind finds the oldest ones and is best off with clear(). */
class MVSignalFeed
{
public:
    static constexpr int maxFrames = 256;
    static constexpr int capacity = 64; ///< in blocks

    /** Takes all memory there will ever be. */
    MVSignalFeed();
    MVSignalFeed (const MVSignalFeed&) = delete;

    /** Offers a block of up to 256 samples (of a longer one the first 256). Audio thread. */
    void push (const double* samples, int frames);

    /** Lets blocks in or keeps them out. Switching on drops what is left from before; a push that is under way
        while this is called may still go either way. Consumer's thread. */
    void setEnabled (bool on);
    bool isEnabled() const { return enabled.load (std::memory_order_relaxed); }

    /** Takes the oldest block into out, room for 256 samples, and returns its samples; 0 if there is none.
        Consumer's thread. */
    int pull (double* out);
    /** Drops all blocks that are there. Consumer's thread. */
    void clear();
    /** Blocks that can be pulled now. Consumer's thread. */
    int numReady() const;

private:
    struct Block
    {
        int frames;
        std::array<double, maxFrames> samples;
    };

    Block& blockAt (std::size_t position) { return blocks[position % capacity]; }

    std::unique_ptr<Block[]> blocks;
    std::atomic<bool> enabled { false };
    // Running counts of blocks. Each is written by one side only; apart, so that the sides share no cache line.
    alignas (64) std::atomic<std::size_t> written { 0 };
    alignas (64) std::atomic<std::size_t> taken { 0 };
};

} // namespace morvanelab
