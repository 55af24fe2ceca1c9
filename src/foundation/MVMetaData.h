// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVString.h"
#include "foundation/MVVector.h"

namespace morvanelab
{

/** The descriptive record of a patch or a bank. One thread at a time. */
class MVMetaData : public MVObject
{
public:
    /** The id of its own chunk, 'meta'. */
    static constexpr std::uint32_t chunkType = 0x6D657461;

    MVMetaData() = default;
    MVMetaData (const MVMetaData& other);
    MVMetaData* clone() const override { return new MVMetaData (*this); }
    const char* className() const override { return "MVMetaData"; }
    /** Empties every field. */
    void reset() override;

    const MVString& getName() const { return name; }
    const MVString& getAuthor() const { return author; }
    const MVString& getTimestamp() const { return timestamp; }
    const MVString& getUuid() const { return uuid; }
    const MVString& getDescription() const { return description; }
    const MVString& getGeography() const { return geography; }
    const MVString& getGenre() const { return genre; }

    void setName (const MVString& value) { name = value; }
    void setAuthor (const MVString& value) { author = value; }
    void setTimestamp (const MVString& value) { timestamp = value; }
    void setUuid (const MVString& value) { uuid = value; }
    void setDescription (const MVString& value) { description = value; }
    void setGeography (const MVString& value) { geography = value; }
    void setGenre (const MVString& value) { genre = value; }
    /** The present local time, in the form of asctime without its newline. */
    void setTimestampToNow();

    /** The lock flag of stored data; kept, with its hash, as it is. */
    std::int32_t getLock() const { return lockFlag; }
    void setLock (std::int32_t value) { lockFlag = value; }

    int searchTagCount() const { return searchTags.size(); }
    /** -1 at or above the count, and below 0. */
    int getSearchTag (int index) const;
    void addSearchTag (int tag) { searchTags.add (tag); }
    void clearSearchTags() { searchTags.clear(); }

    /** The 'ilog' chunk itself, or null. */
    const MVSmartPtr<MVRiffPacker>& getImage() const { return image; }
    void setImage (MVSmartPtr<MVRiffPacker>& chunk);

    /** Whether the text occurs in name, author or description, by MVString::indexOfIgnoreCase. */
    bool matches (const MVString& text) const;

    /** A new chunk with that id; fields in a fixed order, empty texts left out. */
    MVSmartPtr<MVRiffPacker> packRiff (std::uint32_t chunkId = chunkType) const;
    /** Takes each field that has a chunk, leaves the others. Search tags are replaced as a whole; an empty 'time'
        chunk gives the present time. */
    void unpackRiff (const MVRiffPacker& packer);

private:
    MVString name;
    MVString author;
    MVString timestamp;
    std::int32_t lockFlag = 0;
    MVSmartPtr<MVRiffPacker> lockHash;
    MVString uuid;
    MVString description;
    MVString geography;
    MVString genre;
    MVVector<int> searchTags;
    MVSmartPtr<MVRiffPacker> image;
};

} // namespace morvanelab
