// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVXmlScanner.h"

namespace morvanelab
{

int MVXmlScanner::readTag (int tagPosition, MVXmlTag& tag)
{
    tag.clear();
    attributeName.clear();
    value.clear();
    state = State::beforeName;

    for (int at = tagPosition; at >= 0 && at < size; ++at)
    {
        const char byte = text[static_cast<std::size_t> (at)];
        // Whatever is being read: hence no value holds a ">".
        if (byte == '>')
            return at;

        do
        {
            if (stepsLeft-- <= 0)
                fault = Fault::outOfSteps;
            if (fault != Fault::none)
                return 0;
        } while (! take (byte, tag));
    }

    return 0;
}

bool MVXmlScanner::leaveFor (State next, bool byteIsUsed)
{
    state = next;
    return byteIsUsed;
}

template <int Size>
bool MVXmlScanner::addTo (Buffer<Size>& buffer, char byte, Fault faultIfFull)
{
    if (! buffer.add (byte))
        fault = faultIfFull;
    return true;
}

bool MVXmlScanner::take (char byte, MVXmlTag& tag)
{
    return state < State::beforeAttribute ? takeOfTagName (byte, tag) : takeOfAttribute (byte, tag);
}

bool MVXmlScanner::takeOfTagName (char byte, MVXmlTag& tag)
{
    switch (state)
    {
        case State::beforeName:
            return byte == ' ' || byte == '<' || leaveFor (State::kind, false);

        case State::kind:
            tag.setKind (byte == '/' ? MVXmlTag::kindClosing : MVXmlTag::kindOpening);
            return leaveFor (State::name, byte == '/');

        case State::name:
            if (byte == ' ')
                return leaveFor (State::afterName, true);
            tag.appendToName (byte);
            return true;

        default:
            return leaveFor (State::beforeAttribute, false);
    }
}

bool MVXmlScanner::takeOfAttribute (char byte, MVXmlTag& tag)
{
    switch (state)
    {
        case State::beforeAttribute:
            if (byte == ' ' || byte == '\t')
                return true;
            if (byte == '/')
                tag.setKind (MVXmlTag::kindSelfClosing);
            return leaveFor (State::attributeName, false);

        case State::attributeName:
            if (byte == ' ' || byte == '=')
                return leaveFor (State::afterAttributeName, false);
            return addTo (attributeName, byte, Fault::attributeNameTooLong);

        case State::afterAttributeName:
            return leaveFor (State::beforeEquals, false);

        case State::beforeEquals:
            return byte != '=' || leaveFor (State::beforeValue, true);

        case State::beforeValue:
            return (byte != '"' && byte != '/') || leaveFor (State::value, true);

        case State::value:
            if (byte == '"')
                return leaveFor (State::afterValue, false);
            return addTo (value, byte, Fault::valueTooLong);

        default:
            tag.addAttribute (attributeName.bytes.data(), value.bytes.data());
            attributeName.clear();
            value.clear();
            return leaveFor (State::beforeAttribute, true);
    }
}

bool MVXmlScanner::findTag()
{
    const auto found = text.find ('<', static_cast<std::size_t> (position));
    position = found != std::string_view::npos ? static_cast<int> (found) : size;
    return position < size;
}

bool MVXmlScanner::nextChild (Child& child)
{
    while (fault == Fault::none && findTag())
    {
        child.tagEnd = readTag (position, child.tag);
        if (child.tagEnd == 0)
            break; // a tag without end: nothing can follow

        ++position;
        depth += child.tag.getKind();

        if (child.tag.isNamed ("?xml"))
        {
            --depth;
        }
        else if (child.tag.getKind() != MVXmlTag::kindClosing)
        {
            child.begin = child.end = position;
            if (child.tag.getKind() == MVXmlTag::kindOpening)
                findEndOf (child);
            return true;
        }
    }

    position = size;
    return false;
}

void MVXmlScanner::findEndOf (Child& child)
{
    MVXmlTag tag;

    for (position = child.begin = child.tagEnd + 1; findTag(); ++position)
    {
        child.end = position;
        if (readTag (position, tag) == 0)
        {
            position = size;
            return;
        }

        // Not only a closing tag can be the end: after stray closing tags the depth is one too low.
        depth += tag.getKind();
        if (depth == 0 && tag.isNamed (child.tag.getName()))
        {
            ++position;
            return;
        }
    }

    child.end = size;
}

} // namespace morvanelab
