// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVHostKeyboard.h"

#include "ui/MVX11Keyboard.h"

namespace morvanelab
{

MVHostKeyboard::MVHostKeyboard (juce::Component& windowToWatch) : window (windowToWatch)
{
    window.addMouseListener (this, true);
    juce::Desktop::getInstance().addFocusChangeListener (this);
}

MVHostKeyboard::~MVHostKeyboard()
{
    juce::Desktop::getInstance().removeFocusChangeListener (this);
    window.removeMouseListener (this);
}

void MVHostKeyboard::forget()
{
    knownPeer = nullptr;
    hostWindow = 0;
    lastFocused = 0;
}

void MVHostKeyboard::poll()
{
    auto* peer = window.getPeer();
    if (peer == nullptr)
        return forget();
    if (peer != knownPeer)
    {
        forget();
        knownPeer = peer;
        hostWindow = x11::findHostWindow (*peer);
        wanted = true;
    }
    if (hostWindow == 0)
        return;

    const bool menu = isMenuShown();
    if (menu != std::exchange (menuShown, menu))
    {
        unsettled = true;
        if (menu)
            peer->grabFocus(); // arrows, Return and Escape are for the menu
    }
    const bool wants = isWanted();
    if (wants != std::exchange (wanted, wants))
        x11::setKeysHeard (*peer, wants);
    if (! wants && std::exchange (unsettled, false))
        leaveToHost (*peer);
}

void MVHostKeyboard::leaveToHost (const juce::ComponentPeer& peer)
{
    if (! peer.isFocused())
        return;
    hostWindow = x11::findHostWindow (peer); // hosts put their windows into each other when they like
    if (hostWindow != 0)
        x11::giveFocusBack (peer, hostWindow, lastFocused);
}

bool MVHostKeyboard::isOurs (const juce::Component* component) const
{
    return component != nullptr && (component == &window || window.isParentOf (component));
}

bool MVHostKeyboard::isMenuShown() const
{
    auto& modals = *juce::ModalComponentManager::getInstance();
    for (int i = 0; i < modals.getNumModalComponents(); ++i)
        if (isOurs (modals.getModalComponent (i)))
            return true;
    return false;
}

bool MVHostKeyboard::isWanted() const
{
    return isOurs (juce::Component::getCurrentlyFocusedComponent()) || isMenuShown();
}

void MVHostKeyboard::mouseEnter (const juce::MouseEvent&)
{
    const auto* peer = window.getPeer();
    if (hostWindow != 0 && peer == knownPeer && ! peer->isFocused())
        lastFocused = x11::getFocusedWindow();
}

void MVHostKeyboard::mouseDown (const juce::MouseEvent&)
{
    unsettled = true;
    poll();
}

void MVHostKeyboard::globalFocusChanged (juce::Component*) { unsettled = true; }

} // namespace morvanelab
