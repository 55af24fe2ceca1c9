// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVTheme.h"

namespace morvanelab
{

/** A rounded body with a one pixel outline inside its bounds: buttons, fields, panels, popups. */
inline void paintBody (juce::Graphics& graphics, juce::Rectangle<float> bounds, juce::Colour fill, juce::Colour outline,
                       float corner = metrics::corner)
{
    // The outline's middle runs on half pixels, so that it is one sharp pixel wide.
    graphics.setColour (fill);
    graphics.fillRoundedRectangle (bounds.reduced (metrics::hairline / 2), corner);
    graphics.setColour (outline);
    graphics.drawRoundedRectangle (bounds.reduced (metrics::hairline / 2), corner, metrics::hairline);
}

/** The ring around what has the keyboard. */
inline void paintFocus (juce::Graphics& graphics, juce::Rectangle<float> bounds, float corner = metrics::corner)
{
    graphics.setColour (themeColour (MVThemeColour::focus));
    graphics.drawRoundedRectangle (bounds.reduced (metrics::hairline / 2), corner, metrics::hairline * 1.5F);
}

} // namespace morvanelab
