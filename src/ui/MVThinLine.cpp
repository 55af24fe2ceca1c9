// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVThinLine.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace morvanelab
{

MVThinLine::MVThinLine (juce::Image::BitmapData& picture, float weight)
    : pixels (picture), strokeWeight (juce::jlimit (0.0F, 1.0F, weight))
{
    jassert (picture.pixelFormat == juce::Image::ARGB);
}

bool MVThinLine::clip (double& x1, double& y1, double& x2, double& y2) const
{
    // Liang and Barsky 1984: the part of the line between two fractions of its length lies inside.
    const double dx = x2 - x1;
    const double dy = y2 - y1;
    double from = 0.0;
    double to = 1.0;
    const auto limit = [&from, &to] (double direction, double distance)
    {
        if (direction == 0.0)
            return distance >= 0.0;
        const double fraction = distance / direction;
        if (direction < 0.0)
            from = std::max (from, fraction);
        else
            to = std::min (to, fraction);
        return from <= to;
    };
    const double right = pixels.width - 1;
    const double bottom = pixels.height - 1;
    if (! limit (-dx, x1) || ! limit (dx, right - x1) || ! limit (-dy, y1) || ! limit (dy, bottom - y1))
        return false;
    x2 = x1 + to * dx;
    y2 = y1 + to * dy;
    x1 += from * dx;
    y1 += from * dy;
    return true;
}

void MVThinLine::blend (int x, int y, int coverage) const
{
    if (coverage <= 0 || x < 0 || y < 0 || x >= pixels.width || y >= pixels.height)
        return;
    reinterpret_cast<juce::PixelARGB*> (pixels.getPixelPointer (x, y))
        ->blend (paint, static_cast<juce::uint32> (coverage));
}

void MVThinLine::draw (juce::Colour colour, double x1, double y1, double x2, double y2)
{
    if ((x1 == x2 && y1 == y2) || ! clip (x1, y1, x2, y2))
        return;
    paint = colour.getPixelARGB();

    // Along the longer direction each step covers the same amount, shared between the two pixels nearest to the line.
    const bool steep = std::abs (y2 - y1) > std::abs (x2 - x1);
    if (steep)
    {
        std::swap (x1, y1);
        std::swap (x2, y2);
    }
    if (x1 > x2)
    {
        std::swap (x1, x2);
        std::swap (y1, y2);
    }
    const double length = x2 - x1;
    const double slope = length > 0.0 ? (y2 - y1) / length : 0.0;
    const double full = 255.0 * strokeWeight * std::sqrt (1.0 + slope * slope);
    const int first = static_cast<int> (std::lround (x1));
    const int last = static_cast<int> (std::lround (x2));
    double across = y1 + (first - x1) * slope;
    for (int along = first; along <= last; ++along, across += slope)
    {
        // The ends stand in the middle of a pixel.
        const double amount = along == first || along == last ? full * 0.5 : full;
        const double low = std::floor (across);
        const int second = static_cast<int> (amount * (across - low) + 0.5);
        const int lower = static_cast<int> (amount + 0.5) - second;
        const int base = static_cast<int> (low);
        blend (steep ? base : along, steep ? along : base, lower);
        blend (steep ? base + 1 : along, steep ? along : base + 1, second);
    }
}

void fadePicture (juce::Image& picture)
{
    // 0.999 of the eight bits is 255 / 256: with the fraction dropped that takes 1 from every value above 0, and in
    // this form the compiler does many bytes at once.
    const juce::Image::BitmapData data (picture, juce::Image::BitmapData::readWrite);
    const int rowBytes = data.width * data.pixelStride;
    for (int row = 0; row < data.height; ++row)
    {
        std::uint8_t* const line = data.getLinePointer (row);
        for (int i = 0; i < rowBytes; ++i)
            line[i] = static_cast<std::uint8_t> (line[i] - (line[i] != 0 ? 1 : 0));
    }
}

} // namespace morvanelab
