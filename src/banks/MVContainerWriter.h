// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVContainerFormat.h"

#include <juce_core/juce_core.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace morvanelab
{

/** Writes a container's next version beside it and puts it in its place: construct, add compartments in order, commit.
    Until commit has succeeded the container is untouched. Failures are raised as MVException; the unfinished
    file is deleted with the writer. */
class MVContainerWriter
{
public:
    /** Raises 12 "File permission problem" if the temporary file cannot be made. */
    MVContainerWriter (const juce::File& target, std::uint32_t fileType);
    MVContainerWriter (const MVContainerWriter&) = delete;
    MVContainerWriter& operator= (const MVContainerWriter&) = delete;
    ~MVContainerWriter();

    /** Appends a compartment; empty bytes are no compartment and do nothing. Raises 13 "Unexpected file write
        failure". */
    void add (std::uint32_t type, std::uint32_t format, std::span<const std::uint8_t> bytes);

    /** Appends a copy of an entry of the source. Raises 13 "File I/O failure" if the source does not hold it, or if all
        copies together are larger than the source: its entries overlap, and its copy could fill the disk. */
    void copy (juce::FileInputStream& source, const mv_file_compartment& entry);

    /** Writes directory, header and checksum, forces them to the disk and swaps the file in.
        Raises 13 "Unexpected file write failure" or 13 "Unexpected file switch failure.". */
    void commit();

    /** After commit: what the file holds now. */
    const MVContainerHeader& getHeader() const { return header; }
    const std::vector<mv_file_compartment>& getDirectory() const { return directory; }

private:
    void beginEntry (std::uint32_t type, std::uint32_t format, std::uint64_t size);
    void writeHeader();

    juce::File target;
    juce::File temporary;
    std::unique_ptr<juce::FileOutputStream> stream;
    MVContainerHeader header;
    std::vector<mv_file_compartment> directory;
    std::uint64_t position = MVContainerHeader::size;
    std::uint64_t copied = 0;
    bool finished = false; ///< the temporary file is complete
};

} // namespace morvanelab
