// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/network/NetworkRig.h"

#include <gtest/gtest.h>

#include <string>

namespace morvanelab::test
{
namespace
{

const MVNodeExecDesc* descOf (const MVNetworkInfo& info, int node)
{
    for (int index = 0; index < info.numExecDescs(); ++index)
        if (info.execDescAt (index)->nodeIndex == node)
            return info.execDescAt (index);
    return nullptr;
}

struct OrderCase
{
    std::string name;
    int nodes;
    int root;
    std::vector<Route> routes;
    std::vector<int> order;
    /** Feedback flags of the nodes in index order; nodes outside the order have none. */
    std::vector<std::vector<int>> feedback;
};

// Every node has three inputs and two outputs.
const OrderCase orderCases[] {
    { "root alone", 2, 0, {}, { 0 }, { {}, {} } },
    { "chain", 3, 2, { { 0, 0, 1, 0 }, { 1, 0, 2, 0 } }, { 0, 1, 2 }, { {}, { 0 }, { 0 } } },
    { "two branches: the one on input 1 runs first",
      3,
      0,
      { { 1, 0, 0, 0 }, { 2, 0, 0, 1 } },
      { 2, 1, 0 },
      { { 0, 0 }, {}, {} } },
    { "diamond: 2 runs ahead of 0 and hears it late",
      4,
      3,
      { { 1, 0, 3, 0 }, { 2, 0, 3, 1 }, { 0, 0, 1, 0 }, { 0, 0, 2, 0 } },
      { 2, 0, 1, 3 },
      { {}, { 0 }, { 1 }, { 0, 0 } } },
    { "a node that feeds itself", 1, 0, { { 0, 0, 0, 0 } }, { 0 }, { { 1 } } },
    { "two-node cycle", 2, 1, { { 0, 0, 1, 0 }, { 1, 0, 0, 0 } }, { 0, 1 }, { { 1 }, { 0 } } },
    { "flags follow connections, not ports", 2, 1, { { 0, 0, 1, 1 }, { 1, 0, 1, 2 } }, { 0, 1 }, { {}, { 0, 1 } } },
    { "the same source on two inputs", 2, 1, { { 0, 0, 1, 0 }, { 0, 1, 1, 1 } }, { 0, 1 }, { {}, { 0, 1 } } },
    { "what cannot reach the root does not run",
      3,
      0,
      { { 1, 0, 0, 0 }, { 0, 0, 2, 0 } },
      { 1, 0 },
      { { 0 }, {}, {} } },
    { "missing root", 2, 7, { { 0, 0, 1, 0 } }, {}, { {}, {} } },
};

TEST (ExecutionOrder, isTheReversePreOrderOfTheWalkFromTheRoot)
{
    for (const OrderCase& test : orderCases)
    {
        SCOPED_TRACE (test.name);
        MVNetwork network (1);
        addNodes (network, test.nodes, 3, 2);
        addRoutes (network, test.routes);

        for (int repetition = 0; repetition < 2; ++repetition)
        {
            const auto info = network.computeExecutionOrder (0, test.root);
            EXPECT_EQ (orderOf (*info), test.order);
            EXPECT_EQ (info->getBufferCount(), 2 * static_cast<int> (test.order.size()));

            for (int node = 0; node < test.nodes; ++node)
            {
                const MVNodeExecDesc* const desc = descOf (*info, node);
                const std::vector<int>& expected = test.feedback[static_cast<std::size_t> (node)];
                EXPECT_EQ (desc != nullptr ? listOf (desc->inputFeedback) : std::vector<int> {}, expected) << node;
            }
        }
    }
}

TEST (ExecutionOrder, numbersBuffersInVisitOrderAndResolvesThem)
{
    MVNetwork network (1);
    network.addNode (0, new ProbeNode (3, 1)); // root
    network.addNode (0, new ProbeNode (1, 3));
    network.addNode (0, new ProbeNode (0, 2));
    addRoutes (network, { { 1, 2, 0, 0 }, { 2, 1, 0, 2 }, { 2, 0, 1, 0 } });

    const auto info = network.computeExecutionOrder (0, 0);

    ASSERT_EQ (orderOf (*info), (std::vector<int> { 2, 1, 0 }));
    EXPECT_EQ (info->getBufferCount(), 6);
    EXPECT_EQ (listOf (descOf (*info, 0)->outputBuffers), (std::vector<int> { 0 }));
    EXPECT_EQ (listOf (descOf (*info, 1)->outputBuffers), (std::vector<int> { 1, 2, 3 }));
    EXPECT_EQ (listOf (descOf (*info, 2)->outputBuffers), (std::vector<int> { 4, 5 }));

    const MVNodeExecDesc& root = *descOf (*info, 0);
    EXPECT_EQ (listOf (root.inputSrcNode), (std::vector<int> { 1, -1, 2 }));
    EXPECT_EQ (listOf (root.inputSrcPort), (std::vector<int> { 2, -1, 1 }));
    EXPECT_EQ (listOf (root.inputBuffers), (std::vector<int> { 3, -1, 5 }));
    // Node 2 was met through node 1 first, so the root's second connection counts as feedback, one entry early.
    EXPECT_EQ (listOf (root.inputFeedback), (std::vector<int> { 0, 1 }));
    EXPECT_FALSE (root.inputFeedback.itemAt (2));
    EXPECT_EQ (listOf (descOf (*info, 1)->inputBuffers), (std::vector<int> { 4 }));
}

TEST (ExecutionOrder, survivesRoutesThatNameNothing)
{
    MVNetwork network (1);
    addNodes (network, 4, 2, 2);
    addRoutes (network, { { 1, 1, 0, 0 }, { 2, 0, 0, 1 }, { 3, 0, 1, 0 } });
    network.nodeAt (0, 1)->setNumPorts (portsOut, 1); // the route from its port 1 is stale now
    network.removeNodes (0, { 2, 1 }, false);
    network.addRoute (0, 2, 9, 0, 1, true); // from the null slot, taken as it is
    network.nodeAt (0, 1)->setNumPorts (portsIn, 0);

    const auto info = network.computeExecutionOrder (0, 0);

    EXPECT_EQ (orderOf (*info), (std::vector<int> { 1, 0 }));
    const MVNodeExecDesc& root = *descOf (*info, 0);
    EXPECT_EQ (listOf (root.inputSrcNode), (std::vector<int> { 1, 2 }));
    EXPECT_EQ (root.inputBuffers.itemAt (0), -1);
    EXPECT_EQ (root.inputBuffers.itemAt (1), -1);
    EXPECT_EQ (listOf (root.inputFeedback), (std::vector<int> { 0, 0 }));
}

TEST (ExecutionOrder, takesTheFirstOfTwoRoutesIntoAnInput)
{
    // Pruning leaves a route into node 2, which is gone; then node 1 moves there with a route of its own.
    MVNetwork network (2);
    addNodes (network, 4, 1, 2, 1);
    addRoutes (network, { { 1, 0, 0, 0 }, { 3, 1, 2, 0 }, { 0, 0, 1, 0 } }, 1);
    network.pruneUnreachable (1, 0);
    network.moveNode (1, 1, 2);
    ASSERT_EQ (routesOf (network, 1), (std::vector<Route> { { 2, 0, 0, 0 }, { 3, 1, 2, 0 }, { 0, 0, 2, 0 } }));

    const auto info = network.computeExecutionOrder (1, 0);
    EXPECT_EQ (network.routeIntoInput (1, 2, 0)->srcNode, 3);
    EXPECT_EQ (descOf (*info, 2)->inputSrcNode.itemAt (0), 3);
    EXPECT_FALSE (descOf (*info, 2)->inputFeedback.itemAt (0));

    network.addRoute (1, 0, 1, 2, 0, false);
    EXPECT_EQ (network.numRoutes (1), 2) << "a new route drives out both";
}

TEST (ExecutionOrder, goesThroughChainsLongerThanAnyThreadStack)
{
    constexpr int length = 300000;
    MVNetwork network (1);
    addNodes (network, length, 1, 1);
    for (int node = 1; node < length; ++node)
        network.addRoute (0, node, 0, node - 1, 0, false);

    // Inserting at the front makes long lists quadratic, so only a piece of the chain is compiled here; the marks of
    // pruning go through all of it.
    network.removeNodes (0, { 20000, 1 }, false);
    const auto info = network.computeExecutionOrder (0, 0);
    EXPECT_EQ (info->numExecDescs(), 20000);
    EXPECT_EQ (info->execDescAt (0)->nodeIndex, 19999);

    MVNetwork whole (1);
    addNodes (whole, length, 1, 1);
    for (int node = 1; node < length; ++node)
        whole.addRoute (0, node, 0, node - 1, 0, false);
    whole.pruneUnreachable (0, 0);
    EXPECT_EQ (whole.numNodes (0), length);
}

TEST (NetworkInfo, isStoredAsACloneAndOutlivesItsReplacement)
{
    MVNetwork network (2);
    addNodes (network, 2, 1, 1);
    addRoutes (network, { { 0, 0, 1, 0 } });

    const auto first = network.computeExecutionOrder (0, 1);
    EXPECT_TRUE (first == network.getNetworkInfo (0));
    EXPECT_EQ (first->getSignature(), 0 + 0 + 1 + 0);

    auto handedOver = first;
    network.setNetworkInfo (1, handedOver);
    EXPECT_TRUE (handedOver == nullptr);
    const auto stored = network.getNetworkInfo (1);
    ASSERT_FALSE (stored == first);
    EXPECT_NE (stored->getId(), first->getId());
    EXPECT_EQ (orderOf (*stored), orderOf (*first));
    EXPECT_EQ (stored->getBufferCount(), 2);
    EXPECT_EQ (stored->takeBuffer(), 0) << "a copy hands out buffers from 0 again";
    EXPECT_EQ (stored->execDescAt (1)->inputSrcNode.itemAt (5), -1) << "in a copy, past the end means unconnected";

    auto same = stored;
    network.setNetworkInfo (1, same);
    EXPECT_TRUE (network.getNetworkInfo (1) == stored);

    network.swapSubnets (0, 1);
    EXPECT_TRUE (network.getNetworkInfo (0) == stored);
    EXPECT_EQ (network.numNodes (0), 0);
    EXPECT_EQ (network.numNodes (1), 2);

    network.clearNetworkInfo (0);
    EXPECT_EQ (network.networkInfoAt (0), nullptr);
    EXPECT_EQ (orderOf (*stored), (std::vector<int> { 0, 1 }));

    for (const int outside : { -1, 2, 1000000000 })
    {
        auto info = first;
        network.setNetworkInfo (outside, info);
        network.clearNetworkInfo (outside);
        EXPECT_TRUE (info == nullptr);
        EXPECT_TRUE (network.computeExecutionOrder (outside, 0) == nullptr);
        EXPECT_TRUE (network.getNetworkInfo (outside) == nullptr);
    }
}

TEST (ConnectUnreached, wiresTheHighestStrayIntoTheFirstFreeInput)
{
    MVNetwork network (1);
    addNodes (network, 4, 2, 1);
    addRoutes (network, { { 1, 0, 0, 0 } });

    // List 1, 0: the first free input is input 0 of node 1, then input 1 of node 3, at the front by then.
    EXPECT_TRUE (network.connectUnreached (0, 0, 4));
    EXPECT_EQ (routesOf (network), (std::vector<Route> { { 1, 0, 0, 0 }, { 3, 0, 1, 0 }, { 2, 0, 3, 0 } }));
    EXPECT_EQ (network.getNetworkInfo (0)->numExecDescs(), 4);
}

TEST (ConnectUnreached, givesUpWhereNothingCanBeWired)
{
    MVNetwork tooSmall (1);
    addNodes (tooSmall, 2, 1, 1);
    EXPECT_FALSE (tooSmall.connectUnreached (0, 0, 3));
    EXPECT_EQ (tooSmall.networkInfoAt (0), nullptr) << "nothing is computed";

    MVNetwork withoutInputs (1);
    addNodes (withoutInputs, 3, 0, 1);
    EXPECT_FALSE (withoutInputs.connectUnreached (0, 0, 2));
    EXPECT_TRUE (withoutInputs.connectUnreached (0, 0, 1));

    MVNetwork withoutOutputs (1);
    addNodes (withoutOutputs, 3, 1, 0);
    EXPECT_FALSE (withoutOutputs.connectUnreached (0, 0, 2)) << "the attempts run out";
    EXPECT_EQ (withoutOutputs.numRoutes (0), 0);
}

} // namespace
} // namespace morvanelab::test
