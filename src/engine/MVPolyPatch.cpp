// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVPolyPatch.h"

#include "foundation/MVMath.h"
#include "foundation/MVResult.h"
#include "operators/MVOperator.h"
#include "operators/MVRenderEngineAttributes.h"

#include <algorithm>
#include <utility>

namespace morvanelab
{

namespace
{
/** What an operator takes beyond itself and its signal buffers, so that patches of many small nodes are counted too. */
constexpr std::size_t operatorAllowance = 4096;

enum OUTPUT_PARAMETER_t : int
{
    outputVolume = 2,
    compressorRollOff = 3,
    compressorThreshold = 4
};
} // namespace

MVPolyPatch::MVPolyPatch (MVRenderEngineAttributes* renderAttributes)
    : MVNetwork (std::clamp (renderAttributes->numLayers, 1, maxLayers)), attributes (renderAttributes),
      layerCount (getNumSubnets())
{
    savedStates.fill (PATCH_STOPPED);
}

MVPolyPatch::~MVPolyPatch() = default;

void MVPolyPatch::reset()
{
    MVNetwork::reset();
    for (int layer = 0; layer < layerCount; ++layer)
        clearSignalBuffers (layer);
    phase = 0;
}

void MVPolyPatch::clearSubnet (int layer)
{
    MVNetwork::clearSubnet (layer);
    if (! isLayer (layer))
        return;

    // A description of nodes that are gone must not let the layer count as one that can play.
    clearNetworkInfo (layer);

    Content& content = layerAt (layer).content;
    content.root = -1;
    content.fade = {};
    *content.texts = {};
    setSubnetActive (layer, false);
}

MVSmartPtr<MVNetworkInfo> MVPolyPatch::createNetworkInfo() { return makeSmart<MVPolyPatchInfo>(); }

void MVPolyPatch::swapSubnets (int a, int b)
{
    if (! isLayer (a) || ! isLayer (b) || a == b)
        return;

    MVNetwork::swapSubnets (a, b);
    std::swap (layerAt (a).content, layerAt (b).content);
    const PATCH_STATE_t stateOfA = patchState (a);
    layerAt (a).state.store (patchState (b), std::memory_order_release);
    layerAt (b).state.store (stateOfA, std::memory_order_release);
}

void MVPolyPatch::setSubnetActive (int layer, bool on)
{
    if (! isLayer (layer))
        return;

    Content& content = layerAt (layer).content;
    bindBuffers (layer, false);
    content.signalMemory.reset();
    content.signalMemorySize = 0;
    content.fade.blocksLeft = -1;

    if (const MVNetworkInfo* const info = networkInfoAt (layer); on && info != nullptr)
    {
        const int size = info->getBufferCount() * bufferSize;
        content.signalMemory = std::make_unique<double[]> (static_cast<std::size_t> (size));
        content.signalMemorySize = size;
        bindBuffers (layer, true);
    }

    MVNetwork::setSubnetActive (layer, on);
}

void MVPolyPatch::prepareBuffers (bool on)
{
    phase = 0;

    if (! on)
        for (int layer = 0; layer < layerCount; ++layer)
            savedStates[static_cast<std::size_t> (layer)] = patchState (layer);

    numFadeChannels = 0;
    for (std::size_t channel = 0; channel < maxOutputChannels; ++channel)
    {
        fadeBuffers[channel].reset();
        fadeChannels[channel] = nullptr;
    }

    if (! on)
        return;

    numFadeChannels = std::clamp (attributes->numOutputChannels, 0, maxOutputChannels);
    for (std::size_t channel = 0; channel < static_cast<std::size_t> (numFadeChannels); ++channel)
    {
        fadeBuffers[channel] = std::make_unique<double[]> (blockSize);
        fadeChannels[channel] = fadeBuffers[channel].get();
    }

    for (int layer = 0; layer < layerCount; ++layer)
    {
        layerAt (layer).content.fade = { .fading = false, .blocksLeft = -1, .step = 0.0 };
        if (savedStates[static_cast<std::size_t> (layer)] != PATCH_RUNNING)
            continue;
        setSubnetActive (layer, true);
        setPatchPlaying (layer, 1, true);
    }
}

void MVPolyPatch::clearSignalBuffers (int layer)
{
    if (! isLayer (layer))
        return;

    Content& content = layerAt (layer).content;
    content.fade.blocksLeft = -1;
    std::fill_n (content.signalMemory.get(), content.signalMemorySize, 0.0);
}

void MVPolyPatch::activateLayer (int layer)
{
    if (! hasDescription (layer))
    {
        setSubnetActive (layer, true);
        return;
    }

    if (isActive())
        setSubnetActive (layer, true);

    if (autoAssignControls == 1)
    {
        assignInputControls (layer);
        autoAssignControls = 0;
    }
}

int MVPolyPatch::rootNode (int layer) const { return isLayer (layer) ? layerAt (layer).content.root : -1; }

PATCH_STATE_t MVPolyPatch::patchState (int layer) const
{
    return isLayer (layer) ? layerAt (layer).state.load (std::memory_order_acquire) : PATCH_STOPPED;
}

bool MVPolyPatch::hasDescription (int layer) const { return networkInfoAt (layer) != nullptr; }

bool MVPolyPatch::isIdleBackBuffer (int layer) const
{
    return layer == layerCount - 1 && patchState (layer) == PATCH_STOPPED;
}

void MVPolyPatch::clearLayer (int layer) { clearSubnet (layer); }

MVString MVPolyPatch::variableName (int layer, int index) const
{
    if (! isLayer (layer) || index < 0 || index >= numVariables)
        return {};
    return layerAt (layer).content.texts->names[static_cast<std::size_t> (index)];
}

MVString MVPolyPatch::variableDescription (int layer, int index) const
{
    if (! isLayer (layer) || index < 0 || index >= numVariables)
        return {};
    return layerAt (layer).content.texts->descriptions[static_cast<std::size_t> (index)];
}

std::size_t MVPolyPatch::memoryNeeded (int layer) const
{
    const MVNetworkInfo* const info = networkInfoAt (layer);
    const int buffers = info != nullptr ? info->getBufferCount() : 0;
    std::size_t bytes = static_cast<std::size_t> (buffers) * bufferSize * sizeof (double);

    for (int index = 0; index < numNodes (layer); ++index)
    {
        const MVOperator* const op = operatorAt (layer, index);
        bytes += operatorAllowance + (op != nullptr ? op->runtimeBytes() : 0);
    }

    return bytes;
}

MVOperator* MVPolyPatch::operatorAt (int layer, int index) const
{
    return dynamic_cast<MVOperator*> (nodeAt (layer, index));
}

void MVPolyPatch::setMonitoringEnabled (bool on)
{
    for (int layer = 0; layer < layerCount; ++layer)
        for (int index = 0; index < numNodes (layer); ++index)
            if (MVOperator* const op = operatorAt (layer, index); op != nullptr)
                op->setMonitorsEnabled (on);
}

int MVPolyPatch::setOperatorAttribute (int layer, std::uint64_t nodeId, int attribute, int kind, double value,
                                       MVDataBlock* data)
{
    MVNetNode* node = nullptr;
    for (int candidate = 0; candidate < layerCount && node == nullptr; ++candidate)
        if (layer < 0 || candidate == layer)
            node = nodeById (candidate, nodeId);

    auto* const op = dynamic_cast<MVOperator*> (node);
    if (op == nullptr)
        return resultDone;

    // The bytes of a block lie anywhere, so the doubles are copied out of it.
    std::vector<double> values (data != nullptr ? static_cast<std::size_t> (data->totalSize()) / sizeof (double) : 0);
    if (! values.empty())
        data->readRing (values.data(), 0, static_cast<int> (values.size()), sizeof (double));
    const int count = static_cast<int> (values.size());

    switch (static_cast<MVParameterType> (kind))
    {
        case MVParameterType::Float:
            return op->setFloatParameter (attribute, value);
        case MVParameterType::Int:
            return op->setIntParameter (attribute, truncToInt (value));
        case MVParameterType::Choice:
            return op->setChoiceParameter (attribute, truncToInt (value));
        case MVParameterType::Bool:
            return op->setBoolParameter (attribute, value != 0.0);
        case MVParameterType::Sequence:
            return op->setSequenceParameter (attribute, count, values.data());
        case MVParameterType::Curve:
            return op->setCurveParameter (attribute, count / 2, values.data());
        case MVParameterType::None:
            break;
    }

    return resultUnknownKind;
}

MVOperator* MVPolyPatch::playingOutput() const
{
    for (int layer = 0; layer < layerCount; ++layer)
        if (patchState (layer) != PATCH_STOPPED && rootNode (layer) >= 0)
            return operatorAt (layer, rootNode (layer));
    return nullptr;
}

double MVPolyPatch::outputParameter (int parameter) const
{
    const MVOperator* const output = playingOutput();
    return output != nullptr ? output->floatParameter (parameter) : 0.0;
}

void MVPolyPatch::setOutputParameter (int parameter, double value)
{
    for (int layer = 0; layer < layerCount; ++layer)
        if (MVOperator* const output = operatorAt (layer, rootNode (layer)); output != nullptr)
            output->setFloatParameter (parameter, value);
}

double MVPolyPatch::getOutputVolume() const { return outputParameter (outputVolume); }
void MVPolyPatch::setOutputVolume (double value) { setOutputParameter (outputVolume, value); }
double MVPolyPatch::getCompressorRollOff() const { return outputParameter (compressorRollOff); }
void MVPolyPatch::setCompressorRollOff (double value) { setOutputParameter (compressorRollOff, value); }
double MVPolyPatch::getCompressorThreshold() const { return outputParameter (compressorThreshold); }
void MVPolyPatch::setCompressorThreshold (double value) { setOutputParameter (compressorThreshold, value); }

} // namespace morvanelab
