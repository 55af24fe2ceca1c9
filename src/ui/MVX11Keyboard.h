// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

/** What the toolkit leaves open about the keyboard where our window is a child of a host's window on X11. Message
    thread; all but findHostWindow and getHeldModifiers with a display. On other systems nothing here does anything,
    but where it is told. */
namespace x11
{

/** The modifier keys that are down now, whoever has the keyboard: the toolkit knows only what our windows have heard.
    On other systems, what the toolkit knows. */
juce::ModifierKeys getHeldModifiers();

/** The window that has the keyboard, by its number; 0 if none has. */
std::uintptr_t getFocusedWindow();

/** The host's window around ours: the nearest one around that a window manager looks after or, without a window
    manager, the outermost one. 0 if ours is the host's own kind of window, one that lies on the desktop, or if there is
    no display. */
std::uintptr_t findHostWindow (const juce::ComponentPeer& ours);

/** Gives the keyboard to preferred, a window that had it before. Where that has gone, or is no part of a host's window
    that a window manager looks after, to the host's window itself. */
void giveFocusBack (const juce::ComponentPeer& ours, std::uintptr_t host, std::uintptr_t preferred);

/** Whether keys reach our window at all. A key goes to the window under the pointer, where the one that has the
    keyboard lies around it: only if that does not listen does the host get what is typed. */
void setKeysHeard (const juce::ComponentPeer& ours, bool heard);

} // namespace x11

} // namespace morvanelab
