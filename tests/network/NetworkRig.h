// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "network/MVNetwork.h"

#include <array>
#include <vector>

namespace morvanelab::test
{

/** Source node and port, destination node and port. */
using Route = std::array<int, 4>;

/** A node that counts its resets, activations and, through a counter of the test, its destruction. */
class ProbeNode : public MVNetNode
{
public:
    ProbeNode (int inputs, int outputs, int* destroyedCounter = nullptr) : destroyed (destroyedCounter)
    {
        setNumPorts (portsIn, inputs);
        setNumPorts (portsOut, outputs);
    }
    ~ProbeNode() override
    {
        if (destroyed != nullptr)
            ++*destroyed;
    }

    MVObject* clone() const override { return new ProbeNode (*this); }
    const char* className() const override { return "ProbeNode"; }
    void reset() override { ++resets; }

    int resets = 0;
    int* destroyed;
};

/** Fills sub-network 0 with count nodes of the same ports. */
inline void addNodes (MVNetwork& network, int count, int inputs, int outputs, int subnet = 0)
{
    for (int index = 0; index < count; ++index)
        network.addNode (subnet, new ProbeNode (inputs, outputs));
}

inline void addRoutes (MVNetwork& network, const std::vector<Route>& routes, int subnet = 0)
{
    for (const Route& route : routes)
        network.addRoute (subnet, route[0], route[1], route[2], route[3], false);
}

inline std::vector<Route> routesOf (const MVNetwork& network, int subnet = 0)
{
    std::vector<Route> result;
    for (int index = 0; index < network.numRoutes (subnet); ++index)
    {
        const MVNetRoute* const route = network.routeAt (subnet, index);
        result.push_back ({ route->srcNode, route->srcPort, route->dstNode, route->dstPort });
    }
    return result;
}

inline std::vector<int> orderOf (const MVNetworkInfo& info)
{
    std::vector<int> order;
    for (int index = 0; index < info.numExecDescs(); ++index)
        order.push_back (info.execDescAt (index)->nodeIndex);
    return order;
}

template <typename T>
std::vector<int> listOf (const MVVector<T>& vector)
{
    return { vector.begin(), vector.end() };
}

} // namespace morvanelab::test
