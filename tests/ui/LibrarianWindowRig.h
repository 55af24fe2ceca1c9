// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/ui/LibrarianRig.h"
#include "tests/ui/ThemePicture.h"
#include "ui/MVBankMgrComponent.h"
#include "ui/MVMetaDataEditor.h"

namespace morvanelab::test
{

/** The librarian in a window of its own, without a display. */
struct LibrarianWindow : ThemeTest
{
    /** What the plug-in's window is to it. */
    struct Owner : juce::Component, juce::DragAndDropContainer
    {
    };

    LibrarianWindow()
    {
        owner.setSize (900, 620);
        owner.addChildComponent (librarian);
        librarian.onLoad = [this]
        {
            int bank = -1;
            int slot = -1;
            if (rig.manager.takeSelection (bank, slot))
                loads += std::to_string (bank) + ":" + std::to_string (slot) + " ";
            else
                loads += "none ";
        };
    }

    template <typename T = juce::Component>
    T& find (const char* id)
    {
        auto* const found = dynamic_cast<T*> (findIn (owner, id));
        if (found == nullptr)
            throw std::runtime_error (id);
        return *found;
    }

    static juce::Component* findIn (juce::Component& parent, const juce::String& id)
    {
        for (auto* const child : parent.getChildren())
        {
            if (child->getComponentID() == id)
                return child;
            if (auto* const found = findIn (*child, id))
                return found;
        }
        return nullptr;
    }

    void press (const char* id)
    {
        auto& button = find<juce::Button> (id);
        if (button.isEnabled() && button.isVisible())
            button.onClick();
    }

    /** A key as the toolkit hands it on: to the component, then to its parents until one takes it. */
    bool key (juce::Component& component, const char* description)
    {
        const auto press = juce::KeyPress::createFromDescription (description);
        for (juce::Component::SafePointer<juce::Component> at (&component); at != nullptr;)
        {
            juce::Component::SafePointer<juce::Component> parent (at->getParentComponent());
            if (at->keyPressed (press))
                return true;
            at = parent;
        }
        return false;
    }

    static juce::MouseEvent eventAt (juce::Component& component, juce::Point<int> at, juce::ModifierKeys modifiers,
                                     int clicks)
    {
        const auto now = juce::Time::getCurrentTime();
        return { juce::Desktop::getInstance().getMainMouseSource(),
                 at.toFloat(),
                 modifiers,
                 0.0F,
                 0.0F,
                 0.0F,
                 0.0F,
                 0.0F,
                 &component,
                 &component,
                 now,
                 at.toFloat(),
                 now,
                 clicks,
                 false };
    }

    void click (juce::Component& component, juce::Point<int> at, int modifiers = 0, int clicks = 1)
    {
        const auto event = eventAt (component, at, modifiers | juce::ModifierKeys::leftButtonModifier, clicks);
        component.mouseDown (event);
        component.mouseUp (event);
        if (clicks == 2)
            component.mouseDoubleClick (event);
    }

    MVSlotGrid& grid() { return find<MVSlotGrid> ("librarian_slots"); }
    void clickSlot (int slot, int modifiers = 0, int clicks = 1)
    {
        click (grid(), grid().boundsOfSlot (slot).getCentre(), modifiers, clicks);
    }

    void type (const char* id, const char* text)
    {
        auto& field = find<juce::TextEditor> (id);
        field.setText (text);
        if (field.onTextChange)
            field.onTextChange();
    }

    LibrarianRig rig;
    Owner owner;
    MVBankMgrComponent librarian { rig.model };
    std::string loads; ///< what the load callback found in the selection file, each time
};

} // namespace morvanelab::test
