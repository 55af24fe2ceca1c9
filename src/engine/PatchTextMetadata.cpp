// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/PatchTextMetadata.h"

#include <algorithm>
#include <array>
#include <limits>

namespace morvanelab::patchText
{

namespace
{

struct TextField
{
    const char* key;
    const MVString& (MVMetaData::*get)() const;
    void (MVMetaData::*set) (const MVString&);
};

constexpr std::array<TextField, 5> textFields { {
    { "name", &MVMetaData::getName, &MVMetaData::setName },
    { "author", &MVMetaData::getAuthor, &MVMetaData::setAuthor },
    { "description", &MVMetaData::getDescription, &MVMetaData::setDescription },
    { "genre", &MVMetaData::getGenre, &MVMetaData::setGenre },
    { "geography", &MVMetaData::getGeography, &MVMetaData::setGeography },
} };

void tagsFromJson (const Json& json, MVMetaData& metadata, const TextPlace& place)
{
    if (! json.is_array())
        place.expected ("an array of whole numbers");

    metadata.clearSearchTags();
    for (std::size_t i = 0; i < json.size(); ++i)
    {
        if (! json[i].is_number_integer() || json[i].get<std::int64_t>() < 0
            || json[i].get<std::int64_t>() > std::numeric_limits<std::int32_t>::max())
            (place / i).expected ("a whole number from 0 to 2147483647");
        metadata.addSearchTag (json[i].get<int>());
    }
}

} // namespace

void metadataFromJson (const Json& json, MVMetaData& metadata, const TextPlace& place)
{
    if (! json.is_object())
        place.expected ("an object");

    for (const auto& [key, value] : json.items())
    {
        const auto field = std::find_if (textFields.begin(), textFields.end(),
                                         [&name = key] (const TextField& known) { return name == known.key; });

        if (field != textFields.end())
        {
            if (! value.is_string())
                (place / key).expected ("a text");
            (metadata.*field->set) (MVString (std::string_view (value.get_ref<const std::string&>())));
        }
        else if (key == "tags")
            tagsFromJson (value, metadata, place / key);
        else
            (place / key).expected (R"(one of the keys "name", "author", "description", "genre", "geography", "tags")");
    }
}

Json metadataToJson (const MVMetaData& metadata)
{
    Json json = Json::object();

    for (const TextField& field : textFields)
        if (const MVString& text = (metadata.*field.get)(); text.length() > 0)
            json[field.key] = std::string (text.view());

    for (int i = 0; i < metadata.searchTagCount(); ++i)
        json["tags"].push_back (metadata.getSearchTag (i));

    return json;
}

} // namespace morvanelab::patchText
