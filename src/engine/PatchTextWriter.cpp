// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/PatchTextWriter.h"

#include "engine/PatchTextValues.h"
#include "foundation/MVChunks.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <limits>

namespace morvanelab
{

namespace
{

constexpr std::size_t maxParameters = 16;
constexpr std::size_t maxNameLength = 18;
constexpr std::size_t anyLength = std::numeric_limits<std::int32_t>::max();

std::string hexId (std::uint64_t id)
{
    std::array<char, 24> text {};
    std::snprintf (text.data(), text.size(), "0x%llx", static_cast<unsigned long long> (id));
    return text.data();
}

std::vector<std::string> textsIn (const MVRiffPacker& tree, std::uint32_t listId, std::uint32_t textId)
{
    std::vector<std::string> texts (maxParameters);
    if (const auto list = tree.findChild (listId); list)
        for (std::size_t i = 0; i < texts.size(); ++i)
            if (const auto text = childText (*list, textId, static_cast<int> (i)); text)
                texts[i] = text->toStdString();
    return texts;
}

} // namespace

patchText::Json PatchTextWriter::write()
{
    Json json;
    json["format"] = "sordelin-patch";
    if (Json parameters = writeParameters(); ! parameters.empty())
        json["parameters"] = std::move (parameters);

    if (const auto use = tree.findChild (fourCC ("puse"), 0); use != nullptr && use->getPayloadSize() == 4)
    {
        std::int32_t value = 0;
        std::memcpy (&value, use->getPayload(), 4);
        json["autoAssignControls"] = value;
    }

    collectOperators();
    json["operators"] = Json::array();
    for (std::size_t i = 0; i < entries.size(); ++i)
        json["operators"].push_back (writeOperator (i));
    return json;
}

void PatchTextWriter::collectOperators()
{
    for (int i = 0; i < tree.childCount(); ++i)
    {
        const auto chunk = tree.childAt (i);
        if (chunk->getChunkId() != fourCC ("op  "))
            continue;

        Entry entry { {}, StoredOperator::fromChunk (*chunk), chunk };
        const std::string kind = entry.op ? entry.op->spec->shortName : "operator";
        entry.name = kind + " " + std::to_string (entries.size());
        entries.push_back (std::move (entry));
    }
}

patchText::Json PatchTextWriter::writeParameters()
{
    parameterNames = textsIn (tree, fourCC ("vana"), fourCC ("name"));
    const auto descriptions = textsIn (tree, fourCC ("vade"), fourCC ("desc"));

    std::size_t used = 16;
    while (used > 0 && parameterNames[used - 1].empty() && descriptions[used - 1].empty())
        --used;

    Json list = Json::array();
    for (std::size_t i = 0; i < used; ++i)
    {
        Json parameter;
        parameter["name"] = patchText::textToJson (parameterNames[i], maxNameLength);
        parameter["description"] = patchText::textToJson (descriptions[i], anyLength);
        list.push_back (std::move (parameter));
    }
    return list;
}

patchText::Json PatchTextWriter::writeOperator (std::size_t index) const
{
    const Entry& entry = entries[index];
    Json json;
    json["name"] = entry.name;

    if (! entry.op)
    {
        json["chunk"] = patchText::chunkToJson (*entry.chunk);
        return json;
    }

    json["operator"] = entry.op->spec->shortName;
    if (entry.op->id != index + 1)
        json["id"] = hexId (entry.op->id);
    if (entry.op->version != StoredOperator::currentVersion)
        json["version"] = entry.op->version;
    writeRecord (json, *entry.op);
    writeInputs (json, index);
    return json;
}

void PatchTextWriter::writeRecord (Json& json, const StoredOperator& op) const
{
    Json settings;
    Json parameters;
    StoredOperator rebuilt = StoredOperator::ofClass (*op.spec);
    const TextPlace nowhere ({});

    for (const FieldSpec& field : op.spec->fields)
    {
        settings[field.name] = patchText::fieldToJson (op, field);
        patchText::fieldFromJson (rebuilt, field, settings[field.name], nowhere);
    }
    for (const ParameterSpec& parameter : op.spec->parameters)
    {
        parameters[parameter.name] = patchText::parameterToJson (op, parameter);
        patchText::parameterFromJson (rebuilt, parameter, parameters[parameter.name], nowhere);
    }

    // Padding that somebody filled, or list entries behind the last one that counts.
    if (rebuilt.record != op.record)
        json["attributes"] = patchText::hexOf (op.record.data(), op.record.size());
    if (! parameters.is_null())
        json["parameters"] = std::move (parameters);
    if (! settings.is_null())
        json["settings"] = std::move (settings);
}

void PatchTextWriter::writeInputs (Json& json, std::size_t index) const
{
    const StoredOperator& op = *entries[index].op;
    const bool named =
        std::all_of (op.routes.begin(), op.routes.end(), [&] (const auto& route) { return isNamed (index, route); });
    Json inputs;

    const auto describe = [&] (int port) -> Json&
    {
        Json& input = inputs[op.portLabel (portsIn, port)];
        const auto& stored = op.inputs[static_cast<std::size_t> (port)];
        if (stored.scale != 1.0)
            input["scale"] = patchText::numberToJson (stored.scale);
        if (stored.control != -1)
            input["control"] = writeControl (stored.control);
        return input;
    };

    // The order of the routes in the file is the order of the inputs in the text.
    std::vector<bool> done (op.inputs.size());
    for (const auto& route : op.routes)
    {
        if (! named)
            break;
        const Entry& source = entries[static_cast<std::size_t> (static_cast<int> (index) + route.sourceDelta)];
        Json& input = inputs[op.portLabel (portsIn, route.input)];
        input["from"] = source.name;
        if (! source.op)
            input["output"] = std::string ("#").append (std::to_string (route.output));
        else if (source.op->portCount (portsOut) != 1)
            input["output"] = source.op->portLabel (portsOut, route.output);
        describe (route.input);
        done[static_cast<std::size_t> (route.input)] = true;
    }

    for (std::size_t port = 0; port < op.inputs.size(); ++port)
        if (! done[port] && (op.inputs[port].scale != 1.0 || op.inputs[port].control != -1))
            describe (static_cast<int> (port));

    if (! inputs.is_null())
        json["inputs"] = std::move (inputs);
    if (! named)
        for (const auto& route : op.routes)
            json["routes"].push_back ({ route.sourceDelta, route.output, route.input });
}

patchText::Json PatchTextWriter::writeControl (int control) const
{
    if (control < 0 || control > 15)
        return { { "stored", control } };

    const std::string& name = parameterNames[static_cast<std::size_t> (control)];
    const bool usable = ! name.empty() && patchText::textToJson (name, maxNameLength).is_string()
                        && std::count (parameterNames.begin(), parameterNames.end(), name) == 1;
    return usable ? Json (name) : Json (control);
}

bool PatchTextWriter::isNamed (std::size_t index, const StoredOperator::Route& route) const
{
    const StoredOperator& op = *entries[index].op;
    const std::int64_t source = static_cast<std::int64_t> (index) + route.sourceDelta;

    if (source < 0 || source >= static_cast<std::int64_t> (entries.size()) || route.output < 0 || route.input < 0
        || route.input >= op.portCount (portsIn))
        return false;

    const auto& sourceOp = entries[static_cast<std::size_t> (source)].op;
    const auto sameInput = [&route] (const auto& other) { return other.input == route.input; };
    return (! sourceOp || route.output < sourceOp->portCount (portsOut))
           && std::count_if (op.routes.begin(), op.routes.end(), sameInput) == 1;
}

} // namespace morvanelab
