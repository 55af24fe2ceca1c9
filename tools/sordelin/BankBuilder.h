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

    void put (int slot, const Bytes& patch, const MVSmartPtr<MVMetaData>& metadata);
    void clear (int slot);
    void setBankMeta (const MVSmartPtr<MVMetaData>& metadata);
    void commit();

private:
    BankEdit (juce::File targetFile, std::unique_ptr<MVBankFile> workingCopy);

    juce::File target;
    std::unique_ptr<MVBankFile> bank;
};

/** Makes a bank from a list of slots with patch sources. Throws badData or MVException; then nothing is written. */
void buildBank (const std::string& listPath, const std::string& outPath);

} // namespace morvanelab
