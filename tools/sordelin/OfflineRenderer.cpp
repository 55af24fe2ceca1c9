// SPDX-License-Identifier: GPL-3.0-or-later
#include "OfflineRenderer.h"

#include "CommandFailure.h"
#include "ProgressBar.h"

#include "foundation/MVRandom.h"
#include "foundation/MVResult.h"

#include <algorithm>
#include <array>
#include <future>

namespace morvanelab
{

namespace
{

constexpr int monoMode = 1;
constexpr double settleSeconds = 60.0;

/** How a load ended, and the text for the user where it failed. */
struct LoadResult
{
    int code;
    std::string message;
};

void loadCompleted (void* context, void*, int code, const char* message)
{
    static_cast<std::promise<LoadResult>*> (context)->set_value ({ code, message != nullptr ? message : "" });
}

} // namespace

OfflineRenderer::OfflineRenderer (const RenderJob& jobToRender)
    : job (jobToRender), applied (job.schedule.getActions().size())
{
    MVRandom::startAllFrom (job.seed);
}

StereoAudio OfflineRenderer::render()
{
    start();
    loadPatch();

    StereoAudio audio;
    for (auto& channel : audio.channels)
        channel.resize (static_cast<std::size_t> (job.frames));

    ProgressBar progress ("rendering", job.frames);
    std::size_t next = 0;

    for (std::int64_t position = 0; position < job.frames;)
    {
        const int frames =
            static_cast<int> (std::min<std::int64_t> (job.blocks[next++ % job.blocks.size()], job.frames - position));
        applyDueActions (static_cast<double> (position) / job.sampleRate);
        renderBlock (audio, position, frames);
        position += frames;
        progress.update (position);
    }

    return audio;
}

void OfflineRenderer::start()
{
    MVRenderStreamFormat format;
    format.engineSampleRate = job.sampleRate;
    format.streamSampleRate = job.sampleRate;
    format.maxBlock = *std::max_element (job.blocks.begin(), job.blocks.end());

    if (engine.configure (format) != resultDone)
        throw badData ("The engine refused this stream format.");

    engine.setActive (true);
    part = engine.createPart (job.voices);
    if (part == 0)
        throw badData ("Error:  Not enough resources to load patch.");

    engine.setPlayMode (part, job.playMode);
    engine.setControlValue (engine.getVolumeControlId (part), 1.0);

    for (int slot = 0; slot < engine.numParameterControls (part); ++slot)
        engine.getParameterManager().setControl (slot, engine.getParameterControlId (part, slot));
}

void OfflineRenderer::loadPatch()
{
    std::promise<LoadResult> completion;
    auto ended = completion.get_future();
    const int posted = engine.postPatchLoad (job.patch.data(), static_cast<int> (job.patch.size()), part, 0.0,
                                             loadCompleted, &completion);

    const LoadResult result = posted == resultPosted ? ended.get() : LoadResult { posted, "" };
    if (result.code != resultDone)
        throw badData (! result.message.empty()           ? result.message
                       : result.code == resultNoResources ? "Error:  Not enough resources to load patch."
                                                          : "Error:  Unknown error loading patch.");

    settle();
    if (job.playMode == monoMode)
        engine.startMonoVoice (part);
}

void OfflineRenderer::applyDueActions (double now)
{
    const auto& actions = job.schedule.getActions();

    for (std::size_t i = 0; i < actions.size(); ++i)
        if (! applied[i] && actions[i].seconds <= now)
        {
            apply (actions[i]);
            applied[i] = true;
        }

    settle();
}

void OfflineRenderer::apply (const RenderAction& action)
{
    switch (action.kind)
    {
        case RenderAction::Kind::noteOn:
            engine.noteOnAll (action.index, action.value);
            break;
        case RenderAction::Kind::noteOff:
            engine.noteOffAll (action.index);
            break;
        case RenderAction::Kind::parameter:
            engine.setControlValue (engine.getParameterControlId (part, action.index), action.value);
            break;
        case RenderAction::Kind::midi:
            engine.getMidiManager().processMidiDataBuffer (action.bytes.data(), static_cast<int> (action.bytes.size()),
                                                           false);
            break;
    }
}

void OfflineRenderer::renderBlock (StereoAudio& audio, std::int64_t position, int frames)
{
    const std::size_t start = static_cast<std::size_t> (position);
    std::array<std::vector<float>, 2> input;
    std::array<const void*, 2> in {};
    std::array<void*, 2> out {};

    for (std::size_t channel = 0; channel < 2; ++channel)
    {
        const auto& given = job.input.channels[channel];
        input[channel].resize (static_cast<std::size_t> (frames));
        if (start < given.size())
            std::copy_n (given.begin() + position, std::min<std::size_t> (input[channel].size(), given.size() - start),
                         input[channel].begin());
        in[channel] = input[channel].data();
        out[channel] = audio.channels[channel].data() + start;
    }

    int taken = 0;
    int written = 0;
    engine.writeInput (in.data(), 2, frames, taken);
    engine.renderBlock (out.data(), 2, frames, written);
}

void OfflineRenderer::settle()
{
    if (! engine.waitForPendingWork (settleSeconds))
        throw badData ("Error:  Unknown error loading patch.");
}

} // namespace morvanelab
