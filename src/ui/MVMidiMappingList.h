// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVMidiMappingComponent.h"

namespace morvanelab
{

/** All controller mappings of a mapping component as a table with a button to remove each, for a floating panel. It
    follows changes while it shows (see refresh). Message thread. */
class MVMidiMappingList : public juce::Component, private juce::ListBoxModel
{
public:
    /** Names a knob in the table. */
    using NameOf = std::function<juce::String (const MVKnob&)>;

    /** The component outlives the list. */
    MVMidiMappingList (MVMidiMappingComponent& component, NameOf nameOf);

    /** Reads the mappings anew. */
    void refresh();

    void paint (juce::Graphics& graphics) override;
    void resized() override;

private:
    class RowComponent;

    int getNumRows() override { return static_cast<int> (rows.size()); }
    void paintListBoxItem (int, juce::Graphics&, int, int, bool) override {}
    juce::Component* refreshComponentForRow (int row, bool selected, juce::Component* existing) override;

    MVMidiMappingComponent& mapping;
    NameOf nameOfKnob;
    std::vector<MVMidiMappingComponent::Row> rows;
    juce::ListBox list;
    juce::TextButton clearAll { "Clear all" };
};

} // namespace morvanelab
