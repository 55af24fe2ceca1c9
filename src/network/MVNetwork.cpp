// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/MVNetwork.h"

#include "foundation/MVResult.h"

#include <algorithm>
#include <utility>

namespace morvanelab
{

MVNetwork::MVNetwork (int subnetCount)
    : inputCounts (static_cast<std::size_t> (std::max (0, subnetCount))), numSubnets (std::max (0, subnetCount))
{
    for (int subnet = 0; subnet < numSubnets; ++subnet)
    {
        nodes.add (new NodeList);
        routes.add (new RouteList);
    }

    networkInfos.setDefault ({});
    networkInfos.resize (numSubnets);
}

MVNetwork::MVNetwork (const MVNetwork& other)
    : MVObject (other), inputCounts (other.inputCounts), numSubnets (other.numSubnets)
{
    for (int subnet = 0; subnet < numSubnets; ++subnet)
    {
        auto* const nodeList = new NodeList;
        auto* const routeList = new RouteList;

        for (const MVNetNode* const node : *other.nodes[subnet])
            nodeList->add (node != nullptr ? static_cast<MVNetNode*> (node->clone()) : nullptr);
        for (const MVNetRoute* const route : *other.routes[subnet])
            routeList->add (new MVNetRoute (*route));

        nodes.add (nodeList);
        routes.add (routeList);
    }

    networkInfos.setDefault ({});
    networkInfos.resize (numSubnets);
}

MVNetwork::~MVNetwork()
{
    for (int subnet = 0; subnet < numSubnets; ++subnet)
    {
        MVNetwork::clearSubnet (subnet);
        delete nodes[subnet];
        delete routes[subnet];
    }
}

MVObject* MVNetwork::clone() const { return new MVNetwork (*this); }

void MVNetwork::reset()
{
    for (int subnet = 0; subnet < numSubnets; ++subnet)
    {
        NodeList& nodeList = *nodes[subnet];
        RouteList& routeList = *routes[subnet];

        for (int index = nodeList.size(); --index >= 0;)
            if (nodeList[index] != nullptr)
                nodeList[index]->reset();
        for (int index = routeList.size(); --index >= 0;)
            routeList[index]->reset();
    }
}

void MVNetwork::setActive (bool flag)
{
    if (! flag)
        for (int subnet = 0; subnet < numSubnets; ++subnet)
            setSubnetActive (subnet, false);

    MVObject::setActive (flag);
}

void MVNetwork::setSubnetActive (int subnet, bool active)
{
    if (networkInfoAt (subnet) == nullptr)
        return;

    NodeList& nodeList = *nodes[subnet];
    RouteList& routeList = *routes[subnet];

    for (int index = nodeList.size(); --index >= 0;)
        if (nodeList[index] != nullptr)
            nodeList[index]->setActive (active);
    for (int index = routeList.size(); --index >= 0;)
        routeList[index]->setActive (active);
}

void MVNetwork::clearInputControl (int subnet, int controlId)
{
    const NodeList* const list = nodesOf (subnet);
    if (list == nullptr)
        return;

    for (MVNetNode* const node : *list)
    {
        const int numInputs = node != nullptr ? node->getNumPorts (portsIn) : 0;

        for (int input = 0; input < numInputs; ++input)
            if (node->getInputControl (input) == controlId)
                node->setInputControl (input, -1);
    }
}

int MVNetwork::setNodeInputControl (int subnet, int nodeIndex, int input, int controlId)
{
    MVNetNode* const node = nodeAt (subnet, nodeIndex);

    if (node == nullptr)
        return resultNodeMissing;
    if (input < 0 || input >= node->getNumPorts (portsIn))
        return resultOutOfRange;

    node->setInputControl (input, std::max (-1, controlId));
    return resultStored;
}

bool MVNetwork::containsNodeId (std::uint64_t nodeId) const
{
    for (int subnet = 0; subnet < numSubnets; ++subnet)
        if (nodeIndexById (subnet, nodeId) >= 0)
            return true;
    return false;
}

int MVNetwork::numNodes (int subnet) const
{
    const NodeList* const list = nodesOf (subnet);
    return list != nullptr ? list->size() : 0;
}

int MVNetwork::minNumNodes() const
{
    int smallest = 0;
    for (int subnet = 0; subnet < numSubnets; ++subnet)
        smallest = std::min (smallest, numNodes (subnet));
    return smallest;
}

MVNetNode* MVNetwork::nodeAt (int subnet, int index) const
{
    const NodeList* const list = nodesOf (subnet);
    return list != nullptr ? list->itemAt (index) : nullptr;
}

MVNetNode* MVNetwork::nodeById (int subnet, std::uint64_t nodeId) const
{
    const int index = nodeIndexById (subnet, nodeId);
    return index >= 0 ? nodeAt (subnet, index) : nullptr;
}

int MVNetwork::nodeIndexById (int subnet, std::uint64_t nodeId) const
{
    const int count = numNodes (subnet);

    for (int index = 0; index < count; ++index)
    {
        const MVNetNode* const node = (*nodes[subnet])[index];
        if (node != nullptr && node->getId() == nodeId)
            return index;
    }

    return -1;
}

int MVNetwork::numRoutes (int subnet) const { return isSubnet (subnet) ? routes[subnet]->size() : 0; }

const MVNetRoute* MVNetwork::routeAt (int subnet, int index) const
{
    const RouteList* const list = routesOf (subnet);
    return list != nullptr ? list->itemAt (index) : nullptr;
}

MVVector<const MVNetRoute*> MVNetwork::routesIntoNode (int subnet, int dstNode) const
{
    MVVector<const MVNetRoute*> found;

    if (const RouteList* const list = routesOf (subnet); list != nullptr)
        for (const MVNetRoute* const route : *list)
            if (route->dstNode == dstNode)
                found.add (route);

    return found;
}

const MVNetRoute* MVNetwork::routeIntoInput (int subnet, int dstNode, int dstPort) const
{
    if (const RouteList* const list = routesOf (subnet); list != nullptr)
        for (const MVNetRoute* const route : *list)
            if (route->dstNode == dstNode && route->dstPort == dstPort)
                return route;

    return nullptr;
}

MVSmartPtr<MVNetworkInfo> MVNetwork::createNetworkInfo() { return makeSmart<MVNetworkInfo>(); }

MVSmartPtr<MVNetworkInfo> MVNetwork::getNetworkInfo (int subnet) const { return networkInfos.itemAt (subnet); }

const MVNetworkInfo* MVNetwork::networkInfoAt (int subnet) const
{
    return isSubnet (subnet) ? networkInfos[subnet].get() : nullptr;
}

void MVNetwork::setNetworkInfo (int subnet, MVSmartPtr<MVNetworkInfo>& info)
{
    if (isSubnet (subnet) && ! (info == networkInfos[subnet]))
        networkInfos[subnet] = info ? MVSmartPtr<MVNetworkInfo> (static_cast<MVNetworkInfo*> (info->clone()))
                                    : MVSmartPtr<MVNetworkInfo>();

    info.clear();
}

void MVNetwork::clearNetworkInfo (int subnet)
{
    if (isSubnet (subnet))
        networkInfos[subnet].clear();
}

void MVNetwork::swapSubnets (int a, int b)
{
    if (! isSubnet (a) || ! isSubnet (b))
        return;

    std::swap (nodes[a], nodes[b]);
    std::swap (routes[a], routes[b]);
    std::swap (countsOf (a), countsOf (b));
    std::swap (networkInfos[a], networkInfos[b]);
}

int MVNetwork::routeSignature() const
{
    std::uint32_t sum = 0;

    for (const RouteList* const list : routes)
        for (const MVNetRoute* const route : *list)
            for (const int field : { route->dstPort, route->dstNode, route->srcPort, route->srcNode, route->routeTag })
                sum += static_cast<std::uint32_t> (field);

    return static_cast<int> (sum);
}

} // namespace morvanelab
