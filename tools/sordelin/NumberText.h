// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace morvanelab
{

/** A finite number that fills the whole text. The argument it stands in is named on failure. Throws wrongUse.
    The decimal point is always a point, whatever the locale. */
double numberFrom (const std::string& text, const std::string& argument);
int wholeNumberFrom (const std::string& text, const std::string& argument);

} // namespace morvanelab
