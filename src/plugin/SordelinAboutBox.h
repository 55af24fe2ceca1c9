// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

/** Who made this, and which version it is. Typing "runlog" while it shows starts the log file. Message thread. */
class SordelinAboutBox : public juce::Component
{
public:
    SordelinAboutBox();

    static juce::String text();

    void paint (juce::Graphics& graphics) override;
    bool keyPressed (const juce::KeyPress& key) override;

private:
    juce::String typed;
};

} // namespace morvanelab
