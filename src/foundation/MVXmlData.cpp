// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVXmlData.h"

#include "foundation/MVLog.h"
#include "foundation/MVXmlElement.h"
#include "foundation/MVXmlScanner.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace morvanelab
{

namespace
{

/** Documents from outside have been looked at before they come here: this is a fault of the program. */
void endProcessOnFault (const MVXmlScanner& scanner)
{
    if (scanner.getFault() == MVXmlScanner::Fault::none)
        return;
    const bool isName = scanner.getFault() == MVXmlScanner::Fault::attributeNameTooLong;
    mvLog ("ERROR", "morvanelab::MVXmlData::parseTag",
           isName ? "Attribute name of 64 bytes or more" : "Attribute value of 4096 bytes or more");
    std::abort();
}

} // namespace

MVXmlData::MVXmlData() = default;

MVXmlData::MVXmlData (const MVXmlData& other) : MVXmlData (other, 0) {}

MVXmlData::MVXmlData (const MVXmlData& other, int depth)
    : MVObject (other), text (other.text), bufferSize (other.bufferSize),
      dirty (other.dirty || (depth >= maxDepth && ! other.children.isEmpty()))
{
    if (dirty)
        return;
    for (const MVSmartPtr<MVXmlElement>& child : other.children)
        children.add (MVSmartPtr<MVXmlElement> (new MVXmlElement (*child, depth + 1)));
}

MVXmlData::~MVXmlData() { releaseChildren(); }

/** Without recursion: a document can be as deep as it is long. */
void MVXmlData::releaseChildren()
{
    MVVector<MVSmartPtr<MVXmlElement>> released;
    std::swap (released, children);

    while (! released.isEmpty())
    {
        const MVSmartPtr<MVXmlElement> last = released[released.size() - 1];
        released.removeAt (released.size() - 1);
        if (last.referenceCount() > 1)
            continue;

        for (const MVSmartPtr<MVXmlElement>& child : last->children)
            released.add (child);
        last->children.clear();
    }
}

void MVXmlData::setGrowBy (int bytes) { growBy = std::max (bytes, defaultGrowBy); }

void MVXmlData::appendChar (char byte)
{
    const bool isFull = getLength() >= bufferSize - 1;
    if (isFull && bufferSize > std::numeric_limits<int>::max() - growBy)
        return;

    try
    {
        text += byte;
    }
    catch (const std::bad_alloc&)
    {
        return;
    }

    if (isFull)
        bufferSize += growBy;
    dirty = true;
}

void MVXmlData::appendBytes (const char* bytes, int count)
{
    if (bytes == nullptr || count < 1)
        return;

    // The bytes may be this very text.
    const std::string copy (bytes, static_cast<std::size_t> (count));
    for (const char byte : copy)
        appendChar (byte);
}

void MVXmlData::appendText (const char* newText)
{
    if (newText != nullptr)
        appendBytes (newText, static_cast<int> (std::strlen (newText)));
}

void MVXmlData::appendString (MVSmartPtr<MVString>& string)
{
    if (string)
        appendBytes (string->text(), string->length());
    string.clear();
}

int MVXmlData::childCount()
{
    if (parsing)
        return countByScan();
    if (dirty)
        parseChildren();
    return children.size();
}

MVSmartPtr<MVXmlElement> MVXmlData::childAt (int index)
{
    if (parsing)
        return fetchByScan (index);
    if (dirty)
        parseChildren();
    return children.itemAt (index);
}

int MVXmlData::countChildrenNamed (const char* name)
{
    int count = 0;
    for (int i = 0, all = childCount(); i < all; ++i)
        if (childAt (i)->getTag()->isNamed (name))
            ++count;
    return count;
}

MVSmartPtr<MVXmlElement> MVXmlData::childNamed (const char* name, int occurrence)
{
    for (int i = 0, all = childCount(); i < all; ++i)
    {
        auto child = childAt (i);
        if (child->getTag()->isNamed (name) && occurrence-- == 0)
            return child;
    }

    return {};
}

void MVXmlData::addChild (MVSmartPtr<MVXmlElement>& child)
{
    if (! child)
        return;

    std::string form;
    const MVXmlTag* const tag = child->getTag();

    if (tag != nullptr)
    {
        tag->writeTo (form);
        form += ">\n";
    }
    form += child->view();
    if (tag != nullptr)
        form.append ("</").append (tag->getName()).append (">\n");

    setGrowBy (child->getLength());
    appendBytes (form.data(), static_cast<int> (form.size()));
    child.clear();
}

void MVXmlData::addChild (MVSmartPtr<MVXmlElement>&& child) { addChild (child); }

int MVXmlData::parseTag (int position, MVXmlTag& tag) const
{
    MVXmlScanner scanner (text);
    const int end = scanner.readTag (position, tag);
    endProcessOnFault (scanner);
    return end;
}

void MVXmlData::parseChildren()
{
    releaseChildren();
    parsing = true;

    MVXmlScanner scanner (text);
    MVXmlScanner::Child found;
    while (scanner.nextChild (found))
        children.add (MVSmartPtr<MVXmlElement> (new MVXmlElement (found, text)));
    endProcessOnFault (scanner);

    parsing = false;
    dirty = false;
}

int MVXmlData::countByScan() const
{
    MVXmlScanner scanner (text);
    MVXmlScanner::Child found;
    int count = 0;

    while (scanner.nextChild (found))
        ++count;
    endProcessOnFault (scanner);
    return count;
}

MVSmartPtr<MVXmlElement> MVXmlData::fetchByScan (int index) const
{
    MVXmlScanner scanner (text);
    MVXmlScanner::Child found;
    MVSmartPtr<MVXmlElement> result;

    while (! result && scanner.nextChild (found))
        if (index-- == 0)
            result = MVSmartPtr<MVXmlElement> (new MVXmlElement (found, text));
    endProcessOnFault (scanner);
    return result;
}

} // namespace morvanelab
