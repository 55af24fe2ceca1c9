// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

class SordelinMainView;
class SordelinMainComponent;

/** The options menu and the help menu of the window: what stands in them and what the items do. Message thread. */
class SordelinMenus
{
public:
    /** Both outlive the menus. */
    SordelinMenus (SordelinMainComponent& mainComponent, SordelinMainView& mainView);

    juce::PopupMenu makeOptionsMenu() const;
    juce::PopupMenu makeHelpMenu() const;
    /** Does what the item of that number says; 0 and unknown numbers do nothing. */
    void chooseOption (int item);
    void chooseHelp (int item);

    /** The user guide: a file or an address. */
    juce::URL userGuide() const;

    /** Opens a page; false if it could not be. Tests put another function here. */
    std::function<bool (const juce::URL&)> openPage;

private:
    void visitMakers();

    SordelinMainComponent& main;
    SordelinMainView& view;
};

} // namespace morvanelab
