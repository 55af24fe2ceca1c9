// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace morvanelab
{

/** Stored texts are bytes of any kind, and may be meant to do harm. */

/** Valid UTF-8 for a terminal or a line of a report: what is no UTF-8, controls a terminal or turns the direction of
    writing is replaced by U+FFFD. */
std::string printableText (std::string_view stored);

/** A piece of a file name that any file system takes and that leads nowhere else: one line, no separator or other
    character with a meaning, no blank or dot at either end, at most 80 bytes. May be empty. */
std::string fileNameText (std::string_view stored);

} // namespace morvanelab
