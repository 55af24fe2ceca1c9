// SPDX-License-Identifier: GPL-3.0-or-later
#include "PresetCommand.h"

#include "CommandFailure.h"
#include "OutputFile.h"
#include "PresetReport.h"

#include "banks/MVFileSwap.h"
#include "banks/SordelinPresetFile.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>

namespace morvanelab
{

namespace
{

struct PresetOptions
{
    std::string file;
    std::string manager;
    bool json = false;
};

SordelinState readPreset (const std::string& path)
{
    const juce::File file = fileAt (path);
    if (! file.exists())
        throw badData ("File does not exist.  " + path);
    SordelinState state;
    if (! isPlainFile (file) || ! SordelinPresetFile::read (file, state))
        throw badData ("File read access not allowed.  " + path);

    constexpr auto whole = static_cast<juce::int64> (sizeof (SordelinState));
    if (const juce::int64 size = file.getSize(); size != whole)
        std::fprintf (stderr, "%s: %lld bytes instead of %lld; %s\n", path.c_str(), static_cast<long long> (size),
                      static_cast<long long> (whole),
                      size < whole ? "the rest counts as zeros" : "what is beyond does not count");
    return state;
}

void show (const PresetOptions& options)
{
    const SordelinState state = readPreset (options.file);
    std::optional<PresetPatch> patch;
    if (! options.manager.empty())
        patch = PresetPatch::find (state, options.manager);
    std::fputs ((options.json ? presetAsJson (state, patch) : presetAsText (state, patch)).c_str(), stdout);
}

} // namespace

void addPresetCommand (CLI::App& app)
{
    CLI::App* const preset = app.add_subcommand ("preset", "Look into preset files");
    preset->require_subcommand (1);

    const auto options = std::make_shared<PresetOptions>();
    CLI::App* const command =
        preset->add_subcommand ("show", "Show what a preset holds: patch, values, MIDI controllers, view, compressor");
    command->add_option ("file", options->file, "Preset file")->type_name ("FILE.sord_preset")->required();
    command->add_option ("--manager", options->manager, "List of banks in which to look the patch up")
        ->type_name ("FILE.mv_bankmgr");
    command->add_flag ("--json", options->json, "Write an array of one object");
    command->callback ([options] { show (*options); });
}

} // namespace morvanelab
