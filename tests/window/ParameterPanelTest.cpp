// SPDX-License-Identifier: GPL-3.0-or-later
// Parameter sliders: which show, where they stand, and what host and engine learn of them.
#include "window/PaintedText.h"
#include "window/WindowRig.h"

#include "ui/MVSectionPanel.h"

#include <algorithm>
#include <cmath>

namespace morvanelab::test
{

namespace
{

constexpr int nameHeight = 18; ///< below a dial

class Parameters : public WindowTest
{
protected:
    /** The knobs that show, by slot. */
    std::vector<MVKnob*> knobs()
    {
        std::vector<MVKnob*> shown;
        for (int slot = 0; slot < hostParameterCount; ++slot)
            if (auto* knob = rig.look ("PARAMETER " + juce::String (slot + 1)))
                shown.push_back (dynamic_cast<MVKnob*> (knob));
        return shown;
    }
    juce::Component& panel() { return *rig.find ("PARAMETER 1").getParentComponent(); }
    /** The panel, found also while no knob shows. */
    juce::Component& anyPanel()
    {
        for (auto* child : rig.view().getChildren())
            if (child->getName() == "PARAMETERS")
                return *child;
        throw std::runtime_error ("no parameter panel");
    }

    /** Checks rows, steps and sizes of the knobs against the rule. */
    void expectGrid (int count, int inFirstRow)
    {
        const auto shown = knobs();
        ASSERT_EQ (static_cast<int> (shown.size()), count);
        const int rows = inFirstRow < count ? 2 : 1;
        const auto place = [&] (int index) { return shown[static_cast<std::size_t> (index)]->getBounds(); };
        const int pitch =
            inFirstRow > 1 ? place (1).getX() - place (0).getX() : sectionContent (panel().getLocalBounds()).getWidth();
        const double limit = (rows == 1 ? 0.6 : 0.4) * panel().getHeight();
        const int dial = static_cast<int> (std::lround (0.9 * std::min (static_cast<double> (pitch), limit)));
        for (int i = 0; i < count; ++i)
        {
            const auto knob = place (i);
            EXPECT_EQ (knob.getY(), place (i < inFirstRow ? 0 : inFirstRow).getY()) << i;
            EXPECT_EQ (knob.getX(), place (0).getX() + i % inFirstRow * pitch) << i;
            EXPECT_EQ (knob.getHeight(), dial + nameHeight) << i;
            EXPECT_GE (knob.getWidth(), std::min (dial, pitch - 8)) << i;
            EXPECT_TRUE (panel().getLocalBounds().contains (knob)) << i;
        }
        EXPECT_TRUE (rows == 1 || place (count - 1).getY() >= place (0).getBottom());
    }
};

} // namespace

TEST_F (Parameters, slidersOfEveryCountStandByTheRule)
{
    struct Case
    {
        int count;
        int inFirstRow;
    };
    struct Size
    {
        int width;
        int height;
    };
    constexpr Case cases[] { { 1, 1 }, { 4, 4 }, { 5, 3 }, { 16, 8 } };
    constexpr Size sizes[] { { 960, 480 }, { 1600, 500 }, { 800, 1100 } };
    for (const auto& each : cases)
    {
        rig.loadCount (each.count);
        for (const auto& size : sizes)
        {
            SCOPED_TRACE (std::to_string (each.count) + " at " + std::to_string (size.width) + " x "
                          + std::to_string (size.height));
            rig.window().setSize (size.width, size.height);
            expectGrid (each.count, each.inFirstRow);
        }
        const auto shown = knobs();
        for (std::size_t i = 0; i < shown.size(); ++i)
        {
            EXPECT_EQ (shown[i]->getTooltip(), juce::String (knobText (static_cast<int> (i))));
            EXPECT_TRUE (shown[i]->isEnabled());
            EXPECT_TRUE (paints (*shown[i], knobName (static_cast<int> (i)))) << i;
        }
        EXPECT_FALSE (paints (anyPanel(), "(No Parameters)"));
        EXPECT_EQ (rig.as<juce::Button> ("PATCH").getButtonText(), juce::String (nameOfCount (each.count)));
    }
}

TEST_F (Parameters, onlyEnabledSlotsShow)
{
    rig.load (WindowRig::rigBank, slotSine); // its second parameter is heard nowhere
    EXPECT_NE (rig.look ("PARAMETER 1"), nullptr);
    EXPECT_EQ (rig.look ("PARAMETER 2"), nullptr);
    EXPECT_NE (rig.look ("PARAMETER 3"), nullptr);
    EXPECT_EQ (rig.knob (0).getTooltip(), juce::String ("How loud the sine is"));
    EXPECT_EQ (rig.knob (2).getTooltip(), juce::String ("-----")) << "an empty description";
}

TEST_F (Parameters, placesDependOnTheWindowAlone)
{
    rig.loadCount (4);
    struct Size
    {
        int width;
        int height;
    };
    for (const auto size : { Size { 960, 480 }, Size { 760, 400 }, Size { 1311, 777 } })
    {
        rig.window().setSize (size.width, size.height);
        ASSERT_EQ (rig.view().getWidth(), size.width);
        const auto panelPlace = anyPanel().getBounds();
        EXPECT_EQ (panelPlace.getX(), 305);
        EXPECT_EQ (panelPlace.getHeight(), size.height - 45);
        const auto keys = rig.placeOf ("KEYBOARD");
        EXPECT_EQ (keys.getWidth(), size.width - 310);
        EXPECT_EQ (keys.getHeight(), 43);
        EXPECT_GE (keys.getY(), panelPlace.getBottom());
        struct Place
        {
            const char* id;
            int fromRight;
            int width;
        };
        for (const auto& place : { Place { "SAVE PRESET", 244, 0 }, Place { "SAVE PRESET AS", 222, 0 },
                                   Place { "PRESET", 200, 170 }, Place { "CLEAR MAP", 27, 0 } })
        {
            const auto control = rig.placeOf (place.id);
            EXPECT_EQ (control.getX(), size.width - place.fromRight) << place.id;
            EXPECT_EQ (control.getY(), 3) << place.id;
            EXPECT_EQ (control.getHeight(), 22) << place.id;
            EXPECT_TRUE (place.width == 0 || control.getWidth() == place.width) << place.id;
        }
    }
}

TEST_F (Parameters, whatIsMissingIsTold)
{
    EXPECT_TRUE (paints (anyPanel(), "(No Parameters)"));
    EXPECT_EQ (rig.as<juce::Button> ("PATCH").getButtonText(), juce::String ("-----"));
    EXPECT_EQ (rig.look ("KEYBOARD"), nullptr);
    EXPECT_FALSE (paints (rig.view(), "Loaded patch not keyboard enabled.")) << "there is none";

    rig.loadCount (0);
    EXPECT_TRUE (paints (anyPanel(), "(No Parameters)"));
    EXPECT_TRUE (rig.find ("KEYBOARD").isEnabled());

    rig.load (WindowRig::rigBank, slotInput);
    EXPECT_EQ (rig.look ("KEYBOARD"), nullptr);
    EXPECT_TRUE (paints (rig.view(), "Loaded patch not keyboard enabled."));
    const auto picture = rig.view().createComponentSnapshot (rig.view().getLocalBounds());
    const juce::Colour grey (0xFF969696);
    const int middle = rig.view().getHeight() - 45 + 22;
    int firstInk = 305;
    while (firstInk < picture.getWidth())
    {
        bool ink = false;
        for (int y = middle - 8; y < middle + 8; ++y)
            ink = ink || picture.getPixelAt (firstInk, y) != grey;
        if (ink)
            break;
        ++firstInk;
    }
    EXPECT_GE (firstInk, 305 + 10);
    EXPECT_LE (firstInk, 305 + 13) << "the text begins 10 pixels from the left on a grey field";
    EXPECT_EQ (picture.getPixelAt (rig.view().getWidth() - 40, middle), grey);
}

TEST_F (Parameters, dragIsOneGestureAndReachesEngineAndHost)
{
    rig.load (WindowRig::rigBank, slotSine);
    auto& knob = rig.knob (2); // the host's second parameter
    const double before = knob.getValue();
    rig.host().take();
    rig.drag (knob, { 0, before > 0.5 ? 70 : -70 });
    EXPECT_EQ (rig.host().take(), (Texts { "begin 1", "value 1" }));
    rig.drop();
    EXPECT_EQ (rig.host().take(), Texts { "end 1" });
    EXPECT_GT (std::abs (knob.getValue() - before), 0.1);
    EXPECT_NEAR (static_cast<double> (rig.host().lastValue()), knob.getValue(), 1e-6);
    rig.settle();
    EXPECT_NEAR (rig.core().getParameterValue (1), knob.getValue(), 1e-6);
    EXPECT_NEAR (rig.core().getSlotValue (2), knob.getValue(), 1e-6);
}

TEST_F (Parameters, changesFromElsewhereMoveTheSliderAndTellNobody)
{
    rig.loadCount (1);
    rig.host().take();
    rig.core().setParameterValue (0, 0.125);
    EXPECT_TRUE (WindowRig::runUntil (
        [&]
        {
            rig.settle();
            return std::abs (rig.knob (0).getValue() - 0.125) < 1e-6;
        }));
    EXPECT_EQ (rig.host().take(), Texts {}) << "or hosts would take it for a move of the user's";
}

TEST_F (Parameters, gestureEndsWhateverCutsTheDragShort)
{
    rig.loadCount (4);
    rig.drag (rig.knob (1), { 0, -40 });
    rig.host().take();
    rig.close();
    EXPECT_EQ (rig.host().take(), Texts { "end 1" }) << "the window was closed";
    rig.open();
    WindowRig::run (0.1);
    EXPECT_EQ (rig.host().take(), Texts {});

    rig.drag (rig.knob (1), { 0, -40 });
    EXPECT_EQ (rig.host().take(), (Texts { "begin 1", "value 1" }));
    rig.loadCount (1); // the slider goes under the mouse
    rig.drop();
    EXPECT_EQ (rig.host().take(), Texts { "end 1" });

    rig.drag (rig.knob (0), { 0, -40 });
    rig.host().take();
    rig.close();
    rig.restart();
    rig.open();
    rig.drop(); // nothing of the old plug-in may be touched
    EXPECT_EQ (rig.host().take(), Texts {});
}

TEST_F (Parameters, menuOfASliderSetsAndLearns)
{
    rig.loadCount (4);
    auto& knob = rig.knob (2);
    rig.drag (knob, { 0, -60 });
    rig.drop();
    ASSERT_GT (std::abs (knob.getValue() - 0.5), 0.1);
    rig.click (knob, juce::ModifierKeys::rightButtonModifier);
    rig.choose ("Set to the middle");
    EXPECT_NEAR (knob.getValue(), 0.5, 1e-6);
    rig.click (knob, juce::ModifierKeys::rightButtonModifier);
    rig.choose ("Learn a MIDI controller");
    EXPECT_TRUE (rig.core().midiMappingActive.load());
    EXPECT_EQ (rig.view().waitingKnob(), &knob);
}

} // namespace morvanelab::test
