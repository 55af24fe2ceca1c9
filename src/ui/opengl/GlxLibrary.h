// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** Whether the system's OpenGL library is there. It is opened at the first question or call and never closed: the
    plug-in must also load where there is none, so nothing links it. Any thread. */
bool glxLibraryIsThere();

/** A function of that library, null if it or the library is missing. Any thread. */
void* glxFunction (const char* name);

} // namespace morvanelab
