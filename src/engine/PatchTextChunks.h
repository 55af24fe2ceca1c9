// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/PatchTextError.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvanelab::patchText
{

using Json = nlohmann::ordered_json;

/** Lower-case hexadecimal, two digits a byte. */
std::string hexOf (const void* bytes, std::size_t size);
/** The bytes of hexadecimal text; none if it is no such text. */
std::optional<std::vector<std::byte>> bytesOfHex (std::string_view text);

/** A chunk and everything in it as JSON, and back. At most 64 levels. */
Json chunkToJson (const MVRiffPacker& chunk);
MVSmartPtr<MVRiffPacker> chunkFromJson (const Json& json, const TextPlace& place, int depth = 0);

/** The bytes of a whole tree, without a root checksum. */
std::vector<std::byte> packed (const MVRiffPacker& chunk);

/** Text as JSON: a string, or its bytes as {"stored": hex} where it is no UTF-8 or longer than maxLength bytes. */
Json textToJson (const std::string& text, std::size_t maxLength);
std::string textFromJson (const Json& json, std::size_t maxLength, const TextPlace& place);

/** The value of {"stored": x}, or null if json is no such object. */
const Json* storedValue (const Json& json);

/** A member of an object, or null. */
const Json* member (const Json& object, const char* key);

} // namespace morvanelab::patchText
