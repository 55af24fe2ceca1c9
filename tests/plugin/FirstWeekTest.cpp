// SPDX-License-Identifier: GPL-3.0-or-later
// What a new user lives through: first run, a bank of their own, a preset, restarts, a bank that goes and comes back.
#include "plugin/CoreRig.h"

#include <gtest/gtest.h>

namespace morvanelab::test
{

namespace
{

using Boxes = std::vector<std::string>;

Boxes bankNames (CorePlugin& plugin)
{
    Boxes names;
    for (int i = 0; i < plugin.banks().getBankCount(); ++i)
        names.push_back (plugin.banks().getBank (i)->bank.getPath().getFileName().toStdString());
    return names;
}

Boxes presetNames (CorePlugin& plugin)
{
    Boxes names;
    for (const auto& item : plugin.core().getPresetCombo().items)
        names.push_back (item.toStdString());
    return names;
}

} // namespace

TEST (NewUser, losesNothingFromFirstRunToTheBankThatCameBack)
{
    const CoreRig rig;
    rig.home().deleteRecursively();
    const auto mine = rig.writeBank ("Mine.mv_onbank");
    const auto elsewhere = rig.writeBank ("unused").getSiblingFile ("Moved.mv_onbank");
    juce::MemoryBlock project;
    std::vector<float> sound;

    { // The first run finds the bank beside the plug-in. The home is new, so host notes do not play yet.
        auto plugin = rig.open();
        EXPECT_EQ (bankNames (*plugin), Boxes { "Rig.mv_onbank" });
        EXPECT_EQ (plugin->user.takeBoxes(), Boxes {});
        plugin->core().setState (stateFor (*plugin, 0, slotSine));
        EXPECT_EQ (pitchOf (plugin->playNote()), 0.0);
        plugin->core().setPlayHostNotes (true);
        plugin->core().setPlayMode (SordelinSettings::polyMode);
        EXPECT_NEAR (pitchOf (plugin->playNote()), sinePitch, pitchTolerance);

        plugin->core().getPrompt().runAsking ("Bank Librarian", [&] { plugin->banks().addBankFile (1, mine); });
        plugin->core().setState (stateFor (*plugin, 1, slotSquare));
        plugin->user.willType ("My Square");
        plugin->core().savePresetAs();
        plugin->user.takeBoxes();
        EXPECT_EQ (presetNames (*plugin), Boxes { "My Square" });
        project = plugin->state();
    }
    { // Tomorrow everything is there, the project of the host too.
        auto plugin = rig.open (false);
        plugin->core().setState (project);
        plugin->start();
        EXPECT_EQ (bankNames (*plugin), (Boxes { "Rig.mv_onbank", "Mine.mv_onbank" }));
        EXPECT_EQ (plugin->core().getPresetCombo().selected, 0);
        EXPECT_EQ (plugin->core().getPatchName(), "Rig Square");
        sound = plugin->playNote();
        EXPECT_NEAR (pitchOf (sound), squarePitch, pitchTolerance);
        EXPECT_EQ (plugin->user.takeBoxes(), Boxes {});
    }
    { // The bank moves while the plug-in is closed: it leaves the list, the preset stays and says what is missing.
        ASSERT_TRUE (mine.moveFileTo (elsewhere));
        auto plugin = rig.open();
        EXPECT_EQ (bankNames (*plugin), Boxes { "Rig.mv_onbank" });
        EXPECT_EQ (presetNames (*plugin), Boxes { "My Square" });
        plugin->core().setState (stateFor (*plugin, 0, slotSine));
        plugin->core().applyPreset (0);
        EXPECT_EQ (plugin->user.takeBoxes(),
                   Boxes { "Missing patch|Cannot find the patch for this preset.  Check if bank was unloaded.|OK" });
        EXPECT_NEAR (pitchOf (plugin->playNote()), sinePitch, pitchTolerance) << "what played plays on";
        EXPECT_EQ (presetNames (*plugin), Boxes { "My Square" });
    }
    { // Put back and added again, it is a bank like a new one; the first run does not come again.
        ASSERT_TRUE (elsewhere.moveFileTo (mine));
        auto plugin = rig.open();
        EXPECT_EQ (bankNames (*plugin), Boxes { "Rig.mv_onbank" });
        plugin->core().getPrompt().runAsking ("Bank Librarian", [&] { plugin->banks().addBankFile (1, mine); });
        plugin->core().applyPreset (0);
        EXPECT_EQ (plugin->user.takeBoxes().size(), 1U) << "an identity of its own";
        plugin->core().loadPatch (1, slotSquare);
        EXPECT_EQ (plugin->playNote(), sound);
        plugin->core().savePreset();
        plugin->core().setState (stateFor (*plugin, 0, slotSine));
        plugin->core().applyPreset (0);
        EXPECT_EQ (plugin->user.takeBoxes(), Boxes {}) << "saved anew, the preset finds its bank";
        EXPECT_NEAR (pitchOf (plugin->playNote()), squarePitch, pitchTolerance);
    }
}

} // namespace morvanelab::test
