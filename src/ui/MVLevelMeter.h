// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVShowingWatch.h"
#include "ui/MVTheme.h"

#include <functional>

namespace morvanelab
{

/** A level meter: a bar over a decibel scale with a peak that is held for a second, or a plain count such as the
   playing voices.

    The level is read from the source at the meter's rate while it shows; what the source reads is the owner's: for a
   level that the audio thread writes, an atomic. Nothing is repainted while nothing changes, and at most 30 times a
   second. Message thread. */
class MVLevelMeter : public juce::Component, private juce::Timer
{
public:
    enum class Scale
    {
        decibels, ///< level 1 is full scale, drawn from -60 dB to +6 dB with ticks
        linear    ///< from the range's low to its high end, no ticks
    };
    enum class Orientation
    {
        horizontal,
        vertical
    };

    /** The interval in milliseconds at which the level is read; under 33 it is 33, so that there are at most 30
       pictures a second. */
    explicit MVLevelMeter (int rate);
    ~MVLevelMeter() override;

    /** Where the level comes from: called on the message thread at the meter's rate, only while the meter shows. A
       level that is not a number counts as 0. */
    std::function<float()> levelSource;

    /** The levels of the bar's zones: it warns from 6 dB below low on and is an overload above high. For a linear
       scale, the ends of the bar. */
    void setDisplayRange (float low, float high);
    void setScale (Scale scale);
    void setOrientation (Orientation orientation);
    /** Whether numbers stand at the ticks; off for the second of a pair. */
    void setTickTexts (bool shown);

    /** Takes a level at once, as the timer would. A negative level, or one that is not finite, is 0. */
    void setLevel (float level);
    float level() const { return shownLevel; }
    /** The held peak; falls to the level one second after it was reached. */
    float peak() const { return heldPeak; }
    /** True from the first level above high on until the meter is clicked. */
    bool overloaded() const { return overload; }
    /** Position on the scale of a level, 0 to 1; not-a-number gives 0. */
    float proportionOf (float level) const;
    /** The bar's area without ticks and overload light. */
    juce::Rectangle<float> barArea() const;

    void paint (juce::Graphics& graphics) override;
    void mouseDown (const juce::MouseEvent& event) override;
    void enablementChanged() override { repaint(); }

private:
    void timerCallback() override;
    void run (bool showing);
    void paintScale (juce::Graphics& graphics) const;
    void paintBar (juce::Graphics& graphics) const;

    int interval;
    Scale scale = Scale::decibels;
    Orientation orientation = Orientation::horizontal;
    float rangeLow = 0.9F;
    float rangeHigh = 1.0F;
    bool tickTexts = false;
    float shownLevel = 0.0F;
    float heldPeak = 0.0F;
    juce::uint32 peakTime = 0;
    bool overload = false;
    int drawnLevel = -1; ///< pixels of bar and peak last asked to be drawn
    int drawnPeak = -1;
    MVShowingWatch watch { *this, [this] (bool showing) { run (showing); } };
};

} // namespace morvanelab
