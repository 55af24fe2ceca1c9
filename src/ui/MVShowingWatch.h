// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace morvanelab
{

/** Tells when a component comes into sight or goes out of it, also by what happens to its parents or its window: the
    moment to start and stop a timer. As a member declared last it goes before the component does. Message thread. */
class MVShowingWatch : private juce::ComponentMovementWatcher
{
public:
    /** Calls back with whether the component shows, at every change; not for how things stand now. */
    MVShowingWatch (juce::Component& watched, std::function<void (bool)> onChange)
        : ComponentMovementWatcher (&watched), callback (std::move (onChange))
    {
    }

private:
    using juce::ComponentMovementWatcher::componentMovedOrResized;
    using juce::ComponentMovementWatcher::componentVisibilityChanged;

    void componentMovedOrResized (bool, bool) override {}
    void componentPeerChanged() override {}
    void componentVisibilityChanged() override
    {
        if (auto* shown = getComponent())
            callback (shown->isShowing());
    }

    std::function<void (bool)> callback;
};

} // namespace morvanelab
