// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankEdit.h"

#include "CommandFailure.h"

#include "banks/MVFileSwap.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <random>

namespace morvanelab
{

namespace
{

juce::File workingFileBeside (const juce::File& target)
{
    std::random_device source;
    return target.getSiblingFile (target.getFileName() + ".edit" + juce::String (source()));
}

void stored (int result)
{
    if (result != resultDone)
        throw badData ("Could not write to file");
}

} // namespace

BankEdit::BankEdit (juce::File targetFile, std::unique_ptr<MVBankFile> workingCopy)
    : target (std::move (targetFile)), bank (std::move (workingCopy))
{
}

BankEdit::BankEdit (const std::string& path) : target (fileAt (path))
{
    openBank (path).reset();
    const juce::File copy = workingFileBeside (target);
    if (! target.hasWriteAccess())
        throw badData ("File permission problem");
    if (! target.copyFileTo (copy))
        throw badData ("Could not create file");

    bank = std::make_unique<MVBankFile>();
    bank->openFile (copy, false);
}

BankEdit BankEdit::ofNewBank (const std::string& path)
{
    const juce::File target = fileAt (path);
    if (target.isDirectory())
        throw badData ("Could not create file");

    auto created = std::make_unique<MVBankFile>();
    created->createBank (workingFileBeside (target));
    return { target, std::move (created) };
}

BankEdit::~BankEdit()
{
    if (bank != nullptr && bank->isOpen())
        bank->getPath().deleteFile();
}

void BankEdit::put (int slot, const Bytes& patch, const MVSmartPtr<MVMetaData>& metadata)
{
    stored (bank->setPatchData (slot, MVBankFile::packSlot (blockOf (patch), bank->getPatchData (slot))));
    if (! bank->setPatchMeta (slot, metadata))
        throw badData ("Could not write to file");
}

void BankEdit::clear (int slot) { stored (bank->clearSlot (slot)); }

void BankEdit::store (int slot, const StoredSlot& slotBytes)
{
    stored (bank->replaceCompartments ({ { fourCC ("pdat"), slot, compartmentRaw, spanOf (slotBytes.data) },
                                         { fourCC ("pmta"), slot, compartmentRiff, spanOf (slotBytes.metadata) } }));
}

void BankEdit::storeBankMeta (const Bytes& metadata)
{
    stored (bank->replaceCompartments ({ { fourCC ("meta"), 0, compartmentRiff, spanOf (metadata) } }));
}

void BankEdit::commit()
{
    const juce::File working = bank->getPath();
    if (! swapInFile (working, target))
        throw badData ("Unexpected file switch failure.");
    bank->closeFile();
}

} // namespace morvanelab
