// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/network/NetworkRig.h"

#include "foundation/MVResult.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace morvanelab::test
{
namespace
{

struct AddRouteCase
{
    Route asked;
    bool wrap;
    /** All -1: no route. */
    Route made;
};

constexpr Route none { -1, -1, -1, -1 };

// Nodes: 0 has 3 inputs and 2 outputs, 1 has only outputs (2), 2 has only inputs (3), 3 is a null slot.
const AddRouteCase addRouteCases[] {
    { { 0, 1, 2, 2 }, false, { 0, 1, 2, 2 } },
    { { 0, 2, 2, 0 }, false, none }, // ports equal to the counts
    { { 0, 0, 2, 3 }, false, none },
    { { 2, 0, 0, 0 }, false, none },
    { { 3, 0, 0, 0 }, false, none },
    { { 0, 0, 3, 0 }, false, none },
    { { 4, 0, 0, 0 }, false, none },
    { { -1, 0, 0, 0 }, false, none },
    { { 0, -1, 2, 0 }, false, none },
    { { 0, 0, 2, -1 }, false, none },
    { { INT_MIN, INT_MIN, INT_MIN, INT_MIN }, false, none },

    { { 0, 0, 2, 7 }, true, { 0, 0, 2, 1 } },
    { { 5, 5, 4, 9 }, true, { 1, 1, 0, 0 } },
    { { 2, 0, 0, 0 }, true, none },           // a source without outputs
    { { 0, 0, 1, 0 }, true, none },           // a destination without inputs
    { { 3, 9, 0, 9 }, true, { 3, 9, 0, 9 } }, // a null slot: ports as given
    { { 0, 9, 7, 9 }, true, { 0, 9, 3, 9 } },
    { { -1, 0, 0, 0 }, true, none },
    { { 0, 0, -3, 0 }, true, none },
    { { 0, -1, 2, 0 }, true, none },
    { { 0, 0, 2, -1 }, true, none },
    { { 0, -2, 2, -3 }, true, { 0, 0, 2, 0 } }, // remainder 0 is no negative one
};

TEST (Network, addsRoutesByTheirEnds)
{
    for (const AddRouteCase& test : addRouteCases)
    {
        SCOPED_TRACE (testing::PrintToString (test.asked) + (test.wrap ? " wrapped" : ""));
        MVNetwork network (1);
        network.addNode (0, new ProbeNode (3, 2));
        network.addNode (0, new ProbeNode (0, 2));
        network.addNode (0, new ProbeNode (3, 0));
        network.setNode (0, 3, nullptr);

        const auto& [srcNode, srcPort, dstNode, dstPort] = test.asked;
        const MVNetRoute* const route = network.addRoute (0, srcNode, srcPort, dstNode, dstPort, test.wrap);

        EXPECT_EQ (route != nullptr, test.made != none);
        EXPECT_EQ (routesOf (network), test.made != none ? std::vector<Route> { test.made } : std::vector<Route> {});
    }
}

TEST (Network, keepsOneRouteAnInputTheNewest)
{
    MVNetwork network (1);
    addNodes (network, 3, 2, 1);
    addRoutes (network, { { 0, 0, 2, 0 }, { 0, 0, 2, 1 }, { 1, 0, 2, 0 } });

    EXPECT_EQ (routesOf (network), (std::vector<Route> { { 0, 0, 2, 1 }, { 1, 0, 2, 0 } }));
    EXPECT_EQ (network.routeIntoInput (0, 2, 0)->srcNode, 1);
    EXPECT_EQ (network.routesIntoNode (0, 2).size(), 2);

    // A refused route must not drive out the one that stands.
    EXPECT_EQ (network.addRoute (0, 0, 1, 2, 0, false), nullptr);
    EXPECT_EQ (network.numRoutes (0), 2);

    EXPECT_FALSE (network.removeRoute (0, 1, 0, 2, 1));
    EXPECT_TRUE (network.removeRoute (0, 1, 0, 2, 0));
    EXPECT_FALSE (network.removeRoute (0, 1, 0, 2, 0));
    EXPECT_EQ (network.routeIntoInput (0, 2, 0), nullptr);
}

TEST (Network, replacingANodeKeepsRoutesToPortsThatRemain)
{
    int destroyed = 0;
    MVNetwork network (1);
    addNodes (network, 1, 4, 4);
    network.addNode (0, new ProbeNode (3, 3, &destroyed));
    addRoutes (network, { { 1, 0, 0, 0 }, { 1, 2, 0, 1 }, { 0, 0, 1, 1 }, { 0, 0, 1, 2 }, { 1, 1, 1, 0 } });

    EXPECT_TRUE (network.setNode (0, 1, new ProbeNode (2, 1)));
    EXPECT_EQ (destroyed, 1);
    EXPECT_EQ (routesOf (network), (std::vector<Route> { { 1, 0, 0, 0 }, { 0, 0, 1, 1 } }));

    EXPECT_TRUE (network.setNode (0, 1, nullptr));
    EXPECT_EQ (network.numRoutes (0), 0);
    EXPECT_EQ (network.numNodes (0), 2);

    EXPECT_TRUE (network.setNode (0, 99, nullptr)) << "past the end appends a null slot";
    EXPECT_EQ (network.numNodes (0), 3);
    EXPECT_EQ (network.nodeAt (0, 2), nullptr);
    EXPECT_FALSE (network.setNode (0, -1, nullptr));
}

struct RemoveCase
{
    MVIRange range;
    bool compact;
    int nodes;
    std::vector<Route> routes;
};

// Eight nodes; a route from 5 to 6, one from 0 to 3, one from 2 to 7.
const RemoveCase removeCases[] {
    { { 1, 2 }, true, 6, { { 3, 0, 4, 0 }, { 0, 0, 1, 0 } } },
    { { 1, 2 }, false, 8, { { 5, 0, 6, 0 }, { 0, 0, 3, 0 } } },
    { { 3, 1 }, true, 7, { { 4, 0, 5, 0 }, { 2, 0, 6, 0 } } },
    { { 6, 100 }, true, 6, { { 0, 0, 3, 0 } } },
    { { -2, 3 }, true, 7, { { 4, 0, 5, 0 }, { 1, 0, 6, 0 } } },
    { { -5, 3 }, true, 8, { { 5, 0, 6, 0 }, { 0, 0, 3, 0 }, { 2, 0, 7, 0 } } },
    { { 2, 0 }, true, 8, { { 5, 0, 6, 0 }, { 0, 0, 3, 0 }, { 2, 0, 7, 0 } } },
    { { 100, INT_MAX }, true, 8, { { 5, 0, 6, 0 }, { 0, 0, 3, 0 }, { 2, 0, 7, 0 } } },
    { { INT_MIN, INT_MAX }, true, 8, { { 5, 0, 6, 0 }, { 0, 0, 3, 0 }, { 2, 0, 7, 0 } } },
};

TEST (Network, removesRunsOfNodesWithTheirRoutes)
{
    for (const RemoveCase& test : removeCases)
    {
        SCOPED_TRACE (testing::Message() << test.range.low << "+" << test.range.span << " compact " << test.compact);
        MVNetwork network (1);
        addNodes (network, 8, 1, 1);
        addRoutes (network, { { 5, 0, 6, 0 }, { 0, 0, 3, 0 }, { 2, 0, 7, 0 } });

        network.removeNodes (0, test.range, test.compact);

        EXPECT_EQ (network.numNodes (0), test.nodes);
        EXPECT_EQ (routesOf (network), test.routes);

        // What is known about occupied inputs must have moved along: a rival still replaces.
        if (const MVNetRoute* const last = network.routeAt (0, network.numRoutes (0) - 1))
            network.addRoute (0, last->srcNode, 0, last->dstNode, 0, false);
        EXPECT_EQ (network.numRoutes (0), static_cast<int> (test.routes.size()));
    }
}

TEST (Network, movesANodeWithItsRoutes)
{
    MVNetwork network (1);
    addNodes (network, 4, 2, 1);
    addRoutes (network, { { 0, 0, 3, 0 }, { 3, 0, 1, 0 }, { 3, 0, 3, 1 }, { 2, 0, 1, 1 } });
    const MVNetNode* const moved = network.nodeAt (0, 3);

    network.moveNode (0, 3, 2);

    EXPECT_EQ (network.nodeAt (0, 2), moved);
    EXPECT_EQ (network.nodeAt (0, 3), nullptr);
    EXPECT_EQ (routesOf (network), (std::vector<Route> { { 0, 0, 2, 0 }, { 2, 0, 1, 0 }, { 2, 0, 2, 1 } }));

    addRoutes (network, { { 0, 0, 2, 1 } });
    EXPECT_EQ (network.numRoutes (0), 3) << "a rival of a route that moved still replaces it";

    network.moveNode (0, 2, INT_MAX);
    EXPECT_EQ (network.nodeAt (0, 4), moved) << "a target past the end appends";
    network.moveNode (0, -1, 0);
    network.moveNode (0, 9, 0);
    network.moveNode (0, 0, -1);
    EXPECT_EQ (network.numNodes (0), 5);
    EXPECT_NE (network.nodeAt (0, 0), nullptr);
    network.moveNode (0, 4, 4);
    EXPECT_EQ (network.nodeAt (0, 4), nullptr) << "onto itself: the slot is emptied first";
}

TEST (Network, compactsByMovingTheLastNodeIntoTheFirstHole)
{
    MVNetwork network (1);
    addNodes (network, 6, 1, 1);
    addRoutes (network, { { 4, 0, 1, 0 }, { 3, 0, 4, 0 } });
    const MVNetNode* const node[] { network.nodeAt (0, 1), network.nodeAt (0, 3), network.nodeAt (0, 4) };
    for (const int hole : { 0, 2, 5 })
        network.removeNodes (0, { hole, 1 }, false);

    network.compactNodes (0);

    ASSERT_EQ (network.numNodes (0), 3);
    EXPECT_EQ (network.nodeAt (0, 0), node[2]);
    EXPECT_EQ (network.nodeAt (0, 1), node[0]);
    EXPECT_EQ (network.nodeAt (0, 2), node[1]);
    EXPECT_EQ (routesOf (network), (std::vector<Route> { { 0, 0, 1, 0 }, { 2, 0, 0, 0 } }));

    MVNetwork empty (1);
    empty.setNode (0, 0, nullptr);
    empty.setNode (0, 1, nullptr);
    empty.compactNodes (0);
    EXPECT_EQ (empty.numNodes (0), 0);
}

TEST (Network, validatesRoutesFromTheLast)
{
    MVNetwork network (1);
    addNodes (network, 3, 2, 2);
    network.setNode (0, 3, nullptr);
    network.addRoute (0, 0, 0, 1, 0, false);
    network.addRoute (0, 3, 5, 1, 3, true);  // from the null slot, ports as given
    network.addRoute (0, 0, 1, 3, -7, true); // into the null slot
    network.addRoute (0, 2, 0, 1, 1, false);

    MVNetwork dropping (network);
    dropping.validateRoutes (0, false);
    EXPECT_EQ (routesOf (dropping), (std::vector<Route> { { 0, 0, 1, 0 }, { 2, 0, 1, 1 } }));

    // With a node in slot 3 the second route can be repaired: it lands on input 1, where a later one stands.
    MVNetwork repairing (network);
    repairing.setNode (0, 3, new ProbeNode (0, 6));
    MVNetwork withoutRival (repairing);
    repairing.validateRoutes (0, true);
    EXPECT_EQ (routesOf (repairing), (std::vector<Route> { { 0, 0, 1, 0 }, { 2, 0, 1, 1 } }));

    withoutRival.removeRoute (0, 2, 0, 1, 1);
    withoutRival.validateRoutes (0, true);
    EXPECT_EQ (routesOf (withoutRival), (std::vector<Route> { { 0, 0, 1, 0 }, { 3, 5, 1, 1 } }));
}

TEST (Network, validationTakesStaleNodesModuloTheCount)
{
    MVNetwork network (2);
    addNodes (network, 4, 1, 2, 1);
    addRoutes (network, { { 1, 0, 0, 0 }, { 3, 1, 2, 0 } }, 1);
    network.pruneUnreachable (1, 0); // leaves 2 nodes, and the second route to nodes that are gone
    ASSERT_EQ (network.numNodes (1), 2);
    ASSERT_EQ (network.numRoutes (1), 2);

    MVNetwork dropping (network);
    dropping.validateRoutes (1, false);
    EXPECT_EQ (routesOf (dropping, 1), (std::vector<Route> { { 1, 0, 0, 0 } }));

    network.validateRoutes (1, true);
    EXPECT_EQ (routesOf (network, 1), (std::vector<Route> { { 1, 1, 0, 0 } })) << "the later route wins input 0";
}

TEST (Network, prunesWhatCannotReachTheRootAndValidatesTheFirstSubnet)
{
    int destroyed = 0;
    MVNetwork network (3);

    for (const int subnet : { 0, 2 })
    {
        addNodes (network, 2, 2, 1, subnet);
        network.addNode (subnet, new ProbeNode (1, 1, &destroyed));
        addNodes (network, 1, 1, 1, subnet);
        // 3 feeds 1, 1 feeds 0; 2 only listens.
        addRoutes (network, { { 1, 0, 0, 0 }, { 3, 0, 1, 0 }, { 0, 0, 2, 0 } }, subnet);
    }
    // A route that is bad by now, in each sub-network.
    network.nodeAt (0, 3)->setNumPorts (portsOut, 0);
    network.nodeAt (2, 3)->setNumPorts (portsOut, 0);

    network.pruneUnreachable (2, 0);

    EXPECT_EQ (destroyed, 1);
    EXPECT_EQ (network.numNodes (2), 3);
    EXPECT_EQ (routesOf (network, 0), (std::vector<Route> { { 1, 0, 0, 0 }, { 0, 0, 2, 0 } }));
    // Only what the move of node 3 into the hole took away is gone here.
    EXPECT_EQ (routesOf (network, 2), (std::vector<Route> { { 1, 0, 0, 0 }, { 2, 0, 1, 0 } }));
}

TEST (Network, pruningEndsAtMarksOfTheLastOrder)
{
    MVNetwork network (1);
    addNodes (network, 3, 1, 1);
    addRoutes (network, { { 1, 0, 0, 0 } });
    network.computeExecutionOrder (0, 0);
    addRoutes (network, { { 2, 0, 1, 0 } });

    network.pruneUnreachable (0, 0);
    EXPECT_EQ (network.numNodes (0), 2) << "node 1 was marked, so the walk never came to node 2";
}

TEST (Network, copiesDeeplyWithoutOrder)
{
    MVNetwork network (2);
    addNodes (network, 2, 2, 1);
    network.setNode (0, 2, nullptr);
    network.nodeAt (0, 1)->setInputScale (1, 0.25);
    network.nodeAt (0, 1)->setInputControl (0, 7);
    addRoutes (network, { { 0, 0, 1, 0 } });
    network.computeExecutionOrder (0, 1);

    const MVNetwork copy (network);

    ASSERT_EQ (copy.numNodes (0), 3);
    EXPECT_EQ (copy.nodeAt (0, 2), nullptr);
    EXPECT_TRUE (copy.nodeAt (0, 1)->isClassNamed ("ProbeNode"));
    EXPECT_NE (copy.nodeAt (0, 1)->getId(), network.nodeAt (0, 1)->getId());
    EXPECT_FALSE (copy.nodeAt (0, 1)->isVisited());
    EXPECT_EQ (copy.nodeAt (0, 1)->getInputScale (1), 0.25);
    EXPECT_EQ (copy.nodeAt (0, 1)->getInputControl (0), 7);
    EXPECT_EQ (routesOf (copy), routesOf (network));
    EXPECT_NE (copy.routeAt (0, 0), network.routeAt (0, 0));
    EXPECT_EQ (copy.networkInfoAt (0), nullptr);
    EXPECT_TRUE (network.containsNodeId (network.nodeAt (0, 0)->getId()));
    EXPECT_FALSE (copy.containsNodeId (network.nodeAt (0, 0)->getId()));
}

TEST (Network, activatesOnlySubnetsWithADescription)
{
    MVNetwork network (1);
    addNodes (network, 2, 1, 1);
    addRoutes (network, { { 0, 0, 1, 0 } });

    network.setSubnetActive (0, true);
    EXPECT_FALSE (network.nodeAt (0, 0)->isActive());

    network.computeExecutionOrder (0, 1);
    network.setActive (true);
    EXPECT_FALSE (network.nodeAt (0, 0)->isActive()) << "switching on leaves the sub-networks alone";
    network.setSubnetActive (0, true);
    EXPECT_TRUE (network.nodeAt (0, 0)->isActive());
    EXPECT_TRUE (network.routeAt (0, 0)->isActive());

    network.setActive (false);
    EXPECT_FALSE (network.nodeAt (0, 0)->isActive());
    EXPECT_FALSE (network.routeAt (0, 0)->isActive());
}

TEST (Network, answersBadIndicesWithNothing)
{
    MVNetwork network (1);
    addNodes (network, 1, 1, 1);

    for (const int bad : { -1, 1, INT_MAX, INT_MIN })
    {
        ProbeNode spare (1, 1);
        EXPECT_FALSE (network.addNode (bad, &spare));
        EXPECT_EQ (network.numNodes (bad), 0);
        EXPECT_EQ (network.numRoutes (bad), 0);
        EXPECT_EQ (network.nodeAt (0, bad), nullptr);
        EXPECT_EQ (network.nodeAt (bad, 0), nullptr);
        EXPECT_EQ (network.routeAt (0, bad), nullptr);
        EXPECT_EQ (network.addRoute (bad, 0, 0, 0, 0, true), nullptr);
        EXPECT_EQ (network.setNodeInputControl (0, bad, 0, 1), resultNodeMissing);
        EXPECT_EQ (network.setNodeInputControl (0, 0, bad, 1), resultOutOfRange);
        network.validateRoutes (bad, true);
        network.pruneUnreachable (bad, 0);
        network.compactNodes (bad);
        network.clearSubnet (bad);
        network.swapSubnets (0, bad);
        network.setSubnetActive (bad, true);
        EXPECT_FALSE (network.connectUnreached (bad, 0, 0));
    }

    MVNetwork empty (1);
    EXPECT_EQ (empty.addRoute (0, 0, 0, 0, 0, true), nullptr);
    EXPECT_EQ (network.minNumNodes(), 0);
}

TEST (NetNode, keepsOneEntryAnInputWithinBounds)
{
    MVNetNode node;
    EXPECT_TRUE (node.setNumPorts (portsIn, 3));
    node.setInputScale (1, 0.5);
    node.setInputControl (4, 9); // grows
    node.setInputScale (MVNetNode::maxPorts, 0.5);
    node.setInputScale (INT_MAX, 0.5);
    node.setInputControl (-1, 5);

    EXPECT_EQ (node.getInputScale (0), 1.0);
    EXPECT_EQ (node.getInputScale (1), 0.5);
    EXPECT_EQ (node.getInputScale (MVNetNode::maxPorts), 1.0);
    EXPECT_EQ (node.getInputControl (3), -1);
    EXPECT_EQ (node.getInputControl (4), 9);
    EXPECT_EQ (node.getInputControl (-1), -1);

    node.setNumPorts (portsIn, 1);
    node.setNumPorts (portsIn, 5);
    EXPECT_EQ (node.getInputScale (1), 1.0) << "an input that went and came back starts anew";
    EXPECT_EQ (node.getInputControl (4), -1);

    node.setNumPorts (portsOut, -4);
    EXPECT_EQ (node.getNumPorts (portsOut), 0);
    node.setNumPorts (portsIn, INT_MAX);
    EXPECT_EQ (node.getNumPorts (portsIn), MVNetNode::maxPorts);
    EXPECT_TRUE (node.setNumPorts (3, 8));
    EXPECT_EQ (node.getNumPorts (3), 0);
}

TEST (Network, clearsAControlFromEveryInput)
{
    MVNetwork network (1);
    addNodes (network, 2, 2, 0);
    EXPECT_EQ (network.setNodeInputControl (0, 0, 0, 3), resultStored);
    EXPECT_EQ (network.setNodeInputControl (0, 0, 1, 4), resultStored);
    EXPECT_EQ (network.setNodeInputControl (0, 1, 1, 3), resultStored);

    network.clearInputControl (0, 3);

    EXPECT_EQ (network.nodeAt (0, 0)->getInputControl (0), -1);
    EXPECT_EQ (network.nodeAt (0, 0)->getInputControl (1), 4);
    EXPECT_EQ (network.nodeAt (0, 1)->getInputControl (1), -1);
    EXPECT_EQ (network.setNodeInputControl (0, 0, 1, -9), resultStored);
    EXPECT_EQ (network.nodeAt (0, 0)->getInputControl (1), -1);
}

} // namespace
} // namespace morvanelab::test
