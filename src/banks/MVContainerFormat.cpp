// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVContainerFormat.h"

#include <cstdlib>

namespace morvanelab
{

namespace
{

constexpr std::uint32_t checksumModulus = 134217727;
constexpr std::uint32_t checksumChunk = 128;
constexpr std::int64_t checksumStart = 4;
constexpr std::size_t readSize = 32768;

std::uint32_t readWord (juce::InputStream& stream) { return static_cast<std::uint32_t> (stream.readInt()); }

bool writeWord (juce::OutputStream& stream, std::uint32_t value) { return stream.writeInt (static_cast<int> (value)); }

bool writeLong (juce::OutputStream& stream, std::uint64_t value)
{
    return stream.writeInt64 (static_cast<juce::int64> (value));
}

} // namespace

void MVContainerChecksum::add (const std::uint8_t* bytes, std::size_t count)
{
    std::uint32_t running = sum;
    std::uint32_t place = position;

    for (std::size_t i = 0; i < count; ++i)
    {
        const auto extended = static_cast<std::uint32_t> (static_cast<std::int8_t> (bytes[i]));
        running += (extended << (place & 7)) + place;

        // The remainder is the value itself nearly always, and a division a byte is slow.
        if (running >= checksumModulus)
            running %= checksumModulus;

        place = (place + 1) % checksumChunk;
    }

    sum = running;
    position = place;
}

bool MVContainerHeader::read (juce::InputStream& stream)
{
    std::array<char, size> bytes {};
    if (stream.read (bytes.data(), size) != size)
        return false;

    juce::MemoryInputStream fields (bytes.data(), bytes.size(), false);
    checksum = readWord (fields);
    fileType = readWord (fields);
    directoryOffset = static_cast<std::uint64_t> (fields.readInt64());
    for (auto& number : version)
        number = readWord (fields);
    compartmentCount = fields.readInt();
    return true;
}

bool MVContainerHeader::write (juce::OutputStream& stream) const
{
    bool good = writeWord (stream, checksum) && writeWord (stream, fileType) && writeLong (stream, directoryOffset);
    for (const auto number : version)
        good = good && writeWord (stream, number);

    constexpr std::uint32_t reserved = 0;
    return good && stream.writeInt (compartmentCount) && writeWord (stream, reserved);
}

bool MVContainerHeader::fitsInto (std::int64_t fileSize) const
{
    if (fileSize < size)
        return false;

    // The numbers are hostile: the end of the directory must not wrap round.
    const auto available = static_cast<std::uint64_t> (fileSize);
    const auto entryBytes =
        static_cast<std::uint64_t> (std::abs (static_cast<std::int64_t> (compartmentCount))) * entrySize;

    if (compartmentCount < 0)
        return directoryOffset <= available + entryBytes;
    return directoryOffset <= available && entryBytes <= available - directoryOffset;
}

bool MVContainerHeader::isNewlyCreated (std::int64_t fileSize) const
{
    return fileSize == size && checksum == 0 && directoryOffset == 0 && compartmentCount == 0;
}

bool readContainerDirectory (juce::InputStream& stream, const MVContainerHeader& header,
                             std::vector<mv_file_compartment>& entries)
{
    entries.clear();
    if (header.compartmentCount < 1)
        return true;
    if (! stream.setPosition (static_cast<juce::int64> (header.directoryOffset)))
        return false;

    const std::size_t total = static_cast<std::size_t> (header.compartmentCount) * MVContainerHeader::entrySize;
    juce::MemoryBlock bytes;
    if (stream.readIntoMemoryBlock (bytes, static_cast<ssize_t> (total)) != total)
        return false;

    juce::MemoryInputStream fields (bytes, false);
    entries.resize (static_cast<std::size_t> (header.compartmentCount));
    for (auto& entry : entries)
    {
        entry.offset = static_cast<std::uint64_t> (fields.readInt64());
        entry.size = static_cast<std::uint64_t> (fields.readInt64());
        entry.type = readWord (fields);
        entry.format = readWord (fields);
    }

    return true;
}

bool writeContainerEntry (juce::OutputStream& stream, const mv_file_compartment& entry)
{
    return writeLong (stream, entry.offset) && writeLong (stream, entry.size) && writeWord (stream, entry.type)
           && writeWord (stream, entry.format);
}

std::uint32_t computeContainerChecksum (juce::InputStream& stream)
{
    MVContainerChecksum checksum;
    std::vector<std::uint8_t> buffer (readSize);

    if (! stream.setPosition (checksumStart))
        return checksum.value();

    for (;;)
    {
        const int count = stream.read (buffer.data(), static_cast<int> (buffer.size()));
        if (count < 1)
            return checksum.value();
        checksum.add (buffer.data(), static_cast<std::size_t> (count));
    }
}

bool isCompleteContainer (const juce::File& file, MVContainerHeader& header)
{
    juce::FileInputStream stream (file);
    return stream.openedOk() && header.read (stream) && header.fitsInto (stream.getTotalLength())
           && computeContainerChecksum (stream) == header.checksum;
}

} // namespace morvanelab
