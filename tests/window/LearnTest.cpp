// SPDX-License-Identifier: GPL-3.0-or-later
// MIDI controllers: learned, shown, kept, taken away.
#include "window/PaintedText.h"
#include "window/WindowRig.h"

#include <cmath>

namespace morvanelab::test
{

namespace
{

class Learn : public WindowTest
{
protected:
    void learn (int slot, const juce::MidiMessage& message)
    {
        rig.click ("MAP MIDI CC");
        rig.click (rig.knob (slot));
        EXPECT_EQ (rig.view().waitingKnob(), &rig.knob (slot));
        rig.send (message);
        EXPECT_TRUE (WindowRig::runUntil ([this] { return rig.view().waitingKnob() == nullptr; }));
        rig.click ("MAP MIDI CC");
    }
    static juce::MidiMessage controller (int number, int value, int channel = 1)
    {
        return juce::MidiMessage::controllerEvent (channel, number, value);
    }
    bool movesTo (int slot, double value)
    {
        return WindowRig::runUntil (
            [&]
            {
                rig.settle();
                return std::abs (rig.knob (slot).getValue() - value) < 1e-6;
            },
            3.0);
    }
};

} // namespace

TEST_F (Learn, controllerMovesTheSliderAndShowsOnIt)
{
    rig.loadCount (4);
    EXPECT_FALSE (paints (rig.knob (1), "CC"));
    learn (1, controller (74, 90));
    EXPECT_TRUE (paints (rig.knob (1), "CC 74"));
    EXPECT_FALSE (paints (rig.knob (0), "CC"));
    learn (2, controller (7, 0, 3));
    EXPECT_TRUE (paints (rig.knob (2), "CC 7 / 3"));

    rig.send (controller (74, 127));
    EXPECT_TRUE (movesTo (1, 1.0));
    rig.send (controller (74, 0));
    EXPECT_TRUE (movesTo (1, 0.0));
    rig.send (controller (74, 127, 2));
    rig.settle();
    EXPECT_TRUE (movesTo (1, 0.0)) << "another channel";

    rig.click (rig.knob (1), juce::ModifierKeys::rightButtonModifier);
    rig.choose ("Unmap CC 74");
    EXPECT_FALSE (paints (rig.knob (1), "CC"));
    rig.send (controller (74, 127));
    rig.settle();
    EXPECT_TRUE (movesTo (1, 0.0)) << "unmapped";
    EXPECT_TRUE (paints (rig.knob (2), "CC 7 / 3")) << "the others stay";

    rig.click ("MENU");
    rig.choose ("Clear all MIDI mappings");
    EXPECT_FALSE (paints (rig.knob (2), "CC"));
    EXPECT_TRUE (rig.view().mappings().empty());
}

TEST_F (Learn, notesStartNothingMeanwhile)
{
    rig.load (WindowRig::rigBank, slotSine);
    rig.click ("MAP MIDI CC");
    EXPECT_TRUE (rig.core().midiMappingActive.load());
    rig.click (rig.knob (0));
    EXPECT_EQ (rig.host().take(), Texts {}) << "the click chooses, it does not turn";
    rig.send (juce::MidiMessage::noteOn (1, 69, 1.0F));
    WindowRig::run (0.1);
    EXPECT_LT (peakOf (rig.plugin().render (4 * 512)), 1e-6);
    EXPECT_NE (rig.view().waitingKnob(), nullptr) << "a note is no controller";
    rig.click ("MAP MIDI CC");
    EXPECT_FALSE (rig.core().midiMappingActive.load());
    EXPECT_EQ (rig.view().waitingKnob(), nullptr);
    rig.send (juce::MidiMessage::noteOn (1, 69, 1.0F));
    EXPECT_GT (peakOf (rig.plugin().render (4 * 512)), 0.05);
}

TEST_F (Learn, endsWithTheWindow)
{
    rig.loadCount (1);
    rig.click ("MAP MIDI CC");
    rig.click (rig.knob (0));
    rig.close();
    EXPECT_FALSE (rig.core().midiMappingActive.load()) << "or the plug-in would be deaf behind a closed window";
    rig.open();
    EXPECT_FALSE (rig.button ("MAP MIDI CC").getToggleState());
    EXPECT_EQ (rig.view().waitingKnob(), nullptr);
}

TEST_F (Learn, stateCarriesTheMappingsOver)
{
    rig.loadCount (5);
    learn (3, controller (21, 1, 16));
    const auto state = rig.plugin().state();
    rig.restart();
    rig.open();
    rig.core().setState (state);
    rig.settle();
    EXPECT_TRUE (paints (rig.knob (3), "CC 21 / 16"));
    rig.send (controller (21, 127, 16));
    EXPECT_TRUE (movesTo (3, 1.0));

    rig.plugin().start (48000.0); // another engine
    rig.settle();
    EXPECT_TRUE (paints (rig.knob (3), "CC 21 / 16"));
    rig.send (controller (21, 0, 16));
    EXPECT_TRUE (movesTo (3, 0.0));
}

} // namespace morvanelab::test
