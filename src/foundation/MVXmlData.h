// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"
#include "foundation/MVSmartPtr.h"
#include "foundation/MVString.h"
#include "foundation/MVVector.h"

#include <string>
#include <string_view>

namespace morvanelab
{

class MVXmlElement;
class MVXmlTag;

/** The inside of an element: a text, and the child elements that are made from it when they are asked for.

    The dialect is small: tags, attributes and nesting. There are no escapes, comments, entities or text of its own;
    bytes between tags are skipped. Malformed text gives fewer children and is never reported, with two exceptions
    that end the process: an attribute name of 64 bytes and a value of 4096. So whatever comes from outside goes
    through MVXmlDocument first.

    Even a reader changes the object, since it may parse: one thread at a time, never the audio thread.
    Include "foundation/MVXmlElement.h" to use the children. */
class MVXmlData : public MVObject
{
public:
    static constexpr int defaultGrowBy = 128;
    static constexpr int initialBufferSize = 256;
    /** Levels of elements that are written and copied as objects. */
    static constexpr int maxDepth = 64;

    MVXmlData();
    /** Same text and, where they reflect it, deep copies of the children (below maxDepth levels they are made from
        the text again). growBy returns to its default. */
    MVXmlData (const MVXmlData& other);
    ~MVXmlData() override;

    const char* className() const override { return "MVXmlData"; }

    /** The inner text, zero-terminated. */
    const char* getText() const { return text.c_str(); }
    std::string_view view() const { return text; }
    int getLength() const { return static_cast<int> (text.size()); }
    /** Size of the buffer by the growth rule: initialBufferSize, and growBy more whenever only the terminator's
        byte is left. The memory taken follows the text instead: every child of a long document would otherwise
        claim the whole rest of it. */
    int getBufferSize() const { return bufferSize; }
    int getGrowBy() const { return growBy; }
    /** Whether the children have to be made from the text at the next access. */
    bool isDirty() const { return dirty; }

    /** A byte that finds no memory is dropped silently. */
    void appendChar (char byte);
    void appendBytes (const char* bytes, int count);
    void appendText (const char* newText);
    /** Releases the argument; null is ignored. */
    void appendString (MVSmartPtr<MVString>& string);

    /** These parse first if the text has changed. */
    int childCount();
    /** The child, or null and a logged error out of range. */
    MVSmartPtr<MVXmlElement> childAt (int index);
    int countChildrenNamed (const char* name);
    /** The child of that name at a zero-based occurrence, or null. */
    MVSmartPtr<MVXmlElement> childNamed (const char* name, int occurrence = 0);

    /** Appends the child as text: its tag, its inner text as it stands, its closing tag, without indentation; of an
        element without a tag the inner text alone. The object is not kept: the next access makes a new one. growBy
        is from now on the child's length, at least 128. Releases the argument; null is ignored. */
    void addChild (MVSmartPtr<MVXmlElement>& child);
    void addChild (MVSmartPtr<MVXmlElement>&& child);

    /** Reads the tag that begins at position and returns where its ">" stands; 0 if the text ends before.
        A name or value beyond the limits ends the process. */
    int parseTag (int position, MVXmlTag& tag) const;

protected:
    MVXmlData (const MVXmlData& other, int depth);
    /** The larger of bytes and the default. */
    void setGrowBy (int bytes);

    /** True during a parse. Meanwhile childCount and childAt scan the text and leave the children alone. */
    bool parsing = false;

private:
    void parseChildren();
    int countByScan() const;
    MVSmartPtr<MVXmlElement> fetchByScan (int index) const;
    void releaseChildren();

    std::string text;
    int growBy = defaultGrowBy;
    int bufferSize = initialBufferSize;
    MVVector<MVSmartPtr<MVXmlElement>> children;
    bool dirty = true;
};

} // namespace morvanelab
