// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace morvanelab
{

/** The name, kind and attributes of one tag of a document. Texts are plain bytes, without any escaping. */
class MVXmlTag
{
public:
    /** Bytes of a name with its terminator; what is beyond is dropped. */
    static constexpr int nameSize = 64;

    enum Kind_t : int
    {
        kindClosing = -1,
        kindSelfClosing = 0,
        kindOpening = 1
    };

    /** Without name and attributes, and of kind 0, as after clear. */
    MVXmlTag() = default;
    /** An opening tag of that name; null is an empty one. */
    explicit MVXmlTag (const char* newName);
    MVXmlTag (const MVXmlTag&) = default;
    MVXmlTag& operator= (const MVXmlTag&) = default;
    virtual ~MVXmlTag() = default;

    void clear();

    const char* getName() const { return name.data(); }
    /** Byte for byte; a longer name is compared by the bytes that a tag can keep. */
    bool isNamed (const char* text) const;
    /** Adds to the name, as far as it has room. */
    void appendToName (char byte);

    int getKind() const { return kind; }
    void setKind (Kind_t newKind) { kind = newKind; }

    /** Appends the pair. A name that is there already is not looked for: the first one wins at lookup.
        Null counts as an empty text. */
    void addAttribute (const char* attributeName, const char* value);
    int getAttributeCount() const { return attributeCount; }
    /** Bytes of all names and values with their terminators. */
    int getAttributesSize() const { return static_cast<int> (attributes.size()); }
    /** The value of the first attribute of that name, "" if it is empty, null if there is none. Valid until the
        next change. */
    const char* findValue (const char* attributeName) const;
    /** Name and value at index, walked to from the first; null out of range. Valid until the next change. */
    const char* nameAt (int index) const { return textAt (index, 0); }
    const char* valueAt (int index) const { return textAt (index, 1); }

    /** Appends '<', the name, and each attribute with a blank before and its value in double quotes. The ">" is
        left to the caller. */
    void writeTo (std::string& out) const;

private:
    const char* textAt (int index, int part) const;

    std::array<char, nameSize> name {};
    int nameLength = 0;
    int kind = kindSelfClosing;
    int attributeCount = 0;
    /** Name, value, name, value, each with its terminator. */
    std::string attributes;
};

} // namespace morvanelab
