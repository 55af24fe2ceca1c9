// SPDX-License-Identifier: GPL-3.0-or-later
// The part of MVPatchRenderer that moves patches in and out of layers.
#include "engine/MVPatchRenderer.h"
#include "foundation/MVResult.h"
#include "foundation/MVString.h"
#include "operators/MVRenderEngineAttributes.h"

#include <algorithm>
#include <cstdio>
#include <new>

namespace morvanelab
{

/** Ends a transition that did not come to its swap, whatever stopped it. */
class MVPatchRenderer::LoadGuard
{
public:
    explicit LoadGuard (MVPatchRenderer& rendererToGuard) : renderer (&rendererToGuard) {}
    ~LoadGuard()
    {
        if (renderer == nullptr)
            return;
        renderer->clearScratch();
        renderer->endTransition();
    }
    LoadGuard (const LoadGuard&) = delete;

    void dismiss() { renderer = nullptr; }

private:
    MVPatchRenderer* renderer;
};

int MVPatchRenderer::loadPatch (int layer, MVSmartPtr<MVObject>& data)
{
    const MVSmartPtr<MVObject> taken = std::move (data);

    if (! isPatchLayer (layer))
        return resultLayerOutOfRange;
    if (const int begun = beginTransition (layer); begun != resultDone)
        return begun;

    LoadGuard guard (*this);
    if (const int loaded = loadIntoScratch (taken); loaded != resultDone)
        return loaded;
    guard.dismiss();

    // Under sounding notes the filters run on: to drop what they have settled to would click.
    if (countLoadedLayers() == 1)
    {
        const MVScopedLock audio (attributes->audioLock);
        if (activeParts.isEmpty())
            resetDcFilters();
    }

    return advanceTransition (isEnabled() ? 1 : 0, true);
}

int MVPatchRenderer::beginTransition (int layer)
{
    if (isTransitionRunning())
        return resultTransitionRunning;
    if (isLayerPlaying (scratchLayer) || ! transitionLock.tryLock())
        return resultBusy;

    // The patch in the layer is not copied into the scratch layer: a load replaces it as a whole, and data that
    // turns out to hold no patch must leave the scratch layer empty.
    transitionPhase = phaseIdle;
    transitionTarget.store (layer, std::memory_order_release);
    clearScratch();
    return resultDone;
}

int MVPatchRenderer::loadIntoScratch (const MVSmartPtr<MVObject>& data)
try
{
    for (std::size_t index = 0; index < voices.size(); ++index)
    {
        // Locked voice by voice, so that a reader on another thread waits for one voice at most.
        const MVScopedLock structure (voiceLock);
        MVPolyPatch& loaded = *voices[index];
        MVSmartPtr<MVObject> reference = data;

        if (const int result = loaded.loadPatch (reference, scratchLayer); result != resultDone)
            return result;
        if (! loaded.hasPatch (scratchLayer))
            return resultFailed;
        if (index == 0 && ! describeScratch (loaded))
            return resultNoResources;
    }

    for (const auto& each : voices)
    {
        const MVScopedLock structure (voiceLock);
        if (each != voices.front())
        {
            MVSmartPtr<MVNetworkInfo> shared = voice (0).getNetworkInfo (scratchLayer);
            each->setNetworkInfo (scratchLayer, shared);
        }
        each->activateLayer (scratchLayer);
    }
    return resultDone;
}
catch (const std::bad_alloc&)
{
    return resultNoResources;
}

/** Compiles the order of the patch in the scratch layer, which then serves all voices, and tells whether that patch
    fits into memory beside those that are there. A patch without an output gets no order and never plays. */
bool MVPatchRenderer::describeScratch (MVPolyPatch& loaded) const
{
    if (const int root = loaded.rootNode (scratchLayer); root >= 0)
        loaded.computeExecutionOrder (scratchLayer, root);

    std::size_t needed = 0;
    for (int layer = 0; layer < loaded.numLayers(); ++layer)
        needed += loaded.memoryNeeded (layer);
    return needed <= patchMemoryLimit / voices.size();
}

int MVPatchRenderer::advanceTransition (int fadeBlocks, bool notify)
{
    if (! isTransitionRunning())
        return resultNotEnabled;
    if (! transitionLock.isHeldByThisThread())
        return resultBusy;

    switch (transitionPhase)
    {
        case phaseIdle:
            return startFade (fadeBlocks, notify);

        case phaseFading:
            // Only what is rendered fades.
            if (isEnabled())
                stopIdleVoices (scratchLayer);
            else
                setLayerPlaying (scratchLayer, 0, false);

            if (isLayerPlaying (scratchLayer))
                return resultUnderWay;
            transitionPhase = phaseEnded;
            return finishTransition (notify);

        default:
            return resultUnknownPhase;
    }
}

/** Exchanges the loaded scratch layer with the target. A silent instrument changes patches at once. */
int MVPatchRenderer::startFade (int fadeBlocks, bool notify)
{
    const int target = transitionTarget.load (std::memory_order_relaxed);
    int fade = 0;
    {
        const MVScopedLock structure (voiceLock);
        const MVScopedLock audio (attributes->audioLock);

        fade = activeParts.isEmpty() ? 0 : fadeBlocks;
        for (const auto& each : voices)
            each->swapSubnets (target, scratchLayer);
        setLayerPlaying (target, fade, true);
        setLayerPlaying (scratchLayer, fade, false);
    }
    refreshParametersInUse();

    if (fade < 1)
        return finishTransition (notify);

    transitionPhase = phaseFading;
    return resultUnderWay;
}

int MVPatchRenderer::finishTransition (bool notify)
{
    unloadLayers (scratchLayer, false);
    if (notify)
        tellPatchChanged (transitionTarget.load (std::memory_order_relaxed));
    endTransition();
    return resultDone;
}

void MVPatchRenderer::endTransition()
{
    transitionPhase = phaseIdle;
    refreshParametersInUse();
    transitionTarget.store (-1, std::memory_order_release);
    transitionLock.unlock();
}

void MVPatchRenderer::abandonTransition()
{
    if (! transitionLock.isHeld())
        return;

    setLayerPlaying (scratchLayer, 0, false);
    clearScratch();
    endTransition();
}

void MVPatchRenderer::clearScratch()
{
    const MVScopedLock structure (voiceLock);
    for (auto each = voices.rbegin(); each != voices.rend(); ++each)
        (*each)->clearLayer (scratchLayer);
}

// Unloading -------------------------------------------------------------------------------------------------------

int MVPatchRenderer::unloadPatch (int layer, bool notify)
{
    if (layer > scratchLayer)
        return resultLayerOutOfRange;
    if (! transitionLock.tryLock())
        return resultBusy;

    const int result = unloadLayers (layer, notify);
    transitionLock.unlock();
    return result;
}

int MVPatchRenderer::unloadLayers (int layer, bool notify)
{
    const int first = layer < 0 ? 0 : layer;
    const int last = layer < 0 ? scratchLayer - 1 : layer;
    const bool silent = numActiveParts() == 0;

    for (int each = first; each <= last; ++each)
    {
        if (silent)
            setLayerPlaying (each, 0, false);
        if (! clearIfStopped (each))
            return resultLayerInUse;
        if (notify)
            tellPatchChanged (each);
    }

    if (countLoadedLayers() == 0)
    {
        const MVScopedLock audio (attributes->audioLock);
        resetDcFilters();
    }
    return resultDone;
}

/** Empties a layer that no voice plays; returns whether that was so. A patch layer, which the audio thread looks at
    also while it is stopped, first changes places with the empty scratch layer, so that the operators are destroyed
    while the audio goes on. */
bool MVPatchRenderer::clearIfStopped (int layer)
{
    const MVScopedLock structure (voiceLock);
    {
        const MVScopedLock audio (attributes->audioLock);
        if (isLayerPlaying (layer))
            return false;
        if (layer != scratchLayer)
            for (const auto& each : voices)
                each->swapSubnets (layer, scratchLayer);
    }
    clearScratch();
    refreshParametersInUse();
    return true;
}

// Layers ----------------------------------------------------------------------------------------------------------

bool MVPatchRenderer::isSounding (int voiceIndex) const
{
    return std::any_of (activeParts.begin(), activeParts.end(),
                        [voiceIndex] (const auto& part) { return part->getVoiceIndex() == voiceIndex; });
}

void MVPatchRenderer::setLayerPlaying (int layer, int fadeBlocks, bool play)
{
    const MVScopedLock audio (attributes->audioLock);

    for (int index = 0; index < getNumVoices(); ++index)
    {
        const int fade = isSounding (index) ? fadeBlocks : 0;
        for (int each = 0; each <= scratchLayer; ++each)
        {
            const bool wanted = layer < 0 ? each < scratchLayer || ! play : each == layer;
            if (wanted && play != (voice (index).patchState (each) != PATCH_STOPPED))
                voice (index).setPatchPlaying (each, fade, play);
        }
    }
}

/** A voice whose note has ended since the fade began would never come to the fade's end. */
void MVPatchRenderer::stopIdleVoices (int layer)
{
    const MVScopedLock audio (attributes->audioLock);
    for (int index = 0; index < getNumVoices(); ++index)
        if (! isSounding (index))
            voice (index).setPatchPlaying (layer, 0, false);
}

bool MVPatchRenderer::isLayerPlaying (int layer) const
{
    return std::any_of (voices.begin(), voices.end(),
                        [layer] (const auto& each) { return each->patchState (layer) != PATCH_STOPPED; });
}

bool MVPatchRenderer::isLayerLoaded (int layer) const
{
    const MVScopedLock structure (voiceLock);
    return std::all_of (voices.begin(), voices.end(), [layer] (const auto& each) { return each->hasPatch (layer); });
}

int MVPatchRenderer::countLoadedLayers() const
{
    const MVScopedLock structure (voiceLock);
    int count = 0;
    for (int layer = 0; layer < scratchLayer; ++layer)
        count += voice (0).hasPatch (layer) ? 1 : 0;
    return count;
}

int MVPatchRenderer::numNodesInLayer (int layer) const
{
    const MVScopedLock structure (voiceLock);
    return voice (0).numNodes (layer);
}

MVSmartPtr<MVRiffPacker> MVPatchRenderer::getPatchData (int layer)
{
    const MVScopedLock structure (voiceLock);
    return voice (0).savePatch (layer);
}

MVSmartPtr<MVString> MVPatchRenderer::getLayerName (int layer) const
{
    char text[64];
    std::snprintf (text, sizeof (text), "Sub patch %d - Layer %d", static_cast<int> (getId()), layer);
    return makeSmart<MVString> (text);
}

int MVPatchRenderer::setOperatorAttribute (int layer, std::uint64_t nodeId, int attribute, int kind, double value,
                                           MVDataBlock* data)
{
    const MVScopedLock structure (voiceLock);
    const MVScopedLock audio (attributes->audioLock);
    return voice (0).setOperatorAttribute (layer, nodeId, attribute, kind, value, data);
}

} // namespace morvanelab
