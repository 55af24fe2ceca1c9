// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVRidgePicture.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

juce::PixelRGB& pixelAt (const juce::Image::BitmapData& pixels, int x, int y)
{
    return *reinterpret_cast<juce::PixelRGB*> (pixels.getPixelPointer (x, y));
}

void blend (juce::PixelRGB& pixel, juce::PixelRGB colour, float coverage)
{
    if (coverage >= 1.0F)
        pixel = colour;
    else if (coverage > 0.0F)
        pixel.blend (colour, static_cast<juce::uint32> (coverage * 255.0F));
}

} // namespace

void MVRidgePicture::projectRidge (const MVSpectrumHistory::Ridge& ridge, double z, const std::array<float, 16>& matrix,
                                   float width, float height)
{
    const auto toPixels = [width, height] (const MVOrbitView::Projected& point, float level)
    {
        return Point { (static_cast<float> (point.x) * 0.5F + 0.5F) * width,
                       (0.5F - static_cast<float> (point.y) * 0.5F) * height, level };
    };
    for (int i = 0; i < MVSpectrumHistory::numPoints; ++i)
    {
        const float level = ridge.heights[static_cast<std::size_t> (i)];
        points[static_cast<std::size_t> (i)] =
            toPixels (MVOrbitView::project (matrix, MVSpectrumHistory::xOf (i), level, z), level);
    }
    // A straight line in space stays one in the picture.
    const auto left = toPixels (MVOrbitView::project (matrix, -1.0, 0.0, z), 0.0F);
    const auto right = toPixels (MVOrbitView::project (matrix, 1.0, 0.0, z), 0.0F);
    floorSlope = right.x != left.x ? (right.y - left.y) / (right.x - left.x) : 0.0F;
    floorStart = left.y - floorSlope * left.x;
}

void MVRidgePicture::closeEdge (juce::Image::BitmapData& pixels, int x, const Column& column)
{
    if (column.edgeCoverage > 0.0F && column.free > 0)
        blend (pixelAt (pixels, x, column.free - 1), column.edge, column.edgeCoverage);
}

void MVRidgePicture::drawSegment (juce::Image::BitmapData& pixels, const Point& from, const Point& to,
                                  const MVRidgeColours::Shades& lines, const MVRidgeColours::Shades* surfaces,
                                  juce::PixelRGB background, float lineWidth)
{
    const float run = to.x - from.x;
    const float slope = (to.y - from.y) / run;
    // Measured upright a steep line is thick, but it ends where the segment does.
    const float half = lineWidth * 0.5F * std::sqrt (1.0F + slope * slope);
    const float highest = std::min (from.y, to.y) - lineWidth * 0.5F;
    const float lowest = std::max (from.y, to.y) + lineWidth * 0.5F;
    const int last = std::min (static_cast<int> (std::ceil (std::min (to.x, 1.0e6F))), pixels.width);
    for (int x = static_cast<int> (std::ceil (std::max (from.x, 0.0F))); x < last; ++x)
    {
        Column& column = columns[static_cast<std::size_t> (x)];
        const float along = static_cast<float> (x) - from.x;
        const float middle = from.y + slope * along;
        const float top = std::max ({ middle - half, highest, 0.0F });
        if (! (top < static_cast<float> (column.free)))
            continue;
        const float level = from.height + (to.height - from.height) * along / run;
        const auto free = static_cast<float> (column.free);
        const float foot = floorStart + floorSlope * static_cast<float> (x);

        // The surface from the line to the foot, then the line, whose top row waits for what comes behind it.
        const float perRow = foot > middle ? level / (foot - middle) : 0.0F;
        const int surfaceEnd = static_cast<int> (std::ceil (std::min (foot, free)));
        const int topRow = static_cast<int> (top);
        for (int row = std::max (static_cast<int> (middle), topRow + 1); row < surfaceEnd; ++row)
            pixelAt (pixels, x, row) = surfaces == nullptr
                                           ? background
                                           : (*surfaces)[static_cast<std::size_t> (MVRidgeColours::shadeOf (
                                               level - (static_cast<float> (row) - middle) * perRow))];
        const auto shade = lines[static_cast<std::size_t> (MVRidgeColours::shadeOf (level))];
        const float bottom = std::min ({ middle + half, lowest, free });
        for (int row = topRow + 1; row < static_cast<int> (std::ceil (bottom)); ++row)
            blend (pixelAt (pixels, x, row), shade, bottom - static_cast<float> (row));
        closeEdge (pixels, x, column);
        column = { topRow + 1, std::min (bottom, static_cast<float> (topRow + 1)) - top, shade };
    }
}

void MVRidgePicture::drawRidge (juce::Image::BitmapData& pixels, int age, bool filled, const MVRidgeColours& colours,
                                float lineWidth)
{
    const auto* const surfaces = filled ? &colours.surfaces (age) : nullptr;
    const auto lastColumn = static_cast<float> (pixels.width);
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
    {
        // Seen from high above a tall peak leans over, and its far side runs backwards.
        const bool forward = points[i].x < points[i + 1].x;
        const Point& from = forward ? points[i] : points[i + 1];
        const Point& to = forward ? points[i + 1] : points[i];
        if (to.x > from.x && to.x >= 0.0F && from.x < lastColumn)
            drawSegment (pixels, from, to, colours.lines (age), surfaces, colours.background(), lineWidth);
    }
}

void MVRidgePicture::draw (juce::Image& picture, const MVSpectrumHistory& history, const MVOrbitView& view,
                           const MVRidgeColours& colours, float lineWidth)
{
    juce::Image::BitmapData pixels (picture, juce::Image::BitmapData::readWrite);
    jassert (pixels.pixelFormat == juce::Image::RGB);
    const auto width = static_cast<float> (pixels.width);
    const auto height = static_cast<float> (pixels.height);
    const auto matrix = view.matrix (width / height);
    columns.assign (static_cast<std::size_t> (pixels.width), { pixels.height, 0.0F, {} });
    for (int age = 0; age < MVSpectrumHistory::numRidges; ++age)
    {
        const auto& ridge = history.ridge (age);
        projectRidge (ridge, MVSpectrumHistory::depthOf (age), matrix, width, height);
        drawRidge (pixels, age, ridge.filled, colours, lineWidth);
    }
    for (int x = 0; x < pixels.width; ++x)
        closeEdge (pixels, x, columns[static_cast<std::size_t> (x)]);
}

} // namespace morvanelab
