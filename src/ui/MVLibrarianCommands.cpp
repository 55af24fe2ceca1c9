// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianCommands.h"

#include "ui/MVLookAndFeel.h"

#include <array>

namespace morvanelab
{

namespace
{

using Command = MVLibrarianCommand;

constexpr std::array<MVLibrarianCommandInfo, static_cast<std::size_t> (Command::count)> commands { {
    { Command::none, "", "" },
    { Command::loadPatch, "Load", "return" },
    { Command::editPatch, "Edit Patch Info...", "F2" },
    { Command::cut, "Cut", "command + X" },
    { Command::copy, "Copy", "command + C" },
    { Command::paste, "Paste", "command + V" },
    { Command::clear, "Clear", "delete" },
    { Command::swap, "Swap", "command + T" },
    { Command::selectAll, "Select All", "command + A" },
    { Command::addPatch, "Add Patch from File...", "command + O" },
    { Command::exportPatch, "Export Patch...", "command + E" },
    { Command::newBank, "New Bank...", "command + N" },
    { Command::addBank, "Add Bank from File...", "command + B" },
    { Command::removeBank, "Remove Bank from List", "" },
    { Command::moveBankUp, "Move Bank Up", "alt + cursor up" },
    { Command::moveBankDown, "Move Bank Down", "alt + cursor down" },
    { Command::editBank, "Edit Bank Info...", "shift + F2" },
    { Command::undo, "Undo", "command + Z" },
    { Command::redo, "Redo", "command + Y" },
    { Command::find, "Find", "command + F" },
} };

juce::KeyPress keyOf (const MVLibrarianCommandInfo& info)
{
    return info.key[0] != 0 ? juce::KeyPress::createFromDescription (info.key) : juce::KeyPress();
}

} // namespace

const MVLibrarianCommandInfo& librarianCommand (Command command)
{
    return commands[static_cast<std::size_t> (command)];
}

juce::String librarianTooltip (Command command)
{
    const auto& info = librarianCommand (command);
    const auto key = keyOf (info);
    const auto text = juce::String (info.text).trimCharactersAtEnd (".");
    return key.isValid() ? text + " (" + key.getTextDescription() + ")" : text;
}

juce::PopupMenu MVLibrarianCommandTarget::createMenu (std::initializer_list<Command> wanted)
{
    juce::PopupMenu menu;
    for (const auto command : wanted)
    {
        if (command == Command::none)
        {
            menu.addSeparator();
            continue;
        }
        juce::PopupMenu::Item item (commandText (command));
        item.itemID = static_cast<int> (command);
        item.isEnabled = canPerform (command);
        if (const auto key = keyOf (librarianCommand (command)); key.isValid())
            item.shortcutKeyDescription = key.getTextDescription();
        menu.addItem (item);
    }
    return menu;
}

void showLibrarianMenu (juce::Component& component, MVLibrarianCommandTarget& target, juce::PopupMenu menu)
{
    menu.showMenuAsync (juce::PopupMenu::Options().withParentComponent (menuParentOf (component)),
                        [alive = juce::Component::SafePointer<juce::Component> (&component), &target] (int item)
                        {
                            if (alive != nullptr && item > 0 && item < static_cast<int> (Command::count))
                                target.perform (static_cast<Command> (item));
                        });
}

Command librarianCommandForKey (const juce::KeyPress& key, bool banksHaveFocus)
{
    const auto commandShift = juce::ModifierKeys::commandModifier | juce::ModifierKeys::shiftModifier;
    if (key == juce::KeyPress ('z', commandShift, 0))
        return Command::redo;
    if (key == juce::KeyPress (juce::KeyPress::backspaceKey))
        return banksHaveFocus ? Command::removeBank : Command::clear;

    for (const auto& info : commands)
        if (info.key[0] != 0 && key == keyOf (info))
        {
            if (! banksHaveFocus)
                return info.command;
            switch (info.command)
            {
                case Command::clear:
                    return Command::removeBank;
                case Command::editPatch:
                    return Command::editBank;
                case Command::loadPatch:
                    return Command::none;
                default:
                    return info.command;
            }
        }
    return Command::none;
}

} // namespace morvanelab
