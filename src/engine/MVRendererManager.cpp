// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVRendererManager.h"

#include "control/MVControlManager.h"
#include "engine/MVPatchRenderer.h"
#include "foundation/MVEventManager.h"
#include "foundation/MVResult.h"

#include <algorithm>

namespace morvanelab
{

MVRendererManager::MVRendererManager (MVEventManager* events, MVRenderEngineAttributes* renderAttributes,
                                      MVControlManager* controls)
    : MVEventHandler (events), eventManager (events), controlManager (controls), attributes (renderAttributes)
{
    renderers.setDefault (nullptr);

    for (std::size_t i = 0; i < tempOutputs.size(); ++i)
        tempOutputs[i] = tempBlocks[i].data();

    mutedInputs.fill (attributes->silence.data());
    mutedOutputs.fill (attributes->scratch.data());
    eventManager->addChild (this);
}

MVRendererManager::~MVRendererManager()
{
    eventManager->removeHandler (getId());
    detach();
    removeAllRenderers (false);
}

// Life ------------------------------------------------------------------------------------------------------------

void MVRendererManager::setActive (bool on)
{
    const MVScopedLock lock (structureLock);
    forEachRenderer ([on] (MVPatchRenderer& renderer) { renderer.setActive (on); });
    MVEventHandler::setActive (on);
}

void MVRendererManager::reset()
{
    const MVScopedLock lock (structureLock);
    forEachRenderer ([] (MVPatchRenderer& renderer) { renderer.reset(); });
}

void MVRendererManager::prepare (bool on)
{
    const MVScopedLock lock (structureLock);
    prepared = on;
    forEachRenderer ([on] (MVPatchRenderer& renderer) { renderer.prepare (on); });
    presetFading.store (false);
}

void MVRendererManager::handleThreadMsg (std::uint32_t message)
{
    if (message == messageHousekeeping)
        callListeners();
}

// The set of renderers --------------------------------------------------------------------------------------------

std::uint64_t MVRendererManager::createRenderer (int, int numVoices, bool flagA, std::uint64_t id, bool notify)
{
    if (numVoices < 1 || numVoices > maxVoices)
        return 0;

    // The voices are made before the lock is taken: that takes its time.
    auto renderer = std::make_unique<MVPatchRenderer> (eventManager, attributes, controlManager, numVoices);
    renderer->setFlagA (flagA);
    std::uint64_t newId = renderer->getId();
    {
        const MVScopedLock lock (structureLock);
        if (numRenderers() >= maxRenderers)
            return 0;
        if (id != 0 && rendererIndex (id) < 0)
            renderer->setId (newId = id);

        renderer->setActive (true);
        if (prepared)
            renderer->prepare (true);
        insertRenderer (std::move (renderer));
    }

    if (notify)
        callListeners();
    return newId;
}

void MVRendererManager::insertRenderer (std::unique_ptr<MVPatchRenderer> renderer)
{
    int index = 0;
    while (index < renderers.size() && renderers[index] != nullptr)
        ++index;

    const MVScopedLock audio (attributes->audioLock);
    renderers.setItem (index, renderer.release());
    rendererGains.setItem (index, 0.0);
}

/** Takes a renderer out of the mix. The caller destroys it. */
std::unique_ptr<MVPatchRenderer> MVRendererManager::detachRenderer (std::uint64_t id)
{
    const MVScopedLock lock (structureLock);
    const int index = rendererIndex (id);
    if (index < 0)
        return nullptr;

    const MVScopedLock audio (attributes->audioLock);
    std::unique_ptr<MVPatchRenderer> detached (renderers[index]);
    renderers[index] = nullptr;
    rendererGains[index] = 0.0;
    return detached;
}

int MVRendererManager::destroyRenderer (std::uint64_t id, bool notify)
{
    // Out of the mix before it is switched off and freed, so that neither takes the audio's time.
    auto renderer = detachRenderer (id);
    if (renderer == nullptr)
        return resultUnknownId;

    {
        const MVScopedLock lock (structureLock);
        renderer->setActive (false);
    }
    eventManager->removeHandler (id);
    renderer.reset();
    postPruneMappings();

    if (notify)
        callListeners();
    return resultDone;
}

void MVRendererManager::destroyAllRenderers() { removeAllRenderers (true); }

void MVRendererManager::removeAllRenderers (bool notify)
{
    for (int i = numSlots() - 1; i >= 0; --i)
        if (const std::uint64_t id = rendererIdAt (i); id != 0)
            destroyRenderer (id, notify);
}

int MVRendererManager::numRenderers() const
{
    int count = 0;
    forEachRenderer ([&count] (MVPatchRenderer&) { ++count; });
    return count;
}

int MVRendererManager::numSlots() const
{
    const MVScopedLock lock (structureLock);
    return renderers.size();
}

MVPatchRenderer* MVRendererManager::rendererAt (int index) const
{
    const MVScopedLock lock (structureLock);
    return index >= 0 ? renderers.itemAt (index) : nullptr;
}

std::uint64_t MVRendererManager::rendererIdAt (int index) const
{
    const MVScopedLock lock (structureLock);
    const MVPatchRenderer* const renderer = rendererAt (index);
    return renderer != nullptr ? renderer->getId() : 0;
}

int MVRendererManager::rendererIndex (std::uint64_t id) const
{
    const MVScopedLock lock (structureLock);
    for (int i = 0; i < renderers.size(); ++i)
        if (renderers[i] != nullptr && renderers[i]->getId() == id)
            return i;
    return -1;
}

MVPatchRenderer* MVRendererManager::find (std::uint64_t id) const
{
    const MVScopedLock lock (structureLock);
    return rendererAt (rendererIndex (id));
}

int MVRendererManager::withRenderer (std::uint64_t id, const std::function<void (MVPatchRenderer&)>& use) const
{
    const MVScopedLock lock (structureLock);
    MVPatchRenderer* const renderer = find (id);
    if (renderer == nullptr)
        return resultUnknownId;

    use (*renderer);
    return resultDone;
}

void MVRendererManager::addListener (ListenerFunc function, void* context)
{
    const MVScopedLock lock (structureLock);
    listeners.push_back ({ function, context });
}

void MVRendererManager::removeListener (ListenerFunc function, void* context)
{
    const MVScopedLock lock (structureLock);
    std::erase (listeners, Listener { function, context });
}

void MVRendererManager::callListeners()
{
    std::vector<Listener> present;
    {
        const MVScopedLock lock (structureLock);
        present = listeners;
    }

    for (const Listener& listener : present)
        listener.function (listener.context, 0, 0, 0);
}

// Audio thread ----------------------------------------------------------------------------------------------------

void MVRendererManager::render (int numIn, const double* const* in, int numOut, double* const* out, int numSamples,
                                std::int64_t extra)
{
    const int channels = std::min (numOut, maxOutputChannels);
    for (int i = 0; i < channels; ++i)
        std::fill_n (out[i], numSamples, 0.0);

    // Under the audio lock the vector cannot change.
    for (int i = renderers.size() - 1; i >= 0; --i)
    {
        MVPatchRenderer* const renderer = renderers[i];
        if (renderer == nullptr || ! renderer->isActive() || ! renderer->isEnabled())
            continue;

        const bool heard = ! renderer->isOutputMuted();
        renderer->render (numIn, renderer->isInputMuted() ? mutedInputs.data() : in, numOut,
                          heard ? tempOutputs.data() : mutedOutputs.data(), numSamples, extra);
        mixIn (*renderer, i, heard ? channels : 0, out, numSamples);
    }
}

/** Adds the block in tempOutputs with a ramp from the renderer's last gain to its present one. */
void MVRendererManager::mixIn (const MVPatchRenderer& renderer, int index, int channels, double* const* out,
                               int numSamples)
{
    const MVControlValue* const volume = renderer.getVolumeControl();
    const double start = rendererGains[index];
    const double end = volume != nullptr ? volume->getValue() : 1.0;
    const double step = (end - start) / numSamples;

    for (int channel = 0; channel < channels; ++channel)
    {
        const double* const source = tempOutputs[static_cast<std::size_t> (channel)];
        double* const dest = out[channel];
        for (int i = 0; i < numSamples; ++i)
            dest[i] += source[i] * (start + i * step);
    }

    rendererGains[index] = end;
}

// Keyboard --------------------------------------------------------------------------------------------------------

void MVRendererManager::noteOnAll (int key, double velocity)
{
    const MVScopedLock lock (structureLock);
    forEachRenderer ([=] (MVPatchRenderer& renderer) { renderer.noteOn (key, velocity); });
}

void MVRendererManager::noteOffAll (int key)
{
    const MVScopedLock lock (structureLock);
    forEachRenderer ([=] (MVPatchRenderer& renderer) { renderer.noteOff (key); });
}

} // namespace morvanelab
