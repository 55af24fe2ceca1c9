// SPDX-License-Identifier: GPL-3.0-or-later
#include "PatchCommand.h"

#include "OutputFile.h"
#include "PatchFile.h"
#include "PatchReport.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>

namespace morvanelab
{

namespace
{

struct PatchOptions
{
    std::string source;
    std::string out;
};

void addBuild (CLI::App& patch)
{
    auto options = std::make_shared<PatchOptions>();
    CLI::App* const command = patch.add_subcommand ("build", "Compile the text form of a patch");
    command->add_option ("source", options->source, "Text form of a patch")->type_name ("SRC.json")->required();
    command->add_option ("-o,--output", options->out, "Patch file to write")->type_name ("FILE.mv_onpatch")->required();
    command->callback (
        [options] { writeWholeFile (options->out, patchFileBytes (*compilePatchSource (options->source).patch)); });
}

void addShow (CLI::App& patch)
{
    auto options = std::make_shared<PatchOptions>();
    options->out = "-";
    CLI::App* const command = patch.add_subcommand ("show", "Write the text form of a patch file");
    command->add_option ("file", options->source, "Patch file")->type_name ("FILE.mv_onpatch")->required();
    command->add_option ("-o,--output", options->out, "Text to write, by default to stdout")->type_name ("SRC.json");
    command->callback ([options]
                       { writeWholeFile (options->out, MVPatchText::write (*readPatchFile (options->source))); });
}

void addCheck (CLI::App& patch)
{
    auto options = std::make_shared<PatchOptions>();
    CLI::App* const command = patch.add_subcommand ("check", "Load a patch file and report what it is made of");
    command->add_option ("file", options->source, "Patch file")->type_name ("FILE")->required();
    command->callback ([options] { std::fputs (patchReport (readPatchFile (options->source)).c_str(), stdout); });
}

} // namespace

void addPatchCommand (CLI::App& app)
{
    CLI::App* const patch = app.add_subcommand ("patch", "Compile, show and check patches");
    patch->require_subcommand (1);
    addBuild (*patch);
    addShow (*patch);
    addCheck (*patch);
}

} // namespace morvanelab
