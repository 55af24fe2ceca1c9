// SPDX-License-Identifier: GPL-3.0-or-later
// Machines without a display: everything but seeing works.
#include "window/PaintedText.h"
#include "window/WindowRig.h"

#include <cstdlib>

namespace morvanelab::test
{

namespace
{

/** Takes the display away from what is made after it. */
struct WithoutDisplay
{
    WithoutDisplay()
    {
        if (const char* name = std::getenv ("DISPLAY"))
            display = name;
        unsetenv ("DISPLAY");
    }
    ~WithoutDisplay()
    {
        if (! display.empty())
            setenv ("DISPLAY", display.c_str(), 1);
    }

    std::string display;
};

class Headless : public testing::Test
{
protected:
    WithoutDisplay none;
    WindowRig rig;
};

} // namespace

TEST_F (Headless, windowIsMadeFollowsThePatchAndGoes)
{
    for (int round = 0; round < 3; ++round)
    {
        rig.open (false);
        EXPECT_EQ (rig.window().getWidth(), 960);
        EXPECT_EQ (rig.window().getHeight(), 480);
        rig.loadCount (5);
        EXPECT_NE (rig.look ("PARAMETER 5"), nullptr);
        EXPECT_EQ (rig.look ("PARAMETER 6"), nullptr);
        EXPECT_TRUE (paints (rig.view(), knobName (4)));
        rig.view().setZoom (200);
        EXPECT_EQ (rig.window().getWidth(), 1920);
        rig.view().setZoom (100);
        rig.close();
    }
}

TEST_F (Headless, stateComesAndGoesWithTheWindowMade)
{
    rig.open (false);
    rig.loadCount (4);
    rig.core().setMasterVolume (0.5);
    rig.core().setSlotValue (1, 0.25);
    rig.core().setVisualiser (SordelinMainComponent::visualiserSpectrum);
    rig.settle();
    const auto before = rig.plugin().fields();
    const auto state = rig.plugin().state();
    ASSERT_EQ (state.getSize(), 320U);
    rig.restart();
    rig.core().setState (state);
    rig.open (false);
    rig.settle();
    const auto again = rig.plugin().fields();
    EXPECT_EQ (again.bankUuid, before.bankUuid);
    EXPECT_EQ (again.patchIndex, before.patchIndex);
    EXPECT_EQ (again.midiControllers, before.midiControllers);
    EXPECT_EQ (again.visualiser, before.visualiser);
    EXPECT_NEAR (again.outputVolume, 0.5, 1e-6);
    EXPECT_NEAR (again.parameterValues[1], 0.25, 1e-6);
    EXPECT_EQ (rig.as<juce::Button> ("PATCH").getButtonText(), juce::String (nameOfCount (4)));
}

TEST_F (Headless, nobodyIsAskedWhereNobodySees)
{
    rig.open (false);
    rig.core().getPrompt().tell ("Unseen", "text");
    WindowRig::run (0.05);
    EXPECT_EQ (rig.box(), ShownBox {});
    EXPECT_FALSE (rig.core().getPrompt().isShowing());
}

} // namespace morvanelab::test
