// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/ThemePicture.h"
#include "ui/MVColourPanel.h"
#include "ui/MVKnob.h"

namespace morvanelab
{

using enum MVThemeColour;

using LookAndFeelColours = ThemeTest;

namespace
{

juce::String colourElement (const juce::String& id, const juce::String& argb)
{
    return "<color color_id=\"" + id + "\" argb=\"" + argb + "\">\n</color>\n";
}

bool allDefault()
{
    return std::all_of (themeEntries().begin(), themeEntries().end(),
                        [] (const auto& entry) { return themeColour (entry.colour).getARGB() == entry.argb; });
}

} // namespace

TEST_F (LookAndFeelColours, comeBackAsTheyWereStored)
{
    EXPECT_TRUE (MVLookAndFeel::customColoursAsXml().isEmpty());
    setThemeColour (accent, juce::Colour (0xFF00FF80));
    setThemeColour (traceFill, juce::Colour (0x01020304));
    setThemeColour (windowBackground, juce::Colour (0xFF000001));
    const auto stored = MVLookAndFeel::customColoursAsXml();
    resetThemeColours();
    EXPECT_TRUE (shared->look.applyCustomColours (stored));
    EXPECT_EQ (themeColour (accent).getARGB(), 0xFF00FF80U);
    EXPECT_EQ (themeColour (traceFill).getARGB(), 0x01020304U);
    EXPECT_EQ (themeColour (windowBackground).getARGB(), 0xFF000001U);
    EXPECT_EQ (themeColour (text).getARGB(), themeEntries()[static_cast<std::size_t> (text)].argb);
    EXPECT_EQ (MVLookAndFeel::customColoursAsXml(), stored);
}

TEST_F (LookAndFeelColours, ofAllRowsComeBack)
{
    for (const auto& entry : themeEntries())
        setThemeColour (entry.colour, juce::Colour (entry.argb ^ 0x00010204U));
    const auto stored = MVLookAndFeel::customColoursAsXml();
    resetThemeColours();
    EXPECT_TRUE (shared->look.applyCustomColours (stored));
    for (const auto& entry : themeEntries())
        EXPECT_EQ (themeColour (entry.colour).getARGB(), entry.argb ^ 0x00010204U) << entry.name;
}

TEST_F (LookAndFeelColours, areTakenFromTheTopAndFromAList)
{
    EXPECT_TRUE (shared->look.applyCustomColours (colourElement ("401", "ff102030") + "<colors>\n"
                                                  + colourElement ("402", "FF405060") + "</colors>\n"));
    EXPECT_EQ (themeColour (accent).getARGB(), 0xFF102030U);
    EXPECT_EQ (themeColour (accentHover).getARGB(), 0xFF405060U);
    EXPECT_TRUE (
        shared->look.applyCustomColours ("<?xml version=\"1.0\"?>\n<color color_id=\"401\" argb=\"FF112233\" />"));
    EXPECT_EQ (themeColour (accent).getARGB(), 0xFF112233U);
    EXPECT_EQ (themeColour (accentHover).getARGB(), themeEntries()[static_cast<std::size_t> (accentHover)].argb);
}

TEST_F (LookAndFeelColours, leaveTheDefaultsWhenTheTextIsDamaged)
{
    const juce::String overlong = juce::String::repeatedString ("9", 5000);
    const juce::String texts[] {
        {},
        "no markup at all",
        "<colors>",
        "<colors><color color_id=\"401\"",
        "<<<<>>>>",
        colourElement ("401", ""),
        colourElement ("401", "FF10203"),
        colourElement ("401", "FF10203040"),
        colourElement ("401", "FF1020ZZ"),
        colourElement ("401", "-F102030"),
        colourElement ("401", "FF>02030"),
        colourElement ("", "FF102030"),
        colourElement ("4O1", "FF102030"),
        colourElement ("100000", "FF102030"),
        colourElement ("-401", "FF102030"),
        "<colour color_id=\"401\" argb=\"FF102030\">\n</colour>",
        "<other>" + colourElement ("401", "FF102030") + "</other>",
        colourElement ("401", overlong),
        "<color " + juce::String::repeatedString ("n", 80) + "=\"1\">",
        juce::String::repeatedString ("<colors>", 40000),
    };
    int number = 0;
    for (const auto& damaged : texts)
    {
        setThemeColour (accent, juce::Colour (0xFF445566));
        EXPECT_FALSE (shared->look.applyCustomColours (damaged)) << number;
        EXPECT_TRUE (allDefault()) << number;
        ++number;
    }
}

TEST_F (LookAndFeelColours, keepTheGoodBesideTheBad)
{
    EXPECT_TRUE (shared->look.applyCustomColours ("<colors>\n" + colourElement ("401", "nonsense")
                                                  + colourElement ("301", "FFABCDEF") + "<x/>"));
    EXPECT_EQ (themeColour (text).getARGB(), 0xFFABCDEFU);
    EXPECT_EQ (themeColour (accent).getARGB(), themeEntries()[static_cast<std::size_t> (accent)].argb);
}

TEST_F (LookAndFeelColours, showInWhatIsDrawn)
{
    const juce::Colour green (0xFF00FF80);
    MVKnob knob;
    knob.setSize (80, 80);
    knob.setRange (0.0, 1.0);
    knob.setValue (0.7, juce::dontSendNotification);
    EXPECT_EQ (countColour (pictureOf (knob), green), 0);
    EXPECT_TRUE (shared->look.applyCustomColours (colourElement ("401", green.toString())));
    knob.sendLookAndFeelChange();
    EXPECT_GT (countColour (pictureOf (knob), green), 100);
    EXPECT_EQ (shared->look.findColour (juce::Slider::trackColourId), green);
}

TEST_F (LookAndFeelColours, canBeChangedAndTakenBackInThePanel)
{
    int changes = 0;
    MVColourPanel panelOfColours;
    panelOfColours.onChange = [&] { ++changes; };
    const auto find = [&] (auto wanted)
    {
        for (auto* child : panelOfColours.getChildren())
            if (auto* found = dynamic_cast<decltype (wanted)> (child); found != nullptr)
                return found;
        return decltype (wanted) {};
    };
    auto* selector = find (static_cast<juce::ColourSelector*> (nullptr));
    auto* defaultButton = find (static_cast<juce::TextButton*> (nullptr));
    ASSERT_NE (selector, nullptr);
    ASSERT_NE (defaultButton, nullptr);

    panelOfColours.choose (danger);
    EXPECT_EQ (selector->getCurrentColour(), themeColour (danger));
    selector->setCurrentColour (juce::Colour (0xFF0000FF), juce::dontSendNotification);
    selector->sendSynchronousChangeMessage();
    EXPECT_EQ (themeColour (danger).getARGB(), 0xFF0000FFU);
    EXPECT_EQ (changes, 1);
    EXPECT_TRUE (MVLookAndFeel::customColoursAsXml().contains ("FF0000FF")
                 || MVLookAndFeel::customColoursAsXml().contains ("ff0000ff"));
    defaultButton->onClick();
    EXPECT_TRUE (allDefault());
    EXPECT_EQ (changes, 2);
}

} // namespace morvanelab
