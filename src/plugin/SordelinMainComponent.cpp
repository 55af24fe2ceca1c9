// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinMainComponent.h"

#include "foundation/MVResult.h"
#include "plugin/SordelinMainView.h"

namespace morvanelab
{

namespace
{

constexpr int generalControlStart = 0;
constexpr int smallestVoices = 1;
constexpr int mostVoices = MVRendererManager::maxVoices;
constexpr int defaultVoices = 16;
constexpr int monoMode = 1;
constexpr int lastPlayMode = 3;

juce::File pluginDirectory()
{
    return juce::File::getSpecialLocation (juce::File::currentExecutableFile).getParentDirectory();
}

/** A setting that is out of its limits counts as its default. */
int settingWithin (const MVAppPersistentProps& properties, const char* key, int low, int high, int fallback)
{
    const int value = properties.getInt (key, fallback);
    return value < low || value > high ? fallback : value;
}

} // namespace

SordelinMainComponent::SordelinMainComponent() { keyboardState.addListener (this); }

SordelinMainComponent::~SordelinMainComponent()
{
    destroyEngine();
    view.reset();
    keyboardState.removeListener (this);
}

void SordelinMainComponent::prepareEngine (const MVRenderStreamFormat& format)
{
    const std::lock_guard<std::recursive_mutex> scope (shellLock);
    destroyEngine();
    auto fresh = buildEngine (format);
    {
        const std::unique_lock<std::shared_mutex> gate (engineGate);
        engine = std::move (fresh);
    }
    audioEngine.store (engine.get(), std::memory_order_release);

    shelf.addBanksOnFirstRun (pluginDirectory());
    restoreIntoEngine();
    postCommand (commandStartUpComplete);
}

std::unique_ptr<MVRenderEngine> SordelinMainComponent::buildEngine (const MVRenderStreamFormat& format)
{
    auto& properties = shelf.getProperties();
    playHostNotes.store (properties.getBool ("play_host_notes", false));
    const int playMode = settingWithin (properties, "play_mode", monoMode, lastPlayMode, monoMode);
    const int voices = settingWithin (properties, "voices", smallestVoices, mostVoices, defaultVoices);

    auto fresh = std::make_unique<MVRenderEngine>();
    fresh->configure (format);
    fresh->setActive (true);
    fresh->setInputMuted (inputMuted);
    fresh->setOutputMuted (outputMuted);

    const auto part = fresh->createPart (voices);
    partId.store (part);
    fresh->setPlayMode (part, playMode);
    masterControlId.store (fresh->getVolumeControlId (part));
    fresh->setControlValue (masterControlId, 1.0);
    connectSlots (*fresh);
    fresh->setControlValue (fresh->getEngineControlId(), generalControlStart);
    fresh->addPatchListener (part, &SordelinMainComponent::patchChanged, this);
    fresh->setPartEnabled (part, true);
    fresh->startMonoVoice (part);
    return fresh;
}

void SordelinMainComponent::connectSlots (MVRenderEngine& newEngine)
{
    const auto part = getPartId();
    auto& controls = newEngine.getControlManager();
    for (int slot = 0; slot < hostParameterCount; ++slot)
    {
        const auto id = newEngine.getParameterControlId (part, slot);
        slotControlIds[static_cast<std::size_t> (slot)].store (id);
        if (id == 0)
            continue;
        controls.addControlCallback (id, &SordelinMainComponent::controlChanged, this);
        newEngine.getParameterManager().setControl (slot, id);
    }
    controls.setAllNotifyEnabled (true);
}

void SordelinMainComponent::disconnectSlots (MVRenderEngine& oldEngine)
{
    for (auto& id : slotControlIds)
        oldEngine.getControlManager().removeControlCallback (id, &SordelinMainComponent::controlChanged, this);
}

void SordelinMainComponent::destroyEngine()
{
    const std::lock_guard<std::recursive_mutex> scope (shellLock);
    if (engine == nullptr)
        return;
    refreshState (*engine);
    stateHeld = true;

    audioEngine.store (nullptr, std::memory_order_release);
    std::unique_ptr<MVRenderEngine> old;
    {
        const std::unique_lock<std::shared_mutex> gate (engineGate);
        old = std::move (engine);
    }
    // From here nobody but the event thread knows the old engine, and its calls find no engine any more.
    const auto part = getPartId();
    old->removePatchListener (part, &SordelinMainComponent::patchChanged, this);
    old->killAllVoices (part);
    old->setPartEnabled (part, false);
    disconnectSlots (*old);
    old->setActive (false);
    old.reset();
    for (auto& id : slotControlIds)
        id.store (0);
    masterControlId.store (0);
}

void SordelinMainComponent::patchChanged (void* context, std::int64_t, std::uint64_t, std::uint64_t)
{
    static_cast<SordelinMainComponent*> (context)->updateFromPatch();
}

void SordelinMainComponent::updateFromPatch()
{
    MVPatchSummary summary;
    const bool running = withEngine (
        [&] (MVRenderEngine& current)
        {
            current.getPatchSummary (getPartId(), 0, summary);
            if (! patchJustLoaded)
                applyCompressor (current);
            else if (summary.loaded)
            {
                readCompressor (current);
                patchJustLoaded = false;
            }
        });
    if (! running)
        return;
    parameterTable.rebuild (summary);
    if (host.refresh)
        host.refresh();
    postCommand (commandUpdateFromPatch);
}

void SordelinMainComponent::applyCompressor (MVRenderEngine& running)
{
    const auto part = getPartId();
    running.setCompressorThreshold (part, compressorThreshold);
    running.setCompressorRollOff (part, compressorRollOff);
    running.setPreCompressionVolume (part, preCompressionVolume);
}

void SordelinMainComponent::readCompressor (MVRenderEngine& running)
{
    const auto part = getPartId();
    const auto read = [&] (int (MVRenderEngine::*getter) (std::uint64_t, double*), std::atomic<double>& member)
    {
        double value = 0.0;
        if ((running.*getter) (part, &value) == resultDone)
            member = value;
    };
    read (&MVRenderEngine::getCompressorThreshold, compressorThreshold);
    read (&MVRenderEngine::getCompressorRollOff, compressorRollOff);
    read (&MVRenderEngine::getPreCompressionVolume, preCompressionVolume);
}

void SordelinMainComponent::controlChanged (void* context, std::uint64_t valueId, const double*, int)
{
    auto& self = *static_cast<SordelinMainComponent*> (context);
    for (unsigned slot = 0; slot < hostParameterCount; ++slot)
        if (self.slotControlIds[slot].load() == valueId && self.changedSlots.fetch_or (1U << slot) == 0)
            self.postCommand (commandUpdateChangedSliders);
}

double SordelinMainComponent::getParameterValue (int hostIndex) const
{
    double value = 0.0;
    const int patchIndex = parameterTable.hostToPatch (hostIndex);
    withEngine ([&] (MVRenderEngine& running) { running.getParameterManager().getValue (patchIndex, value); });
    return value;
}

void SordelinMainComponent::setParameterValue (int hostIndex, double value)
{
    const int patchIndex = parameterTable.hostToPatch (hostIndex);
    withEngine ([&] (MVRenderEngine& running) { running.getParameterManager().setValue (patchIndex, value); });
}

juce::String SordelinMainComponent::getParameterName (int hostIndex) const
{
    return juce::String::fromUTF8 (parameterTable.getName (hostIndex).c_str());
}

juce::String SordelinMainComponent::getParameterText (int hostIndex) const
{
    return juce::String::fromUTF8 (parameterTable.getText (hostIndex).c_str());
}

double SordelinMainComponent::getSlotValue (int slot) const
{
    double value = 0.5;
    const auto id = slotControlIds.at (static_cast<std::size_t> (slot)).load();
    withEngine ([&] (MVRenderEngine& running) { running.getControlValue (id, &value); });
    return value;
}

void SordelinMainComponent::setSlotValue (int slot, double value)
{
    const auto id = slotControlIds.at (static_cast<std::size_t> (slot)).load();
    withEngine ([&] (MVRenderEngine& running) { running.setControlValue (id, value); });
    const int hostIndex = parameterTable.patchToHost (slot);
    if (host.valueChanged && hostIndex >= 0)
        host.valueChanged (hostIndex, static_cast<float> (value));
}

double SordelinMainComponent::getMasterVolume() const
{
    double value = 1.0;
    withEngine ([&] (MVRenderEngine& running) { running.getControlValue (masterControlId, &value); });
    return value;
}

void SordelinMainComponent::setMasterVolume (double value)
{
    withEngine ([&] (MVRenderEngine& running) { running.setControlValue (masterControlId, value); });
}

void SordelinMainComponent::handleNoteOn (juce::MidiKeyboardState*, int, int key, float velocity)
{
    withEngine ([&] (MVRenderEngine& running) { running.noteOnAll (key, static_cast<double> (velocity)); });
}

void SordelinMainComponent::handleNoteOff (juce::MidiKeyboardState*, int, int key, float)
{
    withEngine ([&] (MVRenderEngine& running) { running.noteOffAll (key); });
}

void SordelinMainComponent::playNotes (const std::uint8_t* bytes, int count)
{
    if (playHostNotes.load (std::memory_order_relaxed))
        hostNotes.play (bytes, count);
}

void SordelinMainComponent::setPlayHostNotes (bool on)
{
    shelf.getProperties().setBool ("play_host_notes", on);
    playHostNotes.store (on);
}

SordelinMainView& SordelinMainComponent::getView()
{
    JUCE_ASSERT_MESSAGE_THREAD
    if (view == nullptr)
        view = std::make_unique<SordelinMainView> (*this);
    return *view;
}

void SordelinMainComponent::setCommandSink (SordelinCommandSink* newSink)
{
    const std::lock_guard<std::mutex> scope (sinkLock);
    sink = newSink;
}

void SordelinMainComponent::postCommand (int commandId)
{
    const std::lock_guard<std::mutex> scope (sinkLock);
    if (sink != nullptr)
        sink->postSordelinCommand (commandId);
}

} // namespace morvanelab
