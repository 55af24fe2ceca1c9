// SPDX-License-Identifier: GPL-3.0-or-later
// The full preset of MVRendererManager: every renderer with all its patches as one chunk tree.
#include "engine/MVPatchRenderer.h"
#include "engine/MVRendererManager.h"
#include "foundation/MVChunks.h"
#include "foundation/MVException.h"
#include "foundation/MVLog.h"
#include "foundation/MVResult.h"

#include <exception>
#include <vector>

namespace morvanelab
{

namespace
{

constexpr std::uint32_t tagLayerFade = fourCC ("xfid");
constexpr std::uint32_t tagParameter = fourCC ("vrid");
constexpr std::uint32_t tagPatch = fourCC ("ptch");

/** Every identifier in the chunks of that tag, whether they hold one each or several. */
std::vector<std::uint16_t> storedControlIds (const MVRiffPacker& form, std::uint32_t tag)
{
    std::vector<std::uint16_t> ids;

    for (int i = 0; i < form.childCount(); ++i)
        if (const auto chunk = form.childAt (i); chunk && chunk->getChunkId() == tag)
            for (int position = 0; position < chunk->readablePayload() / 2; ++position)
                ids.push_back (chunkNumber<std::uint16_t> (chunk, position).value_or (0));

    return ids;
}

} // namespace

// Writing ---------------------------------------------------------------------------------------------------------

MVSmartPtr<MVRiffPacker> MVRendererManager::saveFullPresetRiff()
{
    const MVScopedLock lock (structureLock);
    auto root = makeSmart<MVRiffPacker> (fourCC ("rndm"));
    addVersionChunk (*root);
    forEachRenderer ([&] (MVPatchRenderer& renderer) { root->addChild (saveRenderer (renderer)); });
    return root;
}

MVSmartPtr<MVRiffPacker> MVRendererManager::saveRenderer (MVPatchRenderer& renderer)
{
    auto form = makeSmart<MVRiffPacker> (fourCC ("rndr"));
    const int numLayers = renderer.numPatchLayers();
    addChunk (*form, fourCC ("id  "), renderer.getId());
    addChunk (*form, fourCC ("subc"), std::int32_t { numLayers });
    addChunk (*form, fourCC ("maxp"), std::int32_t { renderer.getNumVoices() });

    for (int layer = 0; layer < numLayers; ++layer)
    {
        auto patch = renderer.getPatchData (layer);
        if (! patch)
            patch = makeSmart<MVRiffPacker> (tagPatch);
        form->addChild (patch);
    }

    for (int layer = 0; layer < numLayers; ++layer)
        addChunk (*form, tagLayerFade, static_cast<std::uint16_t> (renderer.getLayerFadeControlId (layer)));
    for (int index = 0; index < renderer.numParameterControls(); ++index)
        addChunk (*form, tagParameter, static_cast<std::uint16_t> (renderer.getParameterControlId (index)));

    addChunk (*form, fourCC ("vmid"), static_cast<std::uint16_t> (renderer.getVolumeControlId()));
    addChunk (*form, fourCC ("mode"), std::int32_t { renderer.getPlayMode() });
    return form;
}

// Reading ---------------------------------------------------------------------------------------------------------

int MVRendererManager::loadFullPresetRiff (MVSmartPtr<MVRiffPacker>& riff)
{
    int result = resultEmptyData;

    if (riff)
    {
        try
        {
            result = loadRenderers (*riff);
        }
        catch (const std::bad_alloc&)
        {
            result = resultNoResources;
        }
    }

    if (result != resultDone)
        removeAllRenderers (false);

    postThreadMsg (messageHousekeeping, threadCategoryEvent, housekeepingPriority);
    riff.clear();
    return result;
}

int MVRendererManager::loadRenderers (const MVRiffPacker& riff)
{
    // A newer tree's identifiers may mean something else: the renderers then keep those they were given.
    const auto version = storedVersionCode (riff);
    const bool restoreControlIds = version && *version <= currentVersionCode;

    for (int i = 0; i < riff.childCount(); ++i)
        if (const auto form = riff.childAt (i); form && form->getChunkId() == fourCC ("rndr"))
            if (const int result = loadRenderer (*form, restoreControlIds); result != resultDone)
                return result;

    return resultDone;
}

int MVRendererManager::loadRenderer (const MVRiffPacker& form, bool restoreControlIds)
{
    const auto numVoices = childNumber<std::int32_t> (form, fourCC ("maxp"));
    if (! numVoices || ! childNumber<std::int32_t> (form, fourCC ("subc")))
        return resultEmptyData;

    const std::uint64_t storedId = childNumber<std::uint64_t> (form, fourCC ("id  ")).value_or (0);
    MVPatchRenderer* const renderer = find (createRenderer (0, *numVoices, true, storedId, false));
    if (renderer == nullptr)
        return resultEmptyData;

    if (restoreControlIds)
    {
        const MVScopedLock lock (structureLock);
        int index = 0;
        for (const std::uint16_t id : storedControlIds (form, tagParameter))
            renderer->setParameterControl (index++, id);
        if (const auto volume = childNumber<std::uint16_t> (form, fourCC ("vmid")))
            renderer->setVolumeControl (*volume);
    }

    renderer->setPlayMode (childNumber<std::int32_t> (form, fourCC ("mode")).value_or (MVPatchRenderer::playMono));
    return loadLayers (form, *renderer, restoreControlIds);
}

int MVRendererManager::loadLayers (const MVRiffPacker& form, MVPatchRenderer& renderer, bool restoreControlIds)
{
    const std::vector<std::uint16_t> fadeIds = storedControlIds (form, tagLayerFade);
    int layer = 0;

    for (int i = 0; i < form.childCount(); ++i)
    {
        const auto patch = form.childAt (i);
        if (! patch || patch->getChunkId() != tagPatch)
            continue;

        // A tree with a version alone is an empty layer.
        if (patch->childCount() > 1)
        {
            if (const int result = loadStoredPatch (renderer, layer, patch); result != resultDone)
            {
                mvLog ("LOAD", "morvanelab::MVRendererManager::loadFullPresetRiff",
                       "Error:  Bad patch data in preset.");
                return result;
            }
        }

        if (restoreControlIds && layer < static_cast<int> (fadeIds.size()))
        {
            const MVScopedLock lock (structureLock);
            renderer.setLayerFadeControl (layer, fadeIds[static_cast<std::size_t> (layer)]);
        }
        ++layer;
    }

    return resultDone;
}

int MVRendererManager::loadStoredPatch (MVPatchRenderer& renderer, int layer, const MVSmartPtr<MVRiffPacker>& patch)
{
    MVSmartPtr<MVObject> data = patch;

    try
    {
        return renderer.loadPatch (layer, data);
    }
    catch (const MVException& error)
    {
        return static_cast<int> (error.getCode());
    }
}

} // namespace morvanelab
