// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace morvanelab
{

/** What the bytes of a compartment are. */
enum COMPARTMENT_FORMAT_t : std::uint32_t
{
    compartmentRaw = 1,
    compartmentRiff = 2 ///< a packed MVRiffPacker
};

/** One entry of a container's directory. The numbers come from the file as they stand: nothing promises
    that offset and size lie inside it. */
struct mv_file_compartment
{
    std::uint64_t offset = 0; ///< from the file's start
    std::uint64_t size = 0;   ///< in bytes
    std::uint32_t type = 0;   ///< four-character code
    std::uint32_t format = 0; ///< COMPARTMENT_FORMAT_t
};

} // namespace morvanelab
