// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVDisplayBackdrop.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

float displayScale (juce::Graphics& graphics)
{
    return juce::jlimit (0.25F, 8.0F, graphics.getInternalContext().getPhysicalPixelScaleFactor());
}

const juce::Image& MVDisplayBackdrop::imageFor (juce::Rectangle<int> bounds, float scale, const Painter& painter)
{
    if (kept.isNull() || bounds != keptBounds || scale != keptScale || themeRevision() != keptRevision)
    {
        const auto pixels = [scale] (int length)
        { return std::max (1, juce::roundToInt (static_cast<float> (length) * scale)); };
        kept = juce::Image (transparent ? juce::Image::ARGB : juce::Image::RGB, pixels (bounds.getWidth()),
                            pixels (bounds.getHeight()), true, juce::SoftwareImageType());
        juce::Graphics graphics (kept);
        graphics.addTransform (juce::AffineTransform::scale (scale).translated (
            static_cast<float> (-bounds.getX()) * scale, static_cast<float> (-bounds.getY()) * scale));
        painter (graphics);
        keptBounds = bounds;
        keptScale = scale;
        keptRevision = themeRevision();
    }
    return kept;
}

void MVDisplayBackdrop::draw (juce::Graphics& graphics, juce::Rectangle<int> bounds, const Painter& painter)
{
    const float scale = displayScale (graphics);
    const auto& image = imageFor (bounds, scale, painter);
    graphics.setOpacity (1.0F);
    if (scale == 1.0F)
        graphics.drawImageAt (image, bounds.getX(), bounds.getY());
    else
        graphics.drawImageTransformed (
            image, juce::AffineTransform::scale (1.0F / scale).translated (bounds.getPosition().toFloat()));
}

namespace displayAxes
{

namespace
{

constexpr float inset = 4.0F;
const float textHeight = fontHeights::tiny + 2.0F;

float widthOf (const juce::String& text) { return themeFont (fontHeights::tiny).getStringWidthFloat (text) + 2.0F; }

} // namespace

void paintBackground (juce::Graphics& graphics, juce::Rectangle<int> bounds)
{
    graphics.setColour (themeColour (MVThemeColour::displayBackground));
    graphics.fillRect (bounds);
}

void paintText (juce::Graphics& graphics, juce::Rectangle<float> area, const juce::String& text,
                juce::Justification justification)
{
    graphics.setFont (themeFont (fontHeights::tiny));
    graphics.setColour (themeColour (MVThemeColour::displayBackground).withAlpha (0.75F));
    for (const auto offset : { juce::Point<float> (-1.0F, 0.0F), { 1.0F, 0.0F }, { 0.0F, -1.0F }, { 0.0F, 1.0F } })
        graphics.drawText (text, area + offset, justification, false);
    graphics.setColour (themeColour (MVThemeColour::displayAxis));
    graphics.drawText (text, area, justification, false);
}

void paintTitle (juce::Graphics& graphics, juce::Rectangle<int> bounds, const juce::String& title)
{
    paintText (graphics, bounds.toFloat().reduced (inset, 1.0F).removeFromTop (textHeight), title,
               juce::Justification::centredRight);
}

void paintLevels (juce::Graphics& graphics, juce::Rectangle<int> bounds, const MVAxisMarks& marks)
{
    const auto area = bounds.toFloat();
    graphics.setColour (themeColour (MVThemeColour::displayGrid));
    for (const auto& mark : marks)
        graphics.fillRect (area.getX(), mark.position - 0.5F, area.getWidth(), metrics::hairline);

    std::vector<juce::Range<float>> taken;
    for (const auto& mark : marks)
    {
        const juce::Range<float> rows (mark.position - textHeight, mark.position);
        const bool free =
            std::none_of (taken.begin(), taken.end(), [&] (auto range) { return range.intersects (rows); });
        if (mark.text.isEmpty() || ! free || rows.getStart() < area.getY() || rows.getEnd() > area.getBottom())
            continue;
        paintText (graphics, { area.getX() + inset, rows.getStart(), widthOf (mark.text) + inset, textHeight },
                   mark.text, juce::Justification::centredLeft);
        taken.push_back (rows);
    }
}

void paintUprights (juce::Graphics& graphics, juce::Rectangle<int> bounds, const MVAxisMarks& marks)
{
    const auto area = bounds.toFloat();
    graphics.setColour (themeColour (MVThemeColour::displayGrid));
    for (const auto& mark : marks)
        graphics.fillRect (mark.position - 0.5F, area.getY(), metrics::hairline, area.getHeight());

    std::vector<juce::Range<float>> taken;
    for (const auto& mark : marks)
    {
        const auto columns = juce::Range<float>::withStartAndLength (mark.position + 3.0F, widthOf (mark.text) + 2.0F);
        const bool free =
            std::none_of (taken.begin(), taken.end(), [&] (auto range) { return range.intersects (columns); });
        if (mark.text.isEmpty() || ! free || columns.getEnd() > area.getRight())
            continue;
        paintText (graphics,
                   { columns.getStart(), area.getBottom() - textHeight - 1.0F, columns.getLength(), textHeight },
                   mark.text, juce::Justification::centredLeft);
        taken.push_back (columns);
    }
}

void paintTrace (juce::Graphics& graphics, const juce::Path& line, float right, float level, float lineWidth)
{
    juce::Path surface (line);
    surface.lineTo (right, level);
    surface.lineTo (0.0F, level);
    surface.closeSubPath();

    graphics.setColour (themeColour (MVThemeColour::traceFill));
    graphics.fillPath (surface);
    graphics.setColour (themeColour (MVThemeColour::trace));
    graphics.strokePath (line, juce::PathStrokeType (lineWidth, juce::PathStrokeType::curved));
}

void paintNoSignal (juce::Graphics& graphics, juce::Rectangle<int> bounds)
{
    graphics.setFont (themeFont (fontHeights::normal));
    const auto box = bounds.toFloat().withSizeKeepingCentre (std::min (static_cast<float> (bounds.getWidth()), 96.0F),
                                                             std::min (static_cast<float> (bounds.getHeight()), 24.0F));
    graphics.setColour (themeColour (MVThemeColour::displayBackground).withAlpha (0.85F));
    graphics.fillRoundedRectangle (box, box.getHeight() * 0.5F);
    graphics.setColour (themeColour (MVThemeColour::textFaint));
    graphics.drawText ("No signal", box, juce::Justification::centred, false);
}

juce::String frequencyText (double hz)
{
    if (hz < 1000.0)
        return juce::String (juce::roundToInt (hz)) + " Hz";
    const double kilo = hz / 1000.0;
    return (kilo == std::floor (kilo) ? juce::String (static_cast<int> (kilo)) : juce::String (kilo, 1)) + " kHz";
}

juce::String secondsText (double seconds)
{
    const bool milli = std::abs (seconds) < 1.0 && seconds != 0.0;
    const double value = milli ? seconds * 1000.0 : seconds;
    // As many decimals as a step of 1, 2 or 5 times a power of ten needs.
    int decimals = 0;
    while (decimals < 2
           && std::abs (value * std::pow (10.0, decimals) - std::round (value * std::pow (10.0, decimals))) > 0.01)
        ++decimals;
    return (decimals == 0 ? juce::String (juce::roundToInt (value)) : juce::String (value, decimals))
           + (milli ? " ms" : " s");
}

double niceStep (double range, int mostSteps)
{
    if (! (range > 0.0) || ! std::isfinite (range) || mostSteps < 1)
        return 1.0;
    const double least = range / mostSteps;
    const double power = std::pow (10.0, std::floor (std::log10 (least)));
    for (const double factor : { 1.0, 2.0, 5.0 })
        if (factor * power >= least * 0.999999)
            return factor * power;
    return 10.0 * power;
}

} // namespace displayAxes

} // namespace morvanelab
