// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVMetaData.h"

#include "foundation/MVChunks.h"
#include "foundation/MVMath.h"

#include <ctime>
#include <utility>

namespace morvanelab
{

namespace
{

constexpr std::uint32_t nameChunk = fourCC ("name");
constexpr std::uint32_t authorChunk = fourCC ("auth");
constexpr std::uint32_t timeChunk = fourCC ("time");
constexpr std::uint32_t lockChunk = fourCC ("lock");
constexpr std::uint32_t lockHashChunk = fourCC ("pswd");
constexpr std::uint32_t uuidChunk = fourCC ("uuid");
constexpr std::uint32_t descriptionChunk = fourCC ("desc");
constexpr std::uint32_t geographyChunk = fourCC ("geo ");
constexpr std::uint32_t genreChunk = fourCC ("gnre");
constexpr std::uint32_t searchTagChunk = fourCC ("stag");
constexpr std::uint32_t imageChunk = fourCC ("ilog");

static_assert (MVMetaData::chunkType == fourCC ("meta"));

void addTextUnlessEmpty (MVRiffPacker& packer, std::uint32_t chunkId, const MVString& text)
{
    if (! text.isEmpty())
        addTextChunk (packer, chunkId, text);
}

void takeText (const MVRiffPacker& packer, std::uint32_t chunkId, MVString& text)
{
    if (auto stored = childText (packer, chunkId))
        text = *std::move (stored);
}

/** A copy that keeps its bytes: chunks kept as they are have either children or a payload. */
MVSmartPtr<MVRiffPacker> copyOfChunk (const MVSmartPtr<MVRiffPacker>& chunk)
{
    return chunk ? MVSmartPtr<MVRiffPacker> (chunk->clone()) : MVSmartPtr<MVRiffPacker>();
}

} // namespace

MVMetaData::MVMetaData (const MVMetaData& other)
    : MVObject (other), name (other.name), author (other.author), timestamp (other.timestamp),
      lockFlag (other.lockFlag), lockHash (copyOfChunk (other.lockHash)), uuid (other.uuid),
      description (other.description), geography (other.geography), genre (other.genre), searchTags (other.searchTags),
      image (copyOfChunk (other.image))
{
}

void MVMetaData::reset()
{
    for (MVString* const text : { &name, &author, &timestamp, &uuid, &description, &geography, &genre })
        text->truncate (0);
    lockFlag = 0;
    lockHash.clear();
    searchTags.clear();
    image.clear();
}

void MVMetaData::setTimestampToNow()
{
    const std::time_t now = std::time (nullptr);
    std::tm local {};
    char text[64] {};

#if defined(_WIN32)
    localtime_s (&local, &now);
    asctime_s (text, sizeof (text), &local);
#else
    localtime_r (&now, &local);
    asctime_r (&local, text);
#endif

    timestamp = MVString (text);
    timestamp.truncate (timestamp.indexOf ('\n', 0));
}

int MVMetaData::getSearchTag (int index) const
{
    return index >= 0 && index < searchTags.size() ? searchTags[index] : -1;
}

void MVMetaData::setImage (MVSmartPtr<MVRiffPacker>& chunk)
{
    image = chunk;
    chunk.clear();
}

bool MVMetaData::matches (const MVString& text) const
{
    return name.indexOfIgnoreCase (text) >= 0 || author.indexOfIgnoreCase (text) >= 0
           || description.indexOfIgnoreCase (text) >= 0;
}

MVSmartPtr<MVRiffPacker> MVMetaData::packRiff (std::uint32_t chunkId) const
{
    auto result = makeSmart<MVRiffPacker> (chunkId);
    auto lock = makeChunk (lockChunk, lockFlag);
    lock->addChild (copyOfChunk (lockHash));

    addTextUnlessEmpty (*result, nameChunk, name);
    addTextUnlessEmpty (*result, authorChunk, author);
    addTextUnlessEmpty (*result, timeChunk, timestamp);
    result->addChild (lock);
    addTextUnlessEmpty (*result, uuidChunk, uuid);
    addTextUnlessEmpty (*result, descriptionChunk, description);
    addTextUnlessEmpty (*result, geographyChunk, geography);
    addTextUnlessEmpty (*result, genreChunk, genre);
    for (const int tag : searchTags)
        addChunk (*result, searchTagChunk, tag);
    result->addChild (copyOfChunk (image));
    return result;
}

void MVMetaData::unpackRiff (const MVRiffPacker& packer)
{
    takeText (packer, nameChunk, name);
    takeText (packer, authorChunk, author);
    takeText (packer, uuidChunk, uuid);
    takeText (packer, descriptionChunk, description);
    takeText (packer, geographyChunk, geography);
    takeText (packer, genreChunk, genre);

    if (auto stored = childText (packer, timeChunk))
    {
        timestamp = *std::move (stored);
        if (timestamp.isEmpty())
            setTimestampToNow();
    }

    if (const auto lock = packer.findChild (lockChunk))
    {
        lockFlag = chunkNumber<std::int32_t> (lock).value_or (lockFlag);
        lockHash = copyOfChunk (lock->findChild (lockHashChunk));
    }

    searchTags.clear();
    for (int i = 0; i < packer.childCount(); ++i)
    {
        const auto child = packer.childAt (i);
        if (child->getChunkId() == searchTagChunk)
            searchTags.add (chunkNumber<std::int32_t> (child).value_or (-1));
    }

    if (const auto chunk = packer.findChild (imageChunk))
        image = copyOfChunk (chunk);
}

} // namespace morvanelab
