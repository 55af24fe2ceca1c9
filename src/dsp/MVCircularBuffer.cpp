// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVCircularBuffer.h"

#include <algorithm>
#include <cstring>

namespace morvanelab
{

MVCircularBuffer::MVCircularBuffer (int sizeInBytes, bool isMirrored)
    : size (std::max (0, sizeInBytes)), mirrored (isMirrored)
{
}

MVCircularBuffer::MVCircularBuffer (const MVCircularBuffer& other)
    : MVObject (other), size (other.size), readPosition (other.readPosition), writePosition (other.writePosition),
      fill (other.fillLevel()), mirrored (other.mirrored)
{
    if (other.data != nullptr)
    {
        data = std::make_unique<std::byte[]> (allocatedBytes());
        std::memcpy (data.get(), other.data.get(), allocatedBytes());
    }
}

std::size_t MVCircularBuffer::allocatedBytes() const
{
    // The largest run that starts inside the ring and is written in one go ends this far out.
    return static_cast<std::size_t> (size) * (mirrored ? 2U : 1U);
}

void MVCircularBuffer::setActive (bool on)
{
    MVObject::setActive (on);

    if (! on)
        data.reset();
    else if (data == nullptr && size > 0)
        data = std::make_unique<std::byte[]> (allocatedBytes());

    clear();
}

const std::byte* MVCircularBuffer::readPointer (int& bytes) const
{
    if (data == nullptr)
    {
        bytes = 0;
        return nullptr;
    }

    bytes = std::clamp (bytes, 0, std::min (fillLevel(), size - readPosition));
    return data.get() + readPosition;
}

void MVCircularBuffer::commitRead (int bytes)
{
    const int taken = std::clamp (bytes, 0, fillLevel());
    if (data == nullptr || taken == 0)
        return;

    readPosition = static_cast<int> ((static_cast<std::int64_t> (readPosition) + taken) % size);
    fill.fetch_sub (taken, std::memory_order_acq_rel);
}

std::byte* MVCircularBuffer::writePointer (int& bytes)
{
    if (data == nullptr)
    {
        bytes = 0;
        return nullptr;
    }

    const int run = mirrored ? size : size - writePosition;
    bytes = std::clamp (bytes, 0, std::min (freeSpace(), run));
    return data.get() + writePosition;
}

void MVCircularBuffer::commitWrite (int bytes)
{
    const int written = std::clamp (bytes, 0, freeSpace());
    if (data == nullptr || written == 0)
        return;

    const std::int64_t end = static_cast<std::int64_t> (writePosition) + written;
    if (mirrored && end > size)
        std::memcpy (data.get(), data.get() + size, static_cast<std::size_t> (end - size));

    writePosition = static_cast<int> (end % size);
    fill.fetch_add (written, std::memory_order_acq_rel);
}

void MVCircularBuffer::clear()
{
    if (data != nullptr)
        std::memset (data.get(), 0, allocatedBytes());

    readPosition = 0;
    writePosition = 0;
    fill.store (0, std::memory_order_release);
}

void MVCircularBuffer::prime (int bytes)
{
    const int primed = data != nullptr ? std::clamp (bytes, 0, size) : 0;
    if (primed > 0)
        std::memset (data.get(), 0, static_cast<std::size_t> (primed));

    readPosition = 0;
    writePosition = size > 0 ? primed % size : 0;
    fill.store (primed, std::memory_order_release);
}

} // namespace morvanelab
