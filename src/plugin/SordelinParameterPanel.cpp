// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinParameterPanel.h"

#include "plugin/SordelinMainComponent.h"
#include "plugin/SordelinWidgets.h"
#include "ui/MVMidiMappingComponent.h"

namespace morvanelab
{

namespace
{

constexpr int mostInOneRow = 4;
constexpr double sizeInCell = 0.9;
constexpr double oneRowLimit = 0.6; ///< of the panel's height
constexpr double twoRowLimit = 0.4;
constexpr int captionHeight = 18;

enum KnobMenu_t : int
{
    menuLearn = 1,
    menuUnmap,
    menuMappings,
    menuReset
};

} // namespace

SordelinParameterPanel::SordelinParameterPanel (SordelinMainComponent& mainComponent,
                                                MVMidiMappingComponent& mappingComponent)
    : MVSectionPanel ("PARAMETERS"), main (mainComponent), mapping (mappingComponent)
{
    for (int slot = 0; slot < hostParameterCount; ++slot)
        makeSlider (slot);
}

SordelinParameterPanel::~SordelinParameterPanel() { endGestures(); }

void SordelinParameterPanel::endGestures()
{
    for (int slot = 0; slot < hostParameterCount; ++slot)
        endGesture (slot);
}

void SordelinParameterPanel::makeSlider (int slot)
{
    auto slider = std::make_unique<MVKnob>();
    auto* knob = slider.get();
    knob->setName ("PARAMETER " + juce::String (slot + 1));
    knob->setRange (0.0, 1.0);
    knob->onValueChange = [this, knob, slot] { main.setSlotValue (slot, knob->getValue()); };
    knob->onDragStart = [this, slot]
    {
        auto& index = gestureIndex[static_cast<std::size_t> (slot)];
        index = main.getParameterTable().patchToHost (slot);
        if (index >= 0 && main.getHostCallbacks().beginGesture)
            main.getHostCallbacks().beginGesture (index);
    };
    knob->onDragEnd = [this, slot] { endGesture (slot); };
    knob->onContextMenu = [this, slot] { showMenu (slot); };
    setUpControl (*this, *knob, {});
    knob->setVisible (false);
    gestureIndex[static_cast<std::size_t> (slot)] = -1;
    paramSliders[static_cast<std::size_t> (slot)] = std::move (slider);
}

void SordelinParameterPanel::endGesture (int slot)
{
    // The end goes to the parameter that the drag began with, also if another patch has come in between.
    const int index = std::exchange (gestureIndex[static_cast<std::size_t> (slot)], -1);
    if (index >= 0 && main.getHostCallbacks().endGesture)
        main.getHostCallbacks().endGesture (index);
}

void SordelinParameterPanel::updateFromPatch()
{
    const auto& table = main.getParameterTable();
    activeCount = table.getActiveCount();
    for (int slot = 0; slot < hostParameterCount; ++slot)
    {
        auto& knob = sliderOf (slot);
        const int hostIndex = table.patchToHost (slot);
        const bool enabled = hostIndex >= 0;
        paramEnabled[static_cast<std::size_t> (slot)] = enabled;
        if (! enabled)
            endGesture (slot); // a disabled slider does not tell the end of its drag
        knob.setEnabled (enabled);
        knob.setVisible (enabled);
        knob.setCaption (main.getParameterName (hostIndex));
        knob.setTooltip (main.getParameterText (hostIndex));
        if (! knob.isMouseButtonDown())
            knob.setValue (main.getSlotValue (slot), juce::dontSendNotification);
    }
    registerReceivers();
    resized();
    repaint();
}

void SordelinParameterPanel::updateChangedSliders()
{
    const auto changed = main.takeChangedSlots();
    for (int slot = 0; slot < hostParameterCount; ++slot)
        if ((changed & (1U << static_cast<unsigned> (slot))) != 0 && ! sliderOf (slot).isMouseButtonDown())
            sliderOf (slot).setValue (main.getSlotValue (slot), juce::dontSendNotification);
}

void SordelinParameterPanel::registerReceivers()
{
    for (int slot = 0; slot < hostParameterCount; ++slot)
        mapping.registerChildCCReceiver (main.getSlotControlId (slot), sliderOf (slot));
    mapping.refreshMappingBadges();
}

juce::String SordelinParameterPanel::nameOf (const MVKnob& knob) const
{
    for (int slot = 0; slot < hostParameterCount; ++slot)
        if (paramSliders[static_cast<std::size_t> (slot)].get() == &knob)
        {
            const auto name = main.getParameterName (main.getParameterTable().patchToHost (slot));
            return name.isNotEmpty() ? name : "Parameter " + juce::String (slot + 1);
        }
    return {};
}

void SordelinParameterPanel::showMenu (int slot)
{
    auto& knob = sliderOf (slot);
    const auto badge = knob.getProperties()[MVKnob::badgeProperty].toString();
    juce::PopupMenu menu;
    menu.addSectionHeader (nameOf (knob));
    menu.addItem (menuLearn, "Learn a MIDI controller");
    menu.addItem (menuUnmap, badge.isEmpty() ? "Unmap" : "Unmap " + badge, badge.isNotEmpty());
    menu.addItem (menuMappings, "Show all mappings");
    menu.addSeparator();
    menu.addItem (menuReset, "Set to the middle");
    menu.showMenuAsync (
        juce::PopupMenu::Options().withTargetComponent (knob).withParentComponent (getParentComponent()),
        [panel = juce::Component::SafePointer<SordelinParameterPanel> (this), slot] (int item)
        {
            if (panel == nullptr)
                return;
            auto& chosen = panel->sliderOf (slot);
            if (item == menuLearn)
                panel->mapping.learn (chosen);
            else if (item == menuUnmap)
                panel->mapping.unmap (chosen);
            else if (item == menuMappings && panel->onShowMappings)
                panel->onShowMappings();
            else if (item == menuReset)
                chosen.setValue (0.5);
        });
}

void SordelinParameterPanel::paint (juce::Graphics& graphics)
{
    MVSectionPanel::paint (graphics);
    if (activeCount > 0)
        return;
    graphics.setColour (themeColour (MVThemeColour::textDim));
    graphics.setFont (themeFont (fontHeights::normal));
    graphics.drawText ("(No Parameters)", contentArea(), juce::Justification::centred);
}

void SordelinParameterPanel::resized()
{
    if (activeCount == 0)
        return;
    const auto area = contentArea();
    const int rows = activeCount > mostInOneRow ? 2 : 1;
    const int columns = (activeCount + rows - 1) / rows;
    const int cellWidth = area.getWidth() / columns;
    const int cellHeight = area.getHeight() / rows;
    const double limit = getHeight() * (rows == 1 ? oneRowLimit : twoRowLimit);
    const int size = juce::roundToInt (sizeInCell * juce::jmin (static_cast<double> (cellWidth), limit));

    int position = 0;
    for (std::size_t slot = 0; slot < paramSliders.size(); ++slot)
    {
        if (! paramEnabled[slot])
            continue;
        const juce::Rectangle<int> cell (area.getX() + position % columns * cellWidth,
                                         area.getY() + position / columns * cellHeight, cellWidth, cellHeight);
        // The name below the dial may be wider than the dial.
        paramSliders[slot]->setBounds (
            cell.withSizeKeepingCentre (cellWidth - metrics::gap, juce::jmin (size + captionHeight, cell.getHeight())));
        ++position;
    }
}

} // namespace morvanelab
