// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVXmlDocument.h"
#include "foundation/MVXmlElement.h"
#include "foundation/MVXmlScanner.h"
#include "support/TestRandom.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace morvanelab
{

namespace
{

using Pairs = std::vector<std::pair<std::string, std::string>>;

std::string repeated (const char* text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

Pairs pairsOf (const MVXmlTag& tag)
{
    Pairs pairs;
    for (int i = 0; i < tag.getAttributeCount(); ++i)
        pairs.emplace_back (tag.nameAt (i), tag.valueAt (i));
    return pairs;
}

/** Names and inner texts of the children, as "name[text]name[text]". */
std::string outline (MVXmlData& data)
{
    std::string result;
    for (int i = 0; i < data.childCount(); ++i)
    {
        const auto child = data.childAt (i);
        result += std::string (child->getName()) + "[" + child->getText() + "]";
    }
    return result;
}

std::string outline (const char* text)
{
    MVXmlElement root (text);
    return outline (root);
}

MVSmartPtr<MVXmlElement> element (const char* name, const Pairs& attributes = {})
{
    MVXmlTag tag (name);
    for (const auto& [attribute, value] : attributes)
        tag.addAttribute (attribute.c_str(), value.c_str());
    return makeSmart<MVXmlElement> (tag);
}

/** A document of one list, as the lists of presets are: root, list, items of two attributes. */
std::string listDocument (const std::vector<std::string>& values, bool byText)
{
    auto list = element ("list");
    for (const std::string& value : values)
        list->addChild (element ("item", { { "path", value }, { "again", value } }));
    auto wrapper = element ("wrapper");
    wrapper->addChild (list);
    MVXmlElement root;
    root.addChild (wrapper);
    return byText ? root.contentText()->toStdString() : root.getText();
}

std::vector<std::string> valuesRead (const std::string& document)
{
    std::vector<std::string> values;
    const auto root = MVXmlDocument::read (document);
    const auto wrapper = root ? root->childNamed ("wrapper") : root;
    const auto list = wrapper ? wrapper->childNamed ("list") : wrapper;
    if (! list)
        return { "no list" };

    for (int i = 0; i < list->countChildrenNamed ("item"); ++i)
    {
        const auto item = list->childNamed ("item", i);
        const auto path = item->getAttribute ("path");
        const auto again = item->getAttribute ("again");
        values.push_back (path && again && *path == *again ? path->toStdString() : "differs");
    }
    return values;
}

/** Makes every element of every level; the number of them. */
int parseAll (MVXmlData& root)
{
    std::vector<MVSmartPtr<MVXmlElement>> waiting;
    int count = 0;

    for (int i = 0; i < root.childCount(); ++i)
        waiting.push_back (root.childAt (i));
    while (! waiting.empty())
    {
        const auto current = waiting.back();
        waiting.pop_back();
        ++count;
        for (int i = 0; i < current->childCount(); ++i)
            waiting.push_back (current->childAt (i));
    }
    return count;
}

class ParsingElement : public MVXmlElement
{
public:
    using MVXmlElement::MVXmlElement;
    void pretendParsing (bool flag) { parsing = flag; }
};

/** Ends with the log on standard error, so that a death test can read it. */
void parseLogged (const std::string& text)
{
    mvLogOpen ("/dev/stderr");
    MVXmlElement root (text.c_str());
    (void)root.childCount();
}

} // namespace

TEST (XmlTag, readsEachStateOfATag)
{
    struct Case
    {
        const char* text;
        int end, kind;
        const char* name;
        Pairs attributes;
    };
    const Case cases[] {
        { "<a>", 2, 1, "a", {} },
        { "</a>", 3, -1, "a", {} },
        { "< << a>", 6, 1, "a", {} },
        { "< /a>", 4, -1, "a", {} },
        { "<a />", 4, 0, "a", {} },
        { "<a/>", 3, 1, "a/", {} },
        { "</a />", 5, 0, "a", {} },
        { "<>", 1, 0, "", {} },
        { "< >", 2, 0, "", {} },
        { "</>", 2, -1, "", {} },
        { "<a\tb='c'>", 8, 1, "a\tb='c'", {} },
        { "<a \t b=\"c\">", 10, 1, "a", { { "b", "c" } } },
        { "<a b=\"c\"/>", 9, 0, "a", { { "b", "c" } } },
        { "<a b=\"c\"d=\"e\">", 13, 1, "a", { { "b", "c" }, { "d", "e" } } },
        { "<a b=\"c\"\nd=\"e\">", 14, 1, "a", { { "b", "c" }, { "\nd", "e" } } },
        { "<a b  =  \"c\">", 12, 1, "a", { { "b", "c" } } },
        { "<a b=c\"d\">", 9, 1, "a", { { "b", "d" } } },
        { "<a b=/c\">", 8, 1, "a", { { "b", "c" } } },
        { "<a b=c/d\">", 9, 1, "a", { { "b", "d" } } },
        { "<a b=\"/c/d\" />", 13, 0, "a", { { "b", "/c/d" } } },
        { "<a b c=\"d\">", 10, 1, "a", { { "b", "d" } } },
        { "<a b=\"=\" c=\"'&lt;'\">", 19, 1, "a", { { "b", "=" }, { "c", "'&lt;'" } } },
        { "<a b=\"\">", 7, 1, "a", { { "b", "" } } },
        { "<a =\"b\">", 7, 1, "a", { { "", "b" } } },
        { "<a /b=\"c\">", 9, 0, "a", { { "/b", "c" } } },
        { "<a / b=\"c\">", 10, 0, "a", { { "/", "c" } } },
        { "<a b=\"c>d\">", 7, 1, "a", {} },
        { "<a b=\"c\" d=\"e>f\">", 13, 1, "a", { { "b", "c" } } },
        { "<a b>", 4, 1, "a", {} },
        { "<a b=\"c<d\">", 10, 1, "a", { { "b", "c<d" } } },
        { "<a<b c=\"d\">", 10, 1, "a<b", { { "c", "d" } } },
        { "<a b=\"1\" b=\"2\">", 14, 1, "a", { { "b", "1" }, { "b", "2" } } },
        { "<?xml version=\"1.0\"?>", 20, 1, "?xml", { { "version", "1.0" } } },
        { "<a b=\"c\"", 0, 1, "a", { { "b", "c" } } },
        { "<", 0, 0, "", {} },
        { "", 0, 0, "", {} },
    };

    for (const Case& c : cases)
    {
        MVXmlTag tag ("left over");
        tag.addAttribute ("left", "over");
        const MVXmlElement root (c.text);
        EXPECT_EQ (root.parseTag (0, tag), c.end) << c.text;
        EXPECT_EQ (tag.getKind(), c.kind) << c.text;
        EXPECT_STREQ (tag.getName(), c.name) << c.text;
        EXPECT_EQ (pairsOf (tag), c.attributes) << c.text;
    }

    MVXmlTag tag;
    const MVXmlElement root ("x<a><b>");
    EXPECT_EQ (root.parseTag (4, tag), 6);
    EXPECT_STREQ (tag.getName(), "b");
    for (const int outside : { -1, 7, 2147483647 })
        EXPECT_EQ (root.parseTag (outside, tag), 0) << outside;
}

TEST (XmlTag, keepsPairsInOneBlockAndLongNamesCut)
{
    MVXmlTag tag ("t");
    tag.addAttribute ("name", "value");
    tag.addAttribute ("", "");
    tag.addAttribute (nullptr, nullptr);
    EXPECT_EQ (tag.getAttributeCount(), 3);
    EXPECT_EQ (tag.getAttributesSize(), 5 + 6 + 2 + 2);
    tag.addAttribute ("copy", tag.findValue ("name"));
    EXPECT_STREQ (tag.valueAt (3), "value");
    EXPECT_EQ (tag.nameAt (4), nullptr);
    EXPECT_EQ (tag.valueAt (-1), nullptr);
    EXPECT_EQ (tag.findValue (nullptr), nullptr);

    const std::string longName (200, 'n');
    const MVXmlTag cut (longName.c_str());
    EXPECT_EQ (std::string (cut.getName()), std::string (63, 'n'));
    EXPECT_TRUE (cut.isNamed (longName.c_str()));
    EXPECT_FALSE (cut.isNamed (std::string (62, 'n').c_str()));
    EXPECT_FALSE (cut.isNamed (nullptr));
    // The closing tag is cut alike, so that the element ends.
    EXPECT_EQ (outline (("<" + longName + ">in</" + longName + "><b></b>").c_str()), std::string (63, 'n') + "[in]b[]");
}

TEST (XmlData, childrenHoldTheirRawInnerText)
{
    struct Case
    {
        const char *text, *expected;
    };
    const Case cases[] {
        { "", "" },
        { "plain > text", "" },
        { "<a>in</a>out<b></b>", "a[in]b[]" },
        { "<?xml version=\"1.0\"?>\n<a>in</a>", "a[in]" },
        { "<?xml?><a></a>", "?xml?[<a></a>]" },
        { "<a><a>in</a></a><a></a>", "a[<a>in</a>]a[]" },
        { "<a><b x=\"1\"><c></c></b> t </a>", "a[<b x=\"1\"><c></c></b> t ]" },
        { "<a />text<b>in</b>", "a[]b[in]" },
        { "<a><b /></a><c />", "a[<b />]c[]" },
        { "<a/><b></b>", "a/[<b></b>]" },
        { "<a>rest", "a[rest]" },
        { "<a><b></a>rest", "a[<b></a>rest]" },
        { "<a>cut<b", "a[cut]" },
        { "<a></a><b", "a[]" },
        { "<a></a", "a[]" },
        { "<a></a>< <b>", "a[]b[]" },
        // After stray closing tags the depth is too low: the end comes not at all, or with an opening tag.
        { "</x><a>in</a>", "a[in</a>]" },
        { "</x><a>1<a>2</a>", "a[1<a>2]" },
        { "</x></x><a>1<a>2</a>", "a[1]" },
        { "<?xml /><?xml /><a>1<a>2", "a[1]" },
        // The "<" in a value counts as a tag wherever the scan does not jump over it.
        { "<a x=\"p<q\">in</a>", "a[in]" },
        { "<a><b x=\"p<q\"></b></a><c></c>", "a[<b x=\"p<q\"></b></a><c></c>]" },
        { "<a x=\"p<q\" />", "a[]q\"[]" },
        { "<>x</>", "[]" },
    };
    for (const Case& c : cases)
        EXPECT_EQ (outline (c.text), c.expected) << c.text;
}

TEST (XmlData, buffersGrowByTheRule)
{
    MVXmlData data;
    EXPECT_EQ (data.getBufferSize(), 256);
    EXPECT_TRUE (data.isDirty());
    data.appendText (std::string (255, 'x').c_str());
    EXPECT_EQ (data.getBufferSize(), 256);
    data.appendChar ('y');
    EXPECT_EQ (data.getBufferSize(), 256 + 128);
    EXPECT_EQ (data.getLength(), 256);
    EXPECT_STREQ (data.getText() + 255, "y");

    // 1000 bytes: one growth by 1001, and the default again from then on.
    MVXmlElement root (std::string (1000, 'x').c_str());
    EXPECT_EQ (root.getBufferSize(), 256 + 1001);
    EXPECT_EQ (root.getGrowBy(), 128);

    auto child = element ("c");
    child->setContent (std::string (300, 'x').c_str());
    root.addChild (child);
    EXPECT_EQ (root.getGrowBy(), 300);
    EXPECT_FALSE (child);
    root.addChild (element ("d"));
    EXPECT_EQ (root.getGrowBy(), 128);

    // 400 bytes follow the ">" of the opening tag, with itself 401; a self-closing one holds nothing.
    MVXmlElement parent (("<a>" + std::string (396, 'x') + "</a>").c_str());
    EXPECT_EQ (parent.childAt (0)->getGrowBy(), 401);
    EXPECT_EQ (parent.childAt (0)->getBufferSize(), 256 + 401);
    MVXmlElement shut (("<a />" + std::string (400, 'x')).c_str());
    EXPECT_EQ (shut.childAt (0)->getGrowBy(), 128);
}

TEST (XmlData, appendsItsOwnTextAndReleasesStrings)
{
    MVXmlElement data ("<a></a>");
    data.appendText (data.getText());
    EXPECT_EQ (outline (data), "a[]a[]");
    EXPECT_FALSE (data.isDirty());

    auto string = makeSmart<MVString> ("<b>");
    data.appendString (string);
    EXPECT_FALSE (string);
    EXPECT_TRUE (data.isDirty());
    data.appendString (string);
    data.appendText (nullptr);
    data.appendBytes ("</bcut", 3);
    data.appendChar ('>');
    EXPECT_EQ (outline (data), "a[]a[]b[]");
    data.setContent ("<c></c>");
    EXPECT_EQ (outline (data), "a[]a[]b[]c[]");
    data.setContent (nullptr);
    EXPECT_FALSE (data.isDirty());
}

TEST (XmlData, addingWritesTextAndKeepsNoObject)
{
    MVXmlElement root;
    auto child = element ("a", { { "x", "1" }, { "y", "2 3" } });
    const auto kept = child;
    child->setContent ("<b></b>");
    root.addChild (child);
    root.addChild (MVSmartPtr<MVXmlElement>());
    EXPECT_STREQ (root.getText(), "<a x=\"1\" y=\"2 3\">\n<b></b></a>\n");
    ASSERT_EQ (root.childCount(), 1);
    EXPECT_FALSE (root.childAt (0) == kept);
    EXPECT_TRUE (root.childAt (0) == root.childAt (0));

    const auto first = root.childAt (0);
    root.addChild (makeSmart<MVXmlElement> ("<c></c><d></d>"));
    EXPECT_EQ (outline (root), "a[\n<b></b>]c[]d[]");
    EXPECT_FALSE (root.childAt (0) == first);
    EXPECT_STREQ (first->getText(), "\n<b></b>");
    EXPECT_FALSE (root.childAt (3));
    EXPECT_FALSE (root.childAt (-1));
}

TEST (XmlData, childrenAreFoundByNameAndOccurrence)
{
    MVXmlElement root ("<a>1</a><b>2</b><A></A><a>3</a><ab></ab>");
    EXPECT_EQ (root.countChildrenNamed ("a"), 2);
    EXPECT_EQ (root.countChildrenNamed (""), 0);
    EXPECT_STREQ (root.childNamed ("a")->getText(), "1");
    EXPECT_STREQ (root.childNamed ("a", 1)->getText(), "3");
    for (const int missing : { -1, 2 })
        EXPECT_FALSE (root.childNamed ("a", missing)) << missing;
    EXPECT_FALSE (root.childNamed (nullptr));
}

TEST (XmlData, countsAndFetchesByScanWhileParsing)
{
    ParsingElement root ("<a>1</a><b />");
    root.pretendParsing (true);
    EXPECT_EQ (root.childCount(), 2);
    const auto fetched = root.childAt (1);
    EXPECT_STREQ (fetched->getName(), "b");
    EXPECT_STREQ (root.childNamed ("a")->getText(), "1");
    EXPECT_FALSE (root.childAt (1) == fetched);
    EXPECT_FALSE (root.childAt (2));
    EXPECT_FALSE (root.childAt (-1));
    EXPECT_TRUE (root.isDirty());

    // Built children stay as they are, too.
    root.pretendParsing (false);
    const auto built = root.childAt (1);
    root.appendText ("<c></c>");
    root.pretendParsing (true);
    EXPECT_EQ (root.childCount(), 3);
    EXPECT_TRUE (root.isDirty());
    root.pretendParsing (false);
    EXPECT_EQ (root.childCount(), 3);
    EXPECT_FALSE (root.isDirty());
}

TEST (XmlElement, attributesAsTextNumberAndFlag)
{
    MVXmlElement root (
        "<a t=\"MV_TRUE\" f=\"true\" e=\"\" n=\"-7\" big=\"4294967298\" w=\"4x\" color_id=\"300\" n=\"8\">");
    const auto a = root.childAt (0);
    struct Case
    {
        const char* name;
        bool flag;
        std::int32_t number;
        std::uint8_t byte;
    };
    const Case cases[] {
        { "t", true, 0, 0 },    { "f", false, 0, 0 }, { "e", false, -1, 255 },        { "n", false, -7, 249 },
        { "big", false, 2, 2 }, { "w", false, 0, 0 }, { "color_id", false, 300, 44 }, { "missing", false, -1, 255 }
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ (a->getAttributeBool (c.name), c.flag) << c.name;
        EXPECT_EQ (a->getAttributeInt (c.name), c.number) << c.name;
        EXPECT_EQ (a->getAttributeByte (c.name), c.byte) << c.name;
    }
    EXPECT_EQ (a->getColorId(), 300);

    EXPECT_STREQ (a->getAttribute ("n")->text(), "-7");
    EXPECT_FALSE (a->getAttribute ("e"));
    EXPECT_FALSE (a->getAttribute ("T"));
    EXPECT_STREQ (a->attributeName (2)->text(), "e");
    EXPECT_FALSE (a->attributeValue (2));
    EXPECT_STREQ (a->attributeValue (7)->text(), "8");
    EXPECT_FALSE (a->attributeName (8));
    EXPECT_FALSE (a->attributeName (-1));

    EXPECT_EQ (root.getTag(), nullptr);
    EXPECT_FALSE (root.getAttribute ("n"));
    EXPECT_FALSE (root.attributeName (0));
    EXPECT_EQ (root.getColorId(), -1);
    root.setTag ("first");
    root.getTag()->addAttribute ("x", "1");
    EXPECT_EQ (root.getAttributeInt ("x"), 1);
    root.setTag ("second");
    EXPECT_FALSE (root.getAttribute ("x"));
    EXPECT_STREQ (root.getName(), "second");
}

TEST (XmlElement, copiesAreDeepAndNumbered)
{
    auto original = element ("a", { { "x", "1" } });
    original->setContent (("<b>in</b>" + std::string (300, ' ')).c_str());
    original->addChild (makeSmart<MVXmlElement> (std::string (200, ' ').c_str()));
    EXPECT_EQ (original->getGrowBy(), 200);

    const MVXmlElement dirtyCopy (*original);
    EXPECT_TRUE (dirtyCopy.isDirty());
    const auto child = original->childAt (0);
    const MVSmartPtr<MVXmlElement> copy (original->clone());
    EXPECT_FALSE (copy->isDirty());
    EXPECT_EQ (copy->getGrowBy(), 128);
    EXPECT_EQ (copy->getBufferSize(), original->getBufferSize());
    EXPECT_GT (copy->getSerial(), dirtyCopy.getSerial());
    EXPECT_NE (copy->getId(), original->getId());
    EXPECT_EQ (copy->typeId(), 0xC00014U);
    EXPECT_TRUE (copy->isClassNamed ("MVXmlElement"));

    ASSERT_EQ (copy->childCount(), 1);
    EXPECT_FALSE (copy->childAt (0) == child);
    child->appendText ("changed");
    EXPECT_STREQ (copy->childAt (0)->getText(), "in");
    EXPECT_STREQ (copy->getAttribute ("x")->text(), "1");
}

TEST (XmlElement, writesLinesIndentedByLevel)
{
    MVXmlElement root ("<a x=\"1\" y=\"\">dropped<b><c /></b></a><d></d>");
    EXPECT_STREQ (root.contentText()->text(), "<a x=\"1\" y=\"\">\n    <b>\n        <c>\n        </c>\n    </b>\n</a>\n"
                                              "<d>\n</d>\n");
    const auto b = root.childAt (0)->childAt (0);
    const auto text = b->toText (1);
    EXPECT_STREQ (text->text(), "    <b>\n        <c>\n        </c>\n    </b>\n");
    EXPECT_EQ (text->getCapacity(), b->getLength() + 512);
    EXPECT_STREQ (b->childAt (0)->toText (-5)->text(), "<c>\n</c>\n");
    EXPECT_EQ (b->toText (2147483647)->toStdString(), b->toText (63)->toStdString());
    EXPECT_STREQ (root.childAt (1)->toText()->text(), "<d>\n</d>\n");
    EXPECT_STREQ (MVXmlElement().contentText()->text(), "");
    EXPECT_EQ (root.toText()->toStdString(), root.contentText()->toStdString());
}

TEST (XmlElement, nestingWithoutEndNeedsNoStack)
{
    // Far more levels than a stack of 128 KiB could follow by recursion.
    static constexpr int depth = 2000;
    const auto makeAndRelease = [] (void*) -> void*
    {
        const auto root = makeSmart<MVXmlElement> (repeated ("<a>", depth).c_str());
        auto current = root;
        for (int i = 1; i < depth; ++i)
            current = current->childAt (0);
        EXPECT_EQ (current->getLength(), 3);

        // 64 levels with a line each for beginning and end.
        const auto written = root->contentText()->toStdString();
        EXPECT_EQ (std::count (written.begin(), written.end(), '\n'), 2 * 64);

        // The levels that the copy leaves out are made from its text.
        MVXmlElement copy (*root);
        EXPECT_EQ (parseAll (copy), depth);
        return nullptr;
    };

    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init (&attributes);
    pthread_attr_setstacksize (&attributes, 128 * 1024);
    ASSERT_EQ (pthread_create (&thread, &attributes, makeAndRelease, nullptr), 0);
    pthread_join (thread, nullptr);
    pthread_attr_destroy (&attributes);
}

TEST (XmlDocument, writtenListsAreReadBack)
{
    const std::vector<std::string> values { "/home/some one/My Presets/a=b & 'c' / d.sord_preset",
                                            "C:\\Users\\x\\y.sord_preset",
                                            "/",
                                            "=",
                                            "//a//",
                                            "&lt;&quot;",
                                            "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB9.sord_preset",
                                            " blanks around ",
                                            "a<b",
                                            "Attack < 10 ms",
                                            "<<<",
                                            "x < y z",
                                            "a?xml",
                                            "<?xml version",
                                            std::string (4095, '/') };

    for (const bool byText : { false, true })
    {
        const std::string document = listDocument (values, byText);
        for (const std::string& value : values)
            EXPECT_TRUE (MVXmlDocument::isSafeValue (value)) << value;
        EXPECT_EQ (valuesRead (document), values) << byText;

        // Written again, it is the same.
        const auto again = MVXmlDocument::read (document);
        ASSERT_TRUE (again);
        EXPECT_EQ (valuesRead (again->contentText()->toStdString()), values);
    }
}

TEST (XmlDocument, unsafeValuesAreRefused)
{
    const std::string longWord (70, 'w');
    struct Case
    {
        std::string value;
        bool safe;
    };
    const Case cases[] { { "", true },
                         { std::string (4095, 'v'), true },
                         { std::string (4096, 'v'), false },
                         { "a\"b", false },
                         { "a>b", false },
                         { "a\nb", false },
                         { "a\tb", false },
                         { std::string ("a\0b", 3), false },
                         { "a\x7F", false },
                         { "a\x80", true },
                         { "a</b", false },
                         { "a< / b", false },
                         { "a< b =c", false },
                         { longWord + "< b =", false },
                         { "a< b =/c", true },
                         { "<b " + longWord, false },
                         { "<b " + longWord.substr (0, 62), true },
                         { "<b " + longWord.substr (0, 63), false },
                         { "<b" + longWord, true },
                         { longWord + " <b", true } };
    for (const Case& c : cases)
        EXPECT_EQ (MVXmlDocument::isSafeValue (c.value), c.safe) << c.value;

    // What a refusal saves from: a list ended by its own item's value, and the limits of a value that follows.
    EXPECT_EQ (valuesRead (listDocument ({ "</list </list " }, false)), std::vector<std::string> {});
    EXPECT_FALSE (MVXmlDocument::isSafeToParse (listDocument ({ longWord + "< b =" }, false)));
}

TEST (XmlDocument, safeValuesSurviveInAnyList)
{
    test::TestRandom random (7);
    const char* const pieces[] { "<", "</", "/", " ", "=", "list", "item", "wrapper", "?xml", "a", "'", "\xC3\xA9" };
    int checked = 0;

    for (int round = 0; round < 5000; ++round)
    {
        std::vector<std::string> values;
        for (int i = 1 + random.below (3); i > 0; --i)
        {
            std::string value ("v");
            for (int j = random.below (12); j > 0; --j)
                value += pieces[random.below (static_cast<int> (std::size (pieces)))];
            if (MVXmlDocument::isSafeValue (value))
                values.push_back (value);
        }

        checked += static_cast<int> (values.size());
        ASSERT_EQ (valuesRead (listDocument (values, random.chance (0.5))), values) << listDocument (values, false);
    }

    EXPECT_GT (checked, 2500);
}

TEST (XmlDocument, limitsOfNameAndValueAreMetAtEveryLevel)
{
    const auto withName = [] (int size)
    { return "<a " + std::string (static_cast<std::size_t> (size), 'n') + "=\"\">"; };
    const auto withValue = [] (int size)
    { return "<a n=\"" + std::string (static_cast<std::size_t> (size), 'v') + "\">"; };
    struct Case
    {
        std::string text;
        bool safe;
    };
    const Case cases[] {
        { withName (63), true },
        { withName (64), false },
        { withValue (4095), true },
        { withValue (4096), false },
        { "<b><c>" + withName (64) + "</c></b>", false },
        { "<b><c>" + withValue (4096) + "</c></b>", false },
        // Without a ">" the limit is met all the same.
        { "<a " + std::string (64, 'n'), false },
        { "<a " + std::string (63, 'n'), true },
        // Only the scan of the inner level begins at the "<" in the value.
        { "<a x=\"<b " + std::string (64, 'n') + "\"></a>", true },
        { "<c><a x=\"<b " + std::string (64, 'n') + "\"></a></c>", false },
        { std::string ("<a>\0</a>", 8), false },
        { std::string (1024 * 1024, ' '), true },
        { std::string (1024 * 1024 + 1, ' '), false },
        { repeated ("<a>", 64), true },
        { repeated ("<a>", 65), false },
        { repeated ("<a />", 65), true },
        { "", true },
    };

    for (const Case& c : cases)
    {
        EXPECT_EQ (MVXmlDocument::isSafeToParse (c.text), c.safe) << c.text.substr (0, 100);
        const auto root = MVXmlDocument::read (c.text);
        EXPECT_EQ (static_cast<bool> (root), c.safe);
        if (root)
            parseAll (*root);
    }
}

TEST (XmlDocumentDeathTest, limitsEndTheProcessWithALogLine)
{
    GTEST_FLAG_SET (death_test_style, "threadsafe");
    const std::string name = "<a " + std::string (64, 'n') + "=\"\">";
    const std::string value = "<a n=\"" + std::string (4096, 'v') + "\">";
    EXPECT_DEATH (parseLogged (name), "\\[ERROR\\] .*parseTag Attribute name of 64 bytes");
    EXPECT_DEATH (parseLogged (value), "\\[ERROR\\] .*parseTag Attribute value of 4096 bytes");
    EXPECT_DEATH (parseLogged ("<b>" + value), "4096");
}

TEST (XmlDocument, whatIsCalledSafeNeverEndsTheProcess)
{
    test::TestRandom random (11);
    const char* const pieces[] { "<", "<",  "</",  ">",  ">",  "/",    "/>", " ",
                                 "=", "\"", "=\"", "\t", "\n", "?xml", "a",  "b" };
    const std::string longName (61, 'n'), longValue (4090, 'v');
    int safe = 0, refused = 0;

    for (int round = 0; round < 5000; ++round)
    {
        std::string text;
        for (int i = random.below (60); i > 0; --i)
            text += pieces[random.below (static_cast<int> (std::size (pieces)))];
        for (int i = random.below (4); i > 0; --i)
        {
            const auto at = static_cast<std::size_t> (random.below (static_cast<int> (text.size()) + 1));
            text.insert (at, random.chance (0.7) ? longName : longValue);
        }

        if (const auto root = MVXmlDocument::read (text))
        {
            parseAll (*root);
            (void)root->contentText();
            ++safe;
        }
        else
        {
            ++refused;
        }
    }

    EXPECT_GT (safe, 1000);
    EXPECT_GT (refused, 100);
}

TEST (XmlDocument, awkwardDocumentsTakeLittleTime)
{
    constexpr int size = 300000;
    const std::string texts[] { repeated ("<", size),
                                repeated ("<", size) + ">",
                                repeated ("<a>", size / 3),
                                "<a>" + repeated ("<", size) + "></a>",
                                repeated ("<a ", size / 3) + ">",
                                "<a" + repeated (" b=\"\"", size / 5) + ">",
                                repeated ("<a b=\"<\" />", size / 11) };
    for (const std::string& text : texts)
    {
        const auto start = std::chrono::steady_clock::now();
        if (const auto root = MVXmlDocument::read (text))
            (void)root->contentText();
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        EXPECT_LT (seconds.count(), 20.0) << text.substr (0, 20);
    }

    // No ">" at all ends the search at once; with one, every "<" would be read up to it.
    EXPECT_TRUE (MVXmlDocument::isSafeToParse (texts[0]));
    EXPECT_FALSE (MVXmlDocument::isSafeToParse (texts[1]));

    // A list of the size that a long life brings is far from the limit.
    const std::vector<std::string> paths (1500,
                                          "/home/user/.config/Application Support/Sordelin/Preset < one.sord_preset");
    EXPECT_EQ (valuesRead (listDocument (paths, true)), paths);
}

} // namespace morvanelab
