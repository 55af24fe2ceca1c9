// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankCommand.h"

#include "BankBuilder.h"
#include "BankReport.h"
#include "BankSlots.h"
#include "CommandFailure.h"
#include "OutputFile.h"
#include "PatchFile.h"

#include "foundation/MVException.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <optional>

namespace morvanelab
{

namespace
{

struct BankOptions
{
    std::string file;
    std::string patch;
    std::string out;
    int slot = 0;
    bool json = false;
    bool repair = false;
    std::optional<std::string> name;
    std::optional<std::string> author;
    std::optional<std::string> description;
    std::optional<std::string> genre;
};

using Options = std::shared_ptr<BankOptions>;

CLI::App* addCommand (CLI::App& bank, const char* name, const char* help, const Options& options)
{
    CLI::App* const command = bank.add_subcommand (name, help);
    command->add_option ("file", options->file, "Bank file")->type_name ("FILE")->required();
    return command;
}

void addSlot (CLI::App& command, const Options& options)
{
    command.add_option ("--slot", options->slot, "Slot, 0 to 63")
        ->type_name ("N")
        ->check (CLI::Range (0, 63))
        ->required();
}

void addNew (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    addCommand (bank, "new", "Make an empty bank of 64 slots", options)
        ->callback ([options] { MVBankFile().createBank (fileAt (options->file)); });
}

void addList (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command = addCommand (bank, "list", "List the slots of a bank", options);
    command->add_flag ("--json", options->json, "Write an array of objects, one a slot");
    command->callback (
        [options]
        {
            const auto opened = openBank (options->file);
            std::fputs ((options->json ? bankListAsJson (*opened) : bankListAsText (*opened)).c_str(), stdout);
        });
}

void addVerify (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command = addCommand (bank, "verify", "Check checksum, layout and every patch of a bank", options);
    command->add_flag ("--repair", options->repair, "Add what is missing");
    command->callback ([options] { verifyBank (options->file, options->repair); });
}

void applyTexts (MVMetaData& metadata, const BankOptions& options)
{
    if (options.name)
        metadata.setName (MVString (std::string_view (*options.name)));
    if (options.author)
        metadata.setAuthor (MVString (std::string_view (*options.author)));
    if (options.description)
        metadata.setDescription (MVString (std::string_view (*options.description)));
    if (options.genre)
        metadata.setGenre (MVString (std::string_view (*options.genre)));
}

void addPut (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command = addCommand (bank, "put", "Store a patch file in a slot", options);
    addSlot (*command, options);
    command->add_option ("--patch", options->patch, "Patch file")->type_name ("P.mv_onpatch")->required();
    command->add_option ("--name", options->name, "Name of the patch")->type_name ("T");
    command->add_option ("--author", options->author, "Its author")->type_name ("T");
    command->add_option ("--description", options->description, "What it sounds like")->type_name ("T");
    command->add_option ("--genre", options->genre, "Its genre")->type_name ("T");
    command->callback (
        [options]
        {
            const Bytes patch = readWholeFile (options->patch);
            (void)parsePatch (patch);
            BankEdit edit (options->file);
            auto metadata = makeSmart<MVMetaData>();
            applyTexts (*metadata, *options);
            edit.put (options->slot, patch, metadata);
            edit.commit();
        });
}

void addGet (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command = addCommand (bank, "get", "Write the patch of a slot to a file", options);
    addSlot (*command, options);
    command->add_option ("-o,--output", options->out, "Patch file to write")->type_name ("P.mv_onpatch")->required();
    command->callback ([options] { writeWholeFile (options->out, readSlotPatch (options->file, options->slot)); });
}

void addClear (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command = addCommand (bank, "clear", "Empty a slot", options);
    addSlot (*command, options);
    command->callback (
        [options]
        {
            BankEdit edit (options->file);
            edit.clear (options->slot);
            edit.commit();
        });
}

void addBuild (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command = bank.add_subcommand ("build", "Make a whole bank from text sources");
    command->add_option ("list", options->file, "List of slots")->type_name ("LIST.json")->required();
    command->add_option ("-o,--output", options->out, "Bank file to write")->type_name ("FILE")->required();
    command->callback ([options] { buildBank (options->file, options->out); });
}

} // namespace

void addBankCommand (CLI::App& app)
{
    CLI::App* const bank = app.add_subcommand ("bank", "Look at, make and mend bank files");
    bank->require_subcommand (1);
    addNew (*bank);
    addList (*bank);
    addVerify (*bank);
    addPut (*bank);
    addGet (*bank);
    addClear (*bank);
    addBuild (*bank);
}

} // namespace morvanelab
