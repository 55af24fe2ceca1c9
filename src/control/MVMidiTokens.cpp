// SPDX-License-Identifier: GPL-3.0-or-later
// The audio thread's side of the MIDI manager: bytes to tokens, tokens to control values.
#include "control/MVMidiManager.h"

#include "foundation/MVLog.h"

namespace morvanelab
{

namespace
{

constexpr const char* tokenizeFunction = "morvanelab::MVMidiManager::tokenizeMidiData";
constexpr const char* processFunction = "morvanelab::MVMidiManager::processMidiDataBuffer";

constexpr int polyphonicPressure = 160;
constexpr int programChange = 192;
constexpr int channelPressure = 208;
constexpr int pitchBend = 224;

/** Bytes that a message of this kind takes. Data bytes out of place and system messages are passed one by one. */
int messageLength (int kind)
{
    if (kind < midiNoteOff || kind > pitchBend)
        return 1;
    return kind == programChange || kind == channelPressure ? 2 : 3;
}

bool isToken (int kind) { return kind == midiNoteOff || kind == midiNoteOn || kind == midiController; }

bool isSkippedMessage (int kind)
{
    return kind == polyphonicPressure || kind == programChange || kind == channelPressure || kind == pitchBend;
}

int signedByte (std::uint8_t byte) { return static_cast<std::int8_t> (byte); }

/** A 7-bit value as 0 to 1, through single precision. */
double unitValue (int data) { return static_cast<double> (static_cast<float> (data) / 127.0f); }

} // namespace

bool MVMidiManager::tokenizeMidiData (const std::uint8_t* bytes, int count, bool, MVList<MVMidiEvent>& queue)
{
    mvLog ("MIDI", tokenizeFunction, "received %d raw midi bytes", count);
    bool found = false;

    for (int position = 0; bytes != nullptr && position < count;)
    {
        const int kind = bytes[position] & 0xF0;
        const int length = messageLength (kind);

        if (length > count - position)
            break;

        if (isSkippedMessage (kind))
        {
            found = true;
        }
        else if (isToken (kind) && signedByte (bytes[position + 1]) >= 0 && signedByte (bytes[position + 2]) >= 0)
        {
            MVMidiEvent token;
            token.status = kind;
            token.channel = bytes[position] & 0x0F;
            token.data1 = bytes[position + 1];
            token.data2 = bytes[position + 2];
            token.byteCount = length;
            countToken (token);
            queueToken (token, queue);
            found = true;
        }

        position += length;
    }

    return found;
}

void MVMidiManager::countToken (const MVMidiEvent& token)
{
    MVMidiChannel& channel = channels[static_cast<std::size_t> (token.channel)];

    if (token.status == midiNoteOff)
    {
        mvLog ("MIDI", tokenizeFunction, "token NOTE_OFF %d, chan %d", token.data1 + 1, token.channel);
        channel.countNote (token.data1, -1);
    }
    else if (token.status == midiNoteOn)
    {
        mvLog ("MIDI", tokenizeFunction, "token NOTE_ON %d vel %d, chan %d", token.data1 + 1, token.data2,
               token.channel);
        channel.countNote (token.data1, token.data2 != 0 ? 1 : -1);
        if (token.data2 != 0)
            noteStarts.fetch_add (1, std::memory_order_relaxed);
    }
    else
    {
        mvLog ("MIDI", tokenizeFunction, "token CC %d val %d chan %d", token.data1, token.data2, token.channel);
    }
}

void MVMidiManager::queueToken (const MVMidiEvent& token, MVList<MVMidiEvent>& queue)
{
    for (auto* node = queue.firstNode(); node != nullptr; node = node->next)
    {
        MVMidiEvent& queued = node->value;

        if (queued.status == token.status && queued.channel == token.channel && queued.reserved == token.reserved
            && queued.data1 == token.data1)
        {
            queued = token;
            mvLog ("MIDI", tokenizeFunction, "event token filtered");
            return;
        }
    }

    mvLog ("MIDI", tokenizeFunction, "event token posted");
    queue.addTail (token);
}

bool MVMidiManager::processMidiDataBuffer (const std::uint8_t* bytes, int count, bool flag)
{
    const bool found = tokenizeMidiData (bytes, count, flag, pendingEvents);
    MVMidiEvent token;

    while (pendingEvents.popHead (token))
        if (token.status == midiController && token.data1 != midiAllNotesOff)
            processController (token);

    return found;
}

void MVMidiManager::processController (const MVMidiEvent& token)
{
    mvLog ("MIDI", processFunction, "about to loop through var handlers for CC change...");

    const MVMidiMapReclaimer::ReadScope scope (reclaimer);
    const Records* const records = controllerList (token.channel, token.data1)->get();
    mvLog ("MIDI", processFunction, "   ...CC change handler list not null.");

    if (records == nullptr)
        return;

    const double value = unitValue (token.data2);

    for (const _mv_midi_map& map : *records)
    {
        if (map.enabled && map.valueId != 0)
        {
            const int valueId = static_cast<int> (map.valueId);
            mvLog ("MIDI", processFunction, "      ...setting var index %d to val %f", valueId, value);
            controlManager->setControlValue (valueId, value);
        }
    }
}

int MVMidiManager::getActiveNotes (int channel) const
{
    return channel >= 0 && channel < numChannels ? channels[static_cast<std::size_t> (channel)].activeNotes() : 0;
}

MVIRange MVMidiManager::getActiveNoteRange (int channel) const
{
    MVIRange range { -1, 0 };
    if (getActiveNotes (channel) < 1)
        return range;

    const MVMidiChannel& notes = channels[static_cast<std::size_t> (channel)];

    for (int note = 0; note < MVMidiChannel::numKeys; ++note)
    {
        if (notes.noteCount (note) < 1)
            continue;

        if (range.low < 0)
            range = { note, note < 2 ? 1 - note : 0 };
        else if (note > range.high())
            range.span = note - range.low;
    }

    return range;
}

} // namespace morvanelab
