// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinHostNotes.h"

namespace morvanelab
{

namespace
{

constexpr std::size_t roomForOneBlock = 4096;
constexpr int messageBytes = 3;
constexpr std::uint8_t noteOff = 0x80;
constexpr std::uint8_t noteOn = 0x90;
constexpr std::uint8_t controller = 0xB0;
constexpr std::uint8_t allNotesOff = 123;

bool isForKeyboard (const std::uint8_t* message)
{
    const auto kind = message[0] & 0xF0;
    if (message[1] > 127 || message[2] > 127)
        return false;
    return kind == noteOff || kind == noteOn || (kind == controller && message[1] == allNotesOff);
}

} // namespace

SordelinHostNotes::SordelinHostNotes (juce::MidiKeyboardState& keyboard) : keyboardState (keyboard)
{
    notes.ensureSize (roomForOneBlock);
}

void SordelinHostNotes::play (const std::uint8_t* bytes, int count)
{
    notes.clear();
    for (int i = 0; i + messageBytes <= count;)
    {
        if (isForKeyboard (bytes + i))
        {
            notes.addEvent (bytes + i, messageBytes, 0);
            i += messageBytes;
        }
        else
            ++i;
    }
    // As one buffer, since that holds the keyboard's lock: the on-screen keyboard plays on another thread.
    if (! notes.isEmpty())
        keyboardState.processNextMidiBuffer (notes, 0, 1, false);
}

} // namespace morvanelab
