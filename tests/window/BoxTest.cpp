// SPDX-License-Identifier: GPL-3.0-or-later
// Presets by their buttons, every box that the window raises, and how boxes are answered.
#include "window/PaintedText.h"
#include "window/WindowRig.h"

#include "banks/MVFileSwap.h"

#include <cstring>

namespace morvanelab::test
{

namespace
{

const ShownBox nameBox { "Enter Preset Name", "", { "Apply", "Cancel" } };

class Boxes : public WindowTest
{
protected:
    void saveAs (const char* name)
    {
        rig.click ("SAVE PRESET AS");
        EXPECT_EQ (rig.box(), nameBox);
        rig.type (name);
        rig.click ("Apply");
    }
    /** Expects a box, and closes it by its one button. */
    void expectTold (const char* title, const char* text, const char* button = "OK")
    {
        EXPECT_EQ (rig.box(), (ShownBox { title, text, { button } }));
        if (rig.look (button) != nullptr)
            rig.click (button);
        EXPECT_EQ (rig.box(), ShownBox {});
    }
    juce::ComboBox& combo() { return rig.as<juce::ComboBox> ("PRESET"); }
};

} // namespace

TEST_F (Boxes, presetsAreSavedChosenAndDeleted)
{
    rig.loadCount (1);
    rig.core().setMasterVolume (0.25);
    rig.settle();
    saveAs ("Quiet");
    EXPECT_EQ (rig.box(), ShownBox {});
    EXPECT_TRUE (rig.files().preset ("Quiet").existsAsFile());
    EXPECT_EQ (combo().getText(), juce::String ("Quiet"));
    EXPECT_TRUE (rig.button ("SAVE PRESET").isEnabled());
    EXPECT_TRUE (rig.button ("CLEAR MAP").isEnabled());

    rig.load (WindowRig::rigBank, slotSine);
    rig.core().setMasterVolume (0.75);
    rig.settle();
    rig.click ("SAVE PRESET AS");
    rig.type ("Loud");
    rig.press (juce::KeyPress::returnKey);
    EXPECT_EQ (combo().getNumItems(), 2);

    rig.click (combo());
    EXPECT_EQ (rig.menu(), (Texts { "Quiet", "Loud *" }));
    rig.choose ("Quiet");
    rig.settle();
    EXPECT_EQ (rig.as<juce::Button> ("PATCH").getButtonText(), juce::String (nameOfCount (1)));
    EXPECT_NEAR (rig.as<juce::Slider> ("OUTPUT VOLUME").getValue(), 0.25, 1e-6);
    EXPECT_EQ (combo().getText(), juce::String ("Quiet"));

    rig.core().setMasterVolume (0.5);
    rig.settle();
    rig.click ("SAVE PRESET");
    EXPECT_EQ (rig.box(), ShownBox {});
    juce::MemoryBlock stored;
    rig.files().preset ("Quiet").loadFileAsData (stored);
    EXPECT_EQ (stored, rig.plugin().state());

    rig.click ("CLEAR MAP");
    EXPECT_FALSE (rig.files().preset ("Quiet").exists());
    EXPECT_EQ (combo().getNumItems(), 1);
    EXPECT_TRUE (paints (combo(), "-----"));
    EXPECT_FALSE (rig.button ("CLEAR MAP").isEnabled());

    rig.restart();
    rig.open();
    ASSERT_EQ (combo().getNumItems(), 1) << "the next day";
    EXPECT_EQ (combo().getItemText (0), juce::String ("Loud"));
}

TEST_F (Boxes, ofPresetsTellWhatWentWrong)
{
    saveAs ("sla/sh");
    expectTold ("Invalid Name", "No valid preset name given.");
    saveAs ("Here");
    EXPECT_EQ (rig.box(), ShownBox {});
    saveAs ("Here");
    expectTold ("Already Loaded", "There is already a preset with that name.  Please select a new name and try again.");
    temporarySiblingOf (rig.files().preset ("New")).getChildFile ("in the way").createDirectory();
    saveAs ("New");
    expectTold ("Save Preset", "Permissions or file path issue, could not save.");
    rig.files().preset ("Here").deleteFile();
    combo().setSelectedItemIndex (-1, juce::dontSendNotification);
    combo().setSelectedItemIndex (0);
    expectTold ("Missing Preset", "The file for this preset seems to be missing!  Cannot load.");
    EXPECT_EQ (combo().getNumItems(), 0);
}

TEST_F (Boxes, ofPatchesTellWhatWentWrong)
{
    rig.loadCount (4);
    SordelinState unknown;
    unknown.bankUuid.fill (7);
    unknown.patchIndex = 3;
    rig.core().setState ({ &unknown, sizeof unknown });
    expectTold ("Missing patch", "Cannot find the patch for this preset.  Check if bank was unloaded.");

    rig.core().loadSelectedPatch(); // nothing is selected
    expectTold ("Patch load failed", "Wrong number of patches.  Select only one.");

    const auto broken = rig.files().home().getChildFile ("Broken.mv_onbank");
    writeBrokenBank (broken.getFullPathName().toStdString());
    rig.plugin().banks().addBankFile (2, broken);
    rig.load (2, 0);
    expectTold ("Patch load failed", "Error:  Invalid patch data.");
    EXPECT_NE (rig.look ("PARAMETER 4"), nullptr) << "the patch before plays on";
}

TEST_F (Boxes, comeOneAfterTheOtherAndTakeAllClicks)
{
    rig.core().getPrompt().tell ("First", "one");
    rig.core().getPrompt().tell ("Second", "two");
    EXPECT_EQ (rig.box().title, "First");
    rig.clickAt (rig.button ("MUTE OUTPUT"), { 4, 4 });
    EXPECT_FALSE (rig.core().outputMuted.load()) << "what lies behind a box cannot be clicked";
    rig.press (juce::KeyPress::escapeKey);
    EXPECT_EQ (rig.box().title, "Second");
    rig.press (juce::KeyPress::returnKey);
    EXPECT_EQ (rig.box(), ShownBox {});
    rig.click ("MUTE OUTPUT");
    EXPECT_TRUE (rig.core().outputMuted.load());
}

TEST_F (Boxes, aLongTextFits)
{
    const std::string text = std::string (400, 'w') + " " + std::string (3000, 'i') + "\n\nend";
    rig.core().getPrompt().tell ("Long", text);
    ASSERT_EQ (rig.box().title, "Long");
    const auto box = rig.placeOf ("BOX");
    EXPECT_TRUE (rig.view().getLocalBounds().contains (box));
    EXPECT_TRUE (box.contains (rig.placeOf ("OK")));
    EXPECT_FALSE (rig.placeOf ("OK").intersects (rig.placeOf ("BOX TEXT")));
    rig.click ("OK");
    EXPECT_EQ (rig.box(), ShownBox {});
}

TEST_F (Boxes, questionsAreDeclinedByEscapeAndByClosingTheWindow)
{
    int asked = 0;
    int agreed = 0;
    const auto ask = [&]
    {
        rig.core().getPrompt().runAsking ("Failed",
                                          [&]
                                          {
                                              ++asked;
                                              agreed += rig.core().getPrompt().askYesNo ("Really", "Sure?") ? 1 : 0;
                                          });
        EXPECT_EQ (rig.box(), (ShownBox { "Really", "Sure?", { "Yes", "No" } }));
    };
    ask();
    rig.click ("Yes");
    EXPECT_EQ (agreed, 1);
    for (const char* way : { "No", "Escape", "close" })
    {
        asked = 0;
        ask();
        if (std::strcmp (way, "No") == 0)
            rig.click ("No");
        else if (std::strcmp (way, "Escape") == 0)
            rig.press (juce::KeyPress::escapeKey);
        else
            rig.close();
        EXPECT_EQ (asked, 1) << way;
        EXPECT_EQ (agreed, 1) << way;
    }
    EXPECT_FALSE (rig.core().getPrompt().isShowing());
    rig.core().getPrompt().tell ("Unseen", "nobody is there");
    rig.open();
    EXPECT_EQ (rig.box(), ShownBox {}) << "neither the closed one nor the unseen one comes back";
}

TEST_F (Boxes, nameIsLostWithTheWindow)
{
    rig.click ("SAVE PRESET AS");
    rig.type ("Half");
    rig.close();
    WindowRig::run (0.1);
    EXPECT_FALSE (rig.files().preset ("Half").exists());
    rig.open();
    EXPECT_EQ (rig.box(), ShownBox {});
    saveAs ("Whole");
    EXPECT_TRUE (rig.files().preset ("Whole").existsAsFile());
}

TEST_F (Boxes, theHostGetsItsKeyboardBack)
{
    EXPECT_EQ (WindowRig::focused(), "");
    for (const char* id : { "MAP MIDI CC", "MAP MIDI CC", "MUTE OUTPUT", "MUTE OUTPUT", "RESET" })
    {
        rig.click (id);
        EXPECT_EQ (WindowRig::focused(), "") << id;
    }
    rig.loadCount (1);
    rig.drag (rig.knob (0), { 0, 10 });
    rig.drop();
    EXPECT_EQ (WindowRig::focused(), "") << "a knob";
    rig.click ("SAVE PRESET AS");
    rig.waitForFocus ("BOX FIELD");
    rig.press (juce::KeyPress::escapeKey);
    EXPECT_EQ (WindowRig::focused(), "") << "the box is gone";
    rig.click ("KEYBOARD");
    rig.waitForFocus ("KEYBOARD");
    rig.press (juce::KeyPress::escapeKey);
    EXPECT_EQ (WindowRig::focused(), "") << "Escape gives it back";
}

} // namespace morvanelab::test
