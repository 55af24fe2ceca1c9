// SPDX-License-Identifier: GPL-3.0-or-later
// The operations of MVRendererManager that find a renderer and hand the call on.
#include "engine/MVPatchRenderer.h"
#include "engine/MVRendererManager.h"
#include "foundation/MVResult.h"

namespace morvanelab
{

namespace
{

/** What a renderer's operation answers, or a stand-in where there is no such renderer. */
template <typename Result, typename Ask>
Result askRenderer (const MVRendererManager& manager, std::uint64_t id, Result otherwise, Ask ask)
{
    manager.withRenderer (id, [&] (MVPatchRenderer& renderer) { otherwise = static_cast<Result> (ask (renderer)); });
    return otherwise;
}

} // namespace

int MVRendererManager::noteOn (std::uint64_t id, int key, double velocity)
{
    return withRenderer (id, [=] (MVPatchRenderer& renderer) { renderer.noteOn (key, velocity); });
}

int MVRendererManager::noteOff (std::uint64_t id, int key)
{
    return withRenderer (id, [=] (MVPatchRenderer& renderer) { renderer.noteOff (key); });
}

int MVRendererManager::startMonoVoice (std::uint64_t id)
{
    return withRenderer (id, [] (MVPatchRenderer& renderer) { renderer.startMonoVoice(); });
}

int MVRendererManager::killAllVoices (std::uint64_t id)
{
    return withRenderer (id, [] (MVPatchRenderer& renderer) { renderer.killAllVoices(); });
}

int MVRendererManager::setPlayMode (std::uint64_t id, int mode)
{
    return withRenderer (id, [=] (MVPatchRenderer& renderer) { renderer.setPlayMode (mode); });
}

int MVRendererManager::getPlayMode (std::uint64_t id) const
{
    return askRenderer (*this, id, 0, [] (const MVPatchRenderer& renderer) { return renderer.getPlayMode(); });
}

int MVRendererManager::setEnabled (std::uint64_t id, bool on)
{
    return withRenderer (id, [=] (MVPatchRenderer& renderer) { renderer.setEnabled (on); });
}

bool MVRendererManager::isEnabled (std::uint64_t id) const
{
    return askRenderer (*this, id, false, [] (const MVPatchRenderer& renderer) { return renderer.isEnabled(); });
}

int MVRendererManager::setInputMuted (std::uint64_t id, bool on)
{
    return withRenderer (id, [=] (MVPatchRenderer& renderer) { renderer.setInputMuted (on); });
}

int MVRendererManager::setOutputMuted (std::uint64_t id, bool on)
{
    return withRenderer (id, [=] (MVPatchRenderer& renderer) { renderer.setOutputMuted (on); });
}

bool MVRendererManager::isInputMuted (std::uint64_t id) const
{
    return askRenderer (*this, id, false, [] (const MVPatchRenderer& renderer) { return renderer.isInputMuted(); });
}

bool MVRendererManager::isOutputMuted (std::uint64_t id) const
{
    return askRenderer (*this, id, false, [] (const MVPatchRenderer& renderer) { return renderer.isOutputMuted(); });
}

int MVRendererManager::resetRenderer (std::uint64_t id)
{
    return withRenderer (id, [] (MVPatchRenderer& renderer) { renderer.reset(); });
}

// These three take their time and belong to the thread that alone destroys renderers, so no lock is held meanwhile.

int MVRendererManager::loadPatch (std::uint64_t id, int layer, MVSmartPtr<MVObject>& data)
{
    MVPatchRenderer* const renderer = find (id);
    return renderer != nullptr ? renderer->loadPatch (layer, data) : int { resultUnknownId };
}

int MVRendererManager::advanceTransition (std::uint64_t id, int fadeBlocks, bool notify)
{
    MVPatchRenderer* const renderer = find (id);
    return renderer != nullptr ? renderer->advanceTransition (fadeBlocks, notify) : int { resultUnknownId };
}

int MVRendererManager::unloadPatch (std::uint64_t id, int layer, bool notify)
{
    MVPatchRenderer* const renderer = find (id);
    return renderer != nullptr ? renderer->unloadPatch (layer, notify) : int { resultUnknownId };
}

MVSmartPtr<MVRiffPacker> MVRendererManager::getPatchData (std::uint64_t id, int layer)
{
    return askRenderer (*this, id, MVSmartPtr<MVRiffPacker>(),
                        [=] (MVPatchRenderer& renderer) { return renderer.getPatchData (layer); });
}

MVSmartPtr<MVString> MVRendererManager::getLayerName (std::uint64_t id, int layer)
{
    return askRenderer (*this, id, MVSmartPtr<MVString>(),
                        [=] (const MVPatchRenderer& renderer) { return renderer.getLayerName (layer); });
}

int MVRendererManager::numPatchLayers (std::uint64_t id) const
{
    return askRenderer (*this, id, 0, [] (const MVPatchRenderer& renderer) { return renderer.numPatchLayers(); });
}

int MVRendererManager::setOperatorAttribute (std::uint64_t id, int layer, std::uint64_t nodeId, int attribute, int kind,
                                             double value, MVDataBlock* data)
{
    return askRenderer (*this, id, int { resultUnknownId },
                        [=] (MVPatchRenderer& renderer)
                        {
                            return renderer.isTransitionRunning()
                                       ? int { resultNotEnabled }
                                       : renderer.setOperatorAttribute (layer, nodeId, attribute, kind, value, data);
                        });
}

std::uint16_t MVRendererManager::getPitchControlId (std::uint64_t id) const
{
    return askRenderer (*this, id, std::uint16_t {},
                        [] (const MVPatchRenderer& renderer) { return renderer.getPitchControlId(); });
}

std::uint16_t MVRendererManager::getVolumeControlId (std::uint64_t id) const
{
    return askRenderer (*this, id, std::uint16_t {},
                        [] (const MVPatchRenderer& renderer) { return renderer.getVolumeControlId(); });
}

std::uint16_t MVRendererManager::getLayerFadeControlId (std::uint64_t id, int layer) const
{
    return askRenderer (*this, id, std::uint16_t {},
                        [=] (const MVPatchRenderer& renderer) { return renderer.getLayerFadeControlId (layer); });
}

std::uint16_t MVRendererManager::getParameterControlId (std::uint64_t id, int index) const
{
    return askRenderer (*this, id, std::uint16_t {},
                        [=] (const MVPatchRenderer& renderer) { return renderer.getParameterControlId (index); });
}

int MVRendererManager::numParameterControls (std::uint64_t id) const
{
    return askRenderer (*this, id, 0, [] (const MVPatchRenderer& renderer) { return renderer.numParameterControls(); });
}

int MVRendererManager::setVolumeControl (std::uint64_t id, std::uint16_t controlId)
{
    return withRenderer (id, [=] (MVPatchRenderer& renderer) { renderer.setVolumeControl (controlId); });
}

int MVRendererManager::setLayerFadeControl (std::uint64_t id, int layer, std::uint16_t controlId)
{
    return withRenderer (id, [=] (MVPatchRenderer& renderer) { renderer.setLayerFadeControl (layer, controlId); });
}

int MVRendererManager::setParameterControl (std::uint64_t id, int index, std::uint16_t controlId)
{
    return withRenderer (id, [=] (MVPatchRenderer& renderer) { renderer.setParameterControl (index, controlId); });
}

bool MVRendererManager::isParameterInUse (std::uint64_t id, int index) const
{
    return askRenderer (*this, id, false,
                        [=] (const MVPatchRenderer& renderer) { return renderer.isParameterInUse (index); });
}

int MVRendererManager::numActiveParts (std::uint64_t id) const
{
    return askRenderer (*this, id, 0, [] (const MVPatchRenderer& renderer) { return renderer.numActiveParts(); });
}

std::uint64_t MVRendererManager::createPatchProxy (std::uint64_t id, int layer)
{
    return askRenderer (*this, id, std::uint64_t {},
                        [=] (MVPatchRenderer& renderer) { return renderer.createPatchProxy (layer); });
}

std::shared_ptr<const MVPolyPatch_proxy> MVRendererManager::acquirePatchProxy (std::uint64_t proxyId)
{
    const MVScopedLock lock (structureLock);
    std::shared_ptr<const MVPolyPatch_proxy> found;
    forEachRenderer (
        [&] (MVPatchRenderer& renderer)
        {
            if (found == nullptr)
                found = renderer.acquirePatchProxy (proxyId);
        });
    return found;
}

bool MVRendererManager::releasePatchProxy (std::uint64_t proxyId)
{
    const MVScopedLock lock (structureLock);
    bool released = false;
    forEachRenderer ([&] (MVPatchRenderer& renderer) { released = released || renderer.releasePatchProxy (proxyId); });
    return released;
}

} // namespace morvanelab
