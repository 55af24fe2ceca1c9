// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

namespace morvanelab
{

/** Changes to a list of banks. Other entries stay as they are, also those whose bank is missing today; a running
   plug-in that shares the list takes the change in. The former list is kept under "_bak". Each throws badData, or
   MVException as opening a bank does; then nothing is written. */

/** Puts a bank into the list, by default at the end; beyond the end means at the end. A path that is not there becomes
   a new bank, which is told on stderr. With yes, a damaged bank is repaired, and a damaged list kept under "_bak" and
    begun anew. */
void addToList (const std::string& listPath, const std::string& bankPath, std::optional<int> position, bool yes);
void removeFromList (const std::string& listPath, int index);
/** A position beyond the end is the end. */
void moveInList (const std::string& listPath, int from, int to);

} // namespace morvanelab
