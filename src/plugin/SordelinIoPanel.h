// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVKnob.h"
#include "ui/MVLevelMeter.h"
#include "ui/MVSectionPanel.h"

#include <array>

namespace morvanelab
{

class SordelinMainComponent;

/** The section "I/O LEVELS": input and output meters, output volume, the output compressor, mutes and bypass.
    Message thread. */
class SordelinIoPanel : public MVSectionPanel
{
public:
    static constexpr int height = 136;

    /** The main component outlives the panel. */
    explicit SordelinIoPanel (SordelinMainComponent& mainComponent);

    /** Sets all controls from what the main component holds now. */
    void refresh();
    /** The same for what may change at any time without a message: volume, mutes and bypass. The window calls it some
       30 times a second while it shows. */
    void poll();
    /** Whether the patch reads the host's input: without that, bypass and input mute mean nothing. */
    void setInputUsed (bool used);

    void resized() override;

private:
    static constexpr std::size_t numChannels = 2;

    void makeMeters();
    void makeVolume();
    void makeCompressor();
    void makeButtons();

    SordelinMainComponent& main;
    double volumeSeen = -1.0; ///< at the last poll
    std::array<MVLevelMeter, numChannels> inputMeters { MVLevelMeter (10), MVLevelMeter (100) };
    std::array<MVLevelMeter, numChannels> outputMeters { MVLevelMeter (10), MVLevelMeter (100) };
    MVKnob outputVolumeSlider;
    MVKnob preCompressionSlider { juce::Slider::TextBoxBelow };
    MVKnob rollOffSlider { juce::Slider::TextBoxBelow };
    MVKnob thresholdSlider { juce::Slider::TextBoxBelow };
    juce::TextButton muteInputButton { "MUTE Input" };
    juce::TextButton bypassButton { "BYPASS" };
    juce::TextButton muteOutputButton { "MUTE OUTPUT" };
};

} // namespace morvanelab
