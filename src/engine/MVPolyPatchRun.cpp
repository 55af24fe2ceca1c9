// SPDX-License-Identifier: GPL-3.0-or-later
// The part of MVPolyPatch that runs: binding of ports to memory, the block, notes and fades.
#include "dsp/MVBlockMath.h"
#include "engine/MVPolyPatch.h"
#include "operators/MVOpInput.h"
#include "operators/MVOpOutput.h"
#include "operators/MVOperator.h"
#include "operators/MVRenderEngineAttributes.h"

#include <algorithm>

namespace morvanelab
{

void MVPolyPatch::bindBuffers (int layer, bool on)
{
    Content& content = layerAt (layer).content;

    for (const Step& step : content.steps)
        for (int ph = 0; ph < 2; ++ph)
        {
            std::fill_n (step.desc->inputPtrs[ph], maxOperatorPorts, nullptr);
            std::fill_n (step.desc->outputPtrs[ph], maxOperatorPorts, nullptr);
        }

    content.steps.clear();
    content.bound.clear();
    if (! on)
        return;

    content.bound = getNetworkInfo (layer);
    MVNetworkInfo& info = *content.bound;

    // The first descriptor of a node is the one that counts as its source.
    std::vector<const MVNodeExecDesc*> byNode (static_cast<std::size_t> (numNodes (layer)));
    for (int i = info.numExecDescs(); --i >= 0;)
        if (const MVNodeExecDesc* const desc = info.execDescAt (i);
            desc->nodeIndex >= 0 && desc->nodeIndex < numNodes (layer))
            byNode[static_cast<std::size_t> (desc->nodeIndex)] = desc;

    for (int i = 0; i < info.numExecDescs(); ++i)
    {
        auto* const desc = dynamic_cast<MVOpExecDesc*> (info.execDescAt (i));
        MVOperator* const op = desc != nullptr ? operatorAt (layer, desc->nodeIndex) : nullptr;
        if (op == nullptr)
            continue;

        desc->op = op;
        bindOutputs (content, *desc);
        bindInputs (content, *desc, byNode);
        const STEP_KIND_t kind = op->typeId() == MVOpOutput::spec.typeId  ? stepOutput
                                 : op->typeId() == MVOpInput::spec.typeId ? stepInput
                                                                          : stepPlain;
        content.steps.push_back ({ op, desc, kind });
    }
}

void MVPolyPatch::bindOutputs (const Content& content, MVOpExecDesc& desc) const
{
    desc.numOutputs = std::min (desc.outputBuffers.size(), maxOperatorPorts);
    for (int port = 0; port < desc.numOutputs; ++port)
    {
        double* const buffer = content.signalMemory.get() + desc.outputBuffers[port] * bufferSize;
        desc.outputPtrs[0][port] = buffer;
        desc.outputPtrs[1][port] = buffer + blockSize;
    }
}

void MVPolyPatch::bindInputs (const Content& content, MVOpExecDesc& desc,
                              const std::vector<const MVNodeExecDesc*>& byNode)
{
    desc.numInputs = std::min (desc.inputSrcNode.size(), maxOperatorPorts);
    for (int port = 0; port < desc.numInputs; ++port)
    {
        desc.inputPtrs[0][port] = desc.inputPtrs[1][port] = attributes->silence.data();

        const auto source = static_cast<std::size_t> (desc.inputSrcNode[port]);
        const int sourcePort = desc.inputSrcPort.itemAt (port);
        if (desc.inputSrcNode[port] < 0 || source >= byNode.size() || byNode[source] == nullptr || sourcePort < 0
            || sourcePort >= byNode[source]->outputBuffers.size())
            continue;

        double* const buffer = content.signalMemory.get() + byNode[source]->outputBuffers[sourcePort] * bufferSize;
        const bool late = port < desc.inputFeedback.size() && desc.inputFeedback[port];
        desc.inputPtrs[0][port] = late ? buffer + blockSize : buffer;
        desc.inputPtrs[1][port] = late ? buffer : buffer + blockSize;
    }
}

void MVPolyPatch::render (int numIn, const double* const* in, int numOut, double* const* out, int numSamples,
                          std::int64_t)
{
    const int frames = std::min (numSamples, blockSize);

    for (int index = 0; index < layerCount; ++index)
    {
        Layer& layer = layerAt (index);
        if (layer.state.load (std::memory_order_relaxed) == PATCH_RUNNING && frames > 0)
        {
            const bool fading = layer.content.fade.fading;

            for (const Step& step : layer.content.steps)
            {
                const MVOpExecDesc& desc = *step.desc;
                if (step.kind == stepPlain)
                    step.op->process (desc.numInputs, desc.inputPtrs[phase], desc.numOutputs, desc.outputPtrs[phase],
                                      frames, desc);
                else if (step.kind == stepInput)
                    step.op->process (numIn, in, desc.numOutputs, desc.outputPtrs[phase], frames, desc);
                else if (! fading)
                    step.op->process (desc.numInputs, desc.inputPtrs[phase], numOut, out, frames, desc);
                else
                    renderFadingOutput (layer, step, numOut, out, frames);
            }
        }

        if (layer.state.load (std::memory_order_relaxed) == PATCH_STOPPING)
            layer.state.store (PATCH_STOPPED, std::memory_order_release);
    }

    phase ^= 1;
}

void MVPolyPatch::renderFadingOutput (Layer& layer, const Step& step, int numOut, double* const* out, int frames)
{
    Fade& fade = layer.content.fade;

    // A reset in the middle of a fade leaves nothing to count down.
    if (fade.blocksLeft > 0)
    {
        const int channels = std::min (numOut, numFadeChannels);
        for (int channel = 0; channel < channels; ++channel)
            blockClear (fadeChannels[static_cast<std::size_t> (channel)], frames);

        step.op->process (step.desc->numInputs, step.desc->inputPtrs[phase], channels, fadeChannels.data(), frames,
                          *step.desc);

        for (int channel = 0; channel < channels; ++channel)
            rampMix (out[channel], fadeChannels[static_cast<std::size_t> (channel)], frames,
                     fade.blocksLeft * fade.step, (fade.blocksLeft - 1) * fade.step);
        --fade.blocksLeft;
    }

    if (fade.blocksLeft <= 0)
        endFade (layer);
}

void MVPolyPatch::endFade (Layer& layer)
{
    layer.content.fade = {};
    layer.state.store (PATCH_STOPPED, std::memory_order_release);
}

void MVPolyPatch::setPatchPlaying (int layer, int fadeBlocks, bool play)
{
    if (! isLayer (layer))
        return;

    Layer& target = layerAt (layer);
    if (! hasDescription (layer))
    {
        endFade (target);
    }
    else if (play)
    {
        target.content.fade = {};
        target.state.store (PATCH_RUNNING, std::memory_order_release);
    }
    else if (fadeBlocks > 0)
    {
        beginFade (layer, fadeBlocks);
    }
    else
    {
        target.content.fade = {};
        if (patchState (layer) == PATCH_RUNNING)
            target.state.store (PATCH_STOPPED, std::memory_order_release);
    }
}

void MVPolyPatch::beginFade (int layer, int fadeBlocks)
{
    if (! isLayer (layer))
        return;

    Fade& fade = layerAt (layer).content.fade;
    const int blocks = std::max (1, fadeBlocks);
    fade.fading = true;

    if (fade.blocksLeft < 0)
    {
        fade.blocksLeft = blocks;
        fade.step = static_cast<double> (1.0F / static_cast<float> (blocks));
    }
    else if (blocks < fade.blocksLeft)
    {
        fade.step = fade.blocksLeft * fade.step / blocks;
        fade.blocksLeft = blocks;
    }
}

void MVPolyPatch::resetPatchStates()
{
    for (int layer = 0; layer < layerCount - 1; ++layer)
        if (hasDescription (layer))
            layerAt (layer).state.store (PATCH_RUNNING, std::memory_order_release);
}

void MVPolyPatch::noteOn (int key, double velocity)
{
    lastKey = key;
    for (int layer = 0; layer < layerCount; ++layer)
        if (patchState (layer) == PATCH_RUNNING)
            for (const Step& step : layerAt (layer).content.steps)
                step.op->noteEvent (key, velocity);
}

void MVPolyPatch::releaseOperators()
{
    for (int layer = 0; layer < layerCount; ++layer)
        if (! isIdleBackBuffer (layer))
            for (const Step& step : layerAt (layer).content.steps)
                step.op->release();
}

bool MVPolyPatch::allOperatorsFinished() const
{
    for (int layer = 0; layer < layerCount; ++layer)
    {
        const auto& steps = layerAt (layer).content.steps;
        if (! isIdleBackBuffer (layer)
            && ! std::all_of (steps.begin(), steps.end(), [] (const Step& step) { return step.op->isFinished(); }))
            return false;
    }
    return true;
}

} // namespace morvanelab
