// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TestRandom.h"
#include "tests/ui/DisplayRig.h"
#include "ui/MVHeatStrip.h"
#include "ui/MVPLLWaveformDisplay.h"
#include "ui/MVSpectrogram3d.h"
#include "ui/MVSpectrogramDisplay.h"
#include "ui/MVSpectrumDisplay.h"
#include "ui/MVStrangeAttractor.h"
#include "ui/MVThinLine.h"
#include "ui/MVWaveformDisplay.h"

namespace morvanelab
{

namespace
{

// For a display of 600 by 250 pixels: the middle, and the spectra's foot and height.
constexpr int width = 600;
constexpr int height = 250;
constexpr double mid = 125.0;
constexpr double foot = 237.5;
constexpr double rise = -225.0;
constexpr double tolerance = 1.0e-4; // of a pixel; the formulas' constants are in single precision

template <typename Display>
struct Sized : Display
{
    Sized() { this->setSize (width, height); }
};

double sumOf (const juce::Image& image, juce::Rectangle<int> area)
{
    double sum = 0.0;
    for (int y = area.getY(); y < area.getBottom(); ++y)
        for (int x = area.getX(); x < area.getRight(); ++x)
            sum += image.getPixelAt (x, y).getBrightness();
    return sum;
}

} // namespace

using DisplayValues = DisplayTest;

TEST_F (DisplayValues, waveformKeepsGreatestAndLeastOfEachBlock)
{
    Sized<MVWaveformDisplay> display;
    EXPECT_EQ (display.maxima()[67], mid);
    deliver (display, { 0.1, 0.5, -0.25, 0.0 });
    deliver (display, {});
    deliver (display, { -0.5, -0.75 });
    // Not inverted: what is greater lies lower.
    EXPECT_NEAR (display.maxima()[0], 125.0 + 37.5, tolerance);
    EXPECT_NEAR (display.minima()[0], 125.0 - 18.75, tolerance);
    EXPECT_EQ (display.maxima()[1], mid);
    EXPECT_EQ (display.minima()[1], mid);
    EXPECT_NEAR (display.maxima()[2], 125.0 - 37.5, tolerance);
    EXPECT_NEAR (display.minima()[2], 125.0 - 56.25, tolerance);
    EXPECT_EQ (display.writeIndex(), 3);

    for (int i = 3; i < MVWaveformDisplay::ringSize + 1; ++i)
        deliver (display, { 1.0 });
    EXPECT_EQ (display.writeIndex(), 1);
    EXPECT_NEAR (display.maxima()[0], 200.0, tolerance);
    display.setSize (600, 301);
    EXPECT_EQ (display.maxima()[0], 150.0);
}

TEST_F (DisplayValues, waveformScrollsFromTheRightEdge)
{
    Sized<MVWaveformDisplay> display;
    for (int i = 0; i < 16; ++i)
        deliver (display, { 0.8, 0.7 });
    const auto picture = pictureOf (display);
    const auto trace = themeColour (MVThemeColour::trace);
    // 16 of 64 columns: the right quarter stands at 125 + 0.8 * 75 = 185, the rest in the middle.
    for (const int x : { 480, 540, 595 })
    {
        EXPECT_GT (countColour (picture, { x, 183, 1, 4 }, trace, 110), 0) << x;
        EXPECT_EQ (countColour (picture, { x, 30, 1, 90 }, trace, 110), 0) << x;
    }
    for (const int x : { 100, 300, 420 })
        EXPECT_GT (countColour (picture, { x, 123, 1, 4 }, trace, 110), 0) << x;
}

TEST_F (DisplayValues, phaseLockBeginsAtTheUpwardCrossing)
{
    struct Case
    {
        const char* name;
        Samples samples;
        int start; ///< first sample shown
    };
    const auto wave = sine (1000, 7.0, 0.9, 0.3);
    int crossing = 1;
    while (! (wave[static_cast<std::size_t> (crossing) - 1] <= 0.0 && wave[static_cast<std::size_t> (crossing)] > 0.0))
        ++crossing;
    const Case cases[] {
        { "sine", wave, crossing },
        { "from zero itself", { 0.5, 0.0, 0.25, -0.5 }, 2 },
        { "zero is not above", { -0.5, 0.0, 0.0, 0.75 }, 3 },
        { "already above", { 0.5, 0.6, -0.7 }, 3 },
        { "only falling", { 0.5, 0.25, -0.7, -0.9 }, 4 },
        { "step", { -1.0, -1.0, 1.0, 1.0 }, 2 },
        { "silence", Samples (256, 0.0), 256 },
        { "empty", {}, 0 },
    };
    for (const auto& each : cases)
    {
        Sized<MVPLLWaveformDisplay> display;
        deliver (display, each.samples);
        for (int i = 0; i < MVPLLWaveformDisplay::numPoints; ++i)
        {
            const auto index = static_cast<std::size_t> (each.start + i);
            const double expected = index < each.samples.size() ? mid - 75.0 * each.samples[index] : mid;
            ASSERT_NEAR (display.points()[static_cast<std::size_t> (i)], expected, tolerance) << each.name << " " << i;
        }
    }
}

TEST_F (DisplayValues, phaseLockDrawsTheCurveUpward)
{
    Sized<MVPLLWaveformDisplay> display;
    // One period across the picture's 146 points, shifted so that the crossing is the first sample.
    deliver (display, sine (292, 2.0, 1.0, -0.0001));
    const auto picture = pictureOf (display);
    const auto trace = themeColour (MVThemeColour::trace);
    EXPECT_GT (countColour (picture, { 148, 48, 4, 4 }, trace, 110), 0); // the crest, a quarter in: 125 - 75
    EXPECT_GT (countColour (picture, { 446, 198, 8, 4 }, trace, 110), 0);
    EXPECT_EQ (countColour (picture, { 140, 140, 20, 100 }, trace, 110), 0);
}

TEST_F (DisplayValues, spectrumIsScaledToItsPeak)
{
    // A sine that fits the 256 points exactly has all its strength in one bin and the mirror of it; with a second one
    // of half the amplitude half the height stands there, whatever the level.
    for (const double level : { 1.0, 1.0e-3 })
    {
        Sized<MVSpectrumDisplay> display;
        deliver (display, sine (1024, 4.0 * 20, level) + sine (1024, 4.0 * 50, level * 0.5));
        for (int bin = 0; bin < MVSpectrumDisplay::numBins; ++bin)
        {
            const bool first = bin == 20 || bin == 256 - 20;
            const bool second = bin == 50 || bin == 256 - 50;
            ASSERT_NEAR (display.bins()[static_cast<std::size_t> (bin)],
                         foot
                             + rise
                                   * (first    ? 1.0
                                      : second ? 0.5
                                               : 0.0),
                         0.01)
                << bin;
        }
    }
}

TEST_F (DisplayValues, spectrumLiesAtItsFootWithoutEnoughSamples)
{
    Samples late (600, -0.5);
    const auto tone = sine (256, 32.0, 0.9, 0.02);
    const auto heightsAfter = [&] (int start)
    {
        Samples samples = late;
        for (std::size_t i = static_cast<std::size_t> (start); i < samples.size(); ++i)
            samples[i] = tone[(i - static_cast<std::size_t> (start)) % tone.size()];
        Sized<MVSpectrumDisplay> display;
        deliver (display, samples);
        return display.bins();
    };
    EXPECT_NEAR (heightsAfter (344)[32], foot + rise, 0.01); // 256 samples behind the crossing
    for (const double y : heightsAfter (345))
        EXPECT_NEAR (y, foot, tolerance);

    Sized<MVSpectrumDisplay> display;
    deliver (display, Samples (1024, 0.0));
    for (const double y : display.bins())
        EXPECT_NEAR (y, foot, tolerance);
}

TEST_F (DisplayValues, spectrumDrawsAPeakWhereItsFrequencyStands)
{
    Sized<MVSpectrumDisplay> display;
    display.setSampleRate (51200.0);          // 200 Hz a bin, the axis from 100 Hz over eight octaves to 25600 Hz
    deliver (display, sine (1024, 4.0 * 16)); // 3200 Hz: five octaves up
    const auto picture = pictureOf (display);
    const auto trace = themeColour (MVThemeColour::trace);
    const int peak = 600 * 5 / 8;
    EXPECT_GT (countColour (picture, { peak - 3, 11, 6, 6 }, trace, 110), 0);
    for (const int x : { peak - 60, peak + 60 })
    {
        EXPECT_EQ (countColour (picture, { x, 20, 4, 200 }, trace, 110), 0) << x;
        EXPECT_GT (countColour (picture, { x, 234, 4, 6 }, trace, 110), 0) << x;
    }
}

TEST_F (DisplayValues, spectrogramDrawsAColumnFromTheStrip)
{
    Sized<MVSpectrogramDisplay> display;
    MVHeatStrip heat;
    ASSERT_EQ (display.image().getHeight(), 225);
    ASSERT_EQ (display.image().getWidth(), width);
    // Bins 16 and 40 of the lower 64, the second a quarter as strong: its root is a half.
    deliver (display, sine (128, 16.0, 0.3) + sine (128, 40.0, 0.075));
    EXPECT_EQ (display.writeColumn(), 1);
    for (int row = 0; row < 225; ++row)
    {
        const int bin = row * 64 / 225;
        const std::size_t colour = bin == 16 ? 98 : bin == 40 ? 49 : 0;
        const auto pixel = display.image().getPixelAt (0, 224 - row);
        // The strongest bin's own quotient may fall a hair short of 1.
        EXPECT_TRUE (pixel == heat.colours()[colour] || (bin == 16 && pixel == heat.colours()[99])) << row;
    }
}

TEST_F (DisplayValues, spectrogramDrawsNoColumnWithoutEnoughSamplesAndADarkOneForSilence)
{
    Sized<MVSpectrogramDisplay> display;
    MVHeatStrip heat;
    deliver (display, Samples (127, 0.5));
    EXPECT_EQ (display.writeColumn(), 0);
    pictureOf (display);
    deliver (display, Samples (128, 0.0));
    EXPECT_EQ (display.writeColumn(), 1);
    for (int y = 0; y < 225; ++y)
        EXPECT_EQ (display.image().getPixelAt (0, y), heat.colours()[0]);
}

TEST_F (DisplayValues, spectrogramHasTheNewestColumnAtTheRightEdge)
{
    MVSpectrogramDisplay display;
    display.setSize (40, 250);
    // The tone climbs a bin a column, and the columns run over the end of the image.
    juce::Image picture;
    for (int column = 0; column < 50; ++column)
    {
        deliver (display, sine (128, 5.0 + column));
        picture = pictureOf (display);
    }
    EXPECT_EQ (display.writeColumn(), 10);
    const auto bright = [&] (int x, int bin)
    {
        const int row = (bin * 225 + 224) / 64 - 1; // the middle one of the bin's rows, from below
        return picture.getPixelAt (x, 238 - 1 - row).getBrightness() > 0.8F;
    };
    for (const int age : { 0, 5, 15, 33 })
    {
        EXPECT_TRUE (bright (39 - age, 5 + 49 - age)) << age;
        EXPECT_FALSE (bright (39 - age, 5 + 49 - age + 4)) << age;
    }
}

TEST_F (DisplayValues, stripGrowsEvenlyBrighter)
{
    MVHeatStrip heat;
    const auto& strip = heat.colours();
    EXPECT_EQ (strip.front(), themeColour (MVThemeColour::heatLow));
    EXPECT_EQ (strip.back(), themeColour (MVThemeColour::heatHigh));
    const double step = (perceivedLightness (strip.back()) - perceivedLightness (strip.front())) / 99.0;
    ASSERT_GT (step, 0.5);
    for (std::size_t i = 1; i < strip.size(); ++i)
        EXPECT_NEAR (perceivedLightness (strip[i]) - perceivedLightness (strip[i - 1]), step, 0.6 * step) << i;
    EXPECT_NEAR (perceivedLightness (juce::Colours::white), 100.0, 0.01);
    EXPECT_NEAR (perceivedLightness (juce::Colour (119, 119, 119)), 50.03, 0.05);

    setThemeColour (MVThemeColour::heatHigh, juce::Colours::lime);
    EXPECT_EQ (heat.colours().back(), juce::Colours::lime);
}

TEST_F (DisplayValues, oneStretchIsTakenAPicture)
{
    const auto low = sine (2048, 200.0, 0.5);
    const auto high = sine (2048, 400.0, 0.5);
    const auto check = [&] (MVRepaintPacedDisplay& display, const char* name, auto state)
    {
        display.setSize (width, height);
        ASSERT_TRUE (display.wantsData()) << name;
        deliver (display, low);
        EXPECT_FALSE (display.wantsData()) << name;
        const auto first = state();
        deliver (display, high);
        EXPECT_EQ (state(), first) << name;
        pictureOf (display);
        EXPECT_TRUE (display.wantsData()) << name;
        deliver (display, high);
        EXPECT_NE (state(), first) << name;
    };
    MVPLLWaveformDisplay phaseLock;
    check (phaseLock, "phase lock", [&] { return phaseLock.points(); });
    MVSpectrumDisplay spectrum;
    check (spectrum, "spectrum", [&] { return spectrum.bins(); });
    MVSpectrogramDisplay spectrogram;
    check (spectrogram, "spectrogram", [&] { return spectrogram.writeColumn(); });
    MVSpectrogram3d ridges;
    check (ridges, "3d spectrogram", [&] { return ridges.history().numAdded(); });
}

TEST_F (DisplayValues, fadesLikeTheToolkitsOwnOperation)
{
    test::TestRandom random (1);
    juce::Image picture (juce::Image::ARGB, 37, 21, true, juce::SoftwareImageType());
    for (int y = 0; y < 21; ++y)
        for (int x = 0; x < 37; ++x)
            picture.setPixelAt (x, y, juce::Colour (static_cast<juce::uint32> (random.next())));
    auto expected = picture.createCopy();
    for (int i = 0; i < 3; ++i)
    {
        expected.multiplyAllAlphas (0.999F);
        fadePicture (picture);
    }
    for (int y = 0; y < 21; ++y)
        for (int x = 0; x < 37; ++x)
            ASSERT_EQ (picture.getPixelAt (x, y), expected.getPixelAt (x, y));
}

TEST_F (DisplayValues, attractorDrawsTheSignalAgainstItself)
{
    // The same steps with the toolkit's own strokes, in colours that have wandered far.
    MVStrangeAttractor display;
    constexpr int w = 160;
    constexpr int h = 120;
    display.setSize (w, h);
    juce::Image expected (juce::Image::ARGB, w, h, true, juce::SoftwareImageType());
    double a = 0.0;
    double b = 0.0;
    double c = 0.0;
    test::TestRandom random (7);
    for (int block = 0; block < 400; ++block)
    {
        Samples s = sine (256, 3.0 + 0.01 * block, 0.7, 0.013 * block);
        for (double& each : s)
            each += 0.1 * random.between (-1.0, 1.0);
        deliver (display, s);

        expected.multiplyAllAlphas (0.999F);
        int crossings = 0;
        for (std::size_t i = 1; i < s.size(); ++i)
            crossings += (s[i] < 0.0) != (s[i - 1] < 0.0) ? 1 : 0;
        const double d = 5.0 * crossings / 256.0;
        juce::Graphics graphics (expected);
        int x0 = 0;
        int y0 = 0;
        for (std::size_t i = 0; i < s.size(); ++i)
        {
            const int x = static_cast<int> ((s[i] + 1.0) * w / 2.0);
            const int y = static_cast<int> ((s[s.size() - 1 - i] + 1.0) * h / 2.0);
            const auto part = [] (double v) { return static_cast<juce::uint8> (static_cast<int> (v) & 255); };
            graphics.setColour (juce::Colour (part (a * d), part (b * d), part (c)));
            a += x * 0.00001 + d * 0.0001;
            b += y * 0.00001 - d * 0.0001 + s[i] * 0.01;
            c += d * 0.001;
            if (i > 0)
                graphics.drawLine (static_cast<float> (x0) + 0.5F, static_cast<float> (y0) + 0.5F,
                                   static_cast<float> (x) + 0.5F, static_cast<float> (y) + 0.5F, 0.25F);
            x0 = x;
            y0 = y;
        }
    }
    ASSERT_GT (c, 20.0);

    // Compared in squares of 4 pixels, since the two ways to smooth a line share pixels out differently.
    double worst = 0.0;
    double total = 0.0;
    for (int y = 0; y < h; y += 4)
        for (int x = 0; x < w; x += 4)
        {
            double ours[4] {};
            double theirs[4] {};
            for (int i = 0; i < 16; ++i)
            {
                const auto add = [] (double (&sum)[4], juce::PixelARGB pixel)
                {
                    sum[0] += pixel.getAlpha() / 16.0;
                    sum[1] += pixel.getRed() / 16.0;
                    sum[2] += pixel.getGreen() / 16.0;
                    sum[3] += pixel.getBlue() / 16.0;
                };
                add (ours, display.image().getPixelAt (x + i % 4, y + i / 4).getPixelARGB());
                add (theirs, expected.getPixelAt (x + i % 4, y + i / 4).getPixelARGB());
            }
            total += theirs[0];
            for (int part = 0; part < 4; ++part)
                worst = std::max (worst, std::abs (ours[part] - theirs[part]));
        }
    EXPECT_GT (total / (w * h / 16), 20.0);
    EXPECT_LT (worst, 20.0);
}

TEST_F (DisplayValues, attractorFadesInSilenceAndKeepsItsPictureOverASize)
{
    Sized<MVStrangeAttractor> display;
    const auto amount = [&]
    {
        return sumOf (
            display.image().convertedToFormat (juce::Image::SingleChannel).convertedToFormat (juce::Image::RGB),
            display.image().getBounds());
    };
    for (int i = 0; i < 40; ++i)
        deliver (display, sine (256, 5.0, 0.5));
    const double before = amount();
    ASSERT_GT (before, 0.0);
    display.setSize (width / 2, height);
    EXPECT_EQ (display.image().getWidth(), width / 2);
    EXPECT_GT (amount(), 0.2 * before);
    for (int i = 0; i < 256; ++i)
        deliver (display, Samples (256, 0.0));
    EXPECT_EQ (amount(), 0.0);
}

} // namespace morvanelab
