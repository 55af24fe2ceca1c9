// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankCommand.h"

#include "BankBuilder.h"
#include "BankDiff.h"
#include "BankEdit.h"
#include "BankExplode.h"
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
    std::string otherFile;
    int slot = 0;
    int otherSlot = 0;
    bool json = false;
    bool repair = false;
    bool force = false;
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

/** A slot as an argument of its own. */
void addSlotArgument (CLI::App& command, const char* name, int& slot, const char* help)
{
    command.add_option (name, slot, help)->type_name ("SLOT")->check (CLI::Range (0, 63))->required();
}

void addSwap (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command = addCommand (bank, "swap", "Exchange two slots", options);
    addSlotArgument (*command, "a", options->slot, "Slot, 0 to 63");
    addSlotArgument (*command, "b", options->otherSlot, "Slot to exchange it with");
    command->callback (
        [options]
        {
            BankEdit edit (options->file);
            const StoredSlot first = readStoredSlot (edit.contents(), options->slot);
            edit.store (options->slot, readStoredSlot (edit.contents(), options->otherSlot));
            edit.store (options->otherSlot, first);
            edit.commit();
        });
}

void addCopy (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command = bank.add_subcommand ("copy", "Copy a slot over another one, of the same or another bank");
    command->add_option ("from", options->file, "Bank file to copy from")->type_name ("FROM")->required();
    addSlotArgument (*command, "from-slot", options->slot, "Slot to copy, 0 to 63");
    command->add_option ("to", options->otherFile, "Bank file to copy to")->type_name ("TO")->required();
    addSlotArgument (*command, "to-slot", options->otherSlot, "Slot to replace");
    command->callback (
        [options]
        {
            const auto source = openBank (options->file);
            (void)readSlotPatch (*source, options->slot);
            BankEdit edit (options->otherFile);
            edit.store (options->otherSlot, readStoredSlot (*source, options->slot));
            edit.commit();
        });
}

void addDiff (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command =
        bank.add_subcommand ("diff", "Tell slot by slot how two banks differ; nothing is written if they do not");
    command->add_option ("a", options->file, "Bank file")->type_name ("A")->required();
    command->add_option ("b", options->otherFile, "Bank file to compare it with")->type_name ("B")->required();
    command->add_flag ("--json", options->json, "Write an array of objects, one a difference");
    command->callback (
        [options]
        {
            const auto differences = compareBanks (options->file, options->otherFile);
            std::fputs ((options->json ? bankDifferencesAsJson (differences)
                                       : bankDifferencesAsText (differences, options->file, options->otherFile))
                            .c_str(),
                        stdout);
        });
}

void addExplode (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command = addCommand (
        bank, "explode",
        "Write every patch to a file of its own, with the list that bank build makes the bank from again", options);
    command->add_option ("-o,--output", options->out, "Folder to write to; made if it is missing")
        ->type_name ("DIR")
        ->required();
    command->add_flag ("--force", options->force, "Replace files that are there");
    command->callback ([options] { explodeBank (options->file, options->out, options->force); });
}

void addBuild (CLI::App& bank)
{
    const auto options = std::make_shared<BankOptions>();
    CLI::App* const command =
        bank.add_subcommand ("build", "Make a whole bank from a list of text sources and patch files");
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
    addSwap (*bank);
    addCopy (*bank);
    addDiff (*bank);
    addExplode (*bank);
    addBuild (*bank);
}

} // namespace morvanelab
