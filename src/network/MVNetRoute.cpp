// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/MVNetRoute.h"

namespace morvanelab
{

MVNetRoute::MVNetRoute (int sourceNode, int sourcePort, int destinationNode, int destinationPort)
    : srcNode (sourceNode), srcPort (sourcePort), dstNode (destinationNode), dstPort (destinationPort)
{
}

MVNetRoute::MVNetRoute (const MVNetRoute& other)
    : MVObject (other), srcNode (other.srcNode), srcPort (other.srcPort), dstNode (other.dstNode),
      dstPort (other.dstPort)
{
}

MVObject* MVNetRoute::clone() const { return new MVNetRoute (*this); }

} // namespace morvanelab
