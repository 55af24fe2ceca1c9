// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/MVPolyPatch.h"
#include "operators/MVOperator.h"
#include "operators/MVOperatorClassFactory.h"
#include "operators/MVOperatorTable.h"
#include "operators/MVRenderEngineAttributes.h"
#include "support/PatchBuilder.h"

#include <array>
#include <vector>

namespace morvanelab::test
{

/** An output operator that adds its first input to every channel as it stands, so that what is heard are the
    numbers in the buffers. It lets its voice end once it was released and has run tailBlocks further blocks. */
class PlainOutput : public MVOperator
{
public:
    static constexpr int tailBlocks = 2;
    static const OperatorSpec spec;

    PlainOutput (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& chunk)
        : MVOperator (spec, renderAttributes, chunk)
    {
    }

    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override
    {
        for (int channel = 0; channel < outputCount; ++channel)
            for (int i = 0; i < frames; ++i)
                outputs[channel][i] += inputs[0][i];
        if (released)
            --blocksLeft;
        MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
    }

    void noteEvent (int, double) override
    {
        released = false;
        blocksLeft = tailBlocks;
    }
    bool isFinished() const override { return released && blocksLeft <= 0; }

private:
    int blocksLeft = tailBlocks;
};

inline constinit const OperatorSpec PlainOutput::spec {
    .typeId = PatchBuilder::output, .className = "MVOpOutput", .numInputs = 5, .attributeSize = 0
};

class PlainOutputFactory final : public MVVirtualOperatorFactory
{
public:
    MVOperator* create (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& chunk) const override
    {
        return new PlainOutput (attributes, chunk);
    }
};

/** Registers all operators; with plainOutput, the output operator is the one above. */
inline void registerForTest (MVRenderEngineAttributes& attributes, bool plainOutput)
{
    registerOperators (attributes);
    if (plainOutput)
        attributes.addOperatorFactory (PatchBuilder::output, std::make_unique<PlainOutputFactory>());
}

/** One active and prepared voice on its own. */
class VoiceRig
{
public:
    explicit VoiceRig (bool plainOutput = true)
    {
        registerForTest (attributes, plainOutput);
        voice = std::make_unique<MVPolyPatch> (&attributes);
        voice->setActive (true);
        voice->prepareBuffers (true);
    }

    /** Parses a tree into a layer; throws as parsing does. */
    void parse (const MVSmartPtr<MVRiffPacker>& tree, int layer = 0)
    {
        MVSmartPtr<MVObject> data = tree;
        voice->loadPatch (data, layer);
    }

    /** Parses, compiles, activates and starts. */
    void play (const MVSmartPtr<MVRiffPacker>& tree, int layer = 0)
    {
        parse (tree, layer);
        if (voice->rootNode (layer) >= 0)
            voice->computeExecutionOrder (layer, voice->rootNode (layer));
        voice->activateLayer (layer);
        voice->setPatchPlaying (layer, 0, true);
    }

    /** One block with a constant on all host inputs; the result is left in channels. */
    void block (double hostInput = 0.0, int frames = 256)
    {
        in.fill (hostInput);
        for (auto& channel : channels)
            channel.fill (0.0);
        const double* ins[] { in.data(), in.data() };
        double* outs[] { channels[0].data(), channels[1].data() };
        voice->render (2, ins, 2, outs, frames, 0);
    }

    /** First samples of the left channel of successive blocks, with block n's host input n + 1. */
    std::vector<double> listen (int blocks)
    {
        std::vector<double> heard;
        for (int n = 0; n < blocks; ++n)
        {
            block (n + 1.0);
            heard.push_back (channels[0][0]);
        }
        return heard;
    }

    MVRenderEngineAttributes attributes;
    std::unique_ptr<MVPolyPatch> voice;
    std::array<double, 256> in {};
    std::array<std::array<double, 256>, 2> channels {};
};

/** The simplest patch: a constant into the output. */
inline MVSmartPtr<MVRiffPacker> constantPatch (double value)
{
    PatchBuilder patch;
    const int source = patch.constantNode (value);
    const int out = patch.node (PatchBuilder::output);
    patch.route (source, 0, out, 0);
    return patch.tree();
}

} // namespace morvanelab::test
