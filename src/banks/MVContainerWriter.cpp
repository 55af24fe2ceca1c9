// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVContainerWriter.h"

#include "banks/MVFilePacker.h"
#include "banks/MVFileSwap.h"
#include "foundation/MVException.h"
#include "foundation/MVResult.h"

#include <algorithm>
#include <array>

namespace morvanelab
{

namespace
{

constexpr std::size_t streamBufferSize = 32768;
constexpr std::size_t copyPieceSize = 32768;

[[noreturn]] void raiseWriteFailure() { throw MVException (resultFileFailure, "Unexpected file write failure"); }
[[noreturn]] void raiseCopyFailure() { throw MVException (resultFileFailure, "File I/O failure"); }

} // namespace

MVContainerWriter::MVContainerWriter (const juce::File& targetFile, std::uint32_t fileType)
    : target (targetFile), temporary (temporarySiblingOf (targetFile))
{
    if (temporary.deleteFile() && temporary.create().wasOk())
        stream = std::make_unique<juce::FileOutputStream> (temporary, streamBufferSize);
    if (stream == nullptr || stream->failedToOpen())
        throw MVException (resultFilePermission, "File permission problem");

    header.fileType = fileType;
    header.version = MVFilePacker::currentVersion;
    writeHeader();
}

MVContainerWriter::~MVContainerWriter()
{
    stream.reset();
    // The finished file is kept if it is the only one left.
    if (! finished || target.existsAsFile())
        temporary.deleteFile();
}

void MVContainerWriter::writeHeader()
{
    if (! header.write (*stream))
        raiseWriteFailure();
}

void MVContainerWriter::beginEntry (std::uint32_t type, std::uint32_t format, std::uint64_t size)
{
    directory.push_back ({ position, size, type, format });
    position += size;
}

void MVContainerWriter::add (std::uint32_t type, std::uint32_t format, std::span<const std::uint8_t> bytes)
{
    if (bytes.empty())
        return;

    beginEntry (type, format, bytes.size());
    if (! stream->write (bytes.data(), bytes.size()))
        raiseWriteFailure();
}

void MVContainerWriter::copy (juce::FileInputStream& source, const mv_file_compartment& entry)
{
    const auto sourceSize = static_cast<std::uint64_t> (std::max<juce::int64> (0, source.getTotalLength()));
    if (entry.offset > sourceSize || entry.size > sourceSize - entry.offset || entry.size > sourceSize - copied
        || ! source.setPosition (static_cast<juce::int64> (entry.offset)))
        raiseCopyFailure();

    copied += entry.size;
    beginEntry (entry.type, entry.format, entry.size);

    std::array<char, copyPieceSize> piece;
    for (std::uint64_t left = entry.size; left > 0;)
    {
        const auto count = static_cast<std::size_t> (std::min<std::uint64_t> (left, piece.size()));
        if (source.read (piece.data(), static_cast<int> (count)) != static_cast<int> (count)
            || ! stream->write (piece.data(), count))
            raiseCopyFailure();
        left -= count;
    }
}

void MVContainerWriter::commit()
{
    for (const auto& entry : directory)
        if (! writeContainerEntry (*stream, entry))
            raiseWriteFailure();

    header.directoryOffset = position;
    header.compartmentCount = static_cast<std::int32_t> (directory.size());

    // Setting the position empties the stream's buffer, so that the checksum is that of the bytes on disk.
    bool good = stream->setPosition (0) && header.write (*stream) && stream->setPosition (0);
    juce::FileInputStream written (temporary);
    if (! good || written.failedToOpen())
        raiseWriteFailure();
    header.checksum = computeContainerChecksum (written);

    good = header.write (*stream);
    stream->flush();
    good = good && stream->getStatus().wasOk();
    stream.reset();

    // Read back by name: the stream does not report a piece written short, and another process may have begun its
    // own file under this one.
    MVContainerHeader onDisk;
    if (! good || ! isCompleteContainer (temporary, onDisk) || ! (onDisk == header))
        raiseWriteFailure();

    finished = true;
    if (! swapInFile (temporary, target))
        throw MVException (resultFileFailure, "Unexpected file switch failure.");
}

} // namespace morvanelab
