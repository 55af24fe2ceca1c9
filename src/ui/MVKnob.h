// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVTheme.h"

#include <functional>

namespace morvanelab
{

/** A rotary slider of style 7 (drag left and right or up and down) as the window uses it: a caption below the dial, a
   badge for the controller mapped to it, a state of waiting for one, a menu of its own on the right button, a double
   click back to its default. It is drawn by MVLookAndFeel and never takes the keyboard. Message thread. */
class MVKnob : public juce::Slider
{
public:
    explicit MVKnob (TextEntryBoxPosition textBox = NoTextBox);

    /** Text below the dial, elided in the middle of its last word if too long; empty for none. */
    void setCaption (const juce::String& text);
    /** The controller that moves it, such as "CC 74"; empty when unmapped. */
    void setBadge (const juce::String& text);
    /** Learning: `armed` for every knob that can be clicked to be learned, `waiting` for the one clicked. */
    enum class Learn
    {
        off,
        armed,
        waiting
    };
    void setLearn (Learn state);

    /** Called instead of a drag on a right click or a platform's equivalent; the knob's menu is opened here. */
    std::function<void()> onContextMenu;
    /** Called instead of a drag while the state is not `off`. */
    std::function<void()> onLearnClick;

    void mouseDown (const juce::MouseEvent& event) override;
    void mouseDrag (const juce::MouseEvent& event) override;
    void mouseUp (const juce::MouseEvent& event) override;
    void mouseDoubleClick (const juce::MouseEvent& event) override;

    /** The properties through which any slider can be given these looks, drawn by MVLookAndFeel. */
    static const juce::Identifier captionProperty;
    static const juce::Identifier badgeProperty;
    static const juce::Identifier learnProperty; ///< 0 off, 1 armed, 2 waiting

private:
    void setLook (const juce::Identifier& property, const juce::var& value);

    bool dragging = false;
};

} // namespace morvanelab
