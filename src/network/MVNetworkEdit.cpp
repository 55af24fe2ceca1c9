// SPDX-License-Identifier: GPL-3.0-or-later
// Changes of nodes and routes.
#include "network/MVNetwork.h"

#include <algorithm>
#include <memory>
#include <unordered_set>

namespace morvanelab
{

namespace
{

std::uint64_t inputKey (int dstNode, int dstPort)
{
    return (std::uint64_t { static_cast<std::uint32_t> (dstNode) } << 32) | static_cast<std::uint32_t> (dstPort);
}

} // namespace

void MVNetwork::countRoute (int subnet, const MVNetRoute& route, int change)
{
    InputCounts& counts = countsOf (subnet);
    const std::uint64_t key = inputKey (route.dstNode, route.dstPort);

    if ((counts[key] += change) <= 0)
        counts.erase (key);
}

void MVNetwork::destroyRoute (int subnet, int index)
{
    RouteList& list = *routes[subnet];
    const std::unique_ptr<const MVNetRoute> removed (list[index]);
    list.removeAt (index);
    countRoute (subnet, *removed, -1);
}

void MVNetwork::removeRivals (int subnet, int dstNode, int dstPort)
{
    // Stored data may bring tens of thousands of routes: without the counts each of them would walk all others.
    if (countsOf (subnet).count (inputKey (dstNode, dstPort)) == 0)
        return;

    const RouteList& list = *routes[subnet];

    for (int index = list.size(); --index >= 0;)
        if (list[index]->dstNode == dstNode && list[index]->dstPort == dstPort)
            destroyRoute (subnet, index);
}

bool MVNetwork::hasPorts (int subnet, int srcNode, int srcPort, int dstNode, int dstPort) const
{
    const MVNetNode* const source = nodeAt (subnet, srcNode);
    const MVNetNode* const destination = nodeAt (subnet, dstNode);

    return source != nullptr && destination != nullptr && srcPort >= 0 && srcPort < source->getNumPorts (portsOut)
           && dstPort >= 0 && dstPort < destination->getNumPorts (portsIn);
}

bool MVNetwork::wrapPorts (int subnet, int srcNode, int& srcPort, int dstNode, int& dstPort) const
{
    const MVNetNode* const source = nodeAt (subnet, srcNode);
    const MVNetNode* const destination = nodeAt (subnet, dstNode);

    if (source == nullptr || destination == nullptr)
        return true;

    const int outputs = source->getNumPorts (portsOut);
    const int inputs = destination->getNumPorts (portsIn);

    if (outputs < 1 || inputs < 1)
        return false;

    dstPort %= inputs;
    srcPort %= outputs;
    return srcPort >= 0 && dstPort >= 0;
}

const MVNetRoute* MVNetwork::addRoute (int subnet, int srcNode, int srcPort, int dstNode, int dstPort, bool wrap)
{
    if (! isSubnet (subnet))
        return nullptr;

    if (wrap)
    {
        const int count = numNodes (subnet);
        if (count < 1)
            return nullptr;

        srcNode %= count;
        dstNode %= count;

        if (srcNode < 0 || dstNode < 0 || ! wrapPorts (subnet, srcNode, srcPort, dstNode, dstPort))
            return nullptr;
    }
    else if (! hasPorts (subnet, srcNode, srcPort, dstNode, dstPort))
    {
        return nullptr;
    }

    removeRivals (subnet, dstNode, dstPort);

    auto* const route = new MVNetRoute (srcNode, srcPort, dstNode, dstPort);
    routes[subnet]->add (route);
    countRoute (subnet, *route, 1);
    return route;
}

bool MVNetwork::removeRoute (int subnet, int srcNode, int srcPort, int dstNode, int dstPort)
{
    for (int index = numRoutes (subnet); --index >= 0;)
    {
        const MVNetRoute& route = *(*routes[subnet])[index];

        if (route.srcNode == srcNode && route.srcPort == srcPort && route.dstNode == dstNode
            && route.dstPort == dstPort)
        {
            destroyRoute (subnet, index);
            return true;
        }
    }

    return false;
}

bool MVNetwork::repairRoute (int subnet, MVNetRoute& route, bool wrap) const
{
    const auto endsExist = [&]
    { return nodeAt (subnet, route.srcNode) != nullptr && nodeAt (subnet, route.dstNode) != nullptr; };

    if (! endsExist() && wrap && numNodes (subnet) > 0)
    {
        route.srcNode %= numNodes (subnet);
        route.dstNode %= numNodes (subnet);
    }

    if (! endsExist())
        return false;

    if (hasPorts (subnet, route.srcNode, route.srcPort, route.dstNode, route.dstPort))
        return true;

    return wrap && wrapPorts (subnet, route.srcNode, route.srcPort, route.dstNode, route.dstPort);
}

void MVNetwork::validateRoutes (int subnet, bool wrap)
{
    if (! isSubnet (subnet))
        return;

    RouteList& list = *routes[subnet];
    RouteList kept;
    std::unordered_set<std::uint64_t> taken;

    countsOf (subnet).clear();

    for (int index = list.size(); --index >= 0;)
    {
        MVNetRoute* const route = list[index];

        if (repairRoute (subnet, *route, wrap) && taken.insert (inputKey (route->dstNode, route->dstPort)).second)
        {
            kept.add (route);
            countRoute (subnet, *route, 1);
        }
        else
        {
            delete route;
        }
    }

    std::reverse (kept.begin(), kept.end());
    list = kept;
}

bool MVNetwork::setNode (int subnet, int index, MVNetNode* node)
{
    NodeList* const list = nodesOf (subnet);
    if (list == nullptr || index < 0)
        return false;

    if (index >= list->size())
    {
        list->add (node);
        return true;
    }

    if ((*list)[index] != node)
    {
        delete (*list)[index];
        (*list)[index] = node;
    }

    const int outputs = node != nullptr ? node->getNumPorts (portsOut) : 0;
    const int inputs = node != nullptr ? node->getNumPorts (portsIn) : 0;

    for (int i = numRoutes (subnet); --i >= 0;)
    {
        const MVNetRoute& route = *(*routes[subnet])[i];

        if ((route.srcNode == index && (node == nullptr || route.srcPort >= outputs))
            || (route.dstNode == index && (node == nullptr || route.dstPort >= inputs)))
            destroyRoute (subnet, i);
    }

    return true;
}

bool MVNetwork::addNode (int subnet, MVNetNode* node)
{
    if (node == nullptr || ! isSubnet (subnet))
        return false;

    nodes[subnet]->add (node);
    return true;
}

void MVNetwork::removeNodes (int subnet, MVIRange range, bool compact)
{
    if (! isSubnet (subnet) || range.span < 1)
        return;

    NodeList& list = *nodes[subnet];
    const std::int64_t first = std::max (0, range.low);
    const std::int64_t end = std::int64_t { range.low } + range.span;

    for (auto index = static_cast<int> (std::min<std::int64_t> (end, list.size())); --index >= first;)
    {
        delete list[index];
        list[index] = nullptr;
        if (compact)
            list.removeAt (index);
    }

    const auto inRange = [=] (int node) { return node >= first && node < end; };
    const auto shift = [=] (int& node)
    {
        if (node >= end)
            node -= static_cast<int> (end - first);
    };

    for (int index = numRoutes (subnet); --index >= 0;)
    {
        MVNetRoute& route = *(*routes[subnet])[index];

        if (inRange (route.srcNode) || inRange (route.dstNode))
        {
            destroyRoute (subnet, index);
        }
        else if (compact && end > first)
        {
            countRoute (subnet, route, -1);
            shift (route.srcNode);
            shift (route.dstNode);
            countRoute (subnet, route, 1);
        }
    }
}

void MVNetwork::moveNode (int subnet, int from, int to)
{
    const int count = numNodes (subnet);
    if (from < 0 || from >= count || to < 0)
        return;

    const int target = std::min (to, count);
    setNode (subnet, target, nullptr);

    NodeList& list = *nodes[subnet];
    list[target] = std::exchange (list[from], nullptr);

    for (MVNetRoute* const route : *routes[subnet])
    {
        if (route->srcNode == from)
            route->srcNode = target;

        if (route->dstNode == from)
        {
            countRoute (subnet, *route, -1);
            route->dstNode = target;
            countRoute (subnet, *route, 1);
        }
    }
}

void MVNetwork::compactNodes (int subnet)
{
    if (! isSubnet (subnet))
        return;

    NodeList& list = *nodes[subnet];

    for (int index = 0; index < list.size(); ++index)
    {
        if (list[index] != nullptr)
            continue;

        while (! list.isEmpty() && list[list.size() - 1] == nullptr)
            list.removeAt (list.size() - 1);

        if (index < list.size())
            moveNode (subnet, list.size() - 1, index);
    }
}

void MVNetwork::markReaching (int subnet, int rootNode)
{
    const NodeList& list = *nodes[subnet];
    std::vector<std::vector<int>> sources (static_cast<std::size_t> (list.size()));

    const auto exists = [&] (int index) { return index >= 0 && index < list.size() && list[index] != nullptr; };

    for (const MVNetRoute* const route : *routes[subnet])
        if (exists (route->dstNode))
            sources[static_cast<std::size_t> (route->dstNode)].push_back (route->srcNode);

    std::vector<int> waiting { rootNode };

    while (! waiting.empty())
    {
        const int index = waiting.back();
        waiting.pop_back();

        if (! exists (index) || list[index]->isVisited())
            continue;

        list[index]->setVisited (true);
        const auto& from = sources[static_cast<std::size_t> (index)];
        waiting.insert (waiting.end(), from.begin(), from.end());
    }
}

void MVNetwork::pruneUnreachable (int subnet, int rootNode)
{
    if (! isSubnet (subnet))
        return;

    NodeList& list = *nodes[subnet];
    markReaching (subnet, rootNode);

    for (int index = list.size(); --index >= 0;)
    {
        if (list[index] != nullptr && ! list[index]->isVisited())
        {
            delete list[index];
            list[index] = nullptr;
        }
    }

    validateRoutes (0, false);
    compactNodes (subnet);
}

void MVNetwork::clearSubnet (int subnet)
{
    if (! isSubnet (subnet))
        return;

    NodeList& nodeList = *nodes[subnet];
    RouteList& routeList = *routes[subnet];

    for (int index = nodeList.size(); --index >= 0;)
        delete nodeList[index];
    for (int index = routeList.size(); --index >= 0;)
        delete routeList[index];

    nodeList.clear();
    routeList.clear();
    countsOf (subnet).clear();
}

} // namespace morvanelab
