// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plugin/SordelinPresetList.h"
#include "ui/MVIconButton.h"

namespace morvanelab
{

class SordelinMainComponent;

/** The preset controls: the combo box of presets and the buttons that save, save as and delete. Message thread. */
class SordelinPresetBar : public juce::Component
{
public:
    static constexpr int height = 22;
    /** From the left edge of the first button to the right end of the last. */
    static constexpr int width = 239;

    /** The main component outlives the bar. */
    explicit SordelinPresetBar (SordelinMainComponent& mainComponent);

    /** Shows what the list holds now. */
    void refresh();

    void resized() override;

private:
    void applyChoice();

    SordelinMainComponent& main;
    MVIconButton saveButton { "SAVE PRESET", MVIcon::save };
    MVIconButton saveAsButton { "SAVE PRESET AS", MVIcon::saveAs };
    MVIconButton clearButton { "CLEAR MAP", MVIcon::clear };
    juce::ComboBox presetCombo { "PRESET" };
};

} // namespace morvanelab
