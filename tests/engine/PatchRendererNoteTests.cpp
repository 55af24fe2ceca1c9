// SPDX-License-Identifier: GPL-3.0-or-later
#include "RendererRig.h"

#include "support/AllocationWatch.h"
#include "support/LockWatch.h"

#include <gtest/gtest.h>

namespace morvanelab::test
{

namespace
{

/** A voice's part in the mix: each sounding voice of a constant patch adds the constant. */
int soundingVoices (RendererRig& rig)
{
    // The first sample of a block follows a step of the input exactly, less the filter's pole.
    rig.renderer->reset();
    rig.block();
    return static_cast<int> (std::lround (rig.channels[0][0] / 0.9950000047683716));
}

} // namespace

TEST (PatchRendererNotes, everyModeStartsAndEndsNotesItsOwnWay)
{
    const struct
    {
        const char* what;
        int mode;
        int afterNoteOn, afterBlock, afterNoteOff, afterTail;
    } cases[] {
        { "mono without its voice", MVPatchRenderer::playMono, 0, 0, 0, 0 },
        { "polyphonic", MVPatchRenderer::playPoly, 1, 1, 1, 0 },
        { "any other number", 77, 1, 1, 1, 0 },
        { "one-shot", MVPatchRenderer::playOneShot, 1, 1, 1, 0 },
    };

    for (const auto& each : cases)
    {
        SCOPED_TRACE (each.what);
        RendererRig rig;
        rig.load (constantPatch (1.0));
        rig.renderer->setPlayMode (each.mode);
        rig.renderer->noteOn (60, 0.5);
        EXPECT_EQ (rig.renderer->numActiveParts(), each.afterNoteOn);
        rig.block();
        EXPECT_EQ (rig.renderer->numActiveParts(), each.afterBlock);
        rig.renderer->noteOff (60);
        EXPECT_EQ (rig.renderer->numActiveParts(), each.afterNoteOff) << "a released note sounds on";
        rig.blocks (PlainOutput::tailBlocks + 2);
        EXPECT_EQ (rig.renderer->numActiveParts(), each.afterTail);
    }
}

TEST (PatchRendererNotes, heldPolyphonicNoteStaysAndOneShotGoesByItself)
{
    for (const int mode : { int { MVPatchRenderer::playPoly }, int { MVPatchRenderer::playOneShot } })
    {
        RendererRig rig;
        rig.load (constantPatch (1.0));
        rig.renderer->setPlayMode (mode);
        rig.renderer->noteOn (60, 1.0);

        // One block at full state, the released tail, and the block that takes the part away.
        int sounding = 0;
        for (; sounding < 20; ++sounding)
        {
            rig.block();
            if (rig.renderer->numActiveParts() == 0)
                break;
        }
        EXPECT_EQ (sounding, mode == MVPatchRenderer::playPoly ? 20 : 1 + PlainOutput::tailBlocks);
    }
}

TEST (PatchRendererNotes, notesBeyondTheVoicesAreDropped)
{
    RendererRig rig (3);
    rig.load (constantPatch (1.0));
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    for (int key = 60; key < 70; ++key)
        rig.renderer->noteOn (key, 1.0);
    EXPECT_EQ (rig.renderer->numActiveParts(), 3);
    EXPECT_EQ (soundingVoices (rig), 3);

    rig.renderer->noteOff (69); // was never started
    rig.blocks (5);
    EXPECT_EQ (rig.renderer->numActiveParts(), 3);
}

TEST (PatchRendererNotes, equalKeysAreReleasedNewestFirst)
{
    RendererRig rig;
    rig.load (constantPatch (1.0));
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    rig.renderer->noteOn (60, 1.0);
    rig.blocks (5);
    rig.renderer->noteOn (60, 1.0);
    rig.renderer->noteOff (60);
    rig.blocks (5);
    EXPECT_EQ (rig.renderer->numActiveParts(), 1);
    rig.renderer->noteOff (60);
    rig.blocks (5);
    EXPECT_EQ (rig.renderer->numActiveParts(), 0);
}

TEST (PatchRendererNotes, aVoiceSoundsAgainAfterItsRelease)
{
    // The real output operator: its envelope has to come back to full for the second note.
    RendererRig rig (1, false);
    rig.load (playedTonePatch());
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);

    double peaks[2] {};
    for (double& peak : peaks)
    {
        rig.renderer->noteOn (69, 1.0);
        rig.blocks (10);
        peak = rig.peak();
        rig.renderer->noteOff (69);
        for (int n = 0; n < 1000 && rig.renderer->numActiveParts() > 0; ++n)
            rig.block();
        ASSERT_EQ (rig.renderer->numActiveParts(), 0);
    }
    EXPECT_GT (peaks[0], 0.1);
    EXPECT_NEAR (peaks[1], peaks[0], 0.05 * peaks[0]);
}

TEST (PatchRendererNotes, monoVoiceNeverStops)
{
    RendererRig rig;
    rig.load (constantPatch (1.0));
    rig.renderer->startMonoVoice();
    rig.renderer->startMonoVoice();
    EXPECT_EQ (rig.renderer->numActiveParts(), 1);

    int key = -1;
    double velocity = -1.0;
    const auto note = [&]
    {
        EXPECT_EQ (rig.renderer->getMonoNote (0, &key, &velocity), resultDone);
        return std::pair (key, velocity);
    };
    EXPECT_EQ (note(), std::pair (0, 0.0));
    rig.renderer->noteOn (60, 0.5);
    rig.renderer->noteOn (64, 0.25);
    EXPECT_EQ (note(), std::pair (64, 0.25));
    rig.renderer->noteOff (60);
    EXPECT_EQ (note(), std::pair (64, 0.25)) << "another key's release changes nothing";
    rig.renderer->noteOff (64);
    EXPECT_EQ (note(), std::pair (0, 0.0));
    rig.blocks (10);
    EXPECT_EQ (rig.renderer->numActiveParts(), 1);

    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    EXPECT_EQ (rig.renderer->numActiveParts(), 0) << "a change of mode ends all notes";
    key = -1;
    rig.renderer->noteOn (60, 1.0);
    EXPECT_EQ (note().first, -1) << "there is no mono note";
}

TEST (PatchRendererNotes, killedVoicesAreAllFreeAgain)
{
    RendererRig rig (3);
    rig.load (constantPatch (1.0));
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    for (int round = 0; round < 10; ++round)
    {
        for (int key = 0; key < 5; ++key)
            rig.renderer->noteOn (key, 1.0);
        EXPECT_EQ (rig.renderer->numActiveParts(), 3);
        EXPECT_EQ (soundingVoices (rig), 3);
        rig.renderer->killAllVoices();
        rig.block();
        EXPECT_EQ (rig.renderer->numActiveParts(), 0);
    }
}

TEST (PatchRendererNotes, stateListenersHearOfStartsAndEnds)
{
    RendererRig rig;
    int calls = 0;
    const auto count = [] (void* context, std::int64_t, std::uint64_t, std::uint64_t)
    { ++*static_cast<int*> (context); };
    rig.renderer->addStateListener (count, &calls);
    rig.renderer->addStateListener (count, &calls);
    rig.load (constantPatch (1.0));
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    calls = 0;

    rig.renderer->noteOn (60, 1.0);
    EXPECT_EQ (calls, 1);
    rig.block();
    EXPECT_EQ (calls, 1);
    rig.renderer->noteOff (60);
    rig.blocks (PlainOutput::tailBlocks + 2);
    EXPECT_EQ (calls, 2);

    rig.renderer->setNotifyEnabled (false);
    rig.renderer->noteOn (60, 1.0);
    EXPECT_EQ (calls, 2);
    rig.renderer->setNotifyEnabled (true);
    rig.renderer->removeStateListener (count, &calls);
    rig.renderer->killAllVoices();
    EXPECT_EQ (calls, 2);
}

TEST (PatchRendererOutput, offsetIsFilteredAndOnlyFirstNotesResetTheFilter)
{
    RendererRig rig;
    rig.load (constantPatch (1.0));
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    rig.renderer->noteOn (60, 1.0);

    StepThroughDcFilter expected;
    for (int n = 0; n < 3; ++n)
    {
        rig.block();
        for (const double sample : rig.channels[1])
            ASSERT_NEAR (sample, expected.next (1.0), 1e-12);
        if (n == 0)
            rig.renderer->noteOn (61, 0.0);
        else
            rig.renderer->noteOff (61);
        if (n == 0)
        {
            rig.block();
            for (const double sample : rig.channels[1])
                ASSERT_NEAR (sample, expected.next (2.0), 1e-12) << "the filter runs on";
            rig.renderer->killAllVoices();
            rig.renderer->noteOn (60, 1.0);
            expected = {};
        }
    }
}

TEST (PatchRendererOutput, peaksAreSeenOneReadLate)
{
    RendererRig rig;
    double peak = -1.0;
    EXPECT_EQ (rig.renderer->getChannelPeak (0, &peak), resultNotEnabled);
    rig.renderer->setPeakMonitoring (true);
    EXPECT_EQ (rig.renderer->getChannelPeak (2, &peak), resultOutOfRange);
    EXPECT_EQ (rig.renderer->getChannelPeak (-1, &peak), resultOutOfRange);
    EXPECT_EQ (rig.renderer->getChannelPeak (0, nullptr), resultBadArgument);

    rig.load (constantPatch (1.0));
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    rig.renderer->noteOn (60, 1.0);
    rig.block();
    const double expected = rig.peak();

    const auto read = [&rig, &peak]
    {
        EXPECT_EQ (rig.renderer->getChannelPeak (0, &peak), resultDone);
        return peak;
    };
    EXPECT_EQ (read(), 0.0);
    EXPECT_EQ (read(), expected);
    EXPECT_EQ (read(), expected) << "without a new block the value stays";
    rig.block();
    const double second = rig.peak();
    EXPECT_EQ (read(), expected);
    EXPECT_EQ (read(), second);
}

TEST (PatchRendererOutput, tapsSeeTheFinishedBlockOfTheirChannel)
{
    struct Seen
    {
        int calls = 0;
        int bytes = 0;
        double first = 0.0;
        std::uint64_t id = 0;
    } seen;
    const auto tap = [] (void* context, std::uint64_t id, const double* samples, int bytes)
    {
        auto& target = *static_cast<Seen*> (context);
        ++target.calls;
        target.bytes = bytes;
        target.first = samples[0];
        target.id = id;
    };

    RendererRig rig;
    EXPECT_FALSE (rig.renderer->addChannelTap (8, tap, &seen));
    EXPECT_TRUE (rig.renderer->addChannelTap (1, tap, &seen));
    EXPECT_FALSE (rig.renderer->addChannelTap (1, tap, &seen));
    rig.load (constantPatch (1.0));
    rig.renderer->startMonoVoice();
    rig.block();
    EXPECT_EQ (seen.calls, 1);
    EXPECT_EQ (seen.bytes, 2048);
    EXPECT_EQ (seen.first, rig.channels[1][0]);
    EXPECT_EQ (seen.id, rig.renderer->getId());

    EXPECT_TRUE (rig.renderer->removeChannelTap (1, tap, &seen));
    EXPECT_FALSE (rig.renderer->removeChannelTap (1, tap, &seen));
    rig.block();
    EXPECT_EQ (seen.calls, 1);
}

TEST (PatchRendererOutput, blocksNotesAndReapingTouchNeitherHeapNorLocks)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();
    RendererRig rig (8, false);
    rig.load (playedTonePatch());
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    rig.renderer->setPeakMonitoring (true);

    // Once through everything, so that message queues have their size.
    const auto phrase = [&rig]
    {
        for (int key = 60; key < 70; ++key)
            rig.renderer->noteOn (key, 0.5);
        rig.block();
        for (int key = 60; key < 70; ++key)
            rig.renderer->noteOff (key);
        for (int n = 0; n < 100; ++n)
            rig.block();
    };
    phrase();
    ASSERT_EQ (rig.renderer->numActiveParts(), 0);

    const AllocationWatch heap;
    phrase();
    EXPECT_EQ (heap.count(), 0);
    EXPECT_EQ (rig.renderer->numActiveParts(), 0);

    rig.renderer->noteOn (60, 0.5);
    const LockWatch locks { &rig.attributes.audioLock };
    rig.blocks (10);
    EXPECT_EQ (locks.count(), 0);
}

} // namespace morvanelab::test
