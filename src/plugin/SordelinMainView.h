// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plugin/SordelinCommandSink.h"
#include "plugin/SordelinState.h"
#include "ui/MVMidiKeyboard.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <array>
#include <memory>

namespace morvanelab
{

class SordelinMainComponent;

/** What the editor shows: the patch, its parameters, the volume and a keyboard. It is made with the first editor,
    outlives editors and belongs to the message thread; the engine's side reaches it through posted commands only. */
class SordelinMainView : public juce::Component, private SordelinCommandSink
{
public:
    /** Size in pixels. */
    static constexpr int defaultWidth = 750;
    static constexpr int defaultHeight = 300;

    /** The owner outlives the view. */
    explicit SordelinMainView (SordelinMainComponent& owner);
    ~SordelinMainView() override;

    void paint (juce::Graphics& graphics) override;
    void resized() override;
    void visibilityChanged() override { tellShowing(); }
    void parentHierarchyChanged() override { tellShowing(); }
    void handleCommandMessage (int commandId) override;

private:
    void postSordelinCommand (int commandId) override { postCommandMessage (commandId); }
    void makeParameterSliders();
    void updateFromPatch();
    void updateChangedSliders();
    void layOutParameters (juce::Rectangle<int> panel);
    void showPatchMenu();
    void choosePatch (int menuItem);
    void tellShowing();

    SordelinMainComponent& main;
    juce::TextButton patchButton;
    juce::Slider volumeSlider { juce::Slider::RotaryHorizontalVerticalDrag, juce::Slider::NoTextBox };
    std::array<std::unique_ptr<juce::Slider>, hostParameterCount> paramSliders;
    std::array<std::unique_ptr<juce::Label>, hostParameterCount> paramLabels;
    MVMidiKeyboard keyboard;
    juce::TooltipWindow tooltips { this };
    juce::Rectangle<int> parameterPanel;
    int activeCount = 0;
};

} // namespace morvanelab
