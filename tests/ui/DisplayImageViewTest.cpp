// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/DisplayRig.h"
#include "ui/MVMetaDataImageView.h"

namespace morvanelab
{

using DisplayImageView = DisplayTest;

TEST_F (DisplayImageView, scalesDownNeverUpAndKeepsTheShape)
{
    MVMetaDataImageView view;
    view.setSize (600, 250);
    EXPECT_TRUE (view.imageBounds().isEmpty());
    struct Case
    {
        int width;
        int height;
        int shownWidth;
        int shownHeight;
    };
    constexpr int room = 250 - 2 * metrics::gap;
    constexpr int across = 600 - 2 * metrics::gap;
    for (const auto& each : { Case { 100, 50, 100, 50 },
                              { 1000, 1000, room, room },
                              { 6000, 60, across, across / 100 },
                              { 60, 2380, 6, room },
                              { 3, 100000, 1, room } })
    {
        view.setImage (juce::Image (juce::Image::RGB, each.width, each.height, true, juce::SoftwareImageType()));
        const auto bounds = view.imageBounds();
        EXPECT_EQ (bounds.getWidth(), each.shownWidth) << each.width;
        EXPECT_NEAR (bounds.getHeight(), each.shownHeight, 1) << each.width;
        EXPECT_NEAR (bounds.getCentreX(), 300, 1) << each.width;
        EXPECT_NEAR (bounds.getCentreY(), 125, 1) << each.width;
    }
}

TEST_F (DisplayImageView, showsThePictureOrTheTexts)
{
    MVMetaDataImageView view;
    view.setSize (600, 250);
    const auto nameColour = themeColour (MVThemeColour::text);
    const auto genreColour = themeColour (MVThemeColour::accent);
    const auto none = pictureOf (view);
    EXPECT_EQ (countColour (none, nameColour), 0);
    EXPECT_GT (countColour (none, themeColour (MVThemeColour::textFaint), 30), 5); // the dashes

    view.setTexts ("Glass", "Somebody", juce::String::repeatedString ("long words ", 400), "Pad");
    const auto texts = pictureOf (view);
    EXPECT_GT (countColour (texts, nameColour, 30), 20);
    EXPECT_GT (countColour (texts, genreColour, 30), 5);
    // A text too long for the view is cut off at its margin.
    EXPECT_EQ (countColour (texts, { 0, 235, 600, 15 }, themeColour (MVThemeColour::displayBackground), 0), 600 * 15);

    juce::Image red (juce::Image::RGB, 20, 10, true, juce::SoftwareImageType());
    red.clear (red.getBounds(), juce::Colours::red);
    view.setImage (red);
    const auto picture = pictureOf (view);
    EXPECT_EQ (countColour (picture, juce::Colours::red, 0), 200);
    EXPECT_EQ (countColour (picture, nameColour), 0);
}

} // namespace morvanelab
