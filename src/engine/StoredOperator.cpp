// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/StoredOperator.h"

#include "engine/PatchTextChunks.h"
#include "foundation/MVChunks.h"
#include "operators/MVOperatorTable.h"

#include <charconv>
#include <cstring>

namespace morvanelab
{

namespace
{

/** Records of older versions have other layouts under the same size. */
constexpr std::uint32_t oldestCurrentLayout = 100100;
constexpr std::uint32_t operatorIdBase = 0xA70000;

std::string trimmed (const std::string& text)
{
    const auto first = text.find_first_not_of (' ');
    return first == std::string::npos ? "" : text.substr (first, text.find_last_not_of (' ') - first + 1);
}

bool readInputs (const MVRiffPacker& chunk, StoredOperator& op)
{
    const auto list = chunk.findChild (fourCC ("inpt"), 0);
    if (list == nullptr || list->childCount() != 2 * static_cast<int> (op.inputs.size()))
        return false;

    for (std::size_t i = 0; i < op.inputs.size(); ++i)
    {
        const int at = static_cast<int> (i);
        if (! chunkRecord (list->findChild (fourCC ("insc"), at), op.inputs[i].scale)
            || ! chunkRecord (list->findChild (fourCC ("cmap"), at), op.inputs[i].control))
            return false;
    }

    return true;
}

} // namespace

StoredOperator StoredOperator::ofClass (const OperatorSpec& spec)
{
    StoredOperator op;
    op.spec = &spec;
    op.record = spec.newRecord();
    op.inputs.resize (static_cast<std::size_t> (op.portCount (portsIn)));
    return op;
}

std::optional<StoredOperator> StoredOperator::fromChunk (const MVRiffPacker& chunk)
{
    std::uint32_t typeId = 0;
    if (! chunkRecord (chunk.findChild (fourCC ("clas"), 0), typeId))
        return std::nullopt;

    const OperatorSpec* const spec = findOperatorSpec (operatorIdBase + (typeId & 0xFFFF));
    const auto attributes = chunk.findChild (fourCC ("attr"), 0);
    if (spec == nullptr || attributes == nullptr
        || static_cast<std::size_t> (attributes->getPayloadSize()) != spec->attributeSize)
        return std::nullopt;

    StoredOperator op;
    op.spec = spec;
    op.record.resize (spec->attributeSize);
    if (spec->attributeSize > 0)
        std::memcpy (op.record.data(), attributes->getPayload(), spec->attributeSize);

    if (! chunkRecord (chunk.findChild (fourCC ("guid"), 0), op.id)
        || ! chunkRecord (chunk.findChild (fourCC ("ver "), 0), op.version)
        || versionCode (op.version[0], op.version[1], op.version[2]) < oldestCurrentLayout)
        return std::nullopt;

    op.inputs.resize (static_cast<std::size_t> (op.portCount (portsIn)));
    if (! readInputs (chunk, op))
        return std::nullopt;

    for (int i = 0; i < chunk.childCount(); ++i)
    {
        const auto child = chunk.childAt (i);
        std::array<std::int32_t, 6> words {};
        if (child->getChunkId() != fourCC ("rout"))
            continue;
        if (! chunkRecord (child, words))
            return std::nullopt;
        op.routes.push_back ({ words[2], words[3], words[4] });
    }

    // Whatever else the chunk holds shows up here: reserved words, other orders, foreign chunks.
    return patchText::packed (*op.toChunk()) == patchText::packed (chunk) ? std::optional (op) : std::nullopt;
}

MVSmartPtr<MVRiffPacker> StoredOperator::toChunk() const
{
    auto chunk = makeSmart<MVRiffPacker> (fourCC ("op  "));
    addChunk (*chunk, fourCC ("clas"), spec->typeId);
    chunk->addChild (makeSmart<MVRiffPacker> (fourCC ("attr"), record.data(), static_cast<int> (record.size())));
    addChunk (*chunk, fourCC ("guid"), id);
    addChunk (*chunk, fourCC ("ver "), version);

    auto list = makeSmart<MVRiffPacker> (fourCC ("inpt"));
    for (const Input& input : inputs)
    {
        addChunk (*list, fourCC ("insc"), input.scale);
        addChunk (*list, fourCC ("cmap"), input.control);
    }
    chunk->addChild (list);

    for (const Route& route : routes)
        addChunk (*chunk, fourCC ("rout"),
                  std::array<std::int32_t, 6> { 0, 0, route.sourceDelta, route.output, route.input, 0 });

    return chunk;
}

std::string StoredOperator::portLabel (int direction, int port) const
{
    const std::string name = trimmed (spec->portName (record.data(), direction, port));
    bool unique = ! name.empty() && name.front() != '#';

    for (int other = 0; unique && other < portCount (direction); ++other)
        unique = other == port || trimmed (spec->portName (record.data(), direction, other)) != name;

    return unique ? name : std::string ("#").append (std::to_string (port));
}

int StoredOperator::findPort (int direction, const std::string& label) const
{
    const int count = portCount (direction);

    if (label.starts_with ('#'))
    {
        int port = -1;
        const auto [end, error] = std::from_chars (label.data() + 1, label.data() + label.size(), port);
        const bool whole = error == std::errc() && end == label.data() + label.size();
        return whole && port >= 0 && port < count ? port : -1;
    }

    for (int port = 0; port < count; ++port)
        if (portLabel (direction, port) == trimmed (label))
            return port;

    return -1;
}

} // namespace morvanelab
