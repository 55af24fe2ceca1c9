// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVFileCompartment.h"
#include "foundation/MVDataBlock.h"
#include "foundation/MVList.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

#include <juce_core/juce_core.h>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace morvanelab
{

struct MVContainerHeader;

/** A file of numbered compartments with a directory at its end and a checksum at its start.

    Closed (no path) or open (path and directory in memory). No stream stays open between operations: every
    read opens the file afresh, so a file that was moved away shows up at the next read. A compartment is
    addressed by its type and its ordinal among the entries of that type. If another packer has rewritten the file
    since, reads and writes by ordinal notice it from the file's header and take the directory from the file again
    (raising 15 "File read access not allowed." if that is no longer possible, and 13 "No input stream.  File
    moved?" if a container of another type lies there now).

    Every change writes a whole new file beside the container, under its full path followed by "_mv_tmp",
    forces it to the disk and then renames it over the container. At every instant either the old file or the
    complete new one is there. Where a rename cannot replace a file, the container is deleted first; a crash
    between the two leaves the complete "_mv_tmp", which the next openFile takes for the container. Changes by
    several packers, also of several processes, happen one after another (MVDirectoryLock).

    Failures are raised as MVException. Not thread-safe: one owner, any thread. */
class MVFilePacker
{
public:
    /** Major, minor, revision, build. */
    using Version = std::array<std::uint32_t, 4>;

    MVFilePacker() = default;
    MVFilePacker (const MVFilePacker&) = delete;
    MVFilePacker& operator= (const MVFilePacker&) = delete;
    virtual ~MVFilePacker() = default;

    /** Reads header and directory and returns resultDone. File type and version are for the caller to judge.
        If the file is missing but a complete "_mv_tmp" lies beside it, that one is put in its place first.
        A failure leaves the packer closed and raises:
        16 "File does not exist.", 12 "File read access not allowed." (no stream),
        15 "File read access not allowed." (shorter than its header or directory),
        17 "File checksum incorrect.  Corrupted?" (only with verifyChecksum; a newly created, empty container
        passes although its checksum is 0). */
    int openFile (const juce::File& file, bool verifyChecksum);

    /** Writes a new empty container of type "cbnk", version 1.4.0.1, and opens it. Missing parent directories
        are made. A file that exists and holds anything is never overwritten.
        Raises 12 "Could not create file", 13 "Could not open output stream.  Permissions issue?" or
        13 "Could not write to file" (the file is then deleted). */
    void createFile (const juce::File& file);

    /** Forgets path and directory; the disk is untouched. */
    void closeFile();

    bool isOpen() const { return path != juce::File(); }
    /** Empty while nothing is open. */
    juce::File getPath() const { return path; }
    /** Four-character code; 0 while nothing is open. */
    std::uint32_t getFileType() const { return isOpen() ? fileType : 0; }
    /** The file's; 1, 4, 0, 1 while nothing is open. */
    Version getVersion() const { return isOpen() ? version : currentVersion; }

    /** Counts the directory's entries of a type; returns resultDone. */
    int countCompartments (std::uint32_t type, int& count) const;

    /** The directory's entries, in order. */
    const MVList<mv_file_compartment>& getCompartments() const { return compartments; }

    /** The bytes of an entry; never null.
        Raises 13 "No input stream.  File moved?" if no file is open, it cannot be read or does not hold them all. */
    MVSmartPtr<MVDataBlock> readCompartment (const mv_file_compartment& entry) const;

    /** Reads and parses a compartment, without its checksum. resultDone; resultNoEntry (18) when no file is open
        or there is no such entry; resultEmptyData (14) when the bytes are not well-formed. riff is null unless
        done. Raises like readCompartment. */
    int readRiffCompartment (std::uint32_t type, int index, MVSmartPtr<MVRiffPacker>& riff);

    /** The bytes of entry number index of a type, as they stand: resultDone, or resultNoEntry (18) and null. Raises
       like readCompartment. */
    int readByOrdinal (std::uint32_t type, int index, MVSmartPtr<MVDataBlock>& data);

    /** The bytes of 'pdat' number index: resultDone, or resultNoEntry (18) and null. Raises like readCompartment. */
    int readRawPatchData (int index, MVSmartPtr<MVDataBlock>& data);

    /** Rewrites the file with one change. With insert, data goes in before entry index of the type, or at the
        end if there is none such. Without, data replaces that entry; empty (or null) data deletes it, and
        a missing entry leaves the contents as they are, which the caller is not told.
        Returns resultDone, or resultNoEntry (18) when no file is open. Raises, with the container untouched:
        12 "File permission problem", 13 "Unexpected file write failure", 13 "File I/O failure" (an entry
        that cannot be copied), 13 "Unexpected file switch failure." (also for a container that is write-protected). */
    int writeCompartment (std::uint32_t type, int index, std::uint32_t format, const MVSmartPtr<MVDataBlock>& data,
                          bool insert);

    /** New contents of entry number index of a type. */
    struct Replacement
    {
        std::uint32_t type;
        int index;
        std::uint32_t format;
        std::span<const std::uint8_t> bytes;
    };

    /** Replaces several entries in one rewrite: all of them or none. resultEmptyData (14), with nothing written, if one
        has no bytes, since an empty compartment would vanish. Else as writeCompartment; raises 13 "File I/O failure"
       also for an entry that is not there. */
    int replaceCompartments (const std::vector<Replacement>& replacements);

    /** writeCompartment with the packed chunk, format 2: inserted, or in the old one's place. A chunk that is null or
        cannot be packed yields resultEmptyData (14), the file untouched. */
    int addRiffCompartment (std::uint32_t type, int index, const MVSmartPtr<MVRiffPacker>& riff);
    int replaceRiffCompartment (std::uint32_t type, int index, const MVSmartPtr<MVRiffPacker>& riff);
    /** Inserts raw bytes as 'pdat' number index. */
    int addRawPatchData (int index, const MVSmartPtr<MVDataBlock>& data);

    /** If the file is missing and a complete "_mv_tmp" lies beside it, renames that. Returns whether the file exists
        afterwards. Never raises. */
    static bool recoverLeftover (const juce::File& file);

    static constexpr Version currentVersion { 1, 4, 0, 1 };

protected:
    /** A compartment that is not in the file yet. */
    struct NewCompartment
    {
        std::uint32_t type;
        std::uint32_t format;
        std::span<const std::uint8_t> bytes;
    };

    /** Appends compartments, in order, in one rewrite: the outcome is that of adding one after the other at
        ordinals that do not exist. Empty ones are left out. Returns and raises like writeCompartment. */
    int appendCompartments (const std::vector<NewCompartment>& added);

    /** Writes a new container of some type with its compartments, which appears under the file's name all at once, and
        opens it. Raises 12 "Could not create file" like createFile, else like writeCompartment. */
    void createWith (const juce::File& file, std::uint32_t type, const std::vector<NewCompartment>& contents);

private:
    static void requireVacant (const juce::File& file);
    const mv_file_compartment* findEntry (std::uint32_t type, int index) const;
    static MVSmartPtr<MVDataBlock> readEntry (juce::FileInputStream& stream, const mv_file_compartment& entry);
    void readDirectory (juce::FileInputStream& stream, bool verifyChecksum);
    void followChanges (juce::FileInputStream& stream);
    int writeRiff (std::uint32_t type, int index, const MVSmartPtr<MVRiffPacker>& riff, bool insert);
    /** Opens a writer, hands it and the present file to addAll, commits and takes the new directory over. */
    template <typename AddAll>
    int rewrite (AddAll addAll);
    void takeOver (const MVContainerHeader& header, const std::vector<mv_file_compartment>& entries);

    Version version = currentVersion;
    std::uint32_t fileType = 0;
    juce::File path;
    std::uint64_t directoryOffset = 0;
    std::uint32_t checksum = 0; ///< as stored in the file that the directory was read from
    MVList<mv_file_compartment> compartments;
};

} // namespace morvanelab
