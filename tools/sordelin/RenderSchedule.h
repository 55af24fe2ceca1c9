// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace morvanelab
{

/** One thing that happens while rendering. */
struct RenderAction
{
    enum class Kind
    {
        noteOn,
        noteOff,
        parameter,
        midi ///< raw bytes for the MIDI manager
    };

    double seconds = 0.0;
    Kind kind = Kind::noteOn;
    int index = 0;      ///< key, or parameter control
    double value = 0.0; ///< velocity or parameter value, 0 to 1
    std::vector<std::uint8_t> bytes;
};

/** What a render does and when, in the order in which actions that fall due together are carried out. */
class RenderSchedule
{
public:
    /** KEY:VELOCITY:ON[:OFF]. A note's off stands right behind its on. Throws wrongUse. */
    void addNote (const std::string& text);
    /** I=VALUE[@SECONDS]. Throws wrongUse. */
    void addParameter (const std::string& text);
    /** Notes and controllers of a standard MIDI file, in file order. Throws badData. */
    void addMidiFile (const std::string& path);

    const std::vector<RenderAction>& getActions() const { return actions; }
    /** Time of the last note event in seconds, or a negative number if there is no note. */
    double getLastNoteSeconds() const { return lastNote; }

private:
    void add (RenderAction action);

    std::vector<RenderAction> actions;
    double lastNote = -1.0;
};

} // namespace morvanelab
