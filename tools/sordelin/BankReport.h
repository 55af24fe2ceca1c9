// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVBankFile.h"

#include <string>

namespace morvanelab
{

std::string bankListAsText (MVBankFile& bank);
/** An array of 64 objects: slot, used, bytes, name, author, description, genre. */
std::string bankListAsJson (MVBankFile& bank);

/** Checks a bank from its checksum to the patches in its slots and reports on stdout. With repair, a damaged layout is
    mended first. Throws badData if anything is wrong in the end. */
void verifyBank (const std::string& path, bool repair);

} // namespace morvanelab
