// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace morvanelab
{

/** Makes a bank from a list of slots with patch sources, stored texts and stored bytes, as bank explode writes it.
    Throws badData or MVException; then nothing is written. */
void buildBank (const std::string& listPath, const std::string& outPath);

} // namespace morvanelab
