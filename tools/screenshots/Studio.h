// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plugin/SordelinAudioProcessor.h"
#include "plugin/SordelinMainComponent.h"
#include "plugin/SordelinMainView.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

namespace morvanelab
{

/** A small host: one plug-in with its editor on the screen, audio and MIDI from a thread of its own in real time. */
class Studio
{
public:
    /** Opens the plug-in with the banks found in a folder, and its window. */
    explicit Studio (const juce::File& banks);
    ~Studio();

    SordelinMainComponent& core() { return processor->getMainComponent(); }
    SordelinMainView& view() { return core().getView(); }
    /** A control of the window by its component id; raises std::runtime_error if there is none. */
    juce::Component& find (const juce::String& id);
    void click (const juce::String& id);

    /** Loads the slot of that name; raises std::runtime_error if there is none. */
    void load (const juce::String& patchName);
    /** Queues MIDI for the next block. */
    void send (const juce::MidiMessage& message);
    /** Lets the window live for a while. */
    void run (double seconds);
    /** Writes what the editor's place on the screen shows; raises std::runtime_error on failure. */
    void shoot (const juce::File& file);

private:
    void playAudio();

    std::unique_ptr<SordelinAudioProcessor> processor;
    std::unique_ptr<juce::AudioProcessorEditor> editor;
    std::mutex midiLock;
    juce::MidiBuffer queued;
    std::atomic<bool> stopping { false };
    std::thread audio;
};

} // namespace morvanelab
