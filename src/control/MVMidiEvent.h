// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVDataBlock.h"
#include "foundation/MVSmartPtr.h"

namespace morvanelab
{

/** Status bytes, without their channel, of the messages that become tokens. */
enum MIDI_STATUS_t : int
{
    midiNoteOff = 128,
    midiNoteOn = 144,
    midiController = 176
};

/** Controller number of "all notes off": it drives no control value and cannot be learnt. */
constexpr int midiAllNotesOff = 123;

/** One MIDI message cut out of a byte stream. */
struct MVMidiEvent
{
    int status = 0;
    int channel = 0;
    /** Always 0. */
    int reserved = 0;
    int data1 = 0;
    int data2 = 0;
    /** Bytes of a longer message; tokens have none. */
    MVSmartPtr<MVDataBlock> payload;
    /** Bytes that the message took in the stream. */
    int byteCount = 0;
};

} // namespace morvanelab
