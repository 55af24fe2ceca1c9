// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/TempFolder.h"

#include "banks/MVBankBytes.h"
#include "banks/MVUserPrompt.h"
#include "foundation/MVException.h"

#include <juce_core/juce_core.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace morvanelab::test
{

using Bytes = std::vector<std::uint8_t>;

/** An empty folder for one test, gone afterwards. */
struct TestFolder : TempFolder
{
    juce::File file (const char* name) const { return folder.getChildFile (name); }
    int fileCount() const { return folder.getNumberOfChildFiles (juce::File::findFilesAndDirectories); }

    const juce::File folder { juce::String (path().string()) };
};

/** Answers every question the same way and remembers what was said, "title|text". */
class ScriptedPrompt : public MVUserPrompt
{
public:
    void tell (const std::string& title, const std::string& text, const std::string&) override
    {
        told.push_back (title + "|" + text);
    }
    bool askYesNo (const std::string& title, const std::string& text) override
    {
        asked.push_back (title + "|" + text);
        return answer;
    }
    void askText (const std::string& title, const std::string&, const std::string&, TextAnswer textAnswer) override
    {
        asked.push_back (title);
        textAnswer (std::nullopt);
    }

    bool answer = false;
    std::vector<std::string> told;
    std::vector<std::string> asked;
};

/** Little-endian bytes, written with nothing of the code under test. */
struct HandWriter
{
    HandWriter& number (std::uint64_t value, int size)
    {
        for (int i = 0; i < size; ++i)
            bytes.push_back (static_cast<std::uint8_t> (value >> (8 * i)));
        return *this;
    }
    HandWriter& word (std::uint32_t value) { return number (value, 4); }
    HandWriter& text (std::string_view value) { return append (Bytes (value.begin(), value.end())); }
    HandWriter& append (const Bytes& more)
    {
        bytes.insert (bytes.end(), more.begin(), more.end());
        return *this;
    }
    Bytes bytes;
};

inline void putNumber (Bytes& bytes, std::size_t position, std::uint64_t value, int size)
{
    for (int i = 0; i < size; ++i)
        bytes[position + static_cast<std::size_t> (i)] = static_cast<std::uint8_t> (value >> (8 * i));
}

/** sum = (sum + (signed byte << (i & 7)) + i) % 134217727 with 32-bit wrapping; i restarts after period bytes. */
inline std::uint32_t handChecksum (const Bytes& bytes, std::size_t from, std::size_t to, std::uint64_t period)
{
    std::uint64_t sum = 0;
    for (std::size_t at = from; at < to; ++at)
    {
        const std::uint64_t i = (at - from) % period;
        const std::int64_t value = bytes[at] < 128 ? bytes[at] : bytes[at] - 256;
        const std::int64_t total =
            static_cast<std::int64_t> (sum) + value * (std::int64_t { 1 } << (i % 8)) + static_cast<std::int64_t> (i);
        sum = (static_cast<std::uint64_t> (total) % 4294967296U) % 134217727U;
    }
    return static_cast<std::uint32_t> (sum);
}

struct HandCompartment
{
    std::string type;
    std::uint32_t format;
    Bytes bytes;
};

inline Bytes reversed (std::string_view type) { return Bytes (type.rbegin(), type.rend()); }

inline void sealContainer (Bytes& bytes) { putNumber (bytes, 0, handChecksum (bytes, 4, bytes.size(), 128), 4); }

/** A whole container as a file of bytes. */
inline Bytes handContainer (const std::vector<HandCompartment>& compartments, std::string_view fileType = "cbnk")
{
    HandWriter data;
    HandWriter directory;
    for (const auto& compartment : compartments)
    {
        directory.number (40 + data.bytes.size(), 8).number (compartment.bytes.size(), 8);
        directory.append (reversed (compartment.type)).word (compartment.format);
        data.append (compartment.bytes);
    }

    HandWriter file;
    file.word (0).append (reversed (fileType)).number (40 + data.bytes.size(), 8);
    file.word (1).word (4).word (0).word (1).word (static_cast<std::uint32_t> (compartments.size())).word (0);
    file.append (data.bytes).append (directory.bytes);
    sealContainer (file.bytes);
    return file.bytes;
}

/** A packed chunk; a root carries a checksum, a child four zeros. */
inline Bytes handChunk (std::string_view id, const std::vector<Bytes>& children, const Bytes& payload, bool isRoot)
{
    HandWriter inside;
    for (const auto& child : children)
        inside.append (child);
    inside.append (payload);

    HandWriter chunk;
    chunk.text ("FRVM").number (1, 1).number (4, 1).number (0, 1).number (isRoot ? 1 : 0, 1).append (reversed (id));
    chunk.word (static_cast<std::uint32_t> (28 + inside.bytes.size()));
    chunk.word (static_cast<std::uint32_t> (payload.size())).word (static_cast<std::uint32_t> (children.size()));
    chunk.append (inside.bytes);
    chunk.word (isRoot ? handChecksum (chunk.bytes, 0, chunk.bytes.size(), 32767) : 0);
    return chunk.bytes;
}

/** The packed form of metadata in which nothing is set. */
inline Bytes handEmptyMeta() { return handChunk ("meta", { handChunk ("lock", {}, Bytes (4), false) }, {}, true); }

/** The compartments of an empty bank with the given numbers of slots. */
inline std::vector<HandCompartment> handBank (int metas = 1, int patchMetas = 64, int patches = 64)
{
    std::vector<HandCompartment> result;
    for (int i = 0; i < metas; ++i)
        result.push_back ({ "meta", 2, handEmptyMeta() });
    for (int i = 0; i < std::max (patchMetas, patches); ++i)
    {
        if (i < patchMetas)
            result.push_back ({ "pmta", 2, handEmptyMeta() });
        if (i < patches)
            result.push_back ({ "pdat", 1, Bytes { 0 } });
    }
    return result;
}

inline void writeBytes (const juce::File& file, const Bytes& bytes)
{
    file.deleteFile();
    file.create();
    file.appendData (bytes.data(), bytes.size());
}

inline Bytes readBytes (const juce::File& file)
{
    juce::MemoryBlock block;
    file.loadFileAsData (block);
    return Bytes (block.begin(), block.end());
}

inline Bytes toBytes (const MVSmartPtr<MVDataBlock>& block)
{
    const auto bytes = bytesOf (block);
    return Bytes (bytes.begin(), bytes.end());
}

inline MVSmartPtr<MVDataBlock> toBlock (const Bytes& bytes)
{
    return makeSmart<MVDataBlock> (bytes.data(), static_cast<int> (bytes.size()));
}

/** What an operation raises, as "code text"; empty if nothing. */
template <typename Operation>
std::string raisedBy (Operation operation)
{
    try
    {
        operation();
        return {};
    }
    catch (const MVException& failure)
    {
        return std::to_string (failure.getCode()) + " " + failure.text();
    }
}

} // namespace morvanelab::test
