// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/AudioThread.h"

#include <pthread.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

namespace morvanelab::test
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr int frames = 512;
constexpr double rate = 44100.0;
constexpr double othersPart = 0.8; ///< of a block's time goes to others at full load

Clock::duration toDuration (double seconds)
{
    return std::chrono::duration_cast<Clock::duration> (std::chrono::duration<double> (seconds));
}

bool goBeforeOthers()
{
    sched_param parameters {};
    parameters.sched_priority = sched_get_priority_min (SCHED_FIFO);
    return pthread_setschedparam (pthread_self(), SCHED_FIFO, &parameters) == 0;
}

} // namespace

AudioThread::AudioThread (juce::AudioProcessor& processor, Pace pace)
    : thread ([this, &processor, pace] { play (processor, pace); })
{
}

void AudioThread::stop()
{
    stopping = true;
    if (thread.joinable())
        thread.join();
}

void AudioThread::play (juce::AudioProcessor& processor, Pace pace)
{
    urgent = pace == Pace::fullLoad && goBeforeOthers();
    const auto pause = toDuration (pace == Pace::hasty ? 0.001 : frames / rate);
    const auto others = pace == Pace::fullLoad ? toDuration (othersPart * frames / rate) : Clock::duration::zero();
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
        const auto took = Clock::now() - begin;
        longest = std::max (longest.load(), std::chrono::duration<double> (took).count());
        numMissed += took > pause - others ? 1 : 0;
        loudest = std::max (loudest.load(), block.getMagnitude (0, frames));
        ++numBlocks;
        while (Clock::now() - begin < others)
            continue;
        next = std::max (next + pause, Clock::now() - pause);
        std::this_thread::sleep_until (next);
    }
}

double enduranceSeconds (double usual)
{
    const char* const wanted = std::getenv ("SORDELIN_SOAK_SECONDS");
    return wanted != nullptr ? std::atof (wanted) : usual;
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
