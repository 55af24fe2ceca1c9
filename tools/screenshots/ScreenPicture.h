// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

/** Makes a bare display ready for windows as a window manager does: toolkits miss the names that one brings along.
    Lives as long as windows are used. */
class PreparedDisplay
{
public:
    /** Raises std::runtime_error if there is no display. */
    PreparedDisplay();
    ~PreparedDisplay();
    PreparedDisplay (const PreparedDisplay&) = delete;
    PreparedDisplay& operator= (const PreparedDisplay&) = delete;

private:
    void* display;
};

/** What the screen shows in an area, in pixels: menus and OpenGL pictures included. An invalid image if it cannot be
    read. */
juce::Image readScreen (juce::Rectangle<int> area);

/** Writes a PNG file, whole or not at all. */
bool writePicture (const juce::Image& image, const juce::File& file);

} // namespace morvanelab
