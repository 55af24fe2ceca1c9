// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"
#include "foundation/MVRange.h"
#include "foundation/MVSmartPtr.h"
#include "foundation/MVVector.h"
#include "network/MVNetNode.h"
#include "network/MVNetRoute.h"
#include "network/MVNetworkInfo.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace morvanelab
{

/** A fixed number of independent sub-networks, each a list of nodes and a list of routes between them, and the
    compiled description of each. The network owns and destroys its nodes and routes.

    Routes name nodes by index. A node slot may be null while nodes are taken out. An input port has at most one
    route: the newest wins. Lists are walked from the last item to the first wherever items may be removed, which
    decides what survives when two routes compete.

    Bad indices never fail and never touch memory outside: lookups give null, -1 or 0 (and a line in the log),
    changes do nothing. No lock: whoever changes a network has excluded every other thread. */
class MVNetwork : public MVObject
{
public:
    explicit MVNetwork (int subnetCount);
    /** Clones every node and route. The copy's descriptions are empty: its order must be computed again. */
    MVNetwork (const MVNetwork& other);
    ~MVNetwork() override;

    MVObject* clone() const override;
    const char* className() const override { return "MVNetwork"; }
    /** Resets every node, then every route, of each sub-network, last to first. */
    void reset() override;
    /** Switching off deactivates every sub-network first; switching on only stores the flag. */
    void setActive (bool flag) override;

    /** Passes the flag to every node and route, last to first, if the sub-network has a description. */
    virtual void setSubnetActive (int subnet, bool active);
    /** Replaces the node at index and destroys the old one; past the end the node (or a null slot) is appended.
        Routes of the old node survive where the new one has their port. Takes ownership if it returns true;
        false means a bad sub-network or a negative index. */
    virtual bool setNode (int subnet, int index, MVNetNode* node);
    /** Appends and takes ownership if it returns true; a null node or a bad sub-network is ignored. */
    virtual bool addNode (int subnet, MVNetNode* node);
    /** Adds a route and removes any other into the same input. Without wrap, null if a node or a port is missing.
        With wrap, for stored data whose numbers may be stale: node indices are taken modulo the node count and
        ports modulo the port counts; null if the source has no output, the destination no input, or a remainder
        is negative. A null slot takes the route with its ports as given. */
    virtual const MVNetRoute* addRoute (int subnet, int srcNode, int srcPort, int dstNode, int dstPort, bool wrap);
    /** Removes the last route equal in all four fields; false if there is none. */
    virtual bool removeRoute (int subnet, int srcNode, int srcPort, int dstNode, int dstPort);
    /** Every input that holds this control gets none. */
    virtual void clearInputControl (int subnet, int controlId);
    /** Closes null holes by moving the last node into the first hole; the order of nodes changes. */
    virtual void compactNodes (int subnet);
    /** Destroys every node that cannot reach the root, validates the routes of sub-network 0, whichever one is
        pruned, and compacts. The walk from the root ends at nodes that are marked as visited already: marks that
        the last order computation left behind count, and this walk's own stay until the next one. */
    virtual void pruneUnreachable (int subnet, int rootNode);
    /** Whether any sub-network has a node of that identity. */
    virtual bool containsNodeId (std::uint64_t nodeId) const;
    /** Null slots included. */
    virtual int numNodes (int subnet) const;
    /** The smallest of 0 and every node count, hence always 0. */
    virtual int minNumNodes() const;
    virtual MVNetNode* nodeAt (int subnet, int index) const;
    virtual MVNetNode* nodeById (int subnet, std::uint64_t nodeId) const;
    /** First index of that identity, or -1. */
    virtual int nodeIndexById (int subnet, std::uint64_t nodeId) const;
    /** 0 for a bad sub-network, with no line in the log. */
    virtual int numRoutes (int subnet) const;
    virtual const MVNetRoute* routeAt (int subnet, int index) const;
    /** All routes into a node, in list order. */
    virtual MVVector<const MVNetRoute*> routesIntoNode (int subnet, int dstNode) const;
    /** The first route into an input, or null. */
    virtual const MVNetRoute* routeIntoInput (int subnet, int dstNode, int dstPort) const;
    /** Destroys a run of nodes (first index and count) with the routes that touch it. With compact, higher nodes
        move down; without, the slots become null and indices stay valid. */
    virtual void removeNodes (int subnet, MVIRange range, bool compact);
    /** Moves a node to another slot, destroying the node there with its routes, and leaves a null slot behind.
        A target past the end appends. Moving a node onto itself destroys it. */
    virtual void moveNode (int subnet, int from, int to);
    /** Destroys every node and route, last to first. */
    virtual void clearSubnet (int subnet);
    /** Wires output 0 of stray nodes into free inputs until minNodes nodes reach the root; whether that many do.
        False at once, computing nothing, if the sub-network has fewer nodes. */
    virtual bool connectUnreached (int subnet, int rootNode, int minNodes);
    /** Makes an empty description, of the class that the network's users need. */
    virtual MVSmartPtr<MVNetworkInfo> createNetworkInfo();
    /** Exchanges nodes, routes and descriptions of two sub-networks. */
    virtual void swapSubnets (int a, int b);
    /** Drops routes with a missing end, a bad port or a later rival for their input. With wrap, indices and ports
        are first taken modulo the counts. */
    virtual void validateRoutes (int subnet, bool wrap);

    int getNumSubnets() const { return numSubnets; }

    /** Stores a control (-1 for any negative one) on an input: resultStored, resultNodeMissing or
        resultOutOfRange. */
    int setNodeInputControl (int subnet, int nodeIndex, int input, int controlId);

    /** Compiles a sub-network from its root and stores and returns the description; empty for a bad sub-network.

        A depth-first walk backwards from the root, inputs from port 0 up: each node met is put at the front of
        the list before its sources are visited, and takes its buffers then. An input whose source was already
        visited is marked as feedback. Nothing is sorted: of two branches that meet again, the one visited later
        runs ahead of the shared source and hears it one block late. Nodes that cannot reach the root do not run.
        The walk keeps its own stack, so that the length of a chain is not limited by the thread's. */
    MVSmartPtr<MVNetworkInfo> computeExecutionOrder (int subnet, int rootNode);
    /** A shared reference to the description; may be empty. */
    MVSmartPtr<MVNetworkInfo> getNetworkInfo (int subnet) const;
    /** The same without a reference, for the audio thread; null if there is none. */
    const MVNetworkInfo* networkInfoAt (int subnet) const;
    /** Stores a clone of the description, unless it is the stored one itself, and empties the caller's pointer.
        The clone is not checked against the routes. */
    void setNetworkInfo (int subnet, MVSmartPtr<MVNetworkInfo>& info);
    void clearNetworkInfo (int subnet);
    /** Sum of all fields of all routes, wrapping at 32 bits. */
    int routeSignature() const;
    /** True only while an order is being computed. */
    bool isComputingOrder() const { return computingOrder; }

private:
    using NodeList = MVVector<MVNetNode*>;
    using RouteList = MVVector<MVNetRoute*>;
    /** How many routes lead into an input: spares a search for rivals where there are none. */
    using InputCounts = std::unordered_map<std::uint64_t, int>;

    NodeList* nodesOf (int subnet) const { return nodes.itemAt (subnet); }
    RouteList* routesOf (int subnet) const { return routes.itemAt (subnet); }
    bool isSubnet (int subnet) const { return subnet >= 0 && subnet < numSubnets; }
    InputCounts& countsOf (int subnet) { return inputCounts[static_cast<std::size_t> (subnet)]; }

    void countRoute (int subnet, const MVNetRoute& route, int change);
    void destroyRoute (int subnet, int index);
    void removeRivals (int subnet, int dstNode, int dstPort);
    bool wrapPorts (int subnet, int srcNode, int& srcPort, int dstNode, int& dstPort) const;
    bool hasPorts (int subnet, int srcNode, int srcPort, int dstNode, int dstPort) const;
    bool repairRoute (int subnet, MVNetRoute& route, bool wrap) const;
    void markReaching (int subnet, int rootNode);

    struct InputTable;
    struct Visit;
    void visitFrom (int rootNode, const NodeList& list, const RouteList& routeList, MVNetworkInfo& info);
    static MVNodeExecDesc* enterNode (MVNetNode& node, int index, MVNetworkInfo& info);
    static void resolveInputBuffers (MVNetworkInfo& info, int nodeCount);
    static int highestUnreached (const MVNetworkInfo& info, int nodeCount);
    static bool findFreeInput (const MVNetworkInfo& info, int& node, int& input);

    bool computingOrder = false;
    MVVector<MVSmartPtr<MVNetworkInfo>> networkInfos;
    MVVector<NodeList*> nodes;
    MVVector<RouteList*> routes;
    std::vector<InputCounts> inputCounts;
    int numSubnets;
};

} // namespace morvanelab
