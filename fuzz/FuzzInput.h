// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace morvanelab::fuzz
{

/** Ends the run as a finding unless something that has to hold does. */
inline void require (bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf (stderr, "does not hold: %s\n", what);
    std::abort();
}

/** A copy of exactly the input's size, so that the address sanitizer sees one byte too many. */
inline std::vector<std::uint8_t> exactCopy (const std::uint8_t* data, std::size_t size)
{
    std::vector<std::uint8_t> bytes (data, data + size);
    bytes.shrink_to_fit();
    return bytes;
}

} // namespace morvanelab::fuzz
