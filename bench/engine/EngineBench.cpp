// SPDX-License-Identifier: GPL-3.0-or-later
// What a block of 256 samples costs from one voice up to the engine, and what starting and loading cost. The label is
// the fingerprint of the first blocks: a faster loop must show the same one.
#include "bench/dsp/DspBench.h"
#include "control/MVControlManager.h"
#include "engine/MVPatchRenderer.h"
#include "engine/MVRenderEngine.h"
#include "engine/MVSignalFeed.h"
#include "foundation/MVEventManager.h"
#include "operators/MVOperatorTable.h"
#include "tests/support/PatchBuilder.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace morvanelab::bench
{

namespace
{

using test::PatchBuilder;

constexpr int fingerprintBlocks = 16;

/** Oscillator, constant, product and output. */
MVSmartPtr<MVRiffPacker> voicePatch()
{
    PatchBuilder patch;
    const int level = patch.constantNode (0.5);
    const int frequency = patch.constantNode (441.0);
    const int oscillator = patch.node (PatchBuilder::oscillator);
    const int product = patch.node (PatchBuilder::product);
    const int output = patch.node (PatchBuilder::output);
    patch.route (frequency, 0, oscillator, 0);
    patch.route (oscillator, 0, product, 0);
    patch.route (level, 0, product, 1);
    patch.route (product, 0, output, 0);
    return patch.tree();
}

/** A renderer without an engine, its voices sounding. */
struct RendererRig
{
    RendererRig (int numVoices, int numLayers, int numNotes) : renderer (&events, &attributes, &controls, numVoices)
    {
        registerOperators (attributes);
        controls.resizeControls (97);
        renderer.setActive (true);
        renderer.prepare (true);
        renderer.setPlayMode (MVPatchRenderer::playPoly);

        for (int layer = 0; layer < numLayers; ++layer)
            load (layer);
        for (int layer = 1; layer < numLayers; ++layer)
            renderer.setLayerPlaying (layer, 0, false);
        for (int note = 0; note < numNotes; ++note)
            renderer.noteOn (60 + note, 1.0);
    }

    int load (int layer)
    {
        MVSmartPtr<MVObject> data = patch;
        return renderer.loadPatch (layer, data);
    }

    void render()
    {
        const double* in[] { attributes.silence.data(), attributes.silence.data() };
        double* out[] { left.data(), right.data() };
        renderer.render (2, in, 2, out, blockSize, 0);
    }

    std::string fingerprint()
    {
        Fingerprint print;
        for (int i = 0; i < fingerprintBlocks; ++i)
        {
            render();
            print.add (left);
            print.add (right);
        }
        return print.text();
    }

    MVSmartPtr<MVRiffPacker> patch = voicePatch();
    MVEventManager events;
    MVControlManager controls { nullptr };
    MVRenderEngineAttributes attributes;
    MVPatchRenderer renderer;
    Block left {};
    Block right {};
};

void timeBlocks (benchmark::State& state, RendererRig& rig, int voices)
{
    state.SetLabel (rig.fingerprint());
    for (auto _ : state)
    {
        rig.render();
        benchmark::DoNotOptimize (rig.left.data());
        benchmark::ClobberMemory();
    }
    state.counters["voice_block"] = benchmark::Counter (static_cast<double> (state.iterations()) * voices,
                                                        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void soundingVoices (benchmark::State& state)
{
    const int voices = static_cast<int> (state.range (0));
    RendererRig rig (voices, 1, voices);
    timeBlocks (state, rig, voices);
}
BENCHMARK (soundingVoices)->Arg (1)->Arg (16)->Arg (64);

/** To be held against soundingVoices/1. */
void oneVoiceAmongIdleOnes (benchmark::State& state)
{
    RendererRig rig (static_cast<int> (state.range (0)), 1, 1);
    timeBlocks (state, rig, 1);
}
BENCHMARK (oneVoiceAmongIdleOnes)->Arg (64);

void oneVoiceWithStoppedLayers (benchmark::State& state)
{
    RendererRig rig (1, static_cast<int> (state.range (0)), 0);
    for (int layer = 1; layer < state.range (0); ++layer)
        rig.renderer.setLayerPlaying (layer, 0, false);
    rig.renderer.noteOn (60, 1.0);
    timeBlocks (state, rig, 1);
}
BENCHMARK (oneVoiceWithStoppedLayers)->Arg (1)->Arg (3);

void silentRenderer (benchmark::State& state)
{
    RendererRig rig (64, 1, 0);
    timeBlocks (state, rig, 1);
}
BENCHMARK (silentRenderer);

void patchLoad (benchmark::State& state)
{
    RendererRig rig (static_cast<int> (state.range (0)), 1, 0);
    for (auto _ : state)
        if (rig.load (0) != 1)
            state.SkipWithError ("the patch did not load");
    rig.renderer.noteOn (60, 1.0);
    state.SetLabel (rig.fingerprint());
}
BENCHMARK (patchLoad)->Arg (1)->Arg (16)->Arg (64)->Unit (benchmark::kMicrosecond);

/** The copy of a patch that a window reads; of an operator, as items a second tell. */
void patchSnapshot (benchmark::State& state)
{
    RendererRig rig (1, 1, 0);
    for (auto _ : state)
        benchmark::DoNotOptimize (rig.renderer.createPatchProxy (0));
    state.SetItemsProcessed (state.iterations() * rig.renderer.numNodesInLayer (0));
}
BENCHMARK (patchSnapshot);

/** A block offered to a display that is hidden (0), shown (1), or shown and far behind (2). */
void signalFeed (benchmark::State& state)
{
    MVSignalFeed feed;
    feed.setEnabled (state.range (0) > 0);
    const std::vector<double> block (MVSignalFeed::maxFrames, 0.5);
    for (auto _ : state)
    {
        feed.push (block.data(), MVSignalFeed::maxFrames);
        if (state.range (0) == 1)
            feed.clear();
        benchmark::ClobberMemory();
    }
}
BENCHMARK (signalFeed)->Arg (0)->Arg (1)->Arg (2);

void engineConstruction (benchmark::State& state)
{
    for (auto _ : state)
    {
        auto engine = std::make_unique<MVRenderEngine>();
        benchmark::DoNotOptimize (engine.get());
        state.PauseTiming();
        engine.reset();
        state.ResumeTiming();
    }
}
BENCHMARK (engineConstruction)->Unit (benchmark::kMicrosecond);

/** As a host prepares the plug-in: engine, event thread and a part of 16 voices. */
void engineStart (benchmark::State& state)
{
    for (auto _ : state)
    {
        auto engine = std::make_unique<MVRenderEngine>();
        engine->setActive (true);
        benchmark::DoNotOptimize (engine->createPart (16));
        state.PauseTiming();
        engine.reset();
        state.ResumeTiming();
    }
}
BENCHMARK (engineStart)->Unit (benchmark::kMicrosecond)->Iterations (20);

/** A host block of 512 with 16 voices, through rings and converters. */
void engineBlock (benchmark::State& state)
{
    constexpr int frames = 512;
    MVRenderEngine engine;
    engine.setActive (true);
    const auto part = engine.createPart (16);
    engine.setPlayMode (part, MVPatchRenderer::playPoly);
    engine.setControlValue (engine.getVolumeControlId (part), 1.0);
    const auto bytes = voicePatch()->packToBlock (true);
    engine.postPatchLoad (bytes->flatBytes(), bytes->getUsed(), part, 0.0);
    while (engine.isPatchLoadPending() || ! engine.waitForPendingWork (5.0))
    {
    }
    for (int note = 0; note < 16; ++note)
        engine.noteOn (part, 60 + note, 1.0);

    std::vector<float> samples (2 * frames);
    void* out[] { samples.data(), samples.data() + frames };
    int written = 0;

    Fingerprint print;
    for (int i = 0; i < fingerprintBlocks; ++i)
    {
        engine.renderBlock (out, 2, frames, written);
        const std::vector<double> rendered (samples.begin(), samples.end());
        print.add (rendered);
    }
    state.SetLabel (print.text());

    for (auto _ : state)
    {
        engine.renderBlock (out, 2, frames, written);
        benchmark::ClobberMemory();
    }
}
BENCHMARK (engineBlock);

} // namespace

} // namespace morvanelab::bench
