// SPDX-License-Identifier: GPL-3.0-or-later
// Slots exchanged, copied, compared, and whole banks taken apart and put together.
#include "banks/MVBankBytes.h"
#include "banks/MVBankFile.h"
#include "foundation/MVChunks.h"
#include "tests/tools/CommandLineFixture.h"

#include <nlohmann/json.hpp>

#include <algorithm>
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

Text textIn (const MVSmartPtr<MVDataBlock>& block)
{
    const auto bytes = bytesOf (block);
    return { bytes.begin(), bytes.end() };
}

MVSmartPtr<MVDataBlock> block (const Text& text)
{
    return makeSmart<MVDataBlock> (text.data(), static_cast<int> (text.size()));
}

MVSmartPtr<MVRiffPacker> chunk (std::uint32_t id, const Text& text)
{
    return makeSmart<MVRiffPacker> (id, text.data(), static_cast<int> (text.size()));
}

class BankTransfer : public test::CommandLine
{
protected:
    static constexpr std::uint32_t pmta = fourCC ("pmta"), pdat = fourCC ("pdat");

    void SetUp() override
    {
        build ("p", R"({"operators": [{"operator": "Output"}]})");
        build ("q", R"({"operators": [{"operator": "Constant"}, {"operator": "Output"}]})");
        ASSERT_EQ (run ("bank new a.mv_onbank").status, 0);
        ASSERT_EQ (run ("bank new b.mv_onbank").status, 0);
    }

    juce::File file (const Text& name) { return juce::File (juce::String (folder.file (name))); }

    /** Every compartment, in order of type and ordinal. */
    std::map<Text, Text> compartments (const Text& bankName)
    {
        MVBankFile bank;
        bank.openFile (file (bankName), true);
        std::map<Text, Text> all;
        const std::pair<Text, std::uint32_t> types[] { { "meta", fourCC ("meta") },
                                                       { "pmta", pmta },
                                                       { "pdat", pdat } };
        for (const auto& [name, type] : types)
            for (int i = 0; i < MVBankFile::maxPatchesPerBank; ++i)
                if (MVSmartPtr<MVDataBlock> data; bank.readByOrdinal (type, i, data) == 1)
                    all[name + std::to_string (i)] = textIn (data);
        EXPECT_EQ (all.size(), 129U);
        return all;
    }

    void store (const Text& name, std::uint32_t type, int slot, const Text& bytes)
    {
        MVBankFile bank;
        bank.openFile (file (name), true);
        ASSERT_EQ (
            bank.writeCompartment (type, slot, type == pdat ? compartmentRaw : compartmentRiff, block (bytes), false),
            1);
    }

    void storeName (const Text& name, int slot, const Text& patchName)
    {
        auto metadata = makeSmart<MVMetaData>();
        metadata->setName (MVString (std::string_view (patchName)));
        store (name, pmta, slot, textIn (packChunks (metadata->packRiff())));
    }

    /** A slot's form around a patch, with further chunks. */
    static Text slotForm (const Text& patch, std::vector<MVSmartPtr<MVRiffPacker>> further, bool withChecksum = true)
    {
        MVRiffPacker form (fourCC ("RIFF"));
        form.addChild (chunk (fourCC ("data"), patch));
        for (auto& child : further)
            form.addChild (child);
        return textIn (form.packToBlock (withChecksum));
    }

    /** A bank whose every stored text and form means harm or is unusual. */
    void makeHostileBank()
    {
        const Text patch = textOf (folder.file ("p.mv_onpatch"));
        const Text names[] { "../../../escape",
                             "/absolute",
                             "..",
                             ".",
                             "a\\b:c*d?e\"f<g>h|i",
                             Text (10000, 'x'),
                             "\xff\xfe\xc0\xaf broken",
                             "\x1b[2J\r\n\t bell\a",
                             "",
                             "   ...   ",
                             "\u202Etxt.exe",
                             Text ("nul\0byte", 8) };
        int slot = 0;
        for (const Text& name : names)
        {
            storeName ("a.mv_onbank", slot, name);
            store ("a.mv_onbank", pdat, slot++, slotForm (patch, {}));
        }

        store ("a.mv_onbank", pdat, 20,
               slotForm (patch, { chunk (fourCC ("pcom"), "A comment"), chunk (fourCC ("pane"), "\1\2") }));
        store ("a.mv_onbank", pdat, 21,
               slotForm (patch, { chunk (fourCC ("pane"), "first"), chunk (fourCC ("pcom"), "last") }));
        store ("a.mv_onbank", pdat, 22, slotForm (patch, { chunk (fourCC ("xtra"), "foreign") }, false));
        store ("a.mv_onbank", pdat, 23, slotForm ("this is no patch", {}));
        store ("a.mv_onbank", pdat, 24, "not even a form");

        MVMetaData rich;
        MVRiffPacker source (MVMetaData::chunkType);
        auto lock = makeChunk<std::int32_t> (fourCC ("lock"), 1);
        lock->addChild (chunk (fourCC ("pswd"), "hash"));
        source.addChild (lock);
        rich.unpackRiff (source);
        rich.setName ("Rich");
        rich.setTimestamp ("Sun Nov 22 12:00:00 2026");
        rich.setUuid ("0123");
        rich.setGeography ("north");
        rich.addSearchTag (7);
        auto image = chunk (fourCC ("ilog"), Text (3000, '\x7f'));
        rich.setImage (image);
        store ("a.mv_onbank", pmta, 20, textIn (packChunks (rich.packRiff())));
        store ("a.mv_onbank", fourCC ("meta"), 0, textIn (packChunks (rich.packRiff())));

        rich.addSearchTag (-5);
        store ("a.mv_onbank", pmta, 21, textIn (packChunks (rich.packRiff())));
        store ("a.mv_onbank", pmta, 22, "no tree");
        MVRiffPacker timeless (MVMetaData::chunkType); // an empty time is the present one, once it is read
        addTextChunk (timeless, fourCC ("time"), MVString());
        store ("a.mv_onbank", pmta, 23, textIn (timeless.packToBlock (true)));
        storeName ("a.mv_onbank", 30, "A name without a patch");
    }

    std::vector<Text> namesIn (const Text& name)
    {
        std::vector<Text> names;
        for (const auto& entry : fs::recursive_directory_iterator (folder.file (name)))
            names.push_back (entry.path().lexically_relative (folder.file (name)).string());
        std::ranges::sort (names);
        return names;
    }
};

TEST_F (BankTransfer, aFactoryBankTakenApartAndBuiltAgainIsTheSameFile)
{
    const Text list = SORDELIN_SOURCE_DIR "/factory/factory-bank.json";
    ASSERT_EQ (run ("bank build '" + list + "' -o f.mv_onbank").status, 0);
    const Outcome exploded = run ("bank explode f.mv_onbank -o parts");
    ASSERT_EQ (exploded.status, 0) << exploded.err;
    EXPECT_EQ (exploded.err, "");
    EXPECT_EQ (namesIn ("parts").size(), 65U);
    EXPECT_TRUE (exists ("parts/00 Saw Stack.mv_onpatch"));
    EXPECT_EQ (textOf (folder.file ("parts/bank.json")).find ("stored"), Text::npos) << "a form is not known";
    EXPECT_EQ (run ("patch check 'parts/00 Saw Stack.mv_onpatch'").status, 0);

    ASSERT_EQ (run ("bank build parts/bank.json -o again.mv_onbank").status, 0);
    EXPECT_EQ (compartments ("again.mv_onbank"), compartments ("f.mv_onbank"));
    const Outcome compared = run ("bank diff f.mv_onbank again.mv_onbank");
    EXPECT_EQ (compared.status, 0);
    EXPECT_EQ (compared.out, "");
}

TEST_F (BankTransfer, nothingEscapesFromAHostileBankAndNothingIsLost)
{
    makeHostileBank();
    fs::create_directory (folder.file ("deep"));
    const auto before = std::distance (fs::recursive_directory_iterator (folder.path()), {});
    const Outcome exploded = run ("bank explode a.mv_onbank -o deep/parts");
    ASSERT_EQ (exploded.status, 0) << exploded.err;
    EXPECT_EQ (exploded.err, "slot 23: Error:  Invalid patch data.\nslot 24: Error:  Invalid patch data.\n");

    // 12 names, 4 of the patches that follow, the list; and the folder, out.txt, err.txt.
    EXPECT_EQ (std::distance (fs::recursive_directory_iterator (folder.path()), {}), before + 17 + 1);
    const std::vector<Text> expected { "00 _.._.._escape.mv_onpatch",
                                       "01 _absolute.mv_onpatch",
                                       "02 Unnamed.mv_onpatch",
                                       "03 Unnamed.mv_onpatch",
                                       "04 a_b_c_d_e_f_g_h_i.mv_onpatch",
                                       "05 " + Text (80, 'x') + ".mv_onpatch",
                                       "06 ____ broken.mv_onpatch",
                                       "07 _[2J___ bell_.mv_onpatch",
                                       "08 Unnamed.mv_onpatch",
                                       "09 Unnamed.mv_onpatch",
                                       "10 _txt.exe.mv_onpatch",
                                       "11 nul_byte.mv_onpatch",
                                       "20 Rich.mv_onpatch",
                                       "21 Rich.mv_onpatch",
                                       "22 Unnamed.mv_onpatch",
                                       "23 Unnamed.mv_onpatch",
                                       "bank.json" };
    EXPECT_EQ (namesIn ("deep/parts"), expected);
    EXPECT_EQ (textOf (folder.file ("deep/parts/23 Unnamed.mv_onpatch")), "this is no patch");

    const Outcome built = run ("bank build deep/parts/bank.json -o again.mv_onbank");
    ASSERT_EQ (built.status, 0) << built.err;
    EXPECT_EQ (compartments ("again.mv_onbank"), compartments ("a.mv_onbank"));
    EXPECT_EQ (run ("bank diff a.mv_onbank again.mv_onbank").out, "");

    // The names on a terminal: no byte but line feeds controls it.
    for (const char* const command : { "bank list a.mv_onbank", "bank diff a.mv_onbank b.mv_onbank" })
        EXPECT_TRUE (std::ranges::all_of (run (command).out, [] (char c) { return c == '\n' || c < 0 || c >= 32; }))
            << command;
}

TEST_F (BankTransfer, theListTellsWhatASlotHoldsAndTakesChanges)
{
    makeHostileBank();
    ASSERT_EQ (run ("bank explode a.mv_onbank -o parts").status, 0);
    json list = json::parse (textOf (folder.file ("parts/bank.json")));
    const auto slotEntry = [&list] (int slot) -> json&
    { return *std::ranges::find_if (list["slots"], [slot] (const json& entry) { return entry["slot"] == slot; }); };

    EXPECT_EQ (list["metadata"]["timestamp"], "Sun Nov 22 12:00:00 2026");
    const json& rich = slotEntry (20);
    EXPECT_EQ (rich["metadata"]["name"], "Rich");
    EXPECT_EQ (rich["metadata"]["tags"], json::array ({ 7 }));
    EXPECT_EQ (rich["metadata"]["lock"]["children"][0]["data"], "68617368"); // "hash"
    EXPECT_EQ (rich["metadata"]["image"]["data"].get<Text>().size(), 6000U);
    EXPECT_EQ (rich["comment"]["data"], "4120636f6d6d656e74"); // "A comment"
    EXPECT_EQ (rich["panel"]["data"], "0102");
    EXPECT_TRUE (slotEntry (6)["metadata"]["name"].contains ("stored"));
    EXPECT_TRUE (slotEntry (22).contains ("stored"));
    EXPECT_EQ (slotEntry (30)["patch"], nullptr);

    // Another patch in an unusual form, a new name over a locked record, a slot emptied.
    fs::copy_file (folder.file ("q.mv_onpatch"), folder.file ("parts/q.mv_onpatch"));
    slotEntry (21)["patch"] = "q.mv_onpatch";
    slotEntry (20)["metadata"]["name"] = "Richer";
    slotEntry (24)["patch"] = nullptr;
    slotEntry (24).erase ("stored");
    write ("parts/bank.json", list.dump());
    const Outcome built = run ("bank build parts/bank.json -o again.mv_onbank");
    ASSERT_EQ (built.status, 0) << built.err;
    EXPECT_EQ (run ("bank diff a.mv_onbank again.mv_onbank").out,
               "slot 20: name \"Rich\" \"Richer\"\nslot 21: patch \"Rich\"\nslot 24: only in a.mv_onbank \"\"\n");
    EXPECT_EQ (
        json::parse (run ("bank diff a.mv_onbank again.mv_onbank --json").out)[0],
        json::parse (R"({"slot": 20, "onlyIn": null, "nameInA": "Rich", "nameInB": "Richer", "fields": ["name"]})"));
}

TEST_F (BankTransfer, explodeReplacesNothingUnlessForced)
{
    ASSERT_EQ (run ("bank put a.mv_onbank --slot 3 --patch p.mv_onpatch --name 'Pad'").status, 0);
    fs::create_directory (folder.file ("d"));
    const Text place = folder.file ("d/03 Pad.mv_onpatch");
    const Text patch = textOf (folder.file ("p.mv_onpatch"));

    write ("d/bank.json", "mine");
    EXPECT_EQ (run ("bank explode a.mv_onbank -o d").status, 2);
    EXPECT_EQ (namesIn ("d"), std::vector<Text> { "bank.json" });
    EXPECT_EQ (textOf (folder.file ("d/bank.json")), "mine");

    // A link that leads out of the folder, to nothing.
    fs::remove (folder.file ("d/bank.json"));
    fs::create_symlink (folder.file ("outside"), place);
    EXPECT_EQ (run ("bank explode a.mv_onbank -o d").status, 2);
    EXPECT_EQ (run ("bank explode a.mv_onbank -o d --force").status, 0);
    EXPECT_FALSE (exists ("outside"));
    EXPECT_FALSE (fs::is_symlink (place));
    EXPECT_EQ (textOf (place), patch);

    fs::remove (place);
    fs::create_directory (place);
    write ("d/bank.json", "mine");
    EXPECT_EQ (run ("bank explode a.mv_onbank -o d --force").status, 2);
    EXPECT_EQ (textOf (folder.file ("d/bank.json")), "mine");

    // A file in the folder's place, and no place for the folder.
    EXPECT_EQ (run ("bank explode a.mv_onbank -o p.mv_onpatch").status, 2);
    EXPECT_EQ (textOf (folder.file ("p.mv_onpatch")), patch);
    EXPECT_EQ (run ("bank explode a.mv_onbank -o none/d").status, 2);
    EXPECT_FALSE (exists ("none"));
}

TEST_F (BankTransfer, slotsAreExchangedAndCopiedWithAllTheyHold)
{
    makeHostileBank();
    const auto before = compartments ("a.mv_onbank");
    ASSERT_EQ (run ("bank swap a.mv_onbank 20 63").status, 0);
    auto swapped = before;
    std::swap (swapped["pdat20"], swapped["pdat63"]);
    std::swap (swapped["pmta20"], swapped["pmta63"]);
    EXPECT_EQ (compartments ("a.mv_onbank"), swapped);
    ASSERT_EQ (run ("bank swap a.mv_onbank 63 20").status, 0);
    ASSERT_EQ (run ("bank swap a.mv_onbank 5 5").status, 0);
    EXPECT_EQ (compartments ("a.mv_onbank"), before);

    ASSERT_EQ (run ("bank copy a.mv_onbank 22 b.mv_onbank 0").status, 0);
    EXPECT_EQ (compartments ("b.mv_onbank")["pdat0"], before.at ("pdat22"));
    EXPECT_EQ (compartments ("b.mv_onbank")["pmta0"], before.at ("pmta22"));
    ASSERT_EQ (run ("bank copy a.mv_onbank 20 a.mv_onbank 21").status, 0);
    EXPECT_EQ (compartments ("a.mv_onbank")["pdat21"], before.at ("pdat20"));
    EXPECT_EQ (run ("bank diff a.mv_onbank b.mv_onbank --json").status, 0);
}

TEST_F (BankTransfer, diffNamesWhatDiffers)
{
    const Text patch = textOf (folder.file ("p.mv_onpatch"));
    const auto bothStore = [this] (int slot, const Text& inA, const Text& inB)
    {
        store ("a.mv_onbank", pdat, slot, inA);
        store ("b.mv_onbank", pdat, slot, inB);
    };
    bothStore (1, slotForm (patch, {}), slotForm (patch, {}));
    bothStore (2, slotForm (patch, {}), slotForm (patch, {}, false));
    bothStore (3, slotForm (patch, { chunk (fourCC ("pcom"), "x") }),
               slotForm (patch, { chunk (fourCC ("pane"), "x") }));
    bothStore (4, slotForm (patch, {}), slotForm (textOf (folder.file ("q.mv_onpatch")), {}));
    bothStore (5, Text (1, '\0'), slotForm (patch, {}));
    storeName ("b.mv_onbank", 6, "New");
    MVMetaData metadata;
    metadata.setGenre ("Pads");
    metadata.addSearchTag (3);
    store ("a.mv_onbank", fourCC ("meta"), 0, textIn (packChunks (metadata.packRiff())));

    EXPECT_EQ (run ("bank diff a.mv_onbank b.mv_onbank").out, "bank: genre, tags \"\"\n"
                                                              "slot 2: slot form \"\"\n"
                                                              "slot 3: comment, panel \"\"\n"
                                                              "slot 4: patch \"\"\n"
                                                              "slot 5: only in b.mv_onbank \"\"\n"
                                                              "slot 6: name \"\" \"New\"\n");
    EXPECT_EQ (run ("bank diff a.mv_onbank a.mv_onbank --json").out, "[]\n");
}

TEST_F (BankTransfer, refusesWhatIsWrongAndLeavesTheFiles)
{
    ASSERT_EQ (run ("bank put a.mv_onbank --slot 0 --patch p.mv_onpatch").status, 0);
    write ("junk", Text (100, 'x'));
    const auto list = [this] (const char* name, const char* slots)
    { write (name, Text (R"({"slots": [)") + slots + "]}"); };
    list ("nopatch.json", R"({"slot": 0})");
    list ("key.json", R"({"slot": 0, "patch": null, "pane": 1})");
    list ("twice.json", R"({"slot": 0, "patch": null}, {"slot": 0, "patch": null})");
    list ("junk.json", R"({"slot": 0, "patch": "junk"})");
    list ("comment.json", R"({"slot": 0, "patch": "p.mv_onpatch", "comment": {"id": "pane"}})");
    list ("hex.json", R"({"slot": 0, "patch": null, "stored": "0g"})");
    list ("empty.json", R"({"slot": 0, "patch": null, "metadata": {"stored": ""}})");
    list ("lock.json", R"({"slot": 0, "patch": null, "metadata": {"lock": {"id": "pswd"}}})");

    struct Case
    {
        const char* arguments;
        int status;
        const char* text;
    };
    const Case cases[] {
        { "bank swap a.mv_onbank 0", 1, "b is required" },
        { "bank swap a.mv_onbank 0 64", 1, "64" },
        { "bank copy a.mv_onbank -1 b.mv_onbank 0", 1, "from-slot" },
        { "bank copy a.mv_onbank 1 b.mv_onbank 0", 2, "Error:  Invalid or corrupt patch." },
        { "bank copy a.mv_onbank 0 none.mv_onbank 0", 2, "File does not exist." },
        { "bank swap junk 0 1", 2, "File" },
        { "bank diff a.mv_onbank", 1, "b is required" },
        { "bank diff a.mv_onbank junk", 2, "File" },
        { "bank explode a.mv_onbank", 1, "--output" },
        { "bank explode junk -o x", 2, "File" },
        { "bank build nopatch.json -o x", 2, "/slots/0/patch" },
        { "bank build key.json -o x", 2, "/slots/0/pane: expected one of the keys \"slot\"" },
        { "bank build twice.json -o x", 2, "/slots/1/slot: expected each slot once" },
        { "bank build junk.json -o x", 2, "junk: Error:  Invalid patch data." },
        { "bank build comment.json -o x", 2, "/slots/0/comment/id" },
        { "bank build hex.json -o x", 2, "/slots/0/stored" },
        { "bank build empty.json -o x", 2, "/slots/0/metadata/stored" },
        { "bank build lock.json -o x", 2, "/slots/0/metadata/lock/id" },
    };
    const auto a = readFile (folder.file ("a.mv_onbank")), b = readFile (folder.file ("b.mv_onbank"));
    for (const Case& c : cases)
    {
        const Outcome outcome = run (c.arguments);
        EXPECT_EQ (outcome.status, c.status) << c.arguments << "\n" << outcome.err;
        EXPECT_NE (outcome.err.find (c.text), Text::npos) << c.arguments << "\n" << outcome.err;
        EXPECT_TRUE (outcome.out.empty()) << c.arguments;
        EXPECT_FALSE (exists ("x")) << c.arguments;
    }
    EXPECT_EQ (readFile (folder.file ("a.mv_onbank")), a);
    EXPECT_EQ (readFile (folder.file ("b.mv_onbank")), b);
}

} // namespace
} // namespace morvanelab
