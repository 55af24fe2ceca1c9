// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVSignalFeed.h"
#include "tests/ui/DisplayRig.h"
#include "ui/MVPLLWaveformDisplay.h"
#include "ui/MVSpectrogram3d.h"
#include "ui/MVSpectrogramDisplay.h"
#include "ui/MVSpectrumDisplay.h"
#include "ui/MVStrangeAttractor.h"
#include "ui/MVWaveformDisplay.h"

#include <limits>
#include <thread>

namespace morvanelab
{

namespace
{

/** Keeps what it is given, and can be held up in the middle of it. */
struct Recorder : MVDataAnimator
{
    explicit Recorder (int interval = 40, Delivery how = Delivery::everyBlock, int newest = 0)
        : MVDataAnimator (interval, how, newest)
    {
    }

    void processData (const double* samples, int byteCount) override
    {
        const BusyScope busy (*this, samples, byteCount);
        taken.emplace_back (samples, samples + busy.size());
        if (onDelivery)
            onDelivery();
    }

    void paintDisplay (juce::Graphics&) override
    {
        if (onPaint)
            onPaint();
    }

    using MVDataAnimator::running;

    std::function<void()> onDelivery;
    std::function<void()> onPaint;
    std::vector<Samples> taken;
};

struct DisplayKind
{
    const char* name;
    std::unique_ptr<MVDataAnimator> (*make)();
};

template <typename Display>
std::unique_ptr<MVDataAnimator> make()
{
    return std::make_unique<Display>();
}

constexpr DisplayKind allKinds[] {
    { "waveform", make<MVWaveformDisplay> },     { "phase lock", make<MVPLLWaveformDisplay> },
    { "spectrum", make<MVSpectrumDisplay> },     { "spectrogram", make<MVSpectrogramDisplay> },
    { "3d spectrogram", make<MVSpectrogram3d> }, { "attractor", make<MVStrangeAttractor> }
};

} // namespace

using DisplayAnimator = DisplayTest;
using DisplayOnScreen = DisplayTest;

TEST_F (DisplayAnimator, stopsOnlyWhenTheOtherThreadHasDelivered)
{
    Recorder display;
    juce::WaitableEvent begun;
    std::atomic<bool> ended { false };
    display.onDelivery = [&]
    {
        begun.signal();
        juce::Thread::sleep (60);
        ended = true;
    };
    display.setRunning (true);
    EXPECT_TRUE (display.isRunning());
    std::thread deliverer ([&] { deliver (display, { 1.0 }); });
    begun.wait();
    display.setRunning (false);
    EXPECT_TRUE (ended);
    EXPECT_FALSE (display.isTimerRunning());
    deliverer.join();
}

TEST_F (DisplayAnimator, canBeStoppedInTheMiddleOfADeliveryByTheSameThread)
{
    RecordingSource source;
    Recorder display;
    display.setSource (&source);
    display.onDelivery = [&] { display.attachSource (false); };
    display.setRunning (true);
    deliver (display, { 1.0 });
    EXPECT_FALSE (display.isRunning());
    EXPECT_EQ (source.calls, "off ");
}

TEST_F (DisplayAnimator, slowPicturesComeLessOften)
{
    Recorder display;
    display.setSize (100, 50);
    display.setRunning (true);
    const juce::Image image (juce::Image::RGB, 100, 50, true);
    const auto intervalAfter = [&] (int milliseconds)
    {
        display.onPaint = [=] { juce::Thread::sleep (milliseconds); };
        juce::Graphics graphics (image);
        display.paintEntireComponent (graphics, true);
        display.timerCallback();
        return display.getTimerInterval();
    };
    EXPECT_EQ (intervalAfter (0), 40);
    EXPECT_GE (intervalAfter (60), 120);
    EXPECT_EQ (intervalAfter (700), 1000);
    EXPECT_EQ (intervalAfter (0), 40) << "as before once there is time";

    display.setRunning (false);
    intervalAfter (60);
    EXPECT_FALSE (display.isTimerRunning());
}

TEST_F (DisplayAnimator, attachingStopsAndForwardsTheFlag)
{
    Recorder display;
    RecordingSource source;
    display.setSource (&source);
    display.setRunning (true);
    EXPECT_EQ (display.getTimerInterval(), 40);
    display.attachSource (true);
    EXPECT_FALSE (display.isRunning());
    EXPECT_FALSE (display.isTimerRunning());
    EXPECT_TRUE (source.on);
    display.setSource (nullptr);
    EXPECT_FALSE (source.on);
    display.attachSource (true);
    EXPECT_FALSE (source.on);
}

TEST_F (DisplayAnimator, drawsAtMostThirtyPicturesASecondAndTheSpectrogramTen)
{
    const auto intervalOf = [] (MVDataAnimator& display)
    {
        display.setRunning (true);
        return display.getTimerInterval();
    };
    Recorder hasty (1);
    EXPECT_GE (intervalOf (hasty), 34);
    for (const auto& kind : allKinds)
        EXPECT_EQ (intervalOf (*kind.make()), std::string (kind.name) == "spectrogram" ? 100 : 34) << kind.name;
}

TEST_F (DisplayAnimator, takesNothingWhileNotOnAScreen)
{
    for (const auto& kind : allKinds)
    {
        RecordingSource source;
        source.blocks.assign (3, Samples (256, 0.5));
        const auto display = kind.make();
        display->setSize (200, 100);
        display->setVisible (true);
        display->setSource (&source);
        display->tick();
        EXPECT_FALSE (source.on) << kind.name;
        EXPECT_EQ (source.pulls, 0) << kind.name;
    }
}

TEST_F (DisplayAnimator, saysNoSignalUntilThereIsOne)
{
    MVPLLWaveformDisplay display;
    display.setSize (400, 200);
    const auto words = themeColour (MVThemeColour::textFaint);
    const juce::Rectangle<int> middle (150, 85, 100, 30);
    deliver (display, Samples (512, 1.0e-6));
    EXPECT_TRUE (display.isSilent());
    EXPECT_GT (countColour (pictureOf (display), middle, words), 10);
    deliver (display, sine (512, 4.0, 0.5));
    EXPECT_FALSE (display.isSilent());
    EXPECT_LT (countColour (pictureOf (display), middle, words), 3);
}

TEST_F (DisplayAnimator, everyDisplaySurvivesAnyNumbersAndSizes)
{
    constexpr double inf = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const double values[] { nan, inf, -inf, 1.0e300, -1.0e300, 5.0e-324, 1.0e7, -3.0, 0.0 };
    for (const auto& kind : allKinds)
    {
        const auto display = kind.make();
        for (const auto& [width, height] : { std::pair (300, 120), { 1, 1 }, { 0, 0 }, { 7, 900 }, { 900, 7 } })
        {
            display->setSize (width, height);
            for (const double value : values)
            {
                Samples samples = sine (2048, 30.0, 0.7);
                for (std::size_t i = 0; i < samples.size(); i += 5)
                    samples[i] = value;
                deliver (*display, samples);
                if (width > 0)
                    pictureOf (*display);
            }
            display->processData (nullptr, 4096);
            deliver (*display, {});
            display->processData (values, -8);
        }
        // What came in before must not spoil what comes after.
        display->setSize (300, 120);
        for (int i = 0; i < 100; ++i)
            deliver (*display, Samples (2048, 0.0));
        pictureOf (*display);
        deliver (*display, sine (2048, 100.0, 0.5));
        const auto with = pictureOf (*display);
        EXPECT_NE (countColour (with, themeColour (MVThemeColour::displayBackground), 0), 300 * 120) << kind.name;
    }
}

TEST_F (DisplayOnScreen, followsWhatHappensAroundIt)
{
    if (! hasScreen())
        GTEST_SKIP() << "no display";
    TestWindow window;
    RecordingSource source;
    Recorder display;
    juce::Component cover;
    cover.setOpaque (true);
    display.setBounds (20, 20, 300, 150);
    display.setSource (&source);
    window.page.addAndMakeVisible (display);
    ASSERT_TRUE (source.on);
    ASSERT_TRUE (display.isRunning());

    struct Case
    {
        const char* name;
        std::function<void()> away;
        std::function<void()> back;
    };
    const Case cases[] {
        { "hidden", [&] { display.setVisible (false); }, [&] { display.setVisible (true); } },
        { "page hidden", [&] { window.page.setVisible (false); }, [&] { window.page.setVisible (true); } },
        { "taken out", [&] { window.page.removeChildComponent (&display); },
          [&] { window.page.addAndMakeVisible (display); } },
        { "window closed", [&] { window.removeFromDesktop(); }, [&] { window.addToDesktop (0); } },
        { "covered",
          [&]
          {
              cover.setBounds (display.getBounds());
              window.page.addAndMakeVisible (cover);
          },
          [&] { cover.setVisible (false); } },
        { "page covered",
          [&]
          {
              cover.setBounds (window.getLocalBounds());
              window.addAndMakeVisible (cover);
          },
          [&] { cover.setBounds (0, 0, 100, 100); } },
    };
    for (const auto& each : cases)
    {
        each.away();
        EXPECT_TRUE (pump (2000, [&] { return ! source.on && ! display.isRunning(); })) << each.name;
        source.blocks.assign (3, Samples (256, 0.5));
        source.pulls = 0;
        pump (120);
        EXPECT_EQ (source.pulls, 0) << each.name;
        each.back();
        EXPECT_TRUE (pump (2000, [&] { return source.on && source.pulls > 0; })) << each.name;
    }
    display.setSource (nullptr);
    EXPECT_FALSE (source.on);
}

TEST_F (DisplayOnScreen, handsOverEveryBlockOrTheNewestSamples)
{
    if (! hasScreen())
        GTEST_SKIP() << "no display";
    MVSignalFeed feed;
    MVFeedDisplaySource source (feed);
    Samples sent;
    const auto push = [&] (int frames)
    {
        Samples block;
        for (int i = 0; i < frames; ++i)
            block.push_back (static_cast<double> (sent.size() + block.size()));
        sent.insert (sent.end(), block.begin(), block.end());
        feed.push (block.data(), frames);
    };

    TestWindow window;
    Recorder each;
    Recorder newest (40, MVDataAnimator::Delivery::newest, 600);
    for (auto* display : { &each, &newest })
    {
        display->setBounds (0, 0, 100, 100);
        window.page.addAndMakeVisible (display);
        display->setSource (&source);
        ASSERT_TRUE (feed.isEnabled());
        sent.clear();
        display->tick();
        for (const int frames : { 256, 100, 256, 256 })
            push (frames);
        display->tick();
        display->setSource (nullptr);
        window.page.removeChildComponent (display);
    }
    ASSERT_EQ (each.taken.size(), 4u);
    EXPECT_EQ (each.taken[1], Samples (sent.begin() + 256, sent.begin() + 356));
    ASSERT_EQ (newest.taken.size(), 1u);
    EXPECT_EQ (newest.taken[0], Samples (sent.end() - 600, sent.end()));
}

} // namespace morvanelab
