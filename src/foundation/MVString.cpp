// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVString.h"

#include "foundation/MVMath.h"
#include "foundation/MVRiffPacker.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <stdexcept>
#include <utility>

namespace morvanelab
{

namespace
{

constexpr std::uint32_t textChunk = fourCC ("str ");

/** Room that every append leaves for the next ones. */
constexpr int appendRoom = 256;

/** Sums of lengths stay clear of the end of the 32-bit range, also with room and terminators added. */
int checkedSum (int a, int b)
{
    const std::int64_t sum = std::int64_t { a } + b;
    if (sum > std::numeric_limits<int>::max() - 2 * appendRoom)
        throw std::length_error ("MVString too long");
    return static_cast<int> (sum);
}

int checkedLength (std::size_t length)
{
    return checkedSum (0, static_cast<int> (std::min<std::size_t> (length, std::numeric_limits<int>::max())));
}

bool isUpper (char byte) { return byte >= 'A' && byte <= 'Z'; }

} // namespace

MVString::MVString (int capacityInBytes)
{
    if (capacityInBytes < 1)
        return;
    data = new char[static_cast<std::size_t> (capacityInBytes)];
    capacity = capacityInBytes;
    data[0] = '\0';
}

MVString::MVString (const char* initialText) { assign (initialText); }

MVString::MVString (std::string_view initialText)
{
    if (initialText.empty())
        assign ("");
    else
        assign (initialText.data(), checkedLength (initialText.size()));
}

MVString::MVString (const MVString& other) { assign (other); }

MVString::MVString (MVString&& other) noexcept
    : data (std::exchange (other.data, nullptr)), capacity (std::exchange (other.capacity, 0)),
      used (std::exchange (other.used, 0))
{
}

MVString& MVString::operator= (const MVString& other)
{
    assign (other);
    return *this;
}

MVString& MVString::operator= (MVString&& other) noexcept
{
    std::swap (data, other.data);
    std::swap (capacity, other.capacity);
    std::swap (used, other.used);
    return *this;
}

MVString::~MVString() { delete[] data; }

MVSmartPtr<MVString> MVString::cloneSmart() const { return MVSmartPtr<MVString> (clone()); }

MVSmartPtr<MVRiffPacker> MVString::packRiff (std::uint32_t chunkId) const
{
    auto result = makeSmart<MVRiffPacker> (chunkId);
    if (used > 0)
        result->addChild (makeSmart<MVRiffPacker> (textChunk, data, used));
    return result;
}

void MVString::unpackRiff (const MVRiffPacker& packer)
{
    const MVSmartPtr<MVRiffPacker> chunk = packer.findChild (textChunk);

    if (chunk)
        assign (reinterpret_cast<const char*> (chunk->getPayload()), chunk->readablePayload());
    else
        makeEmpty();
}

int MVString::copyTo (char* buffer, int size) const
{
    if (buffer == nullptr || size < 1)
        return 0;
    const int count = std::min (used, size - 1);
    std::copy_n (text(), count, buffer);
    buffer[count] = '\0';
    return count;
}

std::uint64_t MVString::parseDigits() const
{
    const char* next = text();
    while (*next == ' ' || *next == '\t')
        ++next;

    const bool negative = *next == '-';
    if (negative)
        ++next;

    std::uint64_t value = 0;

    for (; *next != '\0'; ++next)
    {
        if (*next < '0' || *next > '9')
            return 0;
        value = value * 10U + static_cast<std::uint64_t> (*next - '0');
    }

    return negative ? 0U - value : value;
}

double MVString::toDouble() const
{
    const char* next = text();
    while (*next == ' ' || (*next >= '\t' && *next <= '\r'))
        ++next;
    if (*next == '+' && next[1] != '-')
        ++next;

    double value = 0.0;
    const auto end = std::from_chars (next, text() + std::strlen (text()), value);
    // Only strtod says which way a number went out of range.
    if (end.ec == std::errc::result_out_of_range)
        return std::strtod (next, nullptr);
    return value;
}

char MVString::charAt (int index) const { return index >= 0 && index < used ? data[index] : '\0'; }

MVString MVString::substring (int start, int count) const
{
    MVString result;
    if (start < 0 || count < 0 || std::int64_t { start } + count > used)
        result.assign ("");
    else
        result.assign (view().substr (static_cast<std::size_t> (start), static_cast<std::size_t> (count)));
    return result;
}

MVString MVString::printableOnly() const
{
    MVString result ("");
    for (const char byte : view())
        if ((byte >= 32 && byte <= 126) || byte == '\n')
            result.append (byte);
    return result;
}

MVString MVString::lowerCase() const
{
    MVString result ("");
    for (const char byte : view())
        result.append (isUpper (byte) ? static_cast<char> (byte + 32) : byte);
    return result;
}

bool MVString::lessThan (const MVString& other) const
{
    const int shared = std::min (used, other.used);

    for (int i = 0; i < shared; ++i)
    {
        const auto mine = static_cast<signed char> (data[i]);
        const auto theirs = static_cast<signed char> (other.data[i]);
        if (mine != theirs)
            return mine < theirs;
    }

    return used < other.used;
}

bool MVString::equals (const char* other) const
{
    return data != nullptr && other != nullptr && view() == std::string_view (other);
}

bool MVString::equals (const MVSmartPtr<MVString>& other) const { return other && equals (*other); }

bool MVString::equals (const MVString& other) const
{
    return data != nullptr && other.data != nullptr && view() == other.view();
}

bool MVString::matchesAt (const char* other, int position) const
{
    if (data == nullptr || other == nullptr || position < 0 || position > used)
        return false;
    return view().substr (static_cast<std::size_t> (position)).starts_with (other);
}

int MVString::indexOf (char byte, int from) const
{
    const auto found = view().find (byte, static_cast<std::size_t> (std::max (0, from)));
    return found != std::string_view::npos ? static_cast<int> (found) : -1;
}

int MVString::indexOfIgnoreCase (const MVString& needle) const
{
    const MVString lowered = needle.lowerCase();
    const std::string_view here = view();
    const auto matches = [] (char mine, char wanted)
    { return mine == wanted || static_cast<char> (mine + 32) == wanted; };
    const auto found = std::search (here.begin(), here.end(), lowered.view().begin(), lowered.view().end(), matches);

    if (found == here.end() && ! lowered.isEmpty())
        return -1;
    return static_cast<int> (found - here.begin());
}

void MVString::append (const char* bytes, int count)
{
    if (bytes == nullptr || count < 1)
        return;

    if (ownsAddress (bytes))
    {
        const std::string copy (bytes, static_cast<std::size_t> (count));
        append (copy.data(), count);
        return;
    }

    const int newLength = checkedSum (used, count);
    if (newLength + 1 > capacity)
        reserve (used + std::max (appendRoom, count + 1));

    std::memcpy (data + used, bytes, static_cast<std::size_t> (count));
    used = newLength;
    data[used] = '\0';
}

void MVString::append (const MVSmartPtr<MVString>& other)
{
    if (other)
        append (*other);
}

void MVString::append (const char* other)
{
    if (other != nullptr)
        append (other, checkedLength (std::strlen (other)));
}

void MVString::append (char byte)
{
    if (checkedSum (used, 2) > capacity)
        reserve (used + appendRoom);
    data[used++] = byte;
    data[used] = '\0';
}

void MVString::truncate (int count)
{
    if (count < 0 || count >= used)
        return;
    used = count;
    data[used] = '\0';
}

void MVString::assign (const MVSmartPtr<MVString>& other)
{
    if (other)
        assign (*other);
    else
        makeEmpty();
}

void MVString::assign (const MVString& other)
{
    if (this != &other)
        assign (other.data, other.used);
    if (data == nullptr && other.data != nullptr)
        assign ("");
}

void MVString::assign (const char* bytes, int count)
{
    if (bytes == nullptr || count < 1)
    {
        makeEmpty();
        return;
    }

    checkedSum (count, 2);

    // Text from this very buffer can only move towards the front, and needs no more room.
    if (! ownsAddress (bytes))
        reserve (count + 1);
    std::memmove (data, bytes, static_cast<std::size_t> (count));
    used = count;
    data[used] = '\0';
}

void MVString::assign (const char* other)
{
    if (other == nullptr)
    {
        makeEmpty();
        return;
    }

    const int count = checkedLength (std::strlen (other));
    if (count > 0)
    {
        assign (other, count);
        return;
    }

    reserve (1);
    makeEmpty();
}

void MVString::reserve (int count)
{
    if (count < 0 || std::int64_t { count } + 1 <= capacity)
        return;

    const auto size = static_cast<std::size_t> (count) + 1;
    char* const grown = new char[size];
    const auto kept = std::min (static_cast<std::size_t> (used), size - 1);

    if (data != nullptr && kept > 0)
        std::memcpy (grown, data, kept);
    grown[kept] = '\0';

    delete[] data;
    data = grown;
    capacity = count;
    used = static_cast<int> (kept);
}

void MVString::makeEmpty()
{
    used = 0;
    if (data != nullptr)
        data[0] = '\0';
}

bool MVString::ownsAddress (const char* bytes) const
{
    const std::less<const char*> before;
    return data != nullptr && ! before (bytes, data) && before (bytes, data + used);
}

} // namespace morvanelab
