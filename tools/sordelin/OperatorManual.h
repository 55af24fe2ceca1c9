// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace morvanelab
{

/** The manual of the operators as Markdown, from the operator table and the notes beside it: docs/operators.md.
    Throws badData where the notes lack an operator or a port. */
std::string operatorsAsMarkdown();

} // namespace morvanelab
