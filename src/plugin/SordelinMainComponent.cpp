// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinMainComponent.h"

#include "foundation/MVResult.h"
#include "plugin/SordelinMainView.h"

namespace morvanelab
{

namespace
{

constexpr int generalControlStart = 0;
constexpr int patchLayer = 0;

juce::File pluginDirectory()
{
    return juce::File::getSpecialLocation (juce::File::currentExecutableFile).getParentDirectory();
}

} // namespace

SordelinMainComponent::SordelinMainComponent (const juce::File& firstBanks)
    : firstBankDirectory (firstBanks == juce::File() ? pluginDirectory() : firstBanks)
{
    keyboardState.addListener (this);
}

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

    loadPresetsForEngine();
    shelf.addBanksOnFirstRun (firstBankDirectory);
    restoreIntoEngine();
    postCommand (commandStartUpComplete);
}

std::unique_ptr<MVRenderEngine> SordelinMainComponent::buildEngine (const MVRenderStreamFormat& format)
{
    playHostNotes.store (settings.getPlayHostNotes());
    engineFormat = format;

    auto fresh = std::make_unique<MVRenderEngine>();
    fresh->configure (format);
    fresh->setActive (true);
    fresh->setInputMuted (inputMuted);
    fresh->setOutputMuted (outputMuted);

    const auto part = fresh->createPart (settings.getVoices());
    partId.store (part);
    fresh->setPlayMode (part, settings.getPlayMode());
    masterControlId.store (fresh->getVolumeControlId (part));
    fresh->setControlValue (masterControlId, 1.0);
    connectSlots (*fresh);
    fresh->setControlValue (fresh->getEngineControlId(), generalControlStart);
    fresh->setOutputFeed (0, &displayFeed);
    fresh->addPatchListener (part, &SordelinMainComponent::patchChanged, this, patchLayer, true);
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
    acquiredProxyId.store (0);
}

void SordelinMainComponent::setPlayMode (int mode)
{
    if (mode < SordelinSettings::monoMode || mode > SordelinSettings::oneShotMode)
        return;
    settings.storePlayMode (mode);
    withEngine (
        [&] (MVRenderEngine& running)
        {
            running.setPlayMode (getPartId(), mode);
            running.startMonoVoice (getPartId());
        });
    postCommand (commandUpdateSettings);
}

void SordelinMainComponent::setVoices (int voices)
{
    if (voices < SordelinSettings::smallestVoices || voices > SordelinSettings::mostVoices)
        return;
    const bool changes = voices != settings.getVoices();
    settings.storeVoices (voices);
    if (changes)
        replaceEngine();
    postCommand (commandUpdateSettings);
}

void SordelinMainComponent::replaceEngine()
{
    if (getAudioEngine() == nullptr || ! host.suspendAudio)
        return;
    host.suspendAudio (true);
    prepareEngine (engineFormat);
    host.suspendAudio (false);
}

void SordelinMainComponent::panic()
{
    keyboardState.allNotesOff (0);
    withEngine (
        [this] (MVRenderEngine& running)
        {
            running.killAllVoices (getPartId());
            running.startMonoVoice (getPartId());
        });
}

void SordelinMainComponent::resetSynth()
{
    withEngine ([this] (MVRenderEngine& running) { running.resetPart (getPartId()); });
}

void SordelinMainComponent::setInputMuted (bool on)
{
    inputMuted = on;
    withEngine ([on] (MVRenderEngine& running) { running.setInputMuted (on); });
}

void SordelinMainComponent::setOutputMuted (bool on)
{
    outputMuted = on;
    withEngine ([on] (MVRenderEngine& running) { running.setOutputMuted (on); });
}

void SordelinMainComponent::patchChanged (void* context, std::int64_t, std::uint64_t, std::uint64_t proxyId)
{
    static_cast<SordelinMainComponent*> (context)->updateFromPatch (proxyId);
}

void SordelinMainComponent::updateFromPatch (std::uint64_t proxyId)
{
    MVPatchAccessorProxy patch;
    const bool running = withEngine (
        [&] (MVRenderEngine& current)
        {
            const bool acquired = current.acquirePatchAccessor (proxyId, &patch) == resultDone;
            const auto previous = acquiredProxyId.exchange (acquired ? proxyId : 0);
            if (previous != 0)
                current.releasePatchAccessor (previous);
            parameterTable.rebuild (patch);
            if (! patchJustLoaded)
                applyCompressor (current);
            else if (parameterTable.isPatchLoaded())
            {
                readCompressor (current);
                patchJustLoaded = false;
            }
        });
    if (! running)
        return;
    if (host.refresh)
        host.refresh();
    postCommand (commandUpdateFromPatch);
}

void SordelinMainComponent::setVisualiser (int mode)
{
    const bool known = mode >= visualiserImage && mode <= visualiserAttractor && mode != 6;
    visualiserMode.store (known ? mode : int { visualiserImage }, std::memory_order_relaxed);
    postCommand (commandShowVisualiser);
}

void SordelinMainComponent::setCompressorThreshold (double value)
{
    compressorThreshold = value;
    withEngine ([&] (MVRenderEngine& running) { running.setCompressorThreshold (getPartId(), value); });
}

void SordelinMainComponent::setCompressorRollOff (double seconds)
{
    compressorRollOff = seconds;
    withEngine ([&] (MVRenderEngine& running) { running.setCompressorRollOff (getPartId(), seconds); });
}

void SordelinMainComponent::setPreCompressionVolume (double value)
{
    preCompressionVolume = value;
    withEngine ([&] (MVRenderEngine& running) { running.setPreCompressionVolume (getPartId(), value); });
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

void SordelinMainComponent::clearMidiMappings()
{
    withEngine (
        [this] (MVRenderEngine& running)
        {
            for (const auto& id : slotControlIds)
                running.unmapControlId (id);
        });
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
    settings.storePlayHostNotes (on);
    playHostNotes.store (on);
    postCommand (commandUpdateSettings);
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
