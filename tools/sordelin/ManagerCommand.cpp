// SPDX-License-Identifier: GPL-3.0-or-later
#include "ManagerCommand.h"

#include "ManagerEdit.h"
#include "ManagerList.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>

namespace morvanelab
{

namespace
{

struct ManagerOptions
{
    std::string file;
    std::string bank;
    int index = 0;
    int position = 0;
    bool json = false;
    bool yes = false;
};

using Options = std::shared_ptr<ManagerOptions>;

CLI::App* addCommand (CLI::App& manager, const char* name, const char* help, const Options& options)
{
    CLI::App* const command = manager.add_subcommand (name, help);
    command->add_option ("file", options->file, "List of banks; sordelin doctor tells where the plug-in's lies")
        ->type_name ("FILE.mv_bankmgr")
        ->required();
    return command;
}

CLI::Option* addNumber (CLI::App& command, const char* name, int& number, const char* help)
{
    return command.add_option (name, number, help)->type_name ("N")->check (CLI::NonNegativeNumber);
}

void addList (CLI::App& manager)
{
    const auto options = std::make_shared<ManagerOptions>();
    CLI::App* const command =
        addCommand (manager, "list", "List the banks, and why one does not open; changes nothing", options);
    command->add_flag ("--json", options->json, "Write an array of objects, one a bank");
    command->callback (
        [options]
        {
            const MVBankList list = readManagerList (options->file);
            std::fputs ((options->json ? managerListAsJson (list) : managerListAsText (list)).c_str(), stdout);
        });
}

void addAdd (CLI::App& manager)
{
    const auto options = std::make_shared<ManagerOptions>();
    CLI::App* const command = addCommand (
        manager, "add", "Add a bank to the list. A bank that is not there is made, and so is the list", options);
    command->add_option ("bank", options->bank, "Bank file")->type_name ("BANK.mv_onbank")->required();
    CLI::Option* const position =
        addNumber (*command, "--position", options->position, "Place in the list; by default the end");
    command->add_flag ("--yes", options->yes,
                       "Repair a damaged bank; keep a damaged list under \"_bak\" and begin anew");
    command->callback (
        [options, position]
        {
            addToList (options->file, options->bank,
                       position->count() > 0 ? std::optional (options->position) : std::nullopt, options->yes);
        });
}

void addRemove (CLI::App& manager)
{
    const auto options = std::make_shared<ManagerOptions>();
    CLI::App* const command = addCommand (manager, "remove", "Take a bank out of the list; its file stays", options);
    addNumber (*command, "index", options->index, "Which, as manager list numbers them")->required();
    command->callback ([options] { removeFromList (options->file, options->index); });
}

void addMove (CLI::App& manager)
{
    const auto options = std::make_shared<ManagerOptions>();
    CLI::App* const command = addCommand (manager, "move", "Give a bank another place in the list", options);
    addNumber (*command, "from", options->index, "Which, as manager list numbers them")->required();
    addNumber (*command, "to", options->position, "Its number afterwards; beyond the end is the end")->required();
    command->callback ([options] { moveInList (options->file, options->index, options->position); });
}

} // namespace

void addManagerCommand (CLI::App& app)
{
    CLI::App* const manager = app.add_subcommand ("manager", "Look at and mend the list of banks of the plug-in");
    manager->require_subcommand (1);
    addList (*manager);
    addAdd (*manager);
    addRemove (*manager);
    addMove (*manager);
}

} // namespace morvanelab
