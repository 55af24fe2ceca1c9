// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVIconButton.h"

#include "ui/MVPaint.h"

namespace morvanelab
{

namespace
{

using enum MVThemeColour;

constexpr int sideMargin = 7;
constexpr int iconTextGap = 6;
constexpr float tint = 0.22F;

MVThemeColour toneColour (MVIconButton::Tone tone)
{
    switch (tone)
    {
        case MVIconButton::Tone::learn:
            return learn;
        case MVIconButton::Tone::danger:
            return danger;
        case MVIconButton::Tone::normal:
            break;
    }
    return accent;
}

juce::Font buttonFont() { return themeFont (fontHeights::small, MVFontWeight::semiBold); }

int iconSide (int height) { return juce::jmin (metrics::iconSize, juce::jmax (8, height - 6)); }

} // namespace

MVIconButton::MVIconButton (const juce::String& name, MVIcon icon, Style styleToUse)
    : juce::Button (name), shownIcon (icon), style (styleToUse)
{
    setMouseClickGrabsKeyboardFocus (false);
}

void MVIconButton::setIcon (MVIcon icon)
{
    if (icon == shownIcon)
        return;
    shownIcon = icon;
    repaint();
}

void MVIconButton::setTone (Tone toneToUse)
{
    if (toneToUse == tone)
        return;
    tone = toneToUse;
    repaint();
}

int MVIconButton::idealWidth (int height) const
{
    if (style != Style::iconAndText)
        return height;
    return sideMargin * 2 + iconSide (height) + iconTextGap
           + juce::roundToInt (buttonFont().getStringWidthFloat (getButtonText()) + 0.5F);
}

void MVIconButton::paintButton (juce::Graphics& graphics, bool highlighted, bool down)
{
    const auto meaning = themeColour (toneColour (tone));
    const bool on = getToggleState();
    const auto bounds = getLocalBounds().toFloat();
    const auto body = themeColour (! isEnabled() ? panel : down ? controlDown : highlighted ? controlHover : control);
    if (style != Style::bare || on || (isEnabled() && (highlighted || down)))
        paintBody (graphics, bounds, on && isEnabled() ? body.interpolatedWith (meaning, tint) : body,
                   on && isEnabled() ? meaning : themeColour (isEnabled() ? controlOutline : panelOutline));
    if (hasKeyboardFocus (true))
        paintFocus (graphics, bounds);

    const auto ink = ! isEnabled() ? themeColour (textDisabled)
                     : on          ? meaning
                                   : themeColour (highlighted || style != Style::bare ? MVThemeColour::text : textDim);
    auto content = getLocalBounds();
    if (style != Style::iconAndText)
    {
        drawIcon (graphics, shownIcon,
                  content.withSizeKeepingCentre (iconSide (getHeight()), iconSide (getHeight())).toFloat(), ink);
        return;
    }
    content.reduce (sideMargin, 0);
    drawIcon (graphics, shownIcon, content.removeFromLeft (iconSide (getHeight())).toFloat(), ink);
    content.removeFromLeft (iconTextGap);
    graphics.setColour (ink);
    graphics.setFont (buttonFont());
    graphics.drawText (getButtonText(), content, juce::Justification::centredLeft, true);
}

} // namespace morvanelab
