// SPDX-License-Identifier: GPL-3.0-or-later
// The window of the built plug-in, through the interface of hosts.
#include "plugin/PluginRig.h"
#include "window/ScreenMouse.h"
#include "window/WindowRig.h"

#include "host/EditorWindow.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <numeric>
#include <set>

namespace morvanelab::test
{

namespace
{

/** The rig's plug-in takes the display away; this gives it back. */
class HostedWindow : public testing::Test
{
protected:
    HostedWindow()
    {
        if (const char* name = std::getenv ("DISPLAY"))
            display = name;
        rig = std::make_unique<PluginRig>();
    }
    ~HostedWindow() override { showDisplay(); }
    void showDisplay()
    {
        if (! display.empty())
            setenv ("DISPLAY", display.c_str(), 1);
    }
    static vst2::ERect* rectOf (host::VstInstance& instance)
    {
        vst2::ERect* rect = nullptr;
        instance.dispatch (vst2::effEditGetRect, 0, 0, &rect);
        return rect;
    }

    std::string display;
    std::unique_ptr<PluginRig> rig;
};

/** The part of the colours that differs, 0 to 1. */
double difference (const std::vector<std::uint32_t>& one, const std::vector<std::uint32_t>& other)
{
    if (one.size() != other.size() || one.empty())
        return 1.0;
    const auto same =
        std::inner_product (one.begin(), one.end(), other.begin(), std::size_t { 0 }, std::plus<>(), std::equal_to<>());
    return 1.0 - static_cast<double> (same) / static_cast<double> (one.size());
}

double millisecondsSince (std::chrono::steady_clock::time_point begin)
{
    return std::chrono::duration<double, std::milli> (std::chrono::steady_clock::now() - begin).count();
}

} // namespace

TEST_F (HostedWindow, sizeIsToldWithoutADisplay)
{
    auto instance = rig->open();
    const auto begin = std::chrono::steady_clock::now();
    const auto* rect = rectOf (*instance);
    std::cout << "size of the editor after " << millisecondsSince (begin) << " ms\n";
    ASSERT_NE (rect, nullptr);
    EXPECT_EQ (rect->right - rect->left, 960);
    EXPECT_EQ (rect->bottom - rect->top, 480);
    instance->start (44100.0, 512);
    rectOf (*instance);
    const auto sound = render (*instance, 2048);
    EXPECT_EQ (sound.left.size(), 2048U);
}

TEST_F (HostedWindow, opensPaintsAndCloses)
{
    if (display.empty())
        GTEST_SKIP() << "no display";
    showDisplay();
    host::HostDisplay screen;
    {
        auto instance = rig->openWithPatch (slotSine);
        render (*instance, 4096, { 512 }, { noteOn (60) });
        TempFolder pictures;
        for (int round = 0; round < 3; ++round)
        {
            const auto begin = std::chrono::steady_clock::now();
            host::EditorWindow window (*instance, screen);
            std::cout << "opened in " << millisecondsSince (begin) << " ms\n";
            window.idle (1.0);
            const auto path = pictures.file ("window" + std::to_string (round) + ".png");
            window.savePicture (path);
            const auto picture = juce::ImageFileFormat::loadFrom (juce::File (juce::String (path)));
            ASSERT_EQ (picture.getWidth(), 960);
            std::set<juce::uint32> colours;
            for (int y = 0; y < picture.getHeight(); y += 3)
                for (int x = 0; x < picture.getWidth(); x += 3)
                    colours.insert (picture.getPixelAt (x, y).getARGB());
            EXPECT_GT (colours.size(), 40U) << "round " << round;
        }
        const auto sound = render (*instance, 4096);
        EXPECT_GT (sound.peak(), 0.01) << "plays on without its window";
    }
    rig.reset(); // the plug-in goes before the display
}

TEST_F (HostedWindow, menusStayWhileTheHostHasTheKeyboard)
{
    if (display.empty())
        GTEST_SKIP() << "no display";
    showDisplay();
    host::HostDisplay screen;
    {
        auto instance = rig->openWithPatch (slotSquare); // no display that moves, no keys that sound
        host::EditorWindow window (*instance, screen);
        focusTopWindow (screen.native(), 500, 200);
        window.idle (0.5);
        constexpr int menuX = 210; // MENU, at the top of the left column
        constexpr int menuY = 14;
        const auto picture = [&] { return readScreen (screen.native(), 140, 40, 160, 60); };
        const auto before = picture();
        clickOnScreen (screen.native(), menuX, menuY);
        window.idle (0.1);
        window.idle (1.5);
        const double open = difference (picture(), before);
        EXPECT_GT (open, 0.3) << "the menu has gone by itself";
        clickOnScreen (screen.native(), 700, 300);
        window.idle (0.5);
        const double closed = difference (picture(), before);
        EXPECT_LT (closed, 0.1) << "a click beside it closes it";
    }
    rig.reset();
}

TEST_F (HostedWindow, tooltipsShowBeforeAnyClick)
{
    if (display.empty())
        GTEST_SKIP() << "no display";
    rig.reset();
    RigSettings settings;
    settings.showHelp = true;
    rig = std::make_unique<PluginRig> (settings);
    showDisplay();
    host::HostDisplay screen;
    {
        auto instance = rig->openWithPatch (slotSquare);
        host::EditorWindow window (*instance, screen);
        window.idle (0.3);
        const auto belowMenuButton = [&] { return readScreen (screen.native(), 210, 28, 60, 40); };
        const auto before = belowMenuButton();
        for (const int x : { 208, 209, 210 })
        {
            movePointer (screen.native(), x, 14);
            window.idle (0.1);
        }
        window.idle (1.2);
        EXPECT_GT (difference (belowMenuButton(), before), 0.3);
    }
    rig.reset();
}

TEST_F (HostedWindow, leavesTheKeyboardToTheHost)
{
    if (display.empty())
        GTEST_SKIP() << "no display";
    showDisplay();
    host::HostDisplay screen;
    {
        auto instance = rig->openWithPatch (slotSine); // has keys
        host::EditorWindow window (*instance, screen);
        constexpr int knobX = 600;
        constexpr int knobY = 150;
        focusTopWindow (screen.native(), knobX, knobY);
        const auto around = focusedWindow (screen.native());
        const auto inside = makeWindow (screen.native(), around, 0, 0);
        const auto elsewhere = makeWindow (screen.native(), 0, 1000, 500);
        struct Case
        {
            const char* name;
            unsigned long before;
            unsigned long after;
            bool managed;
            const char* key;
        };
        // Where there is a window manager, it gives the keyboard to the window that was clicked.
        for (const auto& row : { Case { "around ours", around, around, false, "Return" },
                                 Case { "a part of the host's", inside, inside, false, "Escape" },
                                 Case { "another", elsewhere, elsewhere, false, "Return" },
                                 Case { "managed around ours", around, around, true, "Escape" },
                                 Case { "a part of the managed one", inside, inside, true, "Return" },
                                 Case { "another, not the one clicked", elsewhere, around, true, "Escape" } })
        {
            SCOPED_TRACE (row.name);
            if (row.managed)
                markAsManaged (screen.native(), around);
            focusWindow (screen.native(), row.before);
            const auto click = [&] (int x, int y)
            {
                clickOnScreen (screen.native(), x, y);
                window.idle (0.2);
            };
            click (knobX, knobY);
            EXPECT_EQ (focusedWindow (screen.native()), row.after) << "after a click on the parameters";
            EXPECT_FALSE (hearsKeys (screen.native(), knobX, knobY)) << "what is typed goes on to the host";

            const auto menuPicture = [&] { return readScreen (screen.native(), 140, 40, 160, 60); };
            const auto before = menuPicture();
            click (210, 14);
            EXPECT_GT (difference (menuPicture(), before), 0.3) << "the menu shows";
            EXPECT_NE (focusedWindow (screen.native()), row.after) << "the menu has the keyboard";
            const auto press = [&] (const char* key)
            {
                pressOnScreen (screen.native(), key);
                window.idle (0.2);
                EXPECT_EQ (focusedWindow (screen.native()), row.after) << "after " << key;
            };
            press ("Escape");
            EXPECT_LT (difference (menuPicture(), before), 0.1) << "Escape closes the menu";

            click (600, 460);
            EXPECT_NE (focusedWindow (screen.native()), row.after) << "the keys on the screen have the keyboard";
            EXPECT_TRUE (hearsKeys (screen.native(), knobX, knobY));
            press (row.key);
        }
    }
    rig.reset();
}

} // namespace morvanelab::test
