// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankSlots.h"

#include "CommandFailure.h"
#include "StderrPrompt.h"

#include "foundation/MVException.h"
#include "foundation/MVResult.h"

#include <cstring>

namespace morvanelab
{

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

juce::File fileAt (const std::string& path)
{
    return juce::File::getCurrentWorkingDirectory().getChildFile (
        juce::String::fromUTF8 (path.data(), static_cast<int> (path.size())));
}

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
