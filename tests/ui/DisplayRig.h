// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/ui/ThemePicture.h"
#include "ui/MVDataAnimator.h"

#include <cmath>
#include <deque>
#include <numbers>
#include <string>
#include <vector>

namespace juce
{
extern bool dispatchNextMessageOnSystemQueue (bool returnIfNoPendingMessages);
}

namespace morvanelab
{

using Samples = std::vector<double>;

/** count samples of a sine of so many periods in total. */
inline Samples sine (int count, double periods, double amplitude = 1.0, double phase = 0.0)
{
    Samples samples (static_cast<std::size_t> (count));
    for (int i = 0; i < count; ++i)
        samples[static_cast<std::size_t> (i)] =
            amplitude * std::sin (2.0 * std::numbers::pi * (periods * i / count + phase));
    return samples;
}

inline Samples operator+ (Samples a, const Samples& b)
{
    for (std::size_t i = 0; i < a.size(); ++i)
        a[i] += b[i];
    return a;
}

/** Hands a display samples as the thread that delivers does. */
inline void deliver (MVDataAnimator& display, const Samples& samples)
{
    display.processData (samples.data(), static_cast<int> (samples.size() * sizeof (double)));
}

/** A source that remembers what was asked of it. */
struct RecordingSource : MVDisplaySource
{
    void attachSource (bool isOn) override
    {
        on = isOn;
        calls += isOn ? "on " : "off ";
    }

    int pull (double* out) override
    {
        ++pulls;
        if (blocks.empty())
            return 0;
        const Samples block = blocks.front();
        blocks.pop_front();
        std::copy (block.begin(), block.end(), out);
        return static_cast<int> (block.size());
    }

    std::deque<Samples> blocks;
    std::string calls;
    int pulls = 0;
    bool on = false;
};

/** The toolkit for tests of displays. */
struct DisplayTest : ThemeTest
{
    static bool hasScreen() { return juce::Desktop::getInstance().getDisplays().getPrimaryDisplay() != nullptr; }

    /** Lets timers and windows live for a while, or until done. */
    template <typename Done>
    static bool pump (int milliseconds, Done done)
    {
        const auto end = juce::Time::getMillisecondCounter() + static_cast<juce::uint32> (milliseconds);
        while (! done())
        {
            if (juce::Time::getMillisecondCounter() > end)
                return false;
            if (! juce::dispatchNextMessageOnSystemQueue (true))
                juce::Thread::sleep (1);
        }
        return true;
    }

    static void pump (int milliseconds)
    {
        pump (milliseconds, [] { return false; });
    }
};

/** A window on the screen with a page that displays are put on. */
struct TestWindow : juce::Component
{
    TestWindow()
    {
        setBounds (50, 50, 640, 300);
        page.setBounds (getLocalBounds());
        addAndMakeVisible (page);
        setVisible (true);
        addToDesktop (0);
    }

    juce::Component page;
};

} // namespace morvanelab
