// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/EngineRig.h"
#include "support/AllocationWatch.h"
#include "support/TestRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <thread>

namespace morvanelab::test
{

namespace
{

using Clock = std::chrono::steady_clock;

double secondsSince (Clock::time_point start) { return std::chrono::duration<double> (Clock::now() - start).count(); }

/** Upward crossings of zero in a second of the first channel. */
int pitchOf (EngineRig& rig)
{
    const auto sound = rig.render (44100);
    int crossings = 0;
    for (std::size_t i = 1; i < 44100; ++i)
        if (sound[i - 1] < 0.0f && sound[i] >= 0.0f)
            ++crossings;
    return crossings;
}

} // namespace

TEST (EngineLoad, soundingPatchGivesWayToTheNewOneWithoutAStep)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (300.0)), 1);
    rig.engine.setPreCompressionVolume (rig.part, 0.25);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.render (22050);

    int calls = 0;
    rig.engine.addPatchListener (
        rig.part, [] (void* count, std::int64_t, std::uint64_t, std::uint64_t) { ++*static_cast<int*> (count); },
        &calls);
    ASSERT_EQ (rig.post (packed (sinePatch (500.0))), 6);

    std::vector<float> sound;
    const auto start = Clock::now();
    while (rig.engine.isPatchLoadPending() && secondsSince (start) < 20.0)
    {
        const auto block = rig.render (256);
        sound.insert (sound.end(), block.begin(), block.begin() + 256);
        std::this_thread::sleep_for (std::chrono::microseconds (500));
    }

    EXPECT_EQ (rig.results.back(), 1);
    EXPECT_EQ (rig.messages.back(), "");
    EXPECT_EQ (calls, 1);
    EXPECT_NEAR (pitchOf (rig), 500, 3);

    // 300 Hz at a quarter of full level moves by less than 0.012 a sample, and 500 Hz at full level, which is how the
    // new patch comes in while the last blocks are rendered, by 0.072; a hard cut would step by up to 0.25 and more.
    for (std::size_t i = 1; i < sound.size(); ++i)
        ASSERT_LT (std::fabs (sound[i] - sound[i - 1]), 0.085f) << i;
}

TEST (EngineLoad, failedLoadTellsWhyAndTheOldPatchPlaysOn)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (300.0)), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);

    PatchBuilder unknown;
    unknown.node (0xA7FFFF);
    const auto foreign = packed (sinePatch (500.0));
    const auto wrongRoot = sinePatch (500.0).tree (fourCC ("ptcx"))->packToBlock (true);

    struct Row
    {
        PatchBytes bytes;
        int result;
        const char* message;
    };

    const Row rows[] {
        { packed (unknown), 9, "Error:  Patch loading error - no operator instance." },
        { { wrongRoot->flatBytes(), wrongRoot->flatBytes() + wrongRoot->getUsed() },
          9,
          "Error:  Not a well-formed patch." },
        { { foreign.begin(), foreign.begin() + static_cast<std::ptrdiff_t> (foreign.size() / 2) },
          9,
          "Error:  Invalid patch data." },
        { { 1, 2, 3 }, 9, "Error:  Invalid patch data." },
    };

    for (const Row& row : rows)
    {
        EXPECT_EQ (rig.load (row.bytes), row.result);
        EXPECT_EQ (rig.messages.back(), row.message);
        EXPECT_EQ (rig.engine.lastLoadError(), row.message);
    }

    EXPECT_NEAR (pitchOf (rig), 300, 3);
    EXPECT_EQ (rig.load (sinePatch (500.0)), 1);
    EXPECT_EQ (rig.engine.lastLoadError(), "");
    EXPECT_NEAR (pitchOf (rig), 500, 3);
}

TEST (EngineLoad, everyPostIsAnsweredAndTheNewestWins)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (100.0)), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.render (256);
    rig.results.clear();

    // No block is rendered, so the first fade cannot end and all that follows has to wait.
    constexpr int posts = 400;
    for (int i = 1; i <= posts; ++i)
        ASSERT_EQ (rig.post (packed (sinePatch (100.0 + i))), 6) << i;

    ASSERT_TRUE (rig.waitForLoads());
    ASSERT_EQ (rig.results.size(), static_cast<std::size_t> (posts));
    EXPECT_EQ (rig.results.back(), 1);
    EXPECT_GT (std::count (rig.results.begin(), rig.results.end(), 6), posts / 2);
    EXPECT_EQ (std::count (rig.results.begin(), rig.results.end(), 1)
                   + std::count (rig.results.begin(), rig.results.end(), 6),
               posts);
    EXPECT_NEAR (pitchOf (rig), 500, 3);
}

TEST (EngineLoad, layersDoNotDriveOneAnotherOut)
{
    EngineRig rig;
    for (int layer = 0; layer < 3; ++layer)
    {
        MVSmartPtr<MVObject> tree = sinePatch (100.0 * (layer + 1)).tree();
        EXPECT_EQ (rig.engine.loadPatchOnLayer (rig.part, layer, tree), 6);
        EXPECT_FALSE (tree);
    }

    ASSERT_TRUE (rig.waitForLoads());
    for (int layer = 0; layer < 3; ++layer)
        EXPECT_TRUE (rig.engine.getPatchData (rig.part, layer)) << layer;

    MVSmartPtr<MVObject> tree = sinePatch (100.0).tree();
    EXPECT_EQ (rig.engine.loadPatchOnLayer (rig.part, 3, tree), 6);
    ASSERT_TRUE (rig.waitForLoads());
    EXPECT_EQ (rig.engine.lastLoadError(), "Error:  Unknown error loading patch.");
}

TEST (EngineLoad, unloadFadesOutFirst)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (300.0)), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.render (22050);
    ASSERT_EQ (rig.engine.postPatchUnload (rig.part, 0, 0.02), 6);
    ASSERT_TRUE (rig.waitForLoads());
    EXPECT_FALSE (rig.engine.getPatchData (rig.part, 0));
    rig.render (44100);
    EXPECT_LT (peakOf (rig.render (256)), 1e-6);
}

TEST (EngineLoad, fullPresetReplacesTheParts)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (300.0)), 1);
    const auto preset = rig.engine.saveFullPreset();
    ASSERT_TRUE (preset);

    ASSERT_EQ (rig.load (sinePatch (500.0)), 1);
    rig.engine.createPart (2);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.render (4096);
    ASSERT_EQ (rig.engine.loadFullPreset (preset->flatBytes(), preset->getUsed(), 0.02), 6);
    ASSERT_TRUE (rig.waitForLoads());

    EXPECT_EQ (rig.engine.getRendererManager().numRenderers(), 1);
    rig.engine.setControlValue (rig.engine.getVolumeControlId (rig.part), 1.0);
    rig.engine.noteOn (rig.part, 60, 1.0);
    EXPECT_NEAR (pitchOf (rig), 300, 3);
}

TEST (EngineLoad, destroyedPartEndsItsLoads)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (300.0)), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.render (256);
    ASSERT_EQ (rig.post (packed (sinePatch (400.0))), 6);
    ASSERT_EQ (rig.post (packed (sinePatch (500.0))), 6);
    ASSERT_EQ (rig.engine.destroyPart (rig.part), 6);
    ASSERT_TRUE (rig.waitForLoads (false));
    EXPECT_EQ (rig.results.size(), 3U);
    EXPECT_EQ (rig.engine.noteOn (rig.part, 60, 1.0), 12);
    EXPECT_EQ (peakOf (rig.render (1024)), 0.0);
}

TEST (EngineLoad, destroyedPartLosesItsMidiMappings)
{
    EngineRig rig;
    const std::uint16_t volume = rig.engine.getVolumeControlId (rig.part);
    ASSERT_EQ (rig.engine.midiMapAddCCToControlValue (volume, 1.0, 0, 7), 1);
    ASSERT_EQ (rig.engine.destroyPart (rig.part), 6);

    const auto gone = [&] { return ! rig.engine.getMidiManager().isControlMappedToValueId (volume, 0, 7); };
    for (int wait = 0; wait < 200 && ! gone(); ++wait)
        std::this_thread::sleep_for (std::chrono::milliseconds (10));
    EXPECT_TRUE (gone());
}

TEST (EngineLoad, offlineBounceIsTheSameEachTime)
{
    auto bounce = []
    {
        EngineRig rig;
        rig.engine.setOffline (true);
        TestRandom random (5);
        std::vector<float> all;

        for (int i = 0; i < 60; ++i)
        {
            if (i % 5 == 0)
                rig.post (packed (sinePatch (100.0 + random.below (2000))));
            if (i % 5 == 1)
                rig.post (packed (keyedPatch()));
            rig.engine.setControlValue (rig.engine.getVolumeControlId (rig.part), random.uniform());
            if (i % 7 == 0)
            {
                // As a host's notes come: a voice that sounds makes a load fade, so the load must be in first.
                rig.engine.waitForPendingWork (5.0);
                rig.engine.noteOn (rig.part, 50 + random.below (30), 0.7);
            }
            if (i % 7 == 4)
                rig.engine.noteOffAll (50 + random.below (30));
            const auto block = rig.render (100 + random.below (900));
            all.insert (all.end(), block.begin(), block.end());
        }
        return all;
    };

    const auto first = bounce();
    EXPECT_GT (peakOf (first), 0.05);
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ (bounce(), first) << i;
}

TEST (EngineLoad, offlineBlockDoesNotWaitForAFadeThatNeedsIt)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (300.0)), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.engine.setOffline (true);

    const auto start = Clock::now();
    for (int i = 0; i < 20; ++i)
    {
        rig.post (packed (sinePatch (400.0 + i)));
        rig.render (100);
        rig.engine.postPatchUnload (rig.part, 1, 0.1);
        rig.render (100);
    }
    EXPECT_LT (secondsSince (start), 4.0);
}

TEST (EngineLoad, tearDownInTheMiddleOfAFadeIsPrompt)
{
    double longest = 0.0;

    for (int i = 0; i < 100; ++i)
    {
        auto rig = std::make_unique<EngineRig> (MVRenderStreamFormat(), 2);
        ASSERT_EQ (rig->load (sinePatch (300.0)), 1);
        rig->engine.noteOn (rig->part, 60, 1.0);
        rig->render (256);
        ASSERT_EQ (rig->post (packed (sinePatch (400.0))), 6);
        ASSERT_EQ (rig->post (packed (sinePatch (500.0))), 6);
        if (i % 2 == 0)
            std::this_thread::sleep_for (std::chrono::milliseconds (i % 10));

        const auto start = Clock::now();
        if (i % 3 == 0)
        {
            rig->engine.setActive (false);
            EXPECT_EQ (rig->results.size(), 3U);
            EXPECT_FALSE (rig->engine.isPatchLoadPending());
        }
        rig.reset();
        longest = std::max (longest, secondsSince (start));
    }

    EXPECT_LT (longest, 1.0);
}

TEST (EngineLoad, engineSwitchedOffInAFadeLoadsAgainAfterwards)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (300.0)), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.render (256);
    rig.post (packed (sinePatch (400.0)));
    std::this_thread::sleep_for (std::chrono::milliseconds (20));
    rig.engine.setActive (false);
    rig.engine.setActive (true);

    ASSERT_EQ (rig.load (sinePatch (500.0)), 1);
    rig.engine.setControlValue (rig.engine.getVolumeControlId (rig.part), 1.0);
    rig.engine.waitForPendingWork (5.0);
    rig.engine.killAllVoices (rig.part);
    rig.engine.noteOn (rig.part, 60, 1.0);
    EXPECT_NEAR (pitchOf (rig), 500, 3);
}

TEST (EngineLoad, blocksTouchNoHeapInSteadyState)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();
    EngineRig rig ({}, 4);
    ASSERT_EQ (rig.load (keyedPatch()), 1);
    std::vector<float> samples (8192);
    void* out[] { samples.data(), samples.data() + 4096 };
    const void* in[] { samples.data(), samples.data() + 4096 };
    const std::uint16_t volume = rig.engine.getVolumeControlId (rig.part);
    int calls = 0;

    for (int round = 0; round < 60; ++round)
    {
        // The first rounds fill the pools.
        const bool counts = round >= 20;
        if (round % 4 == 0)
            rig.engine.noteOn (rig.part, 60 + round % 5, 1.0);
        if (round % 4 == 2)
            rig.engine.noteOff (rig.part, 60 + (round - 2) % 5);

        const std::uint8_t controller[] { 0xB0, 7, 100, 0x90, 60, 90 };
        const AllocationWatch watch;
        int written = 0;
        rig.engine.getMidiManager().processMidiDataBuffer (controller, 6, false);
        rig.engine.getParameterManager().setValue (0, round / 60.0);
        rig.engine.getControlManager().setControlValue (volume, 1.0 - round / 100.0);
        rig.engine.writeInput (in, 2, 1000, written);
        rig.engine.renderBlock (out, 2, 1000, written);
        if (counts)
            calls += watch.count();
    }

    EXPECT_EQ (calls, 0);
}

TEST (EngineLoad, manyThreadsAtOnce)
{
    EngineRig rig;
    rig.load (keyedPatch());
    rig.engine.setOutputPeaksEnabled (rig.part, true);
    rig.engine.setInputLevelsEnabled (true);
    std::atomic<bool> stop { false };
    std::vector<std::thread> threads;

    threads.emplace_back (
        [&]
        {
            TestRandom random (1);
            std::vector<float> samples (4096);
            while (! stop.load())
            {
                const int frames = 1 + random.below (2000);
                void* out[] { samples.data(), samples.data() + 2048 };
                const void* in[] { samples.data(), samples.data() + 2048 };
                const std::uint8_t midi[] { 0xB0, 7, 90, 0x90, 61, 80 };
                int written = 0;
                rig.engine.getMidiManager().processMidiDataBuffer (midi, 6, false);
                rig.engine.writeInput (in, 2, frames, written);
                rig.engine.renderBlock (out, 2, frames, written);
            }
        });
    threads.emplace_back (
        [&]
        {
            TestRandom random (2);
            while (! stop.load())
            {
                rig.engine.noteOn (rig.part, 50 + random.below (20), 0.5);
                rig.engine.noteOffAll (50 + random.below (20));
                rig.engine.setControlValue (rig.engine.getParameterControlId (rig.part, random.below (16)),
                                            random.uniform());
                rig.engine.getParameterManager().setValue (random.below (32), random.uniform());
                rig.engine.takeInputLevel (0);
                double peak = 0.0;
                rig.engine.getOutputPeak (rig.part, 0, &peak);
                std::this_thread::yield();
            }
        });
    threads.emplace_back (
        [&]
        {
            TestRandom random (3);
            MVPatchAccessorProxy accessor;
            while (! stop.load())
            {
                const auto snapshot = rig.engine.createPatchProxy (rig.part, 0);
                if (rig.engine.acquirePatchAccessor (snapshot, &accessor) == 1)
                    rig.engine.releasePatchAccessor (snapshot);
                rig.engine.setCompressorThreshold (rig.part, random.between (0.2, 0.9));
                rig.engine.getPatchData (rig.part, 0);
                rig.engine.getParameterManager().setControl (random.below (32),
                                                             static_cast<std::uint16_t> (random.below (90)));
                const auto other = rig.engine.createPart (2);
                const auto bytes = packed (sinePatch (200.0));
                rig.engine.postPatchLoad (bytes.data(), static_cast<int> (bytes.size()), other, 0.0);
                rig.engine.setPlayMode (other, 1);
                rig.engine.startMonoVoice (other);
                rig.engine.destroyPart (other);
                rig.engine.midiMapAddCCToControlValue (rig.engine.getVolumeControlId (rig.part), 1.0, 0, 7);
                rig.engine.unmapControlId (rig.engine.getVolumeControlId (rig.part));
                std::this_thread::sleep_for (std::chrono::milliseconds (1));
            }
        });

    int answered = 0;
    auto count = [] (void* counter, void*, int, const char*) { ++*static_cast<int*> (counter); };
    const PatchBytes patches[] { packed (sinePatch (300.0)), packed (keyedPatch()), { 1, 2, 3 } };
    int posted = 0;
    for (int i = 0; i < 150; ++i)
    {
        const PatchBytes& bytes = patches[i % 3];
        if (rig.engine.postPatchLoad (bytes.data(), static_cast<int> (bytes.size()), rig.part, 0.01, count, &answered)
            == 6)
            ++posted;
        std::this_thread::sleep_for (std::chrono::milliseconds (2));
    }

    EXPECT_TRUE (rig.waitForLoads (false));
    stop.store (true);
    for (std::thread& thread : threads)
        thread.join();
    rig.engine.setActive (false);
    EXPECT_EQ (answered, posted);
    EXPECT_GT (posted, 0);
}

} // namespace morvanelab::test
