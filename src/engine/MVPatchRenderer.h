// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDcFilter.h"
#include "engine/MVPatchListeners.h"
#include "engine/MVPolyPatch.h"
#include "engine/MVRendererPartDesc.h"
#include "engine/MVTransitionLock.h"
#include "foundation/MVEventHandler.h"
#include "foundation/MVLocker.h"
#include "foundation/MVSmartPtr.h"
#include "foundation/MVVector.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace morvanelab
{

class MVControlManager;
class MVControlValue;
class MVDataBlock;
class MVEventManager;
class MVPolyPatch_proxy;
class MVRenderEngineAttributes;
class MVRiffPacker;
class MVString;

/** One polyphonic instrument: a fixed pool of voices that all hold the same patches, the assignment of keys to
    voices, the mix of a block, and the exchange of patches with a cross-fade while audio keeps running.

    Locks, in this order: the transition lock, the voice lock, the audio lock of the attributes. The lock over the
    list of snapshots stands alone: nothing is locked or destroyed under it.
    - render runs on the audio thread under the audio lock, which its caller holds, and takes no other.
    - The note family, play mode and everything that changes a sounding layer take the audio lock themselves, for
      short. Callers that hold the engine's lock take it before.
    - The voice lock guards the voices' structure against the event and message threads.
    - The transition lock spans a whole load with its fade, so across several calls. It is a plain flag that no
      thread owns: whoever finds it taken gets a code and tries again, nobody waits for it.

    A transition is driven by one thread, the one that called loadPatch. On any other thread loadPatch returns 20
    and advanceTransition returns 3. When that thread has ended, abandonTransition brings the renderer back to
    rest; prepare and the destructor do so themselves. */
class MVPatchRenderer : public MVEventHandler
{
public:
    enum PLAY_MODE_t : int
    {
        playMono = 1,
        playPoly = 2, ///< as every value but the other two
        playOneShot = 3
    };

    static constexpr int maxTappedChannels = 8;
    /** What the patches of one renderer may take over all voices, in bytes. */
    static constexpr std::size_t patchMemoryLimit = std::size_t { 512 } * 1024 * 1024;
    /** What the user is told when loadPatch returns 22. */
    static constexpr const char* patchMemoryText = "Error:  Not enough resources to load patch.";

    /** Builds numVoices voices (at least 1). Nothing given is owned; the event manager may be null. */
    MVPatchRenderer (MVEventManager* manager, MVRenderEngineAttributes* renderAttributes, MVControlManager* controls,
                     int numVoices);
    /** The renderer is no longer rendered and no other thread is inside it. */
    ~MVPatchRenderer() override;
    MVPatchRenderer (const MVPatchRenderer&) = delete;

    const char* className() const override { return "MVPatchRenderer"; }
    /** Resets every voice and DC filter. Takes the voice lock and the audio lock. */
    void reset() override;
    /** True: makes the DC filters, takes the control identifiers (3 + parameters + layers), names them and hands
        them to the voices. False: gives them back. The audio is excluded. */
    void setActive (bool flag) override;

    /** Tells the state listeners; posted whenever notes start or end. Event thread. */
    void handleThreadMsg (std::uint32_t message) override;

    // Running -------------------------------------------------------------------------------------------------

    /** Ends a transition that nobody drives any more, then prepares every voice's buffers. The audio is
        excluded and the thread that drove the transition has ended or is the caller. */
    virtual void prepare (bool on);
    /** One block of numSamples, at most 256: clears the attributes' output channels in out, mixes the sounding
        voices into them, removes DC. Audio thread, audio lock held. No heap and no lock on the path of a
        sounding voice. */
    virtual void render (int numIn, const double* const* in, int numOut, double* const* out, int numSamples,
                         std::int64_t extra);
    /** In mono mode with nothing sounding: starts the one voice, silent. */
    virtual void startMonoVoice();
    virtual void killAllVoices();
    virtual void setInputMuted (bool on) { inputMuted.store (on, std::memory_order_relaxed); }
    virtual void setOutputMuted (bool on) { outputMuted.store (on, std::memory_order_relaxed); }
    virtual bool isInputMuted() const { return inputMuted.load (std::memory_order_relaxed); }
    virtual bool isOutputMuted() const { return outputMuted.load (std::memory_order_relaxed); }
    /** Layers that can be addressed by a patch: all but the back buffer. */
    virtual int numPatchLayers() const { return scratchLayer; }
    virtual int getNumVoices() const { return static_cast<int> (voices.size()); }
    /** Lets listeners, taps and operator monitors be served or not. */
    virtual void setNotifyEnabled (bool on);
    virtual int countLoadedLayers() const;

    // Patches -------------------------------------------------------------------------------------------------

    /** Loads a patch into a layer and takes over the reference. Returns 1 when the new patch plays, 2 when the
        fade from the old one has begun (advanceTransition carries it on), else the patch that was there plays on
        untouched and the code says why: 3 try later, 8 no such layer, 9 no patch in the data, 14 no data,
        20 a transition is running, 22 more memory than patchMemoryLimit (patchMemoryText).
        Throws MVException for badly structured data, after everything was put back in order.
        Event or message thread. */
    virtual int loadPatch (int layer, MVSmartPtr<MVObject>& data);
    /** Empties a layer, or with a negative number all patch layers. Returns 1, 3 if a transition is running, 4 if
        the layer still sounds (stop it with setLayerPlaying and try again). */
    virtual int unloadPatch (int layer, bool notify);
    virtual bool isLayerLoaded (int layer) const;
    /** Whether any voice's layer is not stopped. */
    virtual bool isLayerPlaying (int layer) const;
    /** The layer's patch as a new tree, empty if it has none. */
    virtual MVSmartPtr<MVRiffPacker> getPatchData (int layer);
    /** Whether a parameter control drives an input of a playing patch; false out of range. Any thread. */
    virtual bool isParameterInUse (int index) const;
    /** A renderer that is not enabled is not rendered and loads without a fade. Independent of the active flag.
        Returns 1. */
    virtual int setEnabled (bool on);
    virtual bool isEnabled() const { return renderEnabled.load (std::memory_order_relaxed); }
    virtual void setFlagA (bool on) { flagA.store (on, std::memory_order_relaxed); }
    virtual bool getFlagA() const { return flagA.load (std::memory_order_relaxed); }

    // Notes ---------------------------------------------------------------------------------------------------

    /** Starts a note: velocity 0 to 1. Polyphonic: takes a free voice; with none the note is dropped. Mono: the
        one voice gets the key. */
    virtual void noteOn (int key, double velocity);
    /** Polyphonic: releases the newest part with that key. Mono: silences the voice if it plays that key. */
    virtual void noteOff (int key);
    /** Any thread. */
    virtual int numActiveParts() const { return activeCount.load (std::memory_order_relaxed); }
    /** For index 0 in mono mode writes the part's key and velocity. Returns 1 in any case. */
    virtual int getMonoNote (int index, int* key, double* velocity) const;

    // Control values ------------------------------------------------------------------------------------------

    /** The setters give the slot's identifier back and take the given one; an identifier that the control manager
        does not know leaves the slot empty. An index out of range is ignored. */
    virtual void setLayerFadeControl (int layer, int controlId);
    virtual void setParameterControl (int index, int controlId);
    virtual void setVolumeControl (int controlId);
    /** 0 for an empty slot or an index out of range. */
    virtual int getPitchControlId() const { return pitch.id.load (std::memory_order_relaxed); }
    virtual int getVolumeControlId() const { return volume.id.load (std::memory_order_relaxed); }
    virtual int getLayerFadeControlId (int layer) const;
    virtual int getParameterControlId (int index) const;
    virtual int numParameterControls() const { return static_cast<int> (parameters.size()); }
    /** The control whose value scales the renderer in the mix, or null. Audio thread. */
    const MVControlValue* getVolumeControl() const { return volume.value.load (std::memory_order_acquire); }

    virtual int getPlayMode() const { return playMode.load (std::memory_order_relaxed); }
    /** 1 mono, 3 one-shot, anything else polyphonic. Ends all notes at once. */
    virtual void setPlayMode (int mode);

    // Layers --------------------------------------------------------------------------------------------------

    /** "Sub patch %d - Layer %d" with the low 32 bits of this renderer's identity. */
    virtual MVSmartPtr<MVString> getLayerName (int layer) const;
    virtual int numNodesInLayer (int layer) const;
    /** Starts or stops a layer, or with a negative number all layers, in every voice that is not so already. A
        voice that sounds fades out over fadeBlocks blocks of 256 samples; an idle one stops at once, since nothing
        would carry its fade on. */
    virtual void setLayerPlaying (int layer, int fadeBlocks, bool play);
    virtual void removeControlFromPatch (int controlId);
    virtual void compactPatchControls();

    /** Carries a transition on. Returns 1 when it has ended, 2 while the old patch still sounds, 3 on a thread
        that does not drive it, 19 if none is running. Event or message thread. */
    int advanceTransition (int fadeBlocks, bool notify);
    bool isTransitionRunning() const { return transitionTarget.load (std::memory_order_acquire) >= 0; }
    /** Brings a transition to its end without listeners when the thread that drove it is gone: a new patch that
        already plays stays, one that was still loading is dropped. The audio is excluded. */
    void abandonTransition();

    // Snapshots -----------------------------------------------------------------------------------------------

    /** Makes a snapshot of what voice 0 holds in a layer, the back buffer included, drops those kept so far that
        nobody uses, keeps it and returns its identity; 0 for a bad layer or without memory. Waits for a voice being
        loaded. Event or message thread. */
    std::uint64_t createPatchProxy (int layer);
    /** A kept snapshot, which is then in use until it is released as often; null for an unknown identity. Whoever
        holds the pointer may read on after the release and when this renderer has gone. Any thread but the audio
        thread. */
    std::shared_ptr<const MVPolyPatch_proxy> acquirePatchProxy (std::uint64_t id);
    /** Whether there is such a snapshot. It stays until the next one is made. */
    bool releasePatchProxy (std::uint64_t id);
    int numPatchProxies() const;

    // Watching ------------------------------------------------------------------------------------------------

    void setPeakMonitoring (bool on);
    /** Writes the peak of a channel as it stood at the reading before, and moves the present one up. Returns 1,
        11 for a null out, 13 past the last channel, 19 while monitoring is off. Any thread. */
    int getChannelPeak (int channel, double* out);

    /** Called on the audio thread for each block of an output channel (0 to 7) with the context, this renderer's
        identity, the samples and their size in bytes. */
    using ChannelTap = void (*) (void* context, std::uint64_t rendererId, const double* samples, int numBytes);
    /** Both wait for the block under way. A function and context pair is kept once. Return false for a channel out
        of range or a pair that is already there or not there. Message thread. */
    bool addChannelTap (int channel, ChannelTap function, void* context);
    bool removeChannelTap (int channel, ChannelTap function, void* context);

    /** Patch listeners hear of a changed layer on the thread that drove the change, state listeners of started
        and ended notes on the event thread. A call that is under way may still end after the removal. All patch
        listeners that want one get the identity of the same fresh snapshot, which they can acquire for sure while
        they are being called. */
    void addPatchListener (MVPatchListeners::Function function, void* context, int layer = -1, bool wantsProxy = false);
    void removePatchListener (MVPatchListeners::Function function, void* context);
    void addStateListener (MVPatchListeners::Function function, void* context);
    void removeStateListener (MVPatchListeners::Function function, void* context);

    /** Whether a voice that sounds plays the layer, so that blocks are needed to end it. Takes the audio lock. */
    bool isLayerSounding (int layer) const;

    /** Level settings of the output operators, see MVPolyPatch: read from voice 0, written to every layer of every
        voice. Take the voice lock and the audio lock. */
    double getOutputVolume() const;
    void setOutputVolume (double value);
    double getCompressorRollOff() const;
    void setCompressorRollOff (double value);
    double getCompressorThreshold() const;
    void setCompressorThreshold (double value);

    /** Sets a parameter of an operator of voice 0, see MVPolyPatch. Takes the voice lock and the audio lock. */
    int setOperatorAttribute (int layer, std::uint64_t nodeId, int attribute, int kind, double value,
                              MVDataBlock* data);

private:
    /** One control value held by this renderer. */
    struct ControlSlot
    {
        std::atomic<int> id { 0 };
        std::atomic<MVControlValue*> value { nullptr };
    };

    struct ChannelPeak
    {
        std::atomic<double> latched { 0.0 };
        std::atomic<double> running { 0.0 };
        std::atomic<bool> fresh { true };
    };

    struct TapEntry
    {
        ChannelTap function = nullptr;
        void* context = nullptr;

        bool operator== (const TapEntry&) const = default;
    };

    enum TRANSITION_PHASE_t : int
    {
        phaseIdle = 0,
        phaseFading = 1,
        phaseEnded = 4
    };

    class LoadGuard;
    using PatchProxies = MVVector<std::shared_ptr<MVPolyPatch_proxy>>;

    MVPolyPatch& voice (int index) { return *voices[static_cast<std::size_t> (index)]; }
    const MVPolyPatch& voice (int index) const { return *voices[static_cast<std::size_t> (index)]; }
    bool isPatchLayer (int layer) const { return layer >= 0 && layer < scratchLayer; }

    bool renderPart (int index, int numIn, const double* const* in, int numOut, double* const* out, int numSamples,
                     std::int64_t extra);
    void reapPart (int index);
    void finishChannel (int channel, double* samples, int numSamples);
    void updatePeak (int channel, double peak);
    MVPolyPatch* startPart (int key, double velocity);
    bool monoNoteOn (int key, double velocity);
    bool polyNoteOn (int key, double velocity);
    void resetDcFilters();
    void postHousekeeping();

    int beginTransition (int layer);
    int loadIntoScratch (const MVSmartPtr<MVObject>& data);
    bool describeScratch (MVPolyPatch& loaded) const;
    int startFade (int fadeBlocks, bool notify);
    int finishTransition (bool notify);
    void endTransition();
    void clearScratch();
    int unloadLayers (int layer, bool notify);
    bool clearIfStopped (int layer);
    bool isSounding (int voiceIndex) const;
    void stopIdleVoices (int layer);
    void tellPatchChanged (int layer);
    std::shared_ptr<MVPolyPatch_proxy> makePatchProxy (int layer);
    void keepPatchProxy (const std::shared_ptr<MVPolyPatch_proxy>& fresh);
    std::shared_ptr<MVPolyPatch_proxy> findPatchProxy (std::uint64_t id) const;
    void refreshParametersInUse();

    void takeSlot (ControlSlot& slot, const char* name);
    void assignSlot (ControlSlot& slot, int controlId);
    void releaseSlot (ControlSlot& slot);
    void takeControls();
    void releaseControls();
    void listControls();
    void passControlsToVoices();

    MVRenderEngineAttributes* attributes;
    MVControlManager* controlManager;
    std::vector<std::unique_ptr<MVPolyPatch>> voices;
    const int scratchLayer;
    mutable MVLocker voiceLock;

    MVPatchListeners patchListeners;
    PatchProxies patchProxies;
    mutable MVLocker proxyLock; ///< over the list above
    std::array<std::vector<TapEntry>, maxTappedChannels> channelTaps;
    std::vector<std::unique_ptr<MVDcFilter>> dcFilters;
    std::array<ChannelPeak, maxTappedChannels> peaks;
    /** Of which so many are there; readers of peaks take no lock that guards the attributes. */
    std::atomic<int> numPeaks { 0 };
    std::atomic<bool> peakMonitoring { false };

    ControlSlot pitch;
    ControlSlot volume;
    ControlSlot activator;
    std::vector<ControlSlot> layerFades;
    std::vector<ControlSlot> parameters;
    /** What the voices' operators index: the values of the slots, changed under the audio lock. */
    MVVector<MVControlValue*> layerFadeControls;
    MVVector<MVControlValue*> parameterControls;
    std::vector<std::atomic<bool>> parameterInUse;

    // All sized once for every voice, so that notes and their end touch no heap. Guarded by the audio lock.
    MVVector<int> freeVoices;
    MVVector<MVSmartPtr<MVRendererPartDesc>> partRecords; ///< one per voice
    MVVector<MVSmartPtr<MVRendererPartDesc>> activeParts;
    std::atomic<int> activeCount { 0 };
    std::atomic<int> playMode { playMono };

    MVTransitionLock transitionLock;
    std::atomic<int> transitionTarget { -1 };
    TRANSITION_PHASE_t transitionPhase = phaseIdle;

    std::atomic<bool> notifyEnabled { true };
    std::atomic<bool> renderEnabled { true };
    std::atomic<bool> flagA { false };
    std::atomic<bool> inputMuted { false };
    std::atomic<bool> outputMuted { false };
};

} // namespace morvanelab
