// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <initializer_list>

namespace morvanelab
{

/** What a user can tell the librarian to do; the numbers are the items of its menus. */
enum class MVLibrarianCommand
{
    none = 0,
    loadPatch,
    editPatch,
    cut,
    copy,
    paste,
    clear,
    swap,
    selectAll,
    addPatch,
    exportPatch,
    newBank,
    addBank,
    removeBank,
    moveBankUp,
    moveBankDown,
    editBank,
    undo,
    redo,
    find,
    count
};

/** Text, key and tooltip of a command. */
struct MVLibrarianCommandInfo
{
    MVLibrarianCommand command;
    const char* text;
    const char* key; ///< as juce::KeyPress describes it, "command" for the system's; empty for none
};

const MVLibrarianCommandInfo& librarianCommand (MVLibrarianCommand command);

/** "Copy (Ctrl + C)", for a tooltip. */
juce::String librarianTooltip (MVLibrarianCommand command);

/** Who carries commands out. Message thread. */
class MVLibrarianCommandTarget
{
public:
    virtual ~MVLibrarianCommandTarget() = default;

    /** Whether it would do anything now. */
    virtual bool canPerform (MVLibrarianCommand command) = 0;
    /** Does nothing if it cannot. */
    virtual void perform (MVLibrarianCommand command) = 0;
    /** As the menu shows it now: undo and redo say what. */
    virtual juce::String commandText (MVLibrarianCommand command) = 0;

    /** Tells the user something in passing, in the window's foot. */
    virtual void report (const juce::String& text) = 0;

    /** A menu of commands; none is a separator. The items' numbers are the commands. */
    juce::PopupMenu createMenu (std::initializer_list<MVLibrarianCommand> commands);
};

/** Shows a menu of commands where the mouse is, inside the window of a component, and performs what is chosen. Returns
   at once; nothing is performed if the component has gone by then. */
void showLibrarianMenu (juce::Component& component, MVLibrarianCommandTarget& target, juce::PopupMenu menu);

/** The command of a key; none if it has none. In the list of banks, Delete and F2 mean the bank. */
MVLibrarianCommand librarianCommandForKey (const juce::KeyPress& key, bool banksHaveFocus);

} // namespace morvanelab
