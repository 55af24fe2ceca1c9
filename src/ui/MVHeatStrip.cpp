// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVHeatStrip.h"

#include "ui/MVTheme.h"

#include <cmath>

namespace morvanelab
{

double perceivedLightness (juce::Colour colour)
{
    // The contrast to black is (luminance + 0.05) / 0.05.
    const double luminance = contrastRatio (colour, juce::Colours::black) * 0.05 - 0.05;
    return luminance > 0.008856 ? 116.0 * std::cbrt (luminance) - 16.0 : 903.3 * luminance;
}

const MVHeatStrip::Colours& MVHeatStrip::colours()
{
    if (revision == themeRevision())
        return strip;
    revision = themeRevision();

    // Goes along the theme's gradient in small steps, measures how far each leads for the eye, and takes a colour
    // wherever a 99th of the whole way has been covered.
    constexpr int steps = 2000;
    std::array<double, steps + 1> way {};
    const auto at = [] (int step) { return themeHeat (static_cast<float> (step) / static_cast<float> (steps)); };
    for (std::size_t i = 1; i < way.size(); ++i)
        way[i] = way[i - 1]
                 + std::abs (perceivedLightness (at (static_cast<int> (i)))
                             - perceivedLightness (at (static_cast<int> (i) - 1)));

    int step = 0;
    for (int i = 0; i < numColours; ++i)
    {
        const double goal = way.back() * i / (numColours - 1);
        while (step < steps && way[static_cast<std::size_t> (step)] < goal)
            ++step;
        strip[static_cast<std::size_t> (i)] = at (step).withAlpha (1.0F);
    }
    return strip;
}

} // namespace morvanelab
