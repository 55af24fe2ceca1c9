// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianWriter.h"

#include "banks/MVBankBytes.h"
#include "banks/MVFileSwap.h"
#include "foundation/MVException.h"
#include "foundation/MVLog.h"
#include "foundation/MVResult.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

using Bytes = std::vector<std::uint8_t>;

constexpr const char* boxTitle = "Bank Librarian";
constexpr const char* fileBoxTitle = "File I/O Exception";

/** A step that cannot be done; the librarian's own kind, told to the user as it stands. */
struct Refusal
{
    std::string text;
};

Bytes toBytes (const MVSmartPtr<MVDataBlock>& block)
{
    const auto bytes = bytesOf (block);
    return { bytes.begin(), bytes.end() };
}

/** What stands for a compartment without bytes, which no file may be given. */
Bytes emptyCompartment (std::uint32_t type)
{
    return type == MVLibrarianWriter::slotPatchType ? Bytes { 0 } : toBytes (packChunks (MVMetaData().packRiff()));
}

struct StoredCompartment
{
    std::uint32_t format = 0;
    Bytes bytes;
};

StoredCompartment readCompartment (MVBankFile& bank, std::uint32_t type, int index)
{
    MVSmartPtr<MVDataBlock> data;
    try
    {
        bank.readByOrdinal (type, index, data);
    }
    catch (const MVException& failure)
    {
        throw MVBankAccessFailure (failure, bank.getPath());
    }

    StoredCompartment result { type == MVLibrarianWriter::slotPatchType ? compartmentRaw : compartmentRiff,
                               toBytes (data) };
    if (result.bytes.empty())
        result.bytes = emptyCompartment (type);

    int ordinal = 0;
    for (auto* node = bank.getCompartments().firstNode(); node != nullptr; node = node->next)
        if (node->value.type == type && ordinal++ == index)
            result.format = node->value.format;
    return result;
}

/** Never raises: what was just written can be read, or is told with the next use of the bank. */
MVSmartPtr<MVMetaData> readBankMetadata (MVBankFile& bank)
{
    try
    {
        return bank.getBankMeta();
    }
    catch (const MVException&)
    {
        return makeSmart<MVMetaData>();
    }
}

MVBankEdit reversedEdit (const MVBankEdit& edit)
{
    return MVLibrarianStep { {}, { edit }, {} }.reversed().bankEdits[0];
}

bool replacesPatch (const MVBankEdit& edit)
{
    return std::any_of (edit.compartments.begin(), edit.compartments.end(),
                        [] (const auto& each) { return each.type == MVLibrarianWriter::slotPatchType; });
}

bool replacesBankMetadata (const MVBankEdit& edit)
{
    return std::any_of (edit.compartments.begin(), edit.compartments.end(),
                        [] (const auto& each) { return each.type == MVLibrarianWriter::bankMetaType; });
}

} // namespace

MVSlotBytes MVSlotBytes::empty()
{
    return { emptyCompartment (MVLibrarianWriter::slotPatchType), emptyCompartment (MVLibrarianWriter::slotMetaType) };
}

int MVLibrarianWriter::indexOf (const juce::File& bankFile) const
{
    for (int i = 0; i < manager.getBankCount(); ++i)
        if (manager.getBank (i)->bank.getPath() == bankFile)
            return i;
    return -1;
}

MVSlotBytes MVLibrarianWriter::readSlot (int bank, int slot) const
{
    const auto wrapper = manager.getBank (bank);
    if (! wrapper)
        return MVSlotBytes::empty();
    return { readCompartment (wrapper->bank, slotPatchType, slot).bytes,
             readCompartment (wrapper->bank, slotMetaType, slot).bytes };
}

MVCompartmentEdit MVLibrarianWriter::editOf (int bank, std::uint32_t type, int index, Bytes after) const
{
    const auto wrapper = manager.getBank (bank);
    auto stored = wrapper ? readCompartment (wrapper->bank, type, index) : StoredCompartment {};
    return { type, index, stored.format, std::move (stored.bytes), std::move (after) };
}

MVLibrarianOutcome MVLibrarianWriter::apply (const MVLibrarianStep& step)
{
    MVLibrarianOutcome outcome;
    try
    {
        applyBankEdits (step.bankEdits, outcome);
        if (! outcome.title.empty())
            return outcome;
        if (step.listEdit)
            applyListEdit (*step.listEdit);
        follow (step.bankEdits);
        outcome.done = true;
    }
    catch (const Refusal& refusal)
    {
        outcome.stale = true;
        outcome.title = boxTitle;
        outcome.text = refusal.text;
    }
    catch (const MVException& failure)
    {
        outcome.title = boxTitle;
        outcome.text = failure.text();
    }
    return outcome;
}

void MVLibrarianWriter::applyBankEdits (const std::vector<MVBankEdit>& edits, MVLibrarianOutcome& outcome)
{
    std::vector<MVBankEdit> written;
    try
    {
        for (const auto& edit : edits)
            requireUnchanged (edit);
        for (const auto& edit : edits)
        {
            write (edit);
            written.push_back (edit);
        }
    }
    catch (const MVBankAccessFailure& failure)
    {
        outcome = outcomeOf (failure);
        while (! written.empty())
        {
            try
            {
                write (reversedEdit (written.back()));
            }
            catch (const MVBankAccessFailure& second)
            {
                outcomeOf (second);
            }
            written.pop_back();
        }
    }
}

void MVLibrarianWriter::requireUnchanged (const MVBankEdit& edit) const
{
    const int index = indexOf (edit.file);
    if (index < 0)
        throw Refusal { "The bank is no longer in the list: " + edit.file.getFileName().toStdString() };

    auto& bank = manager.getBank (index)->bank;
    for (const auto& each : edit.compartments)
        if (readCompartment (bank, each.type, each.index).bytes != each.before)
            throw Refusal { "The bank has been changed elsewhere: " + edit.file.getFileName().toStdString() };
}

void MVLibrarianWriter::write (const MVBankEdit& edit) const
{
    const auto wrapper = manager.getBank (indexOf (edit.file));
    std::vector<MVFilePacker::Replacement> replacements;
    for (const auto& each : edit.compartments)
        replacements.push_back ({ each.type, each.index, each.format, each.after });

    try
    {
        if (! wrapper || wrapper->bank.replaceCompartments (replacements) != resultDone)
            throw MVException (resultFileFailure, "Unexpected file write failure");
    }
    catch (const MVException& failure)
    {
        throw MVBankAccessFailure (failure, edit.file);
    }
}

/** Logged here, so that no failure goes by unseen. */
MVLibrarianOutcome MVLibrarianWriter::outcomeOf (const MVBankAccessFailure& failure)
{
    mvLog ("ERROR", "morvanelab::MVLibrarianWriter::apply", "%s: %u %s", failure.file.getFullPathName().toRawUTF8(),
           failure.getCode(), failure.text());

    MVLibrarianOutcome outcome;
    outcome.title = fileBoxTitle;
    if (! failure.file.existsAsFile())
    {
        outcome.text = "Failed to access.  File moved?";
        outcome.vanished = failure.file;
    }
    else if (isWriteProtected (failure.file))
        outcome.text = "The bank is write-protected.  Nothing has been changed.";
    else
        outcome.text = failure.text();
    return outcome;
}

void MVLibrarianWriter::applyListEdit (const MVBankListEdit& edit)
{
    const int present = indexOf (edit.file);
    if (edit.from >= 0 && present < 0)
        throw Refusal { "The bank is no longer in the list: " + edit.file.getFileName().toStdString() };

    if (edit.from < 0)
    {
        // A missing file would be made anew, empty.
        if (! edit.file.existsAsFile())
            throw MVException (resultFileMissing, "File does not exist.");
        manager.addBankFile (edit.to, edit.file);
        // It is the bank that was taken away: states that name it find it again.
        if (const auto wrapper = manager.getBank (indexOf (edit.file)))
            wrapper->uuid = edit.uuid;
        manager.saveBanks();
    }
    else if (edit.to < 0)
        manager.removeBank (present);
    else
        manager.moveBank (present, edit.to);
}

void MVLibrarianWriter::follow (const std::vector<MVBankEdit>& edits)
{
    bool listChanged = false;
    for (const auto& edit : edits)
    {
        // A file may stand in the list more than once.
        for (int i = 0; i < manager.getBankCount(); ++i)
        {
            const auto wrapper = manager.getBank (i);
            if (wrapper->bank.getPath() != edit.file)
                continue;
            if (replacesPatch (edit))
            {
                wrapper->uuid = MVBankUuid::createRandom();
                listChanged = true;
            }
            if (replacesBankMetadata (edit))
            {
                wrapper->metadata = readBankMetadata (wrapper->bank);
                listChanged = true;
            }
        }
    }
    if (listChanged)
        manager.saveBanks();
}

} // namespace morvanelab
