// SPDX-License-Identifier: GPL-3.0-or-later

// The state block of a host: handed over, played with and read back. One processor serves for all
// inputs, as in a host that switches between songs.

#include "FuzzInput.h"
#include "plugin/SordelinAudioProcessor.h"

#include <juce_events/juce_events.h>

using namespace morvanelab;

namespace
{

/** One prepared processor. It lives until the process ends, since libraries tear their own parts down at exit. */
struct Host
{
    Host() { processor.prepareToPlay (44100.0, 256); }

    const juce::ScopedJuceInitialiser_GUI messages;
    SordelinAudioProcessor processor;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    static Host& host = *new Host;
    SordelinAudioProcessor& processor = host.processor;

    const auto bytes = fuzz::exactCopy (data, size);
    processor.setStateInformation (bytes.data(), static_cast<int> (bytes.size()));

    juce::AudioBuffer<float> audio (2, 256);
    audio.clear();
    juce::MidiBuffer midi;
    processor.processBlock (audio, midi);

    for (int i = 0; i < processor.getNumParameters(); ++i)
    {
        (void)processor.getParameterName (i);
        (void)processor.getParameterText (i);
        (void)processor.getParameter (i);
    }

    juce::MemoryBlock stored;
    processor.getStateInformation (stored);
    fuzz::require (stored.getSize() == 320, "the state has 320 bytes");
    return 0;
}
