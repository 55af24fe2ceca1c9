// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinAboutBox.h"

#include "foundation/MVLog.h"
#include "ui/MVIcons.h"

namespace morvanelab
{

namespace
{

constexpr const char* logWord = "runlog";
constexpr const char* logFile = "mv_log.txt";
constexpr int boxWidth = 420;
constexpr int boxHeight = 250;
constexpr int markHeight = 40;

} // namespace

SordelinAboutBox::SordelinAboutBox()
{
    setComponentID ("ABOUT");
    setTitle ("About");
    setWantsKeyboardFocus (true);
    setSize (boxWidth, boxHeight);
}

juce::String SordelinAboutBox::text()
{
    return juce::String ("Version " SORDELIN_VERSION "\n\n")
           + "A player for patches developed using the Ondrelith Modular Synth Evolver.\n\n"
           + "Written by the engineers of Morvane Lab.\n"
           + juce::String::fromUTF8 ("Copyright \xc2\xa9 2026 Morvane Lab. Free software under the GNU General Public "
                                     "License, version 3 or later, without any warranty.\n")
           + "VST and other names are trademarks of their owners.\n" + "https://morvane-lab.example";
}

void SordelinAboutBox::paint (juce::Graphics& graphics)
{
    auto area = getLocalBounds();
    drawIcon (graphics, MVIcon::wordmark, area.removeFromTop (markHeight).toFloat().withTrimmedBottom (8.0F),
              themeColour (MVThemeColour::accent));
    area.removeFromTop (metrics::margin);
    juce::AttributedString words;
    words.append (text(), themeFont (fontHeights::normal), themeColour (MVThemeColour::text));
    words.setJustification (juce::Justification::horizontallyCentred);
    words.draw (graphics, area.toFloat());
}

bool SordelinAboutBox::keyPressed (const juce::KeyPress& key)
{
    const auto character = key.getTextCharacter();
    if (character < 'a' || character > 'z')
        return false;
    typed << juce::String::charToString (character);
    typed = typed.getLastCharacters (juce::String (logWord).length());
    if (typed == logWord && ! mvLogEnabled())
        mvLogOpen (logFile);
    return true;
}

} // namespace morvanelab
