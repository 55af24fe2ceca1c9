// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVKnob.h"
#include "ui/MVLookAndFeel.h"
#include "ui/MVPaint.h"

#include <cmath>

namespace morvanelab
{

namespace
{

using enum MVThemeColour;

constexpr float captionHeight = 15.0F;
constexpr float badgeHeight = 13.0F;
constexpr float linearTrack = 4.0F;
constexpr int linearThumb = 7;

/** How a slider stands now. */
struct SliderState
{
    explicit SliderState (const juce::Slider& slider)
        : enabled (slider.isEnabled()), hover (enabled && slider.isMouseOverOrDragging (true)),
          dragged (enabled && slider.isMouseButtonDown()),
          learn (static_cast<MVKnob::Learn> (static_cast<int> (slider.getProperties()[MVKnob::learnProperty]))),
          badge (slider.getProperties()[MVKnob::badgeProperty].toString()),
          caption (slider.getProperties()[MVKnob::captionProperty].toString())
    {
    }

    /** What is left for the value itself: its own colour if the owner has chosen one. */
    juce::Colour valueColour (const juce::Slider& slider, int colourId) const
    {
        const auto colour = slider.findColour (colourId);
        return ! enabled                                 ? themeColour (textDisabled)
               : hover && colour == themeColour (accent) ? themeColour (accentHover)
                                                         : colour;
    }

    bool enabled;
    bool hover;
    bool dragged;
    MVKnob::Learn learn;
    juce::String badge;
    juce::String caption;
};

struct Dial
{
    juce::Point<float> centre;
    float radius;    ///< of the arc's middle line
    float thickness; ///< of the arc
    float startAngle;
    float endAngle;

    float capRadius() const { return radius - thickness * 1.5F; }
};

Dial dialIn (juce::Rectangle<float> area, float startAngle, float endAngle)
{
    const float side = juce::jmax (8.0F, juce::jmin (area.getWidth(), area.getHeight()));
    const float thickness = juce::jlimit (2.0F, 6.0F, side * 0.07F);
    // One pixel stays free around the arc for the ring of learning.
    return { area.getCentre(), side / 2 - thickness / 2 - 1.5F, thickness, startAngle, endAngle };
}

void strokeArc (juce::Graphics& graphics, const Dial& dial, float from, float to, juce::Colour colour)
{
    juce::Path arc;
    arc.addCentredArc (dial.centre.x, dial.centre.y, dial.radius, dial.radius, 0.0F, from, to, true);
    graphics.setColour (colour);
    graphics.strokePath (arc, { dial.thickness, juce::PathStrokeType::curved, juce::PathStrokeType::rounded });
}

void drawCap (juce::Graphics& graphics, const Dial& dial, float angle, const SliderState& state)
{
    const auto circle = juce::Rectangle<float> (dial.capRadius() * 2, dial.capRadius() * 2).withCentre (dial.centre);
    const auto body = themeColour (state.enabled ? knobBody : panelHeader);
    const auto lit = body.brighter (state.hover ? 0.28F : 0.14F);
    if (state.enabled)
    {
        graphics.setColour (themeColour (shadow).withMultipliedAlpha (0.7F));
        graphics.fillEllipse (circle.translated (0.0F, dial.capRadius() * 0.1F).expanded (0.5F));
    }
    graphics.setGradientFill (
        juce::ColourGradient::vertical (lit, circle.getY(), body.darker (0.35F), circle.getBottom()));
    graphics.fillEllipse (circle);
    graphics.setColour (themeColour (state.enabled ? knobEdge : panelOutline));
    graphics.drawEllipse (circle.reduced (metrics::hairline / 2), metrics::hairline);

    const auto direction = juce::Point<float> (std::sin (angle), -std::cos (angle));
    juce::Path pointer;
    pointer.startNewSubPath (dial.centre + direction * (dial.capRadius() * 0.42F));
    pointer.lineTo (dial.centre + direction * (dial.capRadius() * 0.82F));
    graphics.setColour (themeColour (state.enabled ? text : textDisabled));
    graphics.strokePath (pointer, { juce::jmax (1.8F, dial.capRadius() * 0.12F), juce::PathStrokeType::curved,
                                    juce::PathStrokeType::rounded });
}

/** A pill in the gap at the dial's foot: the mapped controller, or the call to move one. */
void drawBadge (juce::Graphics& graphics, const Dial& dial, const juce::String& label, juce::Colour fill)
{
    const auto font = themeFont (fontHeights::tiny, MVFontWeight::semiBold);
    const float width = font.getStringWidthFloat (label) + 8.0F;
    const auto foot =
        juce::Point<float> (dial.centre.x, dial.centre.y + dial.radius + dial.thickness / 2 - badgeHeight / 2 + 1.0F);
    const auto pill = juce::Rectangle<float> (width, badgeHeight).withCentre (foot);
    graphics.setColour (themeColour (panel));
    graphics.fillRoundedRectangle (pill.expanded (1.5F), badgeHeight / 2 + 1.5F);
    graphics.setColour (fill);
    graphics.fillRoundedRectangle (pill, badgeHeight / 2);
    graphics.setColour (themeColour (textOnAccent));
    graphics.setFont (font);
    graphics.drawText (label, pill, juce::Justification::centred, false);
}

void drawLearnRing (juce::Graphics& graphics, const Dial& dial, MVKnob::Learn learnState)
{
    const float outer = dial.radius + dial.thickness / 2 + 0.5F;
    const auto ring = juce::Rectangle<float> (outer * 2, outer * 2).withCentre (dial.centre);
    const bool waiting = learnState == MVKnob::Learn::waiting;
    if (waiting)
    {
        graphics.setColour (themeColour (learn).withMultipliedAlpha (0.25F));
        graphics.fillEllipse (ring);
    }
    graphics.setColour (themeColour (learn).withMultipliedAlpha (waiting ? 1.0F : 0.65F));
    graphics.drawEllipse (ring, waiting ? 2.0F : 1.2F);
}

void drawCaption (juce::Graphics& graphics, juce::Rectangle<float> area, const SliderState& state, juce::Slider& slider)
{
    // While it is turned, the value stands where the name was.
    graphics.setColour (themeColour (! state.enabled ? textDisabled
                                     : state.dragged ? accent
                                     : state.hover   ? text
                                                     : textDim));
    graphics.setFont (themeFont (fontHeights::small, state.dragged ? MVFontWeight::semiBold : MVFontWeight::regular));
    graphics.drawFittedText (state.dragged ? slider.getTextFromValue (slider.getValue()) : state.caption,
                             area.toNearestInt(), juce::Justification::centred, 1, 0.85F);
}

void drawBar (juce::Graphics& graphics, juce::Rectangle<float> area, float position, juce::Slider& slider)
{
    const SliderState state (slider);
    paintBody (graphics, slider.getLocalBounds().toFloat(), themeColour (field), themeColour (controlOutline));
    auto filled = area;
    if (slider.isHorizontal())
        filled.setRight (position);
    else
        filled.setTop (position);
    graphics.setColour (state.valueColour (slider, juce::Slider::trackColourId).withMultipliedAlpha (0.4F));
    graphics.fillRoundedRectangle (filled.reduced (metrics::hairline), metrics::corner - 1);
}

} // namespace

void MVLookAndFeel::drawRotarySlider (juce::Graphics& graphics, int x, int y, int width, int height, float position,
                                      float startAngle, float endAngle, juce::Slider& slider)
{
    const SliderState state (slider);
    auto area = juce::Rectangle<int> (x, y, width, height).toFloat();
    if (state.caption.isNotEmpty())
        drawCaption (graphics, area.removeFromBottom (captionHeight), state, slider);

    const auto dial = dialIn (area, startAngle, endAngle);
    const float angle = startAngle + position * (endAngle - startAngle);
    strokeArc (graphics, dial, startAngle, endAngle, slider.findColour (juce::Slider::rotarySliderOutlineColourId));
    if (angle > startAngle)
        strokeArc (graphics, dial, startAngle, angle,
                   state.valueColour (slider, juce::Slider::rotarySliderFillColourId));
    drawCap (graphics, dial, angle, state);

    if (state.learn != MVKnob::Learn::off && state.enabled)
        drawLearnRing (graphics, dial, state.learn);
    if (state.learn == MVKnob::Learn::waiting && state.enabled)
        drawBadge (graphics, dial, "MOVE", themeColour (learn));
    else if (state.badge.isNotEmpty())
        drawBadge (graphics, dial, state.badge, themeColour (state.enabled ? mapped : textFaint));
}

void MVLookAndFeel::drawLinearSlider (juce::Graphics& graphics, int x, int y, int width, int height, float position,
                                      float minimum, float maximum, juce::Slider::SliderStyle style,
                                      juce::Slider& slider)
{
    const auto area = juce::Rectangle<int> (x, y, width, height).toFloat();
    if (slider.isBar())
        return drawBar (graphics, area, position, slider);
    if (slider.isTwoValue() || slider.isThreeValue())
        return juce::LookAndFeel_V4::drawLinearSlider (graphics, x, y, width, height, position, minimum, maximum, style,
                                                       slider);

    const SliderState state (slider);
    const bool horizontal = slider.isHorizontal();
    const auto rail = horizontal ? area.withSizeKeepingCentre (area.getWidth(), linearTrack)
                                 : area.withSizeKeepingCentre (linearTrack, area.getHeight());
    graphics.setColour (slider.findColour (juce::Slider::backgroundColourId));
    graphics.fillRoundedRectangle (rail, linearTrack / 2);
    graphics.setColour (state.valueColour (slider, juce::Slider::trackColourId));
    graphics.fillRoundedRectangle (horizontal ? rail.withRight (position) : rail.withTop (position), linearTrack / 2);

    const auto centre = horizontal ? juce::Point<float> (position, area.getCentreY())
                                   : juce::Point<float> (area.getCentreX(), position);
    const auto radius = static_cast<float> (getSliderThumbRadius (slider)) - (state.hover ? 0.0F : 1.0F);
    const auto thumb = juce::Rectangle<float> (radius * 2, radius * 2).withCentre (centre);
    graphics.setColour (state.enabled ? slider.findColour (juce::Slider::thumbColourId) : themeColour (textDisabled));
    graphics.fillEllipse (thumb);
    graphics.setColour (themeColour (panel));
    graphics.drawEllipse (thumb, metrics::hairline);
}

int MVLookAndFeel::getSliderThumbRadius (juce::Slider& slider)
{
    return juce::jmin (linearThumb, (slider.isHorizontal() ? slider.getHeight() : slider.getWidth()) / 2);
}

juce::Label* MVLookAndFeel::createSliderTextBox (juce::Slider& slider)
{
    auto* label = juce::LookAndFeel_V4::createSliderTextBox (slider);
    label->setFont (themeFont (fontHeights::small));
    label->setMouseClickGrabsKeyboardFocus (false);
    return label;
}

juce::Font MVLookAndFeel::getSliderPopupFont (juce::Slider&)
{
    return themeFont (fontHeights::normal, MVFontWeight::semiBold);
}

} // namespace morvanelab
