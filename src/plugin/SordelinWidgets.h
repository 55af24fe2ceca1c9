// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace morvanelab
{

/** A timer that calls a function. Message thread. */
class SordelinTimer : public juce::Timer
{
public:
    explicit SordelinTimer (std::function<void()> function) : callback (std::move (function)) {}
    ~SordelinTimer() override { stopTimer(); }

    void timerCallback() override { callback(); }

private:
    std::function<void()> callback;
};

/** Puts a control into its panel: its name is also its component id, by which it is found, and a click leaves the
    keyboard with the host. Message thread. */
template <typename Control>
void setUpControl (juce::Component& parent, Control& control, const juce::String& tooltip)
{
    control.setComponentID (control.getName());
    control.setTooltip (tooltip);
    control.setTitle (control.getName());
    control.setWantsKeyboardFocus (false);
    control.setMouseClickGrabsKeyboardFocus (false);
    parent.addAndMakeVisible (control);
}

} // namespace morvanelab
