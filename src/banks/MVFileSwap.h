// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_core/juce_core.h>

#include <cstddef>

namespace morvanelab
{

/** The file beside the target in which its next contents are prepared: the full path followed by "_mv_tmp". */
juce::File temporarySiblingOf (const juce::File& target);

/** Whether the user has protected the file: no write permission is set on it, or this process has none. A missing
    file is not protected. */
bool isWriteProtected (const juce::File& file);

/** Gives a finished temporary file the target's name, in one step where the system has one: the target is then at
    every instant the old or the new file. It keeps the old one's permissions. Returns false, with the temporary file
    in place, for a write-protected target or a failed rename. */
bool swapInFile (const juce::File& temporary, const juce::File& target);

/** Writes a whole file by way of its temporary sibling: after a failure, also of a full disk, the old contents
    stand. Parent directories are made. */
bool replaceFileContents (const juce::File& target, const void* bytes, std::size_t count);

} // namespace morvanelab
