// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVSectionPanel.h"

#include "ui/MVPaint.h"

namespace morvanelab
{

namespace
{

juce::Rectangle<int> headerOf (juce::Rectangle<int> bounds) { return bounds.removeFromTop (metrics::sectionHeader); }

juce::Font headerFont()
{
    constexpr float spread = 0.06F;
    return themeFont (fontHeights::small, MVFontWeight::semiBold).withExtraKerningFactor (spread);
}

} // namespace

juce::Rectangle<int> sectionContent (juce::Rectangle<int> bounds)
{
    return bounds.withTrimmedTop (metrics::sectionHeader).reduced (metrics::margin, metrics::gap);
}

juce::Rectangle<int> drawSection (juce::Graphics& graphics, juce::Rectangle<int> bounds, const juce::String& title)
{
    paintBody (graphics, bounds.toFloat(), themeColour (MVThemeColour::panel),
               themeColour (MVThemeColour::panelOutline), metrics::panelCorner);

    const auto header = headerOf (bounds).toFloat().reduced (metrics::hairline);
    juce::Path strip;
    strip.addRoundedRectangle (header.getX(), header.getY(), header.getWidth(), header.getHeight(),
                               metrics::panelCorner - 1, metrics::panelCorner - 1, true, true, false, false);
    graphics.setColour (themeColour (MVThemeColour::panelHeader));
    graphics.fillPath (strip);

    graphics.setColour (themeColour (MVThemeColour::textDim));
    graphics.setFont (headerFont());
    graphics.drawText (title, headerOf (bounds).reduced (metrics::margin, 0), juce::Justification::centredLeft, true);
    return sectionContent (bounds);
}

MVSectionPanel::MVSectionPanel (const juce::String& title)
{
    setName (title);
    setInterceptsMouseClicks (false, true);
}

void MVSectionPanel::setNote (const juce::String& note)
{
    if (note == noteText)
        return;
    noteText = note;
    repaint (headerOf (getLocalBounds()));
}

void MVSectionPanel::paint (juce::Graphics& graphics)
{
    drawSection (graphics, getLocalBounds(), getName());
    graphics.setColour (themeColour (MVThemeColour::textFaint));
    graphics.setFont (themeFont (fontHeights::small));
    graphics.drawText (noteText, headerOf (getLocalBounds()).reduced (metrics::margin, 0),
                       juce::Justification::centredRight, true);
}

} // namespace morvanelab
