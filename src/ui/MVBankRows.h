// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

/** A list of rows of one height, drawn one by one where they show, with one row current. Its clicks never take the
    keyboard from a host that has it: they take it only where the plug-in's window already does. Lives in a viewport, to
    which it scrolls the current row. Message thread. */
class MVBankRows : public juce::Component
{
public:
    static constexpr int noRow = -1;

    explicit MVBankRows (int heightOfRow);

    int getCurrentRow() const { return currentRow; }
    /** The row at a point of this component; noRow beside all rows. */
    int rowAt (juce::Point<int> position) const;
    juce::Rectangle<int> boundsOfRow (int row) const;
    /** The contents or the viewport's size have changed: takes the size that shows all rows, and repaints. The current
       row stays within them. */
    void rowsChanged();
    /** Makes a row current without calling rowChosen. */
    void setCurrentRow (int row);
    void scrollToRow (int row);

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

protected:
    struct RowLook
    {
        bool current = false;
        bool hovered = false;
        bool focused = false; ///< current, and the list has the keyboard
    };

    virtual int rowCount() const = 0;
    virtual void paintRow (juce::Graphics& graphics, int row, juce::Rectangle<int> bounds, const RowLook& look) = 0;
    /** The user has made a row current; noRow by a click beside all rows. */
    virtual void rowChosen (int row) = 0;
    /** Double-click or Return. */
    virtual void rowActivated (int row) = 0;
    /** A click that asks for a menu; the row under it is current already. */
    virtual void menuWanted (int row) = 0;
    /** The current row is being dragged away. */
    virtual void dragWanted (int row) = 0;

private:
    void choose (int row);
    int rowsPerPage() const;

    int rowHeight;
    int currentRow = noRow;
    int hoveredRow = noRow;
    bool dragging = false;
};

} // namespace morvanelab
