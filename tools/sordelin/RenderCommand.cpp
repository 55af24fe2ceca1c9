// SPDX-License-Identifier: GPL-3.0-or-later
#include "RenderCommand.h"

#include "BankSlots.h"
#include "CommandFailure.h"
#include "NumberText.h"
#include "OfflineRenderer.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <map>
#include <memory>

namespace morvanelab
{

namespace
{

constexpr double maxRate = 768000.0;
constexpr int maxBlock = 65536;
constexpr double maxSeconds = 24.0 * 3600.0;
constexpr double tailSeconds = 2.0;
constexpr double silentSeconds = 4.0;

struct RenderOptions
{
    std::string patch;
    std::string bank;
    int slot = -1;
    std::string out;
    std::string rate = "44100";
    std::string blocks = "512";
    std::string seconds;
    std::string mode = "poly";
    int voices = 16;
    std::vector<std::string> notes;
    std::vector<std::string> parameters;
    std::vector<std::string> midiFiles;
    std::string input;
    bool raw = false;
    std::uint64_t seed = 1;
};

std::vector<int> blocksFrom (const std::string& text)
{
    std::vector<int> blocks;
    std::string::size_type start = 0;

    do
    {
        const auto comma = text.find (',', start);
        const int block = wholeNumberFrom (text.substr (start, comma == std::string::npos ? comma : comma - start),
                                           "--block " + text);
        if (block < 1 || block > maxBlock)
            throw wrongUse ("--block " + text + ": a block has 1 to " + std::to_string (maxBlock) + " frames");
        blocks.push_back (block);
        start = comma == std::string::npos ? comma : comma + 1;
    } while (start != std::string::npos);

    return blocks;
}

int playModeFrom (const std::string& text)
{
    static const std::map<std::string, int> modes { { "mono", 1 }, { "poly", 2 }, { "one-shot", 3 } };
    const auto found = modes.find (text);
    if (found == modes.end())
        throw wrongUse ("--mode " + text + ": the mode is mono, poly or one-shot");
    return found->second;
}

/** Notes and parameters in the order of the command line, MIDI files behind them. */
RenderSchedule scheduleFrom (const CLI::App& command, const RenderOptions& options)
{
    RenderSchedule schedule;
    auto note = options.notes.begin();
    auto parameter = options.parameters.begin();

    for (const CLI::Option* option : command.parse_order())
    {
        if (option->check_lname ("note") && note != options.notes.end())
            schedule.addNote (*note++);
        else if (option->check_lname ("param") && parameter != options.parameters.end())
            schedule.addParameter (*parameter++);
    }

    for (const std::string& file : options.midiFiles)
        schedule.addMidiFile (file);
    return schedule;
}

double secondsFor (const RenderOptions& options, const RenderSchedule& schedule)
{
    if (options.seconds.empty())
        return schedule.getLastNoteSeconds() >= 0.0 ? schedule.getLastNoteSeconds() + tailSeconds : silentSeconds;

    const double seconds = numberFrom (options.seconds, "--seconds " + options.seconds);
    if (seconds < 0.0 || seconds > maxSeconds)
        throw wrongUse ("--seconds " + options.seconds + ": a length is 0 to 86400 seconds");
    return seconds;
}

Bytes patchFor (const RenderOptions& options)
{
    return options.bank.empty() ? readWholeFile (options.patch) : readSlotPatch (options.bank, options.slot);
}

void checkUse (const RenderOptions& options)
{
    if (options.patch.empty() == options.bank.empty())
        throw wrongUse ("Give either --patch FILE or --bank FILE --slot N.");
    if (! options.bank.empty() && options.slot < 0)
        throw wrongUse ("--bank needs --slot N, 0 to 63.");
    if (options.bank.empty() && options.slot >= 0)
        throw wrongUse ("--slot needs --bank FILE.");
}

void runRender (const CLI::App& command, const RenderOptions& options)
{
    checkUse (options);

    RenderJob job;
    job.sampleRate = numberFrom (options.rate, "--rate " + options.rate);
    if (job.sampleRate < 1.0 || job.sampleRate > maxRate)
        throw wrongUse ("--rate " + options.rate + ": a rate is 1 to 768000 Hz");

    job.blocks = blocksFrom (options.blocks);
    job.playMode = playModeFrom (options.mode);
    job.voices = options.voices;
    job.seed = options.seed;
    job.schedule = scheduleFrom (command, options);
    job.frames = static_cast<std::int64_t> (std::ceil (secondsFor (options, job.schedule) * job.sampleRate));
    job.patch = patchFor (options);
    if (! options.input.empty())
        job.input = readWavFile (options.input);

    const StereoAudio audio = OfflineRenderer (job).render();
    writeWholeFile (options.out, options.raw ? encodeRaw (audio) : encodeWav (audio, job.sampleRate));
}

} // namespace

void addRenderCommand (CLI::App& app)
{
    auto options = std::make_shared<RenderOptions>();
    CLI::App* const command = app.add_subcommand ("render", "Play a patch into a sound file");

    command->add_option ("--patch", options->patch, "Patch file to play")->type_name ("FILE");
    command->add_option ("--bank", options->bank, "Bank file that holds the patch")->type_name ("FILE");
    command->add_option ("--slot", options->slot, "Slot of the bank, 0 to 63")
        ->type_name ("N")
        ->check (CLI::Range (0, 63));
    command->add_option ("-o,--output", options->out, "File to write, - for stdout")->type_name ("OUT")->required();
    command->add_option ("--rate", options->rate, "Host sample rate in Hz")->type_name ("HZ")->capture_default_str();
    command->add_option ("--block", options->blocks, "Host block size, or a comma list used in turn")
        ->type_name ("N")
        ->capture_default_str();
    command->add_option ("--seconds", options->seconds, "Length; by default the end of the last note and 2 s, or 4 s")
        ->type_name ("S");
    command->add_option ("--mode", options->mode, "Play mode: mono, poly or one-shot")
        ->type_name ("MODE")
        ->capture_default_str();
    command->add_option ("--voices", options->voices, "Voices of the part, 1 to 64")
        ->type_name ("N")
        ->check (CLI::Range (1, 64))
        ->capture_default_str();
    command->add_option ("--note", options->notes, "A note, times in seconds, velocity 0 to 1; may repeat")
        ->type_name ("KEY:VELOCITY:ON[:OFF]")
        ->allow_extra_args (false);
    command->add_option ("--midi", options->midiFiles, "Notes and controllers of a standard MIDI file")
        ->type_name ("FILE")
        ->allow_extra_args (false);
    command->add_option ("--param", options->parameters, "Sets patch parameter I, 0 to 15, to 0..1; may repeat")
        ->type_name ("I=VALUE[@SECONDS]")
        ->allow_extra_args (false);
    command->add_option ("--input", options->input, "Host input, a WAV file")->type_name ("FILE");
    command->add_flag ("--raw", options->raw, "Write headerless little-endian 32-bit floats, interleaved");
    command->add_option ("--seed", options->seed, "State that every random source starts from")
        ->type_name ("N")
        ->capture_default_str();
    command->footer (
        "Example: sordelin render --bank \"Sordelin Factory.mv_onbank\" --slot 0 --note 60:0.8:0:1 -o c.wav");
    command->callback ([command, options] { runRender (*command, *options); });
}

} // namespace morvanelab
