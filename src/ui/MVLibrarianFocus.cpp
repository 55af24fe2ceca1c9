// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianFocus.h"

namespace morvanelab
{

void focusIfWindowHasIt (juce::Component& component)
{
    if (const auto* peer = component.getPeer(); peer != nullptr && peer->isFocused())
        component.grabKeyboardFocus();
}

void keepClicksFromFocus (juce::Component& component)
{
    if (dynamic_cast<juce::TextEditor*> (&component) != nullptr)
        return;
    component.setMouseClickGrabsKeyboardFocus (false);
    for (auto* child : component.getChildren())
        keepClicksFromFocus (*child);
}

} // namespace morvanelab
