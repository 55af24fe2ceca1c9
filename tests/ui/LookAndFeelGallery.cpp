// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/ThemePicture.h"
#include "ui/MVColourPanel.h"
#include "ui/MVIconButton.h"
#include "ui/MVKnob.h"
#include "ui/MVLevelMeter.h"
#include "ui/MVMidiKeyboard.h"
#include "ui/MVSectionPanel.h"
#include "ui/MVSignalMeterComponent.h"

namespace morvanelab
{

namespace
{

/** Everything the window is made of, in its states, to be looked at. */
struct Gallery : juce::Component
{
    Gallery()
    {
        setSize (1000, 760);
        addSections();
        addKnobs();
        addButtons();
        addFields();
        addMeters();
        addKeyboards();
    }

    template <typename T>
    T& add (T* component, juce::Rectangle<int> bounds)
    {
        owned.emplace_back (component);
        addAndMakeVisible (component);
        component->setBounds (bounds);
        return *component;
    }

    void addSections()
    {
        add (new MVSectionPanel ("PARAMETERS"), { 10, 50, 480, 240 }).setNote ("5 of 16");
        add (new MVSectionPanel ("PRESET"), { 500, 50, 490, 240 });
        add (new MVSectionPanel ("I/O LEVELS"), { 10, 300, 480, 200 });
        add (new MVSectionPanel ("LISTS"), { 500, 300, 490, 260 });
    }

    void addKnobs()
    {
        const char* captions[] { "Cutoff", "Resonance", "Attack time", "Mix", "Drive", "Disabled" };
        for (int i = 0; i < 6; ++i)
        {
            auto& knob = add (new MVKnob, { 20 + i * 77, 78, 74, 88 });
            knob.setCaption (captions[i]);
            knob.setRange (0.0, 1.0);
            knob.setValue (i * 0.2, juce::dontSendNotification);
            if (i == 1)
                knob.setBadge ("CC 74");
            if (i == 3)
                knob.setLearn (MVKnob::Learn::armed);
            if (i == 4)
                knob.setLearn (MVKnob::Learn::waiting);
            knob.setEnabled (i != 5);
        }
        for (int i = 0; i < 4; ++i)
        {
            auto& knob = add (new MVKnob (juce::Slider::TextBoxBelow), { 20 + i * 60, 180, 56, 70 });
            knob.setRange (0.0, 4.0, 0.01);
            knob.setValue (i + 0.5, juce::dontSendNotification);
        }
        add (new MVKnob, { 270, 180, 120, 110 }).setCaption ("Large");
        add (new juce::Slider (juce::Slider::LinearHorizontal, juce::Slider::NoTextBox), { 395, 180, 85, 24 })
            .setValue (4.0);
        add (new juce::Slider (juce::Slider::LinearBar, juce::Slider::NoTextBox), { 395, 210, 85, 22 }).setValue (6.0);
        add (new juce::Slider (juce::Slider::LinearVertical, juce::Slider::NoTextBox), { 425, 236, 24, 54 })
            .setValue (7.0);
    }

    void addButtons()
    {
        for (int i = 0; i < static_cast<int> (MVIcon::count) - 2; ++i)
        {
            auto& button = add (new MVIconButton ("icon", static_cast<MVIcon> (i + 2)),
                                { 510 + (i % 17) * 28, 78 + i / 17 * 28, 24, 24 });
            button.setToggleState (i % 9 == 7, juce::dontSendNotification);
            button.setEnabled (i % 11 != 10);
        }
        auto& on = add (new MVIconButton ("MUTE OUTPUT", MVIcon::mute, MVIconButton::Style::iconAndText),
                        { 510, 170, 124, 24 });
        on.setToggleState (true, juce::dontSendNotification);
        on.setTone (MVIconButton::Tone::danger);
        auto& learn = add (new MVIconButton ("MAP MIDI CC", MVIcon::midiMap, MVIconButton::Style::iconAndText),
                           { 640, 170, 124, 24 });
        learn.setToggleState (true, juce::dontSendNotification);
        learn.setTone (MVIconButton::Tone::learn);
        add (new MVIconButton ("BYPASS", MVIcon::bypass, MVIconButton::Style::iconAndText), { 770, 170, 90, 24 })
            .setEnabled (false);
        add (new MVIconButton ("SAVE PRESET", MVIcon::save, MVIconButton::Style::iconAndText), { 866, 170, 116, 24 })
            .setState (juce::Button::buttonOver);
        add (new juce::TextButton ("RESET"), { 510, 200, 70, 24 });
        add (new juce::TextButton ("VIEW"), { 586, 200, 70, 24 }).setToggleState (true, juce::dontSendNotification);
        add (new juce::TextButton ("HELP"), { 662, 200, 70, 24 }).setEnabled (false);
        add (new juce::TextButton ("Hover"), { 738, 200, 70, 24 }).setState (juce::Button::buttonOver);
        add (new juce::TextButton ("Down"), { 814, 200, 70, 24 }).setState (juce::Button::buttonDown);
        add (new juce::ToggleButton ("Play host notes"), { 510, 230, 140, 22 })
            .setToggleState (true, juce::dontSendNotification);
        add (new juce::ToggleButton ("Tooltips"), { 660, 230, 100, 22 });
        auto& off = add (new juce::ToggleButton ("Off"), { 760, 230, 100, 22 });
        off.setToggleState (true, juce::dontSendNotification);
        off.setEnabled (false);
        auto& combo = add (new juce::ComboBox, { 510, 258, 170, 22 });
        combo.addItem ("Glass Harmonics", 1);
        combo.setSelectedId (1, juce::dontSendNotification);
        auto& dead = add (new juce::ComboBox, { 690, 258, 140, 22 });
        dead.setTextWhenNothingSelected ("No preset");
        dead.setEnabled (false);
    }

    struct Rows : juce::ListBoxModel
    {
        juce::TimeSliceThread thread { "files" };
        juce::DirectoryContentsList contents { nullptr, thread };
        juce::FileListComponent files { contents };

        int getNumRows() override { return 40; }
        void paintListBoxItem (int row, juce::Graphics& graphics, int width, int height, bool selected) override
        {
            static const char* names[] { "Pad of Glass.mv_onpatch", "Factory.mv_onbank", "Sounds", "notes.txt" };
            juce::LookAndFeel::getDefaultLookAndFeel().drawFileBrowserRow (
                graphics, width, height, juce::File ("/tmp").getChildFile (names[row % 4]), names[row % 4], nullptr,
                "12 kB", "1 May 2024", row % 4 == 2, selected, row, files);
        }
    };

    void addFields()
    {
        auto& search = add (new juce::TextEditor, { 512, 328, 200, 24 });
        search.setText ("strings");
        auto& hint = add (new juce::TextEditor, { 718, 328, 200, 24 });
        hint.setTextToShowWhenEmpty ("Search name, author ...", themeColour (MVThemeColour::textFaint));
        auto& tabs = add (new juce::TabbedComponent (juce::TabbedButtonBar::TabsAtTop), { 512, 446, 230, 80 });
        for (const char* name : { "Info", "Banks", "Mappings" })
            tabs.addTab (name, themeColour (MVThemeColour::panel), new juce::Label ({}, name), true);
        auto& list = add (new juce::ListBox ({}, &rows), { 512, 358, 470, 80 });
        list.setRowHeight (metrics::rowHeight);
        list.selectRow (1);
        list.setOutlineThickness (1);
        auto& group = add (new juce::GroupComponent ({}, "Voices"), { 750, 446, 110, 80 });
        group.setEnabled (true);
        auto& header = add (new juce::TableHeaderComponent, { 866, 450, 116, 24 });
        header.addColumn ("CC", 1, 40);
        header.addColumn ("Name", 2, 76);
        header.setSortColumnId (2, true);
        progress = 0.4;
        add (new juce::ProgressBar (progress), { 866, 484, 116, 18 });
    }

    void addMeters()
    {
        const float values[] { 0.08F, 0.45F, 0.93F, 1.6F };
        for (int i = 0; i < 4; ++i)
        {
            auto& meter = add (new MVLevelMeter (10), { 22, 328 + i * 24, 300, i % 2 == 0 ? 10 : 22 });
            meter.setTickTexts (i % 2 == 1);
            meter.setLevel (values[i]);
            auto& tall = add (new MVLevelMeter (10), { 340 + i * 30, 328, i % 2 == 0 ? 12 : 28, 110 });
            tall.setOrientation (MVLevelMeter::Orientation::vertical);
            tall.setTickTexts (i % 2 == 1);
            tall.setLevel (values[i]);
        }
        auto& voices = add (new MVLevelMeter (250), { 22, 430, 300, 8 });
        voices.setScale (MVLevelMeter::Scale::linear);
        voices.setDisplayRange (0.0F, 16.0F);
        voices.setLevel (5.0F);
        auto& one = add (new MVSignalMeterComponent (1), { 22, 446, 12, 50 });
        one.setLevel (0, 0.8F);
        auto& two = add (new MVSignalMeterComponent (MVSignalMeterComponent::twoLevels), { 44, 446, 24, 50 });
        two.setLevel (0, 0.4F);
        two.setLevel (1, 1.0F);
    }

    void addKeyboards()
    {
        state.noteOn (1, 60, 1.0F);
        state.noteOn (1, 66, 1.0F);
        add (new MVMidiKeyboard (state), { 10, 570, 440, 43 });
        add (new MVMidiKeyboard (state), { 460, 570, 300, 60 });
        add (new MVMidiKeyboard (state), { 770, 570, 220, 43 }).setEnabled (false);
    }

    void paint (juce::Graphics& graphics) override
    {
        graphics.fillAll (themeColour (MVThemeColour::windowBackground));
        graphics.setColour (themeColour (MVThemeColour::titleBar));
        graphics.fillRect (0, 0, getWidth(), 42);
        drawIcon (graphics, MVIcon::wordmark, { 12.0F, 9.0F, 135.0F, 24.0F }, themeColour (MVThemeColour::text));
        drawIcon (graphics, MVIcon::logo, { 170.0F, 7.0F, 28.0F, 28.0F }, themeColour (MVThemeColour::accent));
        graphics.setFont (themeFont (fontHeights::large, MVFontWeight::semiBold));
        graphics.setColour (themeColour (MVThemeColour::text));
        graphics.drawText ("Glass Harmonics", 220, 0, 300, 42, juce::Justification::centredLeft);
        graphics.setFont (themeFont (fontHeights::normal));
        graphics.setColour (themeColour (MVThemeColour::textDim));
        graphics.drawText ("A label, 0123456789 dB Hz", 420, 0, 300, 42, juce::Justification::centredLeft);

        auto& look = getLookAndFeel();
        const juce::Rectangle<int> menu (10, 640, 220, 24 * 4 + 8);
        {
            const juce::Graphics::ScopedSaveState state2 (graphics);
            graphics.setOrigin (menu.getPosition());
            graphics.reduceClipRegion (0, 0, menu.getWidth(), menu.getHeight());
            look.drawPopupMenuBackgroundWithOptions (graphics, menu.getWidth(), menu.getHeight(), {});
            look.drawPopupMenuItem (graphics, { 0, 4, 220, 24 }, false, true, false, true, false, "Spectrum", "Ctrl+3",
                                    nullptr, nullptr);
            look.drawPopupMenuItem (graphics, { 0, 28, 220, 24 }, false, true, true, false, true, "Zoom", {}, nullptr,
                                    nullptr);
            look.drawPopupMenuItem (graphics, { 0, 52, 220, 9 }, true, true, false, false, false, {}, {}, nullptr,
                                    nullptr);
            look.drawPopupMenuItem (graphics, { 0, 61, 220, 24 }, false, false, false, false, false,
                                    "Clear all MIDI mappings", {}, nullptr, nullptr);
        }
        {
            const juce::Graphics::ScopedSaveState state2 (graphics);
            graphics.setOrigin (250, 640);
            const auto tip = look.getTooltipBounds ("Compressor Roll-off Time (sec)", { 0, 0 }, { 0, 0, 1000, 1000 });
            graphics.reduceClipRegion (0, 0, tip.getWidth(), tip.getHeight());
            look.drawTooltip (graphics, "Compressor Roll-off Time (sec)", tip.getWidth(), tip.getHeight());
        }
        const juce::Graphics::ScopedSaveState state2 (graphics);
        graphics.setOrigin (250, 690);
        look.drawCornerResizer (graphics, 16, 16, false, false);
    }

    juce::MidiKeyboardState state;
    Rows rows;
    double progress = 0.0;
    std::vector<std::unique_ptr<juce::Component>> owned;
};

} // namespace

using LookAndFeelGallery = ThemeTest;

/** For the eye: SORDELIN_GALLERY names the folder for the pictures. */
TEST_F (LookAndFeelGallery, paintsEverythingAtOneAndTwo)
{
    const auto folder = juce::SystemStats::getEnvironmentVariable ("SORDELIN_GALLERY", {});
    if (folder.isEmpty())
        GTEST_SKIP() << "SORDELIN_GALLERY names no folder";
    Gallery gallery;
    MVColourPanel colours;
    juce::FileBrowserComponent browser (juce::FileBrowserComponent::saveMode
                                            | juce::FileBrowserComponent::canSelectFiles,
                                        juce::File (folder).getChildFile ("My Sounds.mv_onbank"), nullptr, nullptr);
    browser.setSize (480, 300);
    std::vector<std::pair<juce::String, juce::Component*>> shown { { "gallery", &gallery },
                                                                   { "colours", &colours },
                                                                   { "browser", &browser } };
    std::unique_ptr<juce::AlertWindow> alert;
    // Alert boxes ask for the size of the screen.
    if (screen.isThere())
    {
        alert.reset (shared->look.createAlertWindow ("Patch load failed", "Wrong number of patches.  Select only one.",
                                                     "OK", {}, {}, juce::MessageBoxIconType::WarningIcon, 1, nullptr));
        shown.emplace_back ("alert", alert.get());
    }
    juce::MidiKeyboardState state;
    MVMidiKeyboard keyboard (state);
    keyboard.setSize (500, MVMidiKeyboard::usualHeight);
    if (screen.isThere())
    {
        keyboard.setVisible (true);
        keyboard.addToDesktop (0);
        keyboard.setWantsKeyboardFocus (true);
        keyboard.grabKeyboardFocus();
        state.noteOn (1, 64, 1.0F);
        shown.emplace_back ("keyboard", &keyboard);
    }
    for (const int zoom : { 1, 2 })
    {
        for (const auto& [name, component] : shown)
        {
            const auto file = juce::File (folder).getChildFile (name + juce::String (zoom) + "x.png");
            file.deleteFile();
            juce::FileOutputStream stream (file);
            ASSERT_TRUE (stream.openedOk());
            EXPECT_TRUE (
                juce::PNGImageFormat().writeImageToStream (pictureOf (*component, static_cast<float> (zoom)), stream));
        }
    }
}

} // namespace morvanelab
