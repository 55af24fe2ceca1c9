// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVAppPersistentProps.h"
#include "foundation/MVVector.h"

#include <juce_core/juce_core.h>

#include <mutex>

namespace morvanelab
{

/** The user's presets: their files in order, the list of them in the property `presets_list`, and what the window's
    combo box and buttons show of it.

    The property holds an XML document of our own dialect: `xml_wrapper`, in it `saved_presets`, in it one
    `preset_file` with the attribute `path` for each preset. Several instances share it; what another one has added or
    removed since this one looked is taken over before this one changes the list.

    Any thread. */
class SordelinPresetList
{
public:
    static constexpr const char* listKey = "presets_list";

    /** What the window mirrors. */
    struct Combo
    {
        juce::StringArray items;     ///< file names without extension
        int selected = -1;           ///< -1 for none
        bool buttonsEnabled = false; ///< "SAVE PRESET" and "CLEAR MAP"
    };

    /** The properties outlive the list. */
    explicit SordelinPresetList (MVAppPersistentProps& properties);

    /** Replaces the list by the stored one; the selection goes. Files that are not there are left out.
        Returns the code of the last problem: 1 none, 14 a damaged document, 15 an entry without a path,
        34 a file that is missing. A damaged document is first kept aside as "presets_list_bak.xml" beside the
        properties. */
    int load();
    /** Stores the list and flushes the properties. Entries whose path is empty or cannot stand in the document are
        left out. A damaged document that could not be kept aside is not overwritten: false. */
    bool save();
    /** Takes over what other instances have stored since this one last loaded or saved. The selection stays with its
        file. */
    void takeOverChanges();

    int size() const;
    /** An empty file out of range. */
    juce::File getFile (int index) const;
    /** -1 if it is not in the list. */
    int indexOf (const juce::File& file) const;
    /** Appends; the combo is not rebuilt. */
    void add (const juce::File& file);
    void remove (const juce::File& file);

    /** Whether the document can take one more. */
    bool hasRoomFor (const juce::File& file) const;

    /** Makes the combo's items anew from the files; its selection goes. */
    void rebuildCombo();
    /** The combo's item, -1 for none; out of range selects none. */
    void select (int index);
    int getSelected() const;
    /** Works out whether the buttons are enabled: a list that is not empty, and something selected. */
    void updateButtons();
    Combo getCombo() const;

private:
    using Files = MVVector<juce::File>;

    static Files parse (const juce::String& text, bool mustExist, int& result);
    bool keepDamagedAside (const juce::String& text);
    juce::String buildDocument() const;
    void refillCombo();
    static int find (const Files& files, const juce::File& file);

    MVAppPersistentProps& properties;
    mutable std::mutex lock; ///< over the rest
    Files presetFiles;
    Combo combo;
    juce::String lastText; ///< as last read or written
    bool mayOverwrite = true;
};

} // namespace morvanelab
