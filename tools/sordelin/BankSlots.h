// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OutputFile.h"

#include "banks/MVBankFile.h"
#include "foundation/MVDataBlock.h"
#include "foundation/MVSmartPtr.h"

#include <memory>
#include <string>

namespace morvanelab
{

/** Opens a bank, checksum and layout verified. With repair, missing compartments are added; without, a damaged
    layout is badData. Throws badData. */
std::unique_ptr<MVBankFile> openBank (const std::string& path, bool repair = false);

/** The patch in a slot. Throws badData for an empty slot, or one that holds no patch. */
Bytes readSlotPatch (const std::string& bankPath, int slot);
Bytes readSlotPatch (MVBankFile& bank, int slot);

/** A file path as JUCE wants it: absolute. */
juce::File fileAt (const std::string& path);

MVSmartPtr<MVDataBlock> blockOf (const Bytes& bytes);
Bytes bytesOf (MVDataBlock& block);

} // namespace morvanelab
