// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/SordelinState.h"
#include "ui/MVKnob.h"
#include "ui/MVSectionPanel.h"

#include <array>

namespace morvanelab
{

class SordelinMainComponent;
class MVMidiMappingComponent;

/** The section "PARAMETERS": a knob for each parameter that the patch exposes, with its name, its description as a
    tooltip, its controller, and a menu on the right button. Message thread. */
class SordelinParameterPanel : public MVSectionPanel
{
public:
    /** Both outlive the panel. */
    SordelinParameterPanel (SordelinMainComponent& mainComponent, MVMidiMappingComponent& mappingComponent);
    ~SordelinParameterPanel() override;

    /** Shows the parameters of the patch that is loaded now. */
    void updateFromPatch();
    /** Moves the knobs whose control values have changed elsewhere. */
    void updateChangedSliders();
    /** Enters the knobs with the mapping component under the control values of the present engine. */
    void registerReceivers();
    /** Ends, for the host, the drags that are under way: the window may be closed in the middle of one, and a host must
        not wait for its end for ever. */
    void endGestures();
    /** "Brightness", for a list of mappings. */
    juce::String nameOf (const MVKnob& knob) const;
    int getActiveCount() const { return activeCount; }

    /** Called for "Show all mappings". */
    std::function<void()> onShowMappings;

    void paint (juce::Graphics& graphics) override;
    void resized() override;

private:
    void makeSlider (int slot);
    void showMenu (int slot);
    void endGesture (int slot);
    MVKnob& sliderOf (int slot) { return *paramSliders[static_cast<std::size_t> (slot)]; }

    SordelinMainComponent& main;
    MVMidiMappingComponent& mapping;
    std::array<std::unique_ptr<MVKnob>, hostParameterCount> paramSliders; ///< by patch parameter
    std::array<bool, hostParameterCount> paramEnabled {};
    std::array<int, hostParameterCount> gestureIndex {}; ///< the host parameter of a drag under way, -1 if none
    int activeCount = 0;
};

} // namespace morvanelab
