// SPDX-License-Identifier: GPL-3.0-or-later
#include "RendererRig.h"

#include "foundation/MVException.h"
#include "support/TestRandom.h"

#include <gtest/gtest.h>

#include <thread>

namespace morvanelab::test
{

namespace
{

/** Renders until the transition has ended; the number of blocks it took, or -1. */
int finishTransition (RendererRig& rig)
{
    for (int n = 0; n < 50; ++n)
    {
        if (rig.renderer->advanceTransition (1, true) != resultUnderWay)
            return n;
        rig.block();
    }
    return -1;
}

/** A sine of a steady pitch and height, whatever the keys do. */
MVSmartPtr<MVRiffPacker> sinePatch (double hertz, double level)
{
    PatchBuilder patch;
    const int pitch = patch.constantNode (hertz);
    const int tone = patch.node (PatchBuilder::oscillator);
    const int height = patch.constantNode (level);
    const int mix = patch.node (PatchBuilder::product);
    const int out = patch.node (PatchBuilder::output);
    patch.route (pitch, 0, tone, 0);
    patch.route (tone, 0, mix, 0);
    patch.route (height, 0, mix, 1);
    patch.route (mix, 0, out, 0);
    return patch.tree();
}

MVSmartPtr<MVObject> damagedData()
{
    const auto tree = constantPatch (1.0);
    std::vector<std::uint8_t> bytes (static_cast<std::size_t> (tree->packedSize()));
    tree->pack (bytes.data(), true);
    bytes[30] ^= 1;
    return makeSmart<MVDataBlock> (bytes.data(), static_cast<int> (bytes.size()));
}

/** Routers with all outputs reached: nodes * 16 buffers of 4096 bytes a voice. */
MVSmartPtr<MVRiffPacker> largePatch (int routers)
{
    PatchBuilder patch;
    const int out = patch.node (PatchBuilder::output);
    int last = out;
    for (int i = 0; i < routers; ++i)
    {
        const int router = patch.node (0xA70018);
        patch.route (router, 0, last, 0);
        last = router;
    }
    return patch.tree();
}

} // namespace

TEST (PatchRendererLoad, silentInstrumentChangesAtOnce)
{
    RendererRig rig;
    EXPECT_EQ (rig.load (constantPatch (1.0)), resultDone);
    EXPECT_TRUE (rig.renderer->isLayerLoaded (0));
    EXPECT_TRUE (rig.renderer->isLayerPlaying (0));
    EXPECT_FALSE (rig.renderer->isTransitionRunning());
    EXPECT_EQ (rig.renderer->advanceTransition (1, true), resultNotEnabled);
    EXPECT_EQ (rig.renderer->numNodesInLayer (0), 2);
    EXPECT_EQ (rig.renderer->numNodesInLayer (3), 0) << "the scratch layer is empty again";
    EXPECT_EQ (rig.renderer->countLoadedLayers(), 1);
    EXPECT_EQ (rig.renderer->numPatchLayers(), 3);
}

TEST (PatchRendererLoad, layersOutOfRangeAreRefused)
{
    RendererRig rig;
    for (const int layer : { 3, 4, -1 })
        EXPECT_EQ (rig.load (constantPatch (1.0), layer), resultLayerOutOfRange);
    EXPECT_EQ (rig.renderer->unloadPatch (4, true), resultLayerOutOfRange);
}

TEST (PatchRendererLoad, soundingInstrumentCrossfadesOverOneBlock)
{
    RendererRig rig;
    rig.load (constantPatch (1.0));
    rig.renderer->startMonoVoice();
    rig.block();
    StepThroughDcFilter filter;
    for (int i = 0; i < 256; ++i)
        filter.next (1.0);

    EXPECT_EQ (rig.load (constantPatch (3.0)), resultUnderWay);
    EXPECT_EQ (rig.load (constantPatch (5.0)), resultTransitionRunning);
    EXPECT_EQ (rig.renderer->advanceTransition (1, true), resultUnderWay);
    EXPECT_EQ (rig.renderer->unloadPatch (0, true), resultBusy);

    rig.block();
    for (int i = 0; i < 256; ++i)
        ASSERT_NEAR (rig.channels[0][static_cast<std::size_t> (i)], filter.next (3.0 + 1.0 - i / 256.0), 1e-9) << i;
    EXPECT_EQ (rig.renderer->advanceTransition (1, true), resultDone);

    rig.block();
    for (const double sample : rig.channels[0])
        ASSERT_NEAR (sample, filter.next (3.0), 1e-9);
}

TEST (PatchRendererLoad, disabledRendererDoesNotFade)
{
    RendererRig rig;
    rig.load (constantPatch (1.0));
    rig.renderer->startMonoVoice();
    rig.block();
    rig.renderer->setEnabled (false);
    EXPECT_EQ (rig.load (constantPatch (3.0)), resultDone);

    // Switched off in the middle of a fade it is no longer rendered, and the fade must not wait for blocks.
    rig.renderer->setEnabled (true);
    EXPECT_EQ (rig.load (constantPatch (1.0)), resultUnderWay);
    rig.renderer->setEnabled (false);
    EXPECT_EQ (rig.renderer->advanceTransition (1, true), resultDone);
}

TEST (PatchRendererLoad, fadeEndsWhateverBecomesOfTheNotes)
{
    enum End
    {
        held,
        released,
        killed,
        reset,
        newNotes
    };

    for (const End end : { held, released, killed, reset, newNotes })
    {
        SCOPED_TRACE (end);
        RendererRig rig;
        rig.load (constantPatch (1.0));
        rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
        rig.renderer->noteOn (60, 1.0);
        rig.renderer->noteOn (61, 1.0);
        rig.block();
        rig.renderer->noteOff (61);
        rig.blocks (2);
        ASSERT_EQ (rig.load (constantPatch (2.0)), resultUnderWay);

        if (end == released)
            rig.renderer->noteOff (60);
        else if (end == killed)
            rig.renderer->killAllVoices();
        else if (end == reset)
            rig.renderer->reset();
        else if (end == newNotes)
            for (int key = 70; key < 80; ++key)
                rig.renderer->noteOn (key, 1.0);

        EXPECT_GE (finishTransition (rig), 0);
        EXPECT_EQ (rig.load (constantPatch (3.0)) != resultTransitionRunning, true);
    }
}

TEST (PatchRendererLoad, failedLoadLeavesTheOldPatchPlayingUntouched)
{
    PatchBuilder unknown;
    unknown.node (PatchBuilder::output);
    unknown.node (0xA7000A); // the layer is half filled when this one fails
    const auto broken = unknown.tree();
    const auto empty = makeSmart<MVRiffPacker> (fourCC ("ptch"));

    RendererRig rig;
    rig.load (constantPatch (1.0));
    rig.renderer->startMonoVoice();
    rig.block();
    StepThroughDcFilter filter;
    for (int i = 0; i < 256; ++i)
        filter.next (1.0);

    MVSmartPtr<MVObject> none;
    MVSmartPtr<MVObject> damaged = damagedData();
    MVSmartPtr<MVObject> bad = broken;
    MVSmartPtr<MVObject> noPatch = empty;
    MVSmartPtr<MVObject> otherClass = makeSmart<MVNetRoute>();
    EXPECT_EQ (rig.renderer->loadPatch (0, none), resultEmptyData);
    EXPECT_EQ (rig.renderer->loadPatch (0, damaged), resultFailed);
    EXPECT_EQ (rig.renderer->loadPatch (0, noPatch), resultFailed);
    EXPECT_EQ (rig.renderer->loadPatch (0, otherClass), resultFailed);
    EXPECT_THROW (rig.renderer->loadPatch (0, bad), MVException);

    EXPECT_FALSE (rig.renderer->isTransitionRunning());
    EXPECT_EQ (rig.renderer->numNodesInLayer (3), 0);
    for (int n = 0; n < 3; ++n)
    {
        rig.block();
        for (const double sample : rig.channels[0])
            ASSERT_NEAR (sample, filter.next (1.0), 1e-12) << "no fade, no gap";
    }
    EXPECT_EQ (rig.load (constantPatch (2.0)), resultUnderWay) << "the next load finds everything in order";
}

TEST (PatchRendererLoad, patchLargerThanTheBoundIsRefused)
{
    // A router takes 16 * 4096 + 4096 bytes a voice: of 16 voices 512 MiB hold 481 of them, not 482.
    RendererRig rig (16);
    rig.load (constantPatch (1.0));
    EXPECT_EQ (rig.load (largePatch (482)), resultNoResources);
    EXPECT_EQ (rig.renderer->numNodesInLayer (0), 2);
    EXPECT_EQ (rig.load (largePatch (400)), resultDone);
    EXPECT_EQ (rig.load (largePatch (100), 1), resultNoResources) << "all layers count";
}

TEST (PatchRendererLoad, layersSoundTogetherAndUnloadSeparately)
{
    RendererRig rig;
    rig.load (constantPatch (1.0), 0);
    rig.load (constantPatch (2.0), 1);
    rig.renderer->startMonoVoice();
    rig.block();
    EXPECT_EQ (rig.renderer->unloadPatch (1, true), resultLayerInUse);
    EXPECT_EQ (rig.renderer->unloadPatch (-1, true), resultLayerInUse);

    rig.renderer->setLayerPlaying (1, 2, false);
    EXPECT_TRUE (rig.renderer->isLayerPlaying (1));
    rig.blocks (2);
    EXPECT_FALSE (rig.renderer->isLayerPlaying (1)) << "voices that do not sound have stopped as well";
    EXPECT_EQ (rig.renderer->unloadPatch (1, true), resultDone);
    EXPECT_EQ (rig.renderer->countLoadedLayers(), 1);
    EXPECT_TRUE (rig.renderer->isLayerPlaying (0));

    rig.renderer->killAllVoices();
    EXPECT_EQ (rig.renderer->unloadPatch (-1, true), resultDone) << "a silent instrument is emptied at once";
    EXPECT_EQ (rig.renderer->countLoadedLayers(), 0);
}

TEST (PatchRendererLoad, noteThatEndsDuringAnUnloadDoesNotStartTheLayerForGood)
{
    RendererRig rig;
    rig.load (constantPatch (1.0));
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    rig.renderer->noteOn (60, 1.0);
    rig.renderer->noteOn (61, 1.0);
    rig.renderer->noteOff (61);

    int result = resultLayerInUse;
    for (int n = 0; n < 20 && result == resultLayerInUse; ++n)
    {
        result = rig.renderer->unloadPatch (0, false);
        if (result == resultLayerInUse)
            rig.renderer->setLayerPlaying (0, 4, false);
        rig.block();
    }
    EXPECT_EQ (result, resultDone);
}

TEST (PatchRendererLoad, listenersHearOfTheirLayer)
{
    struct Heard
    {
        int calls = 0;
        std::int64_t layer = -1;
    } any, second;
    const auto listener = [] (void* context, std::int64_t layer, std::uint64_t, std::uint64_t)
    {
        ++static_cast<Heard*> (context)->calls;
        static_cast<Heard*> (context)->layer = layer;
    };

    RendererRig rig;
    rig.renderer->addPatchListener (listener, &any);
    rig.renderer->addPatchListener (listener, &second, 1);
    rig.load (constantPatch (1.0), 0);
    rig.load (constantPatch (1.0), 1);
    MVSmartPtr<MVObject> damaged = damagedData();
    rig.renderer->loadPatch (1, damaged);
    EXPECT_EQ (any.calls, 2);
    EXPECT_EQ (second.calls, 1);
    EXPECT_EQ (second.layer, 1);
    rig.renderer->removePatchListener (listener, &any);
    rig.renderer->unloadPatch (1, true);
    EXPECT_EQ (any.calls, 2);
    EXPECT_EQ (second.calls, 2);
}

TEST (PatchRendererLoad, onlyTheThreadThatBeganDrivesATransition)
{
    RendererRig rig;
    rig.load (constantPatch (1.0));
    rig.renderer->startMonoVoice();
    rig.block();
    ASSERT_EQ (rig.load (constantPatch (2.0)), resultUnderWay);

    std::thread other (
        [&rig]
        {
            EXPECT_EQ (rig.renderer->advanceTransition (1, true), resultBusy);
            EXPECT_EQ (rig.load (constantPatch (3.0)), resultTransitionRunning);
            EXPECT_EQ (rig.renderer->unloadPatch (0, true), resultBusy);
        });
    other.join();
    EXPECT_TRUE (rig.renderer->isTransitionRunning());
    EXPECT_GE (finishTransition (rig), 0);
}

TEST (PatchRendererLoad, transitionOfAThreadThatIsGoneEndsWithTheNextPreparation)
{
    RendererRig rig;
    rig.load (constantPatch (1.0));
    rig.renderer->startMonoVoice();
    rig.block();
    std::thread loader ([&rig] { EXPECT_EQ (rig.load (constantPatch (2.0)), resultUnderWay); });
    loader.join();

    rig.renderer->prepare (false);
    rig.renderer->setActive (false);
    rig.renderer->setActive (true);
    rig.renderer->prepare (true);
    EXPECT_FALSE (rig.renderer->isTransitionRunning());
    EXPECT_EQ (rig.renderer->numNodesInLayer (3), 0);
    rig.block();
    EXPECT_GT (rig.peak(), 0.0) << "the new patch plays on";
    EXPECT_EQ (rig.load (constantPatch (3.0)), resultUnderWay);

    // And a renderer may go while a fade runs.
    rig.renderer.reset();
}

TEST (PatchRendererControls, identifiersAreTakenNamedAndGivenBack)
{
    RendererRig rig;
    MVPatchRenderer& renderer = *rig.renderer;
    EXPECT_EQ (rig.controls.getAllocatedCount(), 3 + 16 + 4);
    EXPECT_EQ (renderer.getPitchControlId(), 1);
    EXPECT_EQ (renderer.getVolumeControlId(), 2);
    EXPECT_EQ (renderer.getParameterControlId (0), 4);
    EXPECT_EQ (renderer.getParameterControlId (15), 19);
    EXPECT_EQ (renderer.getLayerFadeControlId (0), 20);
    EXPECT_EQ (renderer.getParameterControlId (16), 0);
    EXPECT_EQ (renderer.getLayerFadeControlId (-1), 0);

    const struct
    {
        int id;
        const char* name;
    } names[] {
        { 1, "Pitch" }, { 2, "Volume" }, { 3, "Patch Activator" }, { 19, "Parameter 15" }, { 23, "Layer Fade 3" }
    };
    for (const auto& each : names)
    {
        MVControlValue* const value = rig.controls.acquireControl (each.id);
        EXPECT_EQ (value->getName(), each.name);
        rig.controls.releaseControl (each.id);
    }

    renderer.setParameterControl (2, 50);
    EXPECT_EQ (renderer.getParameterControlId (2), 50);
    EXPECT_FALSE (rig.controls.controlExists (6)) << "the one before is given back";
    renderer.setParameterControl (2, 50);
    renderer.setVolumeControl (51);
    EXPECT_EQ (renderer.getVolumeControl(), rig.controls.acquireControl (51));
    rig.controls.releaseControl (51);
    renderer.setLayerFadeControl (1, 9999);
    EXPECT_EQ (renderer.getLayerFadeControlId (1), 0) << "unknown to the manager";
    renderer.setParameterControl (16, 52);

    renderer.setActive (false);
    EXPECT_EQ (rig.controls.getAllocatedCount(), 0);
    EXPECT_EQ (renderer.getVolumeControl(), nullptr);
}

TEST (PatchRendererControls, useAndNamesOfThePresentPatch)
{
    PatchBuilder patch;
    const int out = patch.node (PatchBuilder::output);
    patch.node (PatchBuilder::midiKeyIn);
    patch.inputEntry (out, 1, 1.0, 7);

    RendererRig rig (4, false);
    rig.load (patch.tree());
    EXPECT_TRUE (rig.renderer->isParameterInUse (7));
    EXPECT_FALSE (rig.renderer->isParameterInUse (6));
    EXPECT_FALSE (rig.renderer->isParameterInUse (16));
    EXPECT_FALSE (rig.renderer->isParameterInUse (-1));
    EXPECT_EQ (rig.renderer->getPatchData (0)->countChildren (fourCC ("op  ")), 2);
    rig.renderer->setId (12);
    EXPECT_STREQ (rig.renderer->getLayerName (2)->text(), "Sub patch 12 - Layer 2");

    rig.load (constantPatch (1.0));
    EXPECT_FALSE (rig.renderer->isParameterInUse (7));
}

TEST (PatchRendererStress, thousandChangesUnderHeldNotesStayFreeOfClicks)
{
    // Sines of at most 200 Hz and 0.2: a step of a held voice is below 0.2 * 2 pi * 200 / 44100, or 0.0057. In a change
    // the new sine starts at its beginning and the old one fades over a block (0.2 / 256 more). Three voices.
    constexpr double ownStep = 0.2 * 6.2832 * 200.0 / 44100.0;
    constexpr double bound = 3.0 * (2.0 * ownStep + 0.2 / 256.0) * 1.1;

    RendererRig rig (4, false);
    TestRandom random (7);
    rig.load (sinePatch (100.0, 0.2));
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    for (const int key : { 60, 64, 67 })
        rig.renderer->noteOn (key, 1.0);
    rig.blocks (20);

    double last = rig.channels[0][255];
    double worst = 0.0;
    const auto listen = [&]
    {
        rig.block();
        for (const double sample : rig.channels[0])
        {
            worst = std::max (worst, std::abs (sample - last));
            last = sample;
        }
    };

    for (int change = 0; change < 1000; ++change)
    {
        int result = rig.load (sinePatch (random.between (50.0, 200.0), random.between (0.05, 0.2)));
        ASSERT_EQ (result, resultUnderWay) << change;
        for (int n = 0; result == resultUnderWay; ++n)
        {
            ASSERT_LT (n, 3) << "the fade does not end";
            listen();
            result = rig.renderer->advanceTransition (1, true);
        }
        ASSERT_EQ (result, resultDone);
        for (int n = random.below (4); n > 0; --n)
            listen();
    }

    EXPECT_LT (worst, bound);
    EXPECT_EQ (rig.renderer->numActiveParts(), 3);
    EXPECT_EQ (rig.renderer->numNodesInLayer (3), 0);
}

TEST (PatchRendererStress, loadsNotesAndBlocksOfThreeThreads)
{
    RendererRig rig (4, false);
    rig.renderer->setPlayMode (MVPatchRenderer::playPoly);
    std::atomic<bool> stop { false };

    std::thread audio (
        [&]
        {
            while (! stop)
                rig.block();
        });
    std::thread player (
        [&]
        {
            TestRandom random (3);
            while (! stop)
            {
                const int key = random.below (8);
                if (random.chance (0.5))
                    rig.renderer->noteOn (key, 0.5);
                else
                    rig.renderer->noteOff (key);
                if (random.chance (0.01))
                    rig.renderer->killAllVoices();
                const std::uint64_t snapshot = rig.renderer->createPatchProxy (random.below (4));
                if (random.chance (0.5) && rig.renderer->acquirePatchProxy (snapshot) != nullptr)
                    rig.renderer->releasePatchProxy (snapshot);
                rig.renderer->isLayerLoaded (0);
                std::this_thread::yield();
            }
        });

    // Thread messages are served at once here, on any of the threads, and hold the transition lock meanwhile.
    TestRandom random (4);
    int done = 0;
    for (int tries = 0; done < 150 && tries < 1000000; ++tries)
    {
        const int layer = random.below (3);
        int result =
            random.chance (0.2) ? rig.renderer->unloadPatch (layer, true) : rig.load (playedTonePatch(), layer);
        if (result == resultLayerInUse)
            rig.renderer->setLayerPlaying (layer, 3, false);
        for (int n = 0; result == resultUnderWay && n < 1000000; ++n)
        {
            std::this_thread::yield();
            result = rig.renderer->advanceTransition (1, true);
        }
        done += result == resultDone ? 1 : 0;
    }
    stop = true;
    audio.join();
    player.join();
    EXPECT_EQ (done, 150);
    EXPECT_FALSE (rig.renderer->isTransitionRunning());
}

} // namespace morvanelab::test
