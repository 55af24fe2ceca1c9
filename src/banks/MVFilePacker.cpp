// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVFilePacker.h"

#include "banks/MVBankBytes.h"
#include "banks/MVContainerWriter.h"
#include "banks/MVDirectoryLock.h"
#include "banks/MVFileSwap.h"
#include "foundation/MVException.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <algorithm>
#include <limits>
#include <map>

namespace morvanelab
{

namespace
{

constexpr std::uint32_t patchDataType = fourCC ("pdat");
constexpr std::uint32_t newContainerType = fourCC ("cbnk");

[[noreturn]] void raiseNoAccess() { throw MVException (resultFileUnreadable, "File read access not allowed."); }
[[noreturn]] void raiseNoStream() { throw MVException (resultFileFailure, "No input stream.  File moved?"); }
[[noreturn]] void raiseNotCreated() { throw MVException (resultFilePermission, "Could not create file"); }
[[noreturn]] void raisePermission() { throw MVException (resultFilePermission, "File permission problem"); }

} // namespace

int MVFilePacker::openFile (const juce::File& file, bool verifyChecksum)
{
    closeFile();

    if (file == juce::File() || ! recoverLeftover (file))
        throw MVException (resultFileMissing, "File does not exist.");

    juce::FileInputStream stream (file);
    if (stream.failedToOpen())
        throw MVException (resultFilePermission, "File read access not allowed.");

    readDirectory (stream, verifyChecksum);
    path = file;
    return resultDone;
}

void MVFilePacker::readDirectory (juce::FileInputStream& stream, bool verifyChecksum)
{
    MVContainerHeader header;
    const auto fileSize = stream.getTotalLength();
    if (! stream.setPosition (0) || ! header.read (stream) || ! header.fitsInto (fileSize))
        raiseNoAccess();

    if (verifyChecksum && ! header.isNewlyCreated (fileSize) && computeContainerChecksum (stream) != header.checksum)
        throw MVException (resultChecksum, "File checksum incorrect.  Corrupted?");

    std::vector<mv_file_compartment> entries;
    if (! readContainerDirectory (stream, header, entries))
        raiseNoAccess();

    takeOver (header, entries);
}

void MVFilePacker::takeOver (const MVContainerHeader& header, const std::vector<mv_file_compartment>& entries)
{
    fileType = header.fileType;
    version = header.version;
    directoryOffset = header.directoryOffset;
    checksum = header.checksum;

    compartments.clear();
    for (const auto& entry : entries)
        compartments.addTail (entry);
}

void MVFilePacker::followChanges (juce::FileInputStream& stream)
{
    MVContainerHeader header;
    const bool complete = header.read (stream);
    // Something else by the same name: it must neither be taken for ours nor be rewritten as such.
    if (complete && header.fileType != fileType)
        raiseNoStream();

    const bool unchanged = complete && header.checksum == checksum && header.directoryOffset == directoryOffset
                           && header.compartmentCount == compartments.count();
    if (! unchanged)
        readDirectory (stream, false);
}

void MVFilePacker::createFile (const juce::File& file)
{
    closeFile();

    requireVacant (file);
    if (file.create().failed())
        raiseNotCreated();

    MVContainerHeader header;
    header.fileType = newContainerType;
    header.version = currentVersion;
    bool written = false;
    {
        juce::FileOutputStream stream (file);
        if (stream.failedToOpen())
            throw MVException (resultFileFailure, "Could not open output stream.  Permissions issue?");
        written = header.write (stream);
        stream.flush();
        written = written && stream.getStatus().wasOk();
    }

    if (! written || file.getSize() != MVContainerHeader::size)
    {
        file.deleteFile();
        throw MVException (resultFileFailure, "Could not write to file");
    }

    takeOver (header, {});
    path = file;
}

void MVFilePacker::createWith (const juce::File& file, std::uint32_t type, const std::vector<NewCompartment>& contents)
{
    closeFile();

    const auto directory = file.getParentDirectory();
    if (file == juce::File() || directory.createDirectory().failed() || ! directory.hasWriteAccess())
        raiseNotCreated();

    const MVDirectoryLock lock (directory);
    requireVacant (file);
    MVContainerWriter writer (file, type);
    for (const auto& compartment : contents)
        writer.add (compartment.type, compartment.format, compartment.bytes);
    writer.commit();

    takeOver (writer.getHeader(), writer.getDirectory());
    path = file;
}

void MVFilePacker::requireVacant (const juce::File& file)
{
    if (file == juce::File() || (file.exists() && (! isPlainFile (file) || file.getSize() > 0)))
        raiseNotCreated();
}

void MVFilePacker::closeFile()
{
    path = juce::File();
    fileType = 0;
    version = currentVersion;
    directoryOffset = 0;
    checksum = 0;
    compartments.clear();
}

int MVFilePacker::countCompartments (std::uint32_t type, int& count) const
{
    count = 0;
    for (auto* node = compartments.firstNode(); node != nullptr; node = node->next)
        if (node->value.type == type)
            ++count;
    return resultDone;
}

const mv_file_compartment* MVFilePacker::findEntry (std::uint32_t type, int index) const
{
    int ordinal = 0;
    for (auto* node = compartments.firstNode(); node != nullptr; node = node->next)
        if (node->value.type == type && ordinal++ == index)
            return &node->value;
    return nullptr;
}

MVSmartPtr<MVDataBlock> MVFilePacker::readCompartment (const mv_file_compartment& entry) const
{
    if (! isOpen() || ! isPlainFile (path))
        raiseNoStream();
    juce::FileInputStream stream (path);
    if (stream.failedToOpen())
        raiseNoStream();
    return readEntry (stream, entry);
}

MVSmartPtr<MVDataBlock> MVFilePacker::readEntry (juce::FileInputStream& stream, const mv_file_compartment& entry)
{
    const auto fileSize = static_cast<std::uint64_t> (std::max<juce::int64> (0, stream.getTotalLength()));
    constexpr auto largest = static_cast<std::uint64_t> (std::numeric_limits<std::int32_t>::max());

    if (entry.offset > fileSize || entry.size > fileSize - entry.offset || entry.size > largest
        || ! stream.setPosition (static_cast<juce::int64> (entry.offset)))
        raiseNoStream();

    const int size = static_cast<int> (entry.size);
    auto block = makeSmart<MVDataBlock> (size);
    if (size > 0 && stream.read (block->dataWithSize (size), size) != size)
        raiseNoStream();
    return block;
}

int MVFilePacker::readByOrdinal (std::uint32_t type, int index, MVSmartPtr<MVDataBlock>& data)
{
    data.clear();
    if (! isOpen())
        return resultNoEntry;

    if (! isPlainFile (path))
        raiseNoStream();
    juce::FileInputStream stream (path);
    if (stream.failedToOpen())
        raiseNoStream();

    followChanges (stream);
    const auto* const entry = findEntry (type, index);
    if (entry == nullptr)
        return resultNoEntry;

    data = readEntry (stream, *entry);
    return resultDone;
}

int MVFilePacker::readRiffCompartment (std::uint32_t type, int index, MVSmartPtr<MVRiffPacker>& riff)
{
    riff.clear();

    MVSmartPtr<MVDataBlock> data;
    if (const int result = readByOrdinal (type, index, data); result != resultDone)
        return result;

    riff = parseChunks (bytesOf (data));
    return riff ? resultDone : resultEmptyData;
}

int MVFilePacker::readRawPatchData (int index, MVSmartPtr<MVDataBlock>& data)
{
    return readByOrdinal (patchDataType, index, data);
}

template <typename AddAll>
int MVFilePacker::rewrite (AddAll addAll)
{
    if (! isOpen())
        return resultNoEntry;
    const MVDirectoryLock lock (path.getParentDirectory());
    // Beginning the new file would delete a leftover that is the container's only copy.
    if (! recoverLeftover (path))
        raisePermission();

    MVContainerWriter writer (path, fileType);
    {
        juce::FileInputStream source (path);
        if (source.failedToOpen())
            raisePermission();
        followChanges (source);
        addAll (writer, source);
    }

    writer.commit();
    takeOver (writer.getHeader(), writer.getDirectory());
    return resultDone;
}

int MVFilePacker::writeCompartment (std::uint32_t type, int index, std::uint32_t format,
                                    const MVSmartPtr<MVDataBlock>& data, bool insert)
{
    const auto bytes = bytesOf (data);

    return rewrite (
        [&] (MVContainerWriter& writer, juce::FileInputStream& source)
        {
            bool placed = false;
            int ordinal = 0;
            for (auto* node = compartments.firstNode(); node != nullptr; node = node->next)
            {
                const bool isTarget = node->value.type == type && ordinal++ == index;
                if (isTarget)
                {
                    writer.add (type, format, bytes);
                    placed = true;
                }
                if (! isTarget || insert)
                    writer.copy (source, node->value);
            }

            if (insert && ! placed)
                writer.add (type, format, bytes);
        });
}

int MVFilePacker::replaceCompartments (const std::vector<Replacement>& replacements)
{
    if (std::any_of (replacements.begin(), replacements.end(), [] (const auto& each) { return each.bytes.empty(); }))
        return resultEmptyData;

    return rewrite (
        [&] (MVContainerWriter& writer, juce::FileInputStream& source)
        {
            std::map<std::uint32_t, int> ordinals;
            std::size_t placed = 0;
            for (auto* node = compartments.firstNode(); node != nullptr; node = node->next)
            {
                const int ordinal = ordinals[node->value.type]++;
                const auto found = std::find_if (replacements.begin(), replacements.end(),
                                                 [&] (const auto& each)
                                                 { return each.type == node->value.type && each.index == ordinal; });
                if (found == replacements.end())
                {
                    writer.copy (source, node->value);
                    continue;
                }
                writer.add (found->type, found->format, found->bytes);
                ++placed;
            }

            if (placed != replacements.size())
                throw MVException (resultFileFailure, "File I/O failure");
        });
}

int MVFilePacker::appendCompartments (const std::vector<NewCompartment>& added)
{
    return rewrite (
        [&] (MVContainerWriter& writer, juce::FileInputStream& source)
        {
            for (auto* node = compartments.firstNode(); node != nullptr; node = node->next)
                writer.copy (source, node->value);
            for (const auto& compartment : added)
                writer.add (compartment.type, compartment.format, compartment.bytes);
        });
}

int MVFilePacker::writeRiff (std::uint32_t type, int index, const MVSmartPtr<MVRiffPacker>& riff, bool insert)
{
    const auto data = packChunks (riff);
    if (data->totalSize() < 1)
        return resultEmptyData;
    return writeCompartment (type, index, compartmentRiff, data, insert);
}

int MVFilePacker::addRiffCompartment (std::uint32_t type, int index, const MVSmartPtr<MVRiffPacker>& riff)
{
    return writeRiff (type, index, riff, true);
}

int MVFilePacker::replaceRiffCompartment (std::uint32_t type, int index, const MVSmartPtr<MVRiffPacker>& riff)
{
    return writeRiff (type, index, riff, false);
}

int MVFilePacker::addRawPatchData (int index, const MVSmartPtr<MVDataBlock>& data)
{
    return writeCompartment (patchDataType, index, compartmentRaw, data, true);
}

bool MVFilePacker::recoverLeftover (const juce::File& file)
{
    if (isPlainFile (file))
        return true;
    if (file == juce::File() || file.exists())
        return false;

    const auto leftover = temporarySiblingOf (file);
    MVContainerHeader header;
    return isPlainFile (leftover) && isCompleteContainer (leftover, header) && swapInFile (leftover, file);
}

} // namespace morvanelab
