// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/AudioThread.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>

namespace morvanelab::test
{

AudioThread::AudioThread (juce::AudioProcessor& processor, bool realTime)
    : thread ([this, &processor, realTime] { play (processor, realTime); })
{
}

void AudioThread::stop()
{
    stopping = true;
    if (thread.joinable())
        thread.join();
}

void AudioThread::play (juce::AudioProcessor& processor, bool realTime)
{
    using Clock = std::chrono::steady_clock;
    constexpr int frames = 512;
    constexpr double rate = 44100.0;
    const auto pause =
        std::chrono::duration_cast<Clock::duration> (std::chrono::duration<double> (realTime ? frames / rate : 0.001));
    juce::AudioBuffer<float> block (2, frames);
    juce::MidiBuffer midi;
    auto next = Clock::now();
    while (! stopping)
    {
        block.clear();
        const auto begin = Clock::now();
        {
            const juce::ScopedLock callback (processor.getCallbackLock());
            if (! processor.isSuspended())
                processor.processBlock (block, midi);
        }
        longest = std::max (longest.load(), std::chrono::duration<double> (Clock::now() - begin).count());
        loudest = std::max (loudest.load(), block.getMagnitude (0, frames));
        ++numBlocks;
        next = std::max (next + pause, Clock::now() - pause);
        std::this_thread::sleep_until (next);
    }
}

double processorSeconds()
{
    rusage usage {};
    getrusage (RUSAGE_SELF, &usage);
    const auto seconds = [] (const timeval& time)
    { return static_cast<double> (time.tv_sec) + static_cast<double> (time.tv_usec) * 1e-6; };
    return seconds (usage.ru_utime) + seconds (usage.ru_stime);
}

} // namespace morvanelab::test
