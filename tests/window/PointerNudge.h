// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab::test
{

/** Moves the screen's pointer to and fro at the top left: whoever has a window there hears of it, and of what the
    screen had to say before. display is a connection of one's own. */
void nudgePointer (void* display);

} // namespace morvanelab::test
