// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace morvanelab
{

/** The library's universal sanitiser of stored and computed doubles. Folds x into the range between a and b
    (in either order): beyond a limit, the whole spans are dropped and the rest is counted from the other end.
    A magnitude above 2147483647 (infinity included) gives b, a not-a-number gives a, a value nearer to 0 than
    1.0000000036274937e-15 gives 0. A range of no width gives a. */
double wrapToRange (double x, double a, double b);

/** The same for whole numbers: below lo gives span - ((lo - x) mod span) + lo, above hi lo + ((x - hi) mod span).
    If a equals b the result is a. */
int wrapToIntRange (int x, int a, int b);

/** Folds a stored index into 0 to limit as wrapToIntRange does; the most negative value counts as 0. */
int wrapIndex (int x, int limit);

/** Folds a stored choice that counts from 1 into 1 to count: below 1 gives count - ((1 - x) mod (count - 1)),
    above count ((x - count) mod (count - 1)) + 1; the most negative value gives 1. */
int foldChoice (int x, int count);

/** Truncation towards zero that saturates at the limits of 32 bits; a not-a-number gives 0. */
std::int32_t truncToInt (double x);

/** Clamps to low..high; a not-a-number gives low. */
double limitTo (double x, double low, double high);

/** Version code of a stored "ver " chunk: (third + (second + first * 100) * 10) * 100, wrapping at 32 bits. */
std::uint32_t versionCode (std::uint32_t major, std::uint32_t minor, std::uint32_t revision);

/** A four-character code: the first character is the most significant byte. */
constexpr std::uint32_t fourCC (const char (&text)[5])
{
    return (static_cast<std::uint32_t> (static_cast<unsigned char> (text[0])) << 24)
           | (static_cast<std::uint32_t> (static_cast<unsigned char> (text[1])) << 16)
           | (static_cast<std::uint32_t> (static_cast<unsigned char> (text[2])) << 8)
           | static_cast<std::uint32_t> (static_cast<unsigned char> (text[3]));
}

} // namespace morvanelab
