// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace morvanelab::test
{

// What a user does on the screen, through a connection of one's own; display is such a one.

/** Moves the pointer to and fro at the top left: whoever has a window there hears of it, and of what the screen had to
    say before. */
void nudgePointer (void* display);
/** Moves the pointer to a place of the screen. */
void movePointer (void* display, int x, int y);
/** Moves the pointer to a place of the screen and clicks with the left button what lies there. */
void clickOnScreen (void* display, int x, int y);
/** Gives the keyboard to the window in front at a place of the screen, as a host's own window has it. */
void focusTopWindow (void* display, int x, int y);
/** Gives the keyboard to a window, and who has it now. */
void focusWindow (void* display, unsigned long window);
unsigned long focusedWindow (void* display);
/** A window of one's own inside another one, or on the screen if that is 0; it goes with the connection. */
unsigned long makeWindow (void* display, unsigned long parent, int x, int y);
/** Marks a window as one that a window manager looks after. */
void markAsManaged (void* display, unsigned long window);
/** Whether a key that goes to the window under this place is heard there, and goes no further out. */
bool hearsKeys (void* display, int x, int y);
/** Presses a key, by its name, for whoever has the keyboard. */
void pressOnScreen (void* display, const std::string& key);
/** The colours of an area of the screen, row by row. */
std::vector<std::uint32_t> readScreen (void* display, int x, int y, int width, int height);

} // namespace morvanelab::test
