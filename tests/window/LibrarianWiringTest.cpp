// SPDX-License-Identifier: GPL-3.0-or-later
// The librarian inside the window: it comes up, finds, loads, and goes.
#include "window/WindowRig.h"

#include "ui/MVSlotGrid.h"

namespace morvanelab::test
{

namespace
{

class Librarian : public WindowTest
{
protected:
    juce::String patchName() { return rig.as<juce::Button> ("PATCH").getButtonText(); }
    bool comes (int parameters)
    {
        return WindowRig::runUntil (
            [&]
            {
                rig.settle();
                return patchName() == juce::String (nameOfCount (parameters));
            },
            3.0);
    }
};

} // namespace

TEST_F (Librarian, comesUpFindsLoadsAndGoes)
{
    EXPECT_EQ (rig.look ("librarian"), nullptr);
    rig.click ("SHOW BANK LIBRARIAN");
    auto& window = rig.find ("librarian");
    EXPECT_EQ (window.getName(), juce::String ("Bank Librarian"));
    EXPECT_EQ (window.getWidth(), 550);
    EXPECT_EQ (window.getHeight(), 400);
    EXPECT_TRUE (rig.view().getLocalBounds().contains (rig.placeOf ("librarian")));

    auto& slots = rig.as<MVSlotGrid> ("librarian_slots");
    rig.clickAt (slots, slots.boundsOfSlot (slotOfCount (4)).getCentre(), 2);
    EXPECT_TRUE (comes (4)) << "by double-click";
    EXPECT_NE (rig.look ("PARAMETER 4"), nullptr);
    rig.press (juce::KeyPress::escapeKey);

    rig.focus ("librarian_search");
    rig.type ("count 16");
    rig.press (juce::KeyPress::returnKey);
    EXPECT_TRUE (comes (16)) << "by Return in the search";
    EXPECT_EQ (WindowRig::focused(), "") << "the host has its keyboard back";

    rig.click ("SHOW BANK LIBRARIAN");
    EXPECT_EQ (rig.look ("librarian"), nullptr);
}

TEST_F (Librarian, patchesAreDraggedOntoTheWindow)
{
    rig.click ("SHOW BANK LIBRARIAN");
    auto& slots = rig.as<MVSlotGrid> ("librarian_slots");
    auto& target = rig.find ("DISPLAY");
    const auto from = slots.boundsOfSlot (slotOfCount (5)).getCentre();
    const auto to = slots.getLocalPoint (&target, target.getLocalBounds().getCentre());
    rig.dragFrom (slots, from, to - from);
    WindowRig::run (0.1);
    EXPECT_TRUE (rig.view().isDragAndDropActive());
    rig.drop();
    EXPECT_TRUE (comes (5));
    EXPECT_TRUE (WindowRig::runUntil ([this] { return ! rig.view().isDragAndDropActive(); }));

    rig.dragFrom (slots, slots.boundsOfSlot (slotOfCount (1)).getCentre(), to - from);
    rig.close(); // in the middle of it
    rig.open();
    rig.drop();
    rig.settle();
    EXPECT_EQ (patchName(), juce::String (nameOfCount (5)));
}

TEST_F (Librarian, arrowsWalkWhatTheSearchShows)
{
    rig.click ("SHOW BANK LIBRARIAN");
    rig.focus ("librarian_search");
    rig.type ("count");
    rig.loadCount (0);
    for (const int next : { 1, 4, 5, 16, 0 })
    {
        rig.click ("NEXT PATCH");
        EXPECT_TRUE (comes (next)) << next;
    }
    rig.click ("PREVIOUS PATCH");
    EXPECT_TRUE (comes (16));
    EXPECT_EQ (rig.box(), ShownBox {});
}

TEST_F (Librarian, arrowsWorkBeforeItWasEverOpen)
{
    rig.click ("NEXT PATCH");
    rig.settle();
    const auto first = patchName();
    EXPECT_NE (first, juce::String ("-----"));
    rig.click ("NEXT PATCH");
    rig.settle();
    EXPECT_NE (patchName(), first);
}

} // namespace morvanelab::test
