// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"

namespace morvanelab
{

/** One directed connection from an output port of a node to an input port of another, both named by their index
    in the sub-network's node list. Plain data: the network rewrites it when nodes change their index. */
class MVNetRoute : public MVObject
{
public:
    MVNetRoute() = default;
    MVNetRoute (int sourceNode, int sourcePort, int destinationNode, int destinationPort);
    /** Takes over the four indices; the identity is fresh and the tag stays 0. */
    MVNetRoute (const MVNetRoute& other);

    MVObject* clone() const override;
    const char* className() const override { return "MVNetRoute"; }

    /** Counts in the route signature; 0 in every route. */
    int routeTag = 0;
    int srcNode = 0;
    int srcPort = 0;
    int dstNode = 0;
    int dstPort = 0;
};

} // namespace morvanelab
