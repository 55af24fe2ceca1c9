// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankSlots.h"

#include "CommandFailure.h"
#include "StderrPrompt.h"

#include "banks/MVBankBytes.h"
#include "foundation/MVException.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <cstring>

namespace morvanelab
{

std::string whyNoBank (const MVBankFile& bank)
{
    constexpr std::uint32_t oldestBankVersion = 100000;
    if (bank.getFileType() != MVBankFile::bankFileType)
        return "Error:  Not a bank file.";
    const auto version = bank.getVersion();
    return versionCode (version[0], version[1], version[2]) < oldestBankVersion ? "Error:  Incompatible version." : "";
}

std::unique_ptr<MVBankFile> openBank (const std::string& path, bool repair)
{
    auto bank = std::make_unique<MVBankFile>();
    bank->openFile (fileAt (path), true);

    if (bank->getFileType() != MVBankFile::bankFileType)
        throw badData ("Error:  Not a bank file.");

    StderrPrompt prompt (repair);
    if (bank->validateAndRepair (prompt) != resultDone)
        throw badData ("The bank file is damaged.  It can be mended with: bank verify --repair");

    return bank;
}

Bytes readSlotPatch (MVBankFile& bank, int slot)
{
    const auto stored = bank.getPatchData (slot);
    if (! MVBankFile::isOccupied (stored))
        throw badData ("Error:  Invalid or corrupt patch.  (slot " + std::to_string (slot) + " is empty)");

    const auto patch = MVBankFile::unpackSlot (stored);
    if (patch->totalSize() < 1)
        throw badData ("Error:  Invalid patch data.  (slot " + std::to_string (slot) + ")");
    return bytesOf (*patch);
}

Bytes readSlotPatch (const std::string& bankPath, int slot) { return readSlotPatch (*openBank (bankPath), slot); }

namespace
{

Bytes compartmentBytes (MVBankFile& bank, std::uint32_t type, int index)
{
    MVSmartPtr<MVDataBlock> data;
    return bank.readByOrdinal (type, index, data) == resultDone ? bytesOf (*data) : Bytes();
}

Bytes metadataBytes (MVBankFile& bank, std::uint32_t type, int index)
{
    const Bytes bytes = compartmentBytes (bank, type, index);
    return bytes.empty() ? emptySlot().metadata : bytes;
}

} // namespace

StoredSlot emptySlot() { return { Bytes (1), bytesOf (*packChunks (MVMetaData().packRiff())) }; }

StoredSlot readStoredSlot (MVBankFile& bank, int slot)
{
    Bytes data = compartmentBytes (bank, fourCC ("pdat"), slot);
    return { isOccupied (data) ? std::move (data) : emptySlot().data, metadataBytes (bank, fourCC ("pmta"), slot) };
}

Bytes readStoredBankMeta (MVBankFile& bank) { return metadataBytes (bank, fourCC ("meta"), 0); }

bool isOccupied (const Bytes& slotData) { return MVBankFile::isOccupied (blockOf (slotData)); }

Bytes patchIn (const Bytes& slotData) { return bytesOf (*MVBankFile::unpackSlot (blockOf (slotData))); }

MVSmartPtr<MVDataBlock> blockOf (const Bytes& bytes)
{
    return makeSmart<MVDataBlock> (bytes.data(), static_cast<int> (bytes.size()));
}

Bytes bytesOf (MVDataBlock& block)
{
    Bytes bytes (static_cast<std::size_t> (block.totalSize()));
    if (! bytes.empty())
        std::memcpy (bytes.data(), block.pointerAt (0, 1), bytes.size());
    return bytes;
}

} // namespace morvanelab
