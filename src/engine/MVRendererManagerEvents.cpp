// SPDX-License-Identifier: GPL-3.0-or-later
// The events of MVRendererManager: posting them, and handling them on the event thread.
#include "control/MVMidiManager.h"
#include "engine/MVPatchRenderer.h"
#include "engine/MVRendererManager.h"
#include "foundation/MVEventManager.h"
#include "foundation/MVException.h"
#include "foundation/MVLog.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <cmath>
#include <new>

namespace morvanelab
{

namespace
{

/** Integers of a load event. The second, which tells the listeners of a transition, is set when it becomes one. */
enum LOAD_ARG_t : int
{
    argLayer = 0,
    argFade = 1,
    argTicket = 2
};

constexpr int argTransitionFade = 0;
constexpr int argTransitionNotify = 1;

int intArg (const MVEvent& event, int index) { return static_cast<int> (event.getIntArg (index)); }

/** What the user is told of a load that failed by code. */
std::string messageFor (int result)
{
    switch (result)
    {
        case resultDone:
        case resultPosted:
            return {};
        case resultNoResources:
            return MVPatchRenderer::patchMemoryText;
        case resultFailed:
        case resultEmptyData:
            return "Error:  Invalid patch data.";
        default:
            return "Error:  Unknown error loading patch.";
    }
}

/** Loads, turning what is thrown into a code and a text. */
int loadQuietly (MVPatchRenderer& renderer, int layer, MVSmartPtr<MVObject> data, std::string& message)
{
    try
    {
        const int result = renderer.loadPatch (layer, data);
        message = messageFor (result);
        return result;
    }
    catch (const MVException& error)
    {
        message = error.text();
        return static_cast<int> (error.getCode());
    }
    catch (const std::bad_alloc&)
    {
        message = messageFor (resultNoResources);
        return resultNoResources;
    }
    catch (const std::exception&)
    {
        message = messageFor (resultFailed);
        return resultFailed;
    }
}

} // namespace

int MVRendererManager::fadeBlocksFor (double seconds) const
{
    constexpr double longestFade = 3600.0;
    return truncToInt (std::ceil (limitTo (seconds, 0.0, longestFade) * attributes->sampleRate * (1.0 / blockFrames)));
}

// Posting ---------------------------------------------------------------------------------------------------------

template <typename Fill>
int MVRendererManager::post (MVRendererEvent_t type, std::uint64_t id, Fill fill)
{
    MVEvent* const event = eventManager->allocateEvent();
    if (event == nullptr)
        return resultNoResources;

    event->reset();
    event->setType (type);
    event->setTargetId (getId());
    event->setId (id);
    event->setQueueMode (queueModeOrdered);
    event->setThreadCategory (threadCategoryEvent);
    fill (*event);
    eventManager->postEvent (threadCategoryEvent, event);
    return resultPosted;
}

int MVRendererManager::postPlain (MVRendererEvent_t type, std::uint64_t id)
{
    return post (type, id, [] (MVEvent&) {});
}

/** Mappings of control values that were given back are to go. The event has no target, so that it reaches whoever
    keeps mappings. */
void MVRendererManager::postPruneMappings()
{
    if (MVEvent* const event = eventManager->allocateEvent(); event != nullptr)
    {
        event->reset();
        event->setType (midiEventPruneMappings);
        event->setQueueMode (queueModeOrdered);
        event->setThreadCategory (threadCategoryEvent);
        eventManager->postEvent (threadCategoryEvent, event);
    }
}

int MVRendererManager::postTransition (std::uint64_t id)
{
    return post (eventAdvanceTransition, id, [] (MVEvent& event) { event.setIntArg (argTransitionNotify, 1); });
}

int MVRendererManager::postLoad (std::uint64_t id, int layer, int fadeBlocks, MVSmartPtr<MVObject>& data,
                                 MVPatchLoadCompletion completion, void* contextA, void* contextB)
{
    // Tickets and events keep the same order.
    const MVScopedLock lock (structureLock);
    if (find (id) == nullptr)
        return resultUnknownId;

    const std::int64_t ticket = tracker.begin (id, layer, completion, contextA, contextB);
    const int result = post (data ? eventLoadPatch : eventUnloadPatch, id,
                             [&] (MVEvent& event)
                             {
                                 event.setIntArg (argLayer, layer);
                                 event.setIntArg (argFade, fadeBlocks);
                                 event.setIntArg (argTicket, ticket);
                                 event.setObjectA (data);
                             });

    if (result != resultPosted)
        tracker.cancel (ticket);
    return result;
}

int MVRendererManager::postFullPreset (MVSmartPtr<MVRiffPacker>& riff, double fadeSeconds,
                                       MVPatchLoadCompletion completion, void* contextA, void* contextB)
{
    const MVScopedLock lock (structureLock);
    const std::int64_t ticket = tracker.begin (0, 0, completion, contextA, contextB);
    const int result = post (eventLoadFullPreset, 0,
                             [&] (MVEvent& event)
                             {
                                 event.setDoubleArg (0, fadeSeconds);
                                 event.setIntArg (argTicket, ticket);
                                 event.setObjectA (riff);
                             });

    if (result != resultPosted)
        tracker.cancel (ticket);
    return result;
}

// Handling --------------------------------------------------------------------------------------------------------

int MVRendererManager::handleEvent (MVEvent* event)
{
    if (event == nullptr)
        return resultDone;

    handlerThread.store (std::this_thread::get_id());

    switch (event->getType())
    {
        case eventLoadPatch:
        case eventUnloadPatch:
            return handleLoad (*event);
        case eventLoadFullPreset:
            return handleFullPreset (*event);
        case eventAdvanceTransition:
            return handleTransition (*event);
        case eventKillAllVoices:
            forEachRenderer ([] (MVPatchRenderer& renderer) { renderer.killAllVoices(); });
            return resultDone;
        case eventResetAll:
            forEachRenderer ([] (MVPatchRenderer& renderer) { renderer.reset(); });
            return resultDone;
        default:
            return handleRendererEvent (*event);
    }
}

/** Tells whoever posted the event how it ended. The event is then done with. */
int MVRendererManager::complete (MVEvent& event, int result, const std::string& message)
{
    const std::int64_t ticket = event.getIntArg (argTicket);
    event.complete (result, message.empty() ? nullptr : message.c_str());
    tracker.finish (ticket, result, message);
    return resultDone;
}

int MVRendererManager::handleLoad (MVEvent& event)
{
    if (tracker.isSuperseded (event.getIntArg (argTicket)))
        return complete (event, resultPosted);

    MVPatchRenderer* const renderer = find (event.getId());
    if (renderer == nullptr)
        return complete (event, resultUnknownId, messageFor (resultUnknownId));

    // A fade that runs is driven by an event that waits in the same queue.
    if (renderer->isTransitionRunning())
        return resultBusy;
    if (event.getType() == eventUnloadPatch || ! event.getObjectA())
        return handleUnload (event, *renderer);

    std::string message;
    const int result = loadQuietly (*renderer, intArg (event, argLayer), event.getObjectA(), message);

    if (result == resultBusy)
        return resultBusy;
    if (result != resultUnderWay)
        return complete (event, result, message);

    event.setType (eventAdvanceTransition);
    event.setIntArg (argTransitionNotify, 1);
    tracker.beginFade (event.getIntArg (argTicket), true);
    return resultBusy;
}

int MVRendererManager::handleUnload (MVEvent& event, MVPatchRenderer& renderer)
{
    const int result = renderer.unloadPatch (intArg (event, argLayer), true);

    if (result == resultLayerInUse)
    {
        renderer.setLayerPlaying (intArg (event, argLayer), intArg (event, argFade), false);
        tracker.beginFade (event.getIntArg (argTicket), false);
    }
    if (result == resultLayerInUse || result == resultBusy)
        return resultBusy;
    return complete (event, result, messageFor (result));
}

int MVRendererManager::handleTransition (MVEvent& event)
{
    MVPatchRenderer* const renderer = find (event.getId());
    if (renderer == nullptr)
        return complete (event, resultUnknownId, messageFor (resultUnknownId));

    const int result =
        renderer->advanceTransition (intArg (event, argTransitionFade), event.getIntArg (argTransitionNotify) != 0);
    if (result == resultUnderWay || result == resultBusy)
        return resultBusy;
    return complete (event, resultDone);
}

int MVRendererManager::handleFullPreset (MVEvent& event)
{
    if (tracker.isSuperseded (event.getIntArg (argTicket)))
        return complete (event, resultPosted);

    auto riff = event.getObjectA() ? event.getObjectA().castTo<MVRiffPacker>() : MVSmartPtr<MVRiffPacker>();
    if (! riff)
    {
        mvLog ("LOAD", "morvanelab::MVRendererManager::loadFullPreset",
               "loadFullPreset riff check reports garbage in.");
        return complete (event, resultEmptyData, messageFor (resultEmptyData));
    }

    if (! isSilentForPreset (event.getDoubleArg (0)))
        return resultBusy;

    removeAllRenderers (false);
    const int result = loadFullPresetRiff (riff);
    mvLog ("LOAD", "morvanelab::MVRendererManager::loadFullPreset",
           result == resultDone ? "loadFullPresetRiff succeeded." : "loadFullPresetRiff failed.");
    return complete (event, result, messageFor (result));
}

/** Whether every patch could be unloaded; what still sounds is made to fade out. */
bool MVRendererManager::isSilentForPreset (double fadeSeconds)
{
    const int fadeBlocks = fadeBlocksFor (fadeSeconds);
    bool silent = true;

    forEachRenderer (
        [&] (MVPatchRenderer& renderer)
        {
            const int result = renderer.unloadPatch (-1, true);
            if (result == resultLayerInUse)
                renderer.setLayerPlaying (-1, fadeBlocks, false);
            if (result == resultLayerInUse || result == resultBusy)
                silent = false;
        });

    presetFading.store (! silent);
    return silent;
}

int MVRendererManager::handleRendererEvent (MVEvent& event)
{
    if (event.getType() < eventStartMonoVoice || event.getType() > eventSetOperatorAttribute)
        return MVEventHandler::handleEvent (&event);

    if (MVPatchRenderer* const renderer = find (event.getId()); renderer != nullptr)
        handleOneRenderer (event, *renderer);
    return resultDone;
}

void MVRendererManager::handleOneRenderer (MVEvent& event, MVPatchRenderer& renderer)
{
    switch (event.getType())
    {
        case eventStartMonoVoice:
            renderer.startMonoVoice();
            break;
        case eventKillVoices:
        case eventAllNotesOff:
            renderer.killAllVoices();
            break;
        case eventNoteOn:
            renderer.noteOn (intArg (event, 0), event.getDoubleArg (0));
            break;
        case eventNoteOff:
            renderer.noteOff (intArg (event, 0));
            break;
        case eventDestroyRenderer:
            renderer.setEnabled (false);
            renderer.killAllVoices();
            renderer.reset();
            destroyRenderer (event.getId(), true);
            break;
        case eventResetRenderer:
            renderer.reset();
            break;
        case eventSetPlayMode:
            renderer.setPlayMode (intArg (event, 0));
            break;
        case eventSetOperatorAttribute:
            handleAttributes (event, renderer);
            break;
        default:
            break;
    }
}

void MVRendererManager::handleAttributes (MVEvent& event, MVPatchRenderer& renderer)
{
    if (renderer.isTransitionRunning())
        return;

    const auto data = event.getObjectA() ? event.getObjectA().castTo<MVDataBlock>() : MVSmartPtr<MVDataBlock>();
    renderer.setOperatorAttribute (intArg (event, 3), static_cast<std::uint64_t> (event.getIntArg (0)),
                                   intArg (event, 2), intArg (event, 1), event.getDoubleArg (0), data.get());
}

bool MVRendererManager::isFadeSounding() const
{
    const MVScopedLock lock (structureLock);
    const bool presetFades = presetFading.load();
    bool sounding = false;

    forEachRenderer (
        [&] (const MVPatchRenderer& renderer)
        {
            if (! renderer.isEnabled())
                return;

            const int backBuffer = renderer.numPatchLayers();
            sounding = sounding || renderer.isLayerSounding (backBuffer);
            for (int layer = 0; presetFades && layer < backBuffer; ++layer)
                sounding = sounding || renderer.isLayerSounding (layer);
        });

    return sounding;
}

} // namespace morvanelab
