// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinIoPanel.h"

#include "foundation/MVResult.h"
#include "plugin/SordelinMainComponent.h"
#include "plugin/SordelinWidgets.h"

#include <bit>

namespace morvanelab
{

namespace
{

// The ends of the ranges are single-precision constants taken as doubles.
const double lowestPreCompression = std::bit_cast<double> (0x3F1A36E2E0000000ULL); // 0.0001
const double lowestThreshold = std::bit_cast<double> (0x3FB99999A0000000ULL);      // 0.1
const double highestThreshold = std::bit_cast<double> (0x3FEFAE1480000000ULL);     // 0.99
constexpr double longestRollOff = 4.0;
constexpr double middle = 0.5;
constexpr float meterLow = 0.9F;
constexpr int meterWidth = 14;
constexpr int tickMeterWidth = 30;
constexpr int textBoxHeight = 16;
constexpr int textBoxWidth = 52;
constexpr int buttonHeight = 22;

} // namespace

SordelinIoPanel::SordelinIoPanel (SordelinMainComponent& mainComponent)
    : MVSectionPanel ("I/O LEVELS"), main (mainComponent)
{
    makeMeters();
    makeVolume();
    makeCompressor();
    makeButtons();
    refresh();
}

void SordelinIoPanel::makeMeters()
{
    for (std::size_t channel = 0; channel < numChannels; ++channel)
    {
        const int index = static_cast<int> (channel);
        const juce::String number (index + 1);
        inputMeters[channel].levelSource = [this, index]
        {
            double level = 0.0;
            main.withEngine ([&] (MVRenderEngine& engine) { level = engine.takeInputLevel (index); });
            return static_cast<float> (level);
        };
        outputMeters[channel].levelSource = [this, index]
        {
            double level = 0.0;
            main.withEngine ([&] (MVRenderEngine& engine) { engine.getOutputPeak (main.getPartId(), index, &level); });
            return static_cast<float> (level);
        };
        inputMeters[channel].setName ("INPUT LEVEL " + number);
        outputMeters[channel].setName ("OUTPUT LEVEL " + number);
        outputMeters[channel].setTickTexts (channel == 0);
        for (auto* meter : { &inputMeters[channel], &outputMeters[channel] })
        {
            meter->setComponentID (meter->getName());
            meter->setOrientation (MVLevelMeter::Orientation::vertical);
            meter->setDisplayRange (meterLow, 1.0F);
            addAndMakeVisible (*meter);
        }
    }
}

void SordelinIoPanel::makeVolume()
{
    outputVolumeSlider.setName ("OUTPUT VOLUME");
    outputVolumeSlider.setCaption ("Volume");
    outputVolumeSlider.setRange (0.0, 1.0);
    outputVolumeSlider.setSkewFactorFromMidPoint (middle);
    outputVolumeSlider.setDoubleClickReturnValue (true, 1.0);
    outputVolumeSlider.onValueChange = [this] { main.setMasterVolume (outputVolumeSlider.getValue()); };
    setUpControl (*this, outputVolumeSlider, "Output Volume");
}

void SordelinIoPanel::makeCompressor()
{
    preCompressionSlider.setName ("PRE-COMPRESSION");
    preCompressionSlider.setCaption ("Pre-comp");
    preCompressionSlider.setRange (lowestPreCompression, 1.0);
    preCompressionSlider.setDoubleClickReturnValue (true, 1.0);
    preCompressionSlider.onValueChange = [this] { main.setPreCompressionVolume (preCompressionSlider.getValue()); };
    setUpControl (*this, preCompressionSlider, "Pre-compression Volume");

    rollOffSlider.setName ("ROLL-OFF");
    rollOffSlider.setCaption ("Roll-off");
    rollOffSlider.setRange (0.0, longestRollOff);
    rollOffSlider.setDoubleClickReturnValue (true, 1.0);
    rollOffSlider.onValueChange = [this] { main.setCompressorRollOff (rollOffSlider.getValue()); };
    setUpControl (*this, rollOffSlider, "Compressor Roll-off Time (sec)");

    thresholdSlider.setName ("THRESHOLD");
    thresholdSlider.setCaption ("Threshold");
    thresholdSlider.setRange (lowestThreshold, highestThreshold);
    thresholdSlider.setDoubleClickReturnValue (true, static_cast<double> (0.9F));
    thresholdSlider.onValueChange = [this] { main.setCompressorThreshold (thresholdSlider.getValue()); };
    setUpControl (*this, thresholdSlider, "Compressor Activation Threshold");

    for (auto* slider : { &preCompressionSlider, &rollOffSlider, &thresholdSlider })
    {
        slider->setSkewFactorFromMidPoint (middle);
        slider->setNumDecimalPlacesToDisplay (3);
        slider->setTextBoxStyle (juce::Slider::TextBoxBelow, false, textBoxWidth, textBoxHeight);
    }
}

void SordelinIoPanel::makeButtons()
{
    setUpControl (*this, muteOutputButton, "Mute all plugin output");
    setUpControl (*this, bypassButton, "Bypass plugin, input to output");
    setUpControl (*this, muteInputButton, "Mute all pluging input");
    for (auto* button : { &muteOutputButton, &bypassButton, &muteInputButton })
        button->setClickingTogglesState (true);
    muteOutputButton.onClick = [this] { main.setOutputMuted (muteOutputButton.getToggleState()); };
    bypassButton.onClick = [this] { main.bypassed = bypassButton.getToggleState(); };
    muteInputButton.onClick = [this] { main.setInputMuted (muteInputButton.getToggleState()); };
    setInputUsed (false);
}

void SordelinIoPanel::poll()
{
    // What was written takes effect with the next block, so the slider follows what changes, not what still stands.
    const double volume = main.getMasterVolume();
    const bool changed = volume < volumeSeen || volume > volumeSeen;
    if (! outputVolumeSlider.isMouseButtonDown() && changed)
        outputVolumeSlider.setValue (volume, juce::dontSendNotification);
    volumeSeen = volume;
    muteOutputButton.setToggleState (main.outputMuted, juce::dontSendNotification);
    bypassButton.setToggleState (main.bypassed, juce::dontSendNotification);
    muteInputButton.setToggleState (main.inputMuted, juce::dontSendNotification);
}

void SordelinIoPanel::refresh()
{
    volumeSeen = -1.0;
    poll();
    preCompressionSlider.setValue (main.getPreCompressionVolume(), juce::dontSendNotification);
    rollOffSlider.setValue (main.getCompressorRollOff(), juce::dontSendNotification);
    thresholdSlider.setValue (main.getCompressorThreshold(), juce::dontSendNotification);
    main.withEngine (
        [this] (MVRenderEngine& engine)
        {
            engine.setInputLevelsEnabled (true);
            engine.setOutputPeaksEnabled (main.getPartId(), true);
        });
}

void SordelinIoPanel::setInputUsed (bool used)
{
    // What is switched on must stay within reach, whatever the patch.
    bypassButton.setEnabled (used || main.bypassed);
    muteInputButton.setEnabled (used || main.inputMuted);
}

void SordelinIoPanel::resized()
{
    auto area = contentArea();
    auto buttons = area.removeFromBottom (buttonHeight);
    area.removeFromBottom (metrics::gap);
    const int buttonWidth = (buttons.getWidth() - 2 * metrics::gap) / 3;
    muteInputButton.setBounds (buttons.removeFromLeft (buttonWidth));
    buttons.removeFromLeft (metrics::gap);
    bypassButton.setBounds (buttons.removeFromLeft (buttonWidth));
    buttons.removeFromLeft (metrics::gap);
    muteOutputButton.setBounds (buttons);

    inputMeters[0].setBounds (area.removeFromLeft (meterWidth));
    inputMeters[1].setBounds (area.removeFromLeft (meterWidth));
    outputMeters[1].setBounds (area.removeFromRight (meterWidth));
    outputMeters[0].setBounds (area.removeFromRight (tickMeterWidth));
    area.reduce (metrics::gap, 0);
    const int knobWidth = area.getWidth() / 4;
    for (auto* slider : { &preCompressionSlider, &rollOffSlider, &thresholdSlider })
        slider->setBounds (area.removeFromLeft (knobWidth));
    outputVolumeSlider.setBounds (area);
}

} // namespace morvanelab
