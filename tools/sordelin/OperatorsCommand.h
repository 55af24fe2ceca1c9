// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace CLI
{
class App;
}

namespace morvanelab
{

/** sordelin operators: the operators that patches are made of. */
void addOperatorsCommand (CLI::App& app);

} // namespace morvanelab
