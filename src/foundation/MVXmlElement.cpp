// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVXmlElement.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>

namespace morvanelab
{

namespace
{

/** Blanks of one level of indentation. */
constexpr int indentation = 4;
/** Room of a written text beyond the length of the content. */
constexpr int writingRoom = 512;

std::int32_t nextSerial (std::atomic<std::uint32_t>& counter) { return static_cast<std::int32_t> (++counter); }

std::atomic<std::uint32_t> emptyElements { 0 };
std::atomic<std::uint32_t> textElements { 0 };
std::atomic<std::uint32_t> tagElements { 0 };
std::atomic<std::uint32_t> copiedElements { 0 };

MVSmartPtr<MVString> stringUnlessEmpty (const char* text)
{
    return text != nullptr && *text != '\0' ? makeSmart<MVString> (text) : MVSmartPtr<MVString>();
}

MVSmartPtr<MVString> stringOf (const std::string& text, int contentLength)
{
    const int room = std::min (contentLength, std::numeric_limits<int>::max() - writingRoom) + writingRoom;
    auto result = makeSmart<MVString> (room);
    result->assign (std::string_view (text));
    return result;
}

void indent (std::string& out, int depth) { out.append (static_cast<std::size_t> (depth * indentation), ' '); }

} // namespace

MVXmlElement::MVXmlElement() : serial (nextSerial (emptyElements)) {}

MVXmlElement::MVXmlElement (const char* content) : serial (nextSerial (textElements)) { setContent (content); }

MVXmlElement::MVXmlElement (const MVXmlTag& newTag)
    : serial (nextSerial (tagElements)), tag (std::make_unique<MVXmlTag> (newTag))
{
}

MVXmlElement::MVXmlElement (const MVXmlElement& other) : MVXmlElement (other, 0) {}

MVXmlElement::MVXmlElement (const MVXmlElement& other, int depth)
    : MVXmlData (other, depth), serial (nextSerial (copiedElements)),
      tag (other.tag != nullptr ? std::make_unique<MVXmlTag> (*other.tag) : nullptr)
{
}

MVXmlElement::MVXmlElement (const MVXmlScanner::Child& found, std::string_view parentText) : MVXmlElement (found.tag)
{
    // The buffer may come to hold all that follows the opening tag; a self-closing one holds nothing.
    if (found.tag.getKind() == MVXmlTag::kindOpening)
        setGrowBy (static_cast<int> (parentText.size()) - found.tagEnd);
    appendBytes (parentText.data() + found.begin, found.end - found.begin);
}

MVXmlElement::~MVXmlElement() = default;

void MVXmlElement::setContent (const char* content)
{
    if (content == nullptr)
        return;

    const std::string copy (content);
    setGrowBy (static_cast<int> (copy.size()) + 1);
    appendBytes (copy.data(), static_cast<int> (copy.size()));
    setGrowBy (defaultGrowBy);
}

void MVXmlElement::setTag (const char* name) { tag = std::make_unique<MVXmlTag> (name); }

MVSmartPtr<MVString> MVXmlElement::getAttribute (const char* name) const
{
    return stringUnlessEmpty (tag != nullptr ? tag->findValue (name) : nullptr);
}

MVSmartPtr<MVString> MVXmlElement::attributeName (int index) const
{
    return stringUnlessEmpty (tag != nullptr ? tag->nameAt (index) : nullptr);
}

MVSmartPtr<MVString> MVXmlElement::attributeValue (int index) const
{
    return stringUnlessEmpty (tag != nullptr ? tag->valueAt (index) : nullptr);
}

bool MVXmlElement::getAttributeBool (const char* name) const
{
    const char* const value = tag != nullptr ? tag->findValue (name) : nullptr;
    return value != nullptr && std::strcmp (value, "MV_TRUE") == 0;
}

std::int32_t MVXmlElement::getAttributeInt (const char* name) const
{
    const auto value = getAttribute (name);
    return value ? static_cast<std::int32_t> (static_cast<std::uint32_t> (value->toInt64())) : -1;
}

std::uint8_t MVXmlElement::getAttributeByte (const char* name) const
{
    return static_cast<std::uint8_t> (getAttributeInt (name));
}

void MVXmlElement::writeTo (std::string& out, int depth)
{
    if (tag == nullptr)
    {
        writeChildrenTo (out, depth);
        return;
    }

    indent (out, depth);
    tag->writeTo (out);
    out += ">\n";
    if (depth + 1 < maxDepth)
        writeChildrenTo (out, depth + 1);
    indent (out, depth);
    out.append ("</").append (tag->getName()).append (">\n");
}

void MVXmlElement::writeChildrenTo (std::string& out, int depth)
{
    for (int i = 0, all = childCount(); i < all; ++i)
        childAt (i)->writeTo (out, depth);
}

MVSmartPtr<MVString> MVXmlElement::toText (int depth)
{
    std::string out;
    writeTo (out, std::clamp (depth, 0, maxDepth - 1));
    return stringOf (out, getLength());
}

MVSmartPtr<MVString> MVXmlElement::contentText()
{
    std::string out;
    writeChildrenTo (out, 0);
    return stringOf (out, getLength());
}

} // namespace morvanelab
