// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

/** Clicks in a plug-in's window must not take the keyboard away from the host. Message thread. */

/** Takes the keyboard for a component that was clicked, but only if the plug-in's window has it already. */
void focusIfWindowHasIt (juce::Component& component);

/** Switches off, for a component and all its children but text fields, that a click takes the keyboard. For children
   that exist now: call it again when some were added. */
void keepClicksFromFocus (juce::Component& component);

/** A combo box whose clicks leave the keyboard where it is. */
class MVQuietComboBox : public juce::ComboBox
{
public:
    MVQuietComboBox() { keepClicksFromFocus (*this); }
    /** The box makes its label anew with each look. */
    void lookAndFeelChanged() override
    {
        juce::ComboBox::lookAndFeelChanged();
        keepClicksFromFocus (*this);
    }
};

} // namespace morvanelab
