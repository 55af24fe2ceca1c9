// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

namespace morvanelab
{

/** The last spectra of the 3d spectrogram as ridges of evenly spaced points on a logarithmic frequency axis. One thread
    at a time. */
class MVSpectrumHistory
{
public:
    static constexpr int numRidges = 96;
    static constexpr int numPoints = 160;

    struct Ridge
    {
        std::array<float, numPoints> heights {}; ///< 0 to 1
        bool filled = false;
    };

    /** Adds the newest ridge; the oldest goes. Heights outside 0 to 1 are cut off, what is no number is 0. */
    void add (const Ridge& ridge);

    /** Age 0 is the newest ridge, numRidges - 1 the oldest; those never added are flat. */
    const Ridge& ridge (int age) const;
    /** Where in the ring a ridge lies, which stays the same while it ages. */
    int slotOf (int age) const;
    /** Ridges added since the beginning. */
    std::uint32_t numAdded() const { return added; }

    /** z of a ridge in the scene: 0 for the newest to 1 for the oldest. */
    static double depthOf (int age) { return static_cast<double> (age) / (numRidges - 1); }
    /** x of a point in the scene. */
    static double xOf (int point) { return 2.0 * point / (numPoints - 1) - 1.0; }
    /** How strongly a ridge shows: the newest 1, falling with age. */
    static float strengthOf (int age);

private:
    std::array<Ridge, numRidges> ridges {};
    std::uint32_t added = 0;
};

} // namespace morvanelab
