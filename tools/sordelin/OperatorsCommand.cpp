// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorsCommand.h"

#include "OperatorReport.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>

namespace morvanelab
{

void addOperatorsCommand (CLI::App& app)
{
    auto json = std::make_shared<bool> (false);
    CLI::App* const command = app.add_subcommand ("operators", "List every operator with ports and parameters");
    command->add_flag ("--json", *json, "Write an array of objects");
    command->callback ([json] { std::fputs ((*json ? operatorsAsJson() : operatorsAsText()).c_str(), stdout); });
}

} // namespace morvanelab
