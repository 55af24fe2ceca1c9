// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <typeinfo>

namespace morvanelab
{

/** Opens the log. With a path the file is truncated and written; with null the stream that is open is kept.
    Standard output serves when no stream results. Logging is then on for the rest of the process. */
void mvLogOpen (const char* path);

/** Whether mvLogOpen was called. One relaxed load, so that a quiet log costs one test. */
bool mvLogEnabled();

/** Writes one line and flushes it: "[category] function text". Does nothing while the log is off.
    With an empty function neither category nor function is written. Text beyond 2047 bytes is cut.
    Takes no lock: lines of several threads may interleave. */
#if defined(__GNUC__)
__attribute__ ((format (printf, 3, 4)))
#endif
void mvLog (const char* category, const char* function, const char* format, ...);

/** Logs a failed bounds check of a container of T: category "ERROR", the container's full signature,
    "Attempting to access item %d out of range %d". */
void mvLogOutOfRange (const char* container, const std::type_info& element, bool isClass, int index, int size);

} // namespace morvanelab
