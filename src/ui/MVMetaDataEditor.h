// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVMetaData.h"
#include "ui/MVIconButton.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace morvanelab
{

/** A form for the metadata of a patch or a bank. Fields that are not touched keep what is stored, byte for byte,
   whatever it is. It covers its parent. Message thread. */
class MVMetaDataEditor : public juce::Component
{
public:
    static constexpr int longestName = 128; ///< characters, of every field of one line
    static constexpr int longestDescription = 4000;
    static constexpr const char* imagePatterns = "*.png;*.jpg;*.jpeg";

    /** genres are offered beside the genre's field. */
    MVMetaDataEditor (const juce::String& titleToShow, const MVMetaData& stored,
                      const juce::StringArray& genresToOffer);

    /** Called on Save, with what the form says; may delete the editor. */
    std::function<void (const MVMetaData& edited)> onSave;
    std::function<void()> onCancel;
    /** The user wants to choose a picture: answer with setImageFile. */
    std::function<void()> onChooseImage;

    /** What is stored, with what has been changed. */
    MVMetaData collect() const;
    /** Takes a PNG or JPEG file as the picture. False, with a line that says so, if it cannot be used. */
    bool setImageFile (const juce::File& file);
    static bool isImageFile (const juce::File& file) { return file.hasFileExtension ("png;jpg;jpeg"); }
    /** Puts the keyboard into the name, all of it selected. */
    void focusName();
    void save();
    void cancel();

    void paint (juce::Graphics& graphics) override;
    void resized() override;
    bool keyPressed (const juce::KeyPress& key) override;

private:
    struct Field
    {
        juce::String label;
        juce::TextEditor editor;
        juce::String shown; ///< as it stood at first
        bool isChanged() const { return editor.getText() != shown; }
    };

    void setUp (Field& field, const char* id, const char* label, const juce::String& text, int longest);
    void layField (Field& field, juce::Rectangle<int> area);
    void paintLabel (juce::Graphics& graphics, const Field& field) const;
    void showGenres();
    void showImage();
    juce::Rectangle<int> imageArea() const;

    juce::String title;
    MVMetaData metadata;
    juce::StringArray genres;
    Field name;
    Field author;
    Field genre;
    Field geography;
    Field tags;
    Field description;
    juce::Image image;
    juce::String message;
    MVIconButton genreButton { "Genres", MVIcon::genre, MVIconButton::Style::bare };
    juce::TextButton imageButton { "Picture..." };
    juce::TextButton noImageButton { "Remove" };
    juce::TextButton saveButton { "Save" };
    juce::TextButton cancelButton { "Cancel" };
};

} // namespace morvanelab
