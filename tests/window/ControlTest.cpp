// SPDX-License-Identifier: GPL-3.0-or-later
// Buttons, menus and sliders outside the parameters: what they are called and what they do.
#include "window/PaintedText.h"
#include "window/WindowRig.h"

#include <cmath>

namespace morvanelab::test
{

namespace
{

class Controls : public WindowTest
{
protected:
    /** What comes out on the left while the host plays a square wave of that height into the plug-in. */
    double peakThrough (float height)
    {
        constexpr int frames = 512;
        constexpr int halfWave = 64;
        juce::AudioBuffer<float> block (2, frames);
        juce::MidiBuffer none;
        for (int turn = 0; turn < 20; ++turn)
        {
            for (int i = 0; i < frames; ++i)
                for (int channel = 0; channel < 2; ++channel)
                    block.setSample (channel, i, i / halfWave % 2 == 0 ? height : -height);
            rig.processor().processBlock (block, none);
        }
        return static_cast<double> (block.getMagnitude (0, 0, frames));
    }
    /** Texts of a menu with their numbers, submenus left out. */
    static Texts itemsOf (const juce::PopupMenu& menu)
    {
        Texts items;
        for (juce::PopupMenu::MenuItemIterator each (menu); each.next();)
            if (auto& item = each.getItem(); ! item.isSeparator)
                items.push_back ((juce::String (item.itemID) + " " + item.text).toStdString());
        return items;
    }
};

struct ButtonRow
{
    const char* label;
    const char* tooltip;
    bool toggles;
    bool enabledAtStart;
};

constexpr ButtonRow buttonRows[] {
    { "CLEAR MAP", "Clear Map History", false, false }, // no preset is selected
    { "SHOW BANK LIBRARIAN", "Show Patch Librarian", false, true },
    { "MAP MIDI CC", "Map Parameter Input", true, true },
    { "SAVE PRESET", "Save Preset", false, false },
    { "SAVE PRESET AS", "Save Preset As", false, true },
    { "MENU", "Show Options Menu", false, true },
    { "RESET", "Reset Synth", false, true },
    { "VIEW", "View Menu", false, true },
    { "MUTE OUTPUT", "Mute all plugin output", true, true },
    { "BYPASS", "Bypass plugin, input to output", true, false },
    { "MUTE Input", "Mute all pluging input", true, false },
    { "HELP", "Show Help Page", false, true },
};

} // namespace

TEST_F (Controls, buttonsAreCalledAndBehaveAsTheTableSays)
{
    for (const auto& row : buttonRows)
    {
        auto& button = rig.button (row.label);
        EXPECT_EQ (button.getName(), juce::String (row.label));
        EXPECT_EQ (button.getTooltip(), juce::String (row.tooltip));
        EXPECT_EQ (button.isToggleable() || button.getClickingTogglesState(), row.toggles) << row.label;
        EXPECT_EQ (button.isEnabled(), row.enabledAtStart) << row.label;
        EXPECT_FALSE (button.getToggleState()) << row.label;
        EXPECT_FALSE (button.getWantsKeyboardFocus()) << row.label << " would take the host's keyboard";
        EXPECT_TRUE (rig.view().getLocalBounds().contains (rig.placeOf (row.label))) << row.label;
    }
    for (const auto& one : buttonRows)
        for (const auto& other : buttonRows)
            EXPECT_TRUE (&one == &other || ! rig.placeOf (one.label).intersects (rig.placeOf (other.label)))
                << one.label << " lies on " << other.label;
    for (const auto* text : { "MIDI IN", "PARAMETERS", "PRESET", "I/O LEVELS", "RESET", "VIEW", "MUTE OUTPUT", "BYPASS",
                              "MUTE Input", "HELP", "MENU", "MAP MIDI CC" })
        EXPECT_TRUE (paints (rig.view(), text)) << text;
}

TEST_F (Controls, mutesAndBypassReachTheSound)
{
    rig.core().setPlayMode (SordelinSettings::monoMode); // plays without a key
    rig.load (WindowRig::rigBank, slotInput);
    EXPECT_TRUE (WindowRig::runUntil (
        [this]
        {
            rig.settle();
            return rig.button ("BYPASS").isEnabled();
        }))
        << "the patch reads the host's input";
    EXPECT_TRUE (rig.button ("MUTE Input").isEnabled());
    const double open = peakThrough (0.5F);
    ASSERT_GT (open, 0.1);

    struct Mute
    {
        const char* label;
        std::atomic<bool>& flag;
    };
    for (const auto& mute :
         { Mute { "MUTE Input", rig.core().inputMuted }, Mute { "MUTE OUTPUT", rig.core().outputMuted } })
    {
        rig.click (mute.label);
        EXPECT_TRUE (mute.flag.load()) << mute.label;
        EXPECT_TRUE (rig.button (mute.label).getToggleState());
        EXPECT_LT (peakThrough (0.5F), 1e-3) << mute.label;
        rig.click (mute.label);
        EXPECT_FALSE (mute.flag.load());
        EXPECT_NEAR (peakThrough (0.5F), open, 0.05) << mute.label;
    }
    rig.click ("BYPASS");
    EXPECT_TRUE (rig.core().bypassed.load());
    rig.loadCount (1);
    EXPECT_TRUE (WindowRig::runUntil (
        [this]
        {
            rig.settle();
            return ! rig.button ("MUTE Input").isEnabled();
        }))
        << "this patch reads no input";
    EXPECT_TRUE (rig.button ("BYPASS").isEnabled()) << "what is on can be switched off";
    rig.click ("BYPASS");
    EXPECT_FALSE (rig.core().bypassed.load());
}

TEST_F (Controls, resetStartsTheOscillatorsAnew)
{
    rig.load (WindowRig::rigBank, slotSine);
    rig.core().getKeyboardState().noteOn (1, 69, 1.0F);
    const auto sounding = rig.plugin().render (8 * 512);
    ASSERT_GT (peakOf (sounding), 0.05);
    // A sine of 440 Hz does not fit into the blocks so far: without a reset the next one goes on in the middle of a
    // wave.
    const auto nextOf = [this] { return rig.plugin().render (512)[0]; };
    const float before = nextOf();
    rig.click ("RESET");
    const auto anew = rig.plugin().render (2048);
    EXPECT_NE (before, anew[0]);
    EXPECT_NEAR (static_cast<double> (anew[0]), 0.0, 0.02) << "a sine starts at zero";
}

TEST_F (Controls, panicEndsWhatSounds)
{
    rig.load (WindowRig::rigBank, slotSine);
    rig.core().getKeyboardState().noteOn (1, 69, 1.0F);
    ASSERT_GT (peakOf (rig.plugin().render (8 * 512)), 0.05);
    rig.click ("PANIC");
    rig.plugin().render (96 * 512);
    EXPECT_LT (peakOf (rig.plugin().render (512)), 1e-4);
    EXPECT_FALSE (rig.core().getKeyboardState().isNoteOn (1, 69));
}

TEST_F (Controls, slidersReachTheEngineWithinTheirRanges)
{
    struct SliderRow
    {
        const char* label;
        const char* tooltip;
        double low;
        double high;
        double start;
        double (SordelinMainComponent::*value)() const;
    };
    using Core = SordelinMainComponent;
    const SliderRow rows[] {
        { "OUTPUT VOLUME", "Output Volume", 0.0, 1.0, 1.0, &Core::getMasterVolume },
        { "PRE-COMPRESSION", "Pre-compression Volume", std::bit_cast<double> (0x3F1A36E2E0000000ULL), 1.0, 1.0,
          &Core::getPreCompressionVolume },
        { "ROLL-OFF", "Compressor Roll-off Time (sec)", 0.0, 4.0, 1.0, &Core::getCompressorRollOff },
        { "THRESHOLD", "Compressor Activation Threshold", std::bit_cast<double> (0x3FB99999A0000000ULL),
          std::bit_cast<double> (0x3FEFAE1480000000ULL), static_cast<double> (0.9F), &Core::getCompressorThreshold },
    };
    for (const auto& row : rows)
    {
        auto& slider = rig.as<juce::Slider> (row.label);
        EXPECT_EQ (slider.getTooltip(), juce::String (row.tooltip));
        EXPECT_EQ (slider.getSliderStyle(), juce::Slider::RotaryHorizontalVerticalDrag);
        EXPECT_EQ (slider.getMinimum(), row.low) << row.label;
        EXPECT_EQ (slider.getMaximum(), row.high) << row.label;
        EXPECT_NEAR (slider.getValue(), row.start, 1e-9) << row.label;
        EXPECT_NEAR (slider.proportionOfLengthToValue (0.5), 0.5, 1e-6) << row.label;
        EXPECT_EQ (slider.getTextBoxPosition() == juce::Slider::TextBoxBelow,
                   juce::String (row.label) != "OUTPUT VOLUME");
        rig.drag (slider, { 0, 60 });
        rig.drop();
        EXPECT_LT (slider.getValue(), row.start) << row.label;
        EXPECT_TRUE (WindowRig::runUntil (
            [&]
            {
                rig.settle();
                return std::abs ((rig.core().*row.value)() - slider.getValue()) < 1e-6;
            }))
            << row.label;
    }
}

TEST_F (Controls, followWhatChangesElsewhere)
{
    SordelinState state = rig.plugin().fields();
    state.outputVolume = 0.125;
    state.compressorThreshold = 0.5;
    state.compressorRollOff = 2.0;
    rig.core().setState ({ &state, sizeof state });
    rig.core().bypassed = true;
    rig.core().setOutputMuted (true);
    EXPECT_TRUE (WindowRig::runUntil (
        [this]
        {
            rig.settle();
            return std::abs (rig.as<juce::Slider> ("OUTPUT VOLUME").getValue() - 0.125) < 1e-6;
        }));
    EXPECT_EQ (rig.as<juce::Slider> ("THRESHOLD").getValue(), 0.5);
    EXPECT_EQ (rig.as<juce::Slider> ("ROLL-OFF").getValue(), 2.0);
    EXPECT_TRUE (rig.button ("BYPASS").getToggleState());
    EXPECT_TRUE (rig.button ("MUTE OUTPUT").getToggleState());
}

TEST_F (Controls, viewMenuShowsTheDisplays)
{
    struct ViewRow
    {
        int number;
        const char* text;
        int mode;
    };
    constexpr ViewRow rows[] { { 43, "Scroll Waveform", 1 }, { 44, "Phase Lock Waveform", 2 },
                               { 45, "Spectrum", 3 },        { 46, "Spectrogram", 4 },
                               { 47, "3d Spectrogram", 5 },  { 48, "Strange Attractor", 7 },
                               { 42, "Metadata Image", 0 } };
    EXPECT_NE (rig.look ("VISUALISER 0"), nullptr);
    for (const auto& row : rows)
    {
        rig.click ("VIEW");
        const auto items = rig.menu();
        ASSERT_EQ (items.size(), 7U);
        EXPECT_EQ (items[static_cast<std::size_t> (row.number - 42)], row.text)
            << "the one that is to come has no tick";
        rig.choose (row.text);
        EXPECT_EQ (rig.core().getVisualiser(), row.mode);
        EXPECT_TRUE (
            WindowRig::runUntil ([&] { return rig.look ("VISUALISER " + juce::String (row.mode)) != nullptr; }))
            << row.text;
        EXPECT_TRUE (rig.menu().empty());
        rig.click ("VIEW");
        EXPECT_EQ (rig.menu()[static_cast<std::size_t> (row.number - 42)], std::string (row.text) + " *");
        rig.choose (row.text);
    }
}

TEST_F (Controls, helpMenuOpensGuidePageAndAboutBox)
{
    EXPECT_EQ (itemsOf (rig.view().getMenus().makeHelpMenu()),
               (Texts { "1 Online User Guide", "2 Visit Morvane Lab", "3 About" }));
    std::vector<juce::URL> opened;
    rig.view().getMenus().openPage = [&opened] (const juce::URL& page)
    {
        opened.push_back (page);
        return opened.size() < 3;
    };
    for (const auto* item : { "Online User Guide", "Visit Morvane Lab" })
    {
        rig.click ("HELP");
        EXPECT_EQ (rig.menu(), (Texts { "Online User Guide", "Visit Morvane Lab", "About" }));
        rig.choose (item);
    }
    ASSERT_EQ (opened.size(), 2U);
    EXPECT_TRUE (opened[0].toString (false).contains ("user_guide"));
    EXPECT_EQ (rig.box(), ShownBox {});

    for (const auto* item : { "Online User Guide", "Visit Morvane Lab" })
    {
        rig.click ("HELP");
        rig.choose (item);
        EXPECT_EQ (rig.box(), (ShownBox { item, "Could not open.", { "Open" } }));
        rig.click ("Open");
        EXPECT_EQ (rig.box(), ShownBox {});
    }

    rig.click ("HELP");
    rig.choose ("About");
    auto& about = rig.find ("ABOUT");
    for (const auto* text :
         { "Version 1.2", "A player for patches developed using the Ondrelith Modular Synth Evolver." })
        EXPECT_TRUE (paints (about, text)) << text;
    rig.press (juce::KeyPress::escapeKey);
    EXPECT_EQ (rig.look ("ABOUT"), nullptr);
}

TEST_F (Controls, helpRootMovesTheGuide)
{
    const auto guideUnder = [this] (const char* root)
    {
        rig.core().getShelf().getProperties().setString ("help_path_root", root);
        return rig.view().getMenus().userGuide().toString (false);
    };
    EXPECT_EQ (guideUnder ("https://guide.example/sordelin"), "https://guide.example/sordelin/user_guide");
    EXPECT_TRUE (guideUnder ("/opt/guide").endsWith ("/opt/guide/user_guide.html"));
    EXPECT_TRUE (guideUnder ("").startsWith ("file:"));
}

TEST_F (Controls, optionsMenuChangesTheSettings)
{
    const auto pick = [this] (std::initializer_list<const char*> path)
    {
        rig.click ("MENU");
        for (const auto* item : path)
            rig.choose (item);
        WindowRig::run (0.05);
    };
    auto& settings = rig.core().getSettings();
    pick ({ "Zoom", "150 %" });
    EXPECT_EQ (settings.getZoom(), 150);
    pick ({ "Zoom", "100 %" });
    EXPECT_EQ (settings.getZoom(), 100);
    pick ({ "Show tooltips" });
    EXPECT_TRUE (settings.getShowHelp());
    pick ({ "Show tooltips" });
    EXPECT_FALSE (settings.getShowHelp());
    pick ({ "Play host notes" });
    EXPECT_FALSE (rig.core().isPlayingHostNotes());
    pick ({ "Play mode", "Mono" });
    EXPECT_EQ (settings.getPlayMode(), SordelinSettings::monoMode);
    pick ({ "Play mode", "One-shot" });
    EXPECT_EQ (settings.getPlayMode(), SordelinSettings::oneShotMode);
    pick ({ "Play mode", "Poly" });
    EXPECT_EQ (settings.getPlayMode(), SordelinSettings::polyMode);
    pick ({ "Voices", "8" });
    EXPECT_EQ (settings.getVoices(), 8);
    pick ({ "Colours..." });
    EXPECT_NE (rig.look ("COLOUR PANEL"), nullptr);
    rig.clickAt (rig.view(), { 4, rig.view().getHeight() - 4 });
    EXPECT_EQ (rig.look ("COLOUR PANEL"), nullptr) << "a click beside it closes a panel";
    rig.click ("MENU");
    EXPECT_FALSE (rig.menu().empty());
    rig.close(); // with the menu open
    rig.open();
    EXPECT_TRUE (rig.menu().empty());
}

TEST_F (Controls, silentHostNotesAreTold)
{
    rig.load (WindowRig::rigBank, slotSine);
    rig.core().setPlayHostNotes (false);
    WindowRig::run (0.1);
    EXPECT_EQ (rig.look ("PLAY HOST NOTES"), nullptr);
    rig.send (juce::MidiMessage::noteOn (1, 69, 0.8F));
    EXPECT_LT (peakOf (rig.plugin().render (4 * 512)), 1e-6);
    ASSERT_TRUE (WindowRig::runUntil ([&] { return rig.look ("PLAY HOST NOTES") != nullptr; }));
    rig.click ("PLAY HOST NOTES");
    EXPECT_TRUE (rig.core().isPlayingHostNotes());
    EXPECT_EQ (rig.look ("PLAY HOST NOTES"), nullptr);
    rig.send (juce::MidiMessage::noteOff (1, 69));
    rig.send (juce::MidiMessage::noteOn (1, 69, 0.8F));
    EXPECT_GT (peakOf (rig.plugin().render (4 * 512)), 0.05);
}

} // namespace morvanelab::test
