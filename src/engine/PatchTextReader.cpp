// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/PatchTextReader.h"

#include "engine/PatchTextMetadata.h"
#include "engine/PatchTextValues.h"
#include "foundation/MVChunks.h"
#include "operators/MVOperatorTable.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace morvanelab
{

using patchText::Json;
using patchText::member;

namespace
{

constexpr std::size_t maxParameters = 16;
constexpr std::size_t maxNameLength = 18;
constexpr std::size_t maxOperators = 4096;
constexpr std::size_t anyLength = std::numeric_limits<std::int32_t>::max();

void addChild (MVRiffPacker& parent, MVSmartPtr<MVRiffPacker> child) { parent.addChild (child); }

std::optional<std::uint64_t> hexNumber (const Json& json)
{
    if (! json.is_string())
        return std::nullopt;
    const auto& text = json.get_ref<const std::string&>();
    std::uint64_t value = 0;
    if (! text.starts_with ("0x"))
        return std::nullopt;
    const auto [end, error] = std::from_chars (text.data() + 2, text.data() + text.size(), value, 16);
    return error == std::errc() && end == text.data() + text.size() ? std::optional (value) : std::nullopt;
}

const OperatorSpec& specFrom (const patchText::Json& json, const TextPlace& where)
{
    const OperatorSpec* spec = nullptr;

    if (json.is_string())
    {
        const auto number = hexNumber (json);
        spec = number && *number <= std::numeric_limits<std::uint32_t>::max()
                   ? findOperatorSpec (static_cast<std::uint32_t> (*number))
                   : findOperatorSpec (std::string_view (json.get_ref<const std::string&>()));
    }

    if (spec == nullptr)
    {
        std::string names;
        for (const OperatorRow& row : operatorTable())
            names += (names.empty() ? "\"" : ", \"") + std::string (row.spec->shortName) + "\"";
        where.expected ("an operator: one of " + names);
    }

    return *spec;
}

} // namespace

PatchTextReader::PatchTextReader (const Json& text, std::string sourceName)
    : root (text), place (std::move (sourceName))
{
}

void PatchTextReader::checkKeys (const Json& object, const TextPlace& where,
                                 std::initializer_list<const char*> allowed) const
{
    if (! object.is_object())
        where.expected ("an object");

    for (const auto& [key, value] : object.items())
        if (std::none_of (allowed.begin(), allowed.end(), [&key = key] (const char* name) { return key == name; }))
        {
            std::string names;
            for (const char* name : allowed)
                names += (names.empty() ? "\"" : ", \"") + std::string (name) + "\"";
            (where / key).expected ("one of the keys " + names);
        }
}

MVPatchText::Compiled PatchTextReader::compile()
{
    checkKeys (root, place,
               { "$schema", "format", "metadata", "parameters", "autoAssignControls", "operators", "chunk" });

    if (const Json* const format = member (root, "format"); format != nullptr && *format != "sordelin-patch")
        (place / "format").expected ("\"sordelin-patch\"");
    if (const Json* const chunk = member (root, "chunk"); chunk != nullptr)
        return { patchText::chunkFromJson (*chunk, place / "chunk"), compileMetadata() };

    auto patch = compileHead();
    const Json* const operators = member (root, "operators");
    if (operators == nullptr || ! operators->is_array() || operators->size() > maxOperators)
        (place / "operators").expected ("an array of at most 4096 operators");

    declareOperators (*operators);
    for (std::size_t i = 0; i < entries.size(); ++i)
        if (entries[i].op)
            connect (i, (*operators)[i], place / "operators" / i);
    for (const Entry& entry : entries)
        addChild (*patch, entry.op ? entry.op->toChunk() : entry.raw);

    return { patch, compileMetadata() };
}

MVSmartPtr<MVRiffPacker> PatchTextReader::compileHead()
{
    auto patch = makeSmart<MVRiffPacker> (fourCC ("ptch"));
    auto names = makeSmart<MVRiffPacker> (fourCC ("vana"));
    auto descriptions = makeSmart<MVRiffPacker> (fourCC ("vade"));
    addVersionChunk (*patch);

    const Json none = Json::array();
    const Json* const given = member (root, "parameters");
    const Json& parameters = given != nullptr ? *given : none;
    const TextPlace where = place / "parameters";
    if (! parameters.is_array() || parameters.size() > maxParameters)
        where.expected ("an array of at most 16 parameters");

    for (std::size_t i = 0; i < maxParameters; ++i)
    {
        std::string name;
        std::string description;

        if (i < parameters.size())
        {
            checkKeys (parameters[i], where / i, { "name", "description" });
            if (const Json* const text = member (parameters[i], "name"); text != nullptr)
                name = patchText::textFromJson (*text, maxNameLength, where / i / "name");
            if (const Json* const text = member (parameters[i], "description"); text != nullptr)
                description = patchText::textFromJson (*text, anyLength, where / i / "description");
        }

        parameterNames.push_back (name);
        addTextChunk (*names, fourCC ("name"), MVString (std::string_view (name)));
        addTextChunk (*descriptions, fourCC ("desc"), MVString (std::string_view (description)));
    }

    addChild (*patch, names);
    addChild (*patch, descriptions);

    if (const Json* const assign = member (root, "autoAssignControls"); assign != nullptr)
    {
        if (! assign->is_number_integer())
            (place / "autoAssignControls").expected ("a whole number");
        const auto value = static_cast<std::int32_t> (assign->get<std::int64_t>());
        addChild (*patch, makeSmart<MVRiffPacker> (fourCC ("puse"), &value, 4));
    }

    return patch;
}

MVSmartPtr<MVMetaData> PatchTextReader::compileMetadata() const
{
    auto metadata = makeSmart<MVMetaData>();
    const Json* const json = member (root, "metadata");
    if (json != nullptr)
        patchText::metadataFromJson (*json, *metadata, place / "metadata");
    return metadata;
}

void PatchTextReader::declareOperators (const Json& list)
{
    for (std::size_t i = 0; i < list.size(); ++i)
    {
        const TextPlace where = place / "operators" / i;
        if (! list[i].is_object())
            where.expected ("an operator: an object");

        std::string name = "operator " + std::to_string (i);
        if (const Json* const given = member (list[i], "name"); given != nullptr)
        {
            if (! given->is_string() || given->get_ref<const std::string&>().empty())
                (where / "name").expected ("a name");
            name = given->get<std::string>();
        }

        if (! indexByName.emplace (name, i).second)
            (where / "name").expected ("a name of its own; \"" + name + "\" stands twice");
        entries.push_back (declareOperator (list[i], i, where));
    }
}

PatchTextReader::Entry PatchTextReader::declareOperator (const Json& json, std::size_t index, const TextPlace& where)
{
    if (const Json* const chunk = member (json, "chunk"); chunk != nullptr)
    {
        checkKeys (json, where, { "name", "chunk" });
        return { std::nullopt, patchText::chunkFromJson (*chunk, where / "chunk", 1) };
    }

    checkKeys (json, where,
               { "name", "operator", "id", "version", "parameters", "settings", "attributes", "inputs", "routes" });
    const Json* const kind = member (json, "operator");
    StoredOperator op = StoredOperator::ofClass (specFrom (kind != nullptr ? *kind : Json(), where / "operator"));
    op.id = index + 1;

    if (const Json* const id = member (json, "id"); id != nullptr)
    {
        const auto number = hexNumber (*id);
        if (! number)
            (where / "id").expected ("0x and up to 16 hexadecimal digits");
        op.id = *number;
    }

    if (const Json* const version = member (json, "version"); version != nullptr)
    {
        const auto whole = [] (const Json& n)
        { return n.is_number_unsigned() && n.get<std::uint64_t>() <= 0xFFFFFFFF; };
        if (! version->is_array() || version->size() != 4 || ! std::all_of (version->begin(), version->end(), whole))
            (where / "version").expected ("an array of 4 whole numbers");
        op.version = version->get<std::array<std::uint32_t, 4>>();
    }

    readRecord (op, json, where);
    op.inputs.resize (static_cast<std::size_t> (op.portCount (portsIn)));
    return { op, {} };
}

void PatchTextReader::readRecord (StoredOperator& op, const Json& json, const TextPlace& where) const
{
    if (const Json* const attributes = member (json, "attributes"); attributes != nullptr)
    {
        const auto bytes =
            attributes->is_string() ? patchText::bytesOfHex (attributes->get<std::string>()) : std::nullopt;
        if (! bytes || bytes->size() != op.record.size())
            (where / "attributes").expected (std::to_string (op.record.size()) + " bytes as hexadecimal text");
        op.record = *bytes;
    }

    const auto each = [&] (const char* key, auto specs, auto&& read)
    {
        const Json* const values = member (json, key);
        if (values == nullptr)
            return;
        if (! values->is_object())
            (where / key).expected ("an object");

        for (const auto& [name, value] : values->items())
        {
            const auto found = std::find_if (specs.begin(), specs.end(),
                                             [&name = name] (const auto& spec) { return name == spec.name; });
            if (found == specs.end())
            {
                std::string names;
                for (const auto& spec : specs)
                    names += (names.empty() ? "\"" : ", \"") + std::string (spec.name) + "\"";
                (where / key / name).expected (names.empty() ? "nothing: this operator has none" : "one of " + names);
            }
            read (*found, value, where / key / name);
        }
    };

    each ("settings", op.spec->fields,
          [&op] (const FieldSpec& field, const Json& value, const TextPlace& at)
          { patchText::fieldFromJson (op, field, value, at); });
    each ("parameters", op.spec->parameters,
          [&op] (const ParameterSpec& parameter, const Json& value, const TextPlace& at)
          { patchText::parameterFromJson (op, parameter, value, at); });
}

void PatchTextReader::connect (std::size_t index, const Json& json, const TextPlace& where)
{
    StoredOperator& op = *entries[index].op;

    if (const Json* const inputs = member (json, "inputs"); inputs != nullptr)
    {
        if (! inputs->is_object())
            (where / "inputs").expected ("an object");

        std::vector<bool> given (op.inputs.size());
        for (const auto& [label, input] : inputs->items())
        {
            const TextPlace at = where / "inputs" / label;
            const int port = op.findPort (portsIn, label);
            if (port < 0)
            {
                std::string names;
                for (int p = 0; p < op.portCount (portsIn); ++p)
                    names += (names.empty() ? "\"" : ", \"") + op.portLabel (portsIn, p) + "\"";
                at.expected (names.empty() ? "nothing: this operator has no inputs" : "one of the inputs " + names);
            }
            if (given[static_cast<std::size_t> (port)])
                at.expected ("each input once");
            given[static_cast<std::size_t> (port)] = true;
            connectInput (index, port, input, at);
        }
    }

    if (const Json* const routes = member (json, "routes"); routes != nullptr)
    {
        const TextPlace at = where / "routes";
        if (! routes->is_array())
            at.expected ("an array");
        const auto word = [] (const Json& n)
        {
            return n.is_number_integer() && n.get<std::int64_t>() >= std::numeric_limits<std::int32_t>::min()
                   && n.get<std::int64_t>() <= std::numeric_limits<std::int32_t>::max();
        };
        for (std::size_t i = 0; i < routes->size(); ++i)
        {
            const Json& route = (*routes)[i];
            if (! route.is_array() || route.size() != 3 || ! std::all_of (route.begin(), route.end(), word))
                (at / i).expected ("three whole numbers: source position against this operator, its output, input");
            op.routes.push_back ({ route[0].get<int>(), route[1].get<int>(), route[2].get<int>() });
        }
    }
}

void PatchTextReader::connectInput (std::size_t index, int port, const Json& json, const TextPlace& where)
{
    StoredOperator& op = *entries[index].op;
    const Json shortForm = json.is_string() ? Json { { "from", json } } : Json();
    const Json& input = json.is_string() ? shortForm : json;
    checkKeys (input, where, { "from", "output", "scale", "control" });

    if (const Json* const scale = member (input, "scale"); scale != nullptr)
        op.inputs[static_cast<std::size_t> (port)].scale = patchText::numberFromJson (*scale, where / "scale");
    if (const Json* const control = member (input, "control"); control != nullptr)
        op.inputs[static_cast<std::size_t> (port)].control = controlFrom (*control, where / "control");

    const Json* const from = member (input, "from");
    const Json* const output = member (input, "output");
    if (from == nullptr)
    {
        if (output != nullptr)
            (where / "from").expected ("the operator whose output this is");
        return;
    }

    const auto source = from->is_string() ? indexByName.find (from->get<std::string>()) : indexByName.end();
    if (source == indexByName.end())
        (where / "from").expected ("the name of an operator of this patch");

    const int sourcePort = outputFrom (entries[source->second], output, where / "output");
    op.routes.push_back ({ static_cast<int> (source->second) - static_cast<int> (index), sourcePort, port });
}

int PatchTextReader::outputFrom (const Entry& source, const Json* label, const TextPlace& where) const
{
    if (! source.op)
    {
        int port = 0;
        const std::string text = label == nullptr ? "#0" : label->is_string() ? label->get<std::string>() : "";
        const auto [end, error] =
            std::from_chars (text.data() + std::min<std::size_t> (1, text.size()), text.data() + text.size(), port);
        if (! text.starts_with ('#') || error != std::errc() || end != text.data() + text.size() || port < 0)
            where.expected ("# and the index of an output");
        return port;
    }

    const int count = source.op->portCount (portsOut);
    if (label == nullptr && count == 1)
        return 0;

    const int port = label != nullptr && label->is_string()
                         ? source.op->findPort (portsOut, label->get_ref<const std::string&>())
                         : -1;
    if (port < 0)
    {
        std::string names;
        for (int p = 0; p < count; ++p)
            names += (names.empty() ? "\"" : ", \"") + source.op->portLabel (portsOut, p) + "\"";
        where.expected (names.empty() ? "another source: that operator has no outputs" : "one of the outputs " + names);
    }
    return port;
}

int PatchTextReader::controlFrom (const Json& json, const TextPlace& where) const
{
    if (const Json* const stored = patchText::storedValue (json);
        stored != nullptr && stored->is_number_integer() && stored->get<std::int64_t>() == stored->get<std::int32_t>())
        return stored->get<std::int32_t>();

    if (json.is_number_integer() && json.get<std::int64_t>() >= 0 && json.get<std::int64_t>() < 16)
        return json.get<int>();

    if (json.is_string() && ! json.get_ref<const std::string&>().empty())
    {
        const auto found = std::find (parameterNames.begin(), parameterNames.end(), json.get_ref<const std::string&>());
        if (found != parameterNames.end())
            return static_cast<int> (found - parameterNames.begin());
    }

    where.expected ("the name of a parameter of this patch, or its index from 0 to 15");
}

} // namespace morvanelab
