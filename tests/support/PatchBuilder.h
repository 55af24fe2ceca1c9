// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVChunks.h"
#include "foundation/MVRiffPacker.h"
#include "operators/AttributeRecord.h"
#include "operators/MVOperatorTable.h"
#include "operators/OperatorSpec.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace morvanelab::test
{

/** Writes stored patches chunk by chunk, also such that no program of ours would write. Nodes are addressed by the
    index that node() returns. */
class PatchBuilder
{
public:
    static constexpr std::uint32_t output = 0xA70006;
    static constexpr std::uint32_t oscillator = 0xA70005;
    static constexpr std::uint32_t constant = 0xA70002;
    static constexpr std::uint32_t sum = 0xA70009;
    static constexpr std::uint32_t product = 0xA70007;
    static constexpr std::uint32_t midiKeyIn = 0xA70004;
    static constexpr std::uint32_t passThrough = 0xA7000B;
    static constexpr std::uint32_t input = 0xA7000C;

    /** Adds an operator of default values. The identifier may be an unknown one. */
    int node (std::uint32_t typeId)
    {
        Node added;
        added.typeId = typeId;
        if (const OperatorSpec* const spec = findOperatorSpec (typeId); spec != nullptr)
            added.record = spec->newRecord();
        nodes.push_back (added);
        return static_cast<int> (nodes.size()) - 1;
    }

    /** A constant of this value. */
    int constantNode (double value)
    {
        const int index = node (constant);
        set (index, "value", value);
        return index;
    }

    void set (int index, const char* parameter, double value)
    {
        const OperatorSpec* const spec = findOperatorSpec (at (index).typeId);
        const int number = spec != nullptr ? spec->parameterIndex (parameter) : -1;
        if (number < 0)
            throw std::invalid_argument (parameter);
        attributeRecord::writeNumber (at (index).record.data(), *spec->parameter (number), value);
    }

    /** Gives every input up to this one a scale of 1 and no control, and this one what is given. */
    void inputEntry (int index, int port, double scale, std::int32_t control)
    {
        Node& target = at (index);
        target.inputs.resize (std::max (target.inputs.size(), static_cast<std::size_t> (port) + 1));
        target.inputs[static_cast<std::size_t> (port)] = { scale, control };
    }

    /** Stores the identity of an operator. */
    void identity (int index, std::uint64_t id) { at (index).id = id; }

    /** A route that stores exactly these numbers in the chunk of dstNode. */
    void storedRoute (int dstNode, std::int32_t srcDelta, std::int32_t srcPort, std::int32_t dstPort)
    {
        at (dstNode).routes.push_back ({ 0, 0, srcDelta, srcPort, dstPort, 0 });
    }

    void route (int srcNode, int srcPort, int dstNode, int dstPort)
    {
        storedRoute (dstNode, srcNode - dstNode, srcPort, dstPort);
    }

    std::vector<std::string> names;
    std::vector<std::string> descriptions;
    /** Value of the chunk that asks for controls to be dealt out; below 0 leaves it away. */
    std::int32_t autoAssign = -1;

    MVSmartPtr<MVRiffPacker> tree (std::uint32_t rootId = fourCC ("ptch")) const
    {
        auto root = makeSmart<MVRiffPacker> (rootId);
        addVersionChunk (*root);
        root->addChild (texts (fourCC ("vana"), fourCC ("name"), names));
        root->addChild (texts (fourCC ("vade"), fourCC ("desc"), descriptions));
        if (autoAssign >= 0)
            addChunk (*root, fourCC ("puse"), autoAssign);
        for (const Node& each : nodes)
            root->addChild (chunkOf (each));
        return root;
    }

private:
    struct Input
    {
        double scale = 1.0;
        std::int32_t control = -1;
    };

    struct StoredRoute
    {
        std::int32_t words[6];
    };

    struct Node
    {
        std::uint32_t typeId = 0;
        std::uint64_t id = 0;
        std::vector<std::byte> record;
        std::vector<Input> inputs;
        std::vector<StoredRoute> routes;
    };

    Node& at (int index) { return nodes.at (static_cast<std::size_t> (index)); }

    static MVSmartPtr<MVRiffPacker> texts (std::uint32_t listId, std::uint32_t itemId,
                                           const std::vector<std::string>& items)
    {
        auto list = makeSmart<MVRiffPacker> (listId);
        for (const std::string& item : items)
            addTextChunk (*list, itemId, MVString (item.c_str()));
        return list;
    }

    static MVSmartPtr<MVRiffPacker> chunkOf (const Node& node)
    {
        auto chunk = makeSmart<MVRiffPacker> (fourCC ("op  "));
        addChunk (*chunk, fourCC ("clas"), node.typeId);
        chunk->addChild (
            makeSmart<MVRiffPacker> (fourCC ("attr"), node.record.data(), static_cast<int> (node.record.size())));
        if (node.id != 0)
            addChunk (*chunk, fourCC ("guid"), node.id);
        addVersionChunk (*chunk);

        auto inputs = makeSmart<MVRiffPacker> (fourCC ("inpt"));
        for (const Input& each : node.inputs)
        {
            addChunk (*inputs, fourCC ("insc"), each.scale);
            addChunk (*inputs, fourCC ("cmap"), each.control);
        }
        chunk->addChild (inputs);

        for (const StoredRoute& each : node.routes)
            addChunk (*chunk, fourCC ("rout"), each);
        return chunk;
    }

    std::vector<Node> nodes;
};

} // namespace morvanelab::test
