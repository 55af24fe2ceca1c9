// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinOverlay.h"

#include "ui/MVTheme.h"

namespace morvanelab
{

namespace
{

constexpr float dimming = 0.55F;
constexpr int frameMargin = 14;

} // namespace

SordelinOverlay::~SordelinOverlay() { removeAllChildren(); }

void SordelinOverlay::show (juce::Component& parent, std::unique_ptr<juce::Component> content, bool takesKeys)
{
    removeAllChildren();
    panel = std::move (content);
    addAndMakeVisible (*panel);
    setWantsKeyboardFocus (takesKeys);
    parent.addAndMakeVisible (*this);
    setBounds (parent.getLocalBounds());
    resized();
    toFront (false);
    if (takesKeys && isShowing())
        panel->getWantsKeyboardFocus() ? panel->grabKeyboardFocus() : grabKeyboardFocus();
}

void SordelinOverlay::close()
{
    if (panel == nullptr)
        return;
    if (hasKeyboardFocus (true))
        giveAwayKeyboardFocus();
    setVisible (false);
    if (auto* parent = getParentComponent())
        parent->removeChildComponent (this);
    removeAllChildren();
    // The content may be the one that called.
    juce::MessageManager::callAsync ([kept = std::shared_ptr<juce::Component> (std::move (panel))] {});
    if (onClose)
        onClose();
}

juce::Rectangle<int> SordelinOverlay::frameBounds() const
{
    return panel != nullptr ? panel->getBounds().expanded (frameMargin) : juce::Rectangle<int>();
}

void SordelinOverlay::paint (juce::Graphics& graphics)
{
    graphics.fillAll (themeColour (MVThemeColour::shadow).withAlpha (dimming));
    const auto frame = frameBounds().toFloat();
    graphics.setColour (themeColour (MVThemeColour::popup));
    graphics.fillRoundedRectangle (frame, metrics::panelCorner);
    graphics.setColour (themeColour (MVThemeColour::popupOutline));
    graphics.drawRoundedRectangle (frame.reduced (0.5F), metrics::panelCorner, metrics::hairline);
}

void SordelinOverlay::resized()
{
    if (panel == nullptr)
        return;
    const auto room = getLocalBounds().reduced (frameMargin + metrics::gap);
    panel->setBounds (room.withSizeKeepingCentre (juce::jmin (room.getWidth(), panel->getWidth()),
                                                  juce::jmin (room.getHeight(), panel->getHeight())));
    repaint();
}

void SordelinOverlay::mouseDown (const juce::MouseEvent& event)
{
    if (closes == Closing::byClickBeside && ! frameBounds().contains (event.getPosition()))
        close();
}

bool SordelinOverlay::keyPressed (const juce::KeyPress& key)
{
    if (closes != Closing::byClickBeside || key != juce::KeyPress::escapeKey)
        return false;
    close();
    return true;
}

} // namespace morvanelab
