// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace CLI
{
class App;
}

namespace morvanelab
{

/** sordelin bank: look at, make and mend bank files. */
void addBankCommand (CLI::App& app);

} // namespace morvanelab
