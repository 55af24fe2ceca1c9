// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace CLI
{
class App;
}

namespace morvanelab
{

/** sordelin manager: look at and mend the list of banks that the plug-in loads. */
void addManagerCommand (CLI::App& app);

} // namespace morvanelab
