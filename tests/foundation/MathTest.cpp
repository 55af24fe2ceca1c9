// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace morvanelab
{

namespace
{

constexpr int intMin = std::numeric_limits<int>::min();
constexpr int intMax = std::numeric_limits<int>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST (Math, realValuesFoldIntoTheRange)
{
    struct Case
    {
        double x, a, b, expected;
    };
    const Case cases[] {
        { 0.5, 0.0, 1.0, 0.5 },
        { 1.0, 0.0, 1.0, 1.0 },
        { 2.5, 0.001, 2.0, 0.501 },
        { -0.25, 0.0, 1.0, 0.75 },
        { -3.25, 0.0, 1.0, 0.75 },
        { -1.0, 0.0, 1.0, 1.0 }, // a whole span below counts from the top
        { 2.0, 0.0, 1.0, 0.0 },  // a whole span above counts from the bottom
        { 1.75, 1.0, 0.0, 0.75 },
        { 2147483648.0, -5.0, 7.0, 7.0 },
        { infinity, -5.0, 7.0, 7.0 },
        { -infinity, -5.0, 7.0, 7.0 },
        { infinity, 7.0, -5.0, -5.0 },
        { notANumber, -5.0, 7.0, -5.0 },
        { 1e-15, -1.0, 1.0, 0.0 },
        { 1.1e-15, -1.0, 1.0, 1.1e-15 },
        { infinity, 0.0, 2e11, 3500000014.901161 }, // shrunk once: 2e11 * 0.0175000000745
        { 9.0, 3.0, 3.0, 3.0 },
        { 1.0, 0.0, infinity, 1.0 },
    };

    for (const Case& c : cases)
        EXPECT_NEAR (wrapToRange (c.x, c.a, c.b), c.expected, 1e-9 * std::abs (c.expected) + 1e-16)
            << c.x << " in " << c.a << ", " << c.b;
}

TEST (Math, foldingAlwaysYieldsAValueOfTheRange)
{
    const double limits[][2] { { 0.0, 1.0 }, { -3.0, 2.0 }, { 0.001, 2.0 }, { 0.0, 5e-324 }, { -1e308, 1e308 } };
    const double values[] { -infinity, -1e300, -2147483647.0, -1.0, 0.0, 1e-300, 3.7, 2147483647.0, 1e300, notANumber };

    for (const auto& limit : limits)
        for (const double value : values)
        {
            const double folded = wrapToRange (value, limit[0], limit[1]);
            EXPECT_TRUE (folded >= limit[0] && folded <= limit[1]) << value << " gave " << folded;
        }
}

TEST (Math, wholeValuesFoldIntoTheRange)
{
    struct Case
    {
        int x, a, b, expected;
    };
    const Case cases[] {
        { 3, 0, 3, 3 },          { 4, 0, 3, 1 },      { 5, 0, 3, 2 },
        { 6, 0, 3, 0 },          { -1, 0, 3, 2 },     { -2, 0, 3, 1 },
        { -3, 0, 3, 3 },         { -1, 3, 0, 2 },     { 9, 5, 5, 5 },
        { intMin, 2, 7, 2 },     { intMin, 7, 2, 7 }, { intMax, intMin + 1, intMax - 1, intMin + 2 },
        { intMin + 1, 0, 1, 1 },
    };

    for (const Case& c : cases)
        EXPECT_EQ (wrapToIntRange (c.x, c.a, c.b), c.expected) << c.x << " in " << c.a << ", " << c.b;

    EXPECT_EQ (wrapIndex (intMin, 5), 0);
    EXPECT_EQ (wrapIndex (77, 0), 0);
    EXPECT_EQ (wrapIndex (-2, 3), 1);
    EXPECT_EQ (wrapIndex (3, -1), -1);
}

TEST (Math, choicesCountFromOne)
{
    const int cases[][3] { { 1, 4, 1 },  { 4, 4, 4 }, { 0, 4, 3 },      { -1, 4, 2 }, { -2, 4, 4 },
                           { 5, 4, 2 },  { 6, 4, 3 }, { 7, 4, 1 },      { 8, 4, 2 },  { intMin, 4, 1 },
                           { 12, 1, 1 }, { 0, 1, 1 }, { intMax, 2, 1 }, { 3, 2, 1 } };
    for (const auto& c : cases)
        EXPECT_EQ (foldChoice (c[0], c[1]), c[2]) << c[0] << " of " << c[1];
}

TEST (Math, conversionsSaturate)
{
    EXPECT_EQ (truncToInt (-1.99), -1);
    EXPECT_EQ (truncToInt (2147483646.9), 2147483646);
    EXPECT_EQ (truncToInt (1e30), intMax);
    EXPECT_EQ (truncToInt (-infinity), intMin);
    EXPECT_EQ (truncToInt (notANumber), 0);
    EXPECT_EQ (limitTo (notANumber, -1.0, 1.0), -1.0);
    EXPECT_EQ (limitTo (infinity, -1.0, 1.0), 1.0);
    EXPECT_EQ (limitTo (0.25, -1.0, 1.0), 0.25);
}

TEST (Math, versionCodesCompareAsDecimalPlaces)
{
    EXPECT_EQ (versionCode (1, 4, 0), 104000U);
    EXPECT_EQ (versionCode (0, 9, 3), 9300U);
    EXPECT_EQ (versionCode (1, 5, 0), 105000U);
    EXPECT_EQ (fourCC ("str "), 0x73747220U);
}

} // namespace morvanelab
