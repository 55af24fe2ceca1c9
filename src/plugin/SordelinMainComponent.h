// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/SordelinState.h"
#include "control/MVMidiByteQueue.h"
#include "engine/MVRenderEngine.h"
#include "engine/MVSignalFeed.h"
#include "plugin/SordelinBankShelf.h"
#include "plugin/SordelinCommandSink.h"
#include "plugin/SordelinHostNotes.h"
#include "plugin/SordelinParameterTable.h"
#include "plugin/SordelinPresetList.h"
#include "plugin/SordelinPrompt.h"
#include "plugin/SordelinSettings.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <shared_mutex>

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
        /** Keeps the audio thread out of processBlock while on: back only when it is outside. */
        std::function<void (bool)> suspendAudio;
    };

    /** Which display shows: the numbers of the stored state. There is no 6. */
    enum VISUALISER_t : int
    {
        visualiserImage = 0,
        visualiserScroll = 1,
        visualiserPhaseLock = 2,
        visualiserSpectrum = 3,
        visualiserSpectrogram = 4,
        visualiserSpectrogram3d = 5,
        visualiserAttractor = 7
    };

    /** A first run looks for banks in firstBanks, or beside the plug-in if that is empty. */
    explicit SordelinMainComponent (const juce::File& firstBanks = {});
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
    /** Play mode and voices (1 to 64) of this and later engines, stored as settings; out of range does nothing. The
        mode takes effect at once; sounding voices end. Another number of voices needs another engine: if there is
        one, it is replaced in here, with the audio thread kept out for some milliseconds, and gets back patch, values
        and mappings. Without a host's suspendAudio it waits for the next prepareEngine. Message thread. */
    void setPlayMode (int mode);
    void setVoices (int voices);
    /** Ends all voices; the patch plays on as soon as there is a note. Message thread. */
    void panic();
    /** Takes all operators of the part back to their start. */
    void resetSynth();
    void setInputMuted (bool on);
    void setOutputMuted (bool on);

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

    /** A handle to the snapshot of the loaded patch, read with the queries of MVRenderEngine; it stays good whatever
        becomes of patch and engine. Empty without a patch. */
    MVPatchAccessorProxy getPatchAccessor() const { return parameterTable.getPatch(); }

    // State ---------------------------------------------------------------------------------------------------

    /** The 320 bytes, or none without an engine. */
    juce::MemoryBlock getState();
    /** Restores from such bytes; missing ones count as zeros, further ones are ignored. Without an engine what
        concerns it waits for prepareEngine. */
    void setState (const juce::MemoryBlock& bytes);

    // Presets (any thread, meant for the message thread) -------------------------------------------------------
    //
    // Boxes go through the prompt. The window shows getPresetCombo after each commandUpdatePresets.

    /** Reads the list anew; selects nothing. The code of SordelinPresetList::load. */
    int loadPresetList();
    void savePresetList();
    void rebuildPresetCombo();
    void updatePresetButtons();
    /** Writes the state over the selected preset. Nothing selected: does nothing. */
    void savePreset();
    /** Asks for a name and writes the state to a new preset, which becomes the selected one. */
    void savePresetAs();
    /** Deletes the selected preset and its file. */
    void deletePreset();
    /** The user has chosen an item, -1 for none: restores the preset. One whose file has gone leaves the list. */
    void applyPreset (int index);
    SordelinPresetList::Combo getPresetCombo() const { return presets.getCombo(); }

    // Patches -------------------------------------------------------------------------------------------------

    /** Loads a slot of a bank. Returns whether the load was posted; otherwise the user has been told. */
    bool loadPatch (int bank, int slot);
    /** Hands a stored patch to the engine, or checks it if there is none. Raises MVException 9 with the text for the
        user. */
    void loadPatchData (const std::vector<std::uint8_t>& stream);
    juce::String getPatchName() const;
    /** Bank and slot that are stored with the state: of the patch last asked for, also where no bank is known by that
        identity. Slot -1 without one. */
    MVBankUuid getPatchBank() const { return getLoadedPatch().bankUuid; }
    int getPatchSlot() const { return getLoadedPatch().slot; }
    /** The patch that plays now lies elsewhere, or its bank has got another identity by an edit: states saved from now
        on name the new place. */
    void setPatchPlace (const MVBankUuid& bank, int slot);
    /** Name, author, description and genre of the patch, empty where it has none. */
    SordelinBankShelf::Patch getPatchNotes() const { return getLoadedPatch(); }
    /** The encoded picture in the metadata of the patch last asked for; null if it has none. */
    SordelinPatchBytes getPatchImage() const;
    /** Loads what the librarian has left in the selection file, which goes; without a bank and a slot in it the user
        is told. */
    void loadSelectedPatch();

    // Window (message thread) ---------------------------------------------------------------------------------

    /** The view, made on the first call. */
    SordelinMainView& getView();
    /** Null to take it back. */
    void setCommandSink (SordelinCommandSink* sink);
    juce::MidiKeyboardState& getKeyboardState() { return keyboardState; }
    SordelinBankShelf& getShelf() { return shelf; }
    SordelinPrompt& getPrompt() { return prompt; }
    SordelinSettings& getSettings() { return settings; }
    /** Asks whether all settings are to be forgotten, and if so does it: see SordelinBankShelf::reset. What is on the
        disk as the user's work stays, and so does the patch that plays. finished is called if it was done. */
    void offerReset (const std::function<void()>& finished);
    /** The display that shows; a number that is none counts as visualiserImage. Any thread. */
    void setVisualiser (int mode);
    int getVisualiser() const { return visualiserMode.load (std::memory_order_relaxed); }
    /** Output compressor: stored, and applied to the engine. The setters give the engine what they are given; it
        refuses what is out of its limits. */
    void setCompressorThreshold (double value);
    void setCompressorRollOff (double seconds);
    void setPreCompressionVolume (double value);
    double getCompressorThreshold() const { return compressorThreshold; }
    double getCompressorRollOff() const { return compressorRollOff; }
    double getPreCompressionVolume() const { return preCompressionVolume; }
    void setPlayHostNotes (bool on);
    bool isPlayingHostNotes() const { return playHostNotes.load (std::memory_order_relaxed); }
    /** Slots whose control value has moved since the last call, one bit each. */
    std::uint32_t takeChangedSlots() { return changedSlots.exchange (0); }
    /** The control value of a patch parameter; 0.5 without an engine. */
    double getSlotValue (int slot) const;
    void setSlotValue (int slot, double value);
    /** The control value of a patch parameter, 0 without an engine: what a MIDI controller is mapped to. */
    std::uint16_t getSlotControlId (int slot) const { return slotControlIds.at (static_cast<std::size_t> (slot)); }
    /** Removes the MIDI mappings of all patch parameters. */
    void clearMidiMappings();
    /** The MIDI that has come in while midiMappingActive was on. Read on the message thread. */
    MVMidiByteQueue& getLearnQueue() { return learnQueue; }
    /** What the audio thread gives the display that shows: the left output. */
    MVSignalFeed& getDisplayFeed() { return displayFeed; }
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
    /** MIDI for whoever learns controllers. Audio thread. */
    void learnMidi (const std::uint8_t* bytes, int count) { learnQueue.push (bytes, count); }

private:
    /** What the plug-in shows and stores as its patch: the identity as restored, also where no such bank is known; the
        stream is kept for the next engine and null if nothing was loaded. */
    using LoadedPatch = SordelinBankShelf::Patch;

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
    void showPatchImage (const SordelinPatchBytes& image);
    LoadedPatch getLoadedPatch() const;
    void reset();
    void replaceEngine();
    void applyCompressor (MVRenderEngine& running);
    void readCompressor (MVRenderEngine& running);
    void postCommand (int commandId);
    SordelinState snapshotState();
    void selectStoredPreset();
    juce::File presetDirectory();
    void loadPresetsForEngine();
    void saveNewPreset (const juce::String& name);
    void tellPresetNotWritten (const juce::File& file);
    void removePreset (const juce::File& file);

    static void patchChanged (void* context, std::int64_t layer, std::uint64_t rendererId, std::uint64_t proxyId);
    static void patchLoadEnded (void* context, void* serial, int result, const char* message);
    static void controlChanged (void* context, std::uint64_t valueId, const double* value, int reserved);
    void updateFromPatch (std::uint64_t proxyId);
    void finishLoad (std::uintptr_t serial, int result, const char* message);

    const juce::File firstBankDirectory;
    mutable std::recursive_mutex shellLock;
    mutable std::shared_mutex engineGate; ///< shared while the engine is used, exclusive while it comes or goes
    std::unique_ptr<MVRenderEngine> engine;
    std::atomic<MVRenderEngine*> audioEngine { nullptr };
    std::atomic<std::uint64_t> partId { 0 };
    std::atomic<std::uint16_t> masterControlId { 0 };
    std::atomic<std::uint64_t> acquiredProxyId { 0 }; ///< the snapshot that is kept acquired in the engine
    std::array<std::atomic<std::uint16_t>, hostParameterCount> slotControlIds {};

    SordelinState stateBlock;
    bool stateHeld = false; ///< there is something to give back to the next engine
    std::atomic<double> compressorThreshold { static_cast<double> (0.9F) };
    std::atomic<double> compressorRollOff { 1.0 };
    std::atomic<double> preCompressionVolume { 1.0 };
    std::atomic<bool> patchJustLoaded { false };
    std::atomic<int> visualiserMode { visualiserImage };
    MVRenderStreamFormat engineFormat; ///< of the present engine

    mutable std::mutex loadLock; ///< over these four
    LoadedPatch loadedPatch;
    LoadedPatch previousPatch; ///< what plays on if the load under way fails
    std::uintptr_t loadSerial = 0;
    SordelinPatchBytes patchImage;

    SordelinPrompt prompt;
    SordelinBankShelf shelf { prompt };
    SordelinSettings settings { shelf.getProperties() };
    SordelinPresetList presets { shelf.getProperties() };
    bool presetListLoaded = false;
    SordelinParameterTable parameterTable;
    juce::MidiKeyboardState keyboardState;
    SordelinHostNotes hostNotes { keyboardState };
    MVMidiByteQueue learnQueue;
    MVSignalFeed displayFeed;
    std::atomic<bool> playHostNotes { false };
    std::atomic<std::uint32_t> changedSlots { 0 };
    HostCallbacks host;
    std::mutex sinkLock;
    SordelinCommandSink* sink = nullptr;
    std::unique_ptr<SordelinMainView> view;
};

} // namespace morvanelab
