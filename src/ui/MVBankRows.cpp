// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVBankRows.h"

#include "ui/MVLibrarianFocus.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

constexpr int dragThreshold = 5; ///< pixels

} // namespace

MVBankRows::MVBankRows (int heightOfRow) : rowHeight (heightOfRow)
{
    setWantsKeyboardFocus (true);
    setMouseClickGrabsKeyboardFocus (false);
}

int MVBankRows::rowAt (juce::Point<int> position) const
{
    const int row = position.y / rowHeight;
    return position.y >= 0 && row < rowCount() && getLocalBounds().contains (position) ? row : noRow;
}

juce::Rectangle<int> MVBankRows::boundsOfRow (int row) const { return { 0, row * rowHeight, getWidth(), rowHeight }; }

void MVBankRows::rowsChanged()
{
    currentRow = std::min (currentRow, rowCount() - 1);
    hoveredRow = noRow;
    if (const auto* const port = findParentComponentOfClass<juce::Viewport>())
    {
        const int height = rowCount() * rowHeight;
        const int bar = height > port->getHeight() ? port->getScrollBarThickness() : 0;
        setSize (port->getWidth() - bar, std::max (height, port->getHeight()));
    }
    repaint();
}

void MVBankRows::setCurrentRow (int row)
{
    row = std::clamp (row, noRow, rowCount() - 1);
    if (row == currentRow)
        return;
    currentRow = row;
    repaint();
    scrollToRow (row);
}

void MVBankRows::scrollToRow (int row)
{
    auto* const port = findParentComponentOfClass<juce::Viewport>();
    if (port == nullptr || row < 0)
        return;
    const auto bounds = boundsOfRow (row);
    const auto area = port->getViewArea();
    if (bounds.getY() < area.getY())
        port->setViewPosition (0, bounds.getY());
    else if (bounds.getBottom() > area.getBottom())
        port->setViewPosition (0, bounds.getBottom() - area.getHeight());
}

void MVBankRows::choose (int row)
{
    setCurrentRow (row);
    rowChosen (currentRow);
}

int MVBankRows::rowsPerPage() const
{
    const auto* const port = findParentComponentOfClass<juce::Viewport>();
    return std::max (1, (port != nullptr ? port->getViewHeight() : getHeight()) / rowHeight - 1);
}

void MVBankRows::paint (juce::Graphics& graphics)
{
    const auto clip = graphics.getClipBounds();
    const int last = std::min (rowCount() - 1, clip.getBottom() / rowHeight);
    for (int row = std::max (0, clip.getY() / rowHeight); row <= last; ++row)
        paintRow (graphics, row, boundsOfRow (row),
                  { row == currentRow, row == hoveredRow, row == currentRow && hasKeyboardFocus (false) });
}

void MVBankRows::mouseDown (const juce::MouseEvent& event)
{
    dragging = false;
    focusIfWindowHasIt (*this);
    choose (rowAt (event.getPosition()));
    if (event.mods.isPopupMenu())
        menuWanted (currentRow);
}

void MVBankRows::mouseDrag (const juce::MouseEvent& event)
{
    if (dragging || event.mods.isPopupMenu() || currentRow == noRow || event.getDistanceFromDragStart() < dragThreshold)
        return;
    dragging = true;
    dragWanted (currentRow);
}

void MVBankRows::mouseUp (const juce::MouseEvent&) { dragging = false; }

void MVBankRows::mouseDoubleClick (const juce::MouseEvent& event)
{
    if (const int row = rowAt (event.getPosition()); row != noRow)
        rowActivated (row);
}

void MVBankRows::mouseMove (const juce::MouseEvent& event)
{
    if (const int row = rowAt (event.getPosition()); row != hoveredRow)
    {
        hoveredRow = row;
        repaint();
    }
}

void MVBankRows::mouseExit (const juce::MouseEvent&)
{
    hoveredRow = noRow;
    repaint();
}

bool MVBankRows::keyPressed (const juce::KeyPress& key)
{
    const int count = rowCount();
    if (count == 0 || key.getModifiers().isAnyModifierKeyDown())
        return false;

    const int code = key.getKeyCode();
    if (code == juce::KeyPress::returnKey && currentRow != noRow)
        rowActivated (currentRow);
    else if (code == juce::KeyPress::upKey)
        choose (std::max (0, currentRow - 1));
    else if (code == juce::KeyPress::downKey)
        choose (std::min (count - 1, currentRow + 1));
    else if (code == juce::KeyPress::pageUpKey)
        choose (std::max (0, currentRow - rowsPerPage()));
    else if (code == juce::KeyPress::pageDownKey)
        choose (std::min (count - 1, currentRow + rowsPerPage()));
    else if (code == juce::KeyPress::homeKey)
        choose (0);
    else if (code == juce::KeyPress::endKey)
        choose (count - 1);
    else
        return false;
    return true;
}

} // namespace morvanelab
