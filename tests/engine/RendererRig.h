// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "VoiceRig.h"

#include "control/MVControlManager.h"
#include "engine/MVPatchRenderer.h"
#include "foundation/MVResult.h"

#include <algorithm>
#include <cmath>

namespace morvanelab::test
{

/** An active and prepared renderer without an event thread: thread messages are served where they are posted. */
class RendererRig
{
public:
    static constexpr int numControls = 97;

    explicit RendererRig (int numVoices = 4, bool plainOutput = true)
    {
        registerForTest (attributes, plainOutput);
        controls.resizeControls (numControls);
        renderer = std::make_unique<MVPatchRenderer> (nullptr, &attributes, &controls, numVoices);
        renderer->setActive (true);
        renderer->prepare (true);
    }

    int load (const MVSmartPtr<MVRiffPacker>& tree, int layer = 0)
    {
        MVSmartPtr<MVObject> data = tree;
        return renderer->loadPatch (layer, data);
    }

    void block()
    {
        const double* ins[] { attributes.silence.data(), attributes.silence.data() };
        double* outs[] { channels[0].data(), channels[1].data() };
        const MVScopedLock audio (attributes.audioLock);
        renderer->render (2, ins, 2, outs, 256, 0);
    }

    void blocks (int count)
    {
        for (int n = 0; n < count; ++n)
            block();
    }

    double peak() const
    {
        double highest = 0.0;
        for (const double sample : channels[0])
            highest = std::max (highest, std::abs (sample));
        return highest;
    }

    MVRenderEngineAttributes attributes;
    MVControlManager controls { nullptr };
    std::unique_ptr<MVPatchRenderer> renderer;
    std::array<std::array<double, 256>, 2> channels {};
};

/** What the DC filter makes of a step from 0 to value, sample by sample; the state carries on. */
class StepThroughDcFilter
{
public:
    double next (double x)
    {
        y = (x + y - before) * 0.9950000047683716;
        before = x;
        return y;
    }

private:
    double y = 0.0;
    double before = 0.0;
};

/** A tone that follows keys and their velocity. */
inline MVSmartPtr<MVRiffPacker> playedTonePatch()
{
    PatchBuilder patch;
    const int key = patch.node (PatchBuilder::midiKeyIn);
    const int tone = patch.node (PatchBuilder::oscillator);
    const int level = patch.node (PatchBuilder::product);
    const int out = patch.node (PatchBuilder::output);
    patch.route (key, 0, tone, 0);
    patch.route (tone, 0, level, 0);
    patch.route (key, 1, level, 1);
    patch.route (level, 0, out, 0);
    return patch.tree();
}

} // namespace morvanelab::test
