// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string_view>

namespace morvanelab
{

/** The bytes of a file under resources/ that the build has put into the program, by its path there such as
    "icons/save.svg"; empty for an unknown name. Any thread. */
std::string_view resourceData (std::string_view name);

/** One embedded file; the table itself is written by the build. */
struct EmbeddedResource
{
    std::string_view name;
    std::string_view data;
};
extern const EmbeddedResource embeddedResources[];
extern const std::size_t embeddedResourceCount;

} // namespace morvanelab
