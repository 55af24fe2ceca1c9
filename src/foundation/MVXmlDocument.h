// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVSmartPtr.h"
#include "foundation/MVXmlElement.h"

#include <cstdint>
#include <string_view>

namespace morvanelab
{

/** The gate for documents that come from disk or from settings, and for values on their way there. The element
    classes end the process at an attribute name or value beyond their limits; nothing that passed here does.

    What a document cannot carry, and what becomes of it:
    - a double quote or ">" in a value, control characters, 4096 bytes and more: isSafeValue refuses them;
    - an empty value: reads as missing;
    - "<" in a value: inside an enclosing element the parser takes it for a tag. As far as isSafeValue lets it pass,
      the value and its list survive, but every enclosing element then takes in what follows it: an element with such
      a value further inside must be the last of its level;
    - text between tags: dropped when the document is written by toText or contentText;
    - elements nested deeper than MVXmlData::maxDepth: not written.
    Blanks, "=", "/", "&", apostrophes and bytes of UTF-8 in values are kept as they are. Any thread; no state. */
class MVXmlDocument
{
public:
    /** Bytes of a document: several thousand paths. */
    static constexpr int maxLength = 1024 * 1024;
    /** Steps of the parser over all levels of a document, which bounds the time that awkward nesting can take. A
        list of three levels takes about six a byte. */
    static constexpr std::int64_t maxSteps = 32 * 1024 * 1024;

    /** Whether parsing the text, and every element in it down to the last level, ends well and soon. False for a
        text longer than maxLength or with a zero byte, for one whose tags would meet a limit at any level, or take
        more than maxSteps, or nest deeper than MVXmlData::maxDepth. Malformed text may well be safe: it has fewer
        elements. Writers of documents that can grow large ask as well, since what fails here cannot be read back. */
    static bool isSafeToParse (std::string_view text);

    /** Whether an attribute value can be written and read back: below 4096 bytes, without double quote, ">" and
        control characters, and without a "<" behind which the rest would be taken for a closing tag, for a name
        beyond its limit, or for an attribute that waits for its value. An empty one is safe. */
    static bool isSafeValue (std::string_view text);

    /** The root of the document, or null if the text is not safe to parse. */
    static MVSmartPtr<MVXmlElement> read (std::string_view text);
};

} // namespace morvanelab
