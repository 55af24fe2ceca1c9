// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/VowelMap.h"

#include "foundation/MVMath.h"

namespace morvanelab::vowelMap
{

namespace
{

constexpr int side = 32;
/** A little under the side, so that 1.0 is the last column. */
constexpr double sideScale = 31.999000549316406;

constexpr double formantTable[vowelCount][formantCount] {
    { 400.0, 2050.0, 2600.0, 3500.0 }, { 530.0, 1900.0, 2500.0, 3500.0 }, { 670.0, 1750.0, 2500.0, 3500.0 },
    { 720.0, 1380.0, 2500.0, 3500.0 }, { 700.0, 1110.0, 2500.0, 3500.0 }, { 590.0, 980.0, 2500.0, 3500.0 },
    { 450.0, 950.0, 2300.0, 3400.0 },  { 320.0, 900.0, 2200.0, 3200.0 },  { 250.0, 1250.0, 2100.0, 3150.0 },
    { 320.0, 1650.0, 2200.0, 3150.0 }, { 270.0, 2050.0, 2300.0, 3250.0 }, { 290.0, 2150.0, 2800.0, 3500.0 },
};

// clang-format off
/** One row per y, one column per x; a and b are the vowels 10 and 11. */
constexpr char plane[side][side + 1] {
    "00001111111111112222222222223333",
    "00000111111111112222222222233333",
    "00000011111111112222222222333333",
    "00000001111111112222222223333333",
    "b0000000111111112222222233333334",
    "bb000000011111112222222333333344",
    "bbb00000001111112222223333333444",
    "bbbb0000000111112222233333334444",
    "bbbbb000000011112222333333344444",
    "bbbbbb00000001112223333333444444",
    "bbbbbbb0000000112233333334444444",
    "bbbbbbbb000000012333333344444444",
    "bbbbbbbbb00000003333333444444444",
    "bbbbbbbbbb0000003333334444444444",
    "bbbbbbbbbbb000003333344444444444",
    "bbbbbbbbbbbb00003333444444444444",
    "aaaaaaaaaaaa99996666555555555555",
    "aaaaaaaaaaa999996666655555555555",
    "aaaaaaaaaa9999996666665555555555",
    "aaaaaaaaa99999996666666555555555",
    "aaaaaaaa999999987666666655555555",
    "aaaaaaa9999999887766666665555555",
    "aaaaaa99999998887776666666555555",
    "aaaaa999999988887777666666655555",
    "aaaa9999999888887777766666665555",
    "aaa99999998888887777776666666555",
    "aa999999988888887777777666666655",
    "a9999999888888887777777766666665",
    "99999998888888887777777776666666",
    "99999988888888887777777777666666",
    "99999888888888887777777777766666",
    "99998888888888887777777777776666",
};
// clang-format on

int cellOf (double place) { return truncToInt (place * sideScale) & (side - 1); }

} // namespace

const double* formants (int vowel) { return formantTable[vowel]; }

int vowelAt (double x, double y)
{
    const char cell = plane[cellOf (y)][cellOf (x)];
    return cell >= 'a' ? cell - 'a' + 10 : cell - '0';
}

} // namespace morvanelab::vowelMap
