// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_core/juce_core.h>

#include <cstddef>
#include <filesystem>

namespace morvanelab
{

/** For what the standard library does with files. */
std::filesystem::path toSystemPath (const juce::File& file);

/** The file beside the target in which its next contents are prepared: the full path followed by "_mv_tmp". */
juce::File temporarySiblingOf (const juce::File& target);

/** The file beside the target in which former contents are kept: "_bak" before the extension, or at the end of a name
    that has none. */
juce::File backupSiblingOf (const juce::File& target);

/** Whether something that can be read to its end lies there: a file, or a link to one, rather than a directory, a pipe
    or a device, whose opening or reading might never return. */
bool isPlainFile (const juce::File& file);

/** Reads a whole plain file of less than 2 GiB. False if there is no such file or it cannot be read. */
bool readFileContents (const juce::File& file, juce::MemoryBlock& bytes);

/** Whether the user has protected the file: no write permission is set on it, or this process has none. A missing
    file is not protected. */
bool isWriteProtected (const juce::File& file);

/** Gives a finished temporary file the target's name, in one step where the system has one: the target is then at
    every instant the old or the new file. It keeps the old one's permissions. Returns false, with the temporary file
    in place, for a write-protected target or a failed rename. */
bool swapInFile (const juce::File& temporary, const juce::File& target);

/** Writes a whole file by way of its temporary sibling, which is forced to the disk before it takes the target's name:
    after a failure, also of a full disk, and after being killed, the old contents stand. Parent directories are made.
    bytes may be null if count is 0. */
bool replaceFileContents (const juce::File& target, const void* bytes, std::size_t count);

} // namespace morvanelab
