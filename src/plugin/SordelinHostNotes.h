// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#include <cstdint>

namespace morvanelab
{

/** Lets host notes play the keyboard: note-on, note-off and all-notes-off messages go to a keyboard state, whose
    listeners start and end voices. Audio thread; allocates nothing after construction. */
class SordelinHostNotes
{
public:
    explicit SordelinHostNotes (juce::MidiKeyboardState& keyboard);

    /** Takes whole messages out of raw MIDI bytes, in order; what is cut off at the end is ignored. */
    void play (const std::uint8_t* bytes, int count);

private:
    juce::MidiKeyboardState& keyboardState;
    juce::MidiBuffer notes;
};

} // namespace morvanelab
