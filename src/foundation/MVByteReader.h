// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace morvanelab
{

static_assert (std::endian::native == std::endian::little, "stored records are little-endian, copied byte for byte");

/** Stores a number little-endian at any address. */
template <typename T>
void storeNumber (void* dest, T value)
{
    static_assert (std::is_arithmetic_v<T>);
    std::memcpy (dest, &value, sizeof (T));
}

/** Reads a little-endian number from any address that holds sizeof (T) bytes. */
template <typename T>
T loadNumber (const void* source)
{
    static_assert (std::is_arithmetic_v<T>);
    T value;
    std::memcpy (&value, source, sizeof (T));
    return value;
}

/** Takes numbers out of bytes of unknown origin. Reading past the end yields 0 and marks the reader as failed;
    from then on everything yields 0, so that a caller may read a whole record and ask once. */
class MVByteReader
{
public:
    MVByteReader (const void* bytes, std::size_t byteCount)
        : data (static_cast<const std::uint8_t*> (bytes)), size (bytes != nullptr ? byteCount : 0)
    {
    }

    bool hasFailed() const { return failed; }
    std::size_t position() const { return offset; }
    std::size_t remaining() const { return failed ? 0 : size - offset; }

    /** The next number, little-endian. */
    template <typename T>
    T read()
    {
        static_assert (std::is_arithmetic_v<T> && ! std::is_same_v<T, bool>);
        const std::uint8_t* const source = take (sizeof (T));
        return source != nullptr ? loadNumber<T> (source) : T {};
    }

    /** The address of the next count bytes, which are consumed; null and failed if they are not there. */
    const std::uint8_t* take (std::size_t count)
    {
        if (failed || count > size - offset)
        {
            failed = true;
            return nullptr;
        }

        const std::uint8_t* const result = data + offset;
        offset += count;
        return result;
    }

    /** Copies count bytes to dest; false and failed if they are not there. */
    bool readBytes (void* dest, std::size_t count)
    {
        const std::uint8_t* const source = take (count);
        if (source != nullptr && count > 0)
            std::memcpy (dest, source, count);
        return source != nullptr;
    }

    bool skip (std::size_t count) { return take (count) != nullptr; }

    /** Goes to a position counted from the start; beyond the end fails. */
    bool seek (std::size_t newPosition)
    {
        if (failed || newPosition > size)
            failed = true;
        else
            offset = newPosition;
        return ! failed;
    }

    /** Whether count records of recordSize bytes can still follow: the test that belongs before a stored count
        sizes anything. */
    bool canHold (std::uint64_t count, std::size_t recordSize) const
    {
        return recordSize > 0 && count <= remaining() / recordSize;
    }

private:
    const std::uint8_t* data;
    std::size_t size;
    std::size_t offset = 0;
    bool failed = false;
};

} // namespace morvanelab
