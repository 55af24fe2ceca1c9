// SPDX-License-Identifier: GPL-3.0-or-later
// The user's presets: saved, listed, applied, deleted, missing, badly named, on a disk that fails.
#include "plugin/CoreRig.h"

#include "banks/MVFileSwap.h"
#include "banks/SordelinPresetFile.h"

#include <gtest/gtest.h>

#include <cstring>

namespace morvanelab::test
{

namespace
{

using Boxes = std::vector<std::string>;

const Boxes nameBox { "Enter Preset Name||Apply/Cancel" };
const std::string invalidBox = "Invalid Name|No valid preset name given.|OK";
const std::string writeBox = "Save Preset|Permissions or file path issue, could not save.|OK";
const std::string missingBox = "Missing Preset|The file for this preset seems to be missing!  Cannot load.|OK";

/** Runs SAVE PRESET AS to its end; what came up after the name was typed. */
Boxes saveAs (CorePlugin& plugin, const char* utf8Name)
{
    plugin.user.willType (utf8Name);
    plugin.core().savePresetAs();
    auto boxes = plugin.user.takeBoxes();
    EXPECT_FALSE (boxes.empty());
    EXPECT_EQ (boxes.front(), nameBox.front());
    boxes.erase (boxes.begin());
    return boxes;
}

Boxes items (CorePlugin& plugin)
{
    Boxes names;
    for (const auto& item : plugin.core().getPresetCombo().items)
        names.push_back (item.toStdString());
    return names;
}

/** Selected item and whether the buttons are enabled. */
std::pair<int, bool> selection (CorePlugin& plugin)
{
    const auto combo = plugin.core().getPresetCombo();
    return { combo.selected, combo.buttonsEnabled };
}

/** A folder that is not empty where the next contents of a file would be prepared: no user, not even root, can then
    write the file. */
void obstruct (const juce::File& file) { temporarySiblingOf (file).getChildFile ("in the way").createDirectory(); }

class Presets : public testing::Test
{
protected:
    Presets() : plugin (rig.open()) { plugin->core().setState (stateFor (*plugin, 0, slotSine)); }

    void restart()
    {
        plugin.reset();
        plugin = rig.open();
    }
    juce::MemoryBlock bytesOf (const char* name) const
    {
        juce::MemoryBlock bytes;
        rig.preset (name).loadFileAsData (bytes);
        return bytes;
    }

    CoreRig rig;
    std::unique_ptr<CorePlugin> plugin;
};

} // namespace

TEST_F (Presets, savedOneIsTheStateAndComesBackWithItsSound)
{
    EXPECT_NEAR (pitchOf (plugin->playNote()), sinePitch, pitchTolerance);
    EXPECT_EQ (selection (*plugin), std::pair (-1, false));
    EXPECT_EQ (saveAs (*plugin, "Sine"), Boxes {});
    EXPECT_EQ (selection (*plugin), std::pair (0, true));
    EXPECT_EQ (bytesOf ("Sine").getSize(), 320U);

    plugin->core().setState (stateFor (*plugin, 0, slotSquare));
    EXPECT_EQ (saveAs (*plugin, "Square"), Boxes {});
    EXPECT_EQ (items (*plugin), (Boxes { "Sine", "Square" }));
    EXPECT_EQ (plugin->fields().presetItem, 1);

    restart();
    EXPECT_EQ (items (*plugin), (Boxes { "Sine", "Square" }));
    EXPECT_EQ (selection (*plugin), std::pair (-1, false));
    plugin->core().applyPreset (0);
    EXPECT_NEAR (pitchOf (plugin->playNote()), sinePitch, pitchTolerance);
    EXPECT_EQ (selection (*plugin), std::pair (0, true)) << "though item -1 was selected when it was saved";
    plugin->core().applyPreset (1);
    EXPECT_NEAR (pitchOf (plugin->playNote()), squarePitch, pitchTolerance);
    EXPECT_EQ (plugin->user.takeBoxes(), Boxes {});
}

TEST_F (Presets, namesAreTakenOrRefused)
{
    const std::string tooLong (255, 'n');
    const Boxes refused { "", "   ", "quo\"te", "arrow>", "sla/sh", "back\\slash", "tab\t", "del\x7F", tooLong };
    for (const auto& name : refused)
        EXPECT_EQ (saveAs (*plugin, name.c_str()), Boxes { invalidBox }) << name;
    EXPECT_EQ (items (*plugin), Boxes {});
    EXPECT_EQ (rig.home().getNumberOfChildFiles (juce::File::findFiles, "*.sord_preset"), 0);

    const Boxes taken { "Drum & Bass", "Ünïcödé Жук 音", "~tilde",      "..",
                        "a<b",         "it's 100% ^`;=", "&amp; &#65;", "dot.dot" };
    for (const auto& name : taken)
        EXPECT_EQ (saveAs (*plugin, name.c_str()), Boxes {}) << name;
    EXPECT_EQ (rig.home().getNumberOfChildFiles (juce::File::findFiles, "*.sord_preset"), 8);
    EXPECT_EQ (items (*plugin), taken);
    restart();
    EXPECT_EQ (items (*plugin), taken) << "as read from disk";

    EXPECT_EQ (saveAs (*plugin, "Drum & Bass"),
               Boxes { "Already Loaded|There is already a preset with that name.  Please select a new name and try "
                       "again.|OK" });
    EXPECT_EQ (items (*plugin), taken);
}

TEST_F (Presets, cancelledOrUnseenDialogSavesNothing)
{
    plugin->core().savePresetAs(); // declined
    EXPECT_EQ (plugin->user.takeBoxes(), nameBox);
    plugin->core().getPrompt().setShowing (false);
    plugin->user.willType ("Unseen");
    plugin->core().savePresetAs();
    EXPECT_EQ (plugin->user.takeBoxes(), Boxes {});
    EXPECT_EQ (items (*plugin), Boxes {});
}

TEST_F (Presets, saveWritesOverTheSelectedOne)
{
    saveAs (*plugin, "One");
    saveAs (*plugin, "Two");
    const auto one = bytesOf ("One");
    plugin->core().setMasterVolume (0.25);
    plugin->core().savePreset();
    EXPECT_EQ (plugin->user.takeBoxes(), Boxes {});
    EXPECT_EQ (bytesOf ("Two"), plugin->state());
    EXPECT_EQ (bytesOf ("One"), one);

    plugin->core().applyPreset (-1);
    EXPECT_EQ (selection (*plugin), std::pair (-1, false));
    rig.preset ("Two").deleteFile();
    plugin->core().savePreset();
    EXPECT_FALSE (rig.preset ("Two").exists()) << "nothing was selected";
    plugin->core().deletePreset();
    EXPECT_EQ (items (*plugin), (Boxes { "One", "Two" }));
}

TEST_F (Presets, deleteTakesTheFileToo)
{
    saveAs (*plugin, "One");
    saveAs (*plugin, "Two");
    plugin->core().applyPreset (0);
    plugin->core().deletePreset();
    EXPECT_EQ (items (*plugin), Boxes { "Two" });
    EXPECT_EQ (selection (*plugin), std::pair (-1, false));
    EXPECT_FALSE (rig.preset ("One").exists());
    plugin->core().applyPreset (0);
    plugin->core().deletePreset();
    EXPECT_EQ (items (*plugin), Boxes {});
    restart();
    EXPECT_EQ (items (*plugin), Boxes {});
}

TEST_F (Presets, missingOneLeavesTheListAndTheSound)
{
    saveAs (*plugin, "Gone");
    saveAs (*plugin, "Here");
    rig.preset ("Gone").deleteFile();
    plugin->core().applyPreset (0);
    EXPECT_EQ (plugin->user.takeBoxes(), Boxes { missingBox });
    EXPECT_EQ (items (*plugin), Boxes { "Here" });
    EXPECT_EQ (selection (*plugin), std::pair (-1, false));
    EXPECT_NEAR (pitchOf (plugin->playNote()), sinePitch, pitchTolerance);
    restart();
    EXPECT_EQ (plugin->core().loadPresetList(), 1) << "the list on disk no longer names it";
}

TEST_F (Presets, fileOfAnySizeIsTaken)
{
    saveAs (*plugin, "Sized");
    const auto whole = bytesOf ("Sized");
    for (const std::size_t size : { 0U, 12U, 319U, 320U, 1000U })
    {
        juce::MemoryBlock bytes (size, true);
        if (size > 0)
            bytes.fillWith (0x55);
        bytes.copyFrom (whole.getData(), 0, std::min<std::size_t> (size, 320));
        ASSERT_TRUE (replaceFileContents (rig.preset ("Sized"), bytes.getData(), bytes.getSize()));
        plugin->core().applyPreset (0);
        EXPECT_EQ (plugin->user.takeBoxes().size(), size < 48 ? 1U : 0U) << "no identity, no bank: " << size;
        EXPECT_EQ (plugin->fields().outputVolume, size < 32 ? 0.0 : 1.0) << size;
    }
}

TEST_F (Presets, failingDiskLeavesTheOldFileAndTellsSo)
{
    saveAs (*plugin, "Old");
    const auto old = bytesOf ("Old");
    plugin->core().setMasterVolume (0.25);
    obstruct (rig.preset ("Old"));
    plugin->core().savePreset();
    EXPECT_EQ (plugin->user.takeBoxes(), Boxes { writeBox });
    EXPECT_EQ (bytesOf ("Old"), old);

    obstruct (rig.preset ("New"));
    EXPECT_EQ (saveAs (*plugin, "New"), Boxes { writeBox });
    EXPECT_EQ (items (*plugin), Boxes { "Old" }) << "what is not on disk is not listed";
    EXPECT_FALSE (rig.preset ("New").exists());
}

TEST_F (Presets, listTellsItsLastProblem)
{
    saveAs (*plugin, "Real");
    saveAs (*plugin, "R&B ü"); // listed with entities in files where the document was stored as XML
    const auto entry = "<preset_file path=\"" + rig.preset ("Real").getFullPathName() + "\">\n</preset_file>\n";
    const auto list = [] (const juce::String& entries)
    { return "<xml_wrapper>\n<saved_presets>\n" + entries + "</saved_presets>\n</xml_wrapper>\n"; };
    struct Case
    {
        juce::String text;
        int code;
        Boxes names;
    };
    const Case cases[] {
        { "", 1, {} },
        { "<xml_wrapper>\n</xml_wrapper>\n", 1, {} },
        { list (entry), 1, { "Real" } },
        { list ("<preset_file>\n</preset_file>\n" + entry), 15, { "Real" } },
        { list ("<preset_file path=\"\">\n</preset_file>\n" + entry), 15, { "Real" } },
        { list (entry + "<preset_file path=\"/nowhere/Lost.sord_preset\">\n</preset_file>\n"), 34, { "Real" } },
        { list (entry + "<preset_file path=\"Relative.sord_preset\">\n</preset_file>\n"), 34, { "Real" } },
        { list ("<preset_file path=\"" + rig.preset ("R&amp;B &#252;").getFullPathName() + "\"/>\n"), 1, { "R&B ü" } },
        { list ("<other />\n" + entry), 1, { "Real" } },
    };
    for (const auto& each : cases)
    {
        plugin->core().getShelf().getProperties().setString ("presets_list", each.text);
        EXPECT_EQ (plugin->core().loadPresetList(), each.code) << each.text;
        EXPECT_EQ (items (*plugin), each.names) << each.text;
    }
}

TEST_F (Presets, damagedListIsKeptAside)
{
    saveAs (*plugin, "Before");
    const auto aside = rig.home().getChildFile ("presets_list_bak.xml");
    const auto damaged = juce::String ("<xml_wrapper>\n<saved_presets>\n<preset_file path=\"")
                         + juce::String::repeatedString ("x", 5000) + "\">\n</preset_file>\n";
    plugin->core().getShelf().getProperties().setString ("presets_list", damaged);

    aside.getChildFile ("in the way").createDirectory();
    EXPECT_EQ (plugin->core().loadPresetList(), 14);
    EXPECT_EQ (saveAs (*plugin, "Refused"), Boxes { writeBox });
    plugin->core().savePresetList();
    EXPECT_EQ (plugin->user.takeBoxes(),
               Boxes { "Save Preset|The list of presets is damaged and could not be kept aside, could not save.|OK" });
    EXPECT_EQ (plugin->core().getShelf().getProperties().getString ("presets_list"), damaged) << "it is all there is";

    aside.deleteRecursively();
    EXPECT_EQ (plugin->core().loadPresetList(), 14);
    EXPECT_EQ (aside.loadFileAsString(), damaged);
    EXPECT_EQ (saveAs (*plugin, "After"), Boxes {});
    restart();
    EXPECT_EQ (items (*plugin), Boxes { "After" });
}

TEST_F (Presets, twoInstancesKeepWhatTheOtherHasSaved)
{
    const auto other = rig.open();
    saveAs (*plugin, "Mine");
    saveAs (*other, "Theirs");
    EXPECT_EQ (items (*other), (Boxes { "Mine", "Theirs" }));
    EXPECT_EQ (saveAs (*plugin, "Third"), Boxes {});
    EXPECT_EQ (items (*plugin), (Boxes { "Mine", "Theirs", "Third" }));

    other->core().applyPreset (0);
    other->core().deletePreset();
    EXPECT_EQ (items (*other), (Boxes { "Theirs", "Third" }));
    EXPECT_EQ (selection (*plugin).first, 2);
    saveAs (*plugin, "Fourth");
    EXPECT_EQ (items (*plugin), (Boxes { "Theirs", "Third", "Fourth" })) << "what was deleted stays deleted";
}

TEST_F (Presets, listAndSelectionOutliveANewEngine)
{
    saveAs (*plugin, "One");
    saveAs (*plugin, "Two");
    saveAs (*plugin, "Three");
    plugin->core().applyPreset (1);
    plugin->start (48000.0);
    EXPECT_EQ (items (*plugin), (Boxes { "One", "Two", "Three" }));
    EXPECT_EQ (selection (*plugin), std::pair (1, true));

    rig.preset ("One").deleteFile();
    plugin->start (44100.0);
    EXPECT_EQ (selection (*plugin), std::pair (0, true)) << "the selection stays with its file";
}

} // namespace morvanelab::test
