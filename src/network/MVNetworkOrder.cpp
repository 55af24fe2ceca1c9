// SPDX-License-Identifier: GPL-3.0-or-later
// Compiling a sub-network to an execution list, and wiring in what the list does not reach.
#include "network/MVNetwork.h"

#include <algorithm>

namespace morvanelab
{

/** The first route into each existing input, found once for a whole walk. */
struct MVNetwork::InputTable
{
    InputTable (const NodeList& nodeList, const RouteList& routeList) : routes (routeList)
    {
        int inputs = 0;

        for (const MVNetNode* const node : nodeList)
        {
            firstInput.push_back (inputs);
            inputs += node != nullptr ? node->getNumPorts (portsIn) : 0;
        }

        firstInput.push_back (inputs);
        routeIndex.assign (static_cast<std::size_t> (inputs), -1);

        // From the last to the first, so that the first route into an input is the one that stays.
        for (int index = routeList.size(); --index >= 0;)
            if (const int slot = slotOf (routeList[index]->dstNode, routeList[index]->dstPort); slot >= 0)
                routeIndex[static_cast<std::size_t> (slot)] = index;
    }

    /** An input that exists, or -1. */
    int slotOf (int node, int port) const
    {
        if (node < 0 || node >= static_cast<int> (firstInput.size()) - 1 || port < 0)
            return -1;

        const auto place = static_cast<std::size_t> (node);
        return port < firstInput[place + 1] - firstInput[place] ? firstInput[place] + port : -1;
    }

    const MVNetRoute* routeInto (int node, int port) const
    {
        const int slot = slotOf (node, port);
        const int index = slot >= 0 ? routeIndex[static_cast<std::size_t> (slot)] : -1;
        return index >= 0 ? routes[index] : nullptr;
    }

    const RouteList& routes;
    std::vector<int> firstInput;
    std::vector<int> routeIndex;
};

/** A node whose inputs are being followed. */
struct MVNetwork::Visit
{
    int node;
    int numInputs;
    int nextInput;
    MVNodeExecDesc* desc;
};

MVNodeExecDesc* MVNetwork::enterNode (MVNetNode& node, int index, MVNetworkInfo& info)
{
    const int numOutputs = node.getNumPorts (portsOut);

    node.setVisited (true);
    info.addBuffers (numOutputs);

    MVNodeExecDesc* const desc = info.addExecDesc();
    desc->nodeIndex = index;

    for (int output = 0; output < numOutputs; ++output)
        desc->outputBuffers.add (info.takeBuffer());

    return desc;
}

void MVNetwork::visitFrom (int rootNode, const NodeList& list, const RouteList& routeList, MVNetworkInfo& info)
{
    const InputTable table (list, routeList);
    std::vector<Visit> path;

    // A route to a missing node is told in the log, and the walk goes on.
    const auto nodeOf = [&] (int index) { return list.itemAt (index); };
    const auto enter = [&] (int index)
    {
        if (MVNetNode* const node = nodeOf (index); node != nullptr)
            path.push_back ({ index, node->getNumPorts (portsIn), 0, enterNode (*node, index, info) });
    };

    enter (rootNode);

    while (! path.empty())
    {
        Visit& visit = path.back();

        if (visit.nextInput == visit.numInputs)
        {
            path.pop_back();
            continue;
        }

        const int input = visit.nextInput++;
        const MVNetRoute* const route = table.routeInto (visit.node, input);
        visit.desc->inputSrcNode.setItem (input, route != nullptr ? route->srcNode : -1);
        visit.desc->inputSrcPort.setItem (input, route != nullptr ? route->srcPort : -1);

        if (route == nullptr)
            continue;

        const MVNetNode* const source = nodeOf (route->srcNode);
        const bool isFeedback = source != nullptr && source->isVisited();
        visit.desc->inputFeedback.add (isFeedback);

        if (! isFeedback)
            enter (route->srcNode); // visit is gone after this: the path may have moved
    }
}

void MVNetwork::resolveInputBuffers (MVNetworkInfo& info, int nodeCount)
{
    std::vector<const MVNodeExecDesc*> byNode (static_cast<std::size_t> (nodeCount), nullptr);
    const int count = info.numExecDescs();

    for (int index = 0; index < count; ++index)
        byNode[static_cast<std::size_t> (info.execDescAt (index)->nodeIndex)] = info.execDescAt (index);

    for (int index = 0; index < count; ++index)
    {
        MVNodeExecDesc& desc = *info.execDescAt (index);

        for (int input = 0; input < desc.inputSrcNode.size(); ++input)
        {
            const int node = desc.inputSrcNode[input];
            const int port = desc.inputSrcPort[input];

            if (node < 0 || port < 0)
                desc.inputBuffers.setItem (input, -1);
            else if (node < nodeCount && byNode[static_cast<std::size_t> (node)] != nullptr)
                desc.inputBuffers.setItem (input, byNode[static_cast<std::size_t> (node)]->outputBuffers.itemAt (port));
        }
    }
}

MVSmartPtr<MVNetworkInfo> MVNetwork::computeExecutionOrder (int subnet, int rootNode)
{
    if (! isSubnet (subnet))
        return {};

    computingOrder = true;
    const NodeList& list = *nodes[subnet];

    for (int index = list.size(); --index >= 0;)
        if (list[index] != nullptr)
            list[index]->setVisited (false);

    MVSmartPtr<MVNetworkInfo> info = createNetworkInfo();
    visitFrom (rootNode, list, *routes[subnet], *info);
    networkInfos[subnet] = info;
    resolveInputBuffers (*info, list.size());

    computingOrder = false;
    info->setSignature (routeSignature());
    return info;
}

int MVNetwork::highestUnreached (const MVNetworkInfo& info, int nodeCount)
{
    std::vector<bool> reached (static_cast<std::size_t> (nodeCount), false);

    for (int index = 0; index < info.numExecDescs(); ++index)
        reached[static_cast<std::size_t> (info.execDescAt (index)->nodeIndex)] = true;

    for (int node = nodeCount; --node >= 0;)
        if (! reached[static_cast<std::size_t> (node)])
            return node;

    return -1;
}

bool MVNetwork::findFreeInput (const MVNetworkInfo& info, int& node, int& input)
{
    for (int index = 0; index < info.numExecDescs(); ++index)
    {
        const MVNodeExecDesc& desc = *info.execDescAt (index);
        const auto& buffers = desc.inputBuffers;
        const auto free = std::find_if (buffers.begin(), buffers.end(), [] (int buffer) { return buffer < 0; });

        if (free != buffers.end())
        {
            node = desc.nodeIndex;
            input = static_cast<int> (free - buffers.begin());
            return true;
        }
    }

    return false;
}

bool MVNetwork::connectUnreached (int subnet, int rootNode, int minNodes)
{
    const int count = numNodes (subnet);
    if (count < minNodes || ! isSubnet (subnet))
        return false;

    MVSmartPtr<MVNetworkInfo> info = computeExecutionOrder (subnet, rootNode);
    int reached = info->numExecDescs();

    for (int attempts = count - reached; reached < minNodes && attempts >= 1; --attempts)
    {
        const int stray = highestUnreached (*info, count);
        int node = -1;
        int input = -1;

        if (stray < 0 || ! findFreeInput (*info, node, input))
            break;

        addRoute (subnet, stray, 0, node, input, false);
        info = computeExecutionOrder (subnet, rootNode);
        reached = info->numExecDescs();
    }

    return reached >= minNodes;
}

} // namespace morvanelab
