// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

/** Leaves the keyboard to the host except while something of ours is meant to have it: a component of the window has
    the focus, or a menu shows in the window. On X11 the toolkit takes the keyboard with every click, and never gives
    it back; elsewhere this has nothing to do. Message thread. */
class MVHostKeyboard : private juce::MouseListener, private juce::FocusChangeListener
{
public:
    /** The window must outlive this, and may come and go on the screen. */
    explicit MVHostKeyboard (juce::Component& window);
    ~MVHostKeyboard() override;

    /** To be called some 30 times a second while the window shows: menus tell nobody that they come or go. */
    void poll();
    /** To be called when the window has gone from the screen. */
    void forget();

private:
    void mouseEnter (const juce::MouseEvent& event) override;
    void mouseDown (const juce::MouseEvent& event) override;
    void globalFocusChanged (juce::Component* focused) override;

    bool isOurs (const juce::Component* component) const;
    bool isMenuShown() const;
    bool isWanted() const;
    void leaveToHost (const juce::ComponentPeer& peer);

    juce::Component& window;
    std::uintptr_t hostWindow = 0;  ///< around ours
    std::uintptr_t lastFocused = 0; ///< not ours
    const juce::ComponentPeer* knownPeer = nullptr;
    bool wanted = true; ///< keys are heard
    bool menuShown = false;
    bool unsettled = false; ///< the toolkit may have taken the keyboard
};

} // namespace morvanelab
