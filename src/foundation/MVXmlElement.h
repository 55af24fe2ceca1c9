// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVXmlData.h"
#include "foundation/MVXmlScanner.h"
#include "foundation/MVXmlTag.h"

#include <cstdint>
#include <memory>

namespace morvanelab
{

/** An element of a document: a tag and what is inside. The root of a document has no tag.

        MVXmlTag tag ("item");
        tag.addAttribute ("path", path);
        auto list = makeSmart<MVXmlElement> (MVXmlTag ("list"));
        list->addChild (makeSmart<MVXmlElement> (tag));
        MVXmlElement root;
        root.addChild (list);
        const auto text = root.contentText();

        if (const auto root = MVXmlDocument::read (text->view()))
            if (const auto list = root->childNamed ("list"))
                for (int i = 0; i < list->childCount(); ++i)
                    use (list->childAt (i)->getAttribute ("path"));

    Values to be written are asked about with MVXmlDocument::isSafeValue. */
class MVXmlElement : public MVXmlData
{
public:
    static constexpr std::uint32_t classType = 0xC00014;

    MVXmlElement();
    /** The root of a document: the text becomes the content. */
    explicit MVXmlElement (const char* content);
    /** An empty element with a copy of the tag. */
    explicit MVXmlElement (const MVXmlTag& newTag);
    MVXmlElement (const MVXmlElement& other);
    ~MVXmlElement() override;

    MVXmlElement* clone() const override { return new MVXmlElement (*this); }
    const char* className() const override { return "MVXmlElement"; }
    std::uint32_t typeId() const override { return classType; }

    /** Counts the objects of one kind of constructor. */
    std::int32_t getSerial() const { return serial; }

    /** Appends to the content that is there. */
    void setContent (const char* content);
    /** A new tag of that name, without attributes. */
    void setTag (const char* name);
    /** Null where there is none. */
    MVXmlTag* getTag() { return tag.get(); }
    const MVXmlTag* getTag() const { return tag.get(); }
    /** The tag's name; "" without a tag. */
    const char* getName() const { return tag != nullptr ? tag->getName() : ""; }

    /** The value of the first attribute of that name. Null if it is missing, or empty. */
    MVSmartPtr<MVString> getAttribute (const char* name) const;
    /** The pair at index. Null out of range or where the text is empty. */
    MVSmartPtr<MVString> attributeName (int index) const;
    MVSmartPtr<MVString> attributeValue (int index) const;
    /** True for the value "MV_TRUE" alone. */
    bool getAttributeBool (const char* name) const;
    /** The value as MVString::toInt64 reads it (text that is no number is 0), cut to 32 bits; -1 if missing. */
    std::int32_t getAttributeInt (const char* name) const;
    /** The low byte of getAttributeInt: 255 if missing. */
    std::uint8_t getAttributeByte (const char* name) const;
    /** The number in "color_id". */
    std::int32_t getColorId() const { return getAttributeInt ("color_id"); }

    /** The element as text, indented by four blanks a level: its opening tag, its children one level deeper, its
        closing tag, each on a line. Bytes between tags are not written, nor are children at a depth of maxDepth.
        A depth outside 0 to maxDepth - 1 is taken to the nearer limit. An element without a tag writes its
        children alone, at the depth given. */
    MVSmartPtr<MVString> toText (int depth = 0);
    /** The children one after the other, each as toText (0) gives it: the text of a document. */
    MVSmartPtr<MVString> contentText();

private:
    friend class MVXmlData;

    MVXmlElement (const MVXmlElement& other, int depth);
    /** What a parse of the parent's text makes. */
    MVXmlElement (const MVXmlScanner::Child& found, std::string_view parentText);

    void writeTo (std::string& out, int depth);
    void writeChildrenTo (std::string& out, int depth);

    std::int32_t serial;
    std::unique_ptr<MVXmlTag> tag;
};

} // namespace morvanelab
