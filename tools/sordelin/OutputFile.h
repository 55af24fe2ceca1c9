// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_core/juce_core.h>

#include <cstddef>
#include <string>
#include <vector>

namespace morvanelab
{

using Bytes = std::vector<std::byte>;

/** Reads a whole file. Throws badData: "File does not exist." or "File read access not allowed.". */
Bytes readWholeFile (const std::string& path);

/** A file path as JUCE wants it: absolute. Throws badData for a path that is no UTF-8. */
juce::File fileAt (const std::string& path);

/** Replaces a file whole, or leaves it as it was: the bytes go to a sibling that is renamed over it. Its folder must be
    there. A device or a pipe is written to; a link stays. The path "-" writes to stdout.
    Throws badData: "Could not create file" or "Could not write to file". */
void writeWholeFile (const std::string& path, const Bytes& bytes);
void writeWholeFile (const std::string& path, const std::string& text);

} // namespace morvanelab
