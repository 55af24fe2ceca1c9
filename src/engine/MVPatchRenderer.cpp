// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVPatchRenderer.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVEventManager.h"
#include "foundation/MVResult.h"
#include "operators/MVRenderEngineAttributes.h"

#include <algorithm>

namespace morvanelab
{

namespace
{
constexpr std::uint32_t housekeepingMessage = 0;
constexpr std::int32_t housekeepingPriority = 3;
constexpr int maxParameters = 256;
} // namespace

MVPatchRenderer::MVPatchRenderer (MVEventManager* manager, MVRenderEngineAttributes* renderAttributes,
                                  MVControlManager* controls, int numVoices)
    : MVEventHandler (manager), attributes (renderAttributes), controlManager (controls),
      scratchLayer (std::clamp (renderAttributes->numLayers, 1, MVPolyPatch::maxLayers) - 1),
      layerFades (static_cast<std::size_t> (scratchLayer + 1)),
      parameters (static_cast<std::size_t> (std::clamp (renderAttributes->numParameters, 0, maxParameters))),
      parameterInUse (parameters.size())
{
    const int count = std::max (1, numVoices);
    freeVoices.reserve (count);
    activeParts.reserve (count);

    for (int i = 0; i < count; ++i)
    {
        voices.push_back (std::make_unique<MVPolyPatch> (attributes));
        partRecords.add (makeSmart<MVRendererPartDesc> (i));
        freeVoices.add (i);
    }

    if (manager != nullptr)
        manager->addChild (this);
}

MVPatchRenderer::~MVPatchRenderer()
{
    detach();
    releaseControls();
}

void MVPatchRenderer::reset()
{
    const MVScopedLock structure (voiceLock);
    const MVScopedLock audio (attributes->audioLock);
    for (const auto& each : voices)
        each->reset();
    resetDcFilters();
}

void MVPatchRenderer::handleThreadMsg (std::uint32_t message)
{
    if (message != housekeepingMessage)
        return;

    if (! transitionLock.tryLock())
    {
        // Without a parent nobody would serve it later: it would come back here at once, and again.
        if (getParent() != nullptr)
            postHousekeeping();
        return;
    }

    if (notifyEnabled.load (std::memory_order_relaxed))
        patchListeners.tellStateChanged (getId());
    transitionLock.unlock();
}

void MVPatchRenderer::postHousekeeping()
{
    postThreadMsg (housekeepingMessage, threadCategoryEvent, housekeepingPriority);
}

void MVPatchRenderer::prepare (bool on)
{
    abandonTransition();
    for (const auto& each : voices)
        each->prepareBuffers (on);
}

// The block -------------------------------------------------------------------------------------------------------

void MVPatchRenderer::render (int numIn, const double* const* in, int numOut, double* const* out, int numSamples,
                              std::int64_t extra)
{
    const int channels = std::min (attributes->numOutputChannels, numOut);
    for (int channel = 0; channel < channels; ++channel)
        blockClear (out[channel], numSamples);

    bool reaped = false;
    for (int index = activeParts.size(); --index >= 0;)
        reaped = renderPart (index, numIn, in, numOut, out, numSamples, extra) || reaped;
    if (reaped)
        postHousekeeping();

    for (int channel = 0; channel < channels; ++channel)
        finishChannel (channel, out[channel], numSamples);
}

/** Returns whether the part was dead and has been taken away. */
bool MVPatchRenderer::renderPart (int index, int numIn, const double* const* in, int numOut, double* const* out,
                                  int numSamples, std::int64_t extra)
{
    MVRendererPartDesc& part = *activeParts[index];
    MVPolyPatch& partVoice = voice (part.getVoiceIndex());

    switch (part.getState())
    {
        case PART_DEAD:
        case PART_DEAD_ALIAS:
            reapPart (index);
            return true;

        case PART_PLAYING:
        case PART_PLAYING_ALIAS:
            partVoice.render (numIn, in, numOut, out, numSamples, extra);
            if (getPlayMode() == playOneShot)
            {
                partVoice.releaseOperators();
                part.release();
            }
            return false;

        case PART_RELEASED:
            partVoice.render (numIn, in, numOut, out, numSamples, extra);
            partVoice.releaseOperators();
            if (partVoice.allOperatorsFinished())
                part.kill();
            return false;

        default:
            return false;
    }
}

void MVPatchRenderer::reapPart (int index)
{
    const int voiceIndex = activeParts[index]->getVoiceIndex();
    voice (voiceIndex).resetPatchStates();
    freeVoices.add (voiceIndex);
    activeParts.removeAt (index);
    activeCount.store (activeParts.size(), std::memory_order_relaxed);
}

void MVPatchRenderer::finishChannel (int channel, double* samples, int numSamples)
{
    const auto slot = static_cast<std::size_t> (channel);
    if (slot < dcFilters.size())
        dcFilters[slot]->process (samples, numSamples);

    if (slot >= maxTappedChannels)
        return;

    if (peakMonitoring.load (std::memory_order_relaxed))
        updatePeak (channel, blockPeak (samples, numSamples));

    if (notifyEnabled.load (std::memory_order_relaxed))
        for (const TapEntry& tap : channelTaps[slot])
            tap.function (tap.context, getId(), samples, numSamples * static_cast<int> (sizeof (double)));
}

// Notes -----------------------------------------------------------------------------------------------------------

MVPolyPatch* MVPatchRenderer::startPart (int key, double velocity)
{
    if (freeVoices.isEmpty())
        return nullptr;

    const int last = freeVoices.size() - 1;
    const int voiceIndex = freeVoices[last];
    freeVoices.removeAt (last);
    partRecords[voiceIndex]->start (key, velocity);
    activeParts.add (partRecords[voiceIndex]);
    activeCount.store (activeParts.size(), std::memory_order_relaxed);
    return &voice (voiceIndex);
}

void MVPatchRenderer::startMonoVoice()
{
    {
        const MVScopedLock audio (attributes->audioLock);
        if (getPlayMode() != playMono || ! activeParts.isEmpty())
            return;
        MVPolyPatch* const started = startPart (0, 0.0);
        if (started == nullptr)
            return;
        started->noteOn (0, 1.0);
    }
    postHousekeeping();
}

void MVPatchRenderer::noteOn (int key, double velocity)
{
    bool tell = false;
    {
        const MVScopedLock audio (attributes->audioLock);
        tell = getPlayMode() == playMono ? monoNoteOn (key, velocity) : polyNoteOn (key, velocity);
    }
    if (tell)
        postHousekeeping();
}

bool MVPatchRenderer::monoNoteOn (int key, double velocity)
{
    if (activeParts.isEmpty())
        return false;

    MVRendererPartDesc& part = *activeParts[0];
    part.setVelocity (velocity);
    part.setKey (key);
    voice (part.getVoiceIndex()).noteOn (key, velocity);
    return isEnabled();
}

bool MVPatchRenderer::polyNoteOn (int key, double velocity)
{
    if (activeParts.isEmpty())
        resetDcFilters();

    MVPolyPatch* const started = startPart (key, velocity);
    if (started == nullptr)
        return false;
    started->noteOn (key, velocity);
    return true;
}

void MVPatchRenderer::noteOff (int key)
{
    const MVScopedLock audio (attributes->audioLock);

    if (getPlayMode() == playMono)
    {
        if (activeParts.isEmpty() || activeParts[0]->getKey() != key)
            return;
        MVRendererPartDesc& part = *activeParts[0];
        part.setVelocity (0.0);
        part.setKey (0);
        voice (part.getVoiceIndex()).noteOn (0, 0.0);
        return;
    }

    for (int index = activeParts.size(); --index >= 0;)
        if (activeParts[index]->getKey() == key)
        {
            activeParts[index]->release();
            return;
        }
}

void MVPatchRenderer::killAllVoices()
{
    {
        const MVScopedLock audio (attributes->audioLock);
        for (int index = activeParts.size(); --index >= 0;)
            freeVoices.add (activeParts[index]->getVoiceIndex());
        activeParts.clear();
        activeCount.store (0, std::memory_order_relaxed);
    }
    postHousekeeping();
}

void MVPatchRenderer::setPlayMode (int mode)
{
    playMode.store (mode, std::memory_order_relaxed);
    killAllVoices();
}

int MVPatchRenderer::getMonoNote (int index, int* key, double* velocity) const
{
    const MVScopedLock audio (attributes->audioLock);
    if (index == 0 && getPlayMode() == playMono && ! activeParts.isEmpty())
    {
        if (key != nullptr)
            *key = activeParts[0]->getKey();
        if (velocity != nullptr)
            *velocity = activeParts[0]->getVelocity();
    }
    return resultDone;
}

// Watching --------------------------------------------------------------------------------------------------------

void MVPatchRenderer::setNotifyEnabled (bool on)
{
    notifyEnabled.store (on, std::memory_order_relaxed);
    const MVScopedLock structure (voiceLock);
    const MVScopedLock audio (attributes->audioLock);
    for (const auto& each : voices)
        each->setMonitoringEnabled (on);
}

void MVPatchRenderer::resetDcFilters()
{
    for (const auto& filter : dcFilters)
        filter->reset();
}

void MVPatchRenderer::updatePeak (int channel, double peak)
{
    ChannelPeak& monitored = peaks[static_cast<std::size_t> (channel)];
    if (peak > monitored.running.load (std::memory_order_relaxed))
        monitored.running.store (peak, std::memory_order_relaxed);
    monitored.fresh.store (true, std::memory_order_relaxed);
}

void MVPatchRenderer::setPeakMonitoring (bool on)
{
    if (on)
        for (ChannelPeak& peak : peaks)
        {
            peak.latched.store (0.0, std::memory_order_relaxed);
            peak.running.store (0.0, std::memory_order_relaxed);
            peak.fresh.store (true, std::memory_order_relaxed);
        }
    peakMonitoring.store (on, std::memory_order_relaxed);
}

int MVPatchRenderer::getChannelPeak (int channel, double* out)
{
    if (out == nullptr)
        return resultBadArgument;
    if (! peakMonitoring.load (std::memory_order_relaxed))
        return resultNotEnabled;
    if (channel < 0 || channel >= numPeaks.load (std::memory_order_relaxed))
        return resultOutOfRange;

    ChannelPeak& peak = peaks[static_cast<std::size_t> (channel)];
    *out = peak.latched.load (std::memory_order_relaxed);
    if (peak.fresh.exchange (false, std::memory_order_relaxed))
        peak.latched.store (peak.running.exchange (0.0, std::memory_order_relaxed), std::memory_order_relaxed);
    return resultDone;
}

bool MVPatchRenderer::addChannelTap (int channel, ChannelTap function, void* context)
{
    if (channel < 0 || channel >= maxTappedChannels || function == nullptr)
        return false;

    const MVScopedLock audio (attributes->audioLock);
    auto& taps = channelTaps[static_cast<std::size_t> (channel)];
    const TapEntry entry { function, context };
    if (std::find (taps.begin(), taps.end(), entry) != taps.end())
        return false;
    taps.push_back (entry);
    return true;
}

bool MVPatchRenderer::removeChannelTap (int channel, ChannelTap function, void* context)
{
    if (channel < 0 || channel >= maxTappedChannels)
        return false;

    const MVScopedLock audio (attributes->audioLock);
    return std::erase (channelTaps[static_cast<std::size_t> (channel)], TapEntry { function, context }) > 0;
}

void MVPatchRenderer::addPatchListener (MVPatchListeners::Function function, void* context, int layer, bool wantsProxy)
{
    patchListeners.addPatchListener (function, context, layer, wantsProxy);
}

void MVPatchRenderer::removePatchListener (MVPatchListeners::Function function, void* context)
{
    patchListeners.removePatchListener (function, context);
}

void MVPatchRenderer::addStateListener (MVPatchListeners::Function function, void* context)
{
    patchListeners.addStateListener (function, context);
}

void MVPatchRenderer::removeStateListener (MVPatchListeners::Function function, void* context)
{
    patchListeners.removeStateListener (function, context);
}

} // namespace morvanelab
