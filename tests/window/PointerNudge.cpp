// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/PointerNudge.h"

#include <X11/Xlib.h>

#include <initializer_list>

namespace morvanelab::test
{

void nudgePointer (void* display)
{
    auto* screen = static_cast<Display*> (display);
    for (const int place : { 2, 3 })
        XWarpPointer (screen, None, DefaultRootWindow (screen), 0, 0, 0, 0, place, place);
    XSync (screen, False);
}

} // namespace morvanelab::test
