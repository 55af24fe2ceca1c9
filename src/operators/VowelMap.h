// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

constexpr int formantCount = 4;

/** Twelve vowels by their formants, and the plane on which a voice moves between them. */
namespace vowelMap
{

constexpr int vowelCount = 12;

/** Centre frequencies in Hz of the formants of a vowel, 0 to 11. */
const double* formants (int vowel);

/** The vowel at a place; 0 to 1 is the whole plane both ways, values outside wrap. Any double is fine. */
int vowelAt (double x, double y);

} // namespace vowelMap
} // namespace morvanelab
