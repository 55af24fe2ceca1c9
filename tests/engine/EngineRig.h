// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/MVRenderEngine.h"
#include "support/PatchBuilder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace morvanelab::test
{

/** A patch as the bytes that are stored. */
using PatchBytes = std::vector<std::uint8_t>;

PatchBytes packed (const PatchBuilder& patch);
/** A sine of fixed frequency, heard in a voice that plays. */
PatchBuilder sinePatch (double hz);
/** A sine that follows keys and their velocity. */
PatchBuilder keyedPatch();
/** The host's first input channel. */
PatchBuilder throughPatch();

/** An active engine with one part at full volume, driven block by block as a host would. */
class EngineRig
{
public:
    explicit EngineRig (const MVRenderStreamFormat& format = {}, int numVoices = 4, int playMode = 2);

    /** Loads a patch and waits until it plays, rendering blocks while its fade asks for them. Its result. */
    int load (const PatchBuilder& patch) { return load (packed (patch)); }
    int load (const PatchBytes& bytes);
    /** Posts a load whose result is noted in results. */
    int post (const PatchBytes& bytes);
    bool waitForLoads (bool renderMeanwhile = true);

    /** Renders the next frames in one call and returns them, channel after channel. */
    std::vector<float> render (int numFrames);
    /** Writes the same input to both channels, then renders. */
    std::vector<float> process (const std::vector<float>& input);

    /** Results and messages of completions in the order in which they came. They outlive the engine, whose
        destruction may still add to them. */
    std::vector<int> results;
    std::vector<std::string> messages;
    MVRenderEngine engine;
    std::uint64_t part = 0;

private:
    static void noteResult (void* rig, void*, int result, const char* message);
};

double peakOf (const std::vector<float>& samples);

} // namespace morvanelab::test
