// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVByteReader.h"
#include "foundation/MVMath.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVString.h"

#include <cstdint>
#include <optional>

namespace morvanelab
{

/** Numbers and texts in chunks, for every layer that stores any. A chunk that is missing or shorter than what is
    read from it counts as absent. */

/** The number at an element position of a chunk's payload: chunkNumber<std::int32_t> (chunk, 2). */
template <typename T>
std::optional<T> chunkNumber (const MVSmartPtr<MVRiffPacker>& chunk, int position = 0)
{
    if (! chunk || position < 0)
        return std::nullopt;

    MVByteReader reader (chunk->getPayload(), static_cast<std::size_t> (chunk->readablePayload()));
    reader.skip (static_cast<std::size_t> (position) * sizeof (T));
    const T value = reader.read<T>();
    return reader.hasFailed() ? std::nullopt : std::optional<T> (value);
}

/** The first number of a direct child's payload: childNumber<double> (form, fourCC ("gain")). */
template <typename T>
std::optional<T> childNumber (const MVRiffPacker& parent, std::uint32_t chunkId, int occurrence = 0)
{
    return chunkNumber<T> (parent.findChild (chunkId, occurrence));
}

/** A record stored byte for byte. False, and the record untouched, if the chunk is absent or too short. */
template <typename T>
bool chunkRecord (const MVSmartPtr<MVRiffPacker>& chunk, T& record)
{
    static_assert (std::is_trivially_copyable_v<T>);
    if (! chunk || chunk->readablePayload() < static_cast<int> (sizeof (T)))
        return false;
    std::memcpy (&record, chunk->getPayload(), sizeof (T));
    return true;
}

/** A chunk whose payload is one number, or one plain record. */
template <typename T>
MVSmartPtr<MVRiffPacker> makeChunk (std::uint32_t chunkId, const T& value)
{
    static_assert (std::is_trivially_copyable_v<T> && ! std::is_pointer_v<T>);
    return makeSmart<MVRiffPacker> (chunkId, &value, static_cast<int> (sizeof (T)));
}

template <typename T>
void addChunk (MVRiffPacker& parent, std::uint32_t chunkId, const T& value)
{
    parent.addChild (makeChunk (chunkId, value));
}

/** Adds a chunk that holds the text in its 'str ' child. */
void addTextChunk (MVRiffPacker& parent, std::uint32_t chunkId, const MVString& text);

/** The text of a direct child; none if there is no such child. A child without text gives an empty one. */
std::optional<MVString> childText (const MVRiffPacker& parent, std::uint32_t chunkId, int occurrence = 0);

/** The version code that today's writers store: 1.4.0. */
constexpr std::uint32_t currentVersionCode = 104000;

/** The "ver " chunk of today's writers: 1, 4, 0, 1. */
MVSmartPtr<MVRiffPacker> makeVersionChunk();
void addVersionChunk (MVRiffPacker& parent);

/** The version code of a form's "ver " child, from its first three numbers; none if it is absent. */
std::optional<std::uint32_t> storedVersionCode (const MVRiffPacker& parent);

} // namespace morvanelab
