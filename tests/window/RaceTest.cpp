// SPDX-License-Identifier: GPL-3.0-or-later
// Audio, window and host at once, each on its own thread: for the thread sanitizer above all.
#include "window/AudioThread.h"
#include "window/WindowRig.h"

#include <atomic>
#include <thread>

namespace morvanelab::test
{

TEST (Race, audioWindowAndHostAtOnce)
{
    WindowRig rig;
    rig.loadCount (16);
    rig.processor().setNonRealtime (false);
    const auto state = rig.plugin().state();
    std::atomic<bool> stopping { false };
    std::atomic<int> calls { 0 };
    {
        AudioThread audio (rig.processor());
        std::thread host (
            [&]
            {
                juce::MemoryBlock block;
                for (int turn = 0; ! stopping; ++turn)
                {
                    rig.processor().getStateInformation (block);
                    rig.processor().setParameter (turn % 16, static_cast<float> (turn % 10) / 10.0F);
                    rig.processor().getParameterText (turn % 16);
                    if (turn % 4 == 0)
                        rig.processor().setStateInformation (state.getData(), static_cast<int> (state.getSize()));
                    if (turn % 16 == 0)
                    {
                        rig.processor().suspendProcessing (true);
                        rig.processor().prepareToPlay (turn % 32 == 0 ? 44100.0 : 48000.0, 512);
                        rig.processor().suspendProcessing (false);
                    }
                    ++calls;
                    std::this_thread::sleep_for (std::chrono::milliseconds (5));
                }
            });
        const bool onScreen = WindowRig::hasDisplay();
        const double end = juce::Time::getMillisecondCounterHiRes() + enduranceSeconds (5.0) * 1000.0;
        for (int turn = 0; juce::Time::getMillisecondCounterHiRes() < end; ++turn)
        {
            rig.open (onScreen);
            constexpr int views[] { 0, 1, 2, 3, 4, 5, 7 };
            rig.core().setVisualiser (views[turn % 7]);
            rig.core().getKeyboardState().noteOn (1, 40 + turn % 40, 0.7F);
            rig.core().loadPatch (WindowRig::countBank, turn % 5);
            if (turn % 3 == 0)
                rig.view().setMappingMode (1);
            WindowRig::run (0.2);
            rig.core().getKeyboardState().noteOff (1, 40 + turn % 40, 0.0F);
            if (onScreen)
            {
                rig.window().setSize (900 + turn % 7 * 40, 450 + turn % 5 * 30);
                if (auto* const knob = rig.look ("PARAMETER 1"))
                    rig.drag (*knob, { 0, turn % 2 == 0 ? -30 : 30 });
                WindowRig::run (0.05);
                if (turn % 4 != 0)
                    rig.drop(); // else the window goes in the middle of the drag
            }
            if (turn % 2 == 0)
                rig.close();
        }
        stopping = true;
        host.join();
        EXPECT_GT (audio.blocks(), 50);
    }
    EXPECT_GT (calls.load(), 5);
    rig.processor().setNonRealtime (true);
    rig.close();
    rig.open (false);
    rig.loadCount (5);
    EXPECT_NE (rig.look ("PARAMETER 5"), nullptr) << "works as before";
}

} // namespace morvanelab::test
