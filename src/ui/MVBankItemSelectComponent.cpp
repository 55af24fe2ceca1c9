// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVBankItemSelectComponent.h"

#include "ui/MVLibrarianFocus.h"
#include "ui/MVTheme.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

using Command = MVLibrarianCommand;

constexpr int narrowestBanks = 110;
constexpr int widestBanks = 320;
constexpr int narrowestSlots = 200;
constexpr int dividerWidth = metrics::gap;
constexpr int headerHeight = 30;
constexpr int buttonSize = 22;
constexpr int scrollBarWidth = 8;

} // namespace

MVBankItemSelectComponent::MVBankItemSelectComponent (MVLibrarianModel& modelToUse,
                                                      MVLibrarianCommandTarget& targetToUse)
    : model (modelToUse), target (targetToUse), banks (modelToUse, targetToUse), slots (modelToUse, targetToUse),
      results (modelToUse, targetToUse)
{
    setComponentID ("librarian_list");
    const auto addPort = [this] (juce::Viewport& port, juce::Component& content)
    {
        port.setViewedComponent (&content, false);
        port.setScrollBarsShown (true, false);
        port.setScrollBarThickness (scrollBarWidth);
        port.setWantsKeyboardFocus (false);
        addChildComponent (port);
    };
    addPort (bankPort, banks);
    addPort (slotPort, slots);
    addPort (resultPort, results);

    addButton (newButton, Command::newBank, "librarian_new_bank");
    addButton (addFileButton, Command::addBank, "librarian_add_bank");
    addButton (removeButton, Command::removeBank, "librarian_remove_bank");
    addButton (upButton, Command::moveBankUp, "librarian_bank_up");
    addButton (downButton, Command::moveBankDown, "librarian_bank_down");
    addButton (editButton, Command::editBank, "librarian_edit_bank");
    emptyNewButton.onClick = [this] { target.perform (Command::newBank); };
    emptyAddButton.onClick = [this] { target.perform (Command::addBank); };
    addChildComponent (emptyNewButton);
    addChildComponent (emptyAddButton);
    keepClicksFromFocus (*this);
}

void MVBankItemSelectComponent::addButton (MVIconButton& button, Command command, const char* id)
{
    button.setComponentID (id);
    button.setTooltip (librarianTooltip (command));
    button.onClick = [this, command] { target.perform (command); };
    addAndMakeVisible (button);
}

void MVBankItemSelectComponent::updateButtons()
{
    newButton.setEnabled (target.canPerform (Command::newBank));
    removeButton.setEnabled (target.canPerform (Command::removeBank));
    upButton.setEnabled (target.canPerform (Command::moveBankUp));
    downButton.setEnabled (target.canPerform (Command::moveBankDown));
    editButton.setEnabled (target.canPerform (Command::editBank));
}

void MVBankItemSelectComponent::update()
{
    const bool anyBank = model.getCatalogue().bankCount() > 0;
    const bool searching = model.getSearch().isActive();
    bankPort.setVisible (anyBank);
    slotPort.setVisible (anyBank && ! searching && model.getSelectedBank() >= 0);
    resultPort.setVisible (anyBank && searching && ! model.getResults().empty());
    editButton.setVisible (anyBank && ! searching);
    emptyNewButton.setVisible (! anyBank);
    emptyAddButton.setVisible (! anyBank);

    banks.update();
    slots.update();
    if (searching)
        results.update();
    updateButtons();
    repaint();
}

void MVBankItemSelectComponent::focusSlots()
{
    if (resultPort.isVisible())
        results.grabKeyboardFocus();
    else if (slotPort.isVisible())
        slots.grabKeyboardFocus();
}

void MVBankItemSelectComponent::handleCommandMessage (int) { update(); }

int MVBankItemSelectComponent::slotAt (juce::Point<int> position) const
{
    const bool overPort = slotPort.isVisible() && slotPort.getBounds().contains (position);
    return overPort ? slots.slotAt (slots.getLocalPoint (this, position)) : MVSlotGrid::noSlot;
}

// ---- Layout

void MVBankItemSelectComponent::setBankWidth (int width)
{
    const int most = std::max (narrowestBanks, std::min (widestBanks, getWidth() - narrowestSlots));
    width = std::clamp (width, narrowestBanks, getWidth() > 0 ? most : widestBanks);
    if (width == bankWidth)
        return;
    bankWidth = width;
    resized();
    repaint();
}

juce::Rectangle<int> MVBankItemSelectComponent::slotSide() const
{
    return getLocalBounds().withTrimmedLeft (bankWidth + dividerWidth);
}

void MVBankItemSelectComponent::resized()
{
    auto bankSide = getLocalBounds().removeFromLeft (bankWidth);
    auto foot = bankSide.removeFromBottom (buttonSize + 4).withTrimmedTop (4);
    for (auto* button : { &newButton, &addFileButton, &removeButton })
        button->setBounds (foot.removeFromLeft (buttonSize));
    for (auto* button : { &downButton, &upButton })
        button->setBounds (foot.removeFromRight (buttonSize));
    bankPort.setBounds (bankSide.reduced (1, 3));
    banks.rowsChanged();

    auto side = slotSide();
    editButton.setBounds (
        side.removeFromTop (headerHeight).removeFromRight (buttonSize).withSizeKeepingCentre (buttonSize, buttonSize));
    slotPort.setBounds (side);
    slots.fitTo (side.getWidth(), side.getHeight());
    if (slots.getHeight() > side.getHeight())
        slots.fitTo (side.getWidth() - scrollBarWidth, side.getHeight());
    resultPort.setBounds (side);
    results.rowsChanged();

    auto actions = emptyStateArea()
                       .removeFromBottom (2 * metrics::controlHeight + metrics::gap)
                       .withSizeKeepingCentre (170, 2 * metrics::controlHeight + metrics::gap);
    emptyAddButton.setBounds (actions.removeFromTop (metrics::controlHeight));
    emptyNewButton.setBounds (actions.removeFromBottom (metrics::controlHeight));
}

bool MVBankItemSelectComponent::onDivider (juce::Point<int> position) const
{
    return position.x >= bankWidth && position.x < bankWidth + dividerWidth;
}

void MVBankItemSelectComponent::mouseMove (const juce::MouseEvent& event)
{
    setMouseCursor (onDivider (event.getPosition()) ? juce::MouseCursor::LeftRightResizeCursor
                                                    : juce::MouseCursor::NormalCursor);
}

void MVBankItemSelectComponent::mouseDown (const juce::MouseEvent& event)
{
    draggingDivider = onDivider (event.getPosition());
}

void MVBankItemSelectComponent::mouseDrag (const juce::MouseEvent& event)
{
    if (! draggingDivider)
        return;
    setBankWidth (event.x - dividerWidth / 2);
    if (onBankWidthChange)
        onBankWidthChange();
}

// ---- Painting

void MVBankItemSelectComponent::paint (juce::Graphics& graphics)
{
    const auto bankSide = getLocalBounds().removeFromLeft (bankWidth).withTrimmedBottom (buttonSize + 4);
    graphics.setColour (themeColour (MVThemeColour::field));
    graphics.fillRoundedRectangle (bankSide.toFloat(), metrics::corner);
    graphics.setColour (themeColour (MVThemeColour::panelOutline));
    graphics.drawRoundedRectangle (bankSide.toFloat().reduced (0.5F), metrics::corner, metrics::hairline);

    auto side = slotSide();
    paintHeader (graphics, side.removeFromTop (headerHeight));
    if (! slotPort.isVisible() && ! resultPort.isVisible())
        paintEmptyState (graphics, emptyStateArea());
}

void MVBankItemSelectComponent::paintHeader (juce::Graphics& graphics, juce::Rectangle<int> area) const
{
    juce::String title;
    juce::String note;
    if (model.getSearch().isActive())
    {
        const auto found = static_cast<int> (model.getResults().size());
        if (found > 0)
            title = found == 1 ? juce::String ("1 patch found") : juce::String (found) + " patches found";
    }
    else if (const int selected = model.getSelectedBank(); selected >= 0)
    {
        const auto& bank = model.getCatalogue().bank (selected);
        title = bank.name;
        note = bank.author.isEmpty() ? juce::String() : "by " + bank.author;
        area.removeFromRight (buttonSize);
    }

    const auto titleFont = themeFont (fontHeights::large, MVFontWeight::semiBold);
    area.reduce (4, 0);
    graphics.setColour (themeColour (MVThemeColour::text));
    graphics.setFont (titleFont);
    const int titleWidth = std::min (area.getWidth(), titleFont.getStringWidth (title) + metrics::margin);
    graphics.drawText (title, area.removeFromLeft (titleWidth), juce::Justification::centredLeft);
    graphics.setColour (themeColour (MVThemeColour::textDim));
    graphics.setFont (themeFont (fontHeights::small));
    graphics.drawText (note, area.translated (0, 1), juce::Justification::centredLeft);
}

juce::Rectangle<int> MVBankItemSelectComponent::emptyStateArea() const
{
    const auto side = slotSide().withTrimmedTop (headerHeight);
    return side.withSizeKeepingCentre (std::min (280, side.getWidth()), std::min (170, side.getHeight()));
}

void MVBankItemSelectComponent::paintEmptyState (juce::Graphics& graphics, juce::Rectangle<int> area) const
{
    juce::String title;
    juce::String text;
    auto icon = MVIcon::bank;
    if (model.getCatalogue().bankCount() == 0)
    {
        title = "No banks yet";
        text = "A bank holds 64 patches. Drop bank files here, or:";
        area.removeFromBottom (2 * metrics::controlHeight + metrics::gap);
    }
    else if (model.getSearch().isActive())
    {
        icon = MVIcon::search;
        title = "Nothing found";
        text = "Try fewer letters, another genre, or all banks.";
    }
    else
    {
        title = "No bank selected";
        text = "Choose a bank on the left to see its patches.";
    }

    drawIcon (graphics, icon, area.removeFromTop (40).withSizeKeepingCentre (32, 32).toFloat(),
              themeColour (MVThemeColour::textFaint));
    graphics.setColour (themeColour (MVThemeColour::text));
    graphics.setFont (themeFont (fontHeights::large, MVFontWeight::semiBold));
    graphics.drawText (title, area.removeFromTop (26), juce::Justification::centred);
    graphics.setColour (themeColour (MVThemeColour::textDim));
    graphics.setFont (themeFont (fontHeights::normal));
    graphics.drawFittedText (text, area.removeFromTop (40), juce::Justification::centredTop, 2, 1.0F);
}

} // namespace morvanelab
