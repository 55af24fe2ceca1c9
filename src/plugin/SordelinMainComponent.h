// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/MVRenderEngine.h"
#include "plugin/SordelinBankShelf.h"
#include "plugin/SordelinCommandSink.h"
#include "plugin/SordelinHostNotes.h"
#include "plugin/SordelinParameterTable.h"
#include "plugin/SordelinPrompt.h"
#include "plugin/SordelinState.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <span>

namespace morvanelab
{

class SordelinMainView;

/** The heart of the plug-in: owns the engine, the banks, the state and the tables, and outlives every editor. What
    can be seen is in SordelinMainView, which exists only from the first editor on: this object is made, used and
    restored where there is no display, on whatever thread a host chooses.

    Threads. The audio thread reads `audioEngine`, the flags and the tables, and plays host notes. Hosts and the
    window call everything else; shellLock puts those calls in a row. The event thread calls back about patches and
    control values and never takes shellLock, so that a call that stops the engine cannot wait for it.
    Lock order: shellLock, the shelf's lock, engineGate, the engine's own locks; loadLock and paramLock are innermost.
    Nothing here waits for the message thread. */
class SordelinMainComponent : private juce::MidiKeyboardState::Listener
{
public:
    /** Calls to the host, with a host parameter index; empty ones are not called. */
    struct HostCallbacks
    {
        std::function<void (int)> beginGesture;
        std::function<void (int)> endGesture;
        std::function<void (int, float)> valueChanged;
        std::function<void()> refresh;
    };

    SordelinMainComponent();
    ~SordelinMainComponent() override;
    SordelinMainComponent (const SordelinMainComponent&) = delete;
    SordelinMainComponent& operator= (const SordelinMainComponent&) = delete;

    void setHostCallbacks (const HostCallbacks& callbacks) { host = callbacks; }
    const HostCallbacks& getHostCallbacks() const { return host; }

    // Engine --------------------------------------------------------------------------------------------------

    /** Replaces the engine by a new one for this format and gives it back what the plug-in holds: patch, control
        values, MIDI mappings. On a first run adds the banks beside the plug-in. */
    void prepareEngine (const MVRenderStreamFormat& format);
    void destroyEngine();

    /** What processBlock runs; null while there is no engine. Only for the audio thread, which no host runs during
        prepareEngine or destroyEngine. */
    MVRenderEngine* getAudioEngine() const { return audioEngine.load (std::memory_order_acquire); }
    /** Calls use with the engine, which cannot go meanwhile, unless there is none. Any thread. */
    template <typename Use>
    bool withEngine (Use&& use) const
    {
        const std::shared_lock<std::shared_mutex> scope (engineGate);
        if (engine == nullptr)
            return false;
        use (*engine);
        return true;
    }
    std::uint64_t getPartId() const { return partId.load (std::memory_order_relaxed); }

    // Parameters (any thread) ---------------------------------------------------------------------------------

    const SordelinParameterTable& getParameterTable() const { return parameterTable; }
    /** The value of a host parameter, 0.0 if it stands for nothing. */
    double getParameterValue (int hostIndex) const;
    void setParameterValue (int hostIndex, double value);
    juce::String getParameterName (int hostIndex) const;
    juce::String getParameterText (int hostIndex) const;

    // State ---------------------------------------------------------------------------------------------------

    /** The 320 bytes, or none without an engine. */
    juce::MemoryBlock getState();
    /** Restores from such bytes; missing ones count as zeros, further ones are ignored. Without an engine what
        concerns it waits for prepareEngine. */
    void setState (const juce::MemoryBlock& bytes);

    // Patches -------------------------------------------------------------------------------------------------

    /** Loads a slot of a bank. Returns whether the load was posted; otherwise the user has been told. */
    bool loadPatch (int bank, int slot);
    /** Hands a stored patch to the engine, or checks it if there is none. Raises MVException 9 with the text for the
        user. */
    void loadPatchData (const std::vector<std::uint8_t>& stream);
    juce::String getPatchName() const;

    // Window (message thread) ---------------------------------------------------------------------------------

    /** The view, made on the first call. */
    SordelinMainView& getView();
    /** Null to take it back. */
    void setCommandSink (SordelinCommandSink* sink);
    juce::MidiKeyboardState& getKeyboardState() { return keyboardState; }
    SordelinBankShelf& getShelf() { return shelf; }
    SordelinPrompt& getPrompt() { return prompt; }
    void setPlayHostNotes (bool on);
    bool isPlayingHostNotes() const { return playHostNotes.load (std::memory_order_relaxed); }
    /** Slots whose control value has moved since the last call, one bit each. */
    std::uint32_t takeChangedSlots() { return changedSlots.exchange (0); }
    /** The control value of a patch parameter; 0.5 without an engine. */
    double getSlotValue (int slot) const;
    void setSlotValue (int slot, double value);
    double getMasterVolume() const;
    void setMasterVolume (double value);

    // Read and written by the audio thread --------------------------------------------------------------------

    std::atomic<bool> bypassed { false };
    std::atomic<bool> inputMuted { false };
    std::atomic<bool> outputMuted { false };
    std::atomic<bool> midiMappingActive { false }; ///< MIDI learn: all MIDI goes to the mapping, none to the engine
    std::atomic<int> midiByteCounter { 0 };
    /** Host notes for the keyboard, if they are to play. Audio thread. */
    void playNotes (const std::uint8_t* bytes, int count);

private:
    /** What the plug-in shows and stores as its patch. */
    struct LoadedPatch
    {
        std::string name;
        MVBankUuid bankUuid; ///< as restored, also where no such bank is known
        int slot = -1;
        SordelinPatchBytes stream; ///< kept for the next engine; null if nothing was loaded
    };

    void handleNoteOn (juce::MidiKeyboardState*, int channel, int key, float velocity) override;
    void handleNoteOff (juce::MidiKeyboardState*, int channel, int key, float velocity) override;

    std::unique_ptr<MVRenderEngine> buildEngine (const MVRenderStreamFormat& format);
    void connectSlots (MVRenderEngine& newEngine);
    void disconnectSlots (MVRenderEngine& oldEngine);
    void restoreIntoEngine();
    void restorePatchIntoEngine();
    void restoreControls (MVRenderEngine& running);
    void restoreSlot (MVRenderEngine& running, int slot);
    void refreshState (MVRenderEngine& running);
    void refreshSlot (MVRenderEngine& running, int slot);
    std::uintptr_t beginLoad (const SordelinBankShelf::Patch& patch);
    void undoLoad (std::uintptr_t serial);
    LoadedPatch getLoadedPatch() const;
    void applyCompressor (MVRenderEngine& running);
    void readCompressor (MVRenderEngine& running);
    void postCommand (int commandId);

    static void patchChanged (void* context, std::int64_t layer, std::uint64_t rendererId, std::uint64_t proxyId);
    static void patchLoadEnded (void* context, void* serial, int result, const char* message);
    static void controlChanged (void* context, std::uint64_t valueId, const double* value, int reserved);
    void updateFromPatch();
    void finishLoad (std::uintptr_t serial, int result, const char* message);

    mutable std::recursive_mutex shellLock;
    mutable std::shared_mutex engineGate; ///< shared while the engine is used, exclusive while it comes or goes
    std::unique_ptr<MVRenderEngine> engine;
    std::atomic<MVRenderEngine*> audioEngine { nullptr };
    std::atomic<std::uint64_t> partId { 0 };
    std::atomic<std::uint16_t> masterControlId { 0 };
    std::array<std::atomic<std::uint16_t>, hostParameterCount> slotControlIds {};

    SordelinState stateBlock;
    bool stateHeld = false; ///< there is something to give back to the next engine
    std::atomic<double> compressorThreshold { static_cast<double> (0.9F) };
    std::atomic<double> compressorRollOff { 1.0 };
    std::atomic<double> preCompressionVolume { 1.0 };
    std::atomic<bool> patchJustLoaded { false };

    mutable std::mutex loadLock; ///< over these three
    LoadedPatch loadedPatch;
    LoadedPatch previousPatch; ///< what plays on if the load under way fails
    std::uintptr_t loadSerial = 0;

    SordelinPrompt prompt;
    SordelinBankShelf shelf { prompt };
    SordelinParameterTable parameterTable;
    juce::MidiKeyboardState keyboardState;
    SordelinHostNotes hostNotes { keyboardState };
    std::atomic<bool> playHostNotes { false };
    std::atomic<std::uint32_t> changedSlots { 0 };
    HostCallbacks host;
    std::mutex sinkLock;
    SordelinCommandSink* sink = nullptr;
    std::unique_ptr<SordelinMainView> view;
};

} // namespace morvanelab
