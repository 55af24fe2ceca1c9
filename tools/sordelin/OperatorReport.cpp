// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorReport.h"

#include "OperatorNotes.h"
#include "operators/MVOperatorTable.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>

namespace morvanelab
{

namespace
{

using Json = nlohmann::ordered_json;

std::string hexId (std::uint32_t id)
{
    std::array<char, 16> text {};
    std::snprintf (text.data(), text.size(), "0x%X", id);
    return text.data();
}

const char* typeName (MVParameterType type)
{
    switch (type)
    {
        case MVParameterType::Float:
            return "Float";
        case MVParameterType::Int:
            return "Int";
        case MVParameterType::Choice:
            return "Choice";
        case MVParameterType::Bool:
            return "Bool";
        case MVParameterType::Sequence:
            return "Sequence";
        case MVParameterType::Curve:
            return "Curve";
        default:
            return "None";
    }
}

Json defaultOf (const ParameterSpec& parameter)
{
    switch (parameter.type)
    {
        case MVParameterType::Float:
            return parameter.initial;
        case MVParameterType::Int:
            return static_cast<int> (parameter.initial);
        case MVParameterType::Bool:
            return parameter.initial != 0.0;
        case MVParameterType::Choice:
            for (const ChoiceSpec& choice : parameter.choices)
                if (choice.value == static_cast<int> (parameter.initial))
                    return choice.name;
            return nullptr;
        default:
            return nullptr;
    }
}

Json parameterJson (const ParameterSpec& parameter, int index)
{
    Json json;
    json["index"] = index;
    json["name"] = parameter.name;
    json["type"] = typeName (parameter.type);
    json["description"] = parameter.description;

    if (parameter.type == MVParameterType::Float)
    {
        json["low"] = parameter.range.low;
        json["span"] = parameter.range.span;
        json["high"] = parameter.range.high();
    }
    else if (parameter.type == MVParameterType::Int)
    {
        json["low"] = parameter.intRange.low;
        json["span"] = parameter.intRange.span;
        json["high"] = parameter.intRange.high();
    }
    else if (parameter.type == MVParameterType::Choice)
    {
        json["choices"] = Json::array();
        for (const ChoiceSpec& choice : parameter.choices)
            json["choices"].push_back ({ { "value", choice.value }, { "name", choice.name } });
    }

    json["default"] = defaultOf (parameter);
    json["offset"] = parameter.offset;
    return json;
}

/** The notes know of every port how it is read; the table only of those that other operators have to know of. */
Json portsJson (const OperatorSpec& spec, int direction)
{
    const auto record = spec.newRecord();
    const OperatorNotes notes = OperatorNotes::of (spec);
    Json ports = Json::array();
    for (int port = 0; port < spec.portCount (record.data(), direction); ++port)
    {
        Json json;
        json["name"] = spec.portName (record.data(), direction, port);
        if (direction == portsIn)
            json["readOncePerBlock"] = notes.inputs[static_cast<std::size_t> (port)].reading == "once a block";
        ports.push_back (std::move (json));
    }
    return ports;
}

std::string portsText (const Json& ports, const char* label)
{
    std::string text;
    for (std::size_t i = 0; i < ports.size(); ++i)
        text += std::string ("  ") + label + " " + std::to_string (i) + "  \"" + ports[i]["name"].get<std::string>()
                + "\"" + (ports[i].value ("readOncePerBlock", false) ? "  (read once a block)\n" : "\n");
    return text;
}

std::string parameterText (const Json& parameter)
{
    std::string text = "  parameter " + parameter["index"].dump() + "  \"" + parameter["name"].get<std::string>()
                       + "\"  " + parameter["type"].get<std::string>();

    if (parameter.contains ("low"))
        text += "  " + parameter["low"].dump() + " to " + parameter["high"].dump();
    if (parameter.contains ("choices"))
        for (const Json& choice : parameter["choices"])
            text += "  " + choice["value"].dump() + "=" + choice["name"].dump();
    if (! parameter["default"].is_null())
        text += "  default " + parameter["default"].dump();
    return text + "\n      " + parameter["description"].get<std::string>() + "\n";
}

} // namespace

nlohmann::ordered_json operatorAsJson (const OperatorSpec& spec)
{
    Json json;
    json["id"] = hexId (spec.typeId);
    json["class"] = spec.className;
    json["name"] = spec.shortName;
    json["description"] = spec.description;
    json["attributeSize"] = spec.attributeSize;
    json["inputs"] = portsJson (spec, portsIn);
    json["outputs"] = portsJson (spec, portsOut);
    json["parameters"] = Json::array();
    for (std::size_t i = 0; i < spec.parameters.size(); ++i)
        json["parameters"].push_back (parameterJson (spec.parameters[i], static_cast<int> (i)));
    json["settings"] = Json::array();
    for (const FieldSpec& field : spec.fields)
        json["settings"].push_back (
            { { "name", field.name }, { "default", field.initial }, { "offset", field.offset } });
    return json;
}

std::string operatorsAsJson()
{
    Json list = Json::array();
    for (const OperatorRow& row : operatorTable())
        list.push_back (operatorAsJson (*row.spec));
    return list.dump (2) + "\n";
}

std::string operatorsAsText()
{
    std::string text;
    for (const OperatorRow& row : operatorTable())
    {
        const Json json = operatorAsJson (*row.spec);
        text += json["name"].get<std::string>() + "  " + json["id"].get<std::string>() + "  "
                + json["class"].get<std::string>() + "  (" + json["attributeSize"].dump() + " attribute bytes)\n  "
                + json["description"].get<std::string>() + "\n" + portsText (json["inputs"], "input")
                + portsText (json["outputs"], "output");
        for (const Json& parameter : json["parameters"])
            text += parameterText (parameter);
        text += "\n";
    }
    return text;
}

} // namespace morvanelab
