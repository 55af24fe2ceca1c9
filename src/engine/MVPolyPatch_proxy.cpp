// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVPolyPatch_proxy.h"

#include "engine/MVOperator_proxy.h"
#include "engine/MVPolyPatch.h"
#include "operators/MVOperator.h"

#include <memory>

namespace morvanelab
{

namespace
{

MVSmartPtr<MVString> copyOrNothing (const MVString& text)
{
    return text.isEmpty() ? MVSmartPtr<MVString>() : makeSmart<MVString> (text);
}

} // namespace

MVPolyPatch_proxy::MVPolyPatch_proxy (const MVPolyPatch& voice, int layerToCopy)
    : MVNetwork (layerToCopy + 1), layer (layerToCopy)
{
    copyVariables (voice);
    copyNodes (voice);
    rootNode = voice.rootNode (layer);
    copyRoutes (voice);
}

void MVPolyPatch_proxy::copyVariables (const MVPolyPatch& voice)
{
    for (int index = 0; index < MVPolyPatch::numVariables; ++index)
    {
        parameterInUse.add (voice.isControlInUse (index) ? 1 : 0);
        variableNames.add (copyOrNothing (voice.variableName (layer, index)));
        variableDescs.add (copyOrNothing (voice.variableDescription (layer, index)));
    }
}

void MVPolyPatch_proxy::copyNodes (const MVPolyPatch& voice)
{
    for (int index = 0; index < voice.numNodes (layer); ++index)
    {
        std::unique_ptr<MVNetNode> node;
        if (const auto* const op = dynamic_cast<const MVOperator*> (voice.nodeAt (layer, index)); op != nullptr)
            node = std::make_unique<MVOperator_proxy> (*op);

        // A free slot is copied too, since routes name nodes by index.
        if (setNode (layer, index, node.get()))
            node.release();
    }
}

void MVPolyPatch_proxy::copyRoutes (const MVPolyPatch& voice)
{
    for (int index = 0; index < voice.numRoutes (layer); ++index)
    {
        const MVNetRoute& route = *voice.routeAt (layer, index);
        addRoute (layer, route.srcNode, route.srcPort, route.dstNode, route.dstPort, false);

        const MVNetNode* const source = nodeAt (layer, route.srcNode);
        auto* const destination = dynamic_cast<MVOperator_proxy*> (nodeAt (layer, route.dstNode));
        if (source != nullptr && destination != nullptr)
            destination->setInputSource (route.dstPort, source->getId(), route.srcPort);
    }
}

std::uint32_t MVPolyPatch_proxy::getNodeType (std::uint64_t nodeId) const
{
    const auto* const node = dynamic_cast<const MVOperator_proxy*> (nodeById (layer, nodeId));
    return node != nullptr ? node->typeId() : unknownType;
}

std::uint64_t MVPolyPatch_proxy::getNodeIdAt (int index) const
{
    if (index < 0 || index >= getNumNodes())
        return 0;
    const MVNetNode* const node = nodeAt (layer, index);
    return node != nullptr ? node->getId() : 0;
}

bool MVPolyPatch_proxy::isParameterInUse (int index) const
{
    return index >= 0 && index < parameterInUse.size() && parameterInUse[index] != 0;
}

void MVPolyPatch_proxy::release()
{
    if (inUse())
        users.fetch_sub (1, std::memory_order_relaxed);
}

const char* MVPolyPatch_proxy::textAt (const Texts& texts, int index, int& length)
{
    length = 0;
    if (index < 0 || index >= texts.size() || ! texts[index])
        return nullptr;

    length = texts[index]->length();
    return texts[index]->text();
}

} // namespace morvanelab
