// SPDX-License-Identifier: GPL-3.0-or-later

// The reading half of MVRiffPacker. Every offset is a 64-bit number and is compared with the bytes that are really
// there before it is used; every byte belongs to one chunk, so the whole parse is linear in the bytes given.

#include "foundation/MVByteReader.h"
#include "foundation/MVRiffPacker.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace morvanelab
{

namespace
{

constexpr int smallestInput = 16;
constexpr int smallestChunk = MVRiffPacker::headerSize + MVRiffPacker::trailerSize;
constexpr int smallestLegacyChunk = 12;

bool legacyChecksumHolds (const std::uint8_t* bytes, std::int64_t totalSize)
{
    const std::int64_t covered = totalSize - smallestLegacyChunk;
    return covered >= 0
           && MVRiffPacker::checksum (bytes + smallestLegacyChunk, static_cast<std::uint32_t> (covered))
                  == loadNumber<std::uint32_t> (bytes + 8);
}

} // namespace

MVRiffPacker::MVRiffPacker (const void* bytes, int size, bool verifyChecksum)
{
    parseAny (static_cast<const std::uint8_t*> (bytes), size, verifyChecksum, 1);
}

std::uint32_t MVRiffPacker::checksum (const std::uint8_t* bytes, std::uint32_t size)
{
    constexpr std::uint32_t divisor = 0x7FFFFFF;
    constexpr std::uint32_t indexPeriod = 32767;
    std::uint32_t sum = 0;

    for (std::uint32_t i = 0; i < size; ++i)
    {
        const auto value = static_cast<std::uint32_t> (std::int32_t { static_cast<std::int8_t> (bytes[i]) });
        sum = (sum + (value << (i & 7)) + i % indexPeriod) % divisor;
    }

    return sum;
}

void MVRiffPacker::fail()
{
    chunkId = 0;
    payloadSize = 0;
    children.clear();
    payload.reset();
    wellFormed = false;
}

bool MVRiffPacker::parseAny (const std::uint8_t* bytes, std::int64_t limit, bool verify, int depth)
{
    if (limit < smallestInput || depth > maxDepth)
        return false;

    // No bytes at all are an empty chunk, by the rule of the older form.
    const bool current = bytes != nullptr && std::memcmp (bytes, "FRVM", 4) == 0;
    wellFormed = bytes == nullptr
                 || (current ? parseCurrent (bytes, limit, verify, depth) : parseLegacy (bytes, limit, verify, depth));

    if (! wellFormed)
        fail();
    return wellFormed;
}

bool MVRiffPacker::parseCurrent (const std::uint8_t* bytes, std::int64_t limit, bool verify, int depth)
{
    MVByteReader header (bytes, static_cast<std::size_t> (limit));
    header.skip (8);
    const auto id32 = header.read<std::uint32_t>();
    const std::int64_t totalSize = header.read<std::uint32_t>();
    const std::int64_t storedPayload = header.read<std::uint32_t>();
    const auto childCount32 = header.read<std::uint32_t>();

    if (header.hasFailed() || storedPayload > totalSize - smallestChunk)
        return false;

    const bool complete = totalSize <= limit;

    if (verify)
    {
        if (! complete)
            return false;
        const auto covered = static_cast<std::uint32_t> (totalSize - trailerSize);
        if (checksum (bytes, covered) != loadNumber<std::uint32_t> (bytes + covered))
            return false;
    }

    std::int64_t offset = headerSize;

    if (complete)
    {
        chunkId = id32;
        if (! parseCurrentChildren (bytes, limit, totalSize, childCount32, depth, offset))
            return false;
    }

    // A chunk that is cut off may still count as an empty one, but never as one that carries anything.
    if (storedPayload + offset + trailerSize != totalSize || (storedPayload > 0 && ! complete))
        return false;

    if (storedPayload > 0)
        takePayload (bytes + offset, storedPayload);
    return true;
}

bool MVRiffPacker::parseCurrentChildren (const std::uint8_t* bytes, std::int64_t limit, std::int64_t totalSize,
                                         std::uint32_t count, int depth, std::int64_t& offset)
{
    if (std::int64_t { count } * smallestChunk > totalSize - smallestChunk)
        return false;

    for (std::uint32_t i = 0; i < count; ++i)
    {
        MVSmartPtr<MVRiffPacker> child (new MVRiffPacker);
        if (! child->parseAny (bytes + offset, limit - offset, false, depth + 1))
            return false;

        std::int64_t size = 0;
        if (! child->measure (size, depth + 1))
            return false;
        offset += size;
        if (offset > totalSize)
            return false;
        addChild (child);
    }

    return true;
}

bool MVRiffPacker::parseLegacy (const std::uint8_t* bytes, std::int64_t limit, bool verify, int depth)
{
    const int words = verify ? 4 : 3;
    if (limit < words * 4 || depth > maxDepth)
        return false;

    const std::int64_t totalSize = loadNumber<std::uint32_t> (bytes + 4);
    if (totalSize > limit || (verify && ! legacyChecksumHolds (bytes, totalSize)))
        return false;

    chunkId = loadNumber<std::uint32_t> (bytes);
    const std::int64_t count = loadNumber<std::uint32_t> (bytes + (words - 1) * 4);
    if (count * 4 >= totalSize)
        return false;

    // The offset has never counted the checksum word, so a verified chunk's payload takes 4 bytes from behind it.
    const std::int64_t uncounted = words * 4 - smallestLegacyChunk;
    std::int64_t offset = smallestLegacyChunk;

    for (std::int64_t i = 0; i < count; ++i)
    {
        const std::int64_t position = offset + uncounted;
        MVSmartPtr<MVRiffPacker> child (new MVRiffPacker);
        child->wellFormed = child->parseLegacy (bytes + position, limit - position, false, depth + 1);
        offset += child->measureLegacy (depth + 1);
        if (! child->wellFormed || offset > totalSize)
            return false;
        addChild (child);
    }

    const std::int64_t rest = totalSize - offset;
    if (rest < 0 || totalSize + uncounted > limit)
        return false;
    if (rest > 0)
        takePayload (bytes + offset + uncounted, rest);
    return true;
}

int MVRiffPacker::legacySize() const
{
    return static_cast<int> (std::min<std::int64_t> (measureLegacy (1), std::numeric_limits<int>::max()));
}

std::int64_t MVRiffPacker::measureLegacy (int depth) const
{
    std::int64_t size = smallestLegacyChunk + readablePayload();

    for (const auto& child : children)
        if (depth < maxDepth)
            size += child->measureLegacy (depth + 1);
    return size;
}

} // namespace morvanelab
