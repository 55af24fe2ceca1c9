// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVTheme.h"

#include <functional>
#include <vector>

namespace morvanelab
{

/** What of a display stays the same from picture to picture (background, grid, axis texts), drawn once and kept in
    pixels of the screen. It is drawn anew when size, zoom or theme change. Message thread. */
class MVDisplayBackdrop
{
public:
    using Painter = std::function<void (juce::Graphics&)>;

    /** Draws the kept picture over a component of this size, painting it first where it is stale. */
    void draw (juce::Graphics& graphics, juce::Rectangle<int> bounds, const Painter& painter);
    /** The kept picture itself, made for so many pixels of the screen a pixel of the component. */
    const juce::Image& imageFor (juce::Rectangle<int> bounds, float scale, const Painter& painter);
    /** What the painter draws has changed. */
    void invalidate() { kept = {}; }

    /** With see-through places the backdrop can lie over a picture. */
    explicit MVDisplayBackdrop (bool seeThrough = false) : transparent (seeThrough) {}

private:
    bool transparent;
    juce::Image kept;
    juce::Rectangle<int> keptBounds;
    float keptScale = 0.0F;
    std::uint32_t keptRevision = 0;
};

/** Pixels of the screen a pixel of what is being painted, between 0.25 and 8. */
float displayScale (juce::Graphics& graphics);

/** A grid line and its text. */
struct MVAxisMark
{
    float position; ///< x or y in pixels
    juce::String text;
};
using MVAxisMarks = std::vector<MVAxisMark>;

/** The common parts of a display, in the theme's colours. Texts that would run into one another or out of the bounds
   are left out; lines are always drawn. */
namespace displayAxes
{

void paintBackground (juce::Graphics& graphics, juce::Rectangle<int> bounds);
/** Name of the view, at the top right. */
void paintTitle (juce::Graphics& graphics, juce::Rectangle<int> bounds, const juce::String& title);
/** Grid lines across, texts at the left edge above their line. */
void paintLevels (juce::Graphics& graphics, juce::Rectangle<int> bounds, const MVAxisMarks& marks);
/** Grid lines upright, texts at the bottom right of their line. */
void paintUprights (juce::Graphics& graphics, juce::Rectangle<int> bounds, const MVAxisMarks& marks);
/** A trace from the left edge on, in pixels, and the surface between it and a level, which ends at x right. */
void paintTrace (juce::Graphics& graphics, const juce::Path& line, float right, float level, float lineWidth);
/** A calm word in the middle of a display that has nothing to show. */
void paintNoSignal (juce::Graphics& graphics, juce::Rectangle<int> bounds);
/** One text on a faint ground that keeps it readable over a picture. */
void paintText (juce::Graphics& graphics, juce::Rectangle<float> area, const juce::String& text,
                juce::Justification justification);

/** "50 Hz", "1 kHz", "2.5 kHz". */
juce::String frequencyText (double hz);
/** "-2 s", "350 ms". */
juce::String secondsText (double seconds);
/** The 1, 2 or 5 times a power of ten that divides the range into at most this many steps. */
double niceStep (double range, int mostSteps);

} // namespace displayAxes

} // namespace morvanelab
