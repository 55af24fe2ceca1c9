// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVBankListView.h"
#include "ui/MVBankResultView.h"
#include "ui/MVIconButton.h"
#include "ui/MVSlotGrid.h"

#include <functional>

namespace morvanelab
{

/** The librarian's list: banks on one side, on the other the slots of the selected bank, or, while a search is active,
   what it has found. Message thread. */
class MVBankItemSelectComponent : public juce::Component
{
public:
    /** The description of patches that are dragged. Which they are stands in the model, and in the selection file. */
    static constexpr const char* patchDragId = "MVBankItemSelectComponent_patchData";

    /** Both must outlive the component. */
    MVBankItemSelectComponent (MVLibrarianModel& modelToUse, MVLibrarianCommandTarget& targetToUse);

    /** Shows what the model holds now. */
    void update();
    /** Gives the keyboard to the slots, or to what the search has found. */
    void focusSlots();
    bool banksHaveFocus() const { return banks.hasKeyboardFocus (true); }

    /** Width of the banks' side, kept between its bounds. */
    void setBankWidth (int width);
    int getBankWidth() const { return bankWidth; }
    std::function<void()> onBankWidthChange;

    /** The slot under a point of this component, MVSlotGrid::noSlot beside the slots. */
    int slotAt (juce::Point<int> position) const;
    /** Marks where a file from outside would go. */
    void showDropSlot (int slot) { slots.showDropSlot (slot); }

    void handleCommandMessage (int commandId) override;
    void paint (juce::Graphics& graphics) override;
    void resized() override;
    void mouseDrag (const juce::MouseEvent& event) override;
    void mouseMove (const juce::MouseEvent& event) override;
    void mouseDown (const juce::MouseEvent& event) override;

private:
    juce::Rectangle<int> slotSide() const;
    juce::Rectangle<int> emptyStateArea() const;
    bool onDivider (juce::Point<int> position) const;
    void paintHeader (juce::Graphics& graphics, juce::Rectangle<int> area) const;
    void paintEmptyState (juce::Graphics& graphics, juce::Rectangle<int> area) const;
    void addButton (MVIconButton& button, MVLibrarianCommand command, const char* id);
    void updateButtons();

    MVLibrarianModel& model;
    MVLibrarianCommandTarget& target;
    MVBankListView banks;
    MVSlotGrid slots;
    MVBankResultView results;
    juce::Viewport bankPort;
    juce::Viewport slotPort;
    juce::Viewport resultPort;
    MVIconButton newButton { "New Bank", MVIcon::add, MVIconButton::Style::bare };
    MVIconButton addFileButton { "Add Bank", MVIcon::folder, MVIconButton::Style::bare };
    MVIconButton removeButton { "Remove Bank", MVIcon::remove, MVIconButton::Style::bare };
    MVIconButton upButton { "Move Bank Up", MVIcon::up, MVIconButton::Style::bare };
    MVIconButton downButton { "Move Bank Down", MVIcon::down, MVIconButton::Style::bare };
    MVIconButton editButton { "Edit Bank Info", MVIcon::edit, MVIconButton::Style::bare };
    juce::TextButton emptyNewButton { "New Bank..." };
    juce::TextButton emptyAddButton { "Add Bank from File..." };
    int bankWidth = 140;
    bool draggingDivider = false;
};

} // namespace morvanelab
