// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVRiffPacker.h"

#include "foundation/MVByteReader.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace morvanelab
{

MVRiffPacker::MVRiffPacker (std::uint32_t newId) : chunkId (newId), wellFormed (true) {}

MVRiffPacker::MVRiffPacker (std::uint32_t newId, const void* bytes, int size) : chunkId (newId), wellFormed (true)
{
    if (bytes != nullptr && size > 0)
        takePayload (static_cast<const std::uint8_t*> (bytes), size);
}

MVRiffPacker::MVRiffPacker (const MVRiffPacker& other) : MVObject (other) { copyContents (other, 1); }

MVRiffPacker::~MVRiffPacker()
{
    // Trees built by hand may be of any depth: grandchildren move up, so that destruction never recurses.
    while (! children.isEmpty())
    {
        const MVSmartPtr<MVRiffPacker> last = std::move (children[children.size() - 1]);
        children.removeAt (children.size() - 1);

        if (! last || last.referenceCount() != 1)
            continue;

        if (children.isEmpty())
        {
            std::swap (children, last->children);
        }
        else
        {
            for (auto& grandchild : last->children)
                children.add (std::move (grandchild));
            last->children.clear();
        }
    }
}

MVSmartPtr<MVRiffPacker> MVRiffPacker::copyOf (const MVRiffPacker& other, int depth)
{
    auto result = makeSmart<MVRiffPacker> (other.chunkId);
    result->copyContents (other, depth);
    return result;
}

void MVRiffPacker::copyContents (const MVRiffPacker& other, int depth)
{
    chunkId = other.chunkId;
    wellFormed = other.wellFormed;

    if (other.children.isEmpty() && other.payload != nullptr)
        takePayload (other.payload.get(), other.payloadSize);
    payloadSize = other.payloadSize;

    for (const auto& child : other.children)
    {
        // One level more than can be packed keeps a tree that is too deep recognisable as such.
        if (depth <= maxDepth)
            children.add (copyOf (*child, depth + 1));
    }
}

void MVRiffPacker::takePayload (const std::uint8_t* bytes, std::int64_t size)
{
    payload = std::make_unique_for_overwrite<std::uint8_t[]> (static_cast<std::size_t> (size));
    std::memcpy (payload.get(), bytes, static_cast<std::size_t> (size));
    payloadSize = static_cast<std::int32_t> (size);
}

void MVRiffPacker::addChild (MVSmartPtr<MVRiffPacker>& child) { addChild (std::move (child)); }

void MVRiffPacker::addChild (MVSmartPtr<MVRiffPacker>&& child)
{
    if (child)
        children.add (std::move (child));
    child.clear();
}

MVSmartPtr<MVRiffPacker> MVRiffPacker::childAt (int index) const
{
    return index >= 0 && index < children.size() ? children[index] : MVSmartPtr<MVRiffPacker>();
}

int MVRiffPacker::countChildren (std::uint32_t wanted) const
{
    return static_cast<int> (std::count_if (children.begin(), children.end(),
                                            [wanted] (const auto& child) { return child->chunkId == wanted; }));
}

MVSmartPtr<MVRiffPacker> MVRiffPacker::findChild (std::uint32_t wanted, int occurrence) const
{
    for (const auto& child : children)
        if (child->chunkId == wanted && occurrence-- == 0)
            return child;
    return {};
}

MVSmartPtr<MVRiffPacker> MVRiffPacker::findDeep (std::uint32_t wanted) const { return findDeep (wanted, 1); }

MVSmartPtr<MVRiffPacker> MVRiffPacker::findDeep (std::uint32_t wanted, int depth) const
{
    MVSmartPtr<MVRiffPacker> found = findChild (wanted);

    for (int i = 0; ! found && i < children.size() && depth <= maxDepth; ++i)
        found = children[i]->findDeep (wanted, depth + 1);
    return found;
}

int MVRiffPacker::packedSize() const
{
    std::int64_t size = 0;
    return measure (size, 1) ? static_cast<int> (size) : 0;
}

/** Adds this chunk's packed bytes to size; false if the tree cannot be packed. */
bool MVRiffPacker::measure (std::int64_t& size, int depth) const
{
    size += payloadSize + headerSize + trailerSize;
    if (depth > maxDepth || size > std::numeric_limits<std::int32_t>::max())
        return false;

    return std::all_of (children.begin(), children.end(),
                        [&size, depth] (const auto& child) { return child->measure (size, depth + 1); });
}

bool MVRiffPacker::pack (void* buffer, bool withChecksum) const
{
    if (buffer == nullptr || packedSize() == 0)
        return false;

    auto* const out = static_cast<std::uint8_t*> (buffer);
    std::uint8_t* const end = packAt (out, withChecksum);

    if (withChecksum)
    {
        const auto covered = static_cast<std::uint32_t> (end - out) - trailerSize;
        storeNumber (out + covered, checksum (out, covered));
    }

    return true;
}

/** Writes this chunk and returns the address behind it. The trailer is left zero. */
std::uint8_t* MVRiffPacker::packAt (std::uint8_t* out, bool withChecksum) const
{
    const std::uint8_t start[] { 'F', 'R', 'V', 'M', 1, 4, 0, static_cast<std::uint8_t> (withChecksum ? 1 : 0) };
    std::uint8_t* next = out + headerSize;

    for (const auto& child : children)
        next = child->packAt (next, false);

    const auto size = static_cast<std::size_t> (payloadSize);
    if (payload != nullptr)
        std::memcpy (next, payload.get(), size);
    else
        std::memset (next, 0, size);

    next += size;
    std::memset (next, 0, trailerSize);
    next += trailerSize;

    std::memcpy (out, start, sizeof (start));
    storeNumber (out + 8, chunkId);
    storeNumber (out + 12, static_cast<std::int32_t> (next - out));
    storeNumber (out + 16, payloadSize);
    storeNumber (out + 20, static_cast<std::int32_t> (children.size()));
    return next;
}

MVSmartPtr<MVDataBlock> MVRiffPacker::packToBlock (bool withChecksum) const
{
    const int size = packedSize();
    if (size == 0)
        return {};

    auto block = makeSmart<MVDataBlock> (size);
    pack (block->dataWithSize (size), withChecksum);
    return block;
}

} // namespace morvanelab
