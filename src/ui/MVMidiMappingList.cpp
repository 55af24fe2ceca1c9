// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVMidiMappingList.h"

#include "ui/MVIconButton.h"

namespace morvanelab
{

namespace
{

constexpr int width = 300;
constexpr int height = 220;
constexpr int titleHeight = 26;

} // namespace

/** One mapping: name, controller, remove button. */
class MVMidiMappingList::RowComponent : public juce::Component
{
public:
    explicit RowComponent (MVMidiMappingList& owner)
    {
        remove.setTooltip ("Remove this mapping");
        remove.onClick = [this, &owner]
        {
            if (knob != nullptr)
                owner.mapping.unmap (*knob);
            owner.refresh();
        };
        addAndMakeVisible (remove);
    }

    void show (MVKnob* shownKnob, const juce::String& shownName, const juce::String& shownController)
    {
        knob = shownKnob;
        name = shownName;
        controller = shownController;
        repaint();
    }

    void paint (juce::Graphics& graphics) override
    {
        auto area = getLocalBounds().reduced (metrics::gap, 0).withTrimmedRight (metrics::rowHeight);
        graphics.setFont (themeFont (fontHeights::normal));
        graphics.setColour (themeColour (MVThemeColour::mapped));
        graphics.drawText (controller, area.removeFromRight (90), juce::Justification::centredLeft);
        graphics.setColour (themeColour (MVThemeColour::text));
        graphics.drawText (name, area, juce::Justification::centredLeft);
    }

    void resized() override { remove.setBounds (getLocalBounds().removeFromRight (metrics::rowHeight).reduced (2)); }

private:
    MVIconButton remove { "Remove mapping", MVIcon::remove, MVIconButton::Style::bare };
    MVKnob* knob = nullptr;
    juce::String name;
    juce::String controller;
};

MVMidiMappingList::MVMidiMappingList (MVMidiMappingComponent& component, NameOf nameOf)
    : mapping (component), nameOfKnob (std::move (nameOf)), list ("MIDI mappings", this)
{
    setComponentID ("MIDI MAPPINGS");
    list.setRowHeight (metrics::rowHeight);
    list.setColour (juce::ListBox::backgroundColourId, themeColour (MVThemeColour::field));
    clearAll.setMouseClickGrabsKeyboardFocus (false);
    clearAll.setWantsKeyboardFocus (false);
    clearAll.onClick = [this]
    {
        mapping.clearAllMappedMidi();
        refresh();
    };
    addAndMakeVisible (list);
    addAndMakeVisible (clearAll);
    setSize (width, height);
    refresh();
}

void MVMidiMappingList::refresh()
{
    rows = mapping.mappings();
    clearAll.setEnabled (! rows.empty());
    list.updateContent();
    repaint();
}

juce::Component* MVMidiMappingList::refreshComponentForRow (int row, bool, juce::Component* existing)
{
    std::unique_ptr<juce::Component> old (existing);
    if (row < 0 || row >= getNumRows())
        return nullptr;
    if (old == nullptr)
        old = std::make_unique<RowComponent> (*this);
    const auto& shown = rows[static_cast<std::size_t> (row)];
    const auto controller = MVMidiMappingComponent::badgeText (shown.mapping);
    static_cast<RowComponent&> (*old).show (shown.knob, nameOfKnob (*shown.knob), controller);
    return old.release();
}

void MVMidiMappingList::paint (juce::Graphics& graphics)
{
    graphics.setColour (themeColour (MVThemeColour::text));
    graphics.setFont (themeFont (fontHeights::large, MVFontWeight::semiBold));
    graphics.drawText ("MIDI mappings", getLocalBounds().removeFromTop (titleHeight), juce::Justification::centredLeft);
    if (! rows.empty())
        return;
    graphics.setColour (themeColour (MVThemeColour::textDim));
    graphics.setFont (themeFont (fontHeights::normal));
    graphics.drawFittedText ("No controller is mapped.\nSwitch on MAP MIDI CC, click a knob and move a controller.",
                             list.getBounds().reduced (metrics::margin), juce::Justification::centred, 4);
}

void MVMidiMappingList::resized()
{
    auto area = getLocalBounds();
    auto title = area.removeFromTop (titleHeight);
    clearAll.setBounds (title.removeFromRight (84).reduced (0, 2));
    list.setBounds (area);
}

} // namespace morvanelab
