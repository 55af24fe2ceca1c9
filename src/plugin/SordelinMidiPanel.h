// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVIconButton.h"
#include "ui/MVLevelMeter.h"
#include "ui/MVSectionPanel.h"

namespace morvanelab
{

class SordelinMainComponent;
class MVMidiMappingComponent;

/** The section "MIDI IN": whether MIDI arrives, how many voices play, mapping mode, reset and panic; and, while host
    notes arrive that do not play, a line that says so and switches them on by a click. Message thread. */
class SordelinMidiPanel : public MVSectionPanel
{
public:
    static constexpr int height = 76;

    /** Both outlive the panel. */
    SordelinMidiPanel (SordelinMainComponent& mainComponent, MVMidiMappingComponent& mappingComponent);

    /** Looks for MIDI that came in since the last call: the window calls it some 30 times a second while it shows. */
    void poll();
    /** Shows the mapping mode and the settings as they are now. */
    void refresh();
    bool isShowingSilentNotes() const { return silentNotesHint.isVisible(); }

    void paint (juce::Graphics& graphics) override;
    void resized() override;

private:
    void watchNotes();
    void playHostNotes();
    bool hostNotesArrived();

    SordelinMainComponent& main;
    MVMidiMappingComponent& mapping;
    MVIconButton mapButton { "MAP MIDI CC", MVIcon::midiMap, MVIconButton::Style::iconAndText };
    juce::TextButton resetButton { "RESET" };
    MVIconButton panicButton { "PANIC", MVIcon::panic };
    MVLevelMeter voiceMeter { 250 };
    juce::TextButton silentNotesHint { "PLAY HOST NOTES" };
    int lightTicks = 0; ///< polls for which the light stays on
    int hintTicks = 0;
    std::uint32_t noteStarts = 0; ///< of the engine, when last looked at
};

} // namespace morvanelab
