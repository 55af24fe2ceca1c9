// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/ui/ScreenForTests.h"
#include "ui/MVLookAndFeel.h"

#include <gtest/gtest.h>

namespace morvanelab
{

/** The toolkit with our look, for tests of what is drawn; needs no display, but uses one that is there. */
struct ThemeTest : testing::Test
{
    ~ThemeTest() override { resetThemeColours(); }

    ScreenForTests screen;
    juce::ScopedJuceInitialiser_GUI toolkit;
    juce::SharedResourcePointer<MVSharedLookAndFeel> shared;
};

/** What a component and its children look like at a zoom, over the window's background. */
inline juce::Image pictureOf (juce::Component& component, float zoom = 1.0F)
{
    const auto size = component.getLocalBounds().toFloat() * zoom;
    juce::Image image (juce::Image::RGB, juce::roundToInt (size.getWidth()), juce::roundToInt (size.getHeight()), true);
    juce::Graphics graphics (image);
    graphics.fillAll (themeColour (MVThemeColour::windowBackground));
    graphics.addTransform (juce::AffineTransform::scale (zoom));
    component.paintEntireComponent (graphics, true);
    return image;
}

/** Greatest difference of a channel. */
inline int distance (juce::Colour a, juce::Colour b)
{
    return std::max ({ std::abs (a.getRed() - b.getRed()), std::abs (a.getGreen() - b.getGreen()),
                       std::abs (a.getBlue() - b.getBlue()) });
}

/** How many pixels of an area are of a colour, as near as tolerance. */
inline int countColour (const juce::Image& image, juce::Rectangle<int> area, juce::Colour colour, int tolerance = 6)
{
    int count = 0;
    area = area.getIntersection (image.getBounds());
    for (int y = area.getY(); y < area.getBottom(); ++y)
        for (int x = area.getX(); x < area.getRight(); ++x)
            count += distance (image.getPixelAt (x, y), colour) <= tolerance ? 1 : 0;
    return count;
}

inline int countColour (const juce::Image& image, juce::Colour colour, int tolerance = 6)
{
    return countColour (image, image.getBounds(), colour, tolerance);
}

} // namespace morvanelab
