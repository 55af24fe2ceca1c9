// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

/** Shows what a patch says about itself: its picture, scaled down where it is too large but never up, or where it has
    none its name, author and description. Message thread. */
class MVMetaDataImageView : public juce::Component
{
public:
    MVMetaDataImageView();

    /** The picture, an invalid one for none. */
    void setImage (const juce::Image& newImage);
    /** What to show without a picture. Empty texts are left out; without a name the patch is "-----". */
    void setTexts (const juce::String& name, const juce::String& author, const juce::String& description,
                   const juce::String& genre = {});

    /** Where the picture lies; empty without one. */
    juce::Rectangle<int> imageBounds() const;

    void paint (juce::Graphics& graphics) override;

private:
    void paintTexts (juce::Graphics& graphics) const;

    juce::Image image;
    juce::String patchName;
    juce::String patchAuthor;
    juce::String patchDescription;
    juce::String patchGenre;
};

} // namespace morvanelab
