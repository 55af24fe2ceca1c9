// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVBankFileManager.h"
#include "foundation/MVException.h"
#include "ui/MVLibrarianUndo.h"

#include <string>
#include <utility>
#include <vector>

namespace morvanelab
{

/** A slot's two compartments, byte for byte. */
struct MVSlotBytes
{
    std::vector<std::uint8_t> patch;
    std::vector<std::uint8_t> metadata;

    bool operator== (const MVSlotBytes&) const = default;

    /** What an empty slot holds: one zero byte, and metadata in which nothing is set. */
    static MVSlotBytes empty();
    bool isOccupied() const { return patch.size() > 1; }
};

/** A bank's file that could not be read or written. */
class MVBankAccessFailure : public MVException
{
public:
    MVBankAccessFailure (const MVException& failure, juce::File bankFile)
        : MVException (failure), file (std::move (bankFile))
    {
    }

    const juce::File file;
};

/** How a step went. */
struct MVLibrarianOutcome
{
    bool done = false;
    std::string title; ///< of the box that tells a failure
    std::string text;
    bool stale = false;  ///< the banks are no longer what the step starts from
    juce::File vanished; ///< the bank whose file is gone, if that was the failure
};

/** Reads and writes bank files for the librarian, and carries out its steps. Works on the manager's banks: the caller
    holds the manager's lock. Stateless but for the manager. Message thread. */
class MVLibrarianWriter
{
public:
    static constexpr std::uint32_t bankMetaType = 0x6D657461;  ///< 'meta'
    static constexpr std::uint32_t slotMetaType = 0x706D7461;  ///< 'pmta'
    static constexpr std::uint32_t slotPatchType = 0x70646174; ///< 'pdat'

    explicit MVLibrarianWriter (MVBankFileManager& managerToUse) : manager (managerToUse) {}

    /** The place of a bank file in the manager's list, or -1. */
    int indexOf (const juce::File& bankFile) const;

    /** Raises like MVFilePacker::readCompartment; an entry that is missing or has no bytes counts as an empty slot's.
     */
    MVSlotBytes readSlot (int bank, int slot) const;
    /** What it takes to turn a compartment of a bank into these bytes. Raises like readSlot. */
    MVCompartmentEdit editOf (int bank, std::uint32_t type, int index, std::vector<std::uint8_t> after) const;

    /** Does a step, whole or not at all: checks first that every compartment holds what the step starts from, then
       rewrites each bank once, puts back what was written if one of them fails, then changes the list. Banks in which a
       patch was replaced get a new identity; the manager's list is saved. Raises nothing. */
    MVLibrarianOutcome apply (const MVLibrarianStep& step);

    /** What to tell of a bank's file that failed. */
    static MVLibrarianOutcome outcomeOf (const MVBankAccessFailure& failure);

private:
    void requireUnchanged (const MVBankEdit& edit) const;
    void write (const MVBankEdit& edit) const;
    void applyBankEdits (const std::vector<MVBankEdit>& edits, MVLibrarianOutcome& outcome);
    void applyListEdit (const MVBankListEdit& edit);
    void follow (const std::vector<MVBankEdit>& edits);

    MVBankFileManager& manager;
};

} // namespace morvanelab
