// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace CLI
{
class App;
}

namespace morvanelab
{

/** sordelin doctor: versions and the paths in use. */
void addDoctorCommand (CLI::App& app);

} // namespace morvanelab
