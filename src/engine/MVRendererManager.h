// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/MVPatchLoadTracker.h"
#include "foundation/MVDataBlock.h"
#include "foundation/MVEvent.h"
#include "foundation/MVEventHandler.h"
#include "foundation/MVLocker.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"
#include "foundation/MVString.h"
#include "foundation/MVVector.h"
#include "operators/MVRenderEngineAttributes.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace morvanelab
{

class MVControlManager;
class MVEventManager;
class MVPatchRenderer;
class MVPolyPatch_proxy;

/** What an event does to the patches. Its target is the manager; its own identity (setId) is that of the renderer
    it concerns. Events are posted in ordered mode, since in the coalescing one notes or loads of several layers
    would drive one another out. */
enum MVRendererEvent_t : std::uint32_t
{
    eventLoadPatch = 5,      ///< ints: layer, fade in blocks; object A: the data, none to unload
    eventUnloadPatch = 6,    ///< ints: layer, fade in blocks
    eventLoadFullPreset = 7, ///< double: fade in seconds; object A: an MVRiffPacker. No renderer
    eventStartMonoVoice = 8,
    eventKillVoices = 9,
    eventNoteOn = 10,  ///< int: key; double: velocity
    eventNoteOff = 11, ///< int: key
    eventAllNotesOff = 12,
    eventDestroyRenderer = 13,
    eventKillAllVoices = 14, ///< every renderer
    eventResetRenderer = 15,
    eventResetAll = 16,            ///< every renderer
    eventSetPlayMode = 17,         ///< int: mode
    eventAdvanceTransition = 18,   ///< ints: fade in blocks, whether to tell the patch listeners
    eventSetOperatorAttribute = 19 ///< ints: node, kind, attribute, layer; double: value; object A: a block or none
};

/** Owns the renderers of an engine, mixes them, and is the handler through which changes to patches arrive.

    Operations that take a renderer's identity answer 12, 0 or nothing for an unknown one.

    Threads and locks. render runs on the audio thread, with the audio lock held by its caller. handleEvent runs on
    the event thread, which alone loads, unloads and (while it runs) destroys. Everything else may come from any
    thread but the audio thread; through MVRenderEngine it comes with the API lock held. The set of renderers
    changes only under structureLock and the audio lock: other threads hold structureLock while they use a
    renderer, the audio thread the audio lock, and the event thread neither while it works on one. Control values
    are taken and given back under structureLock too. Lock order: API lock, structureLock, a renderer's own locks,
    audio lock. */
class MVRendererManager : public MVEventHandler
{
public:
    static constexpr int maxRenderers = 64;
    static constexpr int maxVoices = 64;
    static constexpr int maxOutputChannels = 8;
    static constexpr int maxInputChannels = 8;

    using ListenerFunc = void (*) (void*, std::int64_t, std::uint64_t, std::uint64_t);

    /** None is owned; all must outlive the manager. */
    MVRendererManager (MVEventManager* eventManager, MVRenderEngineAttributes* attributes,
                       MVControlManager* controlManager);
    ~MVRendererManager() override;
    MVRendererManager (const MVRendererManager&) = delete;

    const char* className() const override { return "MVRendererManager"; }

    // Life ----------------------------------------------------------------------------------------------------

    /** Passed to every renderer, which takes its control values or gives them back. */
    void setActive (bool on) override;
    /** Takes every renderer's voices back to their initial sound. */
    void reset() override;
    /** Passed to every renderer: allocates or frees what a block needs. */
    virtual void prepare (bool on);
    int handleEvent (MVEvent* event) override;
    /** Whether the calling thread is the one that handled the last event. */
    bool isOnHandlerThread() const { return handlerThread.load() == std::this_thread::get_id(); }
    /** Message 0: tells the listeners that the set of renderers has changed. */
    void handleThreadMsg (std::uint32_t message) override;

    // The set of renderers ------------------------------------------------------------------------------------

    /** A new, active renderer of 1 to 64 voices. Returns its identity, or 0 if there is no room (64 renderers) or
        the number of voices is out of range. An id that is not 0 and not taken becomes its identity. */
    virtual std::uint64_t createRenderer (int unused, int numVoices, bool flagA, std::uint64_t id, bool notify);
    /** 1 or 12. Must not meet a load on that renderer: while the event thread runs, post eventDestroyRenderer. */
    virtual int destroyRenderer (std::uint64_t id, bool notify);
    virtual void destroyAllRenderers();
    virtual void removeAllRenderers (bool notify);
    virtual int numRenderers() const;
    /** The identity at an index of the slots; 0 for a free slot. */
    virtual std::uint64_t rendererIdAt (int index) const;
    /** -1 if unknown. */
    virtual int rendererIndex (std::uint64_t id) const;
    int numSlots() const;
    /** Called with (context, 0, 0, 0) after each change of the set of renderers, on the thread that made it. */
    void addListener (ListenerFunc function, void* context);
    void removeListener (ListenerFunc function, void* context);

    // Audio thread --------------------------------------------------------------------------------------------

    /** Mixes one block of all enabled renderers into out, which is cleared first. Each renderer enters with a
        linear ramp from its last gain to the value of its volume control; a new one starts at 0. At most 256
        samples, 8 channels a side. Allocates nothing. The caller holds the audio lock. */
    virtual void render (int numIn, const double* const* in, int numOut, double* const* out, int numSamples,
                         std::int64_t extra);

    // Keyboard ------------------------------------------------------------------------------------------------

    /** On every renderer, from the first to the last. Velocity 0 to 1. */
    virtual void noteOnAll (int key, double velocity);
    virtual void noteOffAll (int key);

    // Full presets --------------------------------------------------------------------------------------------

    /** Every renderer with all its patches as a new tree "rndm". */
    virtual MVSmartPtr<MVRiffPacker> saveFullPresetRiff();
    /** Adds the renderers of such a tree: 1, 14 for a damaged one, or the code of a patch that would not load,
        after which no renderer is left. A tree of version 1.4.0 or older brings its control identifiers along.
        Empties the caller's pointer. Not for a running engine, except on the event thread. */
    virtual int loadFullPresetRiff (MVSmartPtr<MVRiffPacker>& riff);

    // Forwarders ----------------------------------------------------------------------------------------------

    virtual int noteOn (std::uint64_t id, int key, double velocity);
    virtual int noteOff (std::uint64_t id, int key);
    virtual int startMonoVoice (std::uint64_t id);
    virtual int killAllVoices (std::uint64_t id);
    virtual int setPlayMode (std::uint64_t id, int mode);
    virtual int getPlayMode (std::uint64_t id) const;
    using MVObject::isEnabled;
    using MVObject::setEnabled;
    virtual int setEnabled (std::uint64_t id, bool on);
    virtual bool isEnabled (std::uint64_t id) const;
    virtual int setInputMuted (std::uint64_t id, bool on);
    virtual int setOutputMuted (std::uint64_t id, bool on);
    virtual bool isInputMuted (std::uint64_t id) const;
    virtual bool isOutputMuted (std::uint64_t id) const;
    int resetRenderer (std::uint64_t id);

    /** Loads into a layer on the calling thread, which must drive the transition to its end: 2 means that
        advanceTransition is to be called until it returns another code. May throw as the patch reader does.
        These three belong to the event thread, or to any one thread while that does not run. */
    virtual int loadPatch (std::uint64_t id, int layer, MVSmartPtr<MVObject>& data);
    int advanceTransition (std::uint64_t id, int fadeBlocks, bool notify);
    /** 1, 3 while a load runs, 4 while the layer sounds. layer below 0 means all. */
    virtual int unloadPatch (std::uint64_t id, int layer, bool notify);
    /** The patch of a layer as a new tree; an empty pointer if there is none. */
    virtual MVSmartPtr<MVRiffPacker> getPatchData (std::uint64_t id, int layer);
    virtual MVSmartPtr<MVString> getLayerName (std::uint64_t id, int layer);
    virtual int numPatchLayers (std::uint64_t id) const;
    /** 19 while a transition is under way on that renderer. */
    virtual int setOperatorAttribute (std::uint64_t id, int layer, std::uint64_t nodeId, int attribute, int kind,
                                      double value, MVDataBlock* data);

    /** Control identifiers; 0 where there is none. */
    virtual std::uint16_t getPitchControlId (std::uint64_t id) const;
    virtual std::uint16_t getVolumeControlId (std::uint64_t id) const;
    virtual std::uint16_t getLayerFadeControlId (std::uint64_t id, int layer) const;
    virtual std::uint16_t getParameterControlId (std::uint64_t id, int index) const;
    virtual int numParameterControls (std::uint64_t id) const;
    virtual int setVolumeControl (std::uint64_t id, std::uint16_t controlId);
    virtual int setLayerFadeControl (std::uint64_t id, int layer, std::uint16_t controlId);
    virtual int setParameterControl (std::uint64_t id, int index, std::uint16_t controlId);
    bool isParameterInUse (std::uint64_t id, int index) const;
    int numActiveParts (std::uint64_t id) const;

    /** Snapshots of patches, see MVPatchRenderer. 0 for an unknown renderer or layer. */
    std::uint64_t createPatchProxy (std::uint64_t id, int layer);
    /** Looked for in every renderer: null, or false, if none has one of that identity. */
    std::shared_ptr<const MVPolyPatch_proxy> acquirePatchProxy (std::uint64_t proxyId);
    bool releasePatchProxy (std::uint64_t proxyId);

    /** Calls use with the renderer while nothing can destroy it. 1 or 12. Not for the audio thread. */
    int withRenderer (std::uint64_t id, const std::function<void (MVPatchRenderer&)>& use) const;

    // Loads on their way --------------------------------------------------------------------------------------

    /** Whole blocks that cover a time, an hour at most. */
    int fadeBlocksFor (double seconds) const;
    /** Posts eventLoadPatch or, with empty data, eventUnloadPatch; takes over the reference. Of several requests
        for one layer that have not begun only the newest is carried out. While a fade runs on the renderer the
        request waits in the queue. 6, 12 or 22; the completion is called after a 6. */
    int postLoad (std::uint64_t id, int layer, int fadeBlocks, MVSmartPtr<MVObject>& data,
                  MVPatchLoadCompletion completion, void* contextA, void* contextB);
    int postFullPreset (MVSmartPtr<MVRiffPacker>& riff, double fadeSeconds, MVPatchLoadCompletion completion,
                        void* contextA, void* contextB);
    /** Posts that a transition begun by loadPatch is carried on. Event thread. */
    int postTransition (std::uint64_t id);
    /** Posts an event without arguments: 6 or 22. */
    int postPlain (MVRendererEvent_t type, std::uint64_t id);

    const MVPatchLoadTracker& loads() const { return tracker; }
    /** Ends the account of all requests when the event thread has stopped; see MVPatchLoadTracker. */
    std::vector<MVPatchLoadTracker::Entry> takeLoads() { return tracker.takeAll(); }
    /** Whether an old patch or preset is still sounding out, which only further blocks can end. */
    bool isFadeSounding() const;

private:
    /** The thread message that tells the listeners of a changed set of renderers. */
    static constexpr std::uint32_t messageHousekeeping = 0;
    static constexpr int housekeepingPriority = 3;

    struct Listener
    {
        ListenerFunc function = nullptr;
        void* context = nullptr;

        bool operator== (const Listener&) const = default;
    };

    MVPatchRenderer* find (std::uint64_t id) const;
    MVPatchRenderer* rendererAt (int index) const;
    void mixIn (const MVPatchRenderer& renderer, int index, int channels, double* const* out, int numSamples);
    void callListeners();
    void postPruneMappings();
    void insertRenderer (std::unique_ptr<MVPatchRenderer> renderer);
    std::unique_ptr<MVPatchRenderer> detachRenderer (std::uint64_t id);

    template <typename Fill>
    int post (MVRendererEvent_t type, std::uint64_t id, Fill fill);
    int handleLoad (MVEvent& event);
    int handleUnload (MVEvent& event, MVPatchRenderer& renderer);
    int handleTransition (MVEvent& event);
    int handleFullPreset (MVEvent& event);
    int handleRendererEvent (MVEvent& event);
    void handleOneRenderer (MVEvent& event, MVPatchRenderer& renderer);
    void handleAttributes (MVEvent& event, MVPatchRenderer& renderer);
    bool isSilentForPreset (double fadeSeconds);
    int complete (MVEvent& event, int result, const std::string& message = {});
    /** From the first slot to the last. */
    template <typename Use>
    void forEachRenderer (Use use) const
    {
        for (int i = 0; i < numSlots(); ++i)
            if (MVPatchRenderer* const renderer = rendererAt (i); renderer != nullptr)
                use (*renderer);
    }

    static MVSmartPtr<MVRiffPacker> saveRenderer (MVPatchRenderer& renderer);
    static int loadStoredPatch (MVPatchRenderer& renderer, int layer, const MVSmartPtr<MVRiffPacker>& patch);
    int loadRenderers (const MVRiffPacker& riff);
    int loadRenderer (const MVRiffPacker& chunk, bool restoreControlIds);
    int loadLayers (const MVRiffPacker& chunk, MVPatchRenderer& renderer, bool restoreControlIds);

    MVVector<MVPatchRenderer*> renderers;
    MVVector<double> rendererGains;
    MVEventManager* eventManager;
    MVControlManager* controlManager;
    std::vector<Listener> listeners;
    std::array<std::array<double, blockFrames>, maxOutputChannels> tempBlocks {};
    std::array<double*, maxOutputChannels> tempOutputs {};
    std::array<const double*, maxInputChannels> mutedInputs {};
    std::array<double*, maxOutputChannels> mutedOutputs {};
    MVRenderEngineAttributes* attributes;

    mutable MVLocker structureLock;
    MVPatchLoadTracker tracker;
    std::atomic<bool> presetFading { false };
    std::atomic<std::thread::id> handlerThread {};
    bool prepared = false;
};

} // namespace morvanelab
