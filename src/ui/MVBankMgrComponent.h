// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVBankFilePanel.h"
#include "ui/MVBankItemSelectComponent.h"
#include "ui/MVIconButton.h"
#include "ui/MVLibrarianCommands.h"
#include "ui/MVLibrarianFocus.h"
#include "ui/MVLibrarianModel.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <memory>
#include <optional>

namespace morvanelab
{

/** The window "Bank Librarian": a movable, resizable panel that lives inside the plug-in's window, where every host
   lets it, with search, banks, slots, and the file and metadata dialogs inside itself.

    Hidden at first, and cheap until it is first shown: no file is read before. Patches are dragged out of it by way of
    the juce::DragAndDropContainer that its owner is; the drag's description is MVBankItemSelectComponent::patchDragId.
    Message thread. */
class MVBankMgrComponent : public juce::Component,
                           public juce::FileDragAndDropTarget,
                           public juce::DragAndDropTarget,
                           public MVLibrarianCommandTarget
{
public:
    static constexpr const char* windowTitle = "Bank Librarian";
    static constexpr int defaultWidth = 550;
    static constexpr int defaultHeight = 400;
    static constexpr int listWidth = 500;
    static constexpr int listHeight = 600;

    /** Commands posted from other threads. */
    static constexpr int commandRepaint = 16409;
    static constexpr int commandEngineReady = 16427;

    /** The model must outlive the window, which takes over its onChange. */
    explicit MVBankMgrComponent (MVLibrarianModel& modelToUse);
    ~MVBankMgrComponent() override;

    /** The load callback: bank and slot are in the manager's selection file (see MVBankFileManager::takeSelection). */
    std::function<void()> onLoad;
    /** The window was shown, hidden, moved or resized by its user: something to be kept in the settings. */
    std::function<void()> onLayoutChange;
    /** Gives the keyboard back to the host. Unset: no component has the focus any more. */
    std::function<void()> giveFocusBack;

    /** Shows the window, on top, wholly inside its parent. */
    void open();
    void close();

    /** The patch that plays; see MVLibrarianModel. */
    void setLoadedPatch (const MVBankUuid& bank, int slot);

    /** The neighbour of the loaded patch in what the search shows; nothing if that is empty. */
    std::optional<MVPatchAddress> nextPatch() { return model.nextPatch(); }
    std::optional<MVPatchAddress> previousPatch() { return model.previousPatch(); }
    /** Selects that patch and calls onLoad. False if there is none. */
    bool loadNextPatch();
    bool loadPreviousPatch();
    bool loadPatch (MVPatchAddress address);

    /** Bounds, divider, scope of the search and whether it shows, as an element "bank_mgr_settings". */
    std::unique_ptr<juce::XmlElement> createSettings() const;
    /** Takes over what is there and makes sense; never shows the window by itself. */
    void applySettings (const juce::XmlElement& settings);

    MVBankItemSelectComponent& getListView() { return list; }
    MVLibrarianModel& getModel() { return model; }
    /** The file or metadata dialog that is open, or null. */
    juce::Component* getDialog() { return dialog.get(); }

    bool canPerform (MVLibrarianCommand command) override;
    void perform (MVLibrarianCommand command) override;
    juce::String commandText (MVLibrarianCommand command) override;
    void report (const juce::String& text) override;

    void handleCommandMessage (int commandId) override;
    void paint (juce::Graphics& graphics) override;
    void paintOverChildren (juce::Graphics& graphics) override;
    void resized() override;
    void moved() override { layoutChanged(); }
    void visibilityChanged() override;
    void parentSizeChanged() override { keepInsideParent(); }
    void lookAndFeelChanged() override;
    void mouseDown (const juce::MouseEvent& event) override;
    void mouseDrag (const juce::MouseEvent& event) override;
    bool keyPressed (const juce::KeyPress& key) override;

    bool isInterestedInFileDrag (const juce::StringArray& files) override;
    void fileDragMove (const juce::StringArray& files, int x, int y) override;
    void fileDragExit (const juce::StringArray& files) override;
    void filesDropped (const juce::StringArray& files, int x, int y) override;
    /** What is let go of beside slots and banks goes nowhere, and not to the window behind. */
    bool isInterestedInDragSource (const SourceDetails& details) override;
    void itemDropped (const SourceDetails&) override {}

private:
    /** Hands the keyboard on before the text field takes the key. */
    struct SearchField : juce::TextEditor
    {
        bool keyPressed (const juce::KeyPress& key) override;

        std::function<void()> onDown;
        std::function<void()> onAccept;
        std::function<void()> onLeave;
    };

    static constexpr int commandDropDialog = 1;
    static constexpr int titleHeight = 30;
    static constexpr int iconButton = 24; ///< side of a button that is an icon
    static constexpr int smallestWidth = 460;
    static constexpr int smallestHeight = 300;

    void setUpSearch();
    void addButton (MVIconButton& button, MVLibrarianCommand command, const char* id);
    void update();
    void updateGenres();
    void searchChanged();
    void acceptSearch();
    void clearSearch();
    void layoutChanged();
    void keepInsideParent();
    void giveBackFocus();
    juce::String summary();

    bool hasOneSlot() const { return model.getSelectedSlots().count() == 1; }
    MVPatchAddress selectedSlot();
    void performOnSlots (MVLibrarianCommand command, const MVSlotSet& slots);
    void performOnBanks (MVLibrarianCommand command);
    void swapSelected();
    bool selectionHoldsPatch();
    void loadSelected();
    void openDialog (std::unique_ptr<juce::Component> newDialog);
    void closeDialog();
    void openFiles (MVBankFilePanel::Request request, std::function<void (const juce::Array<juce::File>&)> use);
    juce::File firstFolder() const;
    void openPatchFiles();
    void openBankFiles();
    void openNewBank();
    void openExport();
    void editPatch();
    void editBank();
    void editMetadata (const juce::String& title, const MVMetaData& metadata,
                       std::function<bool (const MVMetaData&)> store);
    void chooseImage();

    MVLibrarianModel& model;
    MVBankItemSelectComponent list;
    SearchField searchField;
    MVQuietComboBox genreBox;
    juce::TextButton scopeButton { "All Banks" };
    MVIconButton clearSearchButton { "Clear Search", MVIcon::close, MVIconButton::Style::bare };
    MVIconButton undoButton { "Undo", MVIcon::undo, MVIconButton::Style::bare };
    MVIconButton redoButton { "Redo", MVIcon::redo, MVIconButton::Style::bare };
    MVIconButton closeButton { "Close", MVIcon::close, MVIconButton::Style::bare };
    MVIconButton addPatchButton { "Add Patch", MVIcon::importFile, MVIconButton::Style::bare };
    MVIconButton exportButton { "Export Patch", MVIcon::exportFile, MVIconButton::Style::bare };
    MVIconButton editButton { "Edit Patch Info", MVIcon::edit, MVIconButton::Style::bare };
    MVIconButton clearButton { "Clear", MVIcon::clear, MVIconButton::Style::bare };
    juce::TextButton loadButton { "Load" };
    juce::ComponentBoundsConstrainer constrainer;
    juce::ComponentDragger dragger;
    std::unique_ptr<juce::ResizableCornerComponent> corner;
    std::unique_ptr<juce::Component> dialog;
    std::unique_ptr<juce::Component> imageDialog; ///< above the metadata editor
    std::unique_ptr<juce::Component> retired;     ///< closed, to be deleted when its own calls have ended
    bool focusWasHere = false;                    ///< when the dialog came up
    juce::StringArray genres;
    juce::String message; ///< passing, until the next change
    juce::File lastFolder;
    bool stale = true; ///< changed while hidden
    bool draggingWindow = false;
};

} // namespace morvanelab
