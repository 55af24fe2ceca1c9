// SPDX-License-Identifier: GPL-3.0-or-later
// The list of banks and the presets, looked at and mended from the command line.
#include "banks/MVBankBytes.h"
#include "banks/MVBankFileManager.h"
#include "foundation/MVChunks.h"
#include "tests/tools/CommandLineFixture.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <map>

namespace morvanelab
{
namespace
{

namespace fs = std::filesystem;
using nlohmann::json;
using test::Outcome;
using test::readFile;
using test::textOf;
using test::writeFile;

using Text = std::string;

class ManagerCommand : public test::CommandLine
{
protected:
    /** Everything in the folder but what the run itself writes: bytes, and when they were written. */
    std::map<Text, std::pair<Text, fs::file_time_type>> snapshot()
    {
        std::map<Text, std::pair<Text, fs::file_time_type>> all;
        for (const auto& entry : fs::recursive_directory_iterator (folder.path()))
            if (const Text name = entry.path().filename().string(); name != "out.txt" && name != "err.txt")
                all[entry.path().string()] = { entry.is_regular_file() ? textOf (entry.path()) : "",
                                               fs::last_write_time (entry.path()) };
        return all;
    }

    /** The same without the times. */
    std::map<Text, Text> contents()
    {
        std::map<Text, Text> all;
        for (const auto& [name, state] : snapshot())
            all[name] = state.first;
        return all;
    }

    juce::File file (const Text& name) { return juce::File (juce::String (folder.file (name))); }

    void add (const Text& arguments)
    {
        const Outcome outcome = run ("manager add l.mv_bankmgr " + arguments);
        ASSERT_EQ (outcome.status, 0) << outcome.err;
    }

    json listed() { return json::parse (run ("manager list l.mv_bankmgr --json").out); }

    /** The file names of the list, in order, as in "a b". */
    Text order()
    {
        Text names;
        for (const json& row : listed())
        {
            names += names.empty() ? "" : " ";
            names += fs::path (row["path"].get<Text>()).stem().string();
        }
        return names;
    }

    void nameBank (const Text& name, const char* bankName)
    {
        MVBankFile bank;
        bank.openFile (file (name), true);
        auto metadata = makeSmart<MVMetaData>();
        metadata->setName (bankName);
        ASSERT_TRUE (bank.setBankMeta (metadata));
    }
};

TEST_F (ManagerCommand, makesAListThatThePlugInLoads)
{
    const Outcome first = run ("manager add l.mv_bankmgr a.mv_onbank");
    EXPECT_EQ (first.status, 0);
    EXPECT_EQ (first.err, "A new bank: " + folder.file ("a.mv_onbank") + "\n");
    EXPECT_EQ (run ("bank verify a.mv_onbank").status, 0);
    add ("./b.mv_onbank");
    add ("c.mv_onbank --position 0");
    add ("d.mv_onbank --position 99");
    add ("'~e.mv_onbank' --position 1");
    EXPECT_EQ (order(), "c ~e a b d");

    const struct
    {
        const char* arguments;
        const char* expected;
    } changes[] { { "move l.mv_bankmgr 0 2", "~e a c b d" },  { "move l.mv_bankmgr 4 0", "d ~e a c b" },
                  { "move l.mv_bankmgr 1 99", "d a c b ~e" }, { "move l.mv_bankmgr 2 2", "d a c b ~e" },
                  { "remove l.mv_bankmgr 4", "d a c b" },     { "remove l.mv_bankmgr 0", "a c b" } };
    const json before = listed();
    for (const auto& change : changes)
    {
        EXPECT_EQ (run (Text ("manager ") + change.arguments).status, 0);
        EXPECT_EQ (order(), change.expected);
    }
    EXPECT_EQ (listed()[0], (json { { "index", 0 },
                                    { "path", folder.file ("a.mv_onbank") },
                                    { "name", "" },
                                    { "uuid", before[2]["uuid"] },
                                    { "selected", false },
                                    { "opens", true },
                                    { "problem", nullptr } }));
    EXPECT_TRUE (exists ("d.mv_onbank"));

    MVBankFileManager manager;
    manager.setManagerFile (file ("l.mv_bankmgr"));
    EXPECT_TRUE (manager.loadBanks());
    ASSERT_EQ (manager.getBankCount(), 3);
    EXPECT_EQ (manager.getBank (1)->bank.getPath(), file ("c.mv_onbank"));
}

TEST_F (ManagerCommand, tellsWhyBanksDoNotOpenAndTouchesNothing)
{
    for (const char* const name : { "good", "gone", "left", "flipped", "cut", "old", "other", "short", "folder" })
        add (Text (name) + ".mv_onbank");
    nameBank ("good.mv_onbank", "Good \x1b[31m");
    add ("named.mv_onbank");
    nameBank ("gone.mv_onbank", "Not remembered: named too late");

    fs::remove (folder.file ("gone.mv_onbank"));
    fs::rename (folder.file ("left.mv_onbank"), folder.file ("left.mv_onbank_mv_tmp"));
    auto bytes = readFile (folder.file ("flipped.mv_onbank"));
    bytes[100] ^= 1U;
    writeFile (folder.file ("flipped.mv_onbank"), bytes);
    bytes.resize (20);
    writeFile (folder.file ("cut.mv_onbank"), bytes);
    fs::remove (folder.file ("folder.mv_onbank"));
    fs::create_directory (folder.file ("folder.mv_onbank"));
    {
        MVBankFile bank;
        bank.openFile (file ("short.mv_onbank"), true);
        bank.writeCompartment (fourCC ("pdat"), 5, compartmentRaw, {}, false);
    }
    const auto rewriteHeader = [this] (const Text& name, std::size_t position, std::uint8_t value)
    {
        auto contents = readFile (folder.file (name));
        contents[position] = value;
        writeContainer (name, contents);
    };
    rewriteHeader ("other.mv_onbank", 4, 'x');
    rewriteHeader ("old.mv_onbank", 16, 0);

    // Two entries that name no file, one without an identity.
    ASSERT_TRUE (run ("manager list l.mv_bankmgr").status == 0);
    MVBankList list;
    ASSERT_EQ (MVBankList::read (file ("l.mv_bankmgr"), list), MVBankListState::good);
    auto relative = makeSmart<MVRiffPacker> (fourCC ("bank"));
    addTextChunk (*relative, fourCC ("path"), "not/absolute\n");
    auto empty = makeSmart<MVRiffPacker> (fourCC ("bank"));
    list.entries.push_back (MVBankListEntry::parse (relative));
    list.entries.push_back (MVBankListEntry::parse (empty));
    const auto packed = list.pack();
    const auto listBytes = bytesOf (packed);
    writeFile (folder.file ("l.mv_bankmgr"), { listBytes.begin(), listBytes.end() });

    const auto before = snapshot();
    const Outcome asText = run ("manager list l.mv_bankmgr");
    const json rows = listed();
    EXPECT_EQ (snapshot(), before);

    const std::pair<const char*, const char*> problems[] {
        { "good", nullptr },
        { "gone", "File does not exist." },
        { "left", "File does not exist." },
        { "flipped", "File checksum incorrect.  Corrupted?" },
        { "cut", "File read access not allowed." },
        { "old", "Error:  Incompatible version." },
        { "other", "Error:  Not a bank file." },
        { "short", "The bank file is damaged." },
        { "folder", "File read access not allowed." },
        { "named", nullptr },
        { "absolute\n", "File does not exist." },
        { "", "File does not exist." },
    };
    ASSERT_EQ (rows.size(), std::size (problems));
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        const auto& [name, problem] = problems[i];
        EXPECT_EQ (fs::path (rows[i]["path"].get<Text>()).stem().string(), name);
        EXPECT_EQ (rows[i]["problem"], problem != nullptr ? json (problem) : json()) << name;
        EXPECT_EQ (rows[i]["opens"], problem == nullptr) << name;
        EXPECT_EQ (rows[i]["uuid"].is_null(), i >= 10) << name;
    }
    EXPECT_EQ (rows[0]["name"], "Good \x1b[31m");
    EXPECT_EQ (asText.status, 0);
    EXPECT_EQ (std::ranges::count (asText.out, '\n'), 2 * std::ssize (problems));
    EXPECT_EQ (asText.out.find ('\x1b'), Text::npos);
    EXPECT_NE (asText.out.find ("does not open: File checksum incorrect."), Text::npos);

    // What does not open today is not lost by changing something else.
    ASSERT_EQ (run ("manager move l.mv_bankmgr 0 2").status, 0);
    ASSERT_EQ (run ("manager remove l.mv_bankmgr 3").status, 0);
    add ("new.mv_onbank --position 0");
    const json after = listed();
    ASSERT_EQ (after.size(), rows.size());
    EXPECT_EQ (order(), "new gone left good cut old other short folder named absolute\n ");
    EXPECT_EQ (after[1]["uuid"], rows[1]["uuid"]);
    EXPECT_FALSE (exists ("gone.mv_onbank"));
}

TEST_F (ManagerCommand, keepsADamagedListAndItsBackup)
{
    add ("a.mv_onbank");
    add ("b.mv_onbank");
    const Text good = textOf (folder.file ("l.mv_bankmgr"));
    const Text damaged = good.substr (0, good.size() - 5);
    write ("l.mv_bankmgr", damaged);

    const auto before = contents();
    for (const char* const command : { "list l.mv_bankmgr", "remove l.mv_bankmgr 0", "move l.mv_bankmgr 0 1",
                                       "add l.mv_bankmgr a.mv_onbank", "add l.mv_bankmgr new.mv_onbank" })
    {
        const Outcome outcome = run (Text ("manager ") + command);
        EXPECT_EQ (outcome.status, 2) << command;
        EXPECT_EQ (
            outcome.err,
            "Load Banks Failure: Ondrelith has detected that persistent state for your loaded banks is corrupt.  "
            "Do you wish to purge this state and load reload banks manually (recommended)?  No\n"
            "Some bank files failed to load.\n")
            << command;
    }
    EXPECT_EQ (contents(), before);

    add ("b.mv_onbank --yes");
    EXPECT_EQ (order(), "b");
    EXPECT_EQ (textOf (folder.file ("l_bak.mv_bankmgr")), damaged);
}

TEST_F (ManagerCommand, refusesWhatIsWrongAndLeavesTheFiles)
{
    add ("a.mv_onbank");
    write ("junk", Text (100, 'x'));
    ASSERT_EQ (run ("bank new short.mv_onbank").status, 0);
    {
        MVBankFile bank;
        bank.openFile (file ("short.mv_onbank"), true);
        bank.writeCompartment (fourCC ("pdat"), 5, compartmentRaw, {}, false);
    }
    write ("p.sord_preset", Text (320, '\0'));
    auto old = readFile (folder.file ("a.mv_onbank"));
    old[16] = 0; // the major version
    writeContainer ("old.mv_onbank", old);

    struct Case
    {
        const char* arguments;
        int status;
        const char* text;
    };
    const Case cases[] {
        { "manager", 1, "subcommand" },
        { "manager list", 1, "file is required" },
        { "manager list none.mv_bankmgr", 2, "File does not exist." },
        { "manager list junk", 2, "corrupt" },
        { "manager list .", 2, "Could not open banks file." },
        { "manager remove l.mv_bankmgr", 1, "index is required" },
        { "manager remove l.mv_bankmgr -1", 1, "index" },
        { "manager remove l.mv_bankmgr one", 1, "index" },
        { "manager remove l.mv_bankmgr 1", 2, "There is no bank 1: the list holds 1" },
        { "manager remove none.mv_bankmgr 0", 2, "File does not exist." },
        { "manager move l.mv_bankmgr 0", 1, "to is required" },
        { "manager move l.mv_bankmgr 1 0", 2, "There is no bank 1" },
        { "manager move none.mv_bankmgr 0 0", 2, "File does not exist." },
        { "manager add l.mv_bankmgr", 1, "bank is required" },
        { "manager add l.mv_bankmgr b.mv_onbank --position -1", 1, "--position" },
        { "manager add l.mv_bankmgr ./A.mv_onbank/../a.mv_onbank", 2, "Already Loaded" },
        { "manager add l.mv_bankmgr junk", 2, "File" },
        { "manager add l.mv_bankmgr p.sord_preset", 2, "File checksum incorrect.  Corrupted?" },
        { "manager add l.mv_bankmgr old.mv_onbank", 2, "Error:  Incompatible version." },
        { "manager add l.mv_bankmgr short.mv_onbank", 2, "Bank File Damaged" },
        { "manager add . b.mv_onbank", 2, "Could not open banks file." },
        { "preset show", 1, "file is required" },
        { "preset show none.sord_preset", 2, "File does not exist." },
        { "preset show .", 2, "File read access not allowed." },
        { "preset show p.sord_preset --manager none.mv_bankmgr", 2, "File does not exist." },
        { "preset show p.sord_preset --manager junk", 2, "corrupt" },
    };
    const auto before = contents();
    for (const Case& c : cases)
    {
        const Outcome outcome = run (c.arguments);
        EXPECT_EQ (outcome.status, c.status) << c.arguments << "\n" << outcome.err;
        EXPECT_NE (outcome.err.find (c.text), Text::npos) << c.arguments << "\n" << outcome.err;
        EXPECT_TRUE (outcome.out.empty()) << c.arguments;
    }
    EXPECT_EQ (contents(), before);

    add ("short.mv_onbank --yes");
    EXPECT_EQ (run ("bank verify short.mv_onbank").status, 0);
}

/** A state as the host stores it, field by field at its place. */
class PresetBytes
{
public:
    template <typename T>
    PresetBytes& put (std::size_t offset, T value)
    {
        std::memcpy (bytes.data() + offset, &value, sizeof value);
        return *this;
    }
    Text text() const { return { bytes.begin(), bytes.end() }; }

private:
    std::array<char, 320> bytes {};
};

TEST_F (ManagerCommand, showsEveryFieldOfAPreset)
{
    PresetBytes preset;
    preset.put (0, 0.9).put (8, 1.5).put (16, 0.25).put (24, 0.75);
    for (std::size_t i = 0; i < 16; ++i)
        preset.put (32 + i, static_cast<std::uint8_t> (0xA0 + i))
            .put (56 + 8 * i, static_cast<double> (i) / 16.0)
            .put (184 + 4 * i, i == 3 ? 74 : -1)
            .put (248 + 4 * i, i == 3 ? 15 : -1);
    preset.put (48, 12).put (52, 99).put (312, 7).put (316, 4);
    write ("p.sord_preset", preset.text());

    const Outcome outcome = run ("preset show p.sord_preset --json");
    ASSERT_EQ (outcome.status, 0);
    EXPECT_EQ (outcome.err, "");
    json expected { { "bank", "a0a1a2a3a4a5a6a7a8a9aaabacadaeaf" },
                    { "slot", 12 },
                    { "outputVolume", 0.75 },
                    { "preCompressionVolume", 0.25 },
                    { "compressorThreshold", 0.9 },
                    { "compressorRollOff", 1.5 },
                    { "parameters", json::array() },
                    { "view", "Strange Attractor" },
                    { "viewNumber", 7 },
                    { "presetItem", 4 },
                    { "unused", 99 } };
    for (int i = 0; i < 16; ++i)
        expected["parameters"].push_back ({ { "index", i },
                                            { "value", i / 16.0 },
                                            { "midiController", i == 3 ? 74 : -1 },
                                            { "midiChannel", i == 3 ? 15 : -1 } });
    EXPECT_EQ (json::parse (outcome.out), json::array ({ expected }));

    const Text shown = run ("preset show p.sord_preset").out;
    for (const char* const row :
         { "bank                    a0a1a2a3a4a5a6a7a8a9aaabacadaeaf\n", "slot                    12\n",
           "compressor roll-off     1.5 s\n", "parameter 3             0.1875        controller 74, channel 15\n",
           "parameter 4             0.25\n", "view                    7 Strange Attractor\n" })
        EXPECT_NE (shown.find (row), Text::npos) << row << shown;

    // Files of other sizes: what is missing counts as zeros, what is beyond does not count.
    for (const std::size_t size : { 0U, 12U, 319U, 321U, 1000U })
    {
        Text bytes = preset.text();
        bytes.resize (size, '\x55');
        write ("s.sord_preset", bytes);
        bytes.resize (std::min<std::size_t> (size, 320));
        bytes.resize (320, '\0');
        write ("whole.sord_preset", bytes);
        const Outcome odd = run ("preset show s.sord_preset --json");
        EXPECT_EQ (odd.status, 0);
        EXPECT_EQ (odd.out, run ("preset show whole.sord_preset --json").out) << size;
        EXPECT_NE (odd.err.find (std::to_string (size) + " bytes instead of 320"), Text::npos) << odd.err;
    }

    // Numbers that are none, views that are not there.
    write ("ff.sord_preset", Text (320, '\xff'));
    EXPECT_EQ (json::parse (run ("preset show ff.sord_preset --json").out)[0]["view"], nullptr);
    EXPECT_NE (run ("preset show ff.sord_preset").out.find ("there is no such view"), Text::npos);
}

TEST_F (ManagerCommand, findsTheBankAndPatchOfAPreset)
{
    build ("p", R"({"operators": [{"operator": "Output"}]})");
    add ("a.mv_onbank");
    add ("b.mv_onbank");
    nameBank ("b.mv_onbank", "Bee");
    ASSERT_EQ (run ("bank put b.mv_onbank --slot 9 --patch p.mv_onpatch --name Hum").status, 0);
    const Text hex = listed()[1]["uuid"];

    const auto show = [&] (int slot, bool known)
    {
        PresetBytes preset;
        preset.put (48, slot);
        for (std::size_t i = 0; i < 16 && known; ++i)
            preset.put (32 + i, static_cast<std::uint8_t> (std::stoi (hex.substr (2 * i, 2), nullptr, 16)));
        write ("p.sord_preset", preset.text());
        const json shown = json::parse (run ("preset show p.sord_preset --manager l.mv_bankmgr --json").out)[0];
        return json::array ({ shown["bankPath"], shown["bankName"], shown["patchName"], shown["problem"] });
    };

    const Text path = folder.file ("b.mv_onbank");
    EXPECT_EQ (show (9, true), json::array ({ path, "Bee", "Hum", nullptr }));
    EXPECT_EQ (show (8, true),
               json::array ({ path, "Bee", nullptr, "Error:  Invalid or corrupt patch.  (slot 8 is empty)" }));
    EXPECT_EQ (show (-1, true)[3], "Error:  Invalid or corrupt patch.  (slot -1 is empty)");
    EXPECT_EQ (show (9, false),
               json::array ({ nullptr, nullptr, nullptr,
                              "Cannot find the patch for this preset.  Check if bank was unloaded." }));
    fs::remove (path);
    EXPECT_EQ (show (9, true), json::array ({ path, nullptr, nullptr, "File does not exist." }));
}

} // namespace
} // namespace morvanelab
