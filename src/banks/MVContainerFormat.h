// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVFileCompartment.h"

#include <juce_core/juce_core.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvanelab
{

/** The running checksum of a container: over its bytes from offset 4 on, in chunks of 128. Each byte, sign-extended and
    shifted left by the low three bits of its position in the chunk, is added together with that position, modulo
    134217727, in wrapping 32-bit arithmetic. */
class MVContainerChecksum
{
public:
    void add (const std::uint8_t* bytes, std::size_t count);
    std::uint32_t value() const { return sum; }

private:
    std::uint32_t sum = 0;
    std::uint32_t position = 0; ///< within the chunk
};

/** The 40 bytes at a container's start, little-endian. */
struct MVContainerHeader
{
    static constexpr int size = 40;
    static constexpr int entrySize = 24;

    std::uint32_t checksum = 0;
    std::uint32_t fileType = 0;
    std::uint64_t directoryOffset = 0;
    std::array<std::uint32_t, 4> version {};
    std::int32_t compartmentCount = 0;

    bool operator== (const MVContainerHeader&) const = default;

    /** False if the stream, from its present position, holds fewer than 40 bytes. */
    bool read (juce::InputStream& stream);
    /** False if not all could be written. */
    bool write (juce::OutputStream& stream) const;

    /** Whether a file of that many bytes holds the header and the whole directory. */
    bool fitsInto (std::int64_t fileSize) const;
    /** Whether this is the header of a container that was created and never written to. */
    bool isNewlyCreated (std::int64_t fileSize) const;
};

/** Reads the directory that a header tells of, which must have passed fitsInto. False if the stream ends early. */
bool readContainerDirectory (juce::InputStream& stream, const MVContainerHeader& header,
                             std::vector<mv_file_compartment>& entries);
bool writeContainerEntry (juce::OutputStream& stream, const mv_file_compartment& entry);

/** The checksum of a whole container file, read from the stream at offset 4 to its end. */
std::uint32_t computeContainerChecksum (juce::InputStream& stream);

/** Whether the file is a container that holds its whole directory and has the right checksum. A newly created one,
    whose checksum is 0, does not count: it may be a write cut short. header receives what was read. */
bool isCompleteContainer (const juce::File& file, MVContainerHeader& header);

} // namespace morvanelab
