// SPDX-License-Identifier: GPL-3.0-or-later
// Opening, starting, restoring, interleaving and closing, on a machine without a display.
#include "plugin/PluginRig.h"

#include "host/LevelReport.h"
#include "support/AllocationWatch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

namespace morvanelab::test
{

namespace
{

constexpr int editGetRect = 13;

int threadCount()
{
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator ("/proc/self/task"))
        ++count;
    return count;
}

/** Upward zero crossings in a second. */
double frequencyOf (const Take& take, double rate)
{
    int crossings = 0;
    for (std::size_t i = 1; i < take.left.size(); ++i)
        crossings += take.left[i - 1] < 0.0F && take.left[i] >= 0.0F ? 1 : 0;
    return crossings * rate / static_cast<double> (take.left.size());
}

class PluginLife : public testing::Test
{
protected:
    PluginLife() { rig.open()->start (44100.0, 512); }

    PluginRig rig;
};

} // namespace

TEST_F (PluginLife, survivesFiftyOpeningsAndLeavesNoThread)
{
    const auto first = rig.openWithPatch (slotSine)->getState();
    const int threads = threadCount();
    for (int cycle = 0; cycle < 50; ++cycle)
    {
        const auto instance = rig.open();
        if (cycle % 3 == 0)
            continue; // opened and closed as a scanner does
        instance->start (44100.0, 256);
        instance->setState (first);
        if (cycle % 3 == 2)
            render (*instance, 700, { 256 }, { noteOn (60) }); // closed in the middle of a fade, with a note held
    }
    EXPECT_EQ (threadCount(), threads);
}

TEST_F (PluginLife, twoInstancesSoundAsEachAlone)
{
    const auto alone = [&] (int slot, int key)
    {
        const auto instance = rig.openWithPatch (slot);
        return render (*instance, 16384, { 512 }, { noteOn (key) });
    };
    const auto sineAlone = alone (slotSine, 60);
    const auto squareAlone = alone (slotSquare, 67);
    ASSERT_GT (sineAlone.peak(), 0.01);
    ASSERT_GT (squareAlone.peak(), 0.01);

    const auto sine = rig.openWithPatch (slotSine);
    const auto square = rig.openWithPatch (slotSquare);
    Take sineTake;
    Take squareTake;
    sine->send (std::vector { noteOn (60) });
    square->send (std::vector { noteOn (67) });
    for (int block = 0; block < 32; ++block)
    {
        sine->render (512, sineTake.left, sineTake.right);
        square->render (512, squareTake.left, squareTake.right);
    }
    EXPECT_TRUE (sineTake == sineAlone);
    EXPECT_TRUE (squareTake == squareAlone);
}

TEST_F (PluginLife, stateBeforeStartIsRestoredAtStart)
{
    const auto late = rig.openWithPatch (slotSquare);
    const auto usual = render (*late, 8192, { 512 }, { noteOn (60) });

    const auto early = rig.open();
    EXPECT_TRUE (early->getState().empty());
    early->setState (rig.stateFor (slotSquare));
    early->start (44100.0, 512);
    EXPECT_TRUE (render (*early, 8192, { 512 }, { noteOn (60) }) == usual);
    const auto fromVolumeOn = [] (const std::vector<std::uint8_t>& state)
    { return std::vector<std::uint8_t> (state.begin() + 24, state.end()); };
    EXPECT_EQ (fromVolumeOn (early->getState()), fromVolumeOn (late->getState()));
}

TEST_F (PluginLife, keepsPatchValuesAndPitchThroughNewRates)
{
    const auto instance = rig.openWithPatch (slotSine);
    render (*instance, 1024);
    instance->effect().setParameter (&instance->effect(), 0, 0.75F);
    render (*instance, 1024);
    const auto state = instance->getState();

    for (const double rate : { 48000.0, 96000.0, 44100.0, 22050.0 })
    {
        instance->start (rate, 128);
        render (*instance, 8192, { 128 }, { noteOn (69) });
        const auto take = render (*instance, static_cast<int> (rate), { 128 });
        EXPECT_NEAR (frequencyOf (take, rate), 440.0, 3.0) << rate;
        EXPECT_EQ (instance->getState(), state) << rate;
    }
}

TEST_F (PluginLife, blockSizesMakeNoDifference)
{
    const auto usual = render (*rig.openWithPatch (slotSine), 30000, { 512 }, { noteOn (64) });
    ASSERT_GT (usual.peak(), 0.01);
    for (const auto& blocks :
         { std::vector { 8192 }, std::vector { 2, 255, 257, 3, 1024 }, std::vector { 64, 4096, 100 } })
        EXPECT_TRUE (render (*rig.openWithPatch (slotSine), 30000, blocks, { noteOn (64) }) == usual)
            << "first block " << blocks[0];
}

TEST_F (PluginLife, restartInTheMiddleOfALoadEndsPromptly)
{
    const auto instance = rig.openWithPatch (slotSine);
    for (int round = 0; round < 20; ++round)
    {
        instance->setState (rig.stateFor (round % 2 == 0 ? slotSquare : slotSine));
        instance->start (44100.0 + round, 512);
    }
    EXPECT_GT (render (*instance, 8192, { 512 }, { noteOn (60) }).peak(), 0.01);
}

TEST_F (PluginLife, patchesChangeWhileAudioRuns)
{
    const auto instance = rig.openWithPatch (slotSine);
    instance->setOffline (false);
    std::atomic<bool> ended { false };
    bool finite = true;
    std::thread audio (
        [&]
        {
            for (int block = 0; ! ended; ++block)
            {
                const auto take = render (*instance, 256, { 256 }, { noteOn (48 + block % 24) });
                finite = finite && host::measureLevel (take.left, take.right, 0, take.left.size()).finite;
            }
        });
    for (int change = 0; change < 100; ++change)
    {
        instance->setState (rig.stateFor (change % 2 == 0 ? slotSquare : slotSine));
        instance->effect().setParameter (&instance->effect(), 0, 0.5F);
        EXPECT_EQ (instance->getState().size(), 320U);
        instance->text (8, 0);
    }
    ended = true;
    audio.join();
    EXPECT_TRUE (finite);

    instance->setOffline (true);
    instance->start (44100.0, 256);
    EXPECT_GT (render (*instance, 8192, { 256 }, { noteOn (60) }).peak(), 0.01);
    EXPECT_EQ (instance->text (8, 0), "Level") << "the last patch asked for";
}

TEST_F (PluginLife, steadyBlocksTouchNoHeap)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();
    const auto instance = rig.openWithPatch (slotSine);
    Take take = render (*instance, 8192, { 256 }, { noteOn (60) });
    std::vector<float> in (256);
    std::vector<float> out (512);
    const float* inputs[2] { in.data(), in.data() };
    float* outputs[2] { out.data(), out.data() + 256 };
    instance->setOffline (false);
    instance->process (inputs, outputs, 256);

    const AllocationWatch watch;
    for (int block = 0; block < 200; ++block)
        instance->process (inputs, outputs, 256);
    EXPECT_EQ (watch.count(), 0);
}

TEST_F (PluginLife, editorIsAskedForWithoutADisplay)
{
    const auto instance = rig.openWithPatch (slotSine);
    for (int round = 0; round < 3; ++round)
    {
        vst2::ERect* size = nullptr;
        instance->dispatch (editGetRect, 0, 0, &size);
        ASSERT_NE (size, nullptr);
        EXPECT_GE (size->right - size->left, 650);
        EXPECT_GE (size->bottom - size->top, 200);
        instance->dispatch (vst2::effEditClose);
        render (*instance, 1024);
    }
}

} // namespace morvanelab::test
