// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVDataBlock.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace morvanelab
{

namespace
{

std::unique_ptr<std::uint8_t[]> allocate (int size)
{
    return std::make_unique_for_overwrite<std::uint8_t[]> (static_cast<std::size_t> (std::max (0, size)));
}

std::unique_ptr<std::uint8_t[]> allocateCopy (const void* bytes, int size)
{
    auto result = allocate (size);
    std::memcpy (result.get(), bytes, static_cast<std::size_t> (size));
    return result;
}

/** Walks a ring of size bytes from start on: function (offset in the ring, offset in the transfer, bytes). */
template <typename Function>
void forEachRingPart (std::int64_t position, int count, int elementSize, std::int64_t size, Function&& function)
{
    const std::int64_t total = std::int64_t { count } * elementSize;
    if (count < 1 || elementSize < 1)
        return;

    // Reduced first, so that no position can overflow the product.
    std::int64_t start = (position % size) * elementSize % size;
    if (start < 0)
        start += size;

    for (std::int64_t done = 0; done < total;)
    {
        const std::int64_t part = std::min (total - done, size - start);
        function (start, done, static_cast<std::size_t> (part));
        done += part;
        start = 0;
    }
}

} // namespace

MVDataBlock::MVDataBlock (int capacityInBytes)
{
    if (capacityInBytes < 1)
        return;
    data = allocate (capacityInBytes);
    capacity = capacityInBytes;
}

MVDataBlock::MVDataBlock (const void* bytes, int count)
{
    if (bytes == nullptr || count < 1)
        return;
    data = allocateCopy (bytes, count);
    used = count;
    capacity = count;
}

MVDataBlock::MVDataBlock (const MVDataBlock& other) : MVObject (other)
{
    if (other.used < 1)
        return;
    data = allocateCopy (other.data.get(), other.used);
    used = other.used;
    capacity = other.used;
}

MVDataBlock::~MVDataBlock() = default;

bool MVDataBlock::mayAppend (int count) const
{
    return count >= 0 && std::int64_t { used } + pendingBytes + count <= std::numeric_limits<std::int32_t>::max();
}

bool MVDataBlock::fitsDirectly (int count) const { return pending.isEmpty() && count <= capacity - used; }

void MVDataBlock::defer (MVAppendedDataBlock&& piece)
{
    pendingBytes += piece.size;
    pending.add (std::move (piece));
}

bool MVDataBlock::appendReference (const void* bytes, int count)
{
    if (bytes == nullptr || ! mayAppend (count))
        return false;
    if (fitsDirectly (count))
        return appendCopy (bytes, count);

    MVAppendedDataBlock piece;
    piece.external = static_cast<const std::uint8_t*> (bytes);
    piece.size = count;
    defer (std::move (piece));
    return true;
}

bool MVDataBlock::appendCopy (const void* bytes, int count)
{
    if (bytes == nullptr || ! mayAppend (count))
        return false;

    if (fitsDirectly (count))
    {
        if (count > 0)
            std::memcpy (data.get() + used, bytes, static_cast<std::size_t> (count));
        used += count;
        return true;
    }

    MVAppendedDataBlock piece;
    piece.ownedCopy = allocateCopy (bytes, count);
    piece.ownsCopy = true;
    piece.size = count;
    defer (std::move (piece));
    return true;
}

bool MVDataBlock::appendZeros (int count)
{
    if (! mayAppend (count))
        return false;

    if (fitsDirectly (count))
    {
        std::fill_n (data.get() + used, count, std::uint8_t { 0 });
        used += count;
        return true;
    }

    MVAppendedDataBlock piece;
    piece.ownedCopy = std::make_unique<std::uint8_t[]> (static_cast<std::size_t> (count));
    piece.ownsCopy = true;
    piece.size = count;
    defer (std::move (piece));
    return true;
}

void MVDataBlock::flatten()
{
    if (used + pendingBytes > capacity)
    {
        auto grown = allocate (used + pendingBytes);
        if (used > 0)
            std::memcpy (grown.get(), data.get(), static_cast<std::size_t> (used));
        data = std::move (grown);
        capacity = used + pendingBytes;
    }

    for (const MVAppendedDataBlock& piece : pending)
    {
        if (piece.size > 0)
            std::memcpy (data.get() + used, piece.bytes(), static_cast<std::size_t> (piece.size));
        used += piece.size;
    }

    pendingBytes = 0;
    pending.clear();
}

std::uint8_t* MVDataBlock::dataWithSize (int count)
{
    flatten();
    if (count < 0 || count > capacity)
        return nullptr;
    used = count == 0 ? capacity : count;
    return data.get();
}

std::uint8_t* MVDataBlock::pointerAt (int index, int elementSize, int* remaining)
{
    flatten();

    const bool valid = index >= 0 && elementSize > 0;
    const std::int64_t offset = valid ? std::int64_t { index } * elementSize : 0;

    if (remaining != nullptr)
    {
        const std::int64_t left = valid ? (used - offset) / elementSize : 0;
        *remaining = static_cast<int> (std::max<std::int64_t> (left, std::numeric_limits<int>::min()));
        return left < 1 ? nullptr : data.get() + offset;
    }

    return valid && offset + elementSize <= capacity ? data.get() + offset : nullptr;
}

void MVDataBlock::readRing (void* dest, std::int64_t position, int count, int elementSize) const
{
    if (used < 1 || dest == nullptr)
        return;

    forEachRingPart (position, count, elementSize, used,
                     [this, dest] (std::int64_t from, std::int64_t done, std::size_t bytes)
                     { std::memcpy (static_cast<std::uint8_t*> (dest) + done, data.get() + from, bytes); });
}

void MVDataBlock::writeRing (const void* source, std::int64_t position, int count, int elementSize)
{
    flatten();
    if (used < 1 || source == nullptr)
        return;

    forEachRingPart (position, count, elementSize, used,
                     [this, source] (std::int64_t to, std::int64_t done, std::size_t bytes)
                     { std::memcpy (data.get() + to, static_cast<const std::uint8_t*> (source) + done, bytes); });
}

void MVDataBlock::zeroFill()
{
    flatten();
    std::fill_n (data.get(), capacity, std::uint8_t { 0 });
    used = capacity;
}

void MVDataBlock::clear (bool releaseBuffer)
{
    pending.clear();
    pendingBytes = 0;
    used = 0;

    if (releaseBuffer)
    {
        data.reset();
        capacity = 0;
    }
}

int MVDataBlock::setSize (int count)
{
    flatten();
    if (count >= 0 && count < capacity)
        used = count;
    return used;
}

const std::uint8_t* MVDataBlock::flatBytes()
{
    flatten();
    return data.get();
}

} // namespace morvanelab
