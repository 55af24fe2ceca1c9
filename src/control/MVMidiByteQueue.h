// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace morvanelab
{

/** MIDI bytes on their way from the audio thread to one reader. Neither side waits or allocates. What finds no room is
    dropped as a whole, so that messages are never torn. One thread pushes, one other thread pulls. */
class MVMidiByteQueue
{
public:
    static constexpr std::size_t capacity = 4096;

    /** Adds all bytes, or none if they do not fit. Returns whether they were added. Audio thread. */
    bool push (const std::uint8_t* bytes, int count);
    /** Moves up to room bytes into out, oldest first. Returns how many. */
    int pull (std::uint8_t* out, int room);
    /** Drops what is queued. Reader's thread. */
    void clear() { readPosition.store (writePosition.load (std::memory_order_acquire), std::memory_order_release); }

private:
    std::array<std::uint8_t, capacity> ring {};
    std::atomic<std::size_t> writePosition { 0 }; ///< both only grow
    std::atomic<std::size_t> readPosition { 0 };
};

} // namespace morvanelab
