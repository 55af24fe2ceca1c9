// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinAudioProcessorEditor.h"

#include "plugin/SordelinMainView.h"

namespace morvanelab
{

namespace
{

constexpr int firstWidth = 650;
constexpr int firstHeight = 200;

} // namespace

SordelinAudioProcessorEditor::SordelinAudioProcessorEditor (juce::AudioProcessor& owner, SordelinMainView& view)
    : AudioProcessorEditor (owner), mainView (view)
{
    setSize (firstWidth, firstHeight);
    const auto viewSize = mainView.getBounds().withZeroOrigin();
    addAndMakeVisible (mainView);
    mainView.setBounds (viewSize);
    resized();
}

SordelinAudioProcessorEditor::~SordelinAudioProcessorEditor()
{
    removeChildComponent (&mainView);
    deleteAllChildren();
}

void SordelinAudioProcessorEditor::resized()
{
    const int width = mainView.getWidth();
    const int height = mainView.getHeight();
    if (width != 0 && height != 0 && (width != getWidth() || height != getHeight()))
        setSize (width, height);
}

void SordelinAudioProcessorEditor::handleCommandMessage (int commandId)
{
    constexpr int repaintCommand = 0x4017;
    if (commandId == repaintCommand)
        repaint();
}

} // namespace morvanelab
