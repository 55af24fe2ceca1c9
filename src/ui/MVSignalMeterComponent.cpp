// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVSignalMeterComponent.h"

#include <cmath>

namespace morvanelab
{

MVSignalMeterComponent::MVSignalMeterComponent (int modeToUse) : shownMode (modeToUse) {}

void MVSignalMeterComponent::setMode (int modeToUse)
{
    if (modeToUse == shownMode)
        return;
    shownMode = modeToUse;
    repaint();
}

void MVSignalMeterComponent::setLevel (int index, float level)
{
    if (index < 0 || index >= levelCount)
        return;
    auto& stored = levels[static_cast<std::size_t> (index)];
    const float value = std::isnan (level) ? 0.0F : level;
    if (stored == value)
        return;
    stored = value;
    repaint();
}

float MVSignalMeterComponent::level (int index) const
{
    return index >= 0 && index < levelCount ? levels[static_cast<std::size_t> (index)] : 0.0F;
}

void MVSignalMeterComponent::setMeterImage (const juce::Image& image)
{
    meterImage = image;
    ownImage = ! image.isValid();
    repaint();
}

void MVSignalMeterComponent::paint (juce::Graphics& graphics)
{
    if (getLocalBounds().isEmpty())
        return;
    if (ownImage && (! meterImage.isValid() || imageRevision != themeRevision()))
        makeOwnImage();
    graphics.fillAll (themeColour (MVThemeColour::meterTrack));
    if (shownMode != twoLevels)
    {
        paintLevel (graphics, getLocalBounds(), levels[0]);
        return;
    }
    constexpr int gap = 1;
    auto right = getLocalBounds();
    const auto left = right.removeFromLeft ((getWidth() - gap) / 2);
    paintLevel (graphics, left, levels[0]);
    paintLevel (graphics, right.withTrimmedLeft (gap), levels[1]);
}

/** The picture's part from the level down to its foot, on the same part of the area. */
void MVSignalMeterComponent::paintLevel (juce::Graphics& graphics, juce::Rectangle<int> area, float level) const
{
    const float clamped = juce::jlimit (0.0F, 1.0F, level);
    const int source = juce::roundToInt (static_cast<float> (meterImage.getHeight()) * clamped);
    const int target = juce::roundToInt (static_cast<float> (area.getHeight()) * clamped);
    if (source <= 0 || target <= 0)
        return;
    graphics.setOpacity (1.0F);
    graphics.drawImage (meterImage, area.getX(), area.getBottom() - target, area.getWidth(), target, 0,
                        meterImage.getHeight() - source, meterImage.getWidth(), source);
}

/** The theme's own full meter: safe at the foot, over to high and overload at the head. */
void MVSignalMeterComponent::makeOwnImage()
{
    constexpr int width = 8;
    constexpr int height = 256;
    constexpr double warnFrom = 0.25; ///< from the head
    constexpr double safeFrom = 0.45;
    meterImage = juce::Image (juce::Image::RGB, width, height, true, juce::SoftwareImageType());
    juce::Graphics graphics (meterImage);
    auto gradient = juce::ColourGradient::vertical (themeColour (MVThemeColour::danger), 0.0F,
                                                    themeColour (MVThemeColour::good), static_cast<float> (height));
    gradient.addColour (warnFrom, themeColour (MVThemeColour::warn));
    gradient.addColour (safeFrom, themeColour (MVThemeColour::good));
    graphics.setGradientFill (gradient);
    graphics.fillAll();
    imageRevision = themeRevision();
}

} // namespace morvanelab
