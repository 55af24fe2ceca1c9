// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVBankMgrComponent.h"

#include "ui/MVLibrarianFocus.h"
#include "ui/MVTheme.h"

// The window: showing, search and keyboard. How it looks is in MVBankMgrLayout.cpp, what its commands do in
// MVBankMgrActions.cpp.

namespace morvanelab
{

namespace
{

using Command = MVLibrarianCommand;

constexpr int leastVisible = 40; ///< of the title, inside the parent
constexpr int allGenresItem = 1;

} // namespace

bool MVBankMgrComponent::SearchField::keyPressed (const juce::KeyPress& key)
{
    const auto callback = key == juce::KeyPress (juce::KeyPress::downKey)     ? onDown
                          : key == juce::KeyPress (juce::KeyPress::returnKey) ? onAccept
                          : key == juce::KeyPress (juce::KeyPress::escapeKey) ? onLeave
                                                                              : std::function<void()>();
    if (! callback)
        return juce::TextEditor::keyPressed (key);
    callback();
    return true;
}

MVBankMgrComponent::MVBankMgrComponent (MVLibrarianModel& modelToUse)
    : juce::Component (windowTitle), model (modelToUse), list (modelToUse, *this)
{
    setComponentID ("librarian");
    setTitle (windowTitle);
    setFocusContainerType (FocusContainerType::keyboardFocusContainer);
    setUpSearch();

    list.setSize (listWidth, listHeight);
    list.onBankWidthChange = [this] { layoutChanged(); };
    addAndMakeVisible (list);

    addButton (undoButton, Command::undo, "librarian_undo");
    addButton (redoButton, Command::redo, "librarian_redo");
    addButton (addPatchButton, Command::addPatch, "librarian_add_patch");
    addButton (exportButton, Command::exportPatch, "librarian_export_patch");
    addButton (editButton, Command::editPatch, "librarian_edit_patch");
    addButton (clearButton, Command::clear, "librarian_clear");
    closeButton.setComponentID ("librarian_close");
    closeButton.setTooltip ("Close");
    closeButton.onClick = [this] { close(); };
    addAndMakeVisible (closeButton);
    loadButton.setComponentID ("librarian_load");
    loadButton.setTooltip (librarianTooltip (Command::loadPatch));
    loadButton.onClick = [this] { perform (Command::loadPatch); };
    addAndMakeVisible (loadButton);

    constrainer.setMinimumSize (smallestWidth, smallestHeight);
    constrainer.setMinimumOnscreenAmounts (titleHeight, leastVisible, titleHeight, leastVisible);
    corner = std::make_unique<juce::ResizableCornerComponent> (this, &constrainer);
    addAndMakeVisible (*corner);

    lookAndFeelChanged();
    setSize (defaultWidth, defaultHeight);
    model.onChange = [this] { update(); };
}

MVBankMgrComponent::~MVBankMgrComponent() { model.onChange = nullptr; }

void MVBankMgrComponent::setUpSearch()
{
    searchField.setComponentID ("librarian_search");
    searchField.setTitle ("Search");
    searchField.setInputRestrictions (200);
    searchField.setSelectAllWhenFocused (true);
    searchField.setIndents (iconButton, 4);
    searchField.onTextChange = [this] { searchChanged(); };
    searchField.onDown = [this] { list.focusSlots(); };
    searchField.onAccept = [this] { acceptSearch(); };
    searchField.onLeave = [this]
    {
        clearSearch();
        giveBackFocus();
    };
    addAndMakeVisible (searchField);
    clearSearchButton.setComponentID ("librarian_clear_search");
    clearSearchButton.setTooltip ("Clear the search");
    clearSearchButton.onClick = [this] { clearSearch(); };
    addChildComponent (clearSearchButton);

    genreBox.setComponentID ("librarian_genre");
    genreBox.setTooltip ("Show one genre");
    genreBox.addItem ("All Genres", allGenresItem);
    genreBox.setSelectedId (allGenresItem, juce::dontSendNotification);
    genreBox.onChange = [this] { searchChanged(); };
    addAndMakeVisible (genreBox);

    scopeButton.setComponentID ("librarian_scope");
    scopeButton.setTooltip ("Search all banks, not only the selected one");
    scopeButton.setClickingTogglesState (true);
    scopeButton.setToggleState (true, juce::dontSendNotification);
    scopeButton.onClick = [this]
    {
        searchChanged();
        layoutChanged();
    };
    addAndMakeVisible (scopeButton);
}

void MVBankMgrComponent::addButton (MVIconButton& button, Command command, const char* id)
{
    button.setComponentID (id);
    button.setTooltip (librarianTooltip (command));
    button.onClick = [this, command] { perform (command); };
    addAndMakeVisible (button);
}

// ---- Showing

void MVBankMgrComponent::open()
{
    model.refresh();
    // What plays is what is looked for first.
    if (const auto loaded = model.getLoadedPatch(); loaded && model.getSelectedSlots().none())
        model.selectForLoading (*loaded);
    if (model.getSelectedBank() < 0 && model.getCatalogue().bankCount() > 0)
        model.selectBank (0);
    keepInsideParent();
    setVisible (true);
    toFront (false);
    update();
}

void MVBankMgrComponent::close()
{
    closeDialog();
    if (hasKeyboardFocus (true))
        giveBackFocus();
    setVisible (false);
}

void MVBankMgrComponent::visibilityChanged()
{
    if (isVisible() && stale)
        update();
    layoutChanged();
}

void MVBankMgrComponent::handleCommandMessage (int commandId)
{
    switch (commandId)
    {
        case commandEngineReady:
        case commandRepaint:
            // Until it is first shown, there is nothing to look at.
            if (isVisible())
            {
                model.refresh();
                update();
            }
            break;
        case commandDropDialog:
            retired.reset();
            break;
        default:
            break;
    }
}

void MVBankMgrComponent::update()
{
    stale = ! isVisible();
    if (stale)
        return;
    updateGenres();
    list.update();
    clearSearchButton.setVisible (! searchField.isEmpty());
    undoButton.setEnabled (canPerform (Command::undo));
    undoButton.setTooltip (model.undoName());
    redoButton.setEnabled (canPerform (Command::redo));
    redoButton.setTooltip (model.redoName());
    addPatchButton.setEnabled (canPerform (Command::addPatch));
    exportButton.setEnabled (canPerform (Command::exportPatch));
    editButton.setEnabled (canPerform (Command::editPatch));
    clearButton.setEnabled (canPerform (Command::clear));
    loadButton.setEnabled (canPerform (Command::loadPatch));
    message = {};
    repaint();
}

void MVBankMgrComponent::setLoadedPatch (const MVBankUuid& bank, int slot) { model.setLoadedPatch (bank, slot); }

void MVBankMgrComponent::report (const juce::String& text)
{
    message = text;
    repaint();
}

juce::String MVBankMgrComponent::summary()
{
    if (message.isNotEmpty())
        return message;
    const auto count = model.getSelectedSlots().count();
    if (count > 1)
        return juce::String (static_cast<int> (count)) + " slots selected";
    if (model.getCatalogue().bankCount() == 0)
        return {};
    if (count == 0)
        return "Double-click a patch to load it, or drag it onto the main window.";

    const auto address = selectedSlot();
    const auto& slot = model.getCatalogue().slot (address);
    if (! slot.occupied)
        return "Slot " + juce::String (address.slot + 1) + " is empty: drop a patch file on it.";
    juce::StringArray parts { slot.name, slot.author, slot.genre };
    parts.removeEmptyStrings();
    return parts.joinIntoString (juce::String (juce::CharPointer_UTF8 ("  \xc2\xb7  ")));
}

// ---- Search

void MVBankMgrComponent::updateGenres()
{
    const auto found = MVPatchSearch::genres (model.getCatalogue());
    if (found == genres)
        return;
    genres = found;
    const auto chosen = model.getSearch().genre;
    genreBox.clear (juce::dontSendNotification);
    genreBox.addItem ("All Genres", allGenresItem);
    for (int i = 0; i < genres.size(); ++i)
        genreBox.addItem (genres[i], allGenresItem + 1 + i);
    const int index = genres.indexOf (chosen, true);
    genreBox.setSelectedId (index >= 0 ? allGenresItem + 1 + index : allGenresItem, juce::dontSendNotification);
    if (index < 0 && chosen.isNotEmpty())
        searchChanged();
}

void MVBankMgrComponent::searchChanged()
{
    MVPatchSearch search;
    search.text = searchField.getText();
    if (const int item = genreBox.getSelectedId(); item > allGenresItem)
        search.genre = genres[item - allGenresItem - 1];
    search.bank = scopeButton.getToggleState() ? MVPatchSearch::allBanks : 0;
    model.setSearch (search);
}

void MVBankMgrComponent::clearSearch()
{
    searchField.setText ({}, false);
    searchChanged();
}

void MVBankMgrComponent::acceptSearch()
{
    giveBackFocus();
    if (model.getSearch().isActive() && ! model.getResults().empty())
        loadPatch (model.getResults().front());
}

// ---- Loading

bool MVBankMgrComponent::loadPatch (MVPatchAddress address)
{
    if (! model.selectForLoading (address))
        return false;
    if (onLoad)
        onLoad();
    return true;
}

bool MVBankMgrComponent::loadNextPatch()
{
    const auto address = nextPatch();
    return address && loadPatch (*address);
}

bool MVBankMgrComponent::loadPreviousPatch()
{
    const auto address = previousPatch();
    return address && loadPatch (*address);
}

// ---- Keyboard

void MVBankMgrComponent::giveBackFocus()
{
    if (giveFocusBack)
        giveFocusBack();
    else
        juce::Component::unfocusAllComponents();
}

bool MVBankMgrComponent::keyPressed (const juce::KeyPress& key)
{
    if (dialog != nullptr)
        return false;
    if (key == juce::KeyPress (juce::KeyPress::escapeKey))
    {
        giveBackFocus();
        return true;
    }
    const auto command = librarianCommandForKey (key, list.banksHaveFocus());
    if (command == Command::none || ! canPerform (command))
        return false;
    perform (command);
    return true;
}

} // namespace morvanelab
