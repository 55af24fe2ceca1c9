// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plugin/SordelinBoxes.h"
#include "plugin/SordelinCommandSink.h"
#include "plugin/SordelinDisplayPanel.h"
#include "plugin/SordelinIoPanel.h"
#include "plugin/SordelinMenus.h"
#include "plugin/SordelinMidiMapping.h"
#include "plugin/SordelinMidiPanel.h"
#include "plugin/SordelinParameterPanel.h"
#include "plugin/SordelinPresetBar.h"
#include "plugin/SordelinSettings.h"
#include "plugin/SordelinWidgets.h"
#include "ui/MVBankMgrComponent.h"
#include "ui/MVHostKeyboard.h"
#include "ui/MVLookAndFeel.h"
#include "ui/MVMidiKeyboard.h"
#include "ui/MVMidiMappingComponent.h"

#include <atomic>
#include <cstdint>

namespace morvanelab
{

class SordelinMainComponent;

/** Wears the theme before any part of the window is made. */
struct SordelinThemed
{
    juce::SharedResourcePointer<MVSharedLookAndFeel> shared;
};

/** What the editor shows: patch, displays, levels, parameters, presets, keyboard and librarian. It is made with the
    first editor, outlives editors and belongs to the message thread; the engine's side reaches it through posted
    commands only. Every control is found by its component id, which is its label. */
class SordelinMainView : private SordelinThemed,
                         private SordelinMidiMapping,
                         public MVMidiMappingComponent,
                         public juce::DragAndDropContainer,
                         public juce::DragAndDropTarget,
                         private SordelinCommandSink
{
public:
    /** Sizes in pixels at 100 percent. */
    static constexpr int defaultWidth = 960;
    static constexpr int defaultHeight = 480;
    static constexpr int smallestWidth = 760;
    static constexpr int smallestHeight = 400;
    static constexpr int largestWidth = 2400;
    static constexpr int largestHeight = 1600;

    /** The owner outlives the view. */
    explicit SordelinMainView (SordelinMainComponent& owner);
    ~SordelinMainView() override;

    void showAbout();
    void showMappings();
    void showColours();
    void showLibrarian();
    /** Closes the about box, the mappings or the colours. */
    void closePanel();
    void setTooltipsShown (bool shown);
    /** Percent, folded into the limits and kept. */
    void setZoom (int percent);
    int getZoom() const;
    /** Window size and librarian as they are. */
    SordelinSettings::Dimensions getDimensions() const;
    void applyDimensionSettings (const SordelinSettings::Dimensions& dimensions);
    /** Asked once, when the window first shows: whether the keys are held that offer the application reset, Ctrl, Alt
        and Shift together. */
    std::function<bool()> areResetKeysHeld { &SordelinMainView::areCtrlAltShiftHeld };
    /** Takes the size a host gives, in the host's pixels, as far as the limits allow. */
    void takeHostSize (int width, int height);

    SordelinMenus& getMenus() { return menus; }
    MVBankMgrComponent& getLibrarian() { return librarian; }

    void paint (juce::Graphics& graphics) override;
    void paintOverChildren (juce::Graphics& graphics) override;
    void resized() override;
    void visibilityChanged() override;
    void parentHierarchyChanged() override;
    void handleCommandMessage (int commandId) override;

    bool isInterestedInDragSource (const SourceDetails& details) override;
    void itemDragEnter (const SourceDetails& details) override;
    void itemDragExit (const SourceDetails& details) override;
    void itemDropped (const SourceDetails& details) override;

private:
    void postSordelinCommand (int commandId) override;
    void makeButtons();
    void makeLibrarian();
    void placeLibrarian();
    void showMenuOf (juce::Component& button, juce::PopupMenu menu, void (SordelinMenus::*chosen) (int));
    void openPanel (std::unique_ptr<juce::Component> content, bool takesKeys);
    void completeStartUp();
    void updateFromPatch();
    void applyColours();
    void storeDimensions();
    void tellShowing();
    static bool areCtrlAltShiftHeld();
    void showAsNew();
    void poll();
    void leaveNothingOpen();
    void cancelDrag();
    void layOutLeft (juce::Rectangle<int> area);

    SordelinMainComponent& main;
    SordelinMenus menus;
    SordelinDisplayPanel displayPanel;
    SordelinMidiPanel midiPanel;
    SordelinIoPanel ioPanel;
    SordelinParameterPanel parameterPanel;
    SordelinPresetBar presetBar;
    juce::Label presetHeader { "PRESET", "PRESET" };
    MVMidiKeyboard keyboard;
    MVIconButton menuButton { "MENU", MVIcon::menu, MVIconButton::Style::iconAndText };
    juce::TextButton helpButton { "HELP" };
    MVIconButton librarianButton { "SHOW BANK LIBRARIAN", MVIcon::librarian };
    MVIconButton previousButton { "PREVIOUS PATCH", MVIcon::previous };
    MVIconButton nextButton { "NEXT PATCH", MVIcon::next };
    juce::TextButton patchButton { "PATCH" };
    MVLibrarianModel librarianModel;
    MVBankMgrComponent librarian;
    SordelinOverlay overlay { SordelinOverlay::Closing::byClickBeside };
    SordelinBoxes boxes { *this };
    MVHostKeyboard hostKeyboard { *this };
    std::unique_ptr<juce::TooltipWindow> tooltips;
    juce::ComponentBoundsConstrainer sizeLimits;
    juce::ResizableCornerComponent corner { this, &sizeLimits };
    SordelinTimer pollTimer { [this] { poll(); } };
    SordelinTimer storeTimer { [this] { storeDimensions(); } };
    std::atomic<std::uint64_t> pendingCommands { 0 }; ///< posted and not yet handled, one bit each
    juce::Rectangle<int> wordmarkArea;
    bool dropOffered = false;
    bool startedUp = false;
    bool resetOffered = false;
};

} // namespace morvanelab
