// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinPresetBar.h"

#include "plugin/SordelinMainComponent.h"
#include "plugin/SordelinWidgets.h"

namespace morvanelab
{

namespace
{

// Places in the bar; its right end lies 5 pixels left of the window's right edge.
constexpr int buttonSize = 22;
constexpr int saveX = 0;
constexpr int saveAsX = 22;
constexpr int comboX = 44;
constexpr int comboWidth = 170;
constexpr int clearX = 217;

} // namespace

SordelinPresetBar::SordelinPresetBar (SordelinMainComponent& mainComponent) : main (mainComponent)
{
    setUpControl (*this, saveButton, "Save Preset");
    setUpControl (*this, saveAsButton, "Save Preset As");
    setUpControl (*this, clearButton, "Clear Map History");
    setUpControl (*this, presetCombo, "Presets");
    saveButton.onClick = [this] { main.savePreset(); };
    saveAsButton.onClick = [this] { main.savePresetAs(); };
    clearButton.onClick = [this] { main.deletePreset(); };
    clearButton.setTone (MVIconButton::Tone::danger);
    presetCombo.setTextWhenNothingSelected ("-----");
    presetCombo.setTextWhenNoChoicesAvailable ("No presets yet");
    presetCombo.onChange = [this] { applyChoice(); };
    refresh();
}

void SordelinPresetBar::refresh()
{
    const auto combo = main.getPresetCombo();
    presetCombo.clear (juce::dontSendNotification);
    presetCombo.addItemList (combo.items, 1);
    presetCombo.setSelectedItemIndex (combo.selected, juce::dontSendNotification);
    saveButton.setEnabled (combo.buttonsEnabled);
    clearButton.setEnabled (combo.buttonsEnabled);
}

void SordelinPresetBar::applyChoice() { main.applyPreset (presetCombo.getSelectedItemIndex()); }

void SordelinPresetBar::resized()
{
    saveButton.setBounds (saveX, 0, buttonSize, height);
    saveAsButton.setBounds (saveAsX, 0, buttonSize, height);
    presetCombo.setBounds (comboX, 0, comboWidth, height);
    clearButton.setBounds (clearX, 0, buttonSize, height);
}

} // namespace morvanelab
