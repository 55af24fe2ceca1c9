// SPDX-License-Identifier: GPL-3.0-or-later
// The parts of SordelinMainComponent that deal with the user's presets.
#include "plugin/SordelinMainComponent.h"

#include "banks/MVDirectoryLock.h"
#include "banks/SordelinPresetFile.h"
#include "foundation/MVLog.h"

namespace morvanelab
{

namespace
{

constexpr const char* logFunction = "morvanelab::SordelinMainComponent::savePreset";

} // namespace

int SordelinMainComponent::loadPresetList()
{
    const std::lock_guard<std::recursive_mutex> scope (shellLock);
    const int result = presets.load();
    postCommand (commandUpdatePresets);
    return result;
}

void SordelinMainComponent::savePresetList()
{
    const std::lock_guard<std::recursive_mutex> scope (shellLock);
    if (! presets.save())
        prompt.tell ("Save Preset", "The list of presets is damaged and could not be kept aside, could not save.");
}

void SordelinMainComponent::rebuildPresetCombo()
{
    presets.rebuildCombo();
    postCommand (commandUpdatePresets);
}

void SordelinMainComponent::updatePresetButtons()
{
    presets.updateButtons();
    postCommand (commandUpdatePresets);
}

SordelinState SordelinMainComponent::snapshotState()
{
    if (engine != nullptr)
        refreshState (*engine);
    return stateBlock;
}

void SordelinMainComponent::savePreset()
{
    const std::lock_guard<std::recursive_mutex> scope (shellLock);
    const auto file = presets.getFile (presets.getSelected());
    if (file != juce::File() && ! SordelinPresetFile::write (file, snapshotState()))
        tellPresetNotWritten (file);
}

void SordelinMainComponent::tellPresetNotWritten (const juce::File& file)
{
    mvLog ("ERROR", logFunction, "could not write %s", file.getFullPathName().toRawUTF8());
    prompt.tell ("Save Preset", "Permissions or file path issue, could not save.");
}

void SordelinMainComponent::savePresetAs()
{
    prompt.askText ("Enter Preset Name", "Apply", "Cancel",
                    [this] (const std::optional<std::string>& name)
                    {
                        const std::lock_guard<std::recursive_mutex> scope (shellLock);
                        if (name)
                            saveNewPreset (juce::String::fromUTF8 (name->data(), static_cast<int> (name->size())));
                        updatePresetButtons();
                    });
}

void SordelinMainComponent::saveNewPreset (const juce::String& name)
{
    const auto directory = presetDirectory();
    const MVDirectoryLock others (directory);
    if (! SordelinPresetFile::isValidName (directory, name))
    {
        prompt.tell ("Invalid Name", "No valid preset name given.");
        return;
    }
    const auto file = SordelinPresetFile::fileFor (directory, name);
    if (file.exists())
    {
        prompt.tell ("Already Loaded",
                     "There is already a preset with that name.  Please select a new name and try again.");
        return;
    }
    presets.takeOverChanges();
    // A preset that is not on disk, or that the list cannot hold, would be one that is gone tomorrow.
    if (! presets.hasRoomFor (file) || ! SordelinPresetFile::write (file, snapshotState()))
    {
        tellPresetNotWritten (file);
        return;
    }
    presets.add (file);
    savePresetList();
    rebuildPresetCombo();
    presets.select (presets.size() - 1);
}

void SordelinMainComponent::deletePreset()
{
    const std::lock_guard<std::recursive_mutex> scope (shellLock);
    const auto file = presets.getFile (presets.getSelected());
    if (file == juce::File())
        return;
    if (file.existsAsFile() && ! file.deleteFile())
        mvLog ("ERROR", logFunction, "could not delete %s", file.getFullPathName().toRawUTF8());
    removePreset (file);
    updatePresetButtons();
}

juce::File SordelinMainComponent::presetDirectory() { return shelf.getProperties().getFile().getParentDirectory(); }

void SordelinMainComponent::removePreset (const juce::File& file)
{
    const MVDirectoryLock others (presetDirectory());
    presets.takeOverChanges();
    presets.remove (file);
    savePresetList();
    rebuildPresetCombo();
}

void SordelinMainComponent::applyPreset (int index)
{
    const std::lock_guard<std::recursive_mutex> scope (shellLock);
    presets.select (index);
    const auto file = presets.getFile (index);
    SordelinState stored;
    if (file == juce::File())
    {
        updatePresetButtons();
        return;
    }
    if (SordelinPresetFile::read (file, stored))
    {
        setState (juce::MemoryBlock (&stored, sizeof stored));
        presets.select (index); // the stored state selects what was selected when it was stored
    }
    else
    {
        if (! file.existsAsFile())
            removePreset (file);
        prompt.tell ("Missing Preset", "The file for this preset seems to be missing!  Cannot load.");
    }
    updatePresetButtons();
}

void SordelinMainComponent::loadPresetsForEngine()
{
    const auto chosen = presets.getFile (presets.getSelected());
    const bool stateCameFirst = stateHeld && ! presetListLoaded;
    loadPresetList();
    presetListLoaded = true;
    if (! stateCameFirst)
        stateBlock.presetItem = presets.indexOf (chosen);
    selectStoredPreset();
}

void SordelinMainComponent::selectStoredPreset()
{
    presets.select (stateBlock.presetItem);
    updatePresetButtons();
}

} // namespace morvanelab
