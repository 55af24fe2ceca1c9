// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

namespace morvanelab
{

/** Looks at the scene of the 3d spectrogram from a point that can be moved around it.

    The scene: x from -1 (low frequencies) to 1, y from 0 (the floor) to 1 upward, z from 0 (the newest ridge, in front)
    to 1 (the oldest). The view never goes so far around that an older ridge would come before a newer one. */
class MVOrbitView
{
public:
    static constexpr double mostYaw = 1.2;     ///< radians to either side
    static constexpr double leastPitch = 0.08; ///< radians above the floor
    static constexpr double mostPitch = 1.35;
    static constexpr double leastDistance = 2.9;
    static constexpr double mostDistance = 8.0;

    /** A point of the picture: x and y from -1 to 1 to the right and upward, and how far from the eye. */
    struct Projected
    {
        double x;
        double y;
        double distance;
    };

    /** Turns by radians, within the limits; numbers that are none change nothing. */
    void turn (double byYaw, double byPitch);
    /** Multiplies the distance. */
    void zoom (double factor);
    void reset() { *this = MVOrbitView(); }

    double getYaw() const { return yaw; }
    double getPitch() const { return pitch; }
    double getDistance() const { return distance; }

    /** The projection for a picture of this width over height, which a wide picture stretches the scene along: 16
       numbers by columns, as shaders take them, which turn (x, y, z, 1) into (x * w, y * w, depth * w, w). */
    std::array<float, 16> matrix (double aspect) const;
    /** The same projection of one point. */
    static Projected project (const std::array<float, 16>& matrix, double x, double y, double z);

    bool operator== (const MVOrbitView&) const = default;

private:
    double yaw = 0.25;
    double pitch = 0.42;
    double distance = 3.8;
};

} // namespace morvanelab
