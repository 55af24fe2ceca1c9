// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OutputFile.h"

#include "banks/MVBankFile.h"
#include "foundation/MVDataBlock.h"
#include "foundation/MVSmartPtr.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace morvanelab
{

/** Opens a bank, checksum and layout verified. With repair, missing compartments are added; without, a damaged
    layout is badData. Throws badData. */
std::unique_ptr<MVBankFile> openBank (const std::string& path, bool repair = false);

/** Why the plug-in would not take an opened container for a bank: "Error:  Not a bank file." or "Error:  Incompatible
    version.". Empty if it would. */
std::string whyNoBank (const MVBankFile& bank);

/** The patch in a slot. Throws badData for an empty slot, or one that holds no patch. */
Bytes readSlotPatch (const std::string& bankPath, int slot);
Bytes readSlotPatch (MVBankFile& bank, int slot);

/** The two compartments of a slot, byte for byte. */
struct StoredSlot
{
    Bytes data;
    Bytes metadata;
};

/** An empty slot is always a single zero byte, and metadata that are not there are those of a new bank: neither is ever
    empty. */
StoredSlot readStoredSlot (MVBankFile& bank, int slot);
Bytes readStoredBankMeta (MVBankFile& bank);
/** What an empty slot holds. */
StoredSlot emptySlot();

bool isOccupied (const Bytes& slotData);
/** The patch file inside a slot's data; empty if there is none. */
Bytes patchIn (const Bytes& slotData);

MVSmartPtr<MVDataBlock> blockOf (const Bytes& bytes);
Bytes bytesOf (MVDataBlock& block);
/** The bytes as the layers below name them. */
inline std::span<const std::uint8_t> spanOf (const Bytes& bytes)
{
    return { reinterpret_cast<const std::uint8_t*> (bytes.data()), bytes.size() };
}

} // namespace morvanelab
