// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVMetaDataImageView.h"

#include "ui/MVTheme.h"

#include <algorithm>

namespace morvanelab
{

MVMetaDataImageView::MVMetaDataImageView() { setOpaque (true); }

void MVMetaDataImageView::setImage (const juce::Image& newImage)
{
    image = newImage;
    repaint();
}

void MVMetaDataImageView::setTexts (const juce::String& name, const juce::String& author,
                                    const juce::String& description, const juce::String& genre)
{
    patchName = name;
    patchAuthor = author;
    patchDescription = description;
    patchGenre = genre;
    repaint();
}

juce::Rectangle<int> MVMetaDataImageView::imageBounds() const
{
    const auto area = getLocalBounds().reduced (metrics::gap);
    if (image.isNull() || area.isEmpty())
        return {};
    const double scale = std::min ({ 1.0, static_cast<double> (area.getWidth()) / image.getWidth(),
                                     static_cast<double> (area.getHeight()) / image.getHeight() });
    return area.withSizeKeepingCentre (std::max (1, juce::roundToInt (image.getWidth() * scale)),
                                       std::max (1, juce::roundToInt (image.getHeight() * scale)));
}

void MVMetaDataImageView::paint (juce::Graphics& graphics)
{
    graphics.fillAll (themeColour (MVThemeColour::displayBackground));
    const auto target = imageBounds();
    if (target.isEmpty())
    {
        paintTexts (graphics);
        return;
    }
    graphics.setImageResamplingQuality (juce::Graphics::highResamplingQuality);
    graphics.setOpacity (1.0F);
    graphics.drawImage (image, target.getX(), target.getY(), target.getWidth(), target.getHeight(), 0, 0,
                        image.getWidth(), image.getHeight());
}

void MVMetaDataImageView::paintTexts (juce::Graphics& graphics) const
{
    const auto area = getLocalBounds().reduced (metrics::margin * 2).toFloat();
    juce::AttributedString text;
    text.setJustification (juce::Justification::centredTop);
    text.setWordWrap (juce::AttributedString::byWord);
    const auto add = [&text] (const juce::String& words, float height, MVFontWeight weight, MVThemeColour colour)
    {
        if (words.isNotEmpty())
            text.append (words, themeFont (height, weight), themeColour (colour));
    };
    add (patchName.isNotEmpty() ? patchName : juce::String ("-----"), fontHeights::title, MVFontWeight::semiBold,
         patchName.isNotEmpty() ? MVThemeColour::text : MVThemeColour::textFaint);
    if (patchAuthor.isNotEmpty())
        add ("\nby " + patchAuthor, fontHeights::normal, MVFontWeight::regular, MVThemeColour::textDim);
    if (patchGenre.isNotEmpty())
        add ("\n" + patchGenre, fontHeights::small, MVFontWeight::regular, MVThemeColour::accent);
    if (patchDescription.isNotEmpty())
        add ("\n\n" + patchDescription, fontHeights::normal, MVFontWeight::regular, MVThemeColour::textFaint);

    juce::TextLayout layout;
    layout.createLayout (text, area.getWidth());
    // In the middle where it fits, else from the top with what there is room for.
    const float top = area.getY() + std::max (0.0F, (area.getHeight() - layout.getHeight()) * 0.5F);
    const juce::Graphics::ScopedSaveState state (graphics);
    graphics.reduceClipRegion (area.toNearestInt());
    layout.draw (graphics, area.withTop (top));
}

} // namespace morvanelab
