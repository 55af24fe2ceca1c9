// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab::test
{

/** The characters that a component and its children draw, in the order in which they do, without blanks. Needs no
    display. */
juce::String paintedText (juce::Component& component);

/** Whether a text is drawn, blanks aside. */
bool paints (juce::Component& component, const juce::String& text);

} // namespace morvanelab::test
