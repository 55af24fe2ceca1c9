// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

namespace morvanelab
{

class SordelinAudioProcessor;

/** One of the sixteen parameters that a host sees. Which patch parameter it stands for changes with the patch; all
    it does is pass on to the processor by index. */
class SordelinParameter : public juce::AudioProcessorParameter
{
public:
    /** While one exists, getValue on the same thread gives not-a-number.

        The plug-in wrapper drops a host's write that equals the value read back. As fractions read back as 0, a
        host could never set a parameter to 0 again; a not-a-number equals nothing, so every write arrives. */
    class HostWrite
    {
    public:
        HostWrite();
        ~HostWrite();
        HostWrite (const HostWrite&) = delete;
        HostWrite& operator= (const HostWrite&) = delete;
    };

    /** A host index, 0 to 15; the processor outlives the parameter. */
    SordelinParameter (SordelinAudioProcessor& owner, int hostIndex) : index (hostIndex), processor (&owner) {}

    float getValue() const override;
    void setValue (float value) override;
    float getDefaultValue() const override { return 0.0F; }
    /** The whole name, however long. */
    juce::String getName (int maximumLength) const override;
    juce::String getLabel() const override;
    int getNumSteps() const override { return 2147483647; }
    float getValueForText (const juce::String&) const override { return 0.0F; }
    /** What hosts show beside the name: the parameter's description, never a number. */
    juce::String getCurrentValueAsText() const override;

private:
    int index;
    SordelinAudioProcessor* processor;
};

} // namespace morvanelab
