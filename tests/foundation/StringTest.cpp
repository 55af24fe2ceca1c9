// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVException.h"
#include "foundation/MVMath.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVString.h"

#include <gtest/gtest.h>

#include <string>

namespace morvanelab
{

TEST (String, numbersTakeDigitsToTheEndOnly)
{
    struct Case
    {
        const char* text;
        std::int64_t expected;
    };
    const Case cases[] { { "", 0 },
                         { "  -42", -42 },
                         { "\t7", 7 },
                         { "12a", 0 },
                         { "-", 0 },
                         { "--1", 0 },
                         { "+1", 0 },
                         { "1 ", 0 },
                         { "- 1", 0 },
                         { "4294967297", 4294967297 },
                         { "18446744073709551615", -1 } };
    for (const Case& c : cases)
        EXPECT_EQ (MVString (c.text).toInt64(), c.expected) << c.text;

    EXPECT_EQ (MVString ("4294967297").toInt(), 1);
    EXPECT_EQ (MVString().toInt(), 0);
    EXPECT_EQ (MVString().toDouble(), 0.0);
    EXPECT_EQ (MVString (" -2.5e1x").toDouble(), -25.0);
    EXPECT_EQ (MVString ("x").toDouble(), 0.0);
    EXPECT_EQ (MVString ("1e-999").toDouble(), 0.0);
}

TEST (String, capacityFollowsTheGrowthRule)
{
    MVString text;
    text.reserve (10);
    EXPECT_EQ (text.getCapacity(), 10);
    const char* const first = text.text();
    text.reserve (9);
    EXPECT_EQ (text.text(), first);
    text.reserve (10);
    EXPECT_EQ (text.getCapacity(), 10);

    MVString appended ("abc");
    EXPECT_EQ (appended.getCapacity(), 4);
    appended.append ("de");
    EXPECT_EQ (appended.getCapacity(), 3 + 256);
    appended.append (std::string (300, 'x').c_str());
    EXPECT_EQ (appended.getCapacity(), 5 + 301);
    EXPECT_EQ (appended.length(), 305);

    const MVString sized (8);
    EXPECT_EQ (sized.getCapacity(), 8);
    EXPECT_FALSE (sized.isNull());
}

TEST (String, textWithoutBufferEqualsNothing)
{
    const MVString never;
    const MVString empty ("");
    EXPECT_FALSE (never.equals (""));
    EXPECT_FALSE (never.equals (never));
    EXPECT_FALSE (never.matchesAt ("", 0));
    EXPECT_TRUE (empty.equals (""));
    EXPECT_FALSE (empty.equals (static_cast<const char*> (nullptr)));
    EXPECT_STREQ (never.text(), "");
}

TEST (String, searchLowersOnlyTheNeedle)
{
    struct Case
    {
        const char *haystack, *needle;
        int expected;
    };
    const Case cases[] { { "Warm PAD", "pad", 5 }, { "Warm pad", "PAD", 5 },
                         { "abc", "", 0 },         { "", "", 0 },
                         { "abc", "abcd", -1 },    { "aab", "AB", 1 },
                         { "mail@x", "`X", 4 },    { "mail`x", "@", -1 } };
    for (const Case& c : cases)
        EXPECT_EQ (MVString (c.haystack).indexOfIgnoreCase (MVString (c.needle)), c.expected) << c.haystack;
}

TEST (String, orderIsThatOfSignedBytes)
{
    EXPECT_TRUE (MVString ("ab").lessThan (MVString ("abc")));
    EXPECT_FALSE (MVString ("ab").lessThan (MVString ("ab")));
    EXPECT_TRUE (MVString ("\xE4").lessThan (MVString ("a")));
    EXPECT_TRUE (MVString().lessThan (MVString ("a")));
}

TEST (String, positionsOutsideAreHarmless)
{
    const MVString text ("hello");
    EXPECT_TRUE (text.substring (1, 3).equals ("ell"));
    EXPECT_TRUE (text.substring (3, 3).equals (""));
    EXPECT_TRUE (text.substring (-1, 2).equals (""));
    EXPECT_TRUE (text.substring (2147483647, 2147483647).equals (""));
    EXPECT_EQ (text.charAt (5), '\0');
    EXPECT_EQ (text.charAt (-1), '\0');
    EXPECT_TRUE (text.matchesAt ("lo", 3));
    EXPECT_FALSE (text.matchesAt ("lo!", 3));
    EXPECT_FALSE (text.matchesAt ("", 6));
    EXPECT_EQ (text.indexOf ('l', 3), 3);
    EXPECT_EQ (text.indexOf ('l', 9), -1);

    char small[4];
    EXPECT_EQ (text.copyTo (small, 4), 3);
    EXPECT_STREQ (small, "hel");
}

TEST (String, copiesFromItsOwnText)
{
    MVString text ("abcdef");
    text.append (text);
    EXPECT_TRUE (text.equals ("abcdefabcdef"));
    text.assign (text.text() + 4, 3);
    EXPECT_TRUE (text.equals ("efa"));
    text.assign (text);
    EXPECT_TRUE (text.equals ("efa"));
    text.truncate (9);
    EXPECT_EQ (text.length(), 3);
    text.truncate (1);
    EXPECT_TRUE (text.equals ("e"));
    text.assign (static_cast<const char*> (nullptr));
    EXPECT_TRUE (text.equals (""));
}

TEST (String, keepsZerosAndPrintsOnlyPlainBytes)
{
    MVString text;
    text.append ("a\0\x7F\x80\nb", 6);
    EXPECT_EQ (text.length(), 6);
    text.reserve (1000);
    EXPECT_EQ (text.charAt (5), 'b');
    EXPECT_TRUE (text.printableOnly().equals ("a\nb"));
    EXPECT_TRUE (MVString ("aZ[@").lowerCase().equals ("az[@"));
}

TEST (String, chunkFormHoldsTheTextWithoutTerminator)
{
    const auto packed = MVString ("hi").packRiff (fourCC ("name"));
    ASSERT_EQ (packed->childCount(), 1);
    EXPECT_EQ (packed->getChunkId(), fourCC ("name"));
    EXPECT_EQ (packed->childAt (0)->getChunkId(), fourCC ("str "));
    EXPECT_EQ (packed->childAt (0)->getPayloadSize(), 2);
    EXPECT_EQ (MVString ("").packRiff (1)->childCount(), 0);

    MVString text ("old");
    text.unpackRiff (*packed);
    EXPECT_TRUE (text.equals ("hi"));
    text.unpackRiff (MVRiffPacker (1));
    EXPECT_TRUE (text.equals (""));
}

TEST (Exception, carriesCodeAndText)
{
    try
    {
        throw MVException (9, "Error:  Invalid patch data.");
    }
    catch (const MVException& caught)
    {
        EXPECT_EQ (caught.getCode(), 9U);
        EXPECT_STREQ (caught.text(), "Error:  Invalid patch data.");
    }
}

} // namespace morvanelab
