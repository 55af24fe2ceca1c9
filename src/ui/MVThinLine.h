// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_graphics/juce_graphics.h>

namespace morvanelab
{

/** Draws lines thinner than a pixel straight into a picture, many thousands a second: what a general path renderer
   takes microseconds for is a few additions a pixel here. Lives as long as the access to the pixels. */
class MVThinLine
{
public:
    /** The picture is of the ARGB kind; weight is the stroke's in pixels, up to 1. */
    MVThinLine (juce::Image::BitmapData& picture, float weight);

    /** Strokes from the centre of one pixel to that of another; any coordinates, what lies outside is cut off. A line
        without length leaves no trace. */
    void draw (juce::Colour colour, double x1, double y1, double x2, double y2);

private:
    bool clip (double& x1, double& y1, double& x2, double& y2) const;
    void blend (int x, int y, int coverage) const;

    juce::Image::BitmapData& pixels;
    float strokeWeight;
    juce::PixelARGB paint;
};

/** Fades a whole ARGB picture by a step: its alphas times 0.999 in their eight bits. */
void fadePicture (juce::Image& picture);

} // namespace morvanelab
