// SPDX-License-Identifier: GPL-3.0-or-later
// What the engine gives out of patches: handles to snapshots, their codes and answers, and readers on other threads.
#include "EngineRig.h"
#include "KnownPatch.h"

#include "engine/MVPolyPatch_proxy.h"
#include "network/MVNetNode.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace morvanelab::test
{

TEST (PatchAccessor, givesItsCodes)
{
    EngineRig rig;
    MVRenderEngine& engine = rig.engine;
    ASSERT_EQ (rig.load (knownPatch()), 1);
    EXPECT_EQ (engine.createPatchProxy (42, 0), 0u);
    const std::uint64_t id = engine.createPatchProxy (rig.part, 0);
    ASSERT_NE (id, 0u);

    MVPatchAccessorProxy accessor;
    EXPECT_EQ (engine.acquirePatchAccessor (id, nullptr), 11);
    EXPECT_EQ (engine.acquirePatchAccessor (id + 1000000, &accessor), 12);
    EXPECT_EQ (accessor.proxy, nullptr);
    EXPECT_EQ (engine.releasePatchAccessor (id), 12); // nobody has acquired it yet

    // Everything that can be asked, of an empty handle and of a full one, about a stranger and about a node.
    std::string text;
    bool flag = false;
    int number = 0;
    int port = 0;
    std::uint64_t source = 0;
    const auto askPatch = [&]
    {
        return std::vector<int> {
            engine.getVariableName (accessor, 0, text),   engine.getVariableDesc (accessor, 0, text),
            engine.getParameterInUse (accessor, 0, flag), engine.getNumNodes (accessor, number),
            engine.getNodeIdAt (accessor, 0, source),     engine.getRootNode (accessor, number)
        };
    };
    const auto askNode = [&] (std::uint64_t node)
    {
        return std::vector<int> { engine.getNodeType (accessor, node, number),
                                  engine.getNumPorts (accessor, node, 1, number),
                                  engine.getPortDesc (accessor, node, 1, 0, text),
                                  engine.getInputSource (accessor, node, 0, source, port) };
    };
    EXPECT_EQ (askPatch(), std::vector<int> (6, 19));
    EXPECT_EQ (askNode (firstNodeId), std::vector<int> (4, 19));
    ASSERT_EQ (engine.acquirePatchAccessor (id, &accessor), 1);
    EXPECT_EQ (accessor.proxyId, id);
    EXPECT_EQ (askPatch(), std::vector<int> (6, 1));
    EXPECT_EQ (askNode (firstNodeId), std::vector<int> (4, 1));
    number = -5;
    EXPECT_EQ (askNode (firstNodeId + 6), std::vector<int> (4, 12));
    EXPECT_EQ (number, -5);
}

TEST (PatchAccessor, answersWhatThePatchHolds)
{
    EngineRig rig;
    MVRenderEngine& engine = rig.engine;
    ASSERT_EQ (rig.load (knownPatch()), 1);
    MVPatchAccessorProxy accessor;
    ASSERT_EQ (engine.acquirePatchAccessor (engine.createPatchProxy (rig.part, 0), &accessor), 1);

    std::string text = "stale";
    engine.getVariableName (accessor, 0, text);
    EXPECT_EQ (text, "Cutoff");
    engine.getVariableName (accessor, 1, text);
    EXPECT_EQ (text, "");
    engine.getVariableDesc (accessor, 1, text);
    EXPECT_EQ (text, "How wide");
    EXPECT_EQ (engine.getVariableDesc (accessor, 16, text), 1);
    EXPECT_EQ (text, "");

    bool inUse = false;
    engine.getParameterInUse (accessor, 3, inUse);
    EXPECT_TRUE (inUse);
    engine.getParameterInUse (accessor, 4, inUse);
    EXPECT_FALSE (inUse);

    int number = 0;
    engine.getNumNodes (accessor, number);
    EXPECT_EQ (number, 6);
    engine.getRootNode (accessor, number);
    EXPECT_EQ (number, 5);
    constexpr int types[] { 5, 3, 10, 6, 8, 7 };
    for (int index = 0; index < 6; ++index)
    {
        std::uint64_t id = 0;
        engine.getNodeIdAt (accessor, index, id);
        EXPECT_EQ (id, firstNodeId + static_cast<std::uint64_t> (index));
        engine.getNodeType (accessor, id, number);
        EXPECT_EQ (number, types[index]);
    }

    engine.getNumPorts (accessor, firstNodeId, portsOut, number);
    EXPECT_GE (number, 2);
    engine.getNumPorts (accessor, firstNodeId, 7, number);
    EXPECT_EQ (number, 0);
    engine.getPortDesc (accessor, firstNodeId, portsOut, 1, text);
    EXPECT_EQ (text, "Output Midi Key Velocity");
    engine.getPortDesc (accessor, firstNodeId, portsOut, 2, text);
    EXPECT_EQ (text, "");

    std::uint64_t source = 0;
    int port = 0;
    engine.getInputSource (accessor, firstNodeId + 4, 1, source, port);
    EXPECT_EQ (source, firstNodeId);
    EXPECT_EQ (port, 1);
    engine.getInputSource (accessor, firstNodeId + 4, 99, source, port);
    EXPECT_EQ (source, 0u);
    EXPECT_EQ (port, -1);
}

TEST (PatchAccessor, isCountedAndOutlivesItsPartAndTheEngine)
{
    auto rig = std::make_unique<EngineRig>();
    MVRenderEngine& engine = rig->engine;
    ASSERT_EQ (rig->load (knownPatch()), 1);
    const std::uint64_t id = engine.createPatchProxy (rig->part, 0);

    MVPatchAccessorProxy first, second, late;
    ASSERT_EQ (engine.acquirePatchAccessor (id, &first), 1);
    ASSERT_EQ (engine.acquirePatchAccessor (id, &second), 1);
    EXPECT_EQ (engine.releasePatchAccessor (id), 1);
    engine.createPatchProxy (rig->part, 0);
    EXPECT_EQ (engine.acquirePatchAccessor (id, &late), 1); // the second acquisition keeps it
    EXPECT_EQ (engine.releasePatchAccessor (id), 1);

    engine.setActive (false);
    EXPECT_EQ (engine.acquirePatchAccessor (id, &late), 1);
    EXPECT_EQ (engine.releasePatchAccessor (id), 1);
    engine.setActive (true);

    engine.setActive (false);
    ASSERT_EQ (engine.destroyPart (rig->part), 1);
    EXPECT_EQ (engine.acquirePatchAccessor (id, &late), 12);
    EXPECT_EQ (engine.releasePatchAccessor (id), 1);
    EXPECT_EQ (engine.releasePatchAccessor (id), 12);

    rig.reset();
    int number = 0;
    EXPECT_EQ (MVRenderEngine::getNodeType (second, firstNodeId, number), 1);
    EXPECT_EQ (number, 5);
}

namespace
{

/** A patch that can be told by its texts: as many constants as its number says, each into the next input of a sum
    that feeds the output. */
PatchBuilder numberedPatch (int number)
{
    PatchBuilder patch;
    const int output = patch.node (PatchBuilder::output);
    int before = patch.constantNode (0.01);
    for (int i = 1; i < number; ++i)
    {
        const int next = patch.node (PatchBuilder::passThrough);
        patch.route (before, 0, next, 0);
        before = next;
    }
    patch.route (before, 0, output, 0);
    patch.names.assign (16, std::to_string (number));
    return patch;
}

/** Whether a snapshot is whole and all of one patch. */
::testing::AssertionResult isWhole (const MVPatchAccessorProxy& accessor)
{
    int numNodes = 0;
    MVRenderEngine::getNumNodes (accessor, numNodes);
    for (int variable = 0; variable < 16; ++variable)
    {
        std::string name;
        MVRenderEngine::getVariableName (accessor, variable, name);
        if (name != std::to_string (numNodes - 1))
            return ::testing::AssertionFailure() << numNodes << " nodes of patch " << name;
    }

    // The chain from the output back to the constant meets every node once.
    std::uint64_t node = 0;
    MVRenderEngine::getNodeIdAt (accessor, 0, node);
    int length = 1;
    for (; length <= numNodes; ++length)
    {
        std::uint64_t source = 0;
        int port = -1;
        std::string text;
        if (MVRenderEngine::getInputSource (accessor, node, 0, source, port) != 1)
            return ::testing::AssertionFailure() << "node " << node << " is not there";
        MVRenderEngine::getPortDesc (accessor, node, portsIn, 0, text);
        if (source == 0)
            break;
        node = source;
    }
    return length == numNodes ? ::testing::AssertionSuccess()
                              : ::testing::AssertionFailure() << length << " of " << numNodes << " nodes in the chain";
}

} // namespace

TEST (PatchAccessor, readersSeeWholePatchesWhilePatchesChange)
{
    constexpr int numLoads = 200;
    constexpr int numFades = 5;
    EngineRig rig;
    ASSERT_EQ (rig.load (numberedPatch (1)), 1);
    const std::uint64_t firstId = rig.engine.createPatchProxy (rig.part, 0);
    MVPatchAccessorProxy oldest;
    ASSERT_EQ (rig.engine.acquirePatchAccessor (firstId, &oldest), 1);

    // As a shell does it: the event thread acquires what it is told of, and the readers take a copy of the handle.
    struct Shell
    {
        MVRenderEngine& engine;
        std::mutex mutex;
        MVPatchAccessorProxy latest {};
        std::atomic<std::uint64_t> toldId { 0 };
        std::atomic<int> acquired { 0 };
    } shell { rig.engine, {} };
    ASSERT_EQ (rig.engine.addPatchListener (
                   rig.part,
                   [] (void* context, std::int64_t, std::uint64_t, std::uint64_t proxyId)
                   {
                       auto& self = *static_cast<Shell*> (context);
                       self.toldId = proxyId;
                       MVPatchAccessorProxy fresh;
                       if (self.engine.acquirePatchAccessor (proxyId, &fresh) != 1)
                           return;
                       ++self.acquired;
                       const std::scoped_lock lock (self.mutex);
                       std::swap (self.latest, fresh);
                       if (fresh.proxyId != 0)
                           self.engine.releasePatchAccessor (fresh.proxyId);
                   },
                   &shell, 0, true),
               1);

    std::atomic<bool> stop { false };
    std::atomic<int> reads { 0 };
    std::atomic<int> racedReads { 0 };
    std::vector<std::thread> threads;
    threads.emplace_back (
        [&]
        {
            while (! stop.load())
            {
                MVPatchAccessorProxy copy;
                {
                    const std::scoped_lock lock (shell.mutex);
                    copy = shell.latest;
                }
                if (copy.proxy != nullptr)
                {
                    EXPECT_TRUE (isWhole (copy));
                    ++reads;
                }
                EXPECT_TRUE (isWhole (oldest));
                std::this_thread::yield();
            }
        });
    threads.emplace_back (
        [&]
        {
            // Identities that may have gone by now: either a code or a whole patch.
            const auto tryToRead = [&] (std::uint64_t id)
            {
                MVPatchAccessorProxy maybe;
                const int result = rig.engine.acquirePatchAccessor (id, &maybe);
                if (result != 1)
                {
                    EXPECT_EQ (result, 12);
                    return;
                }
                EXPECT_TRUE (isWhole (maybe));
                EXPECT_EQ (rig.engine.releasePatchAccessor (id), 1);
                ++racedReads;
            };
            while (! stop.load())
            {
                tryToRead (shell.toldId.load());
                tryToRead (rig.engine.createPatchProxy (rig.part, 0));
                std::this_thread::sleep_for (std::chrono::microseconds (200));
            }
        });

    for (int n = 0; n < numLoads; ++n)
    {
        if (n == numLoads - numFades)
            rig.engine.noteOn (rig.part, 60, 1.0);
        EXPECT_EQ (rig.load (numberedPatch (2 + n % 23)), 1) << n;
    }
    stop = true;
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ (shell.acquired.load(), numLoads);
    EXPECT_GT (reads.load(), 0);
    EXPECT_GT (racedReads.load(), 0);
    int numNodes = 0;
    MVRenderEngine::getNumNodes (oldest, numNodes);
    EXPECT_EQ (numNodes, 2);
    EXPECT_EQ (rig.engine.releasePatchAccessor (firstId), 1);
}

TEST (PatchAccessor, readerOfADestroyedPartReadsOn)
{
    EngineRig rig;
    for (int round = 0; round < 20; ++round)
    {
        const std::uint64_t part = rig.engine.createPart (2);
        const PatchBytes bytes = packed (numberedPatch (8));
        rig.engine.postPatchLoad (bytes.data(), static_cast<int> (bytes.size()), part, 0.0);
        ASSERT_TRUE (rig.waitForLoads());
        MVPatchAccessorProxy accessor;
        ASSERT_EQ (rig.engine.acquirePatchAccessor (rig.engine.createPatchProxy (part, 0), &accessor), 1);

        std::atomic<bool> gone { false };
        std::thread reader (
            [&]
            {
                bool last = false;
                do
                {
                    last = gone.load();
                    EXPECT_TRUE (isWhole (accessor));
                } while (! last);
            });
        ASSERT_EQ (rig.engine.destroyPart (part), 6);
        while (rig.engine.createPatchProxy (part, 0) != 0)
            std::this_thread::yield();
        EXPECT_EQ (rig.engine.releasePatchAccessor (accessor.proxyId), 1);
        gone = true;
        reader.join();
    }
}

} // namespace morvanelab::test
