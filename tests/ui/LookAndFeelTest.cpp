// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/ThemePicture.h"
#include "ui/MVIconButton.h"
#include "ui/MVKnob.h"

#include <cmath>
#include <functional>

namespace morvanelab
{

using enum MVThemeColour;

namespace
{

constexpr float startAngle = juce::MathConstants<float>::pi * 1.25F;
constexpr float endAngle = juce::MathConstants<float>::pi * 2.75F;

/** Whether a colour lies on the ring around the dial, in the direction of an angle clockwise from the top. */
bool ringHas (const juce::Image& image, float angle, juce::Colour colour)
{
    const float half = static_cast<float> (image.getWidth()) / 2;
    for (float r = half * 0.8F; r < half; r += 0.5F)
        if (distance (image.getPixelAt (static_cast<int> (half + r * std::sin (angle)),
                                        static_cast<int> (half - r * std::cos (angle))),
                      colour)
            < 12)
            return true;
    return false;
}

/** The part of the ring that is drawn in a colour. */
double ringPart (const juce::Image& image, juce::Colour colour)
{
    constexpr int steps = 1000;
    int lit = 0;
    for (int i = 0; i < steps; ++i)
        lit += ringHas (image, startAngle + (endAngle - startAngle) * (static_cast<float> (i) + 0.5F) / steps, colour)
                   ? 1
                   : 0;
    return static_cast<double> (lit) / steps;
}

/** Light of the brightest pixel. */
double brightest (const juce::Image& image)
{
    double most = 0.0;
    for (int y = 0; y < image.getHeight(); ++y)
        for (int x = 0; x < image.getWidth(); ++x)
            most = std::max (most, contrastRatio (image.getPixelAt (x, y), juce::Colour (0xFF000000)));
    return most;
}

std::unique_ptr<MVKnob> knobAt (double value)
{
    auto knob = std::make_unique<MVKnob>();
    knob->setSize (80, 80);
    knob->setRange (0.0, 1.0);
    knob->setValue (value, juce::dontSendNotification);
    return knob;
}

} // namespace

using LookAndFeel = ThemeTest;

TEST_F (LookAndFeel, drawsTheArcOfAKnobAsLongAsItsValue)
{
    for (const float zoom : { 1.0F, 2.0F })
        for (const double value : { 0.0, 0.1, 0.25, 0.5, 0.75, 0.9, 1.0 })
        {
            const auto image = pictureOf (*knobAt (value), zoom);
            // A round end reaches half the line's width further.
            EXPECT_NEAR (ringPart (image, themeColour (accent)), value, 0.035) << value << " at " << zoom;
            EXPECT_NEAR (ringPart (image, themeColour (track)), 1.0 - value, 0.035) << value << " at " << zoom;
        }
}

TEST_F (LookAndFeel, pointsAKnobsPointerAtItsValue)
{
    for (const double value : { 0.0, 0.3, 0.5, 0.8, 1.0 })
    {
        constexpr float zoom = 2.0F;
        const auto image = pictureOf (*knobAt (value), zoom);
        double x = 0.0;
        double y = 0.0;
        int count = 0;
        for (int py = 0; py < image.getHeight(); ++py)
            for (int px = 0; px < image.getWidth(); ++px)
                if (distance (image.getPixelAt (px, py), themeColour (text)) < 20)
                {
                    x += px + 0.5 - 80.0;
                    y += py + 0.5 - 80.0;
                    ++count;
                }
        ASSERT_GT (count, 20) << value;
        const double expected = startAngle + value * (endAngle - startAngle);
        EXPECT_NEAR (std::remainder (std::atan2 (x, -y) - expected, juce::MathConstants<double>::twoPi), 0.0, 0.05)
            << value;
    }
}

TEST_F (LookAndFeel, showsMappingAndLearningOnAKnob)
{
    auto knob = knobAt (0.4);
    const auto count = [&] (MVThemeColour colour)
    { return countColour (pictureOf (*knob, 2.0F), themeColour (colour)); };
    EXPECT_EQ (count (mapped), 0);
    EXPECT_EQ (count (learn), 0);
    knob->setBadge ("CC 74");
    EXPECT_GT (count (mapped), 300);
    knob->setLearn (MVKnob::Learn::waiting);
    EXPECT_EQ (count (mapped), 0);
    EXPECT_GT (count (learn), 300);
    knob->setLearn (MVKnob::Learn::armed);
    const auto plain = knobAt (0.4);
    plain->setBadge ("CC 74");
    EXPECT_GT (count (mapped), 300);
    juce::int64 difference = 0;
    const auto armedPicture = pictureOf (*knob);
    const auto plainPicture = pictureOf (*plain);
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 80; ++x)
            difference += distance (armedPicture.getPixelAt (x, y), plainPicture.getPixelAt (x, y));
    EXPECT_GT (difference, 1000);
    knob->setLearn (MVKnob::Learn::off);
    knob->setBadge ({});
    EXPECT_EQ (count (mapped), 0);
}

TEST_F (LookAndFeel, keepsTheCaptionBelowTheDial)
{
    MVKnob knob;
    knob.setSize (80, 100);
    const auto without = pictureOf (knob);
    knob.setCaption ("Cutoff");
    const auto with = pictureOf (knob);
    const juce::Rectangle<int> foot (0, 86, 80, 14);
    EXPECT_EQ (countColour (without, foot, themeColour (textDim), 40), 0);
    EXPECT_GT (countColour (with, foot, themeColour (textDim), 40), 20);
    EXPECT_GT (countColour (without, foot.withY (72), themeColour (track)), 40);
    EXPECT_LT (countColour (with, foot, themeColour (track)), 10); // the dial has made room
}

/** Every kind of control, dimmer when it cannot be used and still there. */
TEST_F (LookAndFeel, dimsWhatIsDisabled)
{
    const std::vector<std::pair<const char*, std::function<std::unique_ptr<juce::Component>()>>> makers {
        { "knob", [] { return knobAt (0.5); } },
        { "text button", [] { return std::make_unique<juce::TextButton> ("RESET"); } },
        { "icon button",
          [] { return std::make_unique<MVIconButton> ("HELP", MVIcon::help, MVIconButton::Style::iconAndText); } },
        { "bare icon button",
          [] { return std::make_unique<MVIconButton> ("HELP", MVIcon::help, MVIconButton::Style::bare); } },
        { "toggle", [] { return std::make_unique<juce::ToggleButton> ("Tooltips"); } },
        { "slider",
          [] { return std::make_unique<juce::Slider> (juce::Slider::LinearHorizontal, juce::Slider::NoTextBox); } },
        { "label", [] { return std::make_unique<juce::Label> ("", "Volume"); } },
        { "combo",
          []
          {
              auto box = std::make_unique<juce::ComboBox>();
              box->addItem ("Glass", 1);
              box->setSelectedId (1, juce::dontSendNotification);
              return box;
          } },
    };
    for (const auto& [name, make] : makers)
    {
        const auto component = make();
        component->setSize (100, component->getHeight() > 0 ? component->getHeight() : 24);
        const auto light = brightest (pictureOf (*component));
        component->setEnabled (false);
        const auto dim = brightest (pictureOf (*component));
        EXPECT_LT (dim, light * 0.6) << name;
        EXPECT_GT (dim, contrastRatio (themeColour (windowBackground), juce::Colour (0xFF000000)) * 1.5) << name;
    }
}

TEST_F (LookAndFeel, drawsButtonsWithASharpOutlineInEveryState)
{
    juce::TextButton text ("VIEW");
    MVIconButton icon ("VIEW", MVIcon::view);
    for (auto* button : std::initializer_list<juce::Button*> { &text, &icon })
    {
        button->setSize (60, 24);
        const std::vector<std::pair<juce::Button::ButtonState, MVThemeColour>> states {
            { juce::Button::buttonNormal, control },
            { juce::Button::buttonOver, controlHover },
            { juce::Button::buttonDown, controlDown }
        };
        for (const auto& [state, fill] : states)
            for (const int zoom : { 1, 2 })
            {
                button->setState (state);
                const auto image = pictureOf (*button, static_cast<float> (zoom));
                const int middle = image.getHeight() / 2;
                for (int x = 0; x < zoom; ++x)
                    EXPECT_LE (distance (image.getPixelAt (x, middle), themeColour (controlOutline)), 2)
                        << button->getName() << state << x;
                EXPECT_LE (distance (image.getPixelAt (zoom, middle), themeColour (fill)), 2)
                    << button->getName() << state;
            }
        button->setState (juce::Button::buttonNormal);
        button->setToggleState (true, juce::dontSendNotification);
        EXPECT_LE (distance (pictureOf (*button).getPixelAt (0, 12), themeColour (accent)), 2);
    }
    icon.setTone (MVIconButton::Tone::danger);
    EXPECT_LE (distance (pictureOf (icon).getPixelAt (0, 12), themeColour (danger)), 2);
}

TEST_F (LookAndFeel, marksMenuItems)
{
    constexpr int width = 200;
    const auto item = [&] (bool active, bool highlighted, bool ticked)
    {
        juce::Image image (juce::Image::RGB, width, 24, true);
        juce::Graphics graphics (image);
        shared->look.drawPopupMenuBackgroundWithOptions (graphics, width, 24, {});
        shared->look.drawPopupMenuItem (graphics, { width, 24 }, false, active, highlighted, ticked, false, "Spectrum",
                                        {}, nullptr, nullptr);
        return image;
    };
    EXPECT_GT (countColour (item (true, true, false), themeColour (selection)), 3000);
    EXPECT_EQ (countColour (item (false, true, false), themeColour (selection)), 0);
    EXPECT_GT (countColour (item (true, false, true), themeColour (accent), 70), 10);
    EXPECT_EQ (countColour (item (true, false, false), themeColour (accent), 70), 0);
    EXPECT_GT (brightest (item (true, false, false)), brightest (item (false, false, false)) * 1.6);

    int textWidth = 0;
    int height = 0;
    shared->look.getIdealPopupMenuItemSize ("Phase Lock Waveform", false, 0, textWidth, height);
    EXPECT_GT (static_cast<float> (textWidth),
               shared->look.getPopupMenuFont().getStringWidthFloat ("Phase Lock Waveform") + 24.0F);
}

TEST_F (LookAndFeel, makesATooltipAsLargeAsItsText)
{
    const juce::Rectangle<int> area (0, 0, 800, 600);
    const juce::String tip ("Compressor Activation Threshold");
    const auto small = shared->look.getTooltipBounds (tip, { 790, 590 }, area);
    EXPECT_TRUE (area.contains (small));
    EXPECT_GT (static_cast<float> (small.getWidth()), themeFont (fontHeights::small).getStringWidthFloat (tip));
    const auto large = shared->look.getTooltipBounds (juce::String::repeatedString (tip + " ", 12), { 10, 10 }, area);
    EXPECT_TRUE (area.contains (large));
    EXPECT_LE (large.getWidth(), 380);
    EXPECT_GT (large.getHeight(), small.getHeight() * 3);
}

/** A drag of the left or right button over a knob, upwards. */
static void dragOver (MVKnob& knob, juce::ModifierKeys button)
{
    const auto event = [&] (float y)
    {
        return juce::MouseEvent (juce::Desktop::getInstance().getMainMouseSource(), { 40.0F, y }, button, 0.0F, 0.0F,
                                 0.0F, 0.0F, 0.0F, &knob, &knob, {}, { 40.0F, 40.0F }, {}, 1, y < 40.0F);
    };
    knob.mouseDown (event (40.0F));
    knob.mouseDrag (event (0.0F));
    knob.mouseUp (event (0.0F));
}

TEST_F (LookAndFeel, givesAKnobItsMenuAndItsLearningInsteadOfADrag)
{
    auto knob = knobAt (0.25);
    int begins = 0;
    int ends = 0;
    int menus = 0;
    int learns = 0;
    knob->onDragStart = [&] { ++begins; };
    knob->onDragEnd = [&] { ++ends; };
    knob->onContextMenu = [&] { ++menus; };
    knob->onLearnClick = [&] { ++learns; };
    const auto counts = [&] { return std::array { begins, ends, menus, learns }; };

    dragOver (*knob, juce::ModifierKeys::leftButtonModifier);
    EXPECT_GT (knob->getValue(), 0.3);
    EXPECT_EQ (counts(), (std::array { 1, 1, 0, 0 }));

    const double value = knob->getValue();
    dragOver (*knob, juce::ModifierKeys::rightButtonModifier);
    EXPECT_EQ (counts(), (std::array { 1, 1, 1, 0 }));
    knob->setLearn (MVKnob::Learn::armed);
    dragOver (*knob, juce::ModifierKeys::leftButtonModifier);
    EXPECT_EQ (counts(), (std::array { 1, 1, 1, 1 }));
    knob->setEnabled (false);
    dragOver (*knob, juce::ModifierKeys::leftButtonModifier);
    dragOver (*knob, juce::ModifierKeys::rightButtonModifier);
    EXPECT_EQ (counts(), (std::array { 1, 1, 1, 1 }));
    EXPECT_EQ (knob->getValue(), value);
    EXPECT_FALSE (knob->getWantsKeyboardFocus());
}

} // namespace morvanelab
