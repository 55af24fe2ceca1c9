// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinMenus.h"

#include "plugin/SordelinMainComponent.h"
#include "plugin/SordelinMainView.h"

#include <array>

namespace morvanelab
{

namespace
{

constexpr const char* makersPage = "https://morvane-lab.example";
constexpr const char* guidePage = "user_guide";
constexpr const char* guideFolder = "Sordelin User Guide";

constexpr std::array<int, 7> zooms { 75, 100, 125, 150, 175, 200, 250 };
constexpr std::array<int, 9> voiceCounts { 1, 2, 4, 8, 16, 24, 32, 48, 64 };

enum Option_t : int
{
    optionTooltips = 1,
    optionHostNotes,
    optionPanic,
    optionMappings,
    optionClearMappings,
    optionDataFolder,
    optionColours,
    optionKeepLayout,
    optionApplyLayout,
    optionMode = 100,   ///< plus the mode
    optionVoices = 200, ///< plus the number
    optionZoom = 400    ///< plus percent
};

enum Help_t : int
{
    helpGuide = 1,
    helpMakers,
    helpAbout
};

} // namespace

SordelinMenus::SordelinMenus (SordelinMainComponent& mainComponent, SordelinMainView& mainView)
    : openPage ([] (const juce::URL& page) { return page.launchInDefaultBrowser(); }), main (mainComponent),
      view (mainView)
{
}

juce::PopupMenu SordelinMenus::makeOptionsMenu() const
{
    const auto& settings = main.getSettings();
    juce::PopupMenu zoomMenu;
    for (const int percent : zooms)
        zoomMenu.addItem (optionZoom + percent, juce::String (percent) + " %", true, percent == settings.getZoom());
    juce::PopupMenu modeMenu;
    const int mode = settings.getPlayMode();
    modeMenu.addItem (optionMode + SordelinSettings::monoMode, "Mono", true, mode == SordelinSettings::monoMode);
    modeMenu.addItem (optionMode + SordelinSettings::polyMode, "Poly", true, mode == SordelinSettings::polyMode);
    modeMenu.addItem (optionMode + SordelinSettings::oneShotMode, "One-shot", true,
                      mode == SordelinSettings::oneShotMode);
    juce::PopupMenu voiceMenu;
    for (const int voices : voiceCounts)
        voiceMenu.addItem (optionVoices + voices, juce::String (voices), true, voices == settings.getVoices());

    juce::PopupMenu menu;
    menu.addSubMenu ("Zoom", zoomMenu);
    menu.addItem (optionTooltips, "Show tooltips", true, settings.getShowHelp());
    menu.addItem (optionColours, "Colours...");
    menu.addSeparator();
    menu.addItem (optionHostNotes, "Play host notes", true, main.isPlayingHostNotes());
    menu.addSubMenu ("Play mode", modeMenu);
    menu.addSubMenu ("Voices", voiceMenu);
    menu.addItem (optionPanic, "Panic: all voices off");
    menu.addSeparator();
    menu.addItem (optionMappings, "MIDI mappings...");
    menu.addItem (optionClearMappings, "Clear all MIDI mappings");
    menu.addSeparator();
    menu.addItem (optionKeepLayout, "Keep this window layout");
    menu.addItem (optionApplyLayout, "Back to the kept layout", main.getSettings().getCustomAppValues().width > 0);
    menu.addItem (optionDataFolder, "Open data folder");
    return menu;
}

void SordelinMenus::chooseOption (int item)
{
    switch (item)
    {
        case 0:
            return;
        case optionTooltips:
            view.setTooltipsShown (! main.getSettings().getShowHelp());
            return;
        case optionHostNotes:
            main.setPlayHostNotes (! main.isPlayingHostNotes());
            return;
        case optionPanic:
            main.panic();
            return;
        case optionMappings:
            view.showMappings();
            return;
        case optionClearMappings:
            view.clearAllMappedMidi();
            return;
        case optionDataFolder:
        {
            bool existed = false;
            const juce::File folder (main.getShelf().getProperties().getDataDirectory (existed));
            if (folder.isDirectory())
                folder.startAsProcess();
            return;
        }
        case optionColours:
            view.showColours();
            return;
        case optionKeepLayout:
            main.getSettings().setCustomAppValues (view.getDimensions());
            return;
        case optionApplyLayout:
            view.applyDimensionSettings (main.getSettings().getCustomAppValues());
            return;
        default:
            break;
    }
    if (item > optionZoom)
        view.setZoom (item - optionZoom);
    else if (item > optionVoices)
        main.setVoices (item - optionVoices);
    else if (item > optionMode)
        main.setPlayMode (item - optionMode);
}

juce::PopupMenu SordelinMenus::makeHelpMenu() const
{
    juce::PopupMenu menu;
    menu.addItem (helpGuide, "Online User Guide");
    menu.addItem (helpMakers, "Visit Morvane Lab");
    menu.addItem (helpAbout, "About");
    return menu;
}

void SordelinMenus::chooseHelp (int item)
{
    if (item == helpGuide)
    {
        if (! openPage (userGuide()))
            main.getPrompt().tell ("Online User Guide", "Could not open.", "Open");
    }
    else if (item == helpMakers)
        visitMakers();
    else if (item == helpAbout)
        view.showAbout();
}

void SordelinMenus::visitMakers()
{
    if (! openPage (juce::URL (makersPage)))
        main.getPrompt().tell ("Visit Morvane Lab", "Could not open.", "Open");
}

juce::URL SordelinMenus::userGuide() const
{
    const auto root = main.getSettings().getHelpRoot();
    if (root.containsIgnoreCase ("://"))
        return juce::URL (root).getChildURL (guidePage);
    const auto besidePlugin = juce::File::getSpecialLocation (juce::File::currentExecutableFile);
    const auto folder =
        juce::File::isAbsolutePath (root) ? juce::File (root) : besidePlugin.getSiblingFile (guideFolder);
    return juce::URL (folder.getChildFile (juce::String (guidePage) + ".html"));
}

} // namespace morvanelab
