// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/OperatorSpec.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace morvanelab
{

/** Every operator with identifier, class, ports, parameters, limits, defaults and attribute size, from the one table.
 */
std::string operatorsAsJson();
std::string operatorsAsText();
nlohmann::ordered_json operatorAsJson (const OperatorSpec& spec);

} // namespace morvanelab
