// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVBankUuid.h"

#include <juce_core/juce_core.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace morvanelab
{

/** One compartment of a bank file before and after, byte for byte. */
struct MVCompartmentEdit
{
    std::uint32_t type = 0;
    int index = 0;
    std::uint32_t format = 0;
    std::vector<std::uint8_t> before;
    std::vector<std::uint8_t> after;
};

/** What one step did to one bank file. */
struct MVBankEdit
{
    juce::File file;
    std::vector<MVCompartmentEdit> compartments;
};

/** What one step did to the list of banks. A place of -1 is outside the list: from -1 is an addition, to -1 a removal.
 */
struct MVBankListEdit
{
    juce::File file;
    MVBankUuid uuid;
    int from = -1;
    int to = -1;
};

/** One step of the user: some edits, to be taken back and done again as a whole. */
struct MVLibrarianStep
{
    juce::String name; ///< as in "Undo Clear 3 Patches"
    std::vector<MVBankEdit> bankEdits;
    std::optional<MVBankListEdit> listEdit;

    /** The same edits the other way round, last first. */
    MVLibrarianStep reversed() const;
    std::size_t byteCount() const;
};

/** The steps that can be undone and redone. It only keeps them; who owns it carries them out. The oldest steps go when
    there are more than maxSteps or they hold more than maxBytes together. Message thread. */
class MVLibrarianUndo
{
public:
    static constexpr std::size_t maxSteps = 200;
    static constexpr std::size_t maxBytes = 64U << 20U;

    /** A step that has just been done; what could be redone goes. */
    void add (MVLibrarianStep step);

    bool canUndo() const { return done > 0; }
    bool canRedo() const { return done < steps.size(); }
    /** The step to be undone or redone next; only while there is one. */
    const MVLibrarianStep& nextUndo() const { return steps[done - 1]; }
    const MVLibrarianStep& nextRedo() const { return steps[done]; }
    /** Tells that it has been. */
    void undone() { --done; }
    void redone() { ++done; }
    /** Drops everything: the files are no longer what the steps left. */
    void clear();

private:
    std::vector<MVLibrarianStep> steps;
    std::size_t done = 0; ///< steps before this one can be undone, those from it on redone
};

} // namespace morvanelab
