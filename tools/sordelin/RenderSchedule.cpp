// SPDX-License-Identifier: GPL-3.0-or-later
#include "RenderSchedule.h"

#include "CommandFailure.h"
#include "NumberText.h"
#include "OutputFile.h"

#include <juce_audio_basics/juce_audio_basics.h>
#include <juce_core/juce_core.h>

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

std::vector<std::string> split (const std::string& text, char separator)
{
    std::vector<std::string> parts (1);
    for (const char c : text)
        if (c == separator)
            parts.emplace_back();
        else
            parts.back() += c;
    return parts;
}

double secondsFrom (const std::string& text, const std::string& whole)
{
    const double seconds = numberFrom (text, whole);
    if (seconds < 0.0)
        throw wrongUse (whole + ": a time is 0 seconds or later");
    return seconds;
}

double unitFrom (const std::string& text, const std::string& whole, const char* what)
{
    const double value = numberFrom (text, whole);
    if (value < 0.0 || value > 1.0)
        throw wrongUse (whole + ": " + what + " is a number from 0 to 1");
    return value;
}

} // namespace

void RenderSchedule::add (RenderAction action)
{
    if (action.kind == RenderAction::Kind::noteOn || action.kind == RenderAction::Kind::noteOff)
        lastNote = std::max (lastNote, action.seconds);
    actions.push_back (std::move (action));
}

void RenderSchedule::addNote (const std::string& text)
{
    const auto parts = split (text, ':');
    if (parts.size() < 3 || parts.size() > 4)
        throw wrongUse (text + ": a note is KEY:VELOCITY:ON[:OFF]");

    const int key = wholeNumberFrom (parts[0], text);
    if (key < 0 || key > 127)
        throw wrongUse (text + ": a key is a whole number from 0 to 127");

    const double velocity = unitFrom (parts[1], text, "a velocity");
    const double on = secondsFrom (parts[2], text);
    add ({ on, RenderAction::Kind::noteOn, key, velocity, {} });

    if (parts.size() == 4)
    {
        const double off = secondsFrom (parts[3], text);
        if (off < on)
            throw wrongUse (text + ": a note ends at or after its start");
        add ({ off, RenderAction::Kind::noteOff, key, 0.0, {} });
    }
}

void RenderSchedule::addParameter (const std::string& text)
{
    const auto equals = text.find ('=');
    if (equals == std::string::npos)
        throw wrongUse (text + ": a parameter is I=VALUE[@SECONDS]");

    const int index = wholeNumberFrom (text.substr (0, equals), text);
    if (index < 0 || index > 15)
        throw wrongUse (text + ": a parameter index is a whole number from 0 to 15");

    const auto at = text.find ('@', equals);
    const std::string value = text.substr (equals + 1, at == std::string::npos ? at : at - equals - 1);
    const double seconds = at == std::string::npos ? 0.0 : secondsFrom (text.substr (at + 1), text);
    add ({ seconds, RenderAction::Kind::parameter, index, unitFrom (value, text, "a parameter's value"), {} });
}

void RenderSchedule::addMidiFile (const std::string& path)
{
    const Bytes bytes = readWholeFile (path);
    juce::MemoryInputStream stream (bytes.data(), bytes.size(), false);
    juce::MidiFile file;

    if (! file.readFrom (stream))
        throw badData (path + ": not a standard MIDI file");

    file.convertTimestampTicksToSeconds();
    juce::MidiMessageSequence merged;
    for (int track = 0; track < file.getNumTracks(); ++track)
        merged.addSequence (*file.getTrack (track), 0.0);

    for (const auto* holder : merged)
    {
        const juce::MidiMessage& message = holder->message;
        const double seconds = std::max (0.0, message.getTimeStamp());

        if (! (message.isNoteOnOrOff() || message.isController()))
            continue;

        const auto* data = message.getRawData();
        add ({ seconds, RenderAction::Kind::midi, 0, 0.0, { data, data + message.getRawDataSize() } });

        if (message.isNoteOn())
            add ({ seconds,
                   RenderAction::Kind::noteOn,
                   message.getNoteNumber(),
                   static_cast<double> (message.getFloatVelocity()),
                   {} });
        else if (message.isNoteOff())
            add ({ seconds, RenderAction::Kind::noteOff, message.getNoteNumber(), 0.0, {} });
    }
}

} // namespace morvanelab
