// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_graphics/juce_graphics.h>

#include <array>
#include <cstdint>

namespace morvanelab
{

/** The strip of 100 colours, from silence to the loudest, that spectrograms are drawn in: the theme's colours for heat,
    spread so that each step looks as large as the next. Message thread. */
class MVHeatStrip
{
public:
    static constexpr int numColours = 100;
    using Colours = std::array<juce::Colour, numColours>;

    /** The strip in the theme's present colours. */
    const Colours& colours();

private:
    Colours strip;
    std::uint32_t revision = 0;
};

/** The lightness that the eye sees (CIE 1976 L*), 0 black to 100 white. */
double perceivedLightness (juce::Colour colour);

} // namespace morvanelab
