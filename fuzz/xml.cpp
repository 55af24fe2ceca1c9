// SPDX-License-Identifier: GPL-3.0-or-later

// Documents of unknown origin, and attribute values. A text that passes the gate must parse at every level, be written
// and be looked at again; if its names and values are plain, what was written reads back as the same document. A value
// that passes must be found again in a list.

#include "FuzzInput.h"
#include "foundation/MVXmlDocument.h"
#include "foundation/MVXmlElement.h"

#include <string>
#include <vector>

using namespace morvanelab;

namespace
{

/** Whether the writer's form of the tag is read as the same tag, wherever it stands. */
bool isPlain (const MVXmlTag& tag)
{
    const std::string name (tag.getName());
    if (name.empty() || name == "?xml" || name.find ('<') != std::string::npos)
        return false;

    for (int i = 0; i < tag.getAttributeCount(); ++i)
    {
        const std::string attribute (tag.nameAt (i)), value (tag.valueAt (i));
        if (attribute.starts_with ('/') || attribute.find ('<') != std::string::npos
            || value.find ('<') != std::string::npos)
            return false;
    }
    return true;
}

/** Makes every element. Whether all their tags are plain. */
bool parseAll (MVXmlElement& root)
{
    std::vector<MVSmartPtr<MVXmlElement>> waiting;
    bool plain = true;

    for (int i = 0; i < root.childCount(); ++i)
        waiting.push_back (root.childAt (i));
    while (! waiting.empty())
    {
        const auto current = waiting.back();
        waiting.pop_back();
        plain = isPlain (*current->getTag()) && plain;
        (void)current->getAttributeInt ("a");
        (void)current->attributeValue (1);
        for (int i = 0; i < current->childCount(); ++i)
            waiting.push_back (current->childAt (i));
    }
    return plain;
}

void tryDocument (const std::string& text)
{
    const auto root = MVXmlDocument::read (text);
    if (! root)
        return;

    const bool plain = parseAll (*root);
    MVXmlElement copy (*root);
    const std::string written = root->contentText()->toStdString();
    fuzz::require (copy.contentText()->toStdString() == written, "a copy is written alike");

    const auto again = MVXmlDocument::read (written);
    if (again)
        parseAll (*again);
    if (plain && written.size() <= MVXmlDocument::maxLength)
        fuzz::require (again && again->contentText()->toStdString() == written, "what is written is read back");
}

void tryValue (const std::string& value)
{
    if (value.empty() || ! MVXmlDocument::isSafeValue (value))
        return;

    MVXmlTag tag ("item");
    tag.addAttribute ("path", value.c_str());
    tag.addAttribute ("again", value.c_str());
    auto list = makeSmart<MVXmlElement> (MVXmlTag ("list"));
    list->addChild (makeSmart<MVXmlElement> (tag));
    list->addChild (makeSmart<MVXmlElement> (tag));
    MVXmlElement document;
    document.addChild (list);

    const auto root = MVXmlDocument::read (document.contentText()->view());
    fuzz::require (static_cast<bool> (root), "a document of safe values is safe");
    const auto read = root->childNamed ("list");
    fuzz::require (read && read->childCount() == 2, "a list keeps its items");
    for (const char* const name : { "path", "again" })
        fuzz::require (read->childAt (1)->getAttribute (name)->equals (value.c_str()), "a safe value survives");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    const std::string text (reinterpret_cast<const char*> (data), size);
    tryDocument (text);
    tryValue (text);
    return 0;
}
