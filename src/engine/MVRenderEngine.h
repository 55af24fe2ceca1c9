// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/MVControlManager.h"
#include "control/MVMidiManager.h"
#include "engine/MVInputStream.h"
#include "engine/MVOutputStream.h"
#include "engine/MVParameterManager.h"
#include "engine/MVPatchAccessorProxy.h"
#include "engine/MVPatchListeners.h"
#include "engine/MVPatchLoadTracker.h"
#include "engine/MVRenderStreamFormat.h"
#include "engine/MVRendererManager.h"
#include "foundation/MVEventManager.h"
#include "foundation/MVEventThread.h"
#include "foundation/MVLocker.h"
#include "foundation/MVObject.h"
#include "operators/MVRenderEngineAttributes.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace morvanelab
{

class MVPatchRenderer;
class MVSignalFeed;

/** The one object that a shell talks to: a stream of host blocks on one side, patches in blocks of 256 doubles on
    the other.

    Life: construct, configure, setActive (true), createPart; then blocks. Destruction and setActive (false) end
    promptly whatever is under way.

    Threads. renderBlock and writeInput belong to the host's audio thread. Everything else belongs to any other
    thread; each call holds apiLock, so it waits for a block to end, and a block waits for it. configure,
    setActive and destruction come from one thread at a time and never from the event thread, that is, not from a
    completion or listener. Loads and their completions run on the event thread, which holds no lock of the engine
    while it calls out.

    Result codes: 1 done, 6 posted, 9 failed, 11 null argument or bad format, 12 unknown identifier, 13 out of
    range, 14 empty data, 19 not active, 22 no event free. */
class MVRenderEngine : public MVObject
{
public:
    /** An inactive engine with all operators registered, in the default format: 44100 Hz, blocks of 256, two
        32-bit float channel buffers each way. */
    MVRenderEngine();
    ~MVRenderEngine() override;
    MVRenderEngine (const MVRenderEngine&) = delete;

    const char* className() const override { return "MVRenderEngine"; }

    // Life ----------------------------------------------------------------------------------------------------

    /** Takes a new stream format and rebuilds the rings; an active engine is switched off and on again for it,
        which keeps the parts and their patches but gives them new control identifiers.
        1, or 11 with nothing changed: a layout or sample type that is not supported, a rate that is not a
        positive finite number, more than 8 channels on a side. */
    int configure (const MVRenderStreamFormat& format);
    /** Starts or stops everything: control values, parts, rings and the event thread. */
    void setActive (bool on) override;
    /** Silences the engine and takes its run-time state back to the start; parts, patches and mappings stay. */
    void reset() override;
    const MVRenderStreamFormat& getFormat() const { return format; }

    // Stream (audio thread) -----------------------------------------------------------------------------------

    /** Puts host input into the rings. data holds one pointer a channel, or with the interleaved layout one buffer
        at data[0]. At most min (channels, input channels, output channels) channels are taken: the output channel
        count bounds the input too. written becomes numFrames, also when frames found no room and were lost. */
    int writeInput (const void* const* data, int channels, int numFrames, int& written);
    /** Renders the next numSamples frames into out, laid out like data above. Writes
        min (channels, output channels, numSamples) channels and takes numSamples off every channel's ring, so
        that channels never drift apart. Any numSamples works, also beyond the announced block, and the sizes of
        the blocks make no difference to a patch that reads no input. 19 with nothing written while inactive. */
    int renderBlock (void* const* out, int channels, int numSamples, int& written);
    /** Whether the host renders in non-real time. Then each block waits, 5 seconds at most and before it takes any
        lock, until posted patch loads and control changes have come into effect, so that a bounce is the same
        each time. A fade is not waited for: it needs the blocks. In real time a block never waits.
        A load ends with a fade if a voice sounds when it comes in, so whoever starts notes ahead of the block calls
        waitForPendingWork ahead of them. */
    void setOffline (bool on) { offline.store (on, std::memory_order_relaxed); }
    bool isOffline() const { return offline.load (std::memory_order_relaxed); }

    // Mutes and levels ----------------------------------------------------------------------------------------

    /** Muted input: the parts hear silence. */
    void setInputMuted (bool on) { inputMuted.store (on, std::memory_order_relaxed); }
    bool isInputMuted() const { return inputMuted.load (std::memory_order_relaxed); }
    /** Muted output: every part runs on unheard, those created later too. */
    void setOutputMuted (bool on);
    bool isOutputMuted() const { return outputMuted.load (std::memory_order_relaxed); }
    void setInputLevelsEnabled (bool on);
    /** The highest input level, 0 to 1, since the last call. 0 for no such channel, or while not enabled. */
    double takeInputLevel (int channel);
    /** Peak meters of a part's output: switching on, then reading; a reader sees each peak one read late.
        getOutputPeak: 1, 11, 12, 13 no such channel, 19 monitoring is off. Reading takes no API lock, so that a
        meter never holds up a block. */
    int setOutputPeaksEnabled (std::uint64_t part, bool on);
    int getOutputPeak (std::uint64_t part, int channel, double* out);

    /** Offers each block of 256 samples of an output channel (0 to 7), as the host will hear it, to a feed; null ends
        that. The feed must live until another or none takes its place. 1, or 13 for no such channel. */
    int setOutputFeed (int channel, MVSignalFeed* feed);

    // Parts ---------------------------------------------------------------------------------------------------

    /** A new part of 1 to 64 voices, in mono mode. Returns its identity, 0 if refused. */
    std::uint64_t createPart (int numVoices);
    /** 1 if it was destroyed at once (inactive engine), 6 if the event thread will do it, 12, 22. */
    int destroyPart (std::uint64_t part);
    /** 1 mono, 3 one-shot, any other value polyphonic. Kills all sounding voices. 1 or 12. */
    int setPlayMode (std::uint64_t part, int mode);
    int getPlayMode (std::uint64_t part);
    /** A part that is switched off is not rendered. 1 or 12. */
    int setPartEnabled (std::uint64_t part, bool on);
    bool isPartEnabled (std::uint64_t part);
    int setPartInputMuted (std::uint64_t part, bool on);
    int setPartOutputMuted (std::uint64_t part, bool on);
    int resetPart (std::uint64_t part);

    int noteOn (std::uint64_t part, int key, double velocity);
    int noteOff (std::uint64_t part, int key);
    void noteOnAll (int key, double velocity);
    void noteOffAll (int key);
    /** In mono mode, starts the one voice that then runs for good. 1 or 12. */
    int startMonoVoice (std::uint64_t part);
    int killAllVoices (std::uint64_t part);
    /** Voices of the part that sound now, 0 without such a part. Takes no API lock. */
    int getActiveVoiceCount (std::uint64_t part);

    // Patches -------------------------------------------------------------------------------------------------

    /** Loads data (an MVDataBlock or MVRiffPacker; taken over) into a layer. On the event thread the load runs at
        once and its code is returned, 2 where a fade must be advanced by the caller; from any other thread it is
        posted: 6, or 22. */
    int loadPatchOnLayer (std::uint64_t part, int layer, MVSmartPtr<MVObject>& data);
    /** Posts a patch load into layer 0 with a copy of the bytes: 6, or 14 for empty data, 9 for an unknown part,
        22 if no event is free; the completion is called only after a 6. A new patch always fades in over one
        block; fadeSeconds is the fade of what has to be unloaded. */
    int postPatchLoad (const void* data, int size, std::uint64_t part, double fadeSeconds,
                       MVPatchLoadCompletion completion = nullptr, void* contextA = nullptr, void* contextB = nullptr);
    /** Posts that a layer fades out and is emptied. 6, 9 or 22. */
    int postPatchUnload (std::uint64_t part, int layer, double fadeSeconds, MVPatchLoadCompletion completion = nullptr,
                         void* contextA = nullptr, void* contextB = nullptr);
    /** The text for the user of the latest patch load that failed; empty after one that succeeded. Takes no API
        lock. */
    std::string lastLoadError() const { return rendererManager.loads().lastError(); }
    /** Whether a posted load has not come to its end, the fade included. Takes no API lock. */
    bool isPatchLoadPending() const { return rendererManager.loads().isAnyPending(); }
    /** Whether control values have been written that readers do not see yet. Takes no API lock. */
    bool hasPendingControlChanges() const;
    /** Waits, without holding any lock, until no load is queued or being read (fades aside) and no control change
        is pending. Returns whether that came true within the given seconds. Not for the event thread. */
    bool waitForPendingWork (double seconds);

    /** The patch of a layer as a new tree; an empty pointer if there is none. */
    MVSmartPtr<MVRiffPacker> getPatchData (std::uint64_t part, int layer);
    /** Whether the patches of the part listen to its parameter control index. */
    bool isParameterInUse (std::uint64_t part, int index);
    /** Called after each change of a patch, on the event thread while it runs: see MVPatchRenderer. With wantsProxy
        the listener is given the identity of a fresh snapshot, for acquirePatchAccessor; it may acquire it then and
        there, or hand the identity on. 1 or 12. */
    int addPatchListener (std::uint64_t part, MVPatchListeners::Function function, void* context, int layer = -1,
                          bool wantsProxy = false);
    int removePatchListener (std::uint64_t part, MVPatchListeners::Function function, void* context);
    /** Sets a parameter of an operator in voice 0; see MVPolyPatch. 12, or 19 during a transition. */
    int setOperatorAttribute (std::uint64_t part, int layer, std::uint64_t nodeId, int attribute, int kind,
                              double value, MVDataBlock* data);

    // Patch snapshots -----------------------------------------------------------------------------------------

    /** Makes a snapshot of the patch in a layer as it is now and returns its identity, 0 without such a part or
        layer. A snapshot that nobody has acquired goes when the part makes its next one. */
    std::uint64_t createPatchProxy (std::uint64_t part, int layer);
    /** Gives a handle to a snapshot, which then stays until it is released as often as it was acquired. 1, 11 for
        a null out, 12 if there is no such snapshot (any more), 23 if there is no memory; out is changed only by
        a 1. */
    int acquirePatchAccessor (std::uint64_t proxyId, MVPatchAccessorProxy* out);
    /** Ends one acquisition; handles that are still about keep their snapshot. 1, or 12 if nothing of that identity
        is acquired. */
    int releasePatchAccessor (std::uint64_t proxyId);

    /** The queries read a handle and nothing of the engine: any thread, no lock. They return 19 for an empty
        handle, 12 for a node that the snapshot does not know, otherwise 1; out is changed only by a 1.
        Past the end there is no text (""), no use, no node (0), no source (node 0, port -1). */
    static int getVariableName (const MVPatchAccessorProxy& accessor, int index, std::string& out);
    static int getVariableDesc (const MVPatchAccessorProxy& accessor, int index, std::string& out);
    /** Whether an input of the playing patch listened to the parameter control. */
    static int getParameterInUse (const MVPatchAccessorProxy& accessor, int index, bool& out);
    /** 0 nodes: the layer held no patch. */
    static int getNumNodes (const MVPatchAccessorProxy& accessor, int& out);
    static int getNodeIdAt (const MVPatchAccessorProxy& accessor, int index, std::uint64_t& out);
    /** The class as a small number, see patchNodeTypeNumber. */
    static int getNodeType (const MVPatchAccessorProxy& accessor, std::uint64_t nodeId, int& out);
    /** Index of the output operator, -1 without one. */
    static int getRootNode (const MVPatchAccessorProxy& accessor, int& out);
    /** Direction 1 for inputs, 2 for outputs. */
    static int getNumPorts (const MVPatchAccessorProxy& accessor, std::uint64_t nodeId, int direction, int& out);
    static int getPortDesc (const MVPatchAccessorProxy& accessor, std::uint64_t nodeId, int direction, int port,
                            std::string& out);
    /** The node that feeds an input, and from which of its output ports. */
    static int getInputSource (const MVPatchAccessorProxy& accessor, std::uint64_t nodeId, int input,
                               std::uint64_t& sourceId, int& sourcePort);

    /** The packed bytes of all parts with their patches; empty if it could not be made. */
    MVSmartPtr<MVDataBlock> saveFullPreset();
    /** Posts the load of such bytes: what sounds fades out first. 6, 14 for data that is no chunk tree, 22. */
    int loadFullPreset (const void* data, int size, double fadeSeconds, MVPatchLoadCompletion completion = nullptr,
                        void* contextA = nullptr, void* contextB = nullptr);

    // Output compressor ---------------------------------------------------------------------------------------

    /** The three settings of the output operator: activation threshold, roll-off in seconds, volume before the
        compressor. The setters write every layer of every voice; a getter writes what the playing patch has,
        0.0 if none plays. 1, 11 or 12. */
    int getCompressorThreshold (std::uint64_t part, double* out);
    int setCompressorThreshold (std::uint64_t part, double value);
    int getCompressorRollOff (std::uint64_t part, double* out);
    int setCompressorRollOff (std::uint64_t part, double value);
    int getPreCompressionVolume (std::uint64_t part, double* out);
    int setPreCompressionVolume (std::uint64_t part, double value);

    // Controls ------------------------------------------------------------------------------------------------

    /** The part's volume control, which the shell uses as the master volume; 0 if there is none. */
    std::uint16_t getVolumeControlId (std::uint64_t part);
    /** The part's parameter control; 0 if there is none. */
    std::uint16_t getParameterControlId (std::uint64_t part, int index);
    std::uint16_t getPitchControlId (std::uint64_t part);
    int numParameterControls (std::uint64_t part);
    /** The engine's own general-purpose control value; 0 while inactive. */
    std::uint16_t getEngineControlId() const { return engineControlId; }

    /** 1, 11 for a null out, 12. */
    int getControlValue (std::uint16_t id, double* out);
    /** 1 or 12. */
    int setControlValue (std::uint16_t id, double value);

    /** Lets a MIDI controller drive a control value, beside what it drives already. scale is not used. 1, 9, or 13
        unless channel is below 16 and cc below 256. */
    int midiMapAddCCToControlValue (std::uint16_t id, double scale, int channel, int cc);
    /** Maps the first controller message in a piece of MIDI data (123 aside) to id and writes its channel,
        controller and value, 0 to 127, into the arguments; the scan ends at the first message that differs in one
        of them. used receives the bytes consumed. 1, 9 if nothing was mapped, 11, 12. */
    int mapMidiContinousControllerFromData (std::uint16_t id, const void* data, int size, int& channel, int& cc,
                                            int& value, int& used);
    /** Removes every MIDI mapping of id. 1 or 12. */
    int unmapControlId (std::uint16_t id);

    // Members of the engine. Their own headers say what may be called from where.
    MVEventManager& getEventManager() { return eventManager; }
    MVControlManager& getControlManager() { return controlManager; }
    MVMidiManager& getMidiManager() { return midiManager; }
    MVParameterManager& getParameterManager() { return parameterManager; }
    MVRendererManager& getRendererManager() { return rendererManager; }
    MVRenderEngineAttributes& getAttributes() { return attributes; }
    /** For callers that need several façade calls to be one step. Recursive. */
    MVLocker& getApiLock() { return apiLock; }

private:
    void setRunning (bool on);
    void stopEventThread();
    void deactivate();
    void activate();
    void makeReady (int numFrames);
    void renderInternalBlock();
    int changeCompressor (std::uint64_t part, void (MVPatchRenderer::*setter) (double), double value);
    int readCompressor (std::uint64_t part, double (MVPatchRenderer::*getter)() const, double* out);

    // In order of construction; destroyed from the last to the first.
    MVRenderEngineAttributes attributes;
    MVEventManager eventManager;
    MVControlManager controlManager;
    MVMidiManager midiManager;
    MVParameterManager parameterManager;
    MVRendererManager rendererManager;
    MVEventThread eventThread;

    MVLocker apiLock;
    MVRenderStreamFormat format;
    MVInputStream input;
    MVOutputStream output;
    std::uint16_t engineControlId = 0;
    std::vector<MVPatchAccessorProxy> accessors; ///< one for each acquisition
    std::array<MVSignalFeed*, MVOutputStream::maxChannels> outputFeeds {};
    std::atomic<bool> running { false };
    std::atomic<bool> offline { false };
    std::atomic<bool> inputMuted { false };
    std::atomic<bool> outputMuted { false };
};

} // namespace morvanelab
