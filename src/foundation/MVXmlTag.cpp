// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVXmlTag.h"

#include <cstring>

namespace morvanelab
{

namespace
{

const char* orEmpty (const char* text) { return text != nullptr ? text : ""; }

} // namespace

MVXmlTag::MVXmlTag (const char* newName) : kind (kindOpening)
{
    for (const char* next = orEmpty (newName); *next != '\0'; ++next)
        appendToName (*next);
}

void MVXmlTag::clear()
{
    nameLength = 0;
    name[0] = '\0';
    kind = kindSelfClosing;
    attributeCount = 0;
    attributes.clear();
}

bool MVXmlTag::isNamed (const char* text) const
{
    return text != nullptr && std::strncmp (name.data(), text, nameSize - 1) == 0;
}

void MVXmlTag::appendToName (char byte)
{
    if (nameLength >= nameSize - 1)
        return;
    name[static_cast<std::size_t> (nameLength++)] = byte;
    name[static_cast<std::size_t> (nameLength)] = '\0';
}

void MVXmlTag::addAttribute (const char* attributeName, const char* value)
{
    // Complete before the block moves: the texts may be its own.
    std::string pair (orEmpty (attributeName));
    pair += '\0';
    pair += orEmpty (value);
    pair += '\0';

    attributes += pair;
    ++attributeCount;
}

const char* MVXmlTag::findValue (const char* attributeName) const
{
    if (attributeName == nullptr)
        return nullptr;

    const char* next = attributes.data();
    for (int i = 0; i < attributeCount; ++i)
    {
        const char* const value = next + std::strlen (next) + 1;
        if (std::strcmp (next, attributeName) == 0)
            return value;
        next = value + std::strlen (value) + 1;
    }

    return nullptr;
}

const char* MVXmlTag::textAt (int index, int part) const
{
    if (index < 0 || index >= attributeCount)
        return nullptr;

    const char* next = attributes.data();
    for (int i = 0; i < index; ++i)
        for (int skipped = 0; skipped < 2; ++skipped)
            next += std::strlen (next) + 1;
    return part == 0 ? next : next + std::strlen (next) + 1;
}

void MVXmlTag::writeTo (std::string& out) const
{
    out += '<';
    out += name.data();

    const char* next = attributes.data();
    for (int i = 0; i < attributeCount; ++i)
    {
        const char* const value = next + std::strlen (next) + 1;
        out.append (" ").append (next).append ("=\"").append (value).append ("\"");
        next = value + std::strlen (value) + 1;
    }
}

} // namespace morvanelab
