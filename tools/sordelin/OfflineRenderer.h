// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AudioFiles.h"
#include "OutputFile.h"
#include "RenderSchedule.h"

#include "engine/MVRenderEngine.h"

#include <cstdint>
#include <vector>

namespace morvanelab
{

/** What to render and how. */
struct RenderJob
{
    Bytes patch; ///< a patch file's bytes
    double sampleRate = 44100.0;
    std::vector<int> blocks { 512 }; ///< host block sizes, used in turn
    std::int64_t frames = 0;
    int playMode = 2;
    int voices = 16;
    std::uint64_t seed = 1;
    StereoAudio input; ///< silence behind its end
    RenderSchedule schedule;
};

/** Plays one patch through an engine that is configured as the plug-in configures it. The same job always gives the
    same samples. */
class OfflineRenderer
{
public:
    explicit OfflineRenderer (const RenderJob& job);

    /** Throws badData with the system's text if the patch does not load. */
    StereoAudio render();

private:
    void start();
    void loadPatch();
    void applyDueActions (double now);
    void apply (const RenderAction& action);
    void renderBlock (StereoAudio& audio, std::int64_t position, int frames);
    void settle();

    const RenderJob& job;
    MVRenderEngine engine;
    std::uint64_t part = 0;
    std::vector<bool> applied;
};

} // namespace morvanelab
