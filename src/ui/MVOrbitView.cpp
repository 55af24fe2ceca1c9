// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVOrbitView.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

// What the eye looks at, and how the unit scene is stretched before it is looked at.
constexpr double centreHeight = 0.14;
constexpr double heightScale = 0.85;
constexpr double depthScale = 2.2;
constexpr double leastWidthScale = 1.0;
constexpr double mostWidthScale = 2.3;
constexpr double lens = 2.3; // cotangent of half the angle of view
constexpr double nearPlane = 0.05;
constexpr double farPlane = 20.0;

} // namespace

void MVOrbitView::turn (double byYaw, double byPitch)
{
    if (! std::isfinite (byYaw) || ! std::isfinite (byPitch))
        return;
    yaw = std::clamp (yaw + byYaw, -mostYaw, mostYaw);
    pitch = std::clamp (pitch + byPitch, leastPitch, mostPitch);
}

void MVOrbitView::zoom (double factor)
{
    if (factor > 0.0 && std::isfinite (factor))
        distance = std::clamp (distance * factor, leastDistance, mostDistance);
}

std::array<float, 16> MVOrbitView::matrix (double aspect) const
{
    const double cosYaw = std::cos (yaw);
    const double sinYaw = std::sin (yaw);
    const double cosPitch = std::cos (pitch);
    const double sinPitch = std::sin (pitch);

    const double safeAspect = std::clamp (std::isfinite (aspect) ? aspect : 1.0, 0.05, 20.0);
    const double widthScale = std::clamp (safeAspect * 0.95, leastWidthScale, mostWidthScale);

    // Rows of: stretch and centre, turn about the upright axis, tip, step back. forward grows away from the eye.
    // centred = (x * widthScale, y * heightScale - centreHeight, (z - 0.5) * depthScale)
    const double right[4] { cosYaw * widthScale, 0.0, sinYaw * depthScale, -0.5 * sinYaw * depthScale };
    const double ahead[4] { -sinYaw * widthScale, 0.0, cosYaw * depthScale, -0.5 * cosYaw * depthScale };
    double up[4];
    double forward[4];
    const double level[4] { 0.0, heightScale, 0.0, -centreHeight };
    for (int i = 0; i < 4; ++i)
    {
        up[i] = cosPitch * level[i] + sinPitch * ahead[i];
        forward[i] = cosPitch * ahead[i] - sinPitch * level[i];
    }
    forward[3] += distance;

    // A wide picture is fitted by its height, a tall one by its width.
    const double fit = std::min (1.0, safeAspect / 1.6);
    const double xLens = lens * fit / safeAspect;
    const double yLens = lens * fit;
    const double depthA = (farPlane + nearPlane) / (farPlane - nearPlane);
    const double depthB = -2.0 * farPlane * nearPlane / (farPlane - nearPlane);

    std::array<float, 16> result;
    for (std::size_t column = 0; column < 4; ++column)
    {
        result[column * 4] = static_cast<float> (xLens * right[column]);
        result[column * 4 + 1] = static_cast<float> (yLens * up[column]);
        result[column * 4 + 2] = static_cast<float> (depthA * forward[column] + (column == 3 ? depthB : 0.0));
        result[column * 4 + 3] = static_cast<float> (forward[column]);
    }
    return result;
}

MVOrbitView::Projected MVOrbitView::project (const std::array<float, 16>& matrix, double x, double y, double z)
{
    const auto row = [&] (std::size_t index)
    { return matrix[index] * x + matrix[4 + index] * y + matrix[8 + index] * z + matrix[12 + index]; };
    const double w = std::max (row (3), nearPlane);
    return { row (0) / w, row (1) / w, w };
}

} // namespace morvanelab
