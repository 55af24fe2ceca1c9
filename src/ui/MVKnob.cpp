// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVKnob.h"

namespace morvanelab
{

const juce::Identifier MVKnob::captionProperty { "mv_caption" };
const juce::Identifier MVKnob::badgeProperty { "mv_badge" };
const juce::Identifier MVKnob::learnProperty { "mv_learn" };

MVKnob::MVKnob (TextEntryBoxPosition textBox) : juce::Slider (RotaryHorizontalVerticalDrag, textBox)
{
    setWantsKeyboardFocus (false);
    setMouseClickGrabsKeyboardFocus (false);
    // Shift, as well as the usual keys, turns finely.
    setVelocityModeParameters (0.5, 1, 0.03, true,
                               static_cast<juce::ModifierKeys::Flags> (juce::ModifierKeys::shiftModifier
                                                                       | juce::ModifierKeys::ctrlAltCommandModifiers));
    setRotaryParameters (juce::MathConstants<float>::pi * 1.25F, juce::MathConstants<float>::pi * 2.75F, true);
    if (textBox == TextBoxBelow)
        setTextBoxStyle (TextBoxBelow, false, 70, 16);
}

void MVKnob::setLook (const juce::Identifier& property, const juce::var& value)
{
    if (getProperties().set (property, value))
        repaint();
}

void MVKnob::setCaption (const juce::String& caption) { setLook (captionProperty, caption); }

void MVKnob::setBadge (const juce::String& badge) { setLook (badgeProperty, badge); }

void MVKnob::setLearn (Learn state) { setLook (learnProperty, static_cast<int> (state)); }

void MVKnob::mouseDown (const juce::MouseEvent& event)
{
    dragging = false;
    if (! isEnabled())
        return;
    if (event.mods.isPopupMenu())
    {
        if (onContextMenu)
            onContextMenu();
        return;
    }
    if (onLearnClick && static_cast<int> (getProperties()[learnProperty]) != 0)
    {
        onLearnClick();
        return;
    }
    dragging = true;
    juce::Slider::mouseDown (event);
}

void MVKnob::mouseDrag (const juce::MouseEvent& event)
{
    if (dragging)
        juce::Slider::mouseDrag (event);
}

void MVKnob::mouseUp (const juce::MouseEvent& event)
{
    if (! dragging)
        return;
    dragging = false;
    juce::Slider::mouseUp (event);
    repaint(); // the value gives way to the caption again
}

void MVKnob::mouseDoubleClick (const juce::MouseEvent& event)
{
    if (dragging)
        juce::Slider::mouseDoubleClick (event);
}

} // namespace morvanelab
