// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/ThemePicture.h"
#include "ui/MVIcons.h"
#include "ui/MVResources.h"

#include <limits>
#include <set>
#include <string>

namespace morvanelab
{

using enum MVThemeColour;

using Theme = ThemeTest;

TEST_F (Theme, givesEveryColourARowANumberAndANameOfItsOwn)
{
    std::set<int> numbers;
    std::set<std::string> names;
    for (std::size_t i = 0; i < themeColourCount; ++i)
    {
        const auto& entry = themeEntries()[i];
        EXPECT_EQ (static_cast<std::size_t> (entry.colour), i) << entry.name;
        EXPECT_GT (entry.colorId, 0) << entry.name;
        EXPECT_TRUE (numbers.insert (entry.colorId).second) << entry.colorId;
        EXPECT_TRUE (names.insert (entry.name).second) << entry.name;
        EXPECT_NE (entry.argb, 0U) << entry.name;
    }
    // Stored colours of old sessions name these.
    EXPECT_EQ (themeEntries()[static_cast<std::size_t> (windowBackground)].colorId, 101);
    EXPECT_EQ (themeEntries()[static_cast<std::size_t> (accent)].colorId, 401);
    EXPECT_EQ (themeEntries()[static_cast<std::size_t> (keyboardOff)].argb, 0xFF969696U);
}

TEST_F (Theme, knowsTheContrastOfKnownPairs)
{
    const juce::Colour black (0xFF000000);
    const juce::Colour white (0xFFFFFFFF);
    EXPECT_NEAR (contrastRatio (black, white), 21.0, 1e-9);
    EXPECT_NEAR (contrastRatio (white, white), 1.0, 1e-9);
    EXPECT_NEAR (contrastRatio (juce::Colour (0xFF777777), white), 4.48, 0.01);
    EXPECT_NEAR (contrastRatio (juce::Colour (0xFF0000FF), white), 8.59, 0.01);
}

TEST_F (Theme, isReadable)
{
    struct Pair
    {
        MVThemeColour ink;
        std::vector<MVThemeColour> grounds;
    };
    const std::vector<Pair> texts {
        { text,
          { windowBackground, titleBar, panel, panelHeader, field, fieldAlternate, popup, control, controlHover,
            controlDown, selection, accentDim } },
        { textDim,
          { windowBackground, titleBar, panel, panelHeader, field, fieldAlternate, popup, control, blackKey } },
        { textFaint, { windowBackground, titleBar, panel, panelHeader, field, fieldAlternate, popup } },
        { textOnAccent, { accent, accentHover, mapped, learn, keySounding } },
        { textOnDanger, { danger } },
        { accent, { panel, control, accentDim, field } },
        { learn, { panel, control } },
        { mapped, { panel, field } },
        { danger, { panel, control } },
        { displayAxis, { displayBackground } },
        { keyLabel, { whiteKey } },
        { textOnKeyboardOff, { keyboardOff } },
    };
    for (const auto& [ink, grounds] : texts)
        for (const auto ground : grounds)
            EXPECT_GE (contrastRatio (themeColour (ink), themeColour (ground)), 4.5)
                << themeEntries()[static_cast<std::size_t> (ink)].name << " on "
                << themeEntries()[static_cast<std::size_t> (ground)].name;

    const std::vector<Pair> graphics {
        { focus, { panel, control, field } },
        { trace, { displayBackground } },
        { traceSecond, { displayBackground } },
        { good, { meterTrack } },
        { warn, { meterTrack } },
        { danger, { meterTrack } },
        { keySounding, { blackKey } },
        { whiteKey, { blackKey } },
    };
    for (const auto& [ink, grounds] : graphics)
        for (const auto ground : grounds)
            EXPECT_GE (contrastRatio (themeColour (ink), themeColour (ground)), 3.0)
                << themeEntries()[static_cast<std::size_t> (ink)].name << " on "
                << themeEntries()[static_cast<std::size_t> (ground)].name;
}

TEST_F (Theme, takesAColourAndGivesTheDefaultBack)
{
    const auto before = themeRevision();
    setThemeColour (accent, juce::Colour (0xFF112233));
    EXPECT_EQ (themeColour (accent).getARGB(), 0xFF112233U);
    EXPECT_NE (themeRevision(), before);
    setThemeColour (traceFill, juce::Colour (0x00000000));
    EXPECT_EQ (themeColour (traceFill).getAlpha(), 0);
    resetThemeColours();
    EXPECT_EQ (themeColour (accent).getARGB(), themeEntries()[static_cast<std::size_t> (accent)].argb);
    EXPECT_EQ (themeColour (traceFill).getARGB(), themeEntries()[static_cast<std::size_t> (traceFill)].argb);
}

TEST_F (Theme, getsBrighterAlongTheHeatStrip)
{
    EXPECT_EQ (themeHeat (0.0F), themeColour (heatLow));
    EXPECT_EQ (themeHeat (0.5F), themeColour (heatHalf));
    EXPECT_EQ (themeHeat (1.0F), themeColour (heatHigh));
    EXPECT_EQ (themeHeat (-3.0F), themeColour (heatLow));
    EXPECT_EQ (themeHeat (7.0F), themeColour (heatHigh));
    EXPECT_EQ (themeHeat (std::numeric_limits<float>::quiet_NaN()), themeColour (heatLow));
    double last = 0.0;
    for (int i = 0; i <= 100; ++i)
    {
        const double contrast = contrastRatio (themeHeat (static_cast<float> (i) / 100.0F), juce::Colour (0xFF000000));
        EXPECT_GE (contrast, last - 1e-9) << i;
        last = contrast;
    }
}

TEST_F (Theme, drawsWithTheEmbeddedFont)
{
    const auto regular = themeFont (20.0F);
    const auto semiBold = themeFont (20.0F, MVFontWeight::semiBold);
    EXPECT_EQ (regular.getTypefacePtr()->getName(), juce::String ("Inter"));
    EXPECT_NEAR (regular.getHeight(), 20.0F, 1e-4F);
    EXPECT_GT (regular.getStringWidthFloat ("Sordelin"), 40.0F);
    EXPECT_GT (semiBold.getStringWidthFloat ("Sordelin"), regular.getStringWidthFloat ("Sordelin"));
    // What the toolkit draws in its default font is drawn in ours as well.
    EXPECT_EQ (juce::Font (14.0F).getTypefacePtr(), themeTypeface (MVFontWeight::regular));
    EXPECT_EQ (juce::Font (14.0F, juce::Font::bold).getTypefacePtr(), themeTypeface (MVFontWeight::semiBold));
}

TEST_F (Theme, hasADrawingOfItsOwnForEveryIcon)
{
    std::set<std::string> outlines;
    for (int i = 0; i < static_cast<int> (MVIcon::count); ++i)
    {
        const auto icon = static_cast<MVIcon> (i);
        const auto box = iconBox (icon);
        EXPECT_FLOAT_EQ (box.getHeight(), 24.0F) << i;
        EXPECT_FALSE (iconPath (icon).isEmpty()) << i;
        // Round ends may reach over the box by half a stroke, no more.
        EXPECT_TRUE (box.expanded (0.5F).contains (iconPath (icon).getBounds()))
            << i << " " << iconPath (icon).getBounds().toString();
        EXPECT_TRUE (outlines.insert (iconPath (icon).toString().toStdString()).second) << i;
    }
    EXPECT_TRUE (resourceData ("icons/nothing.svg").empty());
}

TEST_F (Theme, drawsIconsCentredAndSharpAtBothZooms)
{
    for (const int zoom : { 1, 2 })
    {
        juce::Image image (juce::Image::RGB, 40 * zoom, 24 * zoom, true);
        {
            juce::Graphics graphics (image);
            graphics.addTransform (juce::AffineTransform::scale (static_cast<float> (zoom)));
            // A plus of strokes of two units in a box of its own size: each covers whole pixels at either zoom.
            drawIcon (graphics, MVIcon::add, { 0.0F, 0.0F, 40.0F, 24.0F }, juce::Colour (0xFFFFFFFF));
        }
        const auto white = juce::Colour (0xFFFFFFFF);
        const auto black = juce::Colour (0xFF000000);
        const int middle = 12 * zoom;
        for (int x = 16 * zoom; x < 24 * zoom; ++x)
        {
            EXPECT_LE (distance (image.getPixelAt (x, middle), white), 2) << x;
            EXPECT_LE (distance (image.getPixelAt (x, middle - zoom), white), 2) << x;
        }
        EXPECT_LE (distance (image.getPixelAt (14 * zoom, middle - zoom - 1), black), 2);
        EXPECT_LE (distance (image.getPixelAt (14 * zoom, middle + zoom), black), 2);
    }
}

} // namespace morvanelab
