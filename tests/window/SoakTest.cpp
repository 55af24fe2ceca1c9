// SPDX-License-Identifier: GPL-3.0-or-later
// A host at full load, whose user does not leave the window alone.
#include "support/Sanitizers.h"
#include "window/AudioThread.h"
#include "window/WindowRig.h"

#include <iostream>

namespace morvanelab::test
{

namespace
{

constexpr double usualSeconds = 6.0;

using Soak = WindowTest;

} // namespace

TEST_F (Soak, noBlockIsLateWhileTheWindowIsInUse)
{
    rig.loadCount (16);
    rig.processor().setNonRealtime (false);
    rig.core().getKeyboardState().noteOn (1, 60, 0.8F);
    AudioThread audio (rig.processor(), AudioThread::Pace::fullLoad);
    constexpr int views[] { 0, 1, 2, 3, 4, 5, 7 };
    const double end = juce::Time::getMillisecondCounterHiRes() + enduranceSeconds (usualSeconds) * 1000.0;
    int turns = 0;
    for (; juce::Time::getMillisecondCounterHiRes() < end; ++turns)
    {
        rig.open();
        rig.core().setVisualiser (views[turns % 7]);
        if (turns % 3 == 0)
            rig.click ("SHOW BANK LIBRARIAN");
        for (int step = 0; step < 8; ++step)
        {
            rig.window().setSize (900 + 40 * step, 450 + 20 * step);
            WindowRig::run (0.02);
        }
        if (rig.look ("librarian") != nullptr)
            rig.click ("SHOW BANK LIBRARIAN");
        rig.drag (rig.knob (turns % 16), { 0, turns % 2 == 0 ? -40 : 40 });
        WindowRig::run (0.05);
        if (turns % 4 != 0)
            rig.drop(); // else the window goes in the middle of the drag
        rig.close();
    }
    audio.stop();
    std::cout << turns << " windows, " << audio.blocks() << " blocks, the longest took "
              << audio.longestSeconds() * 1000.0 << " ms" << (audio.isUrgent() ? "\n" : ", without priority\n");
    EXPECT_GT (audio.peak(), 1e-5F);
    EXPECT_TRUE (audio.missed() == 0 || ! audio.isUrgent() || MV_TEST_SANITIZED != 0) << audio.missed() << " late";
}

} // namespace morvanelab::test
