// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinMidiPanel.h"

#include "plugin/SordelinMainComponent.h"
#include "plugin/SordelinWidgets.h"
#include "ui/MVMidiMappingComponent.h"

namespace morvanelab
{

namespace
{

constexpr int lightHold = 4;  ///< polls
constexpr int hintHold = 240; ///< polls: some 8 seconds after the last note
constexpr int rowHeight = 22;
constexpr int lightSize = 9;
constexpr int lightArea = 16;
constexpr int mapWidth = 108;
constexpr int resetWidth = 52;
constexpr int panicWidth = 26;

} // namespace

SordelinMidiPanel::SordelinMidiPanel (SordelinMainComponent& mainComponent, MVMidiMappingComponent& mappingComponent)
    : MVSectionPanel ("MIDI IN"), main (mainComponent), mapping (mappingComponent)
{
    setUpControl (*this, mapButton, "Map Parameter Input");
    mapButton.setTone (MVIconButton::Tone::learn);
    mapButton.setClickingTogglesState (true);
    mapButton.onClick = [this] { mapping.setMappingMode (mapButton.getToggleState() ? 1 : 0); };
    setUpControl (*this, resetButton, "Reset Synth");
    resetButton.onClick = [this] { main.resetSynth(); };
    setUpControl (*this, panicButton, "All voices off");
    panicButton.setTone (MVIconButton::Tone::danger);
    panicButton.onClick = [this] { main.panic(); };

    setUpControl (*this, silentNotesHint, "Switches \"Play host notes\" on");
    silentNotesHint.setButtonText ("Host notes arrive but do not play: switch on");
    silentNotesHint.onClick = [this] { playHostNotes(); };
    silentNotesHint.setVisible (false);

    voiceMeter.setName ("VOICES");
    voiceMeter.setComponentID (voiceMeter.getName());
    voiceMeter.setScale (MVLevelMeter::Scale::linear);
    voiceMeter.levelSource = [this]
    {
        int voices = 0;
        main.withEngine ([&] (MVRenderEngine& engine) { voices = engine.getActiveVoiceCount (main.getPartId()); });
        setNote (voices == 0 ? juce::String() : juce::String (voices) + (voices == 1 ? " voice" : " voices"));
        return static_cast<float> (voices);
    };
    addAndMakeVisible (voiceMeter);
    refresh();
}

void SordelinMidiPanel::refresh()
{
    mapButton.setToggleState (mapping.isMapping(), juce::dontSendNotification);
    voiceMeter.setDisplayRange (0.0F, static_cast<float> (main.getSettings().getVoices()));
    if (main.isPlayingHostNotes())
        silentNotesHint.setVisible (false);
}

void SordelinMidiPanel::poll()
{
    const bool wasLit = lightTicks > 0;
    if (main.midiByteCounter.exchange (0, std::memory_order_relaxed) > 0)
        lightTicks = lightHold;
    else if (lightTicks > 0)
        --lightTicks;
    if (wasLit != (lightTicks > 0))
        repaint (contentArea().removeFromTop (rowHeight).removeFromLeft (lightArea));
    watchNotes();
}

bool SordelinMidiPanel::hostNotesArrived()
{
    auto starts = noteStarts;
    main.withEngine ([&starts] (MVRenderEngine& engine) { starts = engine.getMidiManager().getNoteStarts(); });
    return std::exchange (noteStarts, starts) != starts;
}

void SordelinMidiPanel::watchNotes()
{
    if (! main.isPlayingHostNotes() && hostNotesArrived())
        hintTicks = hintHold;
    else if (hintTicks > 0)
        --hintTicks;
    silentNotesHint.setVisible (hintTicks > 0 && ! main.isPlayingHostNotes());
}

void SordelinMidiPanel::playHostNotes()
{
    main.setPlayHostNotes (true);
    hintTicks = 0;
    silentNotesHint.setVisible (false);
}

void SordelinMidiPanel::paint (juce::Graphics& graphics)
{
    MVSectionPanel::paint (graphics);
    const auto row = contentArea().removeFromTop (rowHeight).removeFromLeft (lightArea).toFloat();
    const auto light = row.withSizeKeepingCentre (lightSize, lightSize).withX (row.getX() + 1.0F);
    graphics.setColour (themeColour (lightTicks > 0 ? MVThemeColour::accent : MVThemeColour::meterTrack));
    graphics.fillEllipse (light);
    graphics.setColour (themeColour (MVThemeColour::controlOutline));
    graphics.drawEllipse (light, metrics::hairline);
}

void SordelinMidiPanel::resized()
{
    auto area = contentArea();
    auto row = area.removeFromTop (rowHeight);
    row.removeFromLeft (lightArea);
    mapButton.setBounds (row.removeFromLeft (mapWidth));
    panicButton.setBounds (row.removeFromRight (panicWidth));
    row.removeFromRight (metrics::gap);
    resetButton.setBounds (row.removeFromRight (resetWidth));
    voiceMeter.setBounds (row.reduced (metrics::gap, 6));
    silentNotesHint.setBounds (area.withTrimmedTop (2));
}

} // namespace morvanelab
