// SPDX-License-Identifier: GPL-3.0-or-later
// The part of MVPolyPatch that deals with parameter controls and the repair of lost connections.
#include "engine/MVPolyPatch.h"
#include "operators/MVOperator.h"

namespace morvanelab
{

namespace
{
/** From this input scale on an input asks for a parameter control: 0.05 rounded to single precision. */
constexpr double leastControlledScale = 0.05000000074505806;

/** Calls visit (node, input) for every input of a layer, until it returns true; whether it did. */
template <typename Visit>
bool anyInput (const MVNetwork& network, int layer, Visit&& visit)
{
    for (int index = 0; index < network.numNodes (layer); ++index)
    {
        MVNetNode* const node = network.nodeAt (layer, index);
        const int numInputs = node != nullptr ? node->getNumPorts (portsIn) : 0;
        for (int input = 0; input < numInputs; ++input)
            if (visit (*node, input))
                return true;
    }
    return false;
}
} // namespace

void MVPolyPatch::setActivatorControl (MVControlValue* control)
{
    activatorControl = control;
    passControls();
}

void MVPolyPatch::setParameterControls (MVVector<MVControlValue*>* controls)
{
    parameterControls = controls;
    passControls();
}

void MVPolyPatch::passControls()
{
    for (int layer = 0; layer < layerCount; ++layer)
        for (int index = 0; index < numNodes (layer); ++index)
            if (MVOperator* const op = operatorAt (layer, index); op != nullptr)
                passControlsTo (*op);
}

void MVPolyPatch::passControlsTo (MVOperator& op) const
{
    op.setControlValues (parameterControls);
    op.setPitchBendControl (activatorControl);
    op.refreshControls();
}

void MVPolyPatch::refreshControls (int layer)
{
    for (int index = 0; index < numNodes (layer); ++index)
        if (MVOperator* const op = operatorAt (layer, index); op != nullptr)
            op->refreshControls();
}

bool MVPolyPatch::isControlInUse (int controlId) const
{
    for (int layer = 0; layer < layerCount - 1; ++layer)
        if (patchState (layer) != PATCH_STOPPED && isControlUsedInLayer (layer, controlId))
            return true;
    return false;
}

bool MVPolyPatch::isControlUsedInLayer (int layer, int controlId) const
{
    return anyInput (*this, layer,
                     [controlId] (const MVNetNode& node, int input)
                     { return node.getInputControl (input) == controlId; });
}

void MVPolyPatch::assignInputControls (int layer)
{
    if (! hasDescription (layer))
    {
        setSubnetActive (layer, true);
        return;
    }

    if (isActive())
        setSubnetActive (layer, true);

    const MVNetworkInfo& info = *networkInfoAt (layer);
    int next = 0;
    for (int i = info.numExecDescs(); --i >= 0;)
        for (const MVNetRoute* const route : routesIntoNode (layer, info.execDescAt (i)->nodeIndex))
            assignControl (layer, *route, next);

    refreshControls (layer);
}

void MVPolyPatch::assignControl (int layer, const MVNetRoute& route, int& next)
{
    MVOperator* const op = operatorAt (layer, route.dstNode);
    if (op == nullptr)
        return;

    const int numControls = parameterControls != nullptr ? parameterControls->size() : 0;
    const double scale = op->getInputScale (route.dstPort);

    if (scale >= leastControlledScale && op->isControlInput (route.dstPort) && next < numControls)
        setNodeInputControl (layer, route.dstNode, route.dstPort, next++);
    else if (scale < leastControlledScale)
        op->setInputControl (route.dstPort, -1);
}

void MVPolyPatch::compactControls (int layer)
{
    const int numControls = parameterControls != nullptr ? parameterControls->size() : 0;

    for (int i = 0; i < numControls; ++i)
    {
        int used = i;
        while (used < numControls && ! isControlUsedInLayer (layer, used))
            ++used;
        if (used == numControls)
            break;
        if (used != i)
            anyInput (*this, layer,
                      [i, used] (MVNetNode& node, int input)
                      {
                          if (node.getInputControl (input) == used)
                              node.setInputControl (input, i);
                          return false;
                      });
    }

    refreshControls (layer);
}

bool MVPolyPatch::hasSignalPath (int layer, int root) const
{
    for (const MVNetRoute* const route : routesIntoNode (layer, root))
        if (route->dstPort == 0 || (route->dstPort - 1) % 3 == 0)
            return true;
    return false;
}

bool MVPolyPatch::connectNeighbour (int layer, int root)
{
    // Only the node behind the root is ever tried; with fewer than three nodes not even that.
    const int count = numNodes (layer);
    if (count < 3)
        return false;

    const int candidate = (root + 1) % count;
    const MVNetNode* const node = nodeAt (layer, candidate);
    if (node == nullptr || node->getNumPorts (portsOut) < 1 || node->getNumPorts (portsIn) < 1)
        return false;

    addRoute (layer, candidate, 0, root, 0, true);
    return true;
}

bool MVPolyPatch::repairPatch (int layer, int rootNodeIndex, int minNodes, bool assign)
{
    const int root = rootNode (layer);
    const bool connected = hasSignalPath (layer, root) || connectNeighbour (layer, root);
    const bool playable = connected && connectUnreached (layer, rootNodeIndex, minNodes);

    setSubnetActive (layer, true);
    if (! playable)
        return false;

    activateLayer (layer);
    if (assign)
        assignInputControls (layer);
    return true;
}

} // namespace morvanelab
