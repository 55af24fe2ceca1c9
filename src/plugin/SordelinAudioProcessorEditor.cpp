// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinAudioProcessorEditor.h"

#include "plugin/SordelinMainView.h"

namespace morvanelab
{

namespace
{

constexpr int firstWidth = 650;
constexpr int firstHeight = 200;

/** Nothing takes the keyboard just because the window has got it. */
class ChosenFocusOnly : public juce::KeyboardFocusTraverser
{
public:
    explicit ChosenFocusOnly (juce::Component& windowToUse) : window (windowToUse) {}
    juce::Component* getDefaultComponent (juce::Component* parent) override
    {
        return parent == &window ? nullptr : KeyboardFocusTraverser::getDefaultComponent (parent);
    }

private:
    juce::Component& window;
};

} // namespace

SordelinAudioProcessorEditor::SordelinAudioProcessorEditor (juce::AudioProcessor& owner, SordelinMainView& view)
    : AudioProcessorEditor (owner), mainView (view)
{
    setResizable (true, false);
    setSize (firstWidth, firstHeight);
    addAndMakeVisible (mainView);
    mainView.setTopLeftPosition (0, 0);
    followView();
}

SordelinAudioProcessorEditor::~SordelinAudioProcessorEditor()
{
    removeChildComponent (&mainView);
    deleteAllChildren();
}

std::unique_ptr<juce::ComponentTraverser> SordelinAudioProcessorEditor::createKeyboardFocusTraverser()
{
    return std::make_unique<ChosenFocusOnly> (*this);
}

void SordelinAudioProcessorEditor::followView()
{
    const auto shown = mainView.getBoundsInParent();
    const juce::ScopedValueSetter<bool> scope (following, true);
    if (shown.getWidth() != 0 && shown.getHeight() != 0)
        setSize (shown.getWidth(), shown.getHeight());
}

void SordelinAudioProcessorEditor::resized()
{
    if (following || mainView.getParentComponent() != this)
        return;
    // The host has its own idea of the size: the view takes it as far as its limits allow, and the editor is then as
    // large as the view.
    {
        const juce::ScopedValueSetter<bool> scope (following, true);
        mainView.takeHostSize (getWidth(), getHeight());
    }
    followView();
}

void SordelinAudioProcessorEditor::childBoundsChanged (juce::Component*)
{
    if (! following)
        followView();
}

void SordelinAudioProcessorEditor::handleCommandMessage (int commandId)
{
    constexpr int repaintCommand = 0x4017;
    if (commandId == repaintCommand)
        repaint();
}

} // namespace morvanelab
