// SPDX-License-Identifier: GPL-3.0-or-later
// Windows that come and go while audio plays, sizes that hosts give, and what comes back on the next day.
#include "support/Sanitizers.h"
#include "window/AudioThread.h"
#include "window/WindowRig.h"

#include <cmath>

namespace morvanelab::test
{

namespace
{

using Life = WindowTest;

/** The components of the window's tree, seen or not. */
int countComponents (juce::Component& component)
{
    int count = 1;
    for (auto* child : component.getChildren())
        count += countComponents (*child);
    return count;
}

/** Waits for the queue of messages to run dry, so that what was to be freed is. */
void calmDown() { WindowRig::run (0.05); }

} // namespace

TEST_F (Life, fiftyWindowsWhileAudioPlays)
{
    rig.loadCount (16);
    rig.core().setVisualiser (SordelinMainComponent::visualiserSpectrum);
    rig.processor().setNonRealtime (false);
    rig.core().getKeyboardState().noteOn (1, 60, 0.8F);
    rig.close();
    AudioThread audio (rig.processor());
    int components = 0;
    int peers = 0;
    for (int round = 0; round < 50; ++round)
    {
        rig.open();
        if (round % 10 == 1 || round % 10 == 6)
            rig.click ("SHOW BANK LIBRARIAN");
        if (round % 5 == 2)
            rig.core().getPrompt().tell ("Left open", "and closed with the window");
        if (round % 10 == 8)
            rig.drag (rig.knob (round % 16), { 0, -20 });
        if (round % 5 == 4)
            rig.click ("VIEW");
        if (round == 5)
            components = countComponents (rig.view());
        EXPECT_TRUE (round <= 5 || round % 5 != 0 || countComponents (rig.view()) == components)
            << countComponents (rig.view()) << " after " << components << " in round " << round;
        rig.close();
        calmDown();
        if (round == 5)
            peers = juce::ComponentPeer::getNumPeers();
        EXPECT_LE (juce::Desktop::getInstance().getNumComponents(), 1) << "no more than a tooltip's window";
    }
    EXPECT_EQ (juce::ComponentPeer::getNumPeers(), peers);
    EXPECT_GT (audio.blocks(), 100);
    EXPECT_LT (audio.longestSeconds(), 2.0) << "a block waited for the window";
    EXPECT_GT (audio.peak(), 1e-5F) << "sixteen knobs in the middle halve the sound as many times";
    audio.stop();

    rig.open();
    rig.processor().setNonRealtime (true);
    rig.loadCount (5);
    EXPECT_NE (rig.look ("PARAMETER 5"), nullptr);
    rig.host().take();
    rig.drag (rig.knob (0), { 0, -30 });
    rig.drop();
    EXPECT_EQ (rig.host().take(), (Texts { "begin 0", "value 0", "end 0" }));
}

TEST_F (Life, zoomScalesTheWindowAndItsClicks)
{
    rig.loadCount (4);
    const int width = rig.view().getWidth();
    const int height = rig.view().getHeight();
    for (const int percent : { 75, 100, 125, 150, 175, 200, 250, 20, 1000 })
    {
        rig.view().setZoom (percent);
        const int zoom = juce::jlimit (75, 250, percent);
        EXPECT_EQ (rig.core().getSettings().getZoom(), zoom);
        EXPECT_EQ (rig.view().getWidth(), width) << percent;
        EXPECT_EQ (rig.view().getHeight(), height) << percent;
        EXPECT_NEAR (rig.window().getWidth(), width * zoom / 100.0, 1.0) << percent;
        EXPECT_NEAR (rig.window().getHeight(), height * zoom / 100.0, 1.0) << percent;
        const bool muted = rig.core().outputMuted;
        rig.click ("MUTE OUTPUT");
        EXPECT_NE (rig.core().outputMuted.load(), muted) << percent;
    }
    rig.as<juce::ComboBox> ("PRESET").showPopup();
    WindowRig::run (0.1);
    const auto* const menu = juce::Component::getCurrentlyModalComponent();
    ASSERT_NE (menu, nullptr);
    EXPECT_EQ (menu->getParentComponent(), &rig.view()) << "menus of boxes have the zoom too";
    rig.press (juce::KeyPress::escapeKey);
    rig.close();
    rig.open();
    EXPECT_NEAR (rig.window().getWidth(), width * 2.5, 1.0);
    rig.restart();
    rig.open();
    EXPECT_NEAR (rig.window().getWidth(), width * 2.5, 1.0) << "the next day";
}

TEST_F (Life, hostsGiveAndRefuseSizes)
{
    struct Size
    {
        int width;
        int height;
    };
    for (const int zoom : { 100, 75, 175, 250 })
    {
        rig.view().setZoom (zoom);
        for (const auto size : { Size { 1003, 517 }, Size { 1, 1 }, Size { 0, 0 }, Size { 5000, 9 },
                                 Size { 12000, 12000 }, Size { 961, 480 }, Size { 1200, 700 } })
        {
            SCOPED_TRACE (std::to_string (size.width) + " x " + std::to_string (size.height) + " at "
                          + std::to_string (zoom));
            rig.window().setSize (size.width, size.height);
            auto& view = rig.view();
            EXPECT_GE (view.getWidth(), SordelinMainView::smallestWidth);
            EXPECT_LE (view.getWidth(), SordelinMainView::largestWidth);
            EXPECT_GE (view.getHeight(), SordelinMainView::smallestHeight);
            EXPECT_LE (view.getHeight(), SordelinMainView::largestHeight);
            const auto shown = view.getBoundsInParent();
            EXPECT_EQ (shown.getX(), 0);
            EXPECT_EQ (shown.getY(), 0);
            EXPECT_NEAR (rig.window().getWidth(), shown.getWidth(), 1) << "the window is as large as what it shows";
            EXPECT_NEAR (rig.window().getHeight(), shown.getHeight(), 1);
            const bool fits = size.width * 100 / zoom >= SordelinMainView::smallestWidth
                              && size.width * 100 / zoom <= SordelinMainView::largestWidth
                              && size.height * 100 / zoom >= SordelinMainView::smallestHeight
                              && size.height * 100 / zoom <= SordelinMainView::largestHeight;
            if (fits)
            {
                EXPECT_NEAR (rig.window().getWidth(), size.width, 2);
                EXPECT_NEAR (rig.window().getHeight(), size.height, 2);
            }
        }
    }
    // A host that will have none of it: the zoom changes, and the host goes back to the size it had.
    rig.view().setZoom (100);
    rig.window().setSize (960, 480);
    for (int i = 0; i < 3; ++i)
    {
        rig.view().setZoom (200);
        rig.window().setSize (960, 480);
        EXPECT_NEAR (rig.window().getWidth(), rig.view().getBoundsInParent().getWidth(), 1);
        rig.view().setZoom (100);
        rig.window().setSize (960, 480);
        EXPECT_EQ (rig.view().getWidth(), 960);
    }
}

TEST_F (Life, sizeAndLibrarianComeBackTheNextDay)
{
    rig.window().setSize (1100, 610);
    rig.click ("SHOW BANK LIBRARIAN");
    rig.find ("librarian").setBounds (330, 40, 700, 500);
    rig.close(); // at once
    rig.restart();
    rig.open();
    EXPECT_EQ (rig.window().getWidth(), 1100);
    EXPECT_EQ (rig.window().getHeight(), 610);
    ASSERT_NE (rig.look ("librarian"), nullptr);
    EXPECT_EQ (rig.placeOf ("librarian"), juce::Rectangle<int> (330, 40, 700, 500));

    rig.click ("SHOW BANK LIBRARIAN");
    rig.restart();
    rig.open();
    EXPECT_EQ (rig.look ("librarian"), nullptr);

    rig.core().getShelf().getProperties().setString (
        "dimension_settings", "<xml_wrapper>\n<main_window_rect width=\"99999\" height=\"-4\" />\n</xml_wrapper>\n");
    rig.restart();
    rig.open();
    EXPECT_GE (rig.window().getHeight(), SordelinMainView::smallestHeight) << "damaged";
    EXPECT_LE (rig.window().getWidth(), SordelinMainView::largestWidth);
}

TEST_F (Life, keptLayoutIsAppliedOnCommand)
{
    rig.window().setSize (1200, 640);
    rig.click ("MENU");
    rig.choose ("Keep this window layout");
    rig.window().setSize (800, 420);
    rig.click ("MENU");
    rig.choose ("Back to the kept layout");
    EXPECT_EQ (rig.window().getWidth(), 1200);
    EXPECT_EQ (rig.window().getHeight(), 640);
}

TEST_F (Life, heldKeysOfferTheApplicationReset)
{
    const ShownBox question { "Application Reset",
                              "You have selected option to clear all Sordelin persistent settings, including "
                              "application registration key.  Are you sure you wish to proceed?",
                              { "Yes", "No" } };
    const auto foreign = rig.files().home().getChildFile ("other.settings");
    foreign.create();
    foreign.replaceWithText ("not ours");
    rig.click ("SAVE PRESET AS");
    rig.type ("Mine");
    rig.click ("Apply");
    const auto added = rig.files().writeBank ("Added");
    rig.plugin().banks().addBankFile (-1, added);
    rig.core().setVoices (4);
    rig.core().setPlayMode (SordelinSettings::polyMode);
    rig.core().setPlayHostNotes (true);
    rig.view().setTooltipsShown (true);
    rig.window().setSize (1200, 640);
    rig.view().setZoom (150);

    const auto settings = [&]
    {
        const auto& stored = rig.core().getSettings();
        return std::vector<int> { stored.getVoices(),
                                  stored.getPlayMode(),
                                  stored.getZoom(),
                                  stored.getPlayHostNotes(),
                                  stored.getShowHelp(),
                                  rig.view().getWidth(),
                                  rig.core().isPlayingHostNotes(),
                                  rig.plugin().banks().getBankCount() };
    };
    const auto changed = settings();
    const std::vector<int> fresh { 16, SordelinSettings::monoMode, 100, 0, 0, SordelinMainView::defaultWidth, 0, 2 };
    EXPECT_NE (changed, fresh);

    const auto openWithKeys = [&] (bool held)
    {
        rig.restart();
        rig.view().areResetKeysHeld = [held] { return held; };
        rig.load (WindowRig::rigBank, slotSine);
        rig.open();
        WindowRig::run (0.2);
    };
    openWithKeys (false);
    EXPECT_EQ (rig.box(), ShownBox {});
    openWithKeys (true);
    EXPECT_EQ (rig.box(), question);
    rig.click ("No");
    EXPECT_EQ (settings(), changed);

    openWithKeys (true);
    rig.click ("Yes");
    WindowRig::run (0.2);
    EXPECT_EQ (rig.box(), ShownBox {});
    EXPECT_EQ (settings(), fresh);
    rig.settle();
    rig.core().getKeyboardState().noteOn (1, 69, 0.8F);
    EXPECT_NEAR (pitchOf (rig.plugin().render (8192)), sinePitch, pitchTolerance) << "the patch plays on";
    EXPECT_EQ (rig.window().getWidth(), SordelinMainView::defaultWidth);

    openWithKeys (false);
    EXPECT_EQ (settings(), fresh) << "the next day";
    EXPECT_EQ (foreign.loadFileAsString(), "not ours");
    EXPECT_TRUE (added.existsAsFile());
    EXPECT_TRUE (rig.files().preset ("Mine").existsAsFile());
    EXPECT_EQ (rig.as<juce::ComboBox> ("PRESET").getNumItems(), 1);
}

TEST_F (Life, whatItCosts)
{
    rig.close();
    double longest = 0.0;
    for (int i = 0; i < 5; ++i)
    {
        const double before = juce::Time::getMillisecondCounterHiRes();
        rig.open (false);
        const double opened = juce::Time::getMillisecondCounterHiRes() - before - 50.0; // open runs for 50 ms
        rig.close();
        longest = std::max (longest, opened);
    }
    rig.restart();
    const double before = juce::Time::getMillisecondCounterHiRes();
    std::unique_ptr<juce::AudioProcessorEditor> first (rig.processor().createEditor());
    const double firstOpening = juce::Time::getMillisecondCounterHiRes() - before;
    first.reset();

    rig.load (WindowRig::rigBank, slotSine);
    rig.core().getKeyboardState().noteOn (1, 57, 0.8F);
    rig.processor().setNonRealtime (false);
    AudioThread audio (rig.processor(), AudioThread::Pace::realTime);
    const auto share = [] (double seconds)
    {
        const auto used = processorSeconds();
        WindowRig::run (seconds);
        return 100.0 * (processorSeconds() - used) / seconds;
    };
    const double closed = share (2.0);
    rig.open();
    std::string report;
    double dearest = 0.0;
    for (const int mode : { 0, 1, 2, 3, 4, 7 })
    {
        rig.core().setVisualiser (mode);
        WindowRig::run (0.3);
        const double cost = share (1.5) - closed;
        dearest = std::max (dearest, cost);
        report += " view " + std::to_string (mode) + ": " + std::to_string (cost).substr (0, 4) + " %";
    }
    rig.close();
    const double closedAgain = share (2.0);
    std::cout << "first opening " << firstOpening << " ms, further ones at most " << longest << " ms; one core: closed "
              << closed << " %, then" << report << " more, closed again " << closedAgain << " %\n";
    if (MV_TEST_SANITIZED == 0)
    {
        EXPECT_LT (firstOpening, 500.0);
        EXPECT_LT (dearest, 60.0);
        EXPECT_LT (closedAgain, closed + 10.0) << "a closed window costs nothing";
    }
}

} // namespace morvanelab::test
