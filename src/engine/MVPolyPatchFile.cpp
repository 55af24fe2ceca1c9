// SPDX-License-Identifier: GPL-3.0-or-later
// The part of MVPolyPatch that reads and writes stored patches.
#include "engine/MVPolyPatch.h"
#include "foundation/MVChunks.h"
#include "foundation/MVException.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"
#include "operators/MVOpOutput.h"
#include "operators/MVOpPassThrough.h"
#include "operators/MVOperator.h"
#include "operators/MVRenderEngineAttributes.h"

#include <algorithm>

namespace morvanelab
{

namespace
{
constexpr std::uint32_t patchTag = fourCC ("ptch");
constexpr std::uint32_t namesTag = fourCC ("vana");
constexpr std::uint32_t nameTag = fourCC ("name");
constexpr std::uint32_t descriptionsTag = fourCC ("vade");
constexpr std::uint32_t descriptionTag = fourCC ("desc");
constexpr std::uint32_t autoAssignTag = fourCC ("puse");
constexpr std::uint32_t operatorTag = fourCC ("op  ");
constexpr std::uint32_t classTag = fourCC ("clas");
constexpr std::uint32_t routeTag = fourCC ("rout");

constexpr const char* notWellFormedText = "Error:  Not a well-formed patch.";
constexpr const char* noOperatorText = "Error:  Patch loading error - no operator instance.";
constexpr const char* invalidDataText = "Error:  Invalid patch data.";

/** The stored form of a route; the operator that holds it is the destination. */
struct StoredRoute
{
    std::int32_t reservedA = 0;
    std::int32_t reservedB = 0;
    std::int32_t srcDelta = 0; ///< source index minus destination index
    std::int32_t srcPort = 0;
    std::int32_t dstPort = 0;
    std::int32_t reservedC = 0;
};
static_assert (sizeof (StoredRoute) == 24);

[[noreturn]] void fail (const char* text) { throw MVException (resultFailed, text); }

std::vector<MVSmartPtr<MVRiffPacker>> operatorChunks (const MVRiffPacker& riff)
{
    std::vector<MVSmartPtr<MVRiffPacker>> chunks;
    for (int i = 0; i < riff.childCount(); ++i)
        if (auto child = riff.childAt (i); child->getChunkId() == operatorTag)
            chunks.push_back (std::move (child));
    return chunks;
}
} // namespace

int MVPolyPatch::loadPatch (MVSmartPtr<MVObject>& data, int layer)
{
    const MVSmartPtr<MVObject> taken = std::move (data);
    if (! taken)
        return resultEmptyData;

    MVSmartPtr<MVRiffPacker> tree;
    if (taken->typeId() == MVDataBlock::classType)
    {
        if (const auto block = taken.castTo<MVDataBlock>())
            tree = makeSmart<MVRiffPacker> (block->flatBytes(), block->getUsed(), true);
    }
    else if (taken->typeId() == MVRiffPacker::classType)
    {
        tree = taken.castTo<MVRiffPacker>();
    }

    return tree && tree->isWellFormed() ? parsePatch (tree, layer) : int { resultDone };
}

int MVPolyPatch::parsePatch (MVSmartPtr<MVRiffPacker>& riff, int layer)
{
    const MVSmartPtr<MVRiffPacker> tree = std::move (riff);
    clearSubnet (layer);
    autoAssignControls = 0;

    if (! isLayer (layer) || ! tree || tree->getChunkId() != patchTag)
        fail (notWellFormedText);

    readTexts (*tree, *layerAt (layer).content.texts);
    autoAssignControls = childNumber<std::int32_t> (*tree, autoAssignTag).value_or (autoAssignControls);

    const auto chunks = operatorChunks (*tree);
    if (chunks.size() > maxOperators)
        fail (invalidDataText);

    readOperators (chunks, layer);
    for (int index = 0; index < numNodes (layer); ++index)
        readRoutes (*chunks[static_cast<std::size_t> (index)], layer, index);

    for (int index = 0; index < numNodes (layer); ++index)
        passControlsTo (*operatorAt (layer, index));

    return resultDone;
}

void MVPolyPatch::readTexts (const MVRiffPacker& riff, Texts& texts) const
{
    const auto names = riff.findChild (namesTag);
    const auto descriptions = riff.findChild (descriptionsTag);

    for (int index = 0; index < numVariables; ++index)
    {
        const auto slot = static_cast<std::size_t> (index);
        if (names)
        {
            texts.names[slot] = childText (*names, nameTag, index).value_or (MVString());
            texts.names[slot].truncate (maxVariableNameLength);
        }
        if (descriptions)
            texts.descriptions[slot] = childText (*descriptions, descriptionTag, index).value_or (MVString());
    }
}

void MVPolyPatch::readOperators (const std::vector<MVSmartPtr<MVRiffPacker>>& chunks, int layer)
{
    for (std::size_t i = 0; i < chunks.size(); ++i)
    {
        auto op = makeOperator (chunks[i], layer, static_cast<int> (i));
        if (addNode (layer, op.get()))
            op.release();
    }
}

std::unique_ptr<MVOperator> MVPolyPatch::makeOperator (const MVSmartPtr<MVRiffPacker>& chunk, int layer, int index)
{
    if (! childNumber<std::uint16_t> (*chunk, classTag))
        fail (notWellFormedText);

    std::unique_ptr<MVOperator> op (attributes->createOperator (chunk));
    if (op == nullptr)
        fail (noOperatorText);

    if (op->typeId() != MVOpOutput::spec.typeId)
        return op;

    // A patch has one output, the first. Another becomes a wire, so that the nodes keep their indices.
    int& root = layerAt (layer).content.root;
    if (root >= 0)
        return std::make_unique<MVOpPassThrough> (attributes);

    root = index;
    return op;
}

void MVPolyPatch::readRoutes (const MVRiffPacker& chunk, int layer, int index)
{
    const int numInputs = nodeAt (layer, index)->getNumPorts (portsIn);
    if (numInputs < 1)
        return;

    for (int i = 0; i < chunk.childCount(); ++i)
    {
        const auto child = chunk.childAt (i);
        StoredRoute route;
        if (child->getChunkId() != routeTag || ! chunkRecord (child, route))
            continue;

        // Sums of stored numbers wrap as 32-bit numbers do.
        const auto sum = static_cast<std::uint32_t> (route.srcDelta) + static_cast<std::uint32_t> (index);
        const int source = wrapIndex (static_cast<std::int32_t> (sum), numNodes (layer) - 1);
        const int numOutputs = nodeAt (layer, source)->getNumPorts (portsOut);
        if (numOutputs > 0)
            addRoute (layer, source, wrapIndex (route.srcPort, numOutputs - 1), index,
                      wrapIndex (route.dstPort, numInputs - 1), true);
    }
}

MVSmartPtr<MVRiffPacker> MVPolyPatch::savePatch (int layer)
{
    if (numNodes (layer) < 1)
        return {};

    auto patch = makeSmart<MVRiffPacker> (patchTag);
    addVersionChunk (*patch);

    auto names = makeSmart<MVRiffPacker> (namesTag);
    auto descriptions = makeSmart<MVRiffPacker> (descriptionsTag);
    for (int index = 0; index < numVariables; ++index)
    {
        addTextChunk (*names, nameTag, variableName (layer, index));
        addTextChunk (*descriptions, descriptionTag, variableDescription (layer, index));
    }
    patch->addChild (names);
    patch->addChild (descriptions);

    for (int index = 0; index < numNodes (layer); ++index)
    {
        const MVOperator* const op = operatorAt (layer, index);
        if (op == nullptr)
            continue;

        auto chunk = op->pack();
        for (const MVNetRoute* const route : routesIntoNode (layer, index))
        {
            const StoredRoute stored { .srcDelta = route->srcNode - index,
                                       .srcPort = route->srcPort,
                                       .dstPort = route->dstPort };
            addChunk (*chunk, routeTag, stored);
        }
        patch->addChild (chunk);
    }

    return patch;
}

} // namespace morvanelab
