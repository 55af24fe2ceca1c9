// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinAudioProcessor.h"

#include "foundation/MVMath.h"
#include "plugin/SordelinAudioProcessorEditor.h"
#include "plugin/SordelinParameter.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace morvanelab
{

namespace
{

constexpr int streamChannels = 2;
constexpr int midiCapacity = 256;
constexpr double offlineWaitSeconds = 5.0;

/** Blocks run by all instances of the process. */
std::atomic<std::uint32_t> blockCounter { 0 };

using MidiBytes = std::array<std::uint8_t, midiCapacity>;

/** Appends the events one behind the other until the array is full, in the middle of a message if need be. */
int flatten (const juce::MidiBuffer& midi, MidiBytes& bytes)
{
    int count = 0;
    for (const auto event : midi)
    {
        const int taken = std::min (event.numBytes, midiCapacity - count);
        std::memcpy (bytes.data() + count, event.data, static_cast<std::size_t> (taken));
        count += taken;
        if (count == midiCapacity)
            break;
    }
    return count;
}

} // namespace

SordelinAudioProcessor::SordelinAudioProcessor (const juce::File& firstBanks)
    : AudioProcessor (BusesProperties()
                          .withInput ("Input", juce::AudioChannelSet::stereo())
                          .withOutput ("Output", juce::AudioChannelSet::stereo()))
{
    for (int i = 0; i < hostParameterCount; ++i)
    {
        auto* parameter = new SordelinParameter (*this, i);
        parameters[static_cast<std::size_t> (i)] = parameter;
        addParameter (parameter);
    }
    mainComponent = std::make_unique<SordelinMainComponent> (firstBanks);
    connectHost();
}

SordelinAudioProcessor::~SordelinAudioProcessor()
{
    mainComponent->destroyEngine();
    mainComponent.reset();
}

void SordelinAudioProcessor::connectHost()
{
    SordelinMainComponent::HostCallbacks callbacks;
    callbacks.beginGesture = [this] (int index)
    {
        if (auto* parameter = managedParameter (index))
            parameter->beginChangeGesture();
    };
    callbacks.endGesture = [this] (int index)
    {
        if (auto* parameter = managedParameter (index))
            parameter->endChangeGesture();
    };
    callbacks.valueChanged = [this] (int index, float value)
    {
        if (auto* parameter = managedParameter (index))
            parameter->setValueNotifyingHost (value);
    };
    callbacks.refresh = [this] { updateHostDisplay (ChangeDetails().withParameterInfoChanged (true)); };
    callbacks.suspendAudio = [this] (bool on) { suspendProcessing (on); };
    mainComponent->setHostCallbacks (callbacks);
}

SordelinParameter* SordelinAudioProcessor::managedParameter (int index) const
{
    return index >= 0 && index < hostParameterCount ? parameters[static_cast<std::size_t> (index)] : nullptr;
}

bool SordelinAudioProcessor::isBusesLayoutSupported (const BusesLayout& layouts) const
{
    return layouts.inputBuses.size() == 1 && layouts.outputBuses.size() == 1
           && layouts.getMainInputChannelSet() == juce::AudioChannelSet::stereo()
           && layouts.getMainOutputChannelSet() == juce::AudioChannelSet::stereo();
}

void SordelinAudioProcessor::prepareToPlay (double rate, int largestBlock)
{
    MVRenderStreamFormat format;
    format.engineSampleRate = rate;
    format.streamSampleRate = rate;
    format.maxBlock = largestBlock;
    format.numIn = streamChannels;
    format.inputLayout = layoutChannelBuffers;
    format.inputSampleType = sampleFloat32;
    format.numOut = streamChannels;
    format.outputLayout = layoutChannelBuffers;
    format.outputSampleType = sampleFloat32;
    mainComponent->prepareEngine (format);
}

void SordelinAudioProcessor::processBlock (juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi)
{
    std::array<const void*, maxChannels> inputs {};
    std::array<void*, maxChannels> outputs {};
    buffer.setNotClear();
    const int frames = buffer.getNumSamples();
    const int numInputs = std::min ({ getTotalNumInputChannels(), buffer.getNumChannels(), maxChannels });
    const int numOutputs = std::min ({ getTotalNumOutputChannels(), buffer.getNumChannels(), maxChannels });
    for (int i = 0; i < numInputs; ++i)
        inputs[static_cast<std::size_t> (i)] = buffer.getWritePointer (i);
    blockCounter.fetch_add (1, std::memory_order_relaxed);
    for (int i = 0; i < numOutputs; ++i)
        outputs[static_cast<std::size_t> (i)] = buffer.getWritePointer (i);
    auto* engine = mainComponent->getAudioEngine();
    if (numOutputs <= 0 || engine == nullptr)
        return;

    engine->setOffline (isNonRealtime());
    if (isNonRealtime())
        engine->waitForPendingWork (offlineWaitSeconds); // or a bounce would lose notes to a patch still loading
    handleMidi (*engine, midi);

    int ignored = 0;
    if (frames > 0)
    {
        engine->writeInput (inputs.data(), numInputs, frames, ignored);
        ignored = 0;
        engine->renderBlock (outputs.data(), numOutputs, frames, ignored);
    }
    for (int channel = numOutputs; channel < numInputs; ++channel)
        buffer.clear (channel, 0, frames);
    if (mainComponent->bypassed)
        for (std::size_t i = 0; i < static_cast<std::size_t> (std::min (numInputs, numOutputs)); ++i)
            std::memmove (outputs[i], inputs[i], static_cast<std::size_t> (frames) * sizeof (float));
}

void SordelinAudioProcessor::handleMidi (MVRenderEngine& engine, const juce::MidiBuffer& midi)
{
    MidiBytes bytes;
    const int count = flatten (midi, bytes);
    mainComponent->midiByteCounter.fetch_add (count, std::memory_order_relaxed);
    if (count == 0)
        return;
    if (mainComponent->midiMappingActive)
    {
        mainComponent->learnMidi (bytes.data(), count);
        return;
    }
    engine.getMidiManager().processMidiDataBuffer (bytes.data(), count, false);
    mainComponent->playNotes (bytes.data(), count);
}

juce::AudioProcessorEditor* SordelinAudioProcessor::createEditor()
{
    return new SordelinAudioProcessorEditor (*this, mainComponent->getView());
}

int SordelinAudioProcessor::getNumParameters() { return mainComponent != nullptr ? hostParameterCount : 0; }

const juce::String SordelinAudioProcessor::getParameterName (int index)
{
    return mainComponent != nullptr ? mainComponent->getParameterName (index) : juce::String();
}

const juce::String SordelinAudioProcessor::getParameterText (int index)
{
    return mainComponent != nullptr ? mainComponent->getParameterText (index) : juce::String();
}

float SordelinAudioProcessor::getParameter (int index)
{
    if (mainComponent == nullptr)
        return 0.0F;
    const auto value = static_cast<float> (mainComponent->getParameterValue (index));
    return static_cast<float> (truncToInt (static_cast<double> (value)));
}

void SordelinAudioProcessor::setParameter (int index, float value)
{
    if (mainComponent != nullptr)
        mainComponent->setParameterValue (index, static_cast<double> (value));
}

void SordelinAudioProcessor::getStateInformation (juce::MemoryBlock& block) { block = mainComponent->getState(); }

void SordelinAudioProcessor::setStateInformation (const void* data, int size)
{
    mainComponent->setState (size > 0 ? juce::MemoryBlock (data, static_cast<std::size_t> (size))
                                      : juce::MemoryBlock());
}

} // namespace morvanelab
