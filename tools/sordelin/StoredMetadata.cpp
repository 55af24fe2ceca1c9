// SPDX-License-Identifier: GPL-3.0-or-later
#include "StoredMetadata.h"

#include "BankSlots.h"

#include "banks/MVBankBytes.h"
#include "engine/PatchTextMetadata.h"
#include "foundation/MVException.h"
#include "foundation/MVMath.h"

#include <limits>

namespace morvanelab
{

using patchText::Json;
using patchText::member;

namespace
{

constexpr std::size_t anyLength = std::numeric_limits<std::size_t>::max();
constexpr std::uint32_t lockChunk = fourCC ("lock");
constexpr std::uint32_t imageChunk = fourCC ("ilog");

struct TextField
{
    const char* key;
    const MVString& (MVMetaData::*get)() const;
    void (MVMetaData::*set) (const MVString&);
};

/** The texts that a bank stores and the text form of a patch does not know. */
constexpr TextField furtherTexts[] { { "timestamp", &MVMetaData::getTimestamp, &MVMetaData::setTimestamp },
                                     { "uuid", &MVMetaData::getUuid, &MVMetaData::setUuid } };

MVSmartPtr<MVRiffPacker> chunkOf (const Json& json, std::uint32_t chunkId, const TextPlace& place)
{
    auto chunk = patchText::chunkFromJson (json, place);
    if (chunk->getChunkId() != chunkId)
        (place / "id").expected (chunkId == lockChunk ? "\"lock\"" : "\"ilog\"");
    return chunk;
}

/** Unpacking is the only way to a lock's hash, and takes the tags away. */
void setLock (MVMetaData& metadata, const MVSmartPtr<MVRiffPacker>& lock)
{
    MVVector<int> tags;
    for (int i = 0; i < metadata.searchTagCount(); ++i)
        tags.add (metadata.getSearchTag (i));

    MVRiffPacker form (MVMetaData::chunkType);
    form.addChild (MVSmartPtr<MVRiffPacker> (lock));
    metadata.unpackRiff (form);
    for (const int tag : tags)
        metadata.addSearchTag (tag);
}

/** Takes the fields that only a bank stores; returns what is left. */
Json takeFurtherFields (const Json& json, MVMetaData& metadata, const TextPlace& place)
{
    Json rest = Json::object();
    for (const auto& [key, value] : json.items())
    {
        const TextPlace here = place / key;
        const auto* const text =
            std::ranges::find_if (furtherTexts, [&name = key] (const TextField& known) { return name == known.key; });
        if (text != std::end (furtherTexts))
            (metadata.*text->set) (MVString (std::string_view (patchText::textFromJson (value, anyLength, here))));
        else if (key == "lock")
            setLock (metadata, chunkOf (value, lockChunk, here));
        else if (key == "image")
        {
            auto image = chunkOf (value, imageChunk, here);
            metadata.setImage (image);
        }
        else if (patchText::storedValue (value) != nullptr)
            rest[key] = patchText::textFromJson (value, anyLength, here);
        else
            rest[key] = value;
    }
    return rest;
}

Json fieldsOf (const MVMetaData& metadata)
{
    Json json = patchText::metadataToJson (metadata);
    for (auto& value : json)
        if (value.is_string())
            value = patchText::textToJson (value.get<std::string>(), anyLength);

    for (const TextField& field : furtherTexts)
        if (const MVString& text = (metadata.*field.get)(); text.length() > 0)
            json[field.key] = patchText::textToJson (text.toStdString(), anyLength);

    const auto lock = metadata.packRiff()->findChild (lockChunk);
    if (lock && (metadata.getLock() != 0 || lock->childCount() > 0))
        json["lock"] = patchText::chunkToJson (*lock);
    if (metadata.getImage())
        json["image"] = patchText::chunkToJson (*metadata.getImage());
    return json;
}

} // namespace

Json metadataFields (const Bytes& stored)
{
    MVMetaData metadata;
    if (const auto tree = parseChunks (spanOf (stored)))
        metadata.unpackRiff (*tree);
    return fieldsOf (metadata);
}

Json metadataToList (const Bytes& stored)
{
    try
    {
        const Json fields = metadataFields (stored);
        if (metadataFromList (fields, {}, TextPlace ("")) == stored)
            return fields;
    }
    catch (const MVException&)
    {
        // A field that no list may hold, such as a negative tag.
    }
    return Json { { "stored", patchText::hexOf (stored.data(), stored.size()) } };
}

Bytes metadataFromList (const Json& json, const MVMetaData& base, const TextPlace& place)
{
    if (const Json* const stored = patchText::storedValue (json); stored != nullptr)
    {
        const auto bytes =
            stored->is_string() ? patchText::bytesOfHex (stored->get_ref<const std::string&>()) : std::nullopt;
        if (! bytes || bytes->empty())
            (place / "stored").expected ("hexadecimal text, two digits a byte");
        return *bytes;
    }
    if (! json.is_object())
        place.expected ("an object");

    MVMetaData metadata (base);
    patchText::metadataFromJson (takeFurtherFields (json, metadata, place), metadata, place);
    Bytes bytes = bytesOf (*packChunks (metadata.packRiff()));
    if (bytes.empty())
        place.fail ("chunks are nested too deep");
    return bytes;
}

} // namespace morvanelab
