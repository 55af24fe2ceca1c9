// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVFileSwap.h"

#include <cstdint>
#include <limits>
#include <system_error>

#if ! JUCE_WINDOWS
#include <fcntl.h>
#include <unistd.h>
#endif

namespace morvanelab
{

namespace
{

namespace fs = std::filesystem;

/** Makes a rename survive a power cut. Best effort: the rename itself has happened. */
void syncDirectory ([[maybe_unused]] const juce::File& directory)
{
#if ! JUCE_WINDOWS
    const int handle = ::open (directory.getFullPathName().toRawUTF8(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle >= 0)
    {
        ::fsync (handle);
        ::close (handle);
    }
#endif
}

void copyPermissions (const juce::File& from, const juce::File& to)
{
    std::error_code error;
    const auto status = fs::status (toSystemPath (from), error);
    if (! error && fs::exists (status))
        fs::permissions (toSystemPath (to), status.permissions(), error);
}

} // namespace

fs::path toSystemPath (const juce::File& file)
{
#if JUCE_WINDOWS
    return fs::path (file.getFullPathName().toWideCharPointer());
#else
    return fs::path (file.getFullPathName().toRawUTF8());
#endif
}

juce::File temporarySiblingOf (const juce::File& target) { return juce::File (target.getFullPathName() + "_mv_tmp"); }

juce::File backupSiblingOf (const juce::File& target)
{
    return target.getSiblingFile (target.getFileNameWithoutExtension() + "_bak" + target.getFileExtension());
}

bool isPlainFile (const juce::File& file)
{
    std::error_code error;
    return file != juce::File() && fs::is_regular_file (toSystemPath (file), error);
}

bool readFileContents (const juce::File& file, juce::MemoryBlock& bytes)
{
    bytes.reset();
    if (! isPlainFile (file) || file.getSize() > std::numeric_limits<std::int32_t>::max())
        return false;

    // A read error and the file's end look alike; the length tells them apart.
    juce::FileInputStream stream (file);
    const auto size = stream.openedOk() ? stream.getTotalLength() : -1;
    return size >= 0
           && stream.readIntoMemoryBlock (bytes, static_cast<ssize_t> (size)) == static_cast<std::size_t> (size);
}

bool isWriteProtected (const juce::File& file)
{
    std::error_code error;
    const auto status = fs::status (toSystemPath (file), error);
    if (error || ! fs::exists (status))
        return false;

    constexpr auto anyWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    return (status.permissions() & anyWrite) == fs::perms::none || ! file.hasWriteAccess();
}

bool swapInFile (const juce::File& temporary, const juce::File& target)
{
    if (isWriteProtected (target))
        return false;

    copyPermissions (target, temporary);

    std::error_code error;
    fs::rename (toSystemPath (temporary), toSystemPath (target), error);

#if JUCE_WINDOWS
    // A file system without replacing rename: the complete temporary file outlives a crash between these two.
    if (error)
        return target.deleteFile() && temporary.moveFileTo (target);
#endif

    if (! error)
        syncDirectory (target.getParentDirectory());
    return ! error;
}

bool replaceFileContents (const juce::File& target, const void* bytes, std::size_t count)
{
    if (target == juce::File() || isWriteProtected (target))
        return false;

    const auto temporary = temporarySiblingOf (target);
    if (! temporary.deleteFile() || temporary.create().failed())
        return false;

    bool written = false;
    {
        juce::FileOutputStream stream (temporary);
        written = stream.openedOk() && (count == 0 || stream.write (bytes, count));
        stream.flush();
        written = written && stream.getStatus().wasOk();
    }

    // A short write may go unreported until the length is looked at.
    if (written && temporary.getSize() == static_cast<juce::int64> (count) && swapInFile (temporary, target))
        return true;

    if (target.existsAsFile() || ! written)
        temporary.deleteFile();
    return false;
}

} // namespace morvanelab
