// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

namespace morvanelab
{

class SordelinMainView;

/** The plug-in's window as a host opens and closes it. It only shows the view, which lives on without it, and is
    always as large as the view at its zoom. Message thread. */
class SordelinAudioProcessorEditor : public juce::AudioProcessorEditor
{
public:
    SordelinAudioProcessorEditor (juce::AudioProcessor& owner, SordelinMainView& view);
    ~SordelinAudioProcessorEditor() override;

    void resized() override;
    void childBoundsChanged (juce::Component* child) override;
    void handleCommandMessage (int commandId) override;
    std::unique_ptr<juce::ComponentTraverser> createKeyboardFocusTraverser() override;

private:
    void followView();

    SordelinMainView& mainView;
    bool following = false; ///< the editor is being fitted to the view, or the view to the editor
};

} // namespace morvanelab
