// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVColourPanel.h"

#include "ui/MVPaint.h"

namespace morvanelab
{

namespace
{

using enum MVThemeColour;

constexpr int listWidth = 240;
constexpr int swatchWidth = 28;

} // namespace

MVColourPanel::MVColourPanel()
{
    list.setRowHeight (metrics::rowHeight);
    list.setOutlineThickness (1);
    selector.setColour (juce::ColourSelector::backgroundColourId, themeColour (panel));
    selector.addChangeListener (this);
    defaultButton.onClick = [this]
    {
        if (const auto* entry = chosen())
        {
            setThemeColour (entry->colour, juce::Colour (entry->argb));
            choose (entry->colour);
            takeChange();
        }
    };
    allButton.onClick = [this]
    {
        resetThemeColours();
        if (const auto* entry = chosen())
            choose (entry->colour);
        takeChange();
    };
    for (auto* child : std::initializer_list<juce::Component*> { &list, &selector, &defaultButton, &allButton })
        addAndMakeVisible (child);
    setSize (usualWidth, usualHeight);
    choose (accent);
}

MVColourPanel::~MVColourPanel() { selector.removeChangeListener (this); }

const MVThemeEntry* MVColourPanel::chosen() const
{
    const int row = list.getSelectedRow();
    return row >= 0 && row < static_cast<int> (themeColourCount) ? &themeEntries()[static_cast<std::size_t> (row)]
                                                                 : nullptr;
}

void MVColourPanel::choose (MVThemeColour colour)
{
    list.selectRow (static_cast<int> (colour));
    selector.setCurrentColour (themeColour (colour), juce::dontSendNotification);
}

void MVColourPanel::paint (juce::Graphics& graphics) { graphics.fillAll (themeColour (panel)); }

void MVColourPanel::resized()
{
    auto area = getLocalBounds().reduced (metrics::margin);
    list.setBounds (area.removeFromLeft (juce::jmin (listWidth, area.getWidth() / 2)));
    area.removeFromLeft (metrics::margin);
    auto buttons = area.removeFromBottom (metrics::controlHeight);
    defaultButton.setBounds (buttons.removeFromLeft ((buttons.getWidth() - metrics::gap) / 2));
    buttons.removeFromLeft (metrics::gap);
    allButton.setBounds (buttons);
    area.removeFromBottom (metrics::gap);
    selector.setBounds (area);
}

void MVColourPanel::paintListBoxItem (int row, juce::Graphics& graphics, int width, int height, bool selected)
{
    if (row < 0 || row >= getNumRows())
        return;
    const auto& entry = themeEntries()[static_cast<std::size_t> (row)];
    graphics.fillAll (themeColour (selected ? selection : row % 2 != 0 ? fieldAlternate : field));
    auto area = juce::Rectangle<int> (width, height).reduced (metrics::gap, 4);
    paintBody (graphics, area.removeFromLeft (swatchWidth).toFloat(), themeColour (entry.colour),
               themeColour (controlOutline));
    area.removeFromLeft (metrics::gap);
    graphics.setColour (themeColour (text));
    graphics.setFont (themeFont (fontHeights::normal, themeColour (entry.colour).getARGB() != entry.argb
                                                          ? MVFontWeight::semiBold
                                                          : MVFontWeight::regular));
    graphics.drawText (entry.name, area, juce::Justification::centredLeft, true);
}

void MVColourPanel::selectedRowsChanged (int)
{
    if (const auto* entry = chosen())
        selector.setCurrentColour (themeColour (entry->colour), juce::dontSendNotification);
}

void MVColourPanel::changeListenerCallback (juce::ChangeBroadcaster*)
{
    const auto* entry = chosen();
    if (entry == nullptr || selector.getCurrentColour() == themeColour (entry->colour))
        return;
    setThemeColour (entry->colour, selector.getCurrentColour());
    takeChange();
}

void MVColourPanel::takeChange()
{
    shared->look.refreshColours();
    selector.setColour (juce::ColourSelector::backgroundColourId, themeColour (panel));
    getTopLevelComponent()->sendLookAndFeelChange();
    getTopLevelComponent()->repaint();
    if (onChange)
        onChange();
}

} // namespace morvanelab
