// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace morvanelab
{

/** Takes a bank apart: each patch becomes a patch file "07 Name.mv_onpatch" in the folder, which is made if it is
    missing, and "bank.json" is the list from which bank build makes a bank of the same contents, byte for byte.
    Patches that do not load are told of on stderr and kept as they are. Without overwrite, no file that is there is
    replaced. Throws badData or MVException; then nothing is written. */
void explodeBank (const std::string& bankPath, const std::string& folder, bool overwrite);

} // namespace morvanelab
