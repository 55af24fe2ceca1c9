// SPDX-License-Identifier: GPL-3.0-or-later
// The parts of SordelinMainComponent that deal with stored states and settings, and with patches on their way into the
// engine.
#include "plugin/SordelinMainComponent.h"

#include "banks/SordelinPresetFile.h"
#include "foundation/MVException.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <algorithm>
#include <cstring>

namespace morvanelab
{

namespace
{

constexpr std::size_t smallestPatch = 32;
constexpr std::uint32_t oldestVersion = 9300; ///< 0.9.3
constexpr double patchFadeSeconds = 0.05;
constexpr int settleMilliseconds = 200;

constexpr const char* resetTitle = "Application Reset";
constexpr const char* resetQuestion =
    "You have selected option to clear all Sordelin persistent settings, including application registration key.  Are "
    "you sure you wish to proceed?";

[[noreturn]] void refusePatch (const char* text) { throw MVException (resultFailed, text); }

bool isTooOld (const MVRiffPacker& patch)
{
    const auto chunk = patch.findChild (fourCC ("ver "));
    std::array<std::uint32_t, 3> fields {};
    if (chunk == nullptr || chunk->readablePayload() < static_cast<int> (sizeof fields))
        return false;
    std::memcpy (fields.data(), chunk->getPayload(), sizeof fields);
    return versionCode (fields[0], fields[1], fields[2]) < oldestVersion;
}

/** Checks a stored patch and returns its chunk for the engine, null if it has none. */
MVSmartPtr<MVRiffPacker> findPatchData (const std::vector<std::uint8_t>& stream)
{
    if (stream.size() < smallestPatch)
        refusePatch ("Error:  Invalid or corrupt patch.");
    const MVRiffPacker patch (stream.data(), static_cast<int> (stream.size()), false);
    if (! patch.isWellFormed())
        refusePatch ("Error:  Invalid patch data.");
    if (isTooOld (patch))
        refusePatch ("Error:  Invalid or corrupt patch.");
    return patch.findChild (fourCC ("data"));
}

} // namespace

juce::MemoryBlock SordelinMainComponent::getState()
{
    const std::lock_guard<std::recursive_mutex> scope (shellLock);
    if (engine == nullptr)
        return {};
    refreshState (*engine);
    return { &stateBlock, sizeof stateBlock };
}

void SordelinMainComponent::refreshState (MVRenderEngine& running)
{
    // What was written a moment ago is what the host wants stored.
    running.getControlManager().waitForPendingValues (settleMilliseconds);
    for (int slot = 0; slot < hostParameterCount; ++slot)
        refreshSlot (running, slot);
    stateBlock.preCompressionVolume = preCompressionVolume;
    stateBlock.compressorRollOff = compressorRollOff;
    stateBlock.compressorThreshold = compressorThreshold;
    stateBlock.visualiser = visualiserMode;
    stateBlock.presetItem = presets.getSelected();
    running.getControlValue (masterControlId, &stateBlock.outputVolume);

    const auto patch = getLoadedPatch();
    stateBlock.bankUuid = patch.bankUuid.bytes;
    stateBlock.patchIndex = patch.slot;
}

void SordelinMainComponent::refreshSlot (MVRenderEngine& running, int slot)
{
    const auto index = static_cast<std::size_t> (slot);
    const int id = slotControlIds[index].load();
    if (! running.getControlManager().controlExists (id))
        return;
    stateBlock.parameterValues[index] = running.getControlManager().getControlValue (id);
    int channel = -1;
    int controller = -1;
    running.getMidiManager().getMidiControlForValueId (id, channel, controller);
    stateBlock.midiChannels[index] = channel;
    stateBlock.midiControllers[index] = controller;
}

void SordelinMainComponent::setState (const juce::MemoryBlock& bytes)
{
    const std::lock_guard<std::recursive_mutex> scope (shellLock);
    stateBlock = SordelinPresetFile::fromBytes (bytes.getData(), bytes.getSize());
    stateHeld = true;
    selectStoredPreset();
    setVisualiser (stateBlock.visualiser);
    compressorThreshold = stateBlock.compressorThreshold;
    compressorRollOff = stateBlock.compressorRollOff;
    preCompressionVolume = stateBlock.preCompressionVolume;

    const MVBankUuid uuid { stateBlock.bankUuid };
    {
        const std::lock_guard<std::mutex> load (loadLock);
        loadedPatch.bankUuid = uuid;
        loadedPatch.slot = stateBlock.patchIndex;
    }
    const int bank = shelf.findBank (uuid);
    if (bank >= 0)
        loadPatch (bank, stateBlock.patchIndex);
    else if (prompt.isShowing())
        prompt.tell ("Missing patch", "Cannot find the patch for this preset.  Check if bank was unloaded.", "OK");

    withEngine ([this] (MVRenderEngine& running) { restoreControls (running); });
    postCommand (commandUpdateFromPatch);
}

void SordelinMainComponent::restoreControls (MVRenderEngine& running)
{
    running.setControlValue (masterControlId, stateBlock.outputVolume);
    for (int slot = 0; slot < hostParameterCount; ++slot)
        restoreSlot (running, slot);
}

void SordelinMainComponent::restoreSlot (MVRenderEngine& running, int slot)
{
    const auto index = static_cast<std::size_t> (slot);
    const auto id = slotControlIds[index].load();
    const int channel = stateBlock.midiChannels[index];
    const int controller = stateBlock.midiControllers[index];
    auto& midi = running.getMidiManager();
    running.setControlValue (id, stateBlock.parameterValues[index]);
    if (channel < 0 || controller < 0)
    {
        if (running.getControlManager().controlExists (id))
            midi.unmapControlValueId (id);
        return;
    }
    if (channel < MVMidiManager::numChannels && controller < 256)
        midi.setMidiControlToValueId (channel, controller, id);
    midi.reset();
}

void SordelinMainComponent::restoreIntoEngine()
{
    if (! stateHeld)
        return;
    restorePatchIntoEngine();
    restoreControls (*engine);
}

void SordelinMainComponent::restorePatchIntoEngine()
{
    const auto patch = getLoadedPatch();
    try
    {
        // A state that came before the engine may name a bank that is known only now.
        const int bank = patch.stream == nullptr ? shelf.findBank (patch.bankUuid) : -1;
        if (bank >= 0)
            loadPatch (bank, patch.slot);
        else if (patch.stream != nullptr)
        {
            patchJustLoaded = false; // the user's compressor settings go on
            loadPatchData (*patch.stream);
        }
    }
    catch (const MVException& failure)
    {
        prompt.tell ("Patch load failed", failure.text());
    }
}

bool SordelinMainComponent::loadPatch (int bank, int slot)
{
    const std::lock_guard<std::recursive_mutex> scope (shellLock);
    std::uintptr_t serial = 0;
    try
    {
        SordelinBankShelf::Patch patch;
        const bool found = shelf.readPatch (bank, slot, patch);
        showPatchImage (patch.image);
        if (! found)
            return false;
        serial = beginLoad (patch);
        patchJustLoaded = true;
        loadPatchData (*patch.stream);
        postCommand (commandUpdateFromPatch);
        return true;
    }
    catch (const MVException& failure)
    {
        patchJustLoaded = false;
        undoLoad (serial);
        prompt.tell ("Patch load failed", failure.text());
        return false;
    }
}

void SordelinMainComponent::loadPatchData (const std::vector<std::uint8_t>& stream)
{
    const auto data = findPatchData (stream);
    const auto* bytes = data != nullptr ? data->getPayload() : nullptr;
    const int size = data != nullptr ? data->readablePayload() : 0;
    void* serial = nullptr;
    {
        const std::lock_guard<std::mutex> scope (loadLock);
        serial = reinterpret_cast<void*> (loadSerial);
    }

    int result = resultPosted;
    withEngine (
        [&] (MVRenderEngine& running)
        {
            result = running.postPatchLoad (bytes, size, getPartId(), patchFadeSeconds,
                                            &SordelinMainComponent::patchLoadEnded, this, serial);
        });
    if (result == resultNoResources)
        refusePatch ("Error:  Not enough resources to load patch.");
    if (result != resultDone && result != resultPosted)
        refusePatch ("Error:  Unknown error loading patch.");
}

std::uintptr_t SordelinMainComponent::beginLoad (const SordelinBankShelf::Patch& patch)
{
    const std::lock_guard<std::mutex> scope (loadLock);
    previousPatch = loadedPatch;
    loadedPatch = patch;
    return ++loadSerial;
}

void SordelinMainComponent::showPatchImage (const SordelinPatchBytes& image)
{
    {
        const std::lock_guard<std::mutex> scope (loadLock);
        patchImage = image;
    }
    postCommand (commandShowPatchImage);
}

SordelinPatchBytes SordelinMainComponent::getPatchImage() const
{
    const std::lock_guard<std::mutex> scope (loadLock);
    return patchImage;
}

void SordelinMainComponent::loadSelectedPatch()
{
    int bank = -1;
    int slot = -1;
    if (shelf.takeSelection (bank, slot))
        loadPatch (bank, slot);
    else
        prompt.tell ("Patch load failed", "Wrong number of patches.  Select only one.");
}

void SordelinMainComponent::undoLoad (std::uintptr_t serial)
{
    const std::lock_guard<std::mutex> scope (loadLock);
    if (serial == loadSerial && serial != 0)
        loadedPatch = previousPatch;
}

void SordelinMainComponent::patchLoadEnded (void* context, void* serial, int result, const char* message)
{
    static_cast<SordelinMainComponent*> (context)->finishLoad (reinterpret_cast<std::uintptr_t> (serial), result,
                                                               message);
}

void SordelinMainComponent::finishLoad (std::uintptr_t serial, int result, const char* message)
{
    const bool replacedOrStopped = result == resultPosted || result == resultUnknownId || result == resultNotEnabled;
    if (result == resultDone || replacedOrStopped)
        return;
    patchJustLoaded = false;
    undoLoad (serial);
    prompt.tell ("Patch load failed", message != nullptr ? message : "Error:  Unknown error loading patch.");
    postCommand (commandUpdateFromPatch);
}

void SordelinMainComponent::setPatchPlace (const MVBankUuid& bank, int slot)
{
    const std::lock_guard<std::mutex> scope (loadLock);
    loadedPatch.bankUuid = bank;
    loadedPatch.slot = slot;
}

SordelinMainComponent::LoadedPatch SordelinMainComponent::getLoadedPatch() const
{
    const std::lock_guard<std::mutex> scope (loadLock);
    return loadedPatch;
}

juce::String SordelinMainComponent::getPatchName() const
{
    return juce::String::fromUTF8 (getLoadedPatch().name.c_str());
}

void SordelinMainComponent::offerReset (const std::function<void()>& finished)
{
    prompt.runAsking (resetTitle,
                      [this, finished]
                      {
                          if (! prompt.askYesNo (resetTitle, resetQuestion))
                              return;
                          reset();
                          finished();
                      });
}

void SordelinMainComponent::reset()
{
    if (! shelf.reset())
        prompt.tell (resetTitle, "Some of the settings could not be deleted.  Please check your file system "
                                 "permissions.");
    shelf.addBanksOnFirstRun (firstBankDirectory);
    replaceEngine(); // takes over play mode, voices and host notes
    postCommand (commandUpdateSettings);
}

} // namespace morvanelab
