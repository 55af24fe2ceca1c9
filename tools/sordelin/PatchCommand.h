// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace CLI
{
class App;
}

namespace morvanelab
{

/** sordelin patch: patches as text and back. */
void addPatchCommand (CLI::App& app);

} // namespace morvanelab
