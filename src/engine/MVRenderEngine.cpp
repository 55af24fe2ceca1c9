// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVRenderEngine.h"

#include "engine/MVSignalFeed.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"
#include "operators/MVOperatorTable.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace morvanelab
{

namespace
{

constexpr double offlineWaitSeconds = 5.0;
constexpr double threadExitSeconds = 0.1;
constexpr int controlWaitMilliseconds = 50;

bool isRate (double rate) { return std::isfinite (rate) && rate > 0.0; }

bool isLayout (int layout) { return layout == layoutInterleaved || layout == layoutChannelBuffers; }

bool isSupported (const MVRenderStreamFormat& format)
{
    return isRate (format.engineSampleRate) && isRate (format.streamSampleRate) && isLayout (format.inputLayout)
           && isLayout (format.outputLayout) && sampleReaderFor (format.inputSampleType) != nullptr
           && sampleWriterFor (format.outputSampleType) != nullptr && format.numIn >= 0
           && format.numIn <= MVInputStream::maxChannels && format.numOut >= 0
           && format.numOut <= MVOutputStream::maxChannels;
}

} // namespace

MVRenderEngine::MVRenderEngine()
    : controlManager (&eventManager), midiManager (&controlManager, &eventManager),
      parameterManager (&controlManager, &eventManager), rendererManager (&eventManager, &attributes, &controlManager),
      eventThread (&eventManager)
{
    eventManager.addThreadCategory (threadCategoryEvent);
    eventManager.addThreadCategory (threadCategoryRender);
    registerOperators (attributes);
    configure (MVRenderStreamFormat());
}

MVRenderEngine::~MVRenderEngine()
{
    MVRenderEngine::setActive (false);
    rendererManager.destroyAllRenderers();
}

// Life ------------------------------------------------------------------------------------------------------------

int MVRenderEngine::configure (const MVRenderStreamFormat& newFormat)
{
    if (! isSupported (newFormat))
        return resultBadArgument;

    const bool wasActive = running.load();
    if (wasActive)
        setActive (false);

    {
        const MVScopedLock lock (apiLock);
        format = newFormat;
        attributes.sampleRate = format.engineSampleRate;
        attributes.numInputChannels = format.numIn;
        attributes.numOutputChannels = format.numOut;
        input.configure (format);
        output.configure (format);
        eventManager.reset();
        controlManager.reset();
    }

    if (wasActive)
        setActive (true);
    return resultDone;
}

void MVRenderEngine::setActive (bool on)
{
    // Before the API lock is taken: what runs on the event thread may be waiting for it.
    stopEventThread();

    std::vector<MVPatchLoadTracker::Entry> ended;
    {
        const MVScopedLock lock (apiLock);
        if (running.load())
            setRunning (false);
        ended = rendererManager.takeLoads();
        if (isActive())
            deactivate();
        if (on)
            activate();
    }

    MVPatchLoadTracker::tellStopped (ended);
}

void MVRenderEngine::activate()
{
    eventManager.setActive (true);
    controlManager.resizeControls ((format.numIn + format.numOut) * 16 + 33);
    eventManager.addHandler (&rendererManager);
    rendererManager.setActive (true);
    engineControlId = controlManager.allocateControlId();
    controlManager.acquireControl (engineControlId);
    MVObject::setActive (true);
    setRunning (true);
}

void MVRenderEngine::deactivate()
{
    eventManager.removeHandler (rendererManager.getId());
    rendererManager.setActive (false);

    controlManager.releaseControl (engineControlId);
    engineControlId = 0;
    controlManager.resizeControls (0);
    eventManager.setActive (false);
    MVObject::setActive (false);
}

void MVRenderEngine::setRunning (bool on)
{
    running.store (on);
    rendererManager.prepare (on);
    controlManager.setActive (on);
    eventManager.setActive (on);
    input.setActive (on);
    output.setActive (on);

    if (on && ! eventThread.isRunning())
        eventThread.start();
}

/** The thread leaves after the event it is working on, whatever is still queued. */
void MVRenderEngine::stopEventThread()
{
    if (! eventThread.isRunning())
        return;

    eventThread.requestStop();
    eventThread.stop (threadExitSeconds);
}

void MVRenderEngine::reset()
{
    eventManager.reset();
    {
        const MVScopedLock lock (apiLock);
        rendererManager.reset();
        input.clear();
        output.clear();
    }
    controlManager.reset();
}

// Stream ----------------------------------------------------------------------------------------------------------

int MVRenderEngine::writeInput (const void* const* data, int channels, int numFrames, int& written)
{
    if (data == nullptr || channels < 0 || numFrames < 0)
        return resultBadArgument;

    const MVScopedLock lock (apiLock);
    if (! isActive())
        return resultNotEnabled;

    input.write (data, std::min (channels, format.numOut), numFrames);
    written = numFrames;
    return resultDone;
}

int MVRenderEngine::renderBlock (void* const* out, int channels, int numSamples, int& written)
{
    if (out == nullptr || channels < 0 || numSamples < 0)
        return resultBadArgument;
    if (isOffline() && running.load())
        waitForPendingWork (offlineWaitSeconds);

    const MVScopedLock lock (apiLock);
    if (! isActive())
        return resultNotEnabled;

    eventManager.dispatch (threadCategoryRender, false);
    const int limit = std::min ({ channels, format.numOut, numSamples });

    for (int done = 0; done < numSamples && output.numChannels() > 0;)
    {
        const int piece = std::min (numSamples - done, output.maxFrames());
        makeReady (piece);
        output.drain (out, limit, piece, done);
        done += piece;
    }

    written = numSamples;
    controlManager.flushPendingValues();
    return resultDone;
}

void MVRenderEngine::makeReady (int numFrames)
{
    const MVScopedLock audio (attributes.audioLock);
    while (output.framesReady() < numFrames)
        renderInternalBlock();
}

void MVRenderEngine::renderInternalBlock()
{
    const double* const silence = attributes.silence.data();
    static constexpr int numPointers = MVInputStream::maxChannels;
    std::array<const double*, numPointers> muted;
    muted.fill (silence);

    input.pull();
    const double* const* const in = isInputMuted() ? muted.data() : input.blocks (silence);
    double* const* const out = output.beginBlock();
    rendererManager.render (format.numIn, in, format.numOut, out, blockFrames, 0);

    for (int channel = 0; channel < format.numOut; ++channel)
        if (MVSignalFeed* const feed = outputFeeds[static_cast<std::size_t> (channel)]; feed != nullptr)
            feed->push (out[channel], blockFrames);
    output.commitBlock();
}

bool MVRenderEngine::hasPendingControlChanges() const { return controlManager.hasPendingValues(); }

bool MVRenderEngine::waitForPendingWork (double seconds)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::duration<double> (limitTo (seconds, 0.0, 3600.0));
    const MVPatchLoadTracker& loads = rendererManager.loads();

    // What waits for a fade needs blocks to be rendered, so it must not be waited for.
    for (;;)
    {
        const bool loadsDone = loads.numBeforeFade() == 0 || rendererManager.isFadeSounding();
        if (loadsDone && ! hasPendingControlChanges())
            return true;
        if (Clock::now() >= deadline)
            return false;

        if (loadsDone)
            controlManager.waitForPendingValues (controlWaitMilliseconds);
        else
            std::this_thread::sleep_for (std::chrono::microseconds (200));
    }
}

} // namespace morvanelab
