// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

/** What the screen shows in an area, in pixels: menus and OpenGL pictures included. An invalid image if it cannot be
    read. */
juce::Image readScreen (juce::Rectangle<int> area);

/** Writes a PNG file, whole or not at all. */
bool writePicture (const juce::Image& image, const juce::File& file);

} // namespace morvanelab
