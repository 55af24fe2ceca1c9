// SPDX-License-Identifier: GPL-3.0-or-later
// The calls of MVRenderEngine from outside the audio thread. Each holds the API lock.
#include "engine/MVPatchRenderer.h"
#include "engine/MVRenderEngine.h"
#include "foundation/MVLog.h"
#include "foundation/MVResult.h"

#include <algorithm>
#include <exception>

namespace morvanelab
{

namespace
{

constexpr const char* logCategory = "RNDR_API";

} // namespace

// Mutes and levels ------------------------------------------------------------------------------------------------

void MVRenderEngine::setOutputMuted (bool on)
{
    const MVScopedLock lock (apiLock);
    outputMuted.store (on, std::memory_order_relaxed);
    for (int i = 0; i < rendererManager.numSlots(); ++i)
        rendererManager.setOutputMuted (rendererManager.rendererIdAt (i), on);
}

void MVRenderEngine::setInputLevelsEnabled (bool on) { input.setLevelsEnabled (on); }

double MVRenderEngine::takeInputLevel (int channel) { return input.takeLevel (channel); }

int MVRenderEngine::setOutputPeaksEnabled (std::uint64_t part, bool on)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.withRenderer (part, [on] (MVPatchRenderer& renderer) { renderer.setPeakMonitoring (on); });
}

int MVRenderEngine::getOutputPeak (std::uint64_t part, int channel, double* out)
{
    int result = resultDone;
    const int found = rendererManager.withRenderer (part, [&] (MVPatchRenderer& renderer)
                                                    { result = renderer.getChannelPeak (channel, out); });
    return found == resultDone ? result : found;
}

int MVRenderEngine::setOutputFeed (int channel, MVSignalFeed* feed)
{
    if (channel < 0 || channel >= MVOutputStream::maxChannels)
        return resultOutOfRange;

    const MVScopedLock lock (apiLock);
    outputFeeds[static_cast<std::size_t> (channel)] = feed;
    return resultDone;
}

// Parts -----------------------------------------------------------------------------------------------------------

std::uint64_t MVRenderEngine::createPart (int numVoices)
{
    const MVScopedLock lock (apiLock);
    const std::uint64_t part = rendererManager.createRenderer (0, numVoices, true, 0, true);
    rendererManager.setOutputMuted (part, isOutputMuted());
    return part;
}

int MVRenderEngine::destroyPart (std::uint64_t part)
{
    const MVScopedLock lock (apiLock);
    if (rendererManager.rendererIndex (part) < 0)
        return resultUnknownId;

    // The event thread may be loading into it.
    return isActive() ? rendererManager.postPlain (eventDestroyRenderer, part)
                      : rendererManager.destroyRenderer (part, true);
}

int MVRenderEngine::setPlayMode (std::uint64_t part, int mode)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.setPlayMode (part, mode);
}

int MVRenderEngine::getPlayMode (std::uint64_t part)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.getPlayMode (part);
}

int MVRenderEngine::setPartEnabled (std::uint64_t part, bool on)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.setEnabled (part, on);
}

bool MVRenderEngine::isPartEnabled (std::uint64_t part)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.isEnabled (part);
}

int MVRenderEngine::setPartInputMuted (std::uint64_t part, bool on)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.setInputMuted (part, on);
}

int MVRenderEngine::setPartOutputMuted (std::uint64_t part, bool on)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.setOutputMuted (part, on);
}

int MVRenderEngine::resetPart (std::uint64_t part)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.resetRenderer (part);
}

int MVRenderEngine::noteOn (std::uint64_t part, int key, double velocity)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.noteOn (part, key, velocity);
}

int MVRenderEngine::noteOff (std::uint64_t part, int key)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.noteOff (part, key);
}

void MVRenderEngine::noteOnAll (int key, double velocity)
{
    const MVScopedLock lock (apiLock);
    rendererManager.noteOnAll (key, velocity);
}

void MVRenderEngine::noteOffAll (int key)
{
    const MVScopedLock lock (apiLock);
    rendererManager.noteOffAll (key);
}

int MVRenderEngine::startMonoVoice (std::uint64_t part)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.startMonoVoice (part);
}

int MVRenderEngine::killAllVoices (std::uint64_t part)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.killAllVoices (part);
}

int MVRenderEngine::getActiveVoiceCount (std::uint64_t part) { return rendererManager.numActiveParts (part); }

// Patches ---------------------------------------------------------------------------------------------------------

int MVRenderEngine::loadPatchOnLayer (std::uint64_t part, int layer, MVSmartPtr<MVObject>& data)
{
    if (! data)
        return resultEmptyData;

    if (! rendererManager.isOnHandlerThread())
    {
        const MVScopedLock lock (apiLock);
        return rendererManager.postLoad (part, layer, 0, data, nullptr, nullptr, nullptr);
    }

    // A load takes its time, so it runs without the API lock.
    const int result = rendererManager.loadPatch (part, layer, data);
    if (result == resultUnderWay)
        rendererManager.postTransition (part);
    return result;
}

int MVRenderEngine::postPatchLoad (const void* data, int size, std::uint64_t part, double fadeSeconds,
                                   MVPatchLoadCompletion completion, void* contextA, void* contextB)
{
    if (data == nullptr || size < 1)
        return resultEmptyData;

    MVSmartPtr<MVObject> copy = makeSmart<MVDataBlock> (data, size);
    const MVScopedLock lock (apiLock);
    const int result = rendererManager.postLoad (part, 0, rendererManager.fadeBlocksFor (fadeSeconds), copy, completion,
                                                 contextA, contextB);
    return result == resultUnknownId ? int { resultFailed } : result;
}

int MVRenderEngine::postPatchUnload (std::uint64_t part, int layer, double fadeSeconds,
                                     MVPatchLoadCompletion completion, void* contextA, void* contextB)
{
    MVSmartPtr<MVObject> nothing;
    const MVScopedLock lock (apiLock);
    const int result = rendererManager.postLoad (part, layer, rendererManager.fadeBlocksFor (fadeSeconds), nothing,
                                                 completion, contextA, contextB);
    return result == resultUnknownId ? int { resultFailed } : result;
}

MVSmartPtr<MVRiffPacker> MVRenderEngine::getPatchData (std::uint64_t part, int layer)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.getPatchData (part, layer);
}

bool MVRenderEngine::isParameterInUse (std::uint64_t part, int index)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.isParameterInUse (part, index);
}

int MVRenderEngine::addPatchListener (std::uint64_t part, MVPatchListeners::Function function, void* context, int layer,
                                      bool wantsProxy)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.withRenderer (part, [=] (MVPatchRenderer& renderer)
                                         { renderer.addPatchListener (function, context, layer, wantsProxy); });
}

int MVRenderEngine::removePatchListener (std::uint64_t part, MVPatchListeners::Function function, void* context)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.withRenderer (part, [=] (MVPatchRenderer& renderer)
                                         { renderer.removePatchListener (function, context); });
}

int MVRenderEngine::setOperatorAttribute (std::uint64_t part, int layer, std::uint64_t nodeId, int attribute, int kind,
                                          double value, MVDataBlock* data)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.setOperatorAttribute (part, layer, nodeId, attribute, kind, value, data);
}

MVSmartPtr<MVDataBlock> MVRenderEngine::saveFullPreset()
{
    MVSmartPtr<MVRiffPacker> riff;
    {
        const MVScopedLock lock (apiLock);
        riff = rendererManager.saveFullPresetRiff();
    }
    return riff ? riff->packToBlock (true) : MVSmartPtr<MVDataBlock>();
}

int MVRenderEngine::loadFullPreset (const void* data, int size, double fadeSeconds, MVPatchLoadCompletion completion,
                                    void* contextA, void* contextB)
{
    if (data == nullptr || size < 1)
        return resultEmptyData;

    auto riff = makeSmart<MVRiffPacker> (data, size, true);
    if (! riff->isWellFormed())
        return resultEmptyData;

    const MVScopedLock lock (apiLock);
    return rendererManager.postFullPreset (riff, fadeSeconds, completion, contextA, contextB);
}

// Output compressor -----------------------------------------------------------------------------------------------

int MVRenderEngine::readCompressor (std::uint64_t part, double (MVPatchRenderer::*getter)() const, double* out)
{
    if (out == nullptr)
        return resultBadArgument;

    const MVScopedLock lock (apiLock);
    return rendererManager.withRenderer (part, [=] (const MVPatchRenderer& renderer) { *out = (renderer.*getter)(); });
}

int MVRenderEngine::changeCompressor (std::uint64_t part, void (MVPatchRenderer::*setter) (double), double value)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.withRenderer (part, [=] (MVPatchRenderer& renderer) { (renderer.*setter) (value); });
}

int MVRenderEngine::getCompressorThreshold (std::uint64_t part, double* out)
{
    return readCompressor (part, &MVPatchRenderer::getCompressorThreshold, out);
}

int MVRenderEngine::setCompressorThreshold (std::uint64_t part, double value)
{
    return changeCompressor (part, &MVPatchRenderer::setCompressorThreshold, value);
}

int MVRenderEngine::getCompressorRollOff (std::uint64_t part, double* out)
{
    return readCompressor (part, &MVPatchRenderer::getCompressorRollOff, out);
}

int MVRenderEngine::setCompressorRollOff (std::uint64_t part, double value)
{
    return changeCompressor (part, &MVPatchRenderer::setCompressorRollOff, value);
}

int MVRenderEngine::getPreCompressionVolume (std::uint64_t part, double* out)
{
    return readCompressor (part, &MVPatchRenderer::getOutputVolume, out);
}

int MVRenderEngine::setPreCompressionVolume (std::uint64_t part, double value)
{
    return changeCompressor (part, &MVPatchRenderer::setOutputVolume, value);
}

// Controls --------------------------------------------------------------------------------------------------------

std::uint16_t MVRenderEngine::getVolumeControlId (std::uint64_t part)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.getVolumeControlId (part);
}

std::uint16_t MVRenderEngine::getParameterControlId (std::uint64_t part, int index)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.getParameterControlId (part, index);
}

std::uint16_t MVRenderEngine::getPitchControlId (std::uint64_t part)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.getPitchControlId (part);
}

int MVRenderEngine::numParameterControls (std::uint64_t part)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.numParameterControls (part);
}

int MVRenderEngine::getControlValue (std::uint16_t id, double* out)
{
    if (out == nullptr)
        return resultBadArgument;

    const MVScopedLock lock (apiLock);
    if (! controlManager.controlExists (id))
        return resultUnknownId;

    *out = controlManager.getControlValue (id);
    return resultDone;
}

int MVRenderEngine::setControlValue (std::uint16_t id, double value)
{
    const MVScopedLock lock (apiLock);
    if (! controlManager.controlExists (id))
        return resultUnknownId;

    controlManager.setControlValue (id, value);
    return resultDone;
}

int MVRenderEngine::midiMapAddCCToControlValue (std::uint16_t id, double, int channel, int cc)
{
    const MVScopedLock lock (apiLock);
    mvLog (logCategory, "morvanelab::MVRenderEngine::midiMapAddCCToControlValue",
           "adding chan %d cc %d to control var %d", channel, cc, int { id });

    if (channel < 0 || channel >= 16 || cc < 0 || cc >= 256)
        return resultOutOfRange;
    return midiManager.addMidiControlToValueId (channel, cc, id) ? resultDone : resultFailed;
}

int MVRenderEngine::mapMidiContinousControllerFromData (std::uint16_t id, const void* data, int size, int& channel,
                                                        int& cc, int& value, int& used)
{
    if (data == nullptr)
        return resultBadArgument;

    const MVScopedLock lock (apiLock);
    if (! controlManager.controlExists (id))
        return resultUnknownId;

    const char* const function = "morvanelab::MVRenderEngine::mapMidiContinousControllerFromData";
    MVList<MVMidiEvent> events;
    midiManager.tokenizeMidiData (static_cast<const std::uint8_t*> (data), std::max (0, size), false, events);
    mvLog (logCategory, function, "%d midi events found for CC mapping", events.count());

    int result = resultFailed;
    used = 0;
    for (auto* node = events.firstNode(); node != nullptr; node = node->next)
    {
        const MVMidiEvent& event = node->value;
        if (event.status == midiController && event.data1 != midiAllNotesOff)
        {
            if (result == resultDone && (event.channel != channel || event.data1 != cc || event.data2 != value))
                break;

            if (result != resultDone)
            {
                channel = event.channel;
                cc = event.data1;
                value = event.data2;
                result = midiMapAddCCToControlValue (id, 1.0, channel, cc);
                mvLog (logCategory, function, "from midi data stream, mapping chan %d cc %d to var id %d", channel, cc,
                       int { id });
            }
        }
        used += event.byteCount;
    }

    return result;
}

int MVRenderEngine::unmapControlId (std::uint16_t id)
{
    const MVScopedLock lock (apiLock);
    if (! controlManager.controlExists (id))
        return resultUnknownId;

    midiManager.unmapControlValueId (id);
    return resultDone;
}

} // namespace morvanelab
