// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVSlotGrid.h"

#include "ui/MVBankItemSelectComponent.h"
#include "ui/MVIcons.h"
#include "ui/MVLibrarianFocus.h"
#include "ui/MVLibrarianText.h"
#include "ui/MVTheme.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

using Command = MVLibrarianCommand;

constexpr int narrowestCell = 118;
constexpr int lowestRow = 26;
constexpr int highestRow = 36;
constexpr int numberWidth = 20;
constexpr int markSize = 10;
constexpr float nameHeight = 13.5F;
constexpr int dragThreshold = 5; ///< pixels
constexpr int longestTooltip = 300;

#if JUCE_MAC
constexpr const char* commandKeyName = "Cmd";
#else
constexpr const char* commandKeyName = "Ctrl";
#endif

MVSlotSet only (int slot) { return MVSlotSet().set (static_cast<std::size_t> (slot)); }

MVSlotSet range (int first, int last)
{
    MVSlotSet slots;
    for (int i = std::min (first, last); i <= std::max (first, last); ++i)
        slots.set (static_cast<std::size_t> (i));
    return slots;
}

} // namespace

MVSlotGrid::MVSlotGrid (MVLibrarianModel& modelToUse, MVLibrarianCommandTarget& targetToUse)
    : model (modelToUse), target (targetToUse)
{
    setComponentID ("librarian_slots");
    setTitle ("Slots");
    setWantsKeyboardFocus (true);
    setMouseClickGrabsKeyboardFocus (false);
}

void MVSlotGrid::update()
{
    const auto loaded = model.getLoadedPatch();
    const int shownBank = model.getSelectedBank();
    if (shownBank != bank)
    {
        cursor = 0;
        anchor = 0;
    }
    bank = shownBank;
    loadedSlot = loaded && loaded->bank == bank ? loaded->slot : noSlot;

    // Somebody else may have selected: the cursor goes where the selection is.
    const auto& slots = model.getSelectedSlots();
    if (slots.count() == 1 && ! slots[static_cast<std::size_t> (cursor)])
        for (int i = 0; i < slotCount; ++i)
            if (slots[static_cast<std::size_t> (i)])
            {
                cursor = i;
                anchor = i;
                scrollToCursor();
            }
    repaint();
}

void MVSlotGrid::fitTo (int width, int minimumHeight)
{
    // The fewest columns, of those that leave no gap at the end, with which all slots show at once; else as many as
    // fit.
    const int most = std::clamp (width / narrowestCell, 1, 8);
    columns = most == 3 || most < 2 ? most : most < 4 ? 2 : most < 8 ? 4 : 8;
    for (const int fewer : { 4, 2 })
        if (fewer < columns && slotCount / fewer * lowestRow <= minimumHeight)
            columns = fewer;
    const int rows = (slotCount + columns - 1) / columns;
    rowHeight = std::clamp (minimumHeight / rows, lowestRow, highestRow);
    setSize (width, std::max (minimumHeight, rows * rowHeight));
}

juce::Rectangle<int> MVSlotGrid::boundsOfSlot (int slot) const
{
    const int column = slot % columns;
    const int left = getWidth() * column / columns;
    return { left, slot / columns * rowHeight, getWidth() * (column + 1) / columns - left, rowHeight };
}

int MVSlotGrid::slotAt (juce::Point<int> position) const
{
    for (int slot = 0; slot < slotCount; ++slot)
        if (boundsOfSlot (slot).contains (position))
            return slot;
    return noSlot;
}

void MVSlotGrid::showDropSlot (int slot)
{
    if (slot == dropSlot)
        return;
    dropSlot = slot;
    repaint();
}

void MVSlotGrid::paint (juce::Graphics& graphics)
{
    const auto clip = graphics.getClipBounds();
    for (int slot = 0; slot < slotCount; ++slot)
        if (boundsOfSlot (slot).intersects (clip))
            paintCell (graphics, slot);
}

void MVSlotGrid::paintCell (juce::Graphics& graphics, int slot)
{
    const auto& info = model.getCatalogue().slot ({ bank, slot });
    const bool isSelected = model.getSelectedSlots()[static_cast<std::size_t> (slot)];
    const bool isLoaded = slot == loadedSlot;
    const auto body = boundsOfSlot (slot).reduced (2).toFloat();

    if (isSelected || info.occupied)
    {
        graphics.setColour (themeColour (isSelected        ? MVThemeColour::selection
                                         : slot == hovered ? MVThemeColour::controlHover
                                                           : MVThemeColour::control));
        graphics.fillRoundedRectangle (body, metrics::corner);
    }
    const bool focused = slot == cursor && hasKeyboardFocus (false);
    const auto edge = slot == dropSlot  ? MVThemeColour::accent
                      : focused         ? MVThemeColour::focus
                      : isLoaded        ? MVThemeColour::accent
                      : slot == hovered ? MVThemeColour::controlOutline
                                        : MVThemeColour::panelOutline;
    graphics.setColour (themeColour (edge));
    graphics.drawRoundedRectangle (body.reduced (0.5F), metrics::corner,
                                   slot == dropSlot ? 2.0F * metrics::hairline : metrics::hairline);

    auto text = boundsOfSlot (slot).reduced (6, 0);
    graphics.setFont (themeFont (fontHeights::tiny, MVFontWeight::semiBold));
    graphics.setColour (themeColour (isLoaded        ? MVThemeColour::accent
                                     : info.occupied ? MVThemeColour::textDim
                                                     : MVThemeColour::textFaint));
    const auto number = text.removeFromLeft (numberWidth);
    graphics.drawText (juce::String (slot + 1), number.withTrimmedRight (6), juce::Justification::centredRight);
    if (isLoaded)
        drawIcon (graphics, MVIcon::play,
                  text.removeFromRight (markSize + 2).withSizeKeepingCentre (markSize, markSize).toFloat(),
                  themeColour (MVThemeColour::accent));

    graphics.setFont (themeFont (nameHeight));
    graphics.setColour (themeColour (isLoaded ? MVThemeColour::accent : MVThemeColour::text));
    if (info.occupied)
        graphics.drawFittedText (info.name, text, juce::Justification::centredLeft, 1, 0.85F);
}

// ---- Mouse

void MVSlotGrid::select (int slot, const juce::ModifierKeys& modifiers)
{
    auto slots = model.getSelectedSlots();
    if (modifiers.isShiftDown())
        slots = range (anchor, slot);
    else if (modifiers.isCommandDown())
        slots.flip (static_cast<std::size_t> (slot));
    else
        slots = only (slot);

    if (! modifiers.isShiftDown())
        anchor = slot;
    cursor = slot;
    model.selectSlots (slots);
}

void MVSlotGrid::mouseDown (const juce::MouseEvent& event)
{
    dragging = false;
    narrowOnUp = false;
    focusIfWindowHasIt (*this);
    const int slot = slotAt (event.getPosition());
    if (slot == noSlot || bank < 0)
        return;

    const bool isSelected = model.getSelectedSlots()[static_cast<std::size_t> (slot)];
    if (event.mods.isPopupMenu())
    {
        if (! isSelected)
            select (slot, {});
        showLibrarianMenu (*this, target,
                           target.createMenu ({ Command::loadPatch, Command::editPatch, Command::none, Command::cut,
                                                Command::copy, Command::paste, Command::clear, Command::swap,
                                                Command::selectAll, Command::none, Command::addPatch,
                                                Command::exportPatch, Command::none, Command::undo, Command::redo }));
        return;
    }
    // Several selected slots can be dragged by any of them.
    narrowOnUp = isSelected && ! event.mods.isShiftDown() && ! event.mods.isCommandDown();
    if (! narrowOnUp)
        select (slot, event.mods);
}

void MVSlotGrid::mouseDrag (const juce::MouseEvent& event)
{
    const int slot = slotAt (event.getMouseDownPosition());
    if (dragging || bank < 0 || slot == noSlot || event.mods.isPopupMenu()
        || event.getDistanceFromDragStart() < dragThreshold || model.getSelectedSlots().none())
        return;
    dragging = true;
    // A load may have taken the selection file away since.
    model.selectSlots (model.getSelectedSlots());
    if (auto* const container = juce::DragAndDropContainer::findParentDragContainerFor (this))
        container->startDragging (MVBankItemSelectComponent::patchDragId, this, dragImage());
}

void MVSlotGrid::mouseUp (const juce::MouseEvent& event)
{
    if (narrowOnUp && ! dragging)
        if (const int slot = slotAt (event.getPosition()); slot != noSlot)
            select (slot, {});
    dragging = false;
    narrowOnUp = false;
}

void MVSlotGrid::mouseDoubleClick (const juce::MouseEvent& event)
{
    if (const int slot = slotAt (event.getPosition()); slot != noSlot && bank >= 0)
    {
        select (slot, {});
        target.perform (Command::loadPatch);
    }
}

void MVSlotGrid::mouseMove (const juce::MouseEvent& event)
{
    if (const int slot = slotAt (event.getPosition()); slot != hovered)
    {
        hovered = slot;
        repaint();
    }
}

juce::String MVSlotGrid::getTooltip()
{
    const auto& info = model.getCatalogue().slot ({ bank, hovered });
    if (! info.occupied)
        return {};
    juce::StringArray lines { info.name, info.author, info.genre,
                              toShownText (info.metadata->getDescription(), longestTooltip) };
    lines.removeEmptyStrings();
    return lines.joinIntoString ("\n");
}

void MVSlotGrid::mouseExit (const juce::MouseEvent&)
{
    hovered = noSlot;
    repaint();
}

// ---- Keys

bool MVSlotGrid::keyPressed (const juce::KeyPress& key)
{
    return bank >= 0 && ! key.getModifiers().isCommandDown() && ! key.getModifiers().isAltDown() && moveByKey (key);
}

bool MVSlotGrid::moveByKey (const juce::KeyPress& key)
{
    const auto* const port = findParentComponentOfClass<juce::Viewport>();
    const int page = std::max (1, (port != nullptr ? port->getViewHeight() : getHeight()) / rowHeight - 1) * columns;
    const int code = key.getKeyCode();
    int step = 0;
    if (code == juce::KeyPress::leftKey)
        step = -1;
    else if (code == juce::KeyPress::rightKey)
        step = 1;
    else if (code == juce::KeyPress::upKey)
        step = -columns;
    else if (code == juce::KeyPress::downKey)
        step = columns;
    else if (code == juce::KeyPress::pageUpKey)
        step = -page;
    else if (code == juce::KeyPress::pageDownKey)
        step = page;
    else if (code == juce::KeyPress::homeKey)
        step = -slotCount;
    else if (code == juce::KeyPress::endKey)
        step = slotCount;
    else
        return false;

    int slot = cursor + step;
    const bool isJump = code == juce::KeyPress::homeKey || code == juce::KeyPress::endKey;
    // A step up or down that would leave the grid stays in its column.
    if (! isJump && (slot < 0 || slot >= slotCount))
    {
        while (slot < 0)
            slot += columns;
        while (slot >= slotCount)
            slot -= columns;
    }
    moveCursor (std::clamp (slot, 0, slotCount - 1), key.getModifiers().isShiftDown());
    return true;
}

void MVSlotGrid::moveCursor (int slot, bool extend)
{
    select (slot, extend ? juce::ModifierKeys (juce::ModifierKeys::shiftModifier) : juce::ModifierKeys());
    scrollToCursor();
}

void MVSlotGrid::scrollToCursor()
{
    auto* const port = findParentComponentOfClass<juce::Viewport>();
    if (port == nullptr)
        return;
    const auto cell = boundsOfSlot (cursor);
    const auto area = port->getViewArea();
    if (cell.getY() < area.getY())
        port->setViewPosition (0, cell.getY());
    else if (cell.getBottom() > area.getBottom())
        port->setViewPosition (0, cell.getBottom() - area.getHeight());
}

// ---- Dragging

juce::ScaledImage MVSlotGrid::dragImage()
{
    const auto& slots = model.getSelectedSlots();
    const auto count = slots.count();
    int first = 0;
    while (first < slotCount - 1 && ! slots[static_cast<std::size_t> (first)])
        ++first;
    const auto name = model.getCatalogue().slot ({ bank, first }).name;
    const auto text = count == 1 ? (name.isEmpty() ? juce::String ("Empty slot") : name)
                                 : juce::String (static_cast<int> (count)) + " patches";

    constexpr int scale = 2;
    juce::Image image (juce::Image::ARGB, 150 * scale, metrics::rowHeight * scale, true);
    juce::Graphics graphics (image);
    graphics.addTransform (juce::AffineTransform::scale (scale));
    const juce::Rectangle<int> bounds { 150, metrics::rowHeight };
    graphics.setColour (themeColour (MVThemeColour::accent));
    graphics.fillRoundedRectangle (bounds.toFloat().reduced (1), metrics::corner);
    graphics.setColour (themeColour (MVThemeColour::textOnAccent));
    graphics.setFont (themeFont (fontHeights::normal, MVFontWeight::semiBold));
    graphics.drawText (text, bounds.reduced (metrics::margin, 0), juce::Justification::centredLeft);
    return { image, scale };
}

bool MVSlotGrid::isInterestedInDragSource (const SourceDetails& details)
{
    return bank >= 0 && details.description == juce::var (MVBankItemSelectComponent::patchDragId);
}

void MVSlotGrid::itemDragMove (const SourceDetails& details) { showDropSlot (slotAt (details.localPosition)); }

void MVSlotGrid::itemDragExit (const SourceDetails&) { showDropSlot (noSlot); }

void MVSlotGrid::itemDropped (const SourceDetails& details)
{
    showDropSlot (noSlot);
    if (const int slot = slotAt (details.localPosition); slot != noSlot)
        dropSelectionAt (slot, juce::ModifierKeys::currentModifiers.isCommandDown());
}

/** Whether the selected slots fit at a slot without replacing any patch but themselves. */
bool MVSlotGrid::roomFor (int slot) const
{
    const auto& slots = model.getSelectedSlots();
    const int end = slot + static_cast<int> (slots.count());
    for (int i = slot; i < std::min (end, slotCount); ++i)
        if (! slots[static_cast<std::size_t> (i)] && model.getCatalogue().slot ({ bank, i }).occupied)
            return false;
    return true;
}

void MVSlotGrid::dropSelectionAt (int slot, bool copy)
{
    const auto slots = model.getSelectedSlots();
    if (slots.none() || slots == only (slot))
        return;

    int first = 0;
    while (! slots[static_cast<std::size_t> (first)])
        ++first;
    const MVPatchAddress place { bank, slot };
    bool done = false;
    if (copy)
        done = model.copySlots (bank, slots, place);
    else if (roomFor (slot))
        done = model.moveSlots (bank, slots, place);
    else if (slots.count() == 1)
        done = model.swapSlots ({ bank, first }, place);
    else
        target.report (juce::String ("Those slots are in use.  Hold ") + commandKeyName + " to replace them.");

    if (done)
    {
        model.selectSlots (range (slot, std::min (slotCount, slot + static_cast<int> (slots.count())) - 1));
        cursor = slot;
        anchor = slot;
        repaint();
    }
}

} // namespace morvanelab
