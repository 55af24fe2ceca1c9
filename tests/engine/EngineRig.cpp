// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/EngineRig.h"

#include <chrono>
#include <cmath>
#include <thread>

namespace morvanelab::test
{

namespace
{

constexpr auto patience = std::chrono::seconds (20);

} // namespace

PatchBytes packed (const PatchBuilder& patch)
{
    const auto block = patch.tree()->packToBlock (true);
    return { block->flatBytes(), block->flatBytes() + block->getUsed() };
}

PatchBuilder sinePatch (double hz)
{
    PatchBuilder patch;
    const int frequency = patch.constantNode (hz);
    const int oscillator = patch.node (PatchBuilder::oscillator);
    const int output = patch.node (PatchBuilder::output);
    patch.route (frequency, 0, oscillator, 0);
    patch.route (oscillator, 0, output, 0);
    return patch;
}

PatchBuilder keyedPatch()
{
    PatchBuilder patch;
    const int keys = patch.node (PatchBuilder::midiKeyIn);
    const int oscillator = patch.node (PatchBuilder::oscillator);
    const int product = patch.node (PatchBuilder::product);
    const int output = patch.node (PatchBuilder::output);
    patch.route (keys, 0, oscillator, 0);
    patch.route (oscillator, 0, product, 0);
    patch.route (keys, 1, product, 1);
    patch.route (product, 0, output, 0);
    return patch;
}

PatchBuilder throughPatch()
{
    PatchBuilder patch;
    const int input = patch.node (PatchBuilder::input);
    const int output = patch.node (PatchBuilder::output);
    patch.route (input, 0, output, 0);
    return patch;
}

EngineRig::EngineRig (const MVRenderStreamFormat& format, int numVoices, int playMode)
{
    engine.configure (format);
    engine.setActive (true);
    part = engine.createPart (numVoices);
    engine.setPlayMode (part, playMode);
    engine.setControlValue (engine.getVolumeControlId (part), 1.0);
    engine.waitForPendingWork (20.0);
}

void EngineRig::noteResult (void* rig, void*, int result, const char* message)
{
    auto& self = *static_cast<EngineRig*> (rig);
    self.results.push_back (result);
    self.messages.emplace_back (message != nullptr ? message : "");
}

int EngineRig::post (const PatchBytes& bytes)
{
    return engine.postPatchLoad (bytes.data(), static_cast<int> (bytes.size()), part, 0.01, noteResult, this);
}

int EngineRig::load (const PatchBytes& bytes)
{
    const int posted = post (bytes);
    if (posted != 6)
        return posted;
    return waitForLoads() && ! results.empty() ? results.back() : -1;
}

bool EngineRig::waitForLoads (bool renderMeanwhile)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;

    while (engine.isPatchLoadPending())
    {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        if (renderMeanwhile)
            render (256);
        std::this_thread::sleep_for (std::chrono::microseconds (300));
    }

    return true;
}

std::vector<float> EngineRig::render (int numFrames)
{
    std::vector<float> samples (static_cast<std::size_t> (2 * numFrames));
    void* channels[] { samples.data(), samples.data() + numFrames };
    int written = 0;
    engine.renderBlock (channels, 2, numFrames, written);
    return samples;
}

std::vector<float> EngineRig::process (const std::vector<float>& input)
{
    const void* channels[] { input.data(), input.data() };
    int written = 0;
    engine.writeInput (channels, 2, static_cast<int> (input.size()), written);
    return render (static_cast<int> (input.size()));
}

double peakOf (const std::vector<float>& samples)
{
    double peak = 0.0;
    for (const float sample : samples)
        peak = std::max (peak, std::fabs (static_cast<double> (sample)));
    return peak;
}

} // namespace morvanelab::test
