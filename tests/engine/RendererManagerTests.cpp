// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/MVControlManager.h"
#include "engine/EngineRig.h"
#include "engine/MVPatchRenderer.h"
#include "engine/MVRendererManager.h"
#include "foundation/MVChunks.h"
#include "foundation/MVEventManager.h"
#include "operators/MVOperatorTable.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace morvanelab::test
{

namespace
{

/** A manager without an engine or an event thread: the test is the one thread. */
class RendererManager : public testing::Test
{
protected:
    RendererManager()
    {
        registerOperators (attributes);
        events.addThreadCategory (threadCategoryEvent);
        events.setActive (true);
        controls.resizeControls (200);
        events.addHandler (&manager);
        manager.setActive (true);
        manager.prepare (true);
    }

    static MVSmartPtr<MVRiffPacker> tone (double hz) { return sinePatch (hz).tree(); }

    int load (std::uint64_t id, const MVSmartPtr<MVRiffPacker>& tree, int layer = 0)
    {
        MVSmartPtr<MVObject> data = tree;
        return manager.loadPatch (id, layer, data);
    }

    double peakOfBlocks (int count)
    {
        double peak = 0.0;
        const std::array<const double*, 8> in { attributes.silence.data(), attributes.silence.data() };
        const std::array<double*, 2> out { left.data(), right.data() };

        for (int i = 0; i < count; ++i)
        {
            manager.render (2, in.data(), 2, out.data(), 256, 0);
            for (const double sample : left)
                peak = std::max (peak, std::fabs (sample));
        }
        return peak;
    }

    /** Sets the version of a full preset to 1.minor.revision. */
    static MVSmartPtr<MVRiffPacker> withVersion (const MVRiffPacker& preset, std::uint32_t minor,
                                                 std::uint32_t revision)
    {
        auto changed = makeSmart<MVRiffPacker> (preset.getChunkId());
        const std::uint32_t version[] { 1, minor, revision, 1 };
        changed->addChild (makeSmart<MVRiffPacker> (fourCC ("ver "), version, 16));
        for (int i = 0; i < preset.childCount(); ++i)
            if (preset.childAt (i)->getChunkId() != fourCC ("ver "))
                changed->addChild (makeSmart<MVRiffPacker> (*preset.childAt (i)));
        return changed;
    }

    MVEventManager events;
    MVControlManager controls { &events };
    MVRenderEngineAttributes attributes;
    MVRendererManager manager { &events, &attributes, &controls };
    std::array<double, 256> left {};
    std::array<double, 256> right {};
};

} // namespace

TEST_F (RendererManager, freedSlotIsFilledByTheNextRenderer)
{
    int changes = 0;
    manager.addListener ([] (void* count, std::int64_t, std::uint64_t, std::uint64_t) { ++*static_cast<int*> (count); },
                         &changes);
    const auto a = manager.createRenderer (0, 1, false, 0, true);
    const auto b = manager.createRenderer (0, 1, false, 77, true);
    const auto c = manager.createRenderer (0, 1, false, 77, false);
    EXPECT_EQ (b, 77U);
    EXPECT_NE (c, 77U);
    EXPECT_EQ (changes, 2);

    EXPECT_EQ (manager.destroyRenderer (b, true), 1);
    EXPECT_EQ (manager.destroyRenderer (b, true), 12);
    EXPECT_EQ (manager.numRenderers(), 2);
    EXPECT_EQ (manager.rendererIdAt (1), 0U);
    EXPECT_EQ (manager.rendererIndex (c), 2);

    const auto d = manager.createRenderer (0, 1, false, 0, false);
    EXPECT_EQ (manager.rendererIndex (d), 1);
    EXPECT_EQ (manager.rendererIndex (a), 0);
    EXPECT_EQ (changes, 3);

    while (manager.createRenderer (0, 1, false, 0, false) != 0)
        ASSERT_LE (manager.numRenderers(), 64);
    EXPECT_EQ (manager.numRenderers(), 64);
    manager.destroyAllRenderers();
    EXPECT_EQ (manager.numRenderers(), 0);
    EXPECT_EQ (controls.getAllocatedCount(), 0);
}

TEST_F (RendererManager, mixesEnabledRenderersAndLeavesOutTheOthers)
{
    const auto a = manager.createRenderer (0, 1, false, 0, false);
    const auto b = manager.createRenderer (0, 1, false, 0, false);
    for (const auto id : { a, b })
    {
        ASSERT_EQ (load (id, tone (689.0625)), 1);
        // Well below the limiter's threshold.
        manager.withRenderer (id, [] (MVPatchRenderer& renderer) { renderer.setOutputVolume (0.25); });
        manager.setPlayMode (id, 2);
        controls.setControlValue (manager.getVolumeControlId (id), 1.0);
    }
    controls.processAsyncValues();
    manager.noteOnAll (60, 1.0);
    peakOfBlocks (30);

    // A whole number of periods in a block: the two tones are in phase.
    const double both = peakOfBlocks (2);
    manager.setEnabled (a, false);
    const double one = peakOfBlocks (2);
    EXPECT_GT (one, 0.1);
    EXPECT_NEAR (both, 2.0 * one, 1e-3);

    manager.setOutputMuted (b, true);
    EXPECT_EQ (peakOfBlocks (2), 0.0);
    manager.setOutputMuted (b, false);

    // Half the volume: the ramp takes one block, then the level stands.
    controls.setControlValue (manager.getVolumeControlId (b), 0.5);
    controls.processAsyncValues();
    EXPECT_GT (peakOfBlocks (1), 0.8 * one);
    // The limiter's slow release moves the level a little meanwhile.
    EXPECT_NEAR (peakOfBlocks (2), 0.5 * one, 0.02 * one);

    manager.noteOffAll (60);
    peakOfBlocks (100);
    EXPECT_LT (peakOfBlocks (1), 1e-9);
}

TEST_F (RendererManager, newRendererEntersWithARampFromSilence)
{
    const auto id = manager.createRenderer (0, 1, false, 0, false);
    controls.setControlValue (manager.getVolumeControlId (id), 1.0);
    controls.processAsyncValues();

    // A spike of one host sample, passed straight through, shows the gain at each place of the block.
    ASSERT_EQ (load (id, throughPatch().tree()), 1);
    manager.setPlayMode (id, 2);
    manager.noteOnAll (60, 1.0);

    // Rendered by itself until the voice has risen, so that the mix meets it for the first time.
    std::array<double, 256> block {};
    std::array<double, 256> other {};
    const std::array<const double*, 8> silent { block.data(), block.data() };
    std::array<double*, 8> alone { left.data(), right.data() };
    manager.withRenderer (id,
                          [&] (MVPatchRenderer& renderer)
                          {
                              for (int i = 0; i < 40; ++i)
                                  renderer.render (2, silent.data(), 2, alone.data(), 256, 0);
                          });

    // The limiter of the output operator passes it on 32 samples later, in the middle of the block.
    other[96] = 0.5;
    const std::array<const double*, 8> in { other.data(), other.data() };
    const std::array<double*, 2> out { left.data(), right.data() };
    manager.render (2, in.data(), 2, out.data(), 256, 0);
    const double halfway = left[128];
    for (int i = 0; i < 40; ++i)
        manager.render (2, silent.data(), 2, out.data(), 256, 0);
    manager.render (2, in.data(), 2, out.data(), 256, 0);
    ASSERT_GT (left[128], 0.1);
    EXPECT_NEAR (halfway / left[128], 0.5, 1e-6);
}

TEST_F (RendererManager, fullPresetComesBackWithIdentitiesLayersAndControls)
{
    const auto a = manager.createRenderer (0, 3, true, 0, false);
    const auto b = manager.createRenderer (0, 5, true, 0, false);
    ASSERT_EQ (load (a, tone (100.0), 0), 1);
    ASSERT_EQ (load (a, tone (200.0), 2), 1);
    manager.setPlayMode (b, 3);
    manager.setVolumeControl (a, 150);
    manager.setParameterControl (a, 5, 151);
    manager.setLayerFadeControl (a, 1, 152);
    const int layers = manager.numPatchLayers (a);

    auto saved = manager.saveFullPresetRiff();
    const auto bytes = saved->packToBlock (true);
    EXPECT_EQ (saved->countChildren (fourCC ("rndr")), 2);
    const auto first = saved->findChild (fourCC ("rndr"));
    EXPECT_EQ (first->countChildren (fourCC ("ptch")), layers);
    EXPECT_EQ (childNumber<std::int32_t> (*first, fourCC ("maxp")), 3);
    EXPECT_EQ (first->findChild (fourCC ("vmid"))->getPayloadSize(), 2);
    EXPECT_EQ (first->countChildren (fourCC ("vrid")), 16);
    EXPECT_LE (first->findChild (fourCC ("ptch"), 1)->childCount(), 1);

    manager.removeAllRenderers (false);
    auto read = makeSmart<MVRiffPacker> (bytes->flatBytes(), bytes->getUsed(), true);
    ASSERT_TRUE (read->isWellFormed());
    EXPECT_EQ (manager.loadFullPresetRiff (read), 1);
    EXPECT_FALSE (read);

    EXPECT_EQ (manager.numRenderers(), 2);
    EXPECT_EQ (manager.rendererIndex (a), 0);
    EXPECT_EQ (manager.getPlayMode (b), 3);
    EXPECT_EQ (manager.getVolumeControlId (a), 150);
    EXPECT_EQ (manager.getParameterControlId (a, 5), 151);
    EXPECT_EQ (manager.getLayerFadeControlId (a, 1), 152);
    EXPECT_TRUE (manager.getPatchData (a, 0));
    EXPECT_FALSE (manager.getPatchData (a, 1));
    EXPECT_TRUE (manager.getPatchData (a, 2));
    manager.withRenderer (b, [] (const MVPatchRenderer& renderer) { EXPECT_EQ (renderer.getNumVoices(), 5); });
}

TEST_F (RendererManager, onlyOldPresetsBringTheirControlsAlong)
{
    const auto id = manager.createRenderer (0, 1, true, 0, false);
    manager.setVolumeControl (id, 150);
    const auto saved = manager.saveFullPresetRiff();

    struct Row
    {
        std::uint32_t minor;
        std::uint32_t revision;
        bool restored;
    };

    for (const Row& row : { Row { 4, 0, true }, Row { 3, 9, true }, Row { 4, 1, false }, Row { 5, 0, false } })
    {
        manager.removeAllRenderers (false);
        auto preset = withVersion (*saved, row.minor, row.revision);
        ASSERT_EQ (manager.loadFullPresetRiff (preset), 1);
        EXPECT_EQ (manager.getVolumeControlId (id) == 150, row.restored) << row.minor << '.' << row.revision;
    }

    manager.removeAllRenderers (false);
    auto unversioned = makeSmart<MVRiffPacker> (fourCC ("rndm"));
    unversioned->addChild (makeSmart<MVRiffPacker> (*saved->findChild (fourCC ("rndr"))));
    ASSERT_EQ (manager.loadFullPresetRiff (unversioned), 1);
    EXPECT_NE (manager.getVolumeControlId (id), 150);
}

TEST_F (RendererManager, damagedPresetsLeaveNoRendererBehind)
{
    manager.createRenderer (0, 1, true, 0, false);
    const auto saved = manager.saveFullPresetRiff();

    struct Row
    {
        const char* what;
        int expected;
        void (*damage) (MVRiffPacker& renderer);
    };

    const Row rows[] {
        { "no voices chunk", 14, [] (MVRiffPacker& form) { addChunk (form, fourCC ("subc"), 3); } },
        { "no layers chunk", 14, [] (MVRiffPacker& form) { addChunk (form, fourCC ("maxp"), 3); } },
        { "too many voices", 14,
          [] (MVRiffPacker& form)
          {
              addChunk (form, fourCC ("subc"), 3);
              addChunk (form, fourCC ("maxp"), 2000000000);
          } },
        { "a patch that is none", 9,
          [] (MVRiffPacker& form)
          {
              addChunk (form, fourCC ("subc"), 3);
              addChunk (form, fourCC ("maxp"), 1);
              PatchBuilder broken;
              broken.node (0xA7FFFF);
              form.addChild (broken.tree());
          } },
        { "more patches than layers", 8,
          [] (MVRiffPacker& form)
          {
              addChunk (form, fourCC ("subc"), 3);
              addChunk (form, fourCC ("maxp"), 1);
              for (int i = 0; i < 4; ++i)
                  form.addChild (tone (100.0));
          } },
    };

    for (const Row& row : rows)
    {
        manager.removeAllRenderers (false);
        auto preset = withVersion (*saved, 4, 0);
        auto damaged = makeSmart<MVRiffPacker> (fourCC ("rndr"));
        row.damage (*damaged);
        preset->addChild (damaged);
        EXPECT_EQ (manager.loadFullPresetRiff (preset), row.expected) << row.what;
        EXPECT_EQ (manager.numRenderers(), 0) << row.what;
    }
}

TEST_F (RendererManager, eventsActOnTheirRendererAndIgnoreAnUnknownOne)
{
    const auto a = manager.createRenderer (0, 4, false, 0, false);
    const auto b = manager.createRenderer (0, 4, false, 0, false);
    for (const auto id : { a, b })
    {
        ASSERT_EQ (load (id, tone (100.0)), 1);
        manager.setPlayMode (id, 2);
    }

    auto send = [this] (std::uint32_t type, std::uint64_t id, int number = 0, double value = 0.0)
    {
        MVEvent event;
        event.setType (type);
        event.setId (id);
        event.setIntArg (0, number);
        event.setDoubleArg (0, value);
        return manager.handleEvent (&event);
    };
    auto notes = [this] (std::uint64_t id)
    {
        int count = -1;
        manager.withRenderer (id, [&] (const MVPatchRenderer& renderer) { count = renderer.numActiveParts(); });
        return count;
    };

    EXPECT_EQ (send (eventNoteOn, a, 60, 1.0), 1);
    send (eventNoteOn, a, 61, 1.0);
    send (eventNoteOn, b, 62, 1.0);
    EXPECT_EQ (notes (a), 2);
    EXPECT_EQ (notes (b), 1);
    send (eventKillVoices, a);
    EXPECT_EQ (notes (a), 0);
    EXPECT_EQ (notes (b), 1);
    send (eventKillAllVoices, 0);
    EXPECT_EQ (notes (b), 0);

    send (eventSetPlayMode, b, 1);
    EXPECT_EQ (manager.getPlayMode (b), 1);
    send (eventStartMonoVoice, b);
    EXPECT_EQ (notes (b), 1);
    send (eventAllNotesOff, b);
    EXPECT_EQ (notes (b), 0);

    EXPECT_EQ (send (eventNoteOn, 42, 60, 1.0), 1);
    EXPECT_EQ (send (1234, a), 1);
    EXPECT_EQ (manager.handleEvent (nullptr), 1);
    send (eventDestroyRenderer, a);
    EXPECT_EQ (manager.rendererIndex (a), -1);
    EXPECT_EQ (manager.numRenderers(), 1);
}

TEST_F (RendererManager, presetEventRefusesOtherDataAndWaitsForSilence)
{
    const auto id = manager.createRenderer (0, 2, false, 0, false);
    ASSERT_EQ (load (id, tone (441.0)), 1);
    manager.setPlayMode (id, 2);
    auto preset = manager.saveFullPresetRiff();

    int result = 0;
    auto note = [] (void* where, void*, int code, const char*) { *static_cast<int*> (where) = code; };
    MVEvent event;
    event.setType (eventLoadFullPreset);
    event.setCompletion (note, &result, nullptr);
    auto wrong = makeSmart<MVDataBlock> ("xxxx", 4);
    event.setObjectA (wrong);
    EXPECT_EQ (manager.handleEvent (&event), 1);
    EXPECT_EQ (result, 14);
    EXPECT_EQ (manager.numRenderers(), 1);

    // Three blocks of fade: 3 * 256 / 44100 s.
    manager.noteOn (id, 60, 1.0);
    peakOfBlocks (40);
    MVEvent second;
    second.setType (eventLoadFullPreset);
    second.setCompletion (note, &result, nullptr);
    second.setDoubleArg (0, 2.5 * 256.0 / 44100.0);
    second.setObjectA (preset);
    result = 0;
    for (int block = 0; block < 3; ++block)
    {
        EXPECT_EQ (manager.handleEvent (&second), 3) << block;
        EXPECT_TRUE (manager.isFadeSounding());
        EXPECT_GT (peakOfBlocks (1), 0.0);
    }
    EXPECT_FALSE (manager.isFadeSounding());
    EXPECT_EQ (manager.handleEvent (&second), 1);
    EXPECT_EQ (result, 1);
    EXPECT_EQ (manager.numRenderers(), 1);
    EXPECT_EQ (peakOfBlocks (2), 0.0);
}

} // namespace morvanelab::test
