// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/DisplayRig.h"
#include "ui/MVOpenGlProbe.h"
#include "ui/MVOpenGlRidges.h"
#include "ui/MVSpectrogram3d.h"

#include <limits>

namespace morvanelab
{

namespace
{

constexpr int width = 600;
constexpr int height = 250;
constexpr double aspect = 2.4;

/** Views from the limits of where the eye may be, and the one it starts with. */
std::vector<MVOrbitView> views()
{
    std::vector<MVOrbitView> result (1);
    for (const double yaw : { -10.0, 0.3, 10.0 })
        for (const double pitch : { -10.0, 10.0 })
            for (const double zoom : { 0.001, 1.0, 1000.0 })
            {
                MVOrbitView view;
                view.turn (yaw, pitch);
                view.zoom (zoom);
                result.push_back (view);
            }
    return result;
}

MVSpectrumHistory::Ridge flatRidge (float level, bool filled = true)
{
    MVSpectrumHistory::Ridge ridge;
    ridge.heights.fill (level);
    ridge.filled = filled;
    return ridge;
}

juce::Image drawRidges (const MVSpectrumHistory& history, const MVOrbitView& view = {})
{
    juce::Image image (juce::Image::RGB, width, height, true, juce::SoftwareImageType());
    MVRidgeColours colours;
    colours.update();
    MVRidgePicture picture;
    picture.draw (image, history, view, colours, 1.3F);
    return image;
}

juce::Point<int> pixelOf (const MVOrbitView& view, double x, double y, double z)
{
    const auto point = MVOrbitView::project (view.matrix (aspect), x, y, z);
    return { juce::roundToInt ((point.x * 0.5 + 0.5) * width), juce::roundToInt ((0.5 - point.y * 0.5) * height) };
}

/** Mean difference of a channel over a picture. */
double difference (const juce::Image& a, const juce::Image& b)
{
    double sum = 0.0;
    for (int y = 0; y < a.getHeight(); ++y)
        for (int x = 0; x < a.getWidth(); ++x)
            sum += distance (a.getPixelAt (x, y), b.getPixelAt (x, y));
    return sum / (a.getWidth() * a.getHeight());
}

juce::MouseEvent mouseAt (juce::Component& component, juce::Point<float> position, juce::Point<float> pressed)
{
    return { juce::Desktop::getInstance().getMainMouseSource(),
             position,
             juce::ModifierKeys::leftButtonModifier,
             0.0F,
             0.0F,
             0.0F,
             0.0F,
             0.0F,
             &component,
             &component,
             juce::Time(),
             pressed,
             juce::Time(),
             1,
             true };
}

} // namespace

using Display3d = DisplayTest;
using Display3dOnScreen = DisplayTest;

TEST_F (Display3d, newerRidgesAreNearerFromEverywhere)
{
    for (const auto& view : views())
        for (const double width3d : { 0.5, 1.0, aspect, 9.0 })
        {
            const auto matrix = view.matrix (width3d);
            for (const double x : { -1.0, 0.0, 1.0 })
                for (const double y : { 0.0, 1.0 })
                {
                    double last = 0.1; // nothing comes as near as the eye
                    for (int age = 0; age < MVSpectrumHistory::numRidges; ++age)
                    {
                        const double away =
                            MVOrbitView::project (matrix, x, y, MVSpectrumHistory::depthOf (age)).distance;
                        ASSERT_GT (away, last);
                        last = away;
                    }
                }
        }
}

TEST_F (Display3d, projectsAsAnEyeSees)
{
    const auto at = [] (const MVOrbitView& view, double x, double y, double z)
    { return MVOrbitView::project (view.matrix (aspect), x, y, z); };
    const MVOrbitView start;
    EXPECT_LT (at (start, -1.0, 0.0, 0.0).x, at (start, 1.0, 0.0, 0.0).x);
    EXPECT_LT (at (start, 0.0, 0.0, 0.0).y, at (start, 0.0, 1.0, 0.0).y);
    EXPECT_LT (at (start, 0.0, 0.0, 0.0).y, at (start, 0.0, 0.0, 1.0).y);

    MVOrbitView ahead;
    ahead.turn (-start.getYaw(), 0.0);
    EXPECT_NEAR (at (ahead, -1.0, 0.3, 0.4).x, -at (ahead, 1.0, 0.3, 0.4).x, 1.0e-6);
    // Perspective: what is seen of a length falls with its distance.
    const auto length = [&] (double z) { return at (ahead, 1.0, 0.0, z).x - at (ahead, -1.0, 0.0, z).x; };
    EXPECT_NEAR (length (0.0) * at (ahead, 0.0, 0.0, 0.0).distance, length (1.0) * at (ahead, 0.0, 0.0, 1.0).distance,
                 1.0e-5);
    // The whole scene is in the picture at first.
    for (const double wide : { 1.2, 1.6, aspect, 3.5 })
        for (const double x : { -1.0, 1.0 })
            for (const double y : { 0.0, 1.0 })
                for (const double z : { 0.0, 1.0 })
                {
                    const auto corner = MVOrbitView::project (start.matrix (wide), x, y, z);
                    EXPECT_LT (std::abs (corner.x), 1.0) << wide;
                    EXPECT_LT (std::abs (corner.y), 1.0) << wide;
                }

    MVOrbitView turned;
    turned.turn (0.3, 0.0);
    EXPECT_NE (at (turned, 1.0, 0.0, 0.0).x, at (start, 1.0, 0.0, 0.0).x);
    turned.turn (std::numeric_limits<double>::quiet_NaN(), 0.0);
    turned.zoom (-1.0);
    EXPECT_NEAR (turned.getYaw(), start.getYaw() + 0.3, 1.0e-12);
    turned.reset();
    EXPECT_EQ (turned, start);
}

TEST_F (Display3d, historyKeepsTheNewestRidges)
{
    MVSpectrumHistory history;
    ASSERT_GE (MVSpectrumHistory::numRidges, 64);
    for (int i = 0; i < 250; ++i)
        history.add (flatRidge (static_cast<float> (i) / 250.0F));
    for (const int age : { 0, 1, 50, MVSpectrumHistory::numRidges - 1 })
        EXPECT_FLOAT_EQ (history.ridge (age).heights[3], static_cast<float> (249 - age) / 250.0F) << age;
    history.add (flatRidge (std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ (history.ridge (0).heights[0], 0.0F);
    history.add (flatRidge (7.0F));
    EXPECT_EQ (history.ridge (0).heights[0], 1.0F);
}

TEST_F (Display3d, aSineMakesAPeakAtItsFrequency)
{
    MVSpectrogram3d display;
    display.setSize (width, height);
    display.setMode (MVSpectrogram3d::filledMode);
    deliver (display, sine (512, 32.0, 0.1)); // bin 32 of 256: six of the nine octaves from half a bin on
    EXPECT_NEAR (display.bins()[32], 237.5 - 225.0, 0.01);
    EXPECT_NEAR (display.bins()[100], 237.5, 0.01);
    const auto& ridge = display.history().ridge (0);
    const auto peak = std::max_element (ridge.heights.begin(), ridge.heights.end()) - ridge.heights.begin();
    EXPECT_NEAR (static_cast<double> (peak), 159.0 * 6.0 / 9.0, 1.0);
    EXPECT_GT (ridge.heights[static_cast<std::size_t> (peak)], 0.95F);
    EXPECT_TRUE (ridge.filled);

    pictureOf (display);
    display.setMode (MVSpectrogram3d::linesMode);
    deliver (display, Samples (512, 0.0));
    EXPECT_FALSE (display.history().ridge (0).filled);
    EXPECT_TRUE (display.history().ridge (1).filled);
    EXPECT_EQ (display.history().ridge (0).heights[10], 0.0F);
    pictureOf (display);
    deliver (display, sine (511, 32.0));
    EXPECT_NEAR (display.bins()[32], 237.5, 1.0e-4);
}

TEST_F (Display3d, pictureStandsWhereTheProjectionSays)
{
    MVSpectrumHistory history;
    auto ridge = flatRidge (0.0F, false);
    for (int i = 78; i <= 82; ++i)
        ridge.heights[static_cast<std::size_t> (i)] = 0.8F;
    history.add (ridge);
    for (const auto& turn : { std::pair (0.0, 0.0), { -0.6, 0.2 }, { 0.5, -0.2 } })
    {
        MVOrbitView view;
        view.turn (turn.first, turn.second);
        const auto picture = drawRidges (history, view);
        const auto top = pixelOf (view, MVSpectrumHistory::xOf (80), 0.8, 0.0);
        const auto brightest = [&] (juce::Point<int> place)
        {
            float most = 0.0F;
            for (int y = -2; y <= 2; ++y)
                for (int x = -2; x <= 2; ++x)
                    most = std::max (most, picture.getPixelAt (place.x + x, place.y + y).getBrightness());
            return most;
        };
        EXPECT_GT (brightest (top), 0.8F);
        EXPECT_LT (brightest (top.translated (0, -16)), 0.4F);
    }
}

TEST_F (Display3d, nearerRidgesHideWhatIsBehind)
{
    MVSpectrumHistory empty;
    MVSpectrumHistory full;
    for (int i = 0; i < 30; ++i)
    {
        empty.add (flatRidge (0.0F));
        full.add (flatRidge (i % 2 == 0 ? 0.3F : 0.1F));
    }
    ASSERT_GT (difference (drawRidges (empty), drawRidges (full)), 1.0);
    for (auto* history : { &empty, &full })
        for (int i = 0; i < 2; ++i)
            history->add (flatRidge (1.0F));
    const auto withWall = drawRidges (full);
    const auto alone = drawRidges (empty);
    // Below the wall's edge both are the same picture.
    const auto left = pixelOf ({}, -1.0, 1.0, 0.0);
    const auto right = pixelOf ({}, 1.0, 1.0, 0.0);
    const int top = std::max (left.y, right.y) + 3;
    for (int y = top; y < height; ++y)
        for (int x = left.x + 3; x < right.x - 3; ++x)
            ASSERT_EQ (withWall.getPixelAt (x, y), alone.getPixelAt (x, y)) << x << " " << y;
}

TEST_F (Display3d, theMouseTurnsZoomsAndResets)
{
    MVSpectrogram3d display;
    display.setSize (width, height);
    deliver (display, sine (512, 32.0));
    const auto before = pictureOf (display);
    display.mouseDown (mouseAt (display, { 100, 100 }, { 100, 100 }));
    display.mouseDrag (mouseAt (display, { 160, 130 }, { 100, 100 }));
    EXPECT_LT (display.view().getYaw(), MVOrbitView().getYaw());
    EXPECT_GT (display.view().getPitch(), MVOrbitView().getPitch());
    EXPECT_GT (difference (before, pictureOf (display)), 0.5);
    juce::MouseWheelDetails wheel {};
    wheel.deltaY = 1.0F;
    display.mouseWheelMove (mouseAt (display, { 100, 100 }, { 100, 100 }), wheel);
    EXPECT_LT (display.view().getDistance(), MVOrbitView().getDistance());
    display.mouseDoubleClick (mouseAt (display, { 100, 100 }, { 100, 100 }));
    EXPECT_EQ (display.view(), MVOrbitView());
    EXPECT_EQ (difference (before, pictureOf (display)), 0.0);
}

/** The display in a window, playing a steady sound. */
struct PlayingDisplay
{
    struct Endless : RecordingSource
    {
        int pull (double* out) override
        {
            ++pulls;
            if (! on || paused || pulls % 5 == 0)
                return 0;
            std::copy (tone.begin(), tone.end(), out);
            return 256;
        }
        bool paused = false;
        Samples tone = sine (256, 16.0, 0.5) + sine (256, 40.0, 0.25);
    };

    PlayingDisplay()
    {
        display.setBounds (10, 10, width, height);
        display.setMode (MVSpectrogram3d::filledMode);
        display.setOpenGlUse (MVSpectrogram3d::OpenGlUse::always);
        window.page.addAndMakeVisible (display);
        display.setSource (&source);
    }

    Endless source;
    TestWindow window;
    MVSpectrogram3d display;
};

TEST_F (Display3dOnScreen, openGlDrawsThePictureThatIsDrawnWithout)
{
    if (! hasScreen())
        GTEST_SKIP() << "no display";
    if (openGlKind() == OpenGlKind::none)
        GTEST_SKIP() << "no OpenGL on this display";
    PlayingDisplay playing;
    auto& display = playing.display;
    ASSERT_TRUE (pump (5000, [&] { return display.isUsingOpenGl() || display.hasOpenGlFailed(); }));
    if (display.hasOpenGlFailed())
        GTEST_SKIP() << "OpenGL is too old here";
    ASSERT_TRUE (pump (20000, [&] { return display.history().numAdded() > MVSpectrumHistory::numRidges; }));
    display.setSource (nullptr);

    // The source's end gives the context back; the picture made without is that of the same ridges.
    EXPECT_FALSE (display.isUsingOpenGl());
    const auto expected = pictureOf (display);
    playing.source.paused = true;
    display.setSource (&playing.source);
    ASSERT_TRUE (pump (5000, [&] { return display.isUsingOpenGl() || display.hasOpenGlFailed(); }));
    if (display.hasOpenGlFailed())
        GTEST_SKIP() << "OpenGL is too slow here";
    display.openGl().keepNextPicture();
    juce::Image kept;
    ASSERT_TRUE (pump (10000,
                       [&]
                       {
                           kept = display.openGl().takeKeptPicture();
                           return kept.isValid() || display.hasOpenGlFailed();
                       }));
    if (! kept.isValid())
        GTEST_SKIP() << "OpenGL is too slow here";
    ASSERT_EQ (kept.getBounds(), expected.getBounds());
    EXPECT_LT (difference (kept, expected), 6.0);
}

TEST_F (Display3dOnScreen, makesThePictureItselfWithoutHardware)
{
    if (! hasScreen())
        GTEST_SKIP() << "no display";
    if (openGlKind() == OpenGlKind::hardware)
        GTEST_SKIP() << "hardware draws on this display";
    PlayingDisplay playing;
    playing.display.setOpenGlUse (MVSpectrogram3d::OpenGlUse::withHardware);
    ASSERT_TRUE (pump (5000, [&] { return playing.display.hasOpenGlFailed(); }));
    EXPECT_FALSE (playing.display.openGl().isVisible());
    const auto before = playing.display.history().numAdded();
    EXPECT_TRUE (pump (5000, [&] { return playing.display.history().numAdded() > before + 5; }));
}

TEST_F (Display3dOnScreen, givesTheContextBackForWhateverComesBeforeIt)
{
    if (! hasScreen())
        GTEST_SKIP() << "no display";
    if (openGlKind() == OpenGlKind::none)
        GTEST_SKIP() << "no OpenGL on this display";
    auto playing = std::make_unique<PlayingDisplay>();
    auto& display = playing->display;
    const auto drawing = [&] { return display.isUsingOpenGl(); };
    ASSERT_TRUE (pump (5000, [&] { return drawing() || display.hasOpenGlFailed(); }));
    if (display.hasOpenGlFailed())
        GTEST_SKIP() << "OpenGL is too old here";

    juce::Component box;
    box.setBounds (50, 50, 40, 40);
    playing->window.addAndMakeVisible (box);
    ASSERT_TRUE (pump (2000, [&] { return ! display.openGl().isAttached(); }));
    EXPECT_TRUE (display.isRunning()); // the rest is still seen
    box.setVisible (false);
    ASSERT_TRUE (pump (5000, drawing));

    display.setVisible (false);
    EXPECT_FALSE (display.openGl().isAttached());
    EXPECT_FALSE (playing->source.on);
    display.setVisible (true);
    ASSERT_TRUE (pump (5000, drawing));
    playing->window.removeFromDesktop();
    EXPECT_FALSE (display.openGl().isAttached());
    playing->window.addToDesktop (0);
    ASSERT_TRUE (pump (5000, drawing));

    // Closed in the middle, again and again.
    playing.reset();
    for (int i = 0; i < 8; ++i)
    {
        PlayingDisplay again;
        pump (40 * i);
    }
}

} // namespace morvanelab
