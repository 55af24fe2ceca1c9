// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorManual.h"

#include "OperatorNotes.h"
#include "OperatorReport.h"
#include "operators/MVOperatorTable.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>

namespace morvanelab
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr const char* introduction =
    R"(# The operators

<!-- Written by `sordelin operators --markdown` from the operator table and resources/operators. Not edited by hand:
     `cmake --build build/release --target operator_manual` writes it anew. -->

[patches.md](patches.md) tells how operators are wired. Of each operator this page tells what it does, its ports, its
parameters, and a short patch that is complete but for its `format` and `metadata`.

An input is read with **each sample**, or **once a block**: then the first sample of every 256 counts, which is enough
for envelopes and slow movements. **Factors** are what multiplies the arriving signal there: the `scale` of the
connection, and the patch parameter (`control`) on it. A factor that is not named has no effect on that input; a sum
with one input puts a scale where there is none. In a table of parameters, limits are inclusive.

)";

/** Runs of blanks as one. */
std::string collapsed (const std::string& text)
{
    std::string out;
    for (const char c : text)
        if (c != ' ' || out.empty() || out.back() != ' ')
            out += c;
    return out;
}

std::string code (const std::string& text) { return "`" + text + "`"; }

/** A limit or default: whole numbers without a point, others to six digits, of which the last are left out if zero. */
std::string numberText (const Json& number)
{
    std::array<char, 32> text {};
    std::snprintf (text.data(), text.size(), "%.6g", number.get<double>());
    return text.data();
}

/** The heading's anchor, as the usual readers of Markdown make it. */
std::string anchorOf (const std::string& heading)
{
    std::string anchor;
    for (const char c : heading)
        if (c == ' ' || c == '-')
            anchor += '-';
        else if (std::isalnum (static_cast<unsigned char> (c)) != 0)
            anchor += static_cast<char> (std::tolower (static_cast<unsigned char> (c)));
    return anchor;
}

std::string portName (const Json& ports, std::size_t port) { return code (ports[port]["name"].get<std::string>()); }

std::string inputTable (const Json& ports, const std::vector<PortNote>& notes)
{
    if (notes.empty())
        return "No inputs.\n\n";

    std::string text = "| # | input | read | factors | unit and meaning |\n|---|---|---|---|---|\n";
    for (std::size_t port = 0; port < notes.size(); ++port)
        text += "| " + std::to_string (port) + " | " + portName (ports, port) + " | " + notes[port].reading + " | "
                + notes[port].factors + " | " + notes[port].meaning + " |\n";
    return text + "\n";
}

std::string outputTable (const Json& ports, const std::vector<PortNote>& notes)
{
    if (notes.empty())
        return "No outputs.\n\n";

    std::string text = "| # | output | unit and meaning |\n|---|---|---|\n";
    for (std::size_t port = 0; port < notes.size(); ++port)
        text += "| " + std::to_string (port) + " | " + portName (ports, port) + " | " + notes[port].meaning + " |\n";
    return text + "\n";
}

std::string valuesText (const Json& parameter)
{
    const auto type = parameter["type"].get<std::string>();
    if (type == "Bool")
        return "`true`, `false`";
    if (type == "Sequence")
        return "a list of up to 16 numbers, -1 to 1";
    if (type == "Curve")
        return "a list of 2 to 16 points `[x, y]`, 0 to 1";
    if (type == "Choice")
    {
        std::string text;
        for (const Json& choice : parameter["choices"])
        {
            text += text.empty() ? "" : ", ";
            text += code (choice["name"].dump());
        }
        return text.empty() ? "none" : text;
    }
    return numberText (parameter["low"]) + " to " + numberText (parameter["high"]) + (type == "Int" ? ", whole" : "");
}

std::string defaultText (const Json& parameter)
{
    const Json& initial = parameter["default"];
    if (initial.is_null())
        return parameter["type"] == "Curve" ? "the straight line" : parameter["type"] == "Sequence" ? "all 0" : "";
    return initial.is_number() ? numberText (initial) : code (initial.dump());
}

std::string parameterTable (const Json& parameters)
{
    if (parameters.empty())
        return "No parameters.\n\n";

    std::string text = "| parameter | values | default | meaning |\n|---|---|---|---|\n";
    for (const Json& parameter : parameters)
        text += "| " + code (parameter["name"].get<std::string>()) + " | " + valuesText (parameter) + " | "
                + defaultText (parameter) + " | " + collapsed (parameter["description"].get<std::string>()) + " |\n";
    return text + "\n";
}

std::string settingsText (const Json& settings)
{
    std::string text;
    for (const Json& setting : settings)
    {
        text += text.empty() ? "Settings: " : ", ";
        text += code (setting["name"].get<std::string>()) + " (" + setting["default"].dump() + " in a new one)";
    }
    return text.empty() ? text : text + ".\n\n";
}

std::string chapter (const OperatorSpec& spec, const Json& json)
{
    const OperatorNotes notes = OperatorNotes::of (spec);
    return "## " + json["name"].get<std::string>() + "\n\n*" + collapsed (json["description"].get<std::string>())
           + "* (" + code (json["class"].get<std::string>()) + ", " + code (json["id"].get<std::string>()) + ")\n\n"
           + notes.text + "\n\n" + inputTable (json["inputs"], notes.inputs)
           + outputTable (json["outputs"], notes.outputs) + parameterTable (json["parameters"])
           + settingsText (json["settings"]) + "```json\n" + notes.example + "```\n";
}

} // namespace

std::string operatorsAsMarkdown()
{
    std::string contents;
    std::string chapters;
    for (const OperatorRow& row : operatorTable())
    {
        const Json json = operatorAsJson (*row.spec);
        const auto name = json["name"].get<std::string>();
        contents += contents.empty() ? "[" : " · [";
        contents += name + "](#" + anchorOf (name) + ")";
        chapters += "\n";
        chapters += chapter (*row.spec, json);
    }
    return introduction + contents + "\n" + chapters;
}

} // namespace morvanelab
