// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

namespace morvanelab::test
{

// What a user does on the screen, through a connection of one's own; display is such a one.

/** Moves the pointer to and fro at the top left: whoever has a window there hears of it, and of what the screen had to
    say before. */
void nudgePointer (void* display);
/** Moves the pointer to a place of the screen and clicks with the left button what lies there. */
void clickOnScreen (void* display, int x, int y);
/** Gives the keyboard to the window in front at a place of the screen, as a host's own window has it. */
void focusTopWindow (void* display, int x, int y);
/** The colours of an area of the screen, row by row. */
std::vector<std::uint32_t> readScreen (void* display, int x, int y, int width, int height);

} // namespace morvanelab::test
