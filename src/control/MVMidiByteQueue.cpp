// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/MVMidiByteQueue.h"

#include <algorithm>

namespace morvanelab
{

bool MVMidiByteQueue::push (const std::uint8_t* bytes, int count)
{
    const auto size = static_cast<std::size_t> (std::max (count, 0));
    const auto write = writePosition.load (std::memory_order_relaxed);
    const auto used = write - readPosition.load (std::memory_order_acquire);
    if (bytes == nullptr || size > capacity - used)
        return false;
    for (std::size_t i = 0; i < size; ++i)
        ring[(write + i) % capacity] = bytes[i];
    writePosition.store (write + size, std::memory_order_release);
    return true;
}

int MVMidiByteQueue::pull (std::uint8_t* out, int room)
{
    const auto read = readPosition.load (std::memory_order_relaxed);
    const auto queued = writePosition.load (std::memory_order_acquire) - read;
    const auto size = std::min (queued, static_cast<std::size_t> (std::max (room, 0)));
    for (std::size_t i = 0; i < size; ++i)
        out[i] = ring[(read + i) % capacity];
    readPosition.store (read + size, std::memory_order_release);
    return static_cast<int> (size);
}

} // namespace morvanelab
