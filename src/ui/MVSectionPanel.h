// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVTheme.h"

namespace morvanelab
{

/** Draws a section of the window: rounded surface and a strip with its name. Returns the area left for content, inside
    the margins. For a painter that lays out its own children. Message thread. */
juce::Rectangle<int> drawSection (juce::Graphics& graphics, juce::Rectangle<int> bounds, const juce::String& title);

/** The content area drawSection would return, for laying out. */
juce::Rectangle<int> sectionContent (juce::Rectangle<int> bounds);

/** A section as a component: children go into contentArea(). Clicks on the empty surface go to what lies behind.
    Message thread. */
class MVSectionPanel : public juce::Component
{
public:
    explicit MVSectionPanel (const juce::String& title);

    /** Where children belong, in the panel's coordinates. */
    juce::Rectangle<int> contentArea() const { return sectionContent (getLocalBounds()); }

    /** A second text in the name strip, right-aligned and dim; empty for none. */
    void setNote (const juce::String& note);

    void paint (juce::Graphics& graphics) override;

private:
    juce::String noteText;
};

} // namespace morvanelab
