// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVOrbitView.h"
#include "ui/MVRidgeColours.h"
#include "ui/MVSpectrumHistory.h"

#include <vector>

namespace morvanelab
{

/** Draws the 3d spectrogram without OpenGL: ridge by ridge from the front to the back, each only above what the nearer
    ones cover (a floating horizon), so that no pixel is drawn twice however many ridges there are. Message thread. */
class MVRidgePicture
{
public:
    /** Draws over an RGB picture that holds the background. lineWidth is in pixels of it. */
    void draw (juce::Image& picture, const MVSpectrumHistory& history, const MVOrbitView& view,
               const MVRidgeColours& colours, float lineWidth);

private:
    /** What is known of a column while the ridges are drawn from the front to the back. */
    struct Column
    {
        int free;            ///< rows above this one are not covered yet
        float edgeCoverage;  ///< how much of the last free row the ridge before covers
        juce::PixelRGB edge; ///< in which colour; laid over whatever else comes into that row
    };

    /** A point of a ridge in pixels. */
    struct Point
    {
        float x;
        float y;
        float height;
    };

    void projectRidge (const MVSpectrumHistory::Ridge& ridge, double z, const std::array<float, 16>& matrix,
                       float width, float height);
    void drawRidge (juce::Image::BitmapData& pixels, int age, bool filled, const MVRidgeColours& colours,
                    float lineWidth);
    void drawSegment (juce::Image::BitmapData& pixels, const Point& from, const Point& to,
                      const MVRidgeColours::Shades& lines, const MVRidgeColours::Shades* surfaces,
                      juce::PixelRGB background, float lineWidth);
    static void closeEdge (juce::Image::BitmapData& pixels, int x, const Column& column);

    std::array<Point, MVSpectrumHistory::numPoints> points {};
    float floorStart = 0.0F; ///< y of the ridge's foot at x 0
    float floorSlope = 0.0F;
    std::vector<Column> columns;
};

} // namespace morvanelab
