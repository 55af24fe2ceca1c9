// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plugin/SordelinMainComponent.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <array>
#include <memory>

namespace morvanelab
{

class SordelinParameter;

/** What the host talks to. It holds no logic of its own: one main component lives as long as it does, and every entry
    point goes there or to the engine inside. An instrument that takes audio too: two channels in, two out, MIDI in.

    Threads: processBlock on the host's audio thread; everything else on any other thread. */
class SordelinAudioProcessor : public juce::AudioProcessor
{
public:
    /** A first run of the program looks for banks in firstBanks, or beside the plug-in if that is empty. */
    explicit SordelinAudioProcessor (const juce::File& firstBanks = {});
    ~SordelinAudioProcessor() override;

    const juce::String getName() const override { return "Sordelin 1.2"; }
    bool isBusesLayoutSupported (const BusesLayout& layouts) const override;
    /** Each call replaces the engine. */
    void prepareToPlay (double rate, int largestBlock) override;
    /** The engine stays up until the next prepareToPlay or the end. */
    void releaseResources() override {}
    using juce::AudioProcessor::processBlock;
    void processBlock (juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi) override;

    const juce::String getInputChannelName (int index) const override { return juce::String (index + 1); }
    const juce::String getOutputChannelName (int index) const override { return juce::String (index + 1); }
    bool isInputChannelStereoPair (int) const override { return true; }
    bool isOutputChannelStereoPair (int) const override { return true; }
    double getTailLengthSeconds() const override { return 0.0; }
    bool acceptsMidi() const override { return true; }
    bool producesMidi() const override { return false; }

    juce::AudioProcessorEditor* createEditor() override;
    bool hasEditor() const override { return true; }

    SordelinMainComponent& getMainComponent() { return *mainComponent; }

    using juce::AudioProcessor::getParameterName;
    using juce::AudioProcessor::getParameterText;
    /** 16, whatever the patch exposes. */
    int getNumParameters() override;
    const juce::String getParameterName (int index) override;
    const juce::String getParameterText (int index) override;
    juce::String getParameterLabel (int) const override { return {}; }
    /** The value cut to its whole part: hosts never see a fraction. */
    float getParameter (int index) override;
    /** The value as it comes, not scaled. */
    void setParameter (int index, float value) override;

    int getNumPrograms() override { return 1; }
    int getCurrentProgram() override { return 0; }
    void setCurrentProgram (int) override {}
    const juce::String getProgramName (int) override { return "sordelin"; }
    void changeProgramName (int, const juce::String&) override {}

    /** 320 bytes once there is an engine, before that none. */
    void getStateInformation (juce::MemoryBlock& block) override;
    void getCurrentProgramStateInformation (juce::MemoryBlock& block) override { getStateInformation (block); }
    void setStateInformation (const void* data, int size) override;
    void setCurrentProgramStateInformation (const void* data, int size) override { setStateInformation (data, size); }

private:
    static constexpr int maxChannels = 8;

    void connectHost();
    void handleMidi (MVRenderEngine& engine, const juce::MidiBuffer& midi);
    SordelinParameter* managedParameter (int index) const;

    std::unique_ptr<SordelinMainComponent> mainComponent;
    std::array<SordelinParameter*, hostParameterCount> parameters {}; ///< owned by the base class
};

} // namespace morvanelab
