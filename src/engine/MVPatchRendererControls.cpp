// SPDX-License-Identifier: GPL-3.0-or-later
// The part of MVPatchRenderer that holds control values.
#include "control/MVControlManager.h"
#include "engine/MVPatchRenderer.h"
#include "foundation/MVResult.h"
#include "operators/MVRenderEngineAttributes.h"

#include <algorithm>
#include <cstdio>

namespace morvanelab
{

void MVPatchRenderer::setActive (bool flag)
{
    if (flag)
        while (static_cast<int> (dcFilters.size()) < attributes->numOutputChannels)
            dcFilters.push_back (std::make_unique<MVDcFilter>());

    numPeaks.store (std::min (attributes->numOutputChannels, maxTappedChannels), std::memory_order_relaxed);

    for (const auto& filter : dcFilters)
        filter->setActive (flag);
    for (const auto& each : voices)
        each->setActive (flag);

    releaseControls();
    if (flag)
        takeControls();
    passControlsToVoices();
    MVEventHandler::setActive (flag);
}

void MVPatchRenderer::takeControls()
{
    takeSlot (pitch, "Pitch");
    takeSlot (volume, "Volume");
    takeSlot (activator, "Patch Activator");

    char name[32];
    for (std::size_t i = 0; i < parameters.size(); ++i)
    {
        std::snprintf (name, sizeof (name), "Parameter %d", static_cast<int> (i));
        takeSlot (parameters[i], name);
        parameterInUse[i].store (false, std::memory_order_relaxed);
    }

    for (std::size_t i = 0; i < layerFades.size(); ++i)
    {
        std::snprintf (name, sizeof (name), "Layer Fade %d", static_cast<int> (i));
        takeSlot (layerFades[i], name);
    }

    listControls();
    refreshParametersInUse();
}

void MVPatchRenderer::releaseControls()
{
    for (ControlSlot* const slot : { &pitch, &volume, &activator })
        releaseSlot (*slot);
    for (ControlSlot& slot : parameters)
        releaseSlot (slot);
    for (ControlSlot& slot : layerFades)
        releaseSlot (slot);
    for (auto& inUse : parameterInUse)
        inUse.store (false, std::memory_order_relaxed);

    parameterControls.clear();
    layerFadeControls.clear();
}

void MVPatchRenderer::listControls()
{
    parameterControls.resize (static_cast<int> (parameters.size()));
    for (int i = 0; i < parameterControls.size(); ++i)
        parameterControls[i] = parameters[static_cast<std::size_t> (i)].value.load (std::memory_order_relaxed);

    layerFadeControls.resize (static_cast<int> (layerFades.size()));
    for (int i = 0; i < layerFadeControls.size(); ++i)
        layerFadeControls[i] = layerFades[static_cast<std::size_t> (i)].value.load (std::memory_order_relaxed);
}

void MVPatchRenderer::passControlsToVoices()
{
    for (const auto& each : voices)
    {
        each->setLayerFadeControls (&layerFadeControls);
        each->setActivatorControl (activator.value.load (std::memory_order_relaxed));
        each->setParameterControls (&parameterControls);
    }
}

void MVPatchRenderer::takeSlot (ControlSlot& slot, const char* name)
{
    assignSlot (slot, controlManager->allocateControlId());
    if (MVControlValue* const value = slot.value.load (std::memory_order_relaxed); value != nullptr)
        value->setName (name);
}

void MVPatchRenderer::assignSlot (ControlSlot& slot, int controlId)
{
    releaseSlot (slot);
    MVControlValue* const value = controlManager->acquireControl (controlId);
    slot.value.store (value, std::memory_order_release);
    slot.id.store (value != nullptr ? controlId : 0, std::memory_order_relaxed);
}

void MVPatchRenderer::releaseSlot (ControlSlot& slot)
{
    slot.value.store (nullptr, std::memory_order_release);
    if (const int id = slot.id.exchange (0, std::memory_order_relaxed); id != 0)
        controlManager->releaseControl (id);
}

void MVPatchRenderer::setVolumeControl (int controlId)
{
    if (controlId != getVolumeControlId())
        assignSlot (volume, controlId);
}

void MVPatchRenderer::setParameterControl (int index, int controlId)
{
    if (index < 0 || index >= numParameterControls() || controlId == getParameterControlId (index))
        return;

    const MVScopedLock structure (voiceLock);
    const MVScopedLock audio (attributes->audioLock);
    assignSlot (parameters[static_cast<std::size_t> (index)], controlId);
    listControls();
    passControlsToVoices();
}

void MVPatchRenderer::setLayerFadeControl (int layer, int controlId)
{
    if (layer < 0 || layer > scratchLayer || controlId == getLayerFadeControlId (layer))
        return;

    const MVScopedLock structure (voiceLock);
    const MVScopedLock audio (attributes->audioLock);
    assignSlot (layerFades[static_cast<std::size_t> (layer)], controlId);
    listControls();
    passControlsToVoices();
}

int MVPatchRenderer::getLayerFadeControlId (int layer) const
{
    return layer >= 0 && layer <= scratchLayer
               ? layerFades[static_cast<std::size_t> (layer)].id.load (std::memory_order_relaxed)
               : 0;
}

int MVPatchRenderer::getParameterControlId (int index) const
{
    return index >= 0 && index < numParameterControls()
               ? parameters[static_cast<std::size_t> (index)].id.load (std::memory_order_relaxed)
               : 0;
}

bool MVPatchRenderer::isParameterInUse (int index) const
{
    return index >= 0 && index < numParameterControls()
           && parameterInUse[static_cast<std::size_t> (index)].load (std::memory_order_relaxed);
}

void MVPatchRenderer::refreshParametersInUse()
{
    const MVScopedLock structure (voiceLock);
    for (std::size_t i = 0; i < parameterInUse.size(); ++i)
        parameterInUse[i].store (voice (0).isControlInUse (static_cast<int> (i)), std::memory_order_relaxed);
}

void MVPatchRenderer::removeControlFromPatch (int controlId)
{
    {
        const MVScopedLock structure (voiceLock);
        const MVScopedLock audio (attributes->audioLock);
        voice (0).clearInputControl (scratchLayer, controlId);
    }
    refreshParametersInUse();
}

void MVPatchRenderer::compactPatchControls()
{
    {
        const MVScopedLock structure (voiceLock);
        const MVScopedLock audio (attributes->audioLock);
        voice (0).compactControls (scratchLayer);
    }
    refreshParametersInUse();
}

int MVPatchRenderer::setEnabled (bool on)
{
    renderEnabled.store (on, std::memory_order_relaxed);
    return resultDone;
}

} // namespace morvanelab
