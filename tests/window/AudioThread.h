// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <atomic>
#include <thread>

namespace morvanelab::test
{

/** A host's audio thread: runs blocks of 512 samples without end, in real time or nearly as fast as it can. */
class AudioThread
{
public:
    explicit AudioThread (juce::AudioProcessor& processor, bool realTime = false);
    ~AudioThread() { stop(); }
    AudioThread (const AudioThread&) = delete;
    AudioThread& operator= (const AudioThread&) = delete;

    void stop();
    int blocks() const { return numBlocks; }
    double longestSeconds() const { return longest; }
    /** Of all that was played. */
    float peak() const { return loudest; }

private:
    void play (juce::AudioProcessor& processor, bool realTime);

    std::atomic<bool> stopping { false };
    std::atomic<int> numBlocks { 0 };
    std::atomic<double> longest { 0.0 };
    std::atomic<float> loudest { 0.0F };
    std::thread thread;
};

/** Processor time that this process has used, in seconds. */
double processorSeconds();

} // namespace morvanelab::test
