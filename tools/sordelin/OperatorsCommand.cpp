// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorsCommand.h"

#include "OperatorManual.h"
#include "OperatorReport.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>

namespace morvanelab
{

void addOperatorsCommand (CLI::App& app)
{
    struct Options
    {
        bool json = false;
        bool markdown = false;
    };
    auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand ("operators", "List every operator with ports and parameters");
    CLI::Option* const json = command->add_flag ("--json", options->json, "Write an array of objects");
    command->add_flag ("--markdown", options->markdown, "Write the manual of the operators")->excludes (json);
    command->callback (
        [options]
        {
            const std::string text = options->markdown ? operatorsAsMarkdown()
                                     : options->json   ? operatorsAsJson()
                                                       : operatorsAsText();
            std::fputs (text.c_str(), stdout);
        });
}

} // namespace morvanelab
