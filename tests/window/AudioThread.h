// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <atomic>
#include <thread>

namespace morvanelab::test
{

/** A host's audio thread: runs blocks of 512 samples without end. */
class AudioThread
{
public:
    enum class Pace
    {
        hasty,    ///< nearly as fast as it can
        realTime, ///< at 44100 Hz
        fullLoad  ///< at 44100 Hz, before other threads where the system lets it, busy for most of each block's time
    };

    explicit AudioThread (juce::AudioProcessor& processor, Pace pace = Pace::hasty);
    ~AudioThread() { stop(); }
    AudioThread (const AudioThread&) = delete;
    AudioThread& operator= (const AudioThread&) = delete;

    void stop();
    int blocks() const { return numBlocks; }
    double longestSeconds() const { return longest; }
    /** Blocks whose plug-in took longer than a host that is as busy as at full load has left for it. */
    int missed() const { return numMissed; }
    /** Whether the thread goes before others, so that only what it waits for can make it late. */
    bool isUrgent() const { return urgent; }
    /** Of all that was played. */
    float peak() const { return loudest; }

private:
    void play (juce::AudioProcessor& processor, Pace pace);

    std::atomic<bool> stopping { false };
    std::atomic<int> numBlocks { 0 };
    std::atomic<int> numMissed { 0 };
    std::atomic<bool> urgent { false };
    std::atomic<double> longest { 0.0 };
    std::atomic<float> loudest { 0.0F };
    std::thread thread;
};

/** How long a test of endurance lasts: as usual, or as the environment variable SORDELIN_SOAK_SECONDS says. */
double enduranceSeconds (double usual);

/** Processor time that this process has used, in seconds. */
double processorSeconds();

} // namespace morvanelab::test
