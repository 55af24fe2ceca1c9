// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVXmlDocument.h"

#include "foundation/MVXmlScanner.h"

#include <algorithm>
#include <string>
#include <vector>

namespace morvanelab
{

namespace
{

bool isForbiddenInValue (char byte)
{
    const auto code = static_cast<unsigned char> (byte);
    return code < 32 || code == 127 || byte == '"' || byte == '>';
}

/** Whether a parse that begins at this "<" inside a value comes out of the value, by its closing quote, ready to
    read the next attribute as what it is, and takes all of it for no closing tag. */
bool staysInStep (std::string_view fromBracket)
{
    std::string probe (fromBracket);
    probe += "\" next=\"probe\">";

    MVXmlScanner scanner (probe);
    MVXmlTag tag;
    if (scanner.readTag (0, tag) == 0 || tag.getKind() == MVXmlTag::kindClosing)
        return false;
    const char* const last = tag.valueAt (tag.getAttributeCount() - 1);
    return last != nullptr && std::string_view (last) == "probe";
}

} // namespace

bool MVXmlDocument::isSafeToParse (std::string_view text)
{
    struct Inner
    {
        std::string_view text;
        int level;
    };

    if (text.size() > maxLength || text.find ('\0') != std::string_view::npos)
        return false;

    std::int64_t stepsLeft = maxSteps;
    std::vector<Inner> waiting { { text, 0 } };

    while (! waiting.empty())
    {
        const Inner current = waiting.back();
        waiting.pop_back();

        MVXmlScanner scanner (current.text, stepsLeft);
        MVXmlScanner::Child child;
        while (scanner.nextChild (child))
        {
            if (current.level >= MVXmlData::maxDepth)
                return false;
            waiting.push_back ({ current.text.substr (static_cast<std::size_t> (child.begin),
                                                      static_cast<std::size_t> (child.end - child.begin)),
                                 current.level + 1 });
        }

        if (scanner.getFault() != MVXmlScanner::Fault::none)
            return false;
        stepsLeft = scanner.getStepsLeft();
    }

    return true;
}

bool MVXmlDocument::isSafeValue (std::string_view text)
{
    if (text.size() >= MVXmlScanner::valueSize || std::any_of (text.begin(), text.end(), isForbiddenInValue))
        return false;

    for (auto at = text.find ('<'); at != std::string_view::npos; at = text.find ('<', at + 1))
        if (! staysInStep (text.substr (at)))
            return false;
    return true;
}

MVSmartPtr<MVXmlElement> MVXmlDocument::read (std::string_view text)
{
    return isSafeToParse (text) ? makeSmart<MVXmlElement> (std::string (text).c_str()) : MVSmartPtr<MVXmlElement>();
}

} // namespace morvanelab
