// SPDX-License-Identifier: GPL-3.0-or-later
// The way of signals from the audio thread to a display, and what else a display asks the engine for.
#include "EngineRig.h"

#include "engine/MVSignalFeed.h"
#include "support/AllocationWatch.h"
#include "support/LockWatch.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <numeric>
#include <thread>
#include <vector>

namespace morvanelab::test
{

namespace
{

using Samples = std::array<double, MVSignalFeed::maxFrames>;

/** Block number n holds the numbers from 256 n on. */
Samples numbered (int n)
{
    Samples block;
    std::iota (block.begin(), block.end(), 256.0 * n);
    return block;
}

void pushNumbered (MVSignalFeed& feed, int n) { feed.push (numbered (n).data(), MVSignalFeed::maxFrames); }

/** Everything that waits in a feed, end to end. */
std::vector<double> drained (MVSignalFeed& feed)
{
    std::vector<double> all;
    Samples block;
    for (int frames = feed.pull (block.data()); frames > 0; frames = feed.pull (block.data()))
        all.insert (all.end(), block.begin(), block.begin() + frames);
    return all;
}

} // namespace

TEST (SignalFeed, switchedOffTakesNothing)
{
    MVSignalFeed feed;
    Samples out {};
    EXPECT_FALSE (feed.isEnabled());
    pushNumbered (feed, 0);
    EXPECT_EQ (feed.numReady(), 0);
    EXPECT_EQ (feed.pull (out.data()), 0);

    feed.setEnabled (true);
    pushNumbered (feed, 1);
    feed.setEnabled (false);
    pushNumbered (feed, 2);
    EXPECT_EQ (feed.numReady(), 1); // what came in before can still be shown

    feed.setEnabled (true);
    EXPECT_EQ (feed.numReady(), 0); // but does not turn up after a pause
    pushNumbered (feed, 3);
    EXPECT_EQ (feed.pull (out.data()), 256);
    EXPECT_EQ (out, numbered (3));
}

TEST (SignalFeed, dropsNewBlocksWhileFull)
{
    MVSignalFeed feed;
    feed.setEnabled (true);
    // From any position in the queue, also across its end.
    for (int start : { 0, 1, 40, 63 })
    {
        for (int n = 0; n < start; ++n)
            pushNumbered (feed, -1);
        feed.clear();
        EXPECT_EQ (feed.numReady(), 0);

        for (int n = 0; n < MVSignalFeed::capacity + 3; ++n)
            pushNumbered (feed, n);
        EXPECT_EQ (feed.numReady(), MVSignalFeed::capacity);

        Samples out {};
        ASSERT_EQ (feed.pull (out.data()), 256);
        EXPECT_EQ (out, numbered (0));
        pushNumbered (feed, 100);
        pushNumbered (feed, 101);
        for (int n = 1; n < MVSignalFeed::capacity; ++n)
        {
            ASSERT_EQ (feed.pull (out.data()), 256);
            ASSERT_EQ (out, numbered (n)) << start;
        }
        ASSERT_EQ (feed.pull (out.data()), 256);
        EXPECT_EQ (out, numbered (100));
        EXPECT_EQ (feed.pull (out.data()), 0);
    }
}

TEST (SignalFeed, keepsTheLengthOfABlock)
{
    MVSignalFeed feed;
    feed.setEnabled (true);
    std::array<double, 400> samples;
    std::iota (samples.begin(), samples.end(), 0.0);
    for (int frames : { 0, -1, 1, 100, 400 })
        feed.push (samples.data(), frames);

    EXPECT_EQ (feed.numReady(), 3);
    Samples out;
    for (int expected : { 1, 100, 256 })
    {
        out.fill (-1.0);
        ASSERT_EQ (feed.pull (out.data()), expected);
        EXPECT_DOUBLE_EQ (out[static_cast<std::size_t> (expected) - 1], expected - 1.0);
        if (expected < 256)
        {
            EXPECT_DOUBLE_EQ (out[static_cast<std::size_t> (expected)], -1.0);
        }
    }
}

TEST (SignalFeed, pushesWithoutHeapOrLock)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();
    MV_SKIP_WITHOUT_LOCK_WATCH();
    MVSignalFeed feed;
    const Samples block = numbered (0);
    const AllocationWatch allocations;
    const LockWatch locks;
    feed.push (block.data(), 256);
    feed.setEnabled (true);
    for (int n = 0; n < MVSignalFeed::capacity + 1; ++n)
        feed.push (block.data(), 256);
    EXPECT_EQ (allocations.count(), 0);
    EXPECT_EQ (locks.count(), 0);
}

TEST (SignalFeed, carriesWholeBlocksInOrderBetweenThreads)
{
    constexpr int numBlocks = 20000;
    MVSignalFeed feed;
    feed.setEnabled (true);
    std::atomic<bool> done { false };
    std::thread producer (
        [&]
        {
            for (int n = 0; n < numBlocks; ++n)
                pushNumbered (feed, n);
            done = true;
        });

    int last = -1;
    int received = 0;
    Samples out;
    for (bool ended = false; ! ended;)
    {
        ended = done.load();
        while (feed.pull (out.data()) == 256)
        {
            const int n = static_cast<int> (out[0]) / 256;
            ASSERT_GT (n, last);
            ASSERT_EQ (out, numbered (n));
            last = n;
            if (++received % 500 == 0)
                feed.clear();
        }
    }
    producer.join();
    EXPECT_GE (received, MVSignalFeed::capacity);
}

// In the engine ---------------------------------------------------------------------------------------------------

TEST (SignalFeed, getsWhatTheHostHears)
{
    // A tone to the right of the middle, so that the channels differ.
    PatchBuilder patch;
    const int frequency = patch.constantNode (300.0);
    const int tone = patch.node (PatchBuilder::oscillator);
    const int place = patch.constantNode (0.8);
    const int output = patch.node (PatchBuilder::output);
    patch.route (frequency, 0, tone, 0);
    patch.route (tone, 0, output, 1);
    patch.route (place, 0, output, 2);

    EngineRig rig;
    ASSERT_EQ (rig.load (patch), 1);
    rig.engine.setControlValue (rig.engine.getVolumeControlId (rig.part), 0.5);
    rig.engine.waitForPendingWork (5.0);
    MVSignalFeed feeds[2];
    ASSERT_EQ (rig.engine.setOutputFeed (0, &feeds[0]), 1);
    ASSERT_EQ (rig.engine.setOutputFeed (1, &feeds[1]), 1);
    EXPECT_EQ (rig.engine.setOutputFeed (-1, &feeds[0]), 13);
    EXPECT_EQ (rig.engine.setOutputFeed (8, &feeds[0]), 13);
    rig.engine.noteOn (rig.part, 60, 1.0);

    // All other channels than the first two are free to have a feed, which then gets nothing.
    EXPECT_EQ (rig.engine.setOutputFeed (7, &feeds[0]), 1);
    rig.engine.setOutputFeed (7, nullptr);

    rig.render (1024);
    EXPECT_EQ (feeds[0].numReady(), 0); // hidden

    for (MVSignalFeed& feed : feeds)
        feed.setEnabled (true);
    const auto heard = rig.render (2048);
    for (std::size_t channel = 0; channel < 2; ++channel)
    {
        const auto shown = drained (feeds[channel]);
        ASSERT_EQ (shown.size(), 2048u);
        for (std::size_t i = 0; i < shown.size(); ++i)
            ASSERT_EQ (static_cast<float> (shown[i]), heard[channel * 2048 + i]) << channel << ' ' << i;
    }
    EXPECT_GT (peakOf ({ heard.begin(), heard.begin() + 2048 }), 0.05);
    EXPECT_GT (peakOf (heard), 1.5 * peakOf ({ heard.begin(), heard.begin() + 2048 }));

    // Blocks of 256 whatever the host asks for.
    for (int n = 0; n < 64; ++n)
        rig.render (100);
    EXPECT_EQ (feeds[1].numReady(), 25);
    drained (feeds[0]);
    drained (feeds[1]);

    rig.engine.setOutputMuted (true);
    rig.render (512);
    for (const double sample : drained (feeds[0]))
        ASSERT_EQ (sample, 0.0);

    rig.engine.setOutputMuted (false);
    drained (feeds[1]);
    rig.engine.setOutputFeed (1, nullptr);
    rig.render (512);
    EXPECT_EQ (feeds[1].numReady(), 0);
    EXPECT_EQ (feeds[0].numReady(), 2);
}

TEST (SignalFeed, mayComeAndGoWhileTheEngineRuns)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (300.0)), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);
    std::atomic<bool> stop { false };
    std::thread audio (
        [&]
        {
            while (! stop.load())
                rig.render (512);
        });

    for (int n = 0; n < 30; ++n)
    {
        MVSignalFeed feed;
        feed.setEnabled (true);
        rig.engine.setOutputFeed (n % 2, &feed);
        Samples out;
        while (feed.pull (out.data()) == 0)
            std::this_thread::yield();
        EXPECT_GE (rig.engine.getActiveVoiceCount (rig.part), 1);
        double peak = 0.0;
        rig.engine.getOutputPeak (rig.part, n % 2, &peak);
        rig.engine.setOutputFeed (n % 2, nullptr);
    }
    stop = true;
    audio.join();
}

TEST (RenderEngine, tellsHowManyVoicesSound)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (keyedPatch()), 1);
    EXPECT_EQ (rig.engine.getActiveVoiceCount (rig.part), 0);
    EXPECT_EQ (rig.engine.getActiveVoiceCount (42), 0);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.engine.noteOn (rig.part, 64, 1.0);
    EXPECT_EQ (rig.engine.getActiveVoiceCount (rig.part), 2);
    rig.engine.killAllVoices (rig.part);
    EXPECT_EQ (rig.engine.getActiveVoiceCount (rig.part), 0);
}

TEST (RenderEngine, metersOfTwoChannelsReadApart)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (throughPatch()), 1);
    rig.engine.setInputLevelsEnabled (true);
    ASSERT_EQ (rig.engine.setOutputPeaksEnabled (rig.part, true), 1);
    rig.engine.startMonoVoice (rig.part);
    rig.engine.noteOn (rig.part, 60, 1.0);

    std::vector<float> loud (2048), soft (2048);
    for (std::size_t i = 0; i < loud.size(); ++i)
    {
        loud[i] = i % 64 < 32 ? 0.5f : -0.5f;
        soft[i] = loud[i] * 0.25f;
    }
    const void* channels[] { loud.data(), soft.data() };
    int written = 0;
    rig.engine.writeInput (channels, 2, 2048, written);
    rig.render (2048);

    EXPECT_NEAR (rig.engine.takeInputLevel (0), 0.5, 1e-6);
    EXPECT_NEAR (rig.engine.takeInputLevel (1), 0.125, 1e-6);
    EXPECT_EQ (rig.engine.takeInputLevel (1), 0.0); // taken
    EXPECT_EQ (rig.engine.takeInputLevel (2), 0.0);

    double left = -1.0;
    double right = -1.0;
    EXPECT_EQ (rig.engine.getOutputPeak (rig.part, 0, &left), 1);
    EXPECT_EQ (rig.engine.getOutputPeak (rig.part, 0, &left), 1);
    EXPECT_GT (left, 0.1);
    EXPECT_EQ (rig.engine.getOutputPeak (rig.part, 1, &right), 1);
    EXPECT_EQ (right, 0.0); // one reading late, whatever was read of the other channel
    EXPECT_EQ (rig.engine.getOutputPeak (rig.part, 1, &right), 1);
    EXPECT_GT (right, 0.1);
    EXPECT_EQ (rig.engine.getOutputPeak (rig.part, 2, &right), 13);
}

TEST (RenderEngine, countsTheNotesThatComeIn)
{
    MVRenderEngine engine;
    MVMidiManager& midi = engine.getMidiManager();
    EXPECT_EQ (midi.getNoteStarts(), 0u);
    const std::uint8_t bytes[] { 0x90, 60, 100, 0x91, 61, 1, 0x90, 60, 0, 0x81, 61, 64, 0xB0, 7, 1 };
    midi.processMidiDataBuffer (bytes, sizeof (bytes), false);
    EXPECT_EQ (midi.getNoteStarts(), 2u);
    EXPECT_EQ (midi.getActiveNotes (0), 0);
    midi.reset();
    EXPECT_EQ (midi.getNoteStarts(), 2u);
}

} // namespace morvanelab::test
