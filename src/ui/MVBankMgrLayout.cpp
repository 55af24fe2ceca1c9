// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVBankMgrComponent.h"

#include "ui/MVTheme.h"

#include <algorithm>

// How the librarian's window lies and looks, and what of it is kept in the settings.

namespace morvanelab
{

namespace
{

constexpr int footHeight = 34;
constexpr int cornerSize = 14;
constexpr const char* settingsTag = "bank_mgr_settings";

} // namespace

void MVBankMgrComponent::layoutChanged()
{
    if (onLayoutChange)
        onLayoutChange();
}

void MVBankMgrComponent::keepInsideParent()
{
    const auto* const parent = getParentComponent();
    if (parent == nullptr || parent->getLocalBounds().isEmpty())
        return;
    const auto area = parent->getLocalBounds();
    auto bounds = getBounds();
    bounds.setSize (std::min (bounds.getWidth(), std::max (smallestWidth, area.getWidth())),
                    std::min (bounds.getHeight(), std::max (smallestHeight, area.getHeight())));
    setBounds (bounds.constrainedWithin (area));
}

void MVBankMgrComponent::resized()
{
    auto area = getLocalBounds();
    auto bar = area.removeFromTop (titleHeight).reduced (metrics::gap, 3);
    closeButton.setBounds (bar.removeFromRight (iconButton));
    bar.removeFromRight (metrics::margin);
    redoButton.setBounds (bar.removeFromRight (iconButton));
    undoButton.setBounds (bar.removeFromRight (iconButton));

    auto foot = area.removeFromBottom (footHeight).reduced (metrics::margin, 5).withTrimmedRight (cornerSize);
    loadButton.setBounds (foot.removeFromRight (64));
    foot.removeFromRight (metrics::gap);
    for (auto* button : { &clearButton, &editButton, &exportButton, &addPatchButton })
        button->setBounds (foot.removeFromRight (iconButton));

    area.reduce (metrics::margin, 0);
    area.removeFromTop (metrics::gap);
    auto row = area.removeFromTop (metrics::controlHeight);
    scopeButton.setBounds (row.removeFromRight (80));
    row.removeFromRight (metrics::gap);
    genreBox.setBounds (row.removeFromRight (120));
    row.removeFromRight (metrics::gap);
    searchField.setBounds (row);
    clearSearchButton.setBounds (row.removeFromRight (iconButton).reduced (2));
    area.removeFromTop (metrics::gap);
    list.setBounds (area);

    corner->setBounds (getWidth() - cornerSize, getHeight() - cornerSize, cornerSize, cornerSize);
    for (auto* each : { dialog.get(), imageDialog.get() })
        if (each != nullptr)
            each->setBounds (getLocalBounds().withTrimmedTop (titleHeight).reduced (1, 0).withTrimmedBottom (1));
    layoutChanged();
}

void MVBankMgrComponent::paint (juce::Graphics& graphics)
{
    const auto bounds = getLocalBounds().toFloat();
    graphics.setColour (themeColour (MVThemeColour::panel));
    graphics.fillRoundedRectangle (bounds, metrics::panelCorner);

    auto bar = getLocalBounds().removeFromTop (titleHeight);
    juce::Path barShape;
    barShape.addRoundedRectangle (0.0F, 0.0F, bounds.getWidth(), titleHeight, metrics::panelCorner,
                                  metrics::panelCorner, true, true, false, false);
    graphics.setColour (themeColour (MVThemeColour::titleBar));
    graphics.fillPath (barShape);
    bar.reduce (metrics::margin, 0);
    drawIcon (graphics, MVIcon::librarian, bar.removeFromLeft (metrics::iconSize).toFloat().reduced (0.0F, 7.0F),
              themeColour (MVThemeColour::accent));
    bar.removeFromLeft (metrics::gap);
    graphics.setColour (themeColour (MVThemeColour::text));
    graphics.setFont (themeFont (fontHeights::normal, MVFontWeight::semiBold));
    graphics.drawText (windowTitle, bar, juce::Justification::centredLeft);

    const auto foot = getLocalBounds().removeFromBottom (footHeight).reduced (metrics::margin, 0);
    graphics.setColour (themeColour (message.isEmpty() ? MVThemeColour::textDim : MVThemeColour::warn));
    graphics.setFont (themeFont (fontHeights::small));
    graphics.drawText (summary(), foot.withRight (addPatchButton.getX() - metrics::gap),
                       juce::Justification::centredLeft);

    graphics.setColour (themeColour (MVThemeColour::popupOutline));
    graphics.drawRoundedRectangle (bounds.reduced (0.5F), metrics::panelCorner, metrics::hairline);
}

void MVBankMgrComponent::paintOverChildren (juce::Graphics& graphics)
{
    if (dialog == nullptr)
        drawIcon (graphics, MVIcon::search,
                  searchField.getBounds().removeFromLeft (iconButton).withSizeKeepingCentre (14, 14).toFloat(),
                  themeColour (MVThemeColour::textFaint));
}

void MVBankMgrComponent::lookAndFeelChanged()
{
    searchField.setTextToShowWhenEmpty ("Search name, author, description", themeColour (MVThemeColour::textFaint));
    searchField.applyColourToAllText (themeColour (MVThemeColour::text));
    keepClicksFromFocus (*this);
}

void MVBankMgrComponent::mouseDown (const juce::MouseEvent& event)
{
    toFront (false);
    draggingWindow = event.y < titleHeight;
    if (draggingWindow)
        dragger.startDraggingComponent (this, event);
}

void MVBankMgrComponent::mouseDrag (const juce::MouseEvent& event)
{
    if (draggingWindow)
        dragger.dragComponent (this, event, &constrainer);
}

// ---- Settings

std::unique_ptr<juce::XmlElement> MVBankMgrComponent::createSettings() const
{
    auto settings = std::make_unique<juce::XmlElement> (settingsTag);
    settings->setAttribute ("rect", getBounds().toString());
    settings->setAttribute ("bank_width", list.getBankWidth());
    settings->setAttribute ("all_banks", scopeButton.getToggleState());
    if (lastFolder != juce::File())
        settings->setAttribute ("folder", lastFolder.getFullPathName());
    return settings;
}

void MVBankMgrComponent::applySettings (const juce::XmlElement& settings)
{
    if (! settings.hasTagName (settingsTag))
        return;
    const auto stored = juce::Rectangle<int>::fromString (settings.getStringAttribute ("rect"));
    constexpr int largest = 4000;
    if (stored.getWidth() >= smallestWidth && stored.getHeight() >= smallestHeight && stored.getWidth() <= largest
        && stored.getHeight() <= largest)
        setBounds (
            stored.withPosition (std::clamp (stored.getX(), 0, largest), std::clamp (stored.getY(), 0, largest)));
    keepInsideParent();
    list.setBankWidth (settings.getIntAttribute ("bank_width", list.getBankWidth()));
    scopeButton.setToggleState (settings.getBoolAttribute ("all_banks", true), juce::dontSendNotification);
    searchChanged();
    if (const auto folder = settings.getStringAttribute ("folder"); juce::File::isAbsolutePath (folder))
        lastFolder = juce::File (folder);
}

} // namespace morvanelab
