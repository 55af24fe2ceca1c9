// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace CLI
{
class App;
}

namespace morvanelab
{

/** sordelin preset: look into preset files. */
void addPresetCommand (CLI::App& app);

} // namespace morvanelab
