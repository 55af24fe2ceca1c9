// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVMetaDataEditor.h"

#include "ui/MVLibrarianFocus.h"
#include "ui/MVLibrarianImage.h"
#include "ui/MVLibrarianText.h"
#include "ui/MVTheme.h"

#include <algorithm>
#include <utility>

namespace morvanelab
{

namespace
{

constexpr int titleHeight = 30;
constexpr int labelHeight = 16;
constexpr int imageSide = 128;
constexpr int fieldHeight = labelHeight + metrics::controlHeight;

juce::String tagsAsText (const MVMetaData& metadata)
{
    juce::StringArray tags;
    constexpr int mostTags = 256;
    for (int i = 0; i < std::min (mostTags, metadata.searchTagCount()); ++i)
        tags.add (juce::String (metadata.getSearchTag (i)));
    return tags.joinIntoString (", ");
}

void takeTags (MVMetaData& metadata, const juce::String& text)
{
    metadata.clearSearchTags();
    for (const auto& tag : juce::StringArray::fromTokens (text, ", ", ""))
        if (tag.containsOnly ("-0123456789") && tag.containsAnyOf ("0123456789"))
            metadata.addSearchTag (tag.getIntValue());
}

} // namespace

MVMetaDataEditor::MVMetaDataEditor (const juce::String& titleToShow, const MVMetaData& stored,
                                    const juce::StringArray& genresToOffer)
    : title (titleToShow), metadata (stored), genres (genresToOffer), image (imageOf (stored))
{
    setComponentID ("librarian_metadata_editor");
    setFocusContainerType (FocusContainerType::keyboardFocusContainer);
    setUp (name, "metadata_name", "Name", toShownText (stored.getName(), longestName), longestName);
    setUp (author, "metadata_author", "Author", toShownText (stored.getAuthor(), longestName), longestName);
    setUp (genre, "metadata_genre", "Genre", toShownText (stored.getGenre(), longestName), longestName);
    setUp (geography, "metadata_geography", "Geography", toShownText (stored.getGeography(), longestName), longestName);
    setUp (tags, "metadata_tags", "Search tags (numbers)", tagsAsText (stored), longestDescription);
    tags.editor.setInputRestrictions (longestDescription, "-0123456789, ");
    description.editor.setMultiLine (true, true);
    description.editor.setReturnKeyStartsNewLine (true);
    setUp (description, "metadata_description", "Description",
           toShownText (stored.getDescription(), longestDescription, true), longestDescription);

    genreButton.setTooltip ("Genres in use");
    genreButton.onClick = [this] { showGenres(); };
    genreButton.setEnabled (! genres.isEmpty());
    imageButton.onClick = [this]
    {
        if (onChooseImage)
            onChooseImage();
    };
    noImageButton.onClick = [this]
    {
        setImageOf (metadata, {});
        image = {};
        showImage();
    };
    saveButton.onClick = [this] { save(); };
    cancelButton.onClick = [this] { cancel(); };
    const std::pair<juce::Button*, const char*> buttons[] { { &genreButton, "metadata_genres" },
                                                            { &imageButton, "metadata_choose_image" },
                                                            { &noImageButton, "metadata_remove_image" },
                                                            { &saveButton, "metadata_save" },
                                                            { &cancelButton, "metadata_cancel" } };
    for (const auto& [button, id] : buttons)
    {
        button->setComponentID (id);
        addAndMakeVisible (*button);
    }
    keepClicksFromFocus (*this);
    showImage();
}

void MVMetaDataEditor::setUp (Field& field, const char* id, const char* label, const juce::String& text, int longest)
{
    field.label = label;
    field.editor.setComponentID (id);
    field.editor.setTitle (label);
    field.editor.setText (text, false);
    field.shown = field.editor.getText();
    field.editor.setInputRestrictions (longest);
    field.editor.setSelectAllWhenFocused (! field.editor.isMultiLine());
    // They mean Cancel and Save, here as everywhere in the form.
    field.editor.setEscapeAndReturnKeysConsumed (false);
    addAndMakeVisible (field.editor);
}

MVMetaData MVMetaDataEditor::collect() const
{
    MVMetaData result (metadata);
    const std::pair<const Field*, void (MVMetaData::*) (const MVString&)> texts[] {
        { &name, &MVMetaData::setName },
        { &author, &MVMetaData::setAuthor },
        { &genre, &MVMetaData::setGenre },
        { &geography, &MVMetaData::setGeography },
        { &description, &MVMetaData::setDescription }
    };
    for (const auto& [field, set] : texts)
        if (field->isChanged())
            (result.*set) (toStoredText (field->editor.getText().trim()));
    if (tags.isChanged())
        takeTags (result, tags.editor.getText());
    return result;
}

bool MVMetaDataEditor::setImageFile (const juce::File& file)
{
    juce::MemoryBlock bytes;
    const bool readable =
        file.getSize() <= static_cast<juce::int64> (largestEncodedImage) && file.loadFileAsData (bytes);
    const auto chosen = readable ? decodeImage ({ static_cast<const std::uint8_t*> (bytes.getData()), bytes.getSize() })
                                 : juce::Image();
    const bool used = chosen.isValid() && setImageOf (metadata, chosen);
    message = used ? juce::String() : file.getFileName() + " is no PNG or JPEG picture of at most 4096 pixels a side.";
    if (used)
        image = imageOf (metadata);
    showImage();
    return used;
}

void MVMetaDataEditor::showImage()
{
    noImageButton.setEnabled (metadata.getImage() != nullptr);
    repaint();
}

void MVMetaDataEditor::showGenres()
{
    juce::PopupMenu menu;
    for (int i = 0; i < genres.size(); ++i)
        menu.addItem (i + 1, genres[i]);
    menu.showMenuAsync (juce::PopupMenu::Options().withTargetComponent (genreButton),
                        [safe = SafePointer<MVMetaDataEditor> (this)] (int item)
                        {
                            if (safe != nullptr && item > 0)
                                safe->genre.editor.setText (safe->genres[item - 1]);
                        });
}

void MVMetaDataEditor::focusName() { name.editor.grabKeyboardFocus(); }

void MVMetaDataEditor::save()
{
    // The callback may delete this editor.
    if (const auto callback = onSave)
        callback (collect());
}

void MVMetaDataEditor::cancel()
{
    if (const auto callback = onCancel)
        callback();
}

bool MVMetaDataEditor::keyPressed (const juce::KeyPress& key)
{
    if (key == juce::KeyPress (juce::KeyPress::escapeKey))
        cancel();
    else if (key == juce::KeyPress (juce::KeyPress::returnKey)
             || key == juce::KeyPress (juce::KeyPress::returnKey, juce::ModifierKeys::commandModifier, 0))
        save();
    else
        return false;
    return true;
}

// ---- Layout and painting

juce::Rectangle<int> MVMetaDataEditor::imageArea() const
{
    return getLocalBounds()
        .reduced (metrics::margin)
        .withTrimmedTop (titleHeight + labelHeight)
        .removeFromLeft (imageSide)
        .removeFromTop (imageSide);
}

void MVMetaDataEditor::layField (Field& field, juce::Rectangle<int> area)
{
    field.editor.setBounds (area.withTrimmedTop (labelHeight));
}

void MVMetaDataEditor::resized()
{
    auto area = getLocalBounds().reduced (metrics::margin);
    area.removeFromTop (titleHeight);
    auto foot = area.removeFromBottom (metrics::controlHeight);
    saveButton.setBounds (foot.removeFromRight (86));
    foot.removeFromRight (metrics::gap);
    cancelButton.setBounds (foot.removeFromRight (86));
    area.removeFromBottom (metrics::margin);

    auto left = area.removeFromLeft (imageSide);
    left.removeFromTop (labelHeight + imageSide + metrics::gap);
    imageButton.setBounds (left.removeFromTop (metrics::controlHeight));
    left.removeFromTop (metrics::gap);
    noImageButton.setBounds (left.removeFromTop (metrics::controlHeight));

    area.removeFromLeft (metrics::margin + 4);
    const auto nextRow = [&]
    {
        const auto row = area.removeFromTop (fieldHeight);
        area.removeFromTop (metrics::gap);
        return row;
    };
    layField (name, nextRow());
    auto row = nextRow();
    const int half = (row.getWidth() - metrics::margin) / 2;
    layField (author, row.removeFromLeft (half));
    row.removeFromLeft (metrics::margin);
    genreButton.setBounds (row.removeFromRight (metrics::controlHeight).removeFromBottom (metrics::controlHeight));
    layField (genre, row);
    row = nextRow();
    layField (geography, row.removeFromLeft (half));
    row.removeFromLeft (metrics::margin);
    layField (tags, row);
    layField (description, area);
}

void MVMetaDataEditor::paintLabel (juce::Graphics& graphics, const Field& field) const
{
    const auto bounds = field.editor.getBounds();
    graphics.drawText (field.label, bounds.withY (bounds.getY() - labelHeight).withHeight (labelHeight),
                       juce::Justification::centredLeft);
}

void MVMetaDataEditor::paint (juce::Graphics& graphics)
{
    graphics.fillAll (themeColour (MVThemeColour::panel));
    auto area = getLocalBounds().reduced (metrics::margin);
    graphics.setColour (themeColour (MVThemeColour::text));
    graphics.setFont (themeFont (fontHeights::large, MVFontWeight::semiBold));
    graphics.drawText (title, area.removeFromTop (titleHeight), juce::Justification::topLeft);

    graphics.setColour (themeColour (MVThemeColour::textDim));
    graphics.setFont (themeFont (fontHeights::small));
    for (const auto* field : { &name, &author, &genre, &geography, &tags, &description })
        paintLabel (graphics, *field);

    const auto frame = imageArea();
    graphics.drawText ("Picture", frame.withY (frame.getY() - labelHeight).withHeight (labelHeight),
                       juce::Justification::centredLeft);
    graphics.setColour (themeColour (MVThemeColour::field));
    graphics.fillRoundedRectangle (frame.toFloat(), metrics::corner);
    graphics.setColour (themeColour (MVThemeColour::panelOutline));
    graphics.drawRoundedRectangle (frame.toFloat().reduced (0.5F), metrics::corner, metrics::hairline);
    if (image.isValid())
        graphics.drawImage (image, frame.reduced (3).toFloat(), juce::RectanglePlacement::centred);
    else
    {
        drawIcon (graphics, MVIcon::image, frame.withSizeKeepingCentre (36, 36).toFloat(),
                  themeColour (MVThemeColour::textFaint));
        graphics.setColour (themeColour (MVThemeColour::textFaint));
        graphics.setFont (themeFont (fontHeights::tiny));
        graphics.drawText ("drop a PNG or JPEG", frame.withTrimmedTop (imageSide - 28), juce::Justification::centred);
    }

    graphics.setColour (themeColour (MVThemeColour::warn));
    graphics.setFont (themeFont (fontHeights::small));
    graphics.drawFittedText (message, area.removeFromBottom (metrics::controlHeight).withTrimmedRight (190),
                             juce::Justification::centredLeft, 2, 0.9F);
}

} // namespace morvanelab
