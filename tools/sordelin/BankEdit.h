// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BankSlots.h"

#include "foundation/MVMetaData.h"

#include <memory>
#include <string>

namespace morvanelab
{

/** Changes to a bank file that come into effect together or not at all: they are made on a copy beside the bank, which
    then replaces it. */
class BankEdit
{
public:
    /** Opens a bank for changes. Throws badData or MVException as opening does. */
    explicit BankEdit (const std::string& path);
    /** Starts a new bank that will stand at path. */
    static BankEdit ofNewBank (const std::string& path);
    /** Without commit, the bank stays as it was. */
    ~BankEdit();

    BankEdit (BankEdit&&) noexcept = default;
    BankEdit (const BankEdit&) = delete;
    BankEdit& operator= (const BankEdit&) = delete;

    MVBankFile& contents() { return *bank; }
    /** Puts a patch file's bytes into a slot. Comment and panel stay. */
    void put (int slot, const Bytes& patch, const MVSmartPtr<MVMetaData>& metadata);
    void clear (int slot);
    /** Both take the bytes as they are; they may not be empty. */
    void store (int slot, const StoredSlot& stored);
    void storeBankMeta (const Bytes& metadata);
    void commit();

private:
    BankEdit (juce::File targetFile, std::unique_ptr<MVBankFile> workingCopy);

    juce::File target;
    std::unique_ptr<MVBankFile> bank;
};

} // namespace morvanelab
