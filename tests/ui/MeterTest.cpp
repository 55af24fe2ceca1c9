// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/ThemePicture.h"
#include "ui/MVLevelMeter.h"
#include "ui/MVSignalMeterComponent.h"

#include <cmath>
#include <limits>

namespace morvanelab
{

using enum MVThemeColour;

namespace
{

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

/** Counts the repaints a component asks for. */
struct RepaintCounter : juce::CachedComponentImage
{
    explicit RepaintCounter (int& counter) : count (counter) {}
    void paint (juce::Graphics&) override {}
    bool invalidateAll() override { return invalidate ({}); }
    bool invalidate (const juce::Rectangle<int>&) override
    {
        ++count;
        return true;
    }
    void releaseResources() override {}

    int& count;
};

juce::MouseEvent clickOn (juce::Component& component)
{
    return { juce::Desktop::getInstance().getMainMouseSource(),
             {},
             juce::ModifierKeys::leftButtonModifier,
             0.0F,
             0.0F,
             0.0F,
             0.0F,
             0.0F,
             &component,
             &component,
             {},
             {},
             {},
             1,
             false };
}

} // namespace

using Meter = ThemeTest;

TEST_F (Meter, readsDecibelsOnItsScale)
{
    const MVLevelMeter meter (10);
    // From -60 dB to +6 dB.
    EXPECT_NEAR (meter.proportionOf (1.0F), 60.0F / 66.0F, 1e-4F);
    EXPECT_NEAR (meter.proportionOf (0.1F), 40.0F / 66.0F, 1e-4F);
    EXPECT_NEAR (meter.proportionOf (1.9952623F), 1.0F, 1e-4F);
    EXPECT_EQ (meter.proportionOf (0.0F), 0.0F);
    EXPECT_EQ (meter.proportionOf (0.00001F), 0.0F);
    EXPECT_EQ (meter.proportionOf (-1.0F), 0.0F);
    EXPECT_EQ (meter.proportionOf (100.0F), 1.0F);
    EXPECT_EQ (meter.proportionOf (notANumber), 0.0F);
    EXPECT_EQ (meter.proportionOf (infinity), 0.0F);
}

TEST_F (Meter, drawsItsBarAsLongAsTheLevel)
{
    for (const auto orientation : { MVLevelMeter::Orientation::horizontal, MVLevelMeter::Orientation::vertical })
        for (const int zoom : { 1, 2 })
            for (const float level : { 0.0F, 0.01F, 0.1F, 0.3F })
            {
                const bool horizontal = orientation == MVLevelMeter::Orientation::horizontal;
                MVLevelMeter meter (10);
                meter.setOrientation (orientation);
                meter.setSize (horizontal ? 200 : 14, horizontal ? 14 : 200);
                meter.setLevel (level);
                const auto image = pictureOf (meter, static_cast<float> (zoom));
                const auto bar = (meter.barArea() * static_cast<float> (zoom)).toNearestInt();
                const auto middle = horizontal ? bar.withSizeKeepingCentre (bar.getWidth(), 1)
                                               : bar.withSizeKeepingCentre (1, bar.getHeight());
                const int lit = std::max (middle.getWidth(), middle.getHeight())
                                - countColour (image, middle, themeColour (meterTrack), 4);
                const float expected =
                    meter.proportionOf (level) * static_cast<float> (std::max (bar.getWidth(), bar.getHeight()));
                EXPECT_NEAR (static_cast<float> (lit), expected, 2.0F) << level << " at " << zoom;
            }
}

TEST_F (Meter, goesFromSafeOverWarningToOverload)
{
    MVLevelMeter meter (10);
    meter.setSize (200, 14);
    const auto zones = [&] (float level)
    {
        meter.setLevel (level);
        const auto image = pictureOf (meter);
        const auto bar = meter.barArea().toNearestInt();
        return std::array { countColour (image, bar, themeColour (good)) > 0,
                            countColour (image, bar, themeColour (warn)) > 0,
                            countColour (image, bar, themeColour (danger)) > 10 };
    };
    EXPECT_EQ (zones (0.3F), (std::array { true, false, false }));
    EXPECT_EQ (zones (0.95F), (std::array { true, true, false }));
    EXPECT_FALSE (meter.overloaded());
    EXPECT_EQ (zones (1.5F), (std::array { true, true, true }));
    EXPECT_TRUE (meter.overloaded());
}

TEST_F (Meter, remembersAnOverloadUntilItIsClicked)
{
    MVLevelMeter meter (10);
    meter.setSize (200, 14);
    meter.setLevel (1.2F);
    meter.setLevel (0.1F);
    EXPECT_TRUE (meter.overloaded());
    meter.mouseDown (clickOn (meter));
    EXPECT_FALSE (meter.overloaded());
    EXPECT_FLOAT_EQ (meter.peak(), 0.1F);
}

TEST_F (Meter, holdsAPeakForASecond)
{
    MVLevelMeter meter (10);
    meter.setSize (200, 14);
    meter.setLevel (0.8F);
    meter.setLevel (0.2F);
    EXPECT_FLOAT_EQ (meter.peak(), 0.8F);
    EXPECT_FLOAT_EQ (meter.level(), 0.2F);
    juce::Thread::sleep (1050);
    meter.setLevel (0.2F);
    EXPECT_FLOAT_EQ (meter.peak(), 0.2F);
}

TEST_F (Meter, takesOnlyLevelsThatAreNumbers)
{
    MVLevelMeter meter (10);
    meter.setSize (200, 14);
    for (const float level : { notANumber, infinity, -infinity, -0.5F })
    {
        meter.setLevel (0.5F);
        meter.setLevel (level);
        EXPECT_EQ (meter.level(), 0.0F);
        EXPECT_FALSE (meter.overloaded());
        EXPECT_FALSE (std::isnan (meter.peak()));
    }
}

TEST_F (Meter, repaintsOnlyWhatHasMoved)
{
    int repaints = 0;
    MVLevelMeter meter (10);
    meter.setSize (200, 14);
    meter.setVisible (true);
    meter.setLevel (0.25F);
    meter.setCachedComponentImage (new RepaintCounter (repaints));
    repaints = 0;
    for (int i = 0; i < 10; ++i)
        meter.setLevel (0.25F + static_cast<float> (i) * 1e-6F);
    EXPECT_EQ (repaints, 0);
    meter.setLevel (0.5F);
    EXPECT_EQ (repaints, 1);
}

TEST_F (Meter, showsACountOnALinearScale)
{
    MVLevelMeter meter (250);
    meter.setScale (MVLevelMeter::Scale::linear);
    meter.setDisplayRange (0.0F, 16.0F);
    meter.setSize (160, 8);
    meter.setLevel (4.0F);
    const auto image = pictureOf (meter);
    EXPECT_NEAR (countColour (image, { 0, 4, 160, 1 }, themeColour (accent)), 40, 1);
    EXPECT_FALSE (meter.overloaded());
    meter.setDisplayRange (3.0F, 3.0F);
    EXPECT_EQ (meter.proportionOf (3.0F), 0.0F);
}

TEST_F (Meter, isDarkWhileDisabled)
{
    MVLevelMeter meter (10);
    meter.setSize (200, 14);
    meter.setLevel (1.5F);
    meter.setEnabled (false);
    const auto image = pictureOf (meter);
    EXPECT_EQ (countColour (image, themeColour (good)) + countColour (image, themeColour (warn))
                   + countColour (image, themeColour (danger)),
               0);
}

// --------------------------------------------------------------------------------------------- picture meters

namespace
{

/** Red above, blue below. */
juce::Image twoColours()
{
    juce::Image image (juce::Image::RGB, 4, 100, true);
    image.clear (image.getBounds(), juce::Colours::red);
    image.clear ({ 0, 50, 4, 50 }, juce::Colours::blue);
    return image;
}

} // namespace

TEST_F (Meter, showsThePicturesFootUpToTheLevel)
{
    struct Case
    {
        float level;
        int red;
        int blue;
    };
    for (const auto& [level, red, blue] :
         { Case { 0.0F, 0, 0 }, Case { 0.25F, 0, 50 }, Case { 0.5F, 0, 100 }, Case { 0.75F, 50, 100 },
           Case { 1.0F, 100, 100 }, Case { 7.0F, 100, 100 }, Case { -2.0F, 0, 0 }, Case { notANumber, 0, 0 } })
    {
        MVSignalMeterComponent meter;
        meter.setSize (10, 200);
        meter.setMeterImage (twoColours());
        meter.setLevel (0, level);
        meter.setLevel (1, 1.0F); // of the second mode only
        const auto image = pictureOf (meter);
        const juce::Rectangle<int> column (5, 0, 1, 200);
        EXPECT_NEAR (countColour (image, column, juce::Colours::red, 60), red, 2) << level;
        EXPECT_NEAR (countColour (image, column, juce::Colours::blue, 60), blue, 2) << level;
        EXPECT_NEAR (countColour (image, column, themeColour (meterTrack)), 200 - red - blue, 2) << level;
    }
}

TEST_F (Meter, showsTwoLevelsSideBySide)
{
    MVSignalMeterComponent meter (MVSignalMeterComponent::twoLevels);
    meter.setSize (21, 100);
    meter.setLevel (0, 0.2F);
    meter.setLevel (1, 0.9F);
    const auto image = pictureOf (meter);
    EXPECT_NEAR (countColour (image, { 4, 0, 1, 100 }, themeColour (meterTrack)), 80, 1);
    EXPECT_NEAR (countColour (image, { 16, 0, 1, 100 }, themeColour (meterTrack)), 10, 1);
    EXPECT_NEAR (countColour (image, { 10, 0, 1, 100 }, themeColour (meterTrack)), 100, 0); // the gap
}

TEST_F (Meter, keepsToItsTwoLevels)
{
    int repaints = 0;
    MVSignalMeterComponent meter;
    meter.setSize (10, 100);
    meter.setVisible (true);
    meter.setCachedComponentImage (new RepaintCounter (repaints));
    repaints = 0;
    meter.setLevel (-1, 1.0F);
    meter.setLevel (2, 1.0F);
    EXPECT_EQ (repaints, 0);
    EXPECT_EQ (meter.level (2), 0.0F);
    meter.setLevel (0, 0.5F);
    meter.setLevel (0, 0.5F);
    EXPECT_EQ (repaints, 1);
}

} // namespace morvanelab
