// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace morvanelab
{

/** Every operator with identifier, class, ports, parameters, limits, defaults and attribute size, from the one table.
 */
std::string operatorsAsJson();
std::string operatorsAsText();

} // namespace morvanelab
