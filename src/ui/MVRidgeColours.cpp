// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVRidgeColours.h"

#include "ui/MVTheme.h"

namespace morvanelab
{

namespace
{

// Lines begin brighter than the strip, so that a flat ridge is seen too; surfaces stay darker than their lines.
constexpr float lineFloor = 0.24F;
constexpr float surfaceFloor = 0.06F;
constexpr float surfaceBrightness = 0.8F;

juce::PixelRGB pixelOf (juce::Colour colour)
{
    juce::PixelRGB pixel;
    pixel.set (colour.withAlpha (1.0F).getPixelARGB());
    return pixel;
}

} // namespace

void MVRidgeColours::update()
{
    if (revision == themeRevision())
        return;
    revision = themeRevision();
    const auto back = themeColour (MVThemeColour::displayBackground);
    ground = pixelOf (back);
    const auto& strip = heat.colours();
    const auto stripAt = [&strip] (float level) { return strip[static_cast<std::size_t> (shadeOf (level))]; };
    for (int age = 0; age < MVSpectrumHistory::numRidges; ++age)
    {
        const float strength = MVSpectrumHistory::strengthOf (age);
        for (int shade = 0; shade < numShades; ++shade)
        {
            const float level = static_cast<float> (shade) / static_cast<float> (numShades - 1);
            const auto line = stripAt (lineFloor + (1.0F - lineFloor) * level);
            const auto surface = stripAt (surfaceFloor + (surfaceBrightness - surfaceFloor) * level);
            const auto slot = static_cast<std::size_t> (age);
            lineShades[slot][static_cast<std::size_t> (shade)] = pixelOf (back.interpolatedWith (line, strength));
            surfaceShades[slot][static_cast<std::size_t> (shade)] = pixelOf (back.interpolatedWith (surface, strength));
        }
    }
}

} // namespace morvanelab
