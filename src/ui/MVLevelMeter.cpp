// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLevelMeter.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

using enum MVThemeColour;

constexpr int shortestInterval = 34; ///< milliseconds: less than 30 pictures a second
constexpr juce::uint32 peakHold = 1000;
constexpr float lowestDecibels = -60.0F;
constexpr float highestDecibels = 6.0F;
constexpr std::array<int, 7> ticks { 0, -12, -24, -48, 6, -6, -36 }; ///< what is told first where room is short
constexpr float tickLength = 3.0F;
constexpr float tickTextHeight = 10.0F;
constexpr float tickTextWidth = 15.0F;
constexpr float lightSide = 6.0F;

float decibelsOf (float level) { return level > 0.0F ? 20.0F * std::log10 (level) : lowestDecibels; }

float proportionOfDecibels (float decibels)
{
    return juce::jlimit (0.0F, 1.0F, (decibels - lowestDecibels) / (highestDecibels - lowestDecibels));
}

} // namespace

MVLevelMeter::MVLevelMeter (int rate) : interval (juce::jmax (shortestInterval, rate)) {}

MVLevelMeter::~MVLevelMeter() { stopTimer(); }

void MVLevelMeter::setDisplayRange (float low, float high)
{
    rangeLow = low;
    rangeHigh = juce::jmax (low, high);
    repaint();
}

void MVLevelMeter::setScale (Scale scaleToUse)
{
    scale = scaleToUse;
    repaint();
}

void MVLevelMeter::setOrientation (Orientation orientationToUse)
{
    orientation = orientationToUse;
    repaint();
}

void MVLevelMeter::setTickTexts (bool shown)
{
    tickTexts = shown;
    repaint();
}

void MVLevelMeter::setLevel (float level)
{
    shownLevel = std::isfinite (level) ? juce::jmax (0.0F, level) : 0.0F;
    const auto now = juce::Time::getMillisecondCounter();
    if (shownLevel >= heldPeak || now - peakTime >= peakHold)
    {
        heldPeak = shownLevel;
        peakTime = now;
    }

    const bool over = scale == Scale::decibels && shownLevel > rangeHigh;
    const auto bar = barArea();
    const float length = orientation == Orientation::horizontal ? bar.getWidth() : bar.getHeight();
    // Half pixels, so that a picture at double resolution moves as smoothly.
    const int levelPixels = juce::roundToInt (proportionOf (shownLevel) * length * 2);
    const int peakPixels = juce::roundToInt (proportionOf (heldPeak) * length * 2);
    if (levelPixels == drawnLevel && peakPixels == drawnPeak && (! over || overload))
        return;
    drawnLevel = levelPixels;
    drawnPeak = peakPixels;
    overload = overload || over;
    repaint();
}

float MVLevelMeter::proportionOf (float level) const
{
    if (! std::isfinite (level))
        return 0.0F;
    if (scale == Scale::decibels)
        return proportionOfDecibels (decibelsOf (level));
    const float span = rangeHigh - rangeLow;
    return span > 0.0F ? juce::jlimit (0.0F, 1.0F, (level - rangeLow) / span) : 0.0F;
}

juce::Rectangle<float> MVLevelMeter::barArea() const
{
    auto area = getLocalBounds().toFloat();
    if (scale == Scale::linear)
        return area;
    if (orientation == Orientation::horizontal)
    {
        area.removeFromRight (lightSide + 2.0F);
        area.removeFromBottom (tickLength + (tickTexts ? tickTextHeight : 0.0F));
    }
    else
    {
        area.removeFromTop (lightSide + 2.0F);
        area.removeFromRight (tickLength + (tickTexts ? tickTextHeight * 1.8F : 0.0F));
    }
    return area;
}

void MVLevelMeter::paint (juce::Graphics& graphics)
{
    paintBar (graphics);
    if (scale == Scale::decibels)
        paintScale (graphics);
}

void MVLevelMeter::paintBar (juce::Graphics& graphics) const
{
    const auto bar = barArea();
    const bool horizontal = orientation == Orientation::horizontal;
    const auto upTo = [&] (float proportion)
    {
        return horizontal ? bar.withWidth (bar.getWidth() * proportion)
                          : bar.withTop (bar.getBottom() - bar.getHeight() * proportion);
    };
    graphics.setColour (themeColour (isEnabled() ? meterTrack : panelHeader));
    graphics.fillRoundedRectangle (bar, 2.0F);
    if (! isEnabled())
        return;

    if (scale == Scale::linear)
    {
        graphics.setColour (themeColour (accent));
        graphics.fillRoundedRectangle (upTo (proportionOf (shownLevel)), 2.0F);
        return;
    }

    // One bar in three zones: each colour shows only beyond the one before it.
    const juce::Graphics::ScopedSaveState clipped (graphics);
    graphics.reduceClipRegion (upTo (proportionOf (shownLevel)).getSmallestIntegerContainer());
    const std::array<std::pair<float, MVThemeColour>, 3> zones {
        { { 1.0F, danger }, { proportionOf (rangeHigh), warn }, { proportionOf (rangeLow * 0.5F), good } }
    };
    const auto lit = upTo (proportionOf (shownLevel));
    for (const auto& [end, colour] : zones)
    {
        graphics.setColour (themeColour (colour));
        graphics.fillRect (lit.getIntersection (upTo (end)));
    }
}

void MVLevelMeter::paintScale (juce::Graphics& graphics) const
{
    const auto bar = barArea();
    const bool horizontal = orientation == Orientation::horizontal;
    const auto positionOf = [&] (float proportion)
    { return horizontal ? bar.getX() + bar.getWidth() * proportion : bar.getBottom() - bar.getHeight() * proportion; };

    const float peakAt = proportionOf (heldPeak);
    if (isEnabled() && peakAt > 0.0F)
    {
        graphics.setColour (themeColour (heldPeak > rangeHigh ? danger : text));
        const float at = juce::jmax (0.0F, positionOf (peakAt) - (horizontal ? 1.5F : 0.0F));
        graphics.fillRect (horizontal ? bar.withX (at).withWidth (1.5F) : bar.withY (at).withHeight (1.5F));
    }

    graphics.setFont (themeFont (fontHeights::tiny - 1.5F));
    juce::Array<float> told;
    const float room = horizontal ? tickTextWidth : tickTextHeight;
    for (const int tick : ticks)
    {
        const float at = positionOf (proportionOfDecibels (static_cast<float> (tick)));
        graphics.setColour (themeColour (meterTick));
        const auto mark = horizontal ? juce::Rectangle<float> (at - 0.5F, bar.getBottom(), 1.0F, tickLength)
                                     : juce::Rectangle<float> (bar.getRight(), at - 0.5F, tickLength, 1.0F);
        graphics.fillRect (mark);
        const bool hasRoom =
            std::none_of (told.begin(), told.end(), [&] (float other) { return std::abs (other - at) < room; });
        if (! tickTexts || ! hasRoom)
            continue;
        told.add (at);
        graphics.setColour (themeColour (textFaint));
        const auto label =
            horizontal ? juce::Rectangle<float> (24.0F, tickTextHeight)
                             .withCentre ({ at, mark.getBottom() + tickTextHeight / 2 })
                       : juce::Rectangle<float> (18.0F, tickTextHeight).withCentre ({ mark.getRight() + 10.0F, at });
        graphics.drawText (juce::String (std::abs (tick)), label, juce::Justification::centred, false);
    }

    const auto light = horizontal ? juce::Rectangle<float> (static_cast<float> (getWidth()) - lightSide, bar.getY(),
                                                            lightSide, bar.getHeight())
                                  : juce::Rectangle<float> (bar.getX(), 0.0F, bar.getWidth(), lightSide);
    graphics.setColour (themeColour (overload && isEnabled() ? danger : meterTrack));
    graphics.fillRoundedRectangle (light, 2.0F);
}

void MVLevelMeter::mouseDown (const juce::MouseEvent&)
{
    overload = false;
    heldPeak = shownLevel;
    repaint();
}

void MVLevelMeter::timerCallback()
{
    if (levelSource)
        setLevel (levelSource());
}

void MVLevelMeter::run (bool showing)
{
    if (! showing)
        return stopTimer();
    timerCallback(); // no old level for the first interval
    startTimer (interval);
}

} // namespace morvanelab
