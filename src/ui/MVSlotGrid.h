// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVLibrarianCommands.h"
#include "ui/MVLibrarianModel.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

/** The 64 slots of the selected bank, row by row: number, name, whether used, whether selected, and which patch plays.
   As many columns as fit; it scrolls in a viewport. Several slots can be selected; they are dragged to other slots
   (moved; swapped with a used one; copied with the command key), to a bank, or to the plug-in's window. Message thread.
 */
class MVSlotGrid : public juce::Component, public juce::DragAndDropTarget, public juce::TooltipClient
{
public:
    static constexpr int slotCount = MVBankFile::maxPatchesPerBank;
    static constexpr int noSlot = -1;

    /** Both must outlive the grid. */
    MVSlotGrid (MVLibrarianModel& modelToUse, MVLibrarianCommandTarget& targetToUse);

    /** Shows what the model holds now. */
    void update();
    /** Takes the height that its width asks for, at least a minimum. */
    void fitTo (int width, int minimumHeight);

    int slotAt (juce::Point<int> position) const;
    juce::Rectangle<int> boundsOfSlot (int slot) const;
    int columnCount() const { return columns; }
    /** Where the keyboard is. */
    int getCursor() const { return cursor; }
    /** Marks a slot as the place where something from outside would go; noSlot for none. */
    void showDropSlot (int slot);

    void paint (juce::Graphics& graphics) override;
    void mouseDown (const juce::MouseEvent& event) override;
    void mouseDrag (const juce::MouseEvent& event) override;
    void mouseUp (const juce::MouseEvent& event) override;
    void mouseDoubleClick (const juce::MouseEvent& event) override;
    void mouseMove (const juce::MouseEvent& event) override;
    void mouseExit (const juce::MouseEvent& event) override;
    bool keyPressed (const juce::KeyPress& key) override;
    void focusGained (FocusChangeType) override { repaint(); }
    void focusLost (FocusChangeType) override { repaint(); }

    /** What there is to say of the slot under the mouse. */
    juce::String getTooltip() override;

    bool isInterestedInDragSource (const SourceDetails& details) override;
    void itemDragMove (const SourceDetails& details) override;
    void itemDragExit (const SourceDetails& details) override;
    void itemDropped (const SourceDetails& details) override;

private:
    void paintCell (juce::Graphics& graphics, int slot);
    void select (int slot, const juce::ModifierKeys& modifiers);
    void moveCursor (int slot, bool extend);
    void scrollToCursor();
    bool moveByKey (const juce::KeyPress& key);
    void dropSelectionAt (int slot, bool copy);
    bool roomFor (int slot) const;
    juce::ScaledImage dragImage();

    MVLibrarianModel& model;
    MVLibrarianCommandTarget& target;
    int bank = -1;
    int loadedSlot = noSlot;
    int columns = 3;
    int rowHeight = 26;
    int cursor = 0;
    int anchor = 0; ///< where a range with the shift key begins
    int hovered = noSlot;
    int dropSlot = noSlot;
    bool dragging = false;
    bool narrowOnUp = false; ///< a click on a selected slot: the others are let go of with the button
};

} // namespace morvanelab
