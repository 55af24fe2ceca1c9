// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorNotes.h"

#include "CommandFailure.h"

#include <algorithm>
#include <optional>
#include <span>
#include <sstream>
#include <string_view>

namespace morvanelab
{

namespace
{

constexpr std::string_view inputStart = "- in ";
constexpr std::string_view outputStart = "- out ";

/** Reads the notes of one operator line by line. */
class NotesReader
{
public:
    explicit NotesReader (const OperatorSpec& operatorSpec) : spec (operatorSpec)
    {
        const auto record = spec.newRecord();
        inputs.resize (static_cast<std::size_t> (spec.portCount (record.data(), portsIn)));
        outputs.resize (static_cast<std::size_t> (spec.portCount (record.data(), portsOut)));
    }

    OperatorNotes read (const std::string& source)
    {
        std::istringstream lines (source);
        for (std::string line; std::getline (lines, line);)
            readLine (line);

        notes.text.erase (notes.text.find_last_not_of ('\n') + 1);
        notes.inputs = complete (inputs);
        notes.outputs = complete (outputs);
        if (notes.text.empty() || notes.example.empty())
            fail ("an explanation or an example is missing");
        return notes;
    }

private:
    using Ports = std::vector<std::optional<PortNote>>;

    void readLine (const std::string& line)
    {
        if (line.starts_with ("```"))
            inExample = ! inExample;
        else if (inExample)
            notes.example += line + "\n";
        else if (line.starts_with (inputStart))
            readPorts (line, inputStart, inputs);
        else if (line.starts_with (outputStart))
            readPorts (line, outputStart, outputs);
        else
            notes.text += line + "\n";
    }

    void readPorts (const std::string& line, std::string_view start, Ports& ports)
    {
        std::vector<std::string> cells { "" };
        for (std::size_t at = start.size(); at < line.size(); ++at)
            if (line.compare (at, 3, " | ") == 0)
            {
                cells.emplace_back();
                at += 2;
            }
            else
                cells.back() += line[at];

        const bool input = start == inputStart;
        if (cells.size() != (input ? 4U : 2U))
            fail ("wrong number of columns: " + line);

        const auto [first, last] = portRange (cells[0], ports.size());
        for (std::size_t port = first; port <= last; ++port)
        {
            if (port >= ports.size() || ports[port])
                fail ("no such port, or told twice: " + line);
            ports[port] = input ? PortNote { cells[1], cells[2], cells[3] } : PortNote { "", "", cells[1] };
        }
    }

    /** First and last port of "3", "0-15" or "all". */
    static std::pair<std::size_t, std::size_t> portRange (const std::string& text, std::size_t count)
    {
        if (text == "all")
            return { 0, count - 1 };
        const auto dash = text.find ('-');
        const std::size_t first = std::stoul (text);
        return { first, dash == std::string::npos ? first : std::stoul (text.substr (dash + 1)) };
    }

    std::vector<PortNote> complete (const Ports& ports)
    {
        std::vector<PortNote> told;
        for (const auto& port : ports)
        {
            if (! port)
                fail ("port " + std::to_string (told.size()) + " is not told of");
            told.push_back (*port);
        }
        return told;
    }

    [[noreturn]] void fail (const std::string& what) const
    {
        throw CommandFailure (CommandFailure::badData, std::string (spec.className) + ".md: " + what);
    }

    const OperatorSpec& spec;
    OperatorNotes notes;
    Ports inputs;
    Ports outputs;
    bool inExample = false;
};

} // namespace

OperatorNotes OperatorNotes::of (const OperatorSpec& spec)
{
    const std::span all (embeddedNotes, embeddedNoteCount);
    const auto found = std::ranges::find_if (all, [&] (const EmbeddedNote& note)
                                             { return std::string_view (note.className) == spec.className; });
    if (found == all.end())
        throw CommandFailure (CommandFailure::badData, std::string ("resources/operators/") + spec.className
                                                           + ".md is missing: the manual tells of every operator");
    return NotesReader (spec).read (found->text);
}

} // namespace morvanelab
