// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/PatchTextChunks.h"

#include "foundation/MVMath.h"

#include <charconv>
#include <limits>

namespace morvanelab::patchText
{

namespace
{

constexpr int maxChunkDepth = 64;

std::string idToText (std::uint32_t id)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += static_cast<char> ((id >> shift) & 0xFF);

    for (const char c : text)
        if (c < 32 || c > 126)
        {
            char digits[11];
            std::snprintf (digits, sizeof (digits), "0x%08x", id);
            return digits;
        }

    return text;
}

std::uint32_t idFromText (const std::string& text, const TextPlace& place)
{
    std::uint32_t id = 0;

    if (text.size() == 10 && text.starts_with ("0x"))
    {
        const auto [end, error] = std::from_chars (text.data() + 2, text.data() + 10, id, 16);
        if (error == std::errc() && end == text.data() + 10)
            return id;
    }

    if (text.size() != 4)
        place.expected ("a chunk id: four characters, or 0x and eight hexadecimal digits");

    for (const char c : text)
        id = (id << 8) | static_cast<unsigned char> (c);
    return id;
}

bool isUtf8 (const std::string& text)
{
    try
    {
        (void)Json (text).dump();
        return true;
    }
    catch (const Json::exception&)
    {
        return false;
    }
}

} // namespace

std::string hexOf (const void* bytes, std::size_t size)
{
    constexpr char digits[] = "0123456789abcdef";
    const auto* data = static_cast<const unsigned char*> (bytes);
    std::string text;
    text.reserve (size * 2);

    for (std::size_t i = 0; i < size; ++i)
    {
        text += digits[data[i] >> 4];
        text += digits[data[i] & 15];
    }

    return text;
}

std::optional<std::vector<std::byte>> bytesOfHex (std::string_view text)
{
    if (text.size() % 2 != 0)
        return std::nullopt;

    std::vector<std::byte> bytes;
    bytes.reserve (text.size() / 2);

    for (std::size_t i = 0; i < text.size(); i += 2)
    {
        unsigned value = 0;
        const auto [end, error] = std::from_chars (text.data() + i, text.data() + i + 2, value, 16);
        if (error != std::errc() || end != text.data() + i + 2)
            return std::nullopt;
        bytes.push_back (static_cast<std::byte> (value));
    }

    return bytes;
}

Json chunkToJson (const MVRiffPacker& chunk)
{
    Json json;
    json["id"] = idToText (chunk.getChunkId());
    if (chunk.getPayloadSize() > 0 && chunk.getPayload() != nullptr)
        json["data"] = hexOf (chunk.getPayload(), static_cast<std::size_t> (chunk.getPayloadSize()));

    if (chunk.childCount() > 0)
    {
        Json children = Json::array();
        for (int i = 0; i < chunk.childCount(); ++i)
            children.push_back (chunkToJson (*chunk.childAt (i)));
        json["children"] = std::move (children);
    }

    return json;
}

MVSmartPtr<MVRiffPacker> chunkFromJson (const Json& json, const TextPlace& place, int depth)
{
    if (depth >= maxChunkDepth)
        place.fail ("chunks are nested more than 64 deep");
    if (! json.is_object())
        place.expected ("a chunk: an object with \"id\", \"data\" and \"children\"");

    const Json* const id = member (json, "id");
    if (id == nullptr || ! id->is_string())
        (place / "id").expected ("a chunk id: four characters, or 0x and eight hexadecimal digits");

    std::vector<std::byte> bytes;
    if (const Json* const data = member (json, "data"); data != nullptr)
    {
        const auto read = data->is_string() ? bytesOfHex (data->get_ref<const std::string&>()) : std::nullopt;
        if (! read)
            (place / "data").expected ("hexadecimal text, two digits a byte");
        bytes = *read;
    }

    auto chunk = makeSmart<MVRiffPacker> (idFromText (id->get<std::string>(), place / "id"), bytes.data(),
                                          static_cast<int> (bytes.size()));

    if (const Json* const children = member (json, "children"); children != nullptr)
    {
        if (! children->is_array())
            (place / "children").expected ("an array of chunks");
        for (std::size_t i = 0; i < children->size(); ++i)
        {
            auto child = chunkFromJson ((*children)[i], place / "children" / i, depth + 1);
            chunk->addChild (child);
        }
    }

    return chunk;
}

std::vector<std::byte> packed (const MVRiffPacker& chunk)
{
    std::vector<std::byte> bytes (static_cast<std::size_t> (chunk.packedSize()));
    chunk.pack (bytes.data(), false);
    return bytes;
}

Json textToJson (const std::string& text, std::size_t maxLength)
{
    if (text.size() <= maxLength && isUtf8 (text))
        return text;
    return Json { { "stored", hexOf (text.data(), text.size()) } };
}

std::string textFromJson (const Json& json, std::size_t maxLength, const TextPlace& place)
{
    if (const Json* const stored = storedValue (json); stored != nullptr)
    {
        const auto bytes = stored->is_string() ? bytesOfHex (stored->get_ref<const std::string&>()) : std::nullopt;
        if (! bytes)
            (place / "stored").expected ("hexadecimal text, two digits a byte");
        return { reinterpret_cast<const char*> (bytes->data()), bytes->size() };
    }

    if (! json.is_string())
        place.expected ("a text");

    auto text = json.get<std::string>();
    if (text.size() > maxLength)
        place.expected ("a text of at most " + std::to_string (maxLength) + " bytes");
    return text;
}

const Json* storedValue (const Json& json)
{
    return json.is_object() && json.size() == 1 ? member (json, "stored") : nullptr;
}

const Json* member (const Json& object, const char* key)
{
    if (! object.is_object())
        return nullptr;
    const auto found = object.find (key);
    return found != object.end() ? &*found : nullptr;
}

} // namespace morvanelab::patchText
