// SPDX-License-Identifier: GPL-3.0-or-later
// Snapshots of patches: what they hold, and how long a renderer keeps them.
#include "KnownPatch.h"
#include "RendererRig.h"

#include "engine/MVOperator_proxy.h"
#include "engine/MVPatchAccessorProxy.h"
#include "engine/MVPolyPatch_proxy.h"
#include "operators/MVOperatorTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace morvanelab::test
{

namespace
{

using ProxyPtr = std::shared_ptr<const MVPolyPatch_proxy>;

struct RouteEnds
{
    int srcNode, srcPort, dstNode, dstPort;
    bool operator== (const RouteEnds&) const = default;
};

std::vector<RouteEnds> routesOf (const MVNetwork& network, int layer)
{
    std::vector<RouteEnds> ends;
    for (int index = 0; index < network.numRoutes (layer); ++index)
    {
        const MVNetRoute& route = *network.routeAt (layer, index);
        ends.push_back ({ route.srcNode, route.srcPort, route.dstNode, route.dstPort });
    }
    return ends;
}

using TextGetter = const char* (MVPolyPatch_proxy::*)(int, int&) const;

std::optional<std::string> textOf (const MVPolyPatch_proxy& patch, TextGetter getter, int index)
{
    int length = -1;
    const char* const text = (patch.*getter) (index, length);
    EXPECT_EQ (text != nullptr, length > 0) << index;
    return text != nullptr ? std::optional (std::string (text, static_cast<std::size_t> (length))) : std::nullopt;
}

std::optional<std::string> nameOf (const MVPolyPatch_proxy& patch, int index)
{
    return textOf (patch, &MVPolyPatch_proxy::getVariableName, index);
}

std::optional<std::string> descOf (const MVPolyPatch_proxy& patch, int index)
{
    return textOf (patch, &MVPolyPatch_proxy::getVariableDesc, index);
}

const MVOperator_proxy& nodeOf (const MVPolyPatch_proxy& patch, int index)
{
    return dynamic_cast<const MVOperator_proxy&> (*patch.nodeAt (patch.getLayer(), index));
}

} // namespace

// What a snapshot holds -------------------------------------------------------------------------------------------

TEST (PatchProxy, holdsWhatThePatchHolds)
{
    VoiceRig rig (false);
    rig.play (knownPatch().tree(), 1);
    const MVPolyPatch_proxy patch (*rig.voice, 1);

    EXPECT_EQ (patch.getLayer(), 1);
    EXPECT_EQ (patch.getNumSubnets(), 2);
    EXPECT_EQ (patch.numNodes (0), 0);
    EXPECT_EQ (patch.getRootNode(), 5);

    constexpr std::uint32_t types[] { 0xA70004, 0xA70002, 0xA70009, 0xA70005, 0xA70007, 0xA70006 };
    ASSERT_EQ (patch.getNumNodes(), 6);
    for (int index = 0; index < 6; ++index)
    {
        const std::uint64_t id = firstNodeId + static_cast<std::uint64_t> (index);
        EXPECT_EQ (patch.getNodeIdAt (index), id);
        EXPECT_EQ (patch.getNodeType (id), types[index]);
        EXPECT_EQ (nodeOf (patch, index).typeId(), types[index]);
    }

    // Node by node in file order, as the routes stand in the chunks of their destinations.
    const std::vector<RouteEnds> expected { { 0, 0, 2, 0 }, { 1, 0, 2, 1 }, { 4, 0, 2, 2 }, { 2, 0, 3, 0 },
                                            { 3, 0, 4, 0 }, { 0, 1, 4, 1 }, { 4, 0, 5, 0 } };
    EXPECT_EQ (routesOf (patch, 1), expected);

    for (int index = 0; index < 16; ++index)
        EXPECT_EQ (patch.isParameterInUse (index), index == 3) << index;
    EXPECT_EQ (nameOf (patch, 0), "Cutoff");
    EXPECT_EQ (nameOf (patch, 1), std::nullopt);
    EXPECT_EQ (nameOf (patch, 2), "Colour");
    EXPECT_EQ (descOf (patch, 0), std::nullopt);
    EXPECT_EQ (descOf (patch, 1), "How wide");
}

TEST (PatchProxy, nodesTellTheirPortsAndSources)
{
    VoiceRig rig (false);
    rig.play (knownPatch().tree());
    const MVPolyPatch_proxy patch (*rig.voice, 0);

    // What feeds each of the product's inputs, and what they are scaled and controlled by.
    const MVOperator_proxy& product = nodeOf (patch, 4);
    EXPECT_EQ (product.getInputSource (0), firstNodeId + 3);
    EXPECT_EQ (product.getInputSourcePort (0), 0);
    EXPECT_EQ (product.getInputSource (1), firstNodeId);
    EXPECT_EQ (product.getInputSourcePort (1), 1);
    EXPECT_DOUBLE_EQ (product.getInputScale (1), 0.25);
    EXPECT_EQ (product.getInputControl (1), 3);
    EXPECT_EQ (product.getInputControl (0), -1);

    const MVOperator_proxy& sum = nodeOf (patch, 2);
    EXPECT_EQ (sum.getInputSource (2), firstNodeId + 4);
    EXPECT_EQ (sum.getInputSourcePort (2), 0);

    const MVOperator_proxy& output = nodeOf (patch, 5);
    ASSERT_GT (output.getNumPorts (portsIn), 1);
    for (int input : { -1, 1, output.getNumPorts (portsIn), 1000 })
    {
        EXPECT_EQ (output.getInputSource (input), 0u) << input;
        EXPECT_EQ (output.getInputSourcePort (input), -1) << input;
    }

    for (int index = 0; index < patch.getNumNodes(); ++index)
    {
        const MVOperator_proxy& node = nodeOf (patch, index);
        const OperatorSpec* const spec = findOperatorSpec (node.typeId());
        const MVNetNode& op = *rig.voice->nodeAt (0, index);
        for (int direction : { 1, 2 })
        {
            EXPECT_EQ (node.getNumPorts (direction), op.getNumPorts (direction)) << spec->shortName;
            for (int port = 0; port < op.getNumPorts (direction); ++port)
                EXPECT_TRUE (node.getPortDesc (direction, port)->equals (op.getPortDesc (direction, port)))
                    << spec->shortName << ' ' << direction << ' ' << port;
            EXPECT_FALSE (node.getPortDesc (direction, op.getNumPorts (direction)));
        }
        EXPECT_FALSE (node.getPortDesc (1, -1));
        EXPECT_FALSE (node.getPortDesc (3, 0));
    }
}

TEST (PatchProxy, askingPastTheEndGivesNothing)
{
    VoiceRig rig (false);
    rig.parse (knownPatch().tree());
    const MVPolyPatch_proxy patch (*rig.voice, 0);

    for (std::uint64_t stranger : { std::uint64_t { 0 }, std::uint64_t { 7000 }, patch.getId() })
        EXPECT_EQ (patch.getNodeType (stranger), 0xA7001Du);
    for (int index : { -1, 6, 1 << 30 })
        EXPECT_EQ (patch.getNodeIdAt (index), 0u);
    for (int index : { -1, 16, 1 << 30 })
    {
        EXPECT_EQ (nameOf (patch, index), std::nullopt);
        EXPECT_EQ (descOf (patch, index), std::nullopt);
        EXPECT_FALSE (patch.isParameterInUse (index));
    }
    // A layer that does not play uses no parameter.
    EXPECT_FALSE (patch.isParameterInUse (3));

    const MVPolyPatch_proxy empty (*rig.voice, 2);
    EXPECT_EQ (empty.getNumNodes(), 0);
    EXPECT_EQ (empty.getRootNode(), -1);
    EXPECT_EQ (nameOf (empty, 0), std::nullopt);
}

TEST (PatchProxy, freeSlotsKeepTheirPlace)
{
    VoiceRig rig (false);
    rig.parse (knownPatch().tree());
    rig.voice->removeNodes (0, { 1, 1 }, false);
    const MVPolyPatch_proxy patch (*rig.voice, 0);

    ASSERT_EQ (patch.getNumNodes(), 6);
    EXPECT_EQ (patch.getNodeIdAt (1), 0u);
    EXPECT_EQ (patch.getNodeIdAt (5), firstNodeId + 5);
    EXPECT_EQ (nodeOf (patch, 3).getInputSource (0), firstNodeId + 2);
    EXPECT_EQ (nodeOf (patch, 2).getInputSource (1), 0u);
    EXPECT_EQ (routesOf (patch, 0), routesOf (*rig.voice, 0));
}

TEST (PatchProxy, twoOfOneLayerAreIndependentOfEachOtherAndOfTheVoice)
{
    VoiceRig rig (false);
    rig.play (knownPatch().tree());
    auto first = std::make_unique<MVPolyPatch_proxy> (*rig.voice, 0);
    const MVPolyPatch_proxy second (*rig.voice, 0);

    EXPECT_NE (first->getId(), second.getId());
    for (int index = 0; index < 6; ++index)
    {
        EXPECT_EQ (first->getNodeIdAt (index), second.getNodeIdAt (index));
        EXPECT_NE (first->nodeAt (0, index), second.nodeAt (0, index));
    }

    rig.voice->clearLayer (0);
    first.reset();
    EXPECT_EQ (second.getNumNodes(), 6);
    EXPECT_EQ (nameOf (second, 0), "Cutoff");
    EXPECT_EQ (nodeOf (second, 4).getInputSource (1), firstNodeId);
    EXPECT_FALSE (nodeOf (second, 4).getPortDesc (portsIn, 0)->isEmpty());
}

TEST (PatchProxy, everyOperatorHasItsOwnNumber)
{
    // Two onwards in the order of the identifiers, whose one gap takes no number.
    std::vector<std::uint32_t> types;
    for (const OperatorRow& row : operatorTable())
        types.push_back (row.spec->typeId);
    std::sort (types.begin(), types.end());
    ASSERT_EQ (types.size(), 26u);
    for (std::size_t i = 0; i < types.size(); ++i)
        EXPECT_EQ (patchNodeTypeNumber (types[i]), static_cast<int> (i) + 2) << std::hex << types[i];

    EXPECT_EQ (patchNodeTypeNumber (0xA70009), 10);
    EXPECT_EQ (patchNodeTypeNumber (0xA7000B), 11);
    EXPECT_EQ (patchNodeTypeNumber (0xA7001B), 27);
    for (std::uint32_t other : { 0u, 4u, 0xA70000u, 0xA7000Au, 0xA7001Cu, 0xA7001Du, 0xFFFFFFFFu })
        EXPECT_EQ (patchNodeTypeNumber (other), 1) << std::hex << other;
}

// How long a renderer keeps one -----------------------------------------------------------------------------------

TEST (PatchProxy, whatNobodyUsesGoesAtTheNextCreation)
{
    RendererRig rig;
    rig.load (knownPatch().tree());
    MVPatchRenderer& renderer = *rig.renderer;

    const std::uint64_t unused = renderer.createPatchProxy (0);
    ASSERT_NE (unused, 0u);
    const std::uint64_t used = renderer.createPatchProxy (0);
    EXPECT_EQ (renderer.acquirePatchProxy (unused), nullptr);
    EXPECT_FALSE (renderer.releasePatchProxy (unused));

    const ProxyPtr held = renderer.acquirePatchProxy (used);
    ASSERT_NE (held, nullptr);
    EXPECT_EQ (held->getId(), used);
    EXPECT_TRUE (held->inUse());
    EXPECT_EQ (renderer.acquirePatchProxy (used), held);

    // Acquired twice, so one release leaves it in use.
    EXPECT_TRUE (renderer.releasePatchProxy (used));
    renderer.createPatchProxy (0);
    EXPECT_EQ (renderer.numPatchProxies(), 2);
    EXPECT_TRUE (renderer.releasePatchProxy (used));
    EXPECT_FALSE (held->inUse());
    EXPECT_NE (renderer.acquirePatchProxy (used), nullptr); // kept until the next creation, so it can come back
    EXPECT_TRUE (renderer.releasePatchProxy (used));

    // One release too many is not held against a later user.
    EXPECT_TRUE (renderer.releasePatchProxy (used));
    renderer.acquirePatchProxy (used);
    EXPECT_TRUE (held->inUse());
    renderer.releasePatchProxy (used);
    renderer.createPatchProxy (0);
    EXPECT_EQ (renderer.acquirePatchProxy (used), nullptr);
    EXPECT_EQ (renderer.numPatchProxies(), 1);
    EXPECT_EQ (held->getNumNodes(), 6);
}

TEST (PatchProxy, survivesPatchChangesAndItsRenderer)
{
    RendererRig rig;
    rig.load (knownPatch().tree());
    const ProxyPtr held = rig.renderer->acquirePatchProxy (rig.renderer->createPatchProxy (0));

    rig.load (constantPatch (1.0));
    const ProxyPtr next = rig.renderer->acquirePatchProxy (rig.renderer->createPatchProxy (0));
    EXPECT_EQ (next->getNumNodes(), 2);
    rig.renderer->unloadPatch (0, false);
    rig.renderer->setActive (false);
    rig.renderer.reset();

    EXPECT_EQ (held->getNumNodes(), 6);
    EXPECT_TRUE (held->isParameterInUse (3));
    EXPECT_EQ (nodeOf (*held, 4).getInputSource (0), firstNodeId + 3);
}

TEST (PatchProxy, onlyLayersThatExistAreCopiedAndLoadsAreNotDisturbed)
{
    RendererRig rig;
    rig.load (knownPatch().tree());
    for (int layer : { -1, 4, 1 << 30 })
        EXPECT_EQ (rig.renderer->createPatchProxy (layer), 0u) << layer;
    EXPECT_EQ (rig.renderer->numPatchProxies(), 0);

    // The back buffer holds the patch that fades out.
    rig.renderer->setPlayMode (2);
    rig.renderer->noteOn (60, 1.0);
    rig.block();
    ASSERT_EQ (rig.load (constantPatch (1.0)), resultUnderWay);
    const auto fading = rig.renderer->acquirePatchProxy (rig.renderer->createPatchProxy (3));
    EXPECT_EQ (fading->getNumNodes(), 6);
    const auto coming = rig.renderer->acquirePatchProxy (rig.renderer->createPatchProxy (0));
    EXPECT_EQ (coming->getNumNodes(), 2);

    rig.block();
    EXPECT_EQ (rig.renderer->advanceTransition (1, false), resultDone);
    EXPECT_EQ (rig.load (constantPatch (2.0)), resultUnderWay);
}

TEST (PatchProxy, listenersThatAskForOneShareTheFreshOne)
{
    struct Heard
    {
        MVPatchRenderer* renderer = nullptr;
        int calls = 0;
        std::uint64_t id = 0;
        ProxyPtr proxy;
    } first, second, plain, elsewhere;
    const auto listener = [] (void* context, std::int64_t, std::uint64_t, std::uint64_t proxyId)
    {
        auto& heard = *static_cast<Heard*> (context);
        ++heard.calls;
        heard.id = proxyId;
        if (heard.renderer != nullptr)
            heard.proxy = heard.renderer->acquirePatchProxy (proxyId);
    };

    RendererRig rig;
    first.renderer = rig.renderer.get();
    rig.renderer->addPatchListener (listener, &plain);
    rig.load (constantPatch (1.0));
    EXPECT_EQ (rig.renderer->numPatchProxies(), 0); // nobody asks, nothing is made

    rig.renderer->addPatchListener (listener, &first, 0, true);
    rig.renderer->addPatchListener (listener, &second, -1, true);
    rig.renderer->addPatchListener (listener, &elsewhere, 1, true);
    rig.load (knownPatch().tree());
    EXPECT_EQ (plain.id, 0u);
    EXPECT_EQ (elsewhere.calls, 0);
    EXPECT_NE (first.id, 0u);
    EXPECT_EQ (second.id, first.id);
    ASSERT_NE (first.proxy, nullptr);
    EXPECT_EQ (first.proxy->getId(), first.id);
    EXPECT_EQ (first.proxy->getNumNodes(), 6);
    EXPECT_TRUE (first.proxy->isParameterInUse (3));

    const std::uint64_t before = first.id;
    rig.renderer->releasePatchProxy (before);
    rig.renderer->unloadPatch (0, true);
    EXPECT_NE (first.id, before);
    EXPECT_EQ (rig.renderer->acquirePatchProxy (before), nullptr);
    ASSERT_NE (first.proxy, nullptr);
    EXPECT_EQ (first.proxy->getNumNodes(), 0);
    EXPECT_FALSE (first.proxy->isParameterInUse (3));
}

} // namespace morvanelab::test
