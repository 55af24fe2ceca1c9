// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tools/CommandLineFixture.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvanelab
{
namespace
{

namespace fs = std::filesystem;
using test::CommandLine;
using test::Outcome;
using test::readFile;
using test::textOf;
using test::writeFile;

const char* const tonePatch = R"({"parameters": [{"name": "Level"}], "operators": [
    {"name": "key", "operator": "Midi Key In"},
    {"name": "wave", "operator": "Oscillator", "inputs": {"#0": {"from": "key", "output": "#0"}}},
    {"name": "level", "operator": "Product", "settings": {"inputCount": 2},
     "inputs": {"#0": {"from": "wave", "scale": 0.5, "control": "Level"}, "#1": {"from": "key", "output": "#1"}}},
    {"name": "out", "operator": "Output", "inputs": {"Mono Mix Input": "level"}}]})";

const char* const inputPatch = R"({"operators": [
    {"name": "in", "operator": "Input", "parameters": {"Input Channel": 1}},
    {"name": "out", "operator": "Output", "inputs": {"Mono Mix Input": {"from": "in"}}}]})";

TEST_F (CommandLine, answersForWrongUseAndBadDataWithStatusAndTextAndWritesNothing)
{
    build ("tone", tonePatch);
    ASSERT_EQ (run ("bank new b.mv_onbank").status, 0);
    write ("junk", std::string (100, 'x'));
    write ("other.mv_onpatch", textOf (folder.file ("b.mv_onbank")));
    write ("bad.json", R"({"operators": [{"operator": "Oscillator", "parameters": {"Phase": 9}}]})");

    struct Case
    {
        const char* arguments;
        int status;
        const char* text;
    };
    const Case cases[] {
        { "", 1, "subcommand" },
        { "frobnicate", 1, "subcommand" },
        { "render --patch tone.mv_onpatch", 1, "--output" },
        { "render -o x.wav", 1, "--patch" },
        { "render --patch tone.mv_onpatch --bank b.mv_onbank --slot 0 -o x.wav", 1, "--patch" },
        { "render --bank b.mv_onbank -o x.wav", 1, "--slot" },
        { "render --bank b.mv_onbank --slot 64 -o x.wav", 1, "64" },
        { "render --bank b.mv_onbank --slot -1 -o x.wav", 1, "slot" },
        { "render --patch tone.mv_onpatch -o x.wav --block 0", 1, "--block" },
        { "render --patch tone.mv_onpatch -o x.wav --block 64,,2", 1, "--block" },
        { "render --patch tone.mv_onpatch -o x.wav --rate 0", 1, "--rate" },
        { "render --patch tone.mv_onpatch -o x.wav --rate 44k", 1, "--rate" },
        { "render --patch tone.mv_onpatch -o x.wav --seconds -1", 1, "--seconds" },
        { "render --patch tone.mv_onpatch -o x.wav --voices 65", 1, "65" },
        { "render --patch tone.mv_onpatch -o x.wav --mode legato", 1, "mono, poly or one-shot" },
        { "render --patch tone.mv_onpatch -o x.wav --param 16=0", 1, "0 to 15" },
        { "render --patch tone.mv_onpatch -o x.wav --param 0=1.5", 1, "0 to 1" },
        { "render --patch tone.mv_onpatch -o x.wav --param 0=1@-1", 1, "0 seconds" },
        { "render --patch tone.mv_onpatch -o x.wav --note 60:0.5", 1, "KEY:VELOCITY:ON" },
        { "render --patch tone.mv_onpatch -o x.wav --note 128:0.5:0", 1, "0 to 127" },
        { "render --patch tone.mv_onpatch -o x.wav --note 60:2:0", 1, "velocity" },
        { "render --patch tone.mv_onpatch -o x.wav --note 60:1:2:1", 1, "ends" },
        { "render --patch none.mv_onpatch -o x.wav", 2, "File does not exist." },
        { "render --patch junk -o x.wav", 2, "Error:  Invalid patch data." },
        { "render --bank b.mv_onbank --slot 3 -o x.wav", 2, "Error:  Invalid or corrupt patch." },
        { "render --bank tone.mv_onpatch --slot 3 -o x.wav", 2, "File" },
        { "render --patch tone.mv_onpatch -o x.wav --input junk", 2, "junk" },
        { "render --patch tone.mv_onpatch -o x.wav --midi junk", 2, "junk" },
        { "render --patch tone.mv_onpatch -o none/x.wav", 2, "Could not create file" },
        { "patch build bad.json -o x.wav", 2, "bad.json: /operators/0/parameters/Phase" },
        { "patch check junk", 2, "Error:  Invalid patch data." },
        { "bank get b.mv_onbank --slot 0 -o x.wav", 2, "Error:  Invalid or corrupt patch." },
        { "bank list junk", 2, "File" },
        { "bank put b.mv_onbank --slot 0 --patch junk", 2, "Error:  Invalid patch data." },
        { "bank new b.mv_onbank", 2, "Could not create file" },
    };

    const auto bankBefore = readFile (folder.file ("b.mv_onbank"));
    for (const Case& c : cases)
    {
        const Outcome outcome = run (c.arguments);
        EXPECT_EQ (outcome.status, c.status) << c.arguments << "\n" << outcome.err;
        EXPECT_NE (outcome.err.find (c.text), std::string::npos) << c.arguments << "\n" << outcome.err;
        EXPECT_TRUE (outcome.out.empty()) << c.arguments;
        EXPECT_EQ (outcome.err.find ("Usage") != std::string::npos, c.status == 1) << c.arguments << outcome.err;
        EXPECT_FALSE (exists ("x.wav")) << c.arguments;
    }
    EXPECT_EQ (readFile (folder.file ("b.mv_onbank")), bankBefore);
    EXPECT_EQ (std::distance (fs::directory_iterator (folder.path()), {}), 8) << "a file was left behind";
}

TEST_F (CommandLine, helpsOnEveryLevel)
{
    for (const char* command : { "",
                                 "render",
                                 "patch",
                                 "patch build",
                                 "patch show",
                                 "patch check",
                                 "bank",
                                 "bank new",
                                 "bank list",
                                 "bank verify",
                                 "bank put",
                                 "bank get",
                                 "bank clear",
                                 "bank swap",
                                 "bank copy",
                                 "bank diff",
                                 "bank explode",
                                 "bank build",
                                 "manager",
                                 "manager list",
                                 "manager add",
                                 "manager remove",
                                 "manager move",
                                 "preset",
                                 "preset show",
                                 "operators",
                                 "doctor" })
    {
        const Outcome outcome = run (std::string (command) + " --help");
        EXPECT_EQ (outcome.status, 0) << command;
        EXPECT_NE (outcome.out.find (std::string ("sordelin") + (*command ? " " : "") + command), std::string::npos)
            << command << outcome.out;
    }
}

TEST_F (CommandLine, rendersTheSameBytesTwiceAndForAnyBlocks)
{
    build ("tone", tonePatch);
    const std::string notes = "--patch tone.mv_onpatch --seconds 0.7 --note 60:0.8:0:0.4 --note 67:0.5:0 ";
    const auto first = render (notes);
    ASSERT_EQ (first.size(), 2U * 30870U);
    EXPECT_EQ (render (notes), first);

    // Notes at time 0 fall on the first block, whatever its size.
    const std::string held = "--patch tone.mv_onpatch --seconds 0.7 --note 60:0.8:0 ";
    const auto expected = render (held);
    for (const char* blocks : { "--block 256", "--block 64,1000,3", "--block 8192", "--block 777" })
        EXPECT_EQ (render (held + blocks), expected) << blocks;
}

TEST_F (CommandLine, aNoteSoundsAtItsPitchAndItsParametersLevel)
{
    build ("tone", tonePatch);
    // The level control stands at 0.5 by itself, so the peak is 0.5 * 0.5 * velocity.
    const auto peakOf = [] (const std::vector<float>& samples, std::size_t from)
    {
        float peak = 0.0f;
        for (std::size_t i = from; i < samples.size(); ++i)
            peak = std::max (peak, std::abs (samples[i]));
        return static_cast<double> (peak);
    };

    const auto plain = render ("--patch tone.mv_onpatch --note 69:0.8:0 --seconds 1");
    EXPECT_NEAR (peakOf (plain, plain.size() / 2), 0.2, 0.002);

    int crossings = 0;
    for (std::size_t i = 44100 + 2; i < plain.size(); i += 2)
        crossings += plain[i - 2] < 0.0f && plain[i] >= 0.0f;
    EXPECT_NEAR (crossings, 220, 1); // half a second of 440 Hz

    const auto loud = render ("--patch tone.mv_onpatch --note 69:0.8:0 --param 0=1@0.5 --seconds 1");
    EXPECT_NEAR (peakOf (loud, 0), 0.4, 0.004);
    EXPECT_TRUE (std::equal (plain.begin(), plain.begin() + 2 * 20000, loud.begin()));
}

TEST_F (CommandLine, hostInputPassesThrough)
{
    build ("input", inputPatch);
    build ("tone", tonePatch);
    ASSERT_EQ (run ("render --patch tone.mv_onpatch --note 69:0.8:0 --seconds 0.5 -o tone.wav").status, 0);

    const auto sound = render ("--patch input.mv_onpatch --mode mono --input tone.wav --seconds 0.5 --block 256");
    const auto tone = render ("--patch tone.mv_onpatch --note 69:0.8:0 --seconds 0.5");
    double difference = 0.0;
    // The output's limiter hears everything 32 samples late; the constant remover takes a little of 440 Hz.
    for (std::size_t i = 2000; i + 64 < tone.size(); ++i)
        difference =
            std::max (difference, std::abs (static_cast<double> (sound[i + 64]) - static_cast<double> (tone[i])));
    EXPECT_LT (difference, 0.02);
}

TEST_F (CommandLine, patchesGoThroughTextAndBanksUnchanged)
{
    build ("tone", tonePatch);
    ASSERT_EQ (run ("patch show tone.mv_onpatch -o again.json").status, 0);
    ASSERT_EQ (run ("patch build again.json -o again.mv_onpatch").status, 0);
    EXPECT_EQ (readFile (folder.file ("again.mv_onpatch")), readFile (folder.file ("tone.mv_onpatch")));

    ASSERT_EQ (run ("bank new b.mv_onbank").status, 0);
    ASSERT_EQ (
        run ("bank put b.mv_onbank --slot 63 --patch tone.mv_onpatch --name 'A Tone' --author Me --genre Leads").status,
        0);
    ASSERT_EQ (run ("bank get b.mv_onbank --slot 63 -o out.mv_onpatch").status, 0);
    EXPECT_EQ (readFile (folder.file ("out.mv_onpatch")), readFile (folder.file ("tone.mv_onpatch")));
    EXPECT_NE (run ("bank list b.mv_onbank --json").out.find ("\"name\": \"A Tone\""), std::string::npos);
    EXPECT_EQ (run ("bank verify b.mv_onbank").status, 0);

    EXPECT_EQ (render ("--bank b.mv_onbank --slot 63 --note 60:1:0 --seconds 0.1"),
               render ("--patch tone.mv_onpatch --note 60:1:0 --seconds 0.1"));

    ASSERT_EQ (run ("bank clear b.mv_onbank --slot 63").status, 0);
    EXPECT_EQ (run ("bank get b.mv_onbank --slot 63 -o gone.mv_onpatch").status, 2);
}

TEST_F (CommandLine, writesToPipesAndThroughLinks)
{
    build ("tone", tonePatch);
    const std::string shown = run ("patch show tone.mv_onpatch").out;
    ASSERT_EQ (run ("patch show tone.mv_onpatch -o /dev/stdout").out, shown);

    // Open for both ways, so that nobody waits for the other end.
    ASSERT_EQ (::mkfifo (folder.file ("pipe").c_str(), 0600), 0);
    const int pipe = ::open (folder.file ("pipe").c_str(), O_RDWR | O_NONBLOCK);
    EXPECT_EQ (run ("patch show tone.mv_onpatch -o pipe").status, 0);
    std::string received (shown.size(), ' ');
    EXPECT_EQ (::read (pipe, received.data(), received.size()), std::ssize (shown));
    ::close (pipe);
    EXPECT_EQ (received, shown);
    EXPECT_TRUE (fs::is_fifo (folder.file ("pipe")));

    write ("target", "old");
    fs::create_symlink ("target", folder.file ("link"));
    ASSERT_EQ (run ("patch show tone.mv_onpatch -o link").status, 0);
    EXPECT_TRUE (fs::is_symlink (folder.file ("link")));
    EXPECT_EQ (textOf (folder.file ("target")), shown);
}

TEST_F (CommandLine, tellsWhichInputsAreReadOnceABlock)
{
    const auto operators = nlohmann::json::parse (run ("operators --json").out);
    const std::pair<const char*, std::set<std::size_t>> known[] { { "MVOpPulseWidthModulator", { 1, 2 } },
                                                                  { "MVOpRouter", { 1, 2, 3 } },
                                                                  { "MVOpSampler", { 1, 2, 3, 4 } },
                                                                  { "MVOpDelay", { 1 } },
                                                                  { "MVOpSum", {} } };
    for (const auto& [name, expected] : known)
    {
        const auto found = std::ranges::find_if (operators, [&className = name] (const auto& row)
                                                 { return row["class"] == className; });
        ASSERT_NE (found, operators.end()) << name;
        std::set<std::size_t> ports;
        for (std::size_t port = 0; port < (*found)["inputs"].size(); ++port)
            if ((*found)["inputs"][port]["readOncePerBlock"])
                ports.insert (port);
        EXPECT_EQ (ports, expected) << name;
    }
}

TEST_F (CommandLine, reportsAFeedbackLoop)
{
    build ("loop", R"({"operators": [
        {"name": "sum", "operator": "Sum", "settings": {"inputCount": 2}, "inputs": {"#0": "one", "#1": "sum"}},
        {"name": "one", "operator": "Constant"},
        {"name": "out", "operator": "Output", "inputs": {"#0": "sum"}}]})");
    const std::string report = run ("patch check loop.mv_onpatch").out;
    EXPECT_NE (report.find ("operators: 3\n"), std::string::npos) << report;
    EXPECT_NE (report.find ("root: 2 Output"), std::string::npos) << report;
    EXPECT_NE (report.find ("execution order: 3 of 3 operators, 2 buffers\n  1 Constant\n  0 Sum\n  2 Output\n"),
               std::string::npos)
        << report;
    EXPECT_NE (report.find ("one block late:\n  0 Sum, input 1"), std::string::npos) << report;
}

} // namespace
} // namespace morvanelab
