// SPDX-License-Identifier: GPL-3.0-or-later
#include "VoiceRig.h"

#include "foundation/MVException.h"
#include "foundation/MVResult.h"
#include "support/TestRandom.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>

namespace morvanelab::test
{

namespace
{

constexpr const char* notWellFormed = "Error:  Not a well-formed patch.";
constexpr const char* noOperator = "Error:  Patch loading error - no operator instance.";
constexpr const char* invalidData = "Error:  Invalid patch data.";

std::vector<std::uint8_t> bytesOf (const MVSmartPtr<MVRiffPacker>& tree)
{
    std::vector<std::uint8_t> bytes (static_cast<std::size_t> (tree->packedSize()));
    EXPECT_TRUE (tree->pack (bytes.data(), true));
    return bytes;
}

/** A patch of every kind of thing that is stored. */
PatchBuilder richPatch()
{
    PatchBuilder patch;
    patch.names = { "Pitch", "", "Colour" };
    patch.descriptions = { "How high", "A description that is longer than a name may ever be" };
    const int out = patch.node (PatchBuilder::output);
    const int tone = patch.node (PatchBuilder::oscillator);
    const int key = patch.node (PatchBuilder::midiKeyIn);
    const int mix = patch.node (PatchBuilder::sum);
    patch.node (PatchBuilder::constant);
    patch.set (tone, "Phase", 1.25);
    patch.inputEntry (tone, 0, 0.75, 3);
    patch.identity (mix, 0x1122334455667788);
    patch.route (key, 0, tone, 0);
    patch.route (tone, 0, mix, 1);
    patch.route (mix, 0, mix, 0);
    patch.route (mix, 0, out, 0);
    return patch;
}

} // namespace

TEST (PolyPatchFile, badStructureThrowsWithTheTextForTheUser)
{
    const auto withOperator = [] (const MVSmartPtr<MVRiffPacker>& op)
    {
        auto root = makeSmart<MVRiffPacker> (fourCC ("ptch"));
        MVSmartPtr<MVRiffPacker> child = op;
        root->addChild (child);
        return root;
    };
    const auto classChunk = [] (std::uint32_t id, int size)
    {
        auto op = makeSmart<MVRiffPacker> (fourCC ("op  "));
        op->addChild (makeSmart<MVRiffPacker> (fourCC ("clas"), &id, size));
        return op;
    };
    PatchBuilder crowd;
    for (int i = 0; i <= MVPolyPatch::maxOperators; ++i)
        crowd.node (PatchBuilder::constant);

    const struct
    {
        const char* what;
        MVSmartPtr<MVRiffPacker> tree;
        const char* text;
    } cases[] {
        { "another root", richPatch().tree (fourCC ("ptcx")), notWellFormed },
        { "no class", withOperator (makeSmart<MVRiffPacker> (fourCC ("op  "))), notWellFormed },
        { "half a class", withOperator (classChunk (6, 1)), notWellFormed },
        { "unassigned class", withOperator (classChunk (0x0A, 4)), noOperator },
        { "class past the table", withOperator (classChunk (0xFFFF, 4)), noOperator },
        { "too many operators", crowd.tree(), invalidData },
    };

    for (const auto& each : cases)
    {
        SCOPED_TRACE (each.what);
        VoiceRig rig;
        try
        {
            rig.parse (each.tree);
            ADD_FAILURE() << "did not throw";
        }
        catch (const MVException& error)
        {
            EXPECT_EQ (error.getCode(), static_cast<std::uint32_t> (resultFailed));
            EXPECT_STREQ (error.text(), each.text);
        }
    }
}

TEST (PolyPatchFile, whatIsNoPatchLoadsNothingAndIsNoError)
{
    VoiceRig rig;
    rig.parse (constantPatch (1.0));

    MVSmartPtr<MVObject> nothing;
    EXPECT_EQ (rig.voice->loadPatch (nothing, 0), resultEmptyData);

    auto bytes = bytesOf (richPatch().tree());
    bytes[40] ^= 1;
    MVSmartPtr<MVObject> damaged = makeSmart<MVDataBlock> (bytes.data(), static_cast<int> (bytes.size()));
    EXPECT_EQ (rig.voice->loadPatch (damaged, 0), resultDone);
    EXPECT_TRUE (damaged == nullptr) << "the reference is taken over";

    MVSmartPtr<MVObject> damagedTree = makeSmart<MVRiffPacker> (bytes.data(), 20, false);
    EXPECT_EQ (rig.voice->loadPatch (damagedTree, 0), resultDone);
    MVSmartPtr<MVObject> other = makeSmart<MVNetRoute>();
    EXPECT_EQ (rig.voice->loadPatch (other, 0), resultDone);
    EXPECT_EQ (rig.voice->numNodes (0), 2) << "the layer is as it was";
}

TEST (PolyPatchFile, classIsReadByItsLow16Bits)
{
    PatchBuilder patch;
    patch.node (0x12340000 | (PatchBuilder::output & 0xFFFF));
    VoiceRig rig (false);
    rig.parse (patch.tree());
    EXPECT_EQ (rig.voice->nodeAt (0, 0)->typeId(), PatchBuilder::output);
}

TEST (PolyPatchFile, routesFoldIntoRange)
{
    // Node 0 is a router with 16 outputs, 1 a sum with 4 inputs, 2 an output with none to give, 3 a constant.
    const struct
    {
        int dstNode, delta, srcPort, dstPort;
        int srcNode, wantedSrcPort, wantedDstPort;
    } cases[] {
        { 1, -1, 5, 2, 0, 5, 2 },
        { 1, -1, 16, 4, 0, 1, 1 },     // 16 folds to 1, input 4 of 0..3 to 1
        { 1, -1, 30, 6, 0, 0, 0 },     // 15 + 15 falls on 0
        { 1, -1, -1, -1, 0, 14, 2 },   // below 0: 15 - 1, 3 - 1
        { 0, -2, 0, 0, 1, 0, 0 },      // 0 - 2 folds to 1
        { 1, 3, 0, 0, 1, 0, 0 },       // 1 + 3 = 4 folds to 1
        { 1, INT_MAX, 0, 0, 0, 0, 0 }, // wraps to the most negative number, which counts as 0
        { 1, -1, INT_MIN, INT_MIN, 0, 0, 0 },
    };

    for (const auto& each : cases)
    {
        PatchBuilder patch;
        patch.node (0xA70018);
        patch.node (PatchBuilder::sum);
        patch.node (PatchBuilder::output);
        patch.node (PatchBuilder::constant);
        patch.storedRoute (each.dstNode, each.delta, each.srcPort, each.dstPort);

        VoiceRig rig;
        rig.parse (patch.tree());
        ASSERT_EQ (rig.voice->numRoutes (0), 1) << each.delta;
        const MVNetRoute& route = *rig.voice->routeAt (0, 0);
        EXPECT_EQ (route.srcNode, each.srcNode) << each.delta;
        EXPECT_EQ (route.srcPort, each.wantedSrcPort) << each.srcPort;
        EXPECT_EQ (route.dstPort, each.wantedDstPort) << each.dstPort;
    }
}

TEST (PolyPatchFile, routesThatCannotBeAreLeftOut)
{
    PatchBuilder patch;
    patch.node (PatchBuilder::constant);
    patch.node (PatchBuilder::output);
    patch.node (PatchBuilder::passThrough);
    patch.route (2, 0, 0, 0); // into a node without inputs
    patch.route (1, 0, 2, 0); // out of a node without outputs

    VoiceRig rig;
    rig.parse (patch.tree());
    EXPECT_EQ (rig.voice->numRoutes (0), 0);
}

TEST (PolyPatchFile, secondOutputBecomesAWire)
{
    PatchBuilder patch;
    const int source = patch.constantNode (0.5);
    const int first = patch.node (PatchBuilder::output);
    const int second = patch.node (PatchBuilder::output);
    patch.route (source, 0, second, 0);
    patch.route (second, 0, first, 0);

    VoiceRig rig;
    rig.play (patch.tree());
    EXPECT_EQ (rig.voice->rootNode (0), first);
    EXPECT_EQ (rig.voice->nodeAt (0, second)->typeId(), PatchBuilder::passThrough);
    rig.block();
    EXPECT_EQ (rig.channels[0][0], 0.5);

    rig.parse (rig.voice->savePatch (0), 1);
    EXPECT_EQ (rig.voice->nodeAt (1, second)->typeId(), PatchBuilder::passThrough);
}

TEST (PolyPatchFile, patchWithoutOutputLoadsAndNeverPlays)
{
    PatchBuilder patch;
    patch.node (PatchBuilder::constant);
    VoiceRig rig;
    rig.play (patch.tree());
    EXPECT_TRUE (rig.voice->hasPatch (0));
    EXPECT_EQ (rig.voice->rootNode (0), -1);
    EXPECT_EQ (rig.voice->patchState (0), PATCH_STOPPED);
}

TEST (PolyPatchFile, namesAreCutAndPadded)
{
    PatchBuilder patch;
    patch.names = { "1234567890123456789012345", "" };
    patch.descriptions = { std::string (300, 'x') };
    patch.node (PatchBuilder::output);

    VoiceRig rig;
    rig.parse (patch.tree());
    EXPECT_EQ (rig.voice->variableName (0, 0), "123456789012345678");
    EXPECT_EQ (rig.voice->variableName (0, 1), "");
    EXPECT_EQ (rig.voice->variableName (0, 15), "");
    EXPECT_EQ (rig.voice->variableDescription (0, 0).length(), 300);
    EXPECT_EQ (rig.voice->variableName (0, 16), "");
    EXPECT_EQ (rig.voice->variableName (-1, 0), "");
}

TEST (PolyPatchFile, savedTreeHoldsEveryChunkInOrderAndReadsBackTheSame)
{
    VoiceRig rig (false);
    rig.parse (richPatch().tree(), 0);
    const auto saved = rig.voice->savePatch (0);

    ASSERT_EQ (saved->childCount(), 3 + 5);
    EXPECT_EQ (saved->childAt (0)->getChunkId(), fourCC ("ver "));
    EXPECT_EQ (saved->childAt (1)->getChunkId(), fourCC ("vana"));
    EXPECT_EQ (saved->childAt (2)->getChunkId(), fourCC ("vade"));
    EXPECT_EQ (saved->childAt (1)->countChildren (fourCC ("name")), 16);
    EXPECT_EQ (saved->childAt (2)->countChildren (fourCC ("desc")), 16);

    // The mixer's two routes: from itself, and from two nodes before it.
    const auto mixer = saved->childAt (3 + 3);
    EXPECT_EQ (mixer->childAt (0)->getChunkId(), fourCC ("clas"));
    ASSERT_EQ (mixer->countChildren (fourCC ("rout")), 2);
    const std::int32_t wanted[2][6] { { 0, 0, -2, 0, 1, 0 }, { 0, 0, 0, 0, 0, 0 } };
    for (int i = 0; i < 2; ++i)
        for (int word = 0; word < 6; ++word)
            EXPECT_EQ (chunkNumber<std::int32_t> (mixer->findChild (fourCC ("rout"), i), word), wanted[i][word]);

    rig.parse (saved, 1);
    EXPECT_EQ (bytesOf (rig.voice->savePatch (1)), bytesOf (saved));
    EXPECT_EQ (rig.voice->nodeAt (1, 3)->getId(), 0x1122334455667788U);
    EXPECT_EQ (rig.voice->nodeAt (1, 1)->getInputControl (0), 3);
    EXPECT_EQ (rig.voice->nodeAt (1, 1)->getInputScale (0), 0.75);
    EXPECT_TRUE (rig.voice->savePatch (2) == nullptr);
}

TEST (PolyPatchFile, hostileBytesNeverBreakAnything)
{
    // Every length and many single lies about the content: nothing may crash, hang or leave a layer that cannot be
    // played.
    const auto good = bytesOf (richPatch().tree());
    TestRandom random (1);

    for (int round = 0; round < 3000; ++round)
    {
        auto bytes = good;
        if (round < static_cast<int> (good.size()))
            bytes.resize (static_cast<std::size_t> (round));
        for (int lie = random.below (4); lie > 0 && ! bytes.empty(); --lie)
            bytes[static_cast<std::size_t> (random.below (static_cast<int> (bytes.size())))] =
                static_cast<std::uint8_t> (random.below (256));

        VoiceRig rig (false);
        try
        {
            rig.play (makeSmart<MVRiffPacker> (bytes.data(), static_cast<int> (bytes.size()), false));
        }
        catch (const MVException&)
        {
        }
        rig.voice->noteOn (60, 1.0);
        rig.block();
        rig.block();
    }
}

TEST (PolyPatchFile, memoryIsCountedFromBuffersAndOperators)
{
    // Two buffers of 4096 bytes are reached (constant and router's 16), the stray constant only counts as a node.
    PatchBuilder patch;
    const int source = patch.constantNode (1.0);
    const int router = patch.node (0xA70018);
    const int out = patch.node (PatchBuilder::output);
    patch.node (PatchBuilder::constant);
    patch.route (source, 0, router, 0);
    patch.route (router, 0, out, 0);

    VoiceRig rig;
    rig.parse (patch.tree());
    const std::size_t nodesOnly = rig.voice->memoryNeeded (0);
    rig.voice->computeExecutionOrder (0, out);
    EXPECT_EQ (rig.voice->memoryNeeded (0) - nodesOnly, 17U * 4096U);
}

TEST (PolyPatchFile, memoryThatOperatorsTakeWhenActiveIsCountedBeforehand)
{
    struct Case
    {
        std::uint32_t typeId;
        const char* parameter;
        double value;
        double leastBytes; ///< its store alone, at 44100 Hz
    };

    for (const Case& each : { Case { 0xA70003, "Max Delay (sec)", 4.0, 4.0 * 44100 * 8 },
                              Case { 0xA70011, "Sampler time capacity", 8.0, 8.0 * 44100 * 8 } })
    {
        PatchBuilder patch;
        const int store = patch.node (each.typeId);
        patch.set (store, each.parameter, each.value);

        VoiceRig rig;
        rig.parse (patch.tree());
        EXPECT_GE (static_cast<double> (rig.voice->memoryNeeded (0)), each.leastBytes) << each.parameter;
    }
}

} // namespace morvanelab::test
