// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVHeatStrip.h"
#include "ui/MVSpectrumHistory.h"

#include <algorithm>

namespace morvanelab
{

/** The colours of the 3d spectrogram's ridges by age and height, fading into the background with age. Both ways of
    drawing use them. Message thread. */
class MVRidgeColours
{
public:
    static constexpr int numShades = MVHeatStrip::numColours;
    /** Shades of one age, from the floor to the top. */
    using Shades = std::array<juce::PixelRGB, numShades>;

    /** Brings the colours up to date with the theme. */
    void update();
    /** Differs for different colours. */
    std::uint32_t version() const { return revision; }

    /** Line on a ridge. */
    const Shades& lines (int age) const { return lineShades[static_cast<std::size_t> (age)]; }
    /** Surface below a filled ridge. */
    const Shades& surfaces (int age) const { return surfaceShades[static_cast<std::size_t> (age)]; }
    /** Surface below a ridge of lines, which hides what is behind. */
    juce::PixelRGB background() const { return ground; }

    /** The shade of a height from 0 to 1. */
    static int shadeOf (float height)
    {
        return std::clamp (static_cast<int> (height * static_cast<float> (numShades - 1) + 0.5F), 0, numShades - 1);
    }

private:
    MVHeatStrip heat;
    std::uint32_t revision = 0;
    juce::PixelRGB ground;
    std::array<Shades, MVSpectrumHistory::numRidges> lineShades;
    std::array<Shades, MVSpectrumHistory::numRidges> surfaceShades;
};

} // namespace morvanelab
