// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plugin/CoreRig.h"
#include "plugin/SordelinMainView.h"
#include "window/CountBank.h"

#include "host/EditorWindow.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace morvanelab::test
{

using Texts = std::vector<std::string>;

/** Remembers what a plug-in tells its host: "begin 0", "value 0", "end 0", values apart. Any thread. */
class HostLog : public juce::AudioProcessorListener
{
public:
    void audioProcessorParameterChanged (juce::AudioProcessor*, int index, float value) override;
    void audioProcessorChanged (juce::AudioProcessor*, const ChangeDetails&) override {}
    void audioProcessorParameterChangeGestureBegin (juce::AudioProcessor*, int index) override;
    void audioProcessorParameterChangeGestureEnd (juce::AudioProcessor*, int index) override;

    /** What came since the last call; values that follow each other count once. */
    Texts take();
    float lastValue() const;

private:
    void add (const std::string& event);

    mutable std::mutex lock;
    Texts events;
    float value = -1.0F;
};

/** A box as it shows. */
struct ShownBox
{
    std::string title;
    std::string text;
    Texts buttons;

    bool operator== (const ShownBox&) const = default;
};

/** Prints a box in messages of tests. */
void PrintTo (const ShownBox& box, std::ostream* out);

/** A plug-in and its window in a small host of one thread: mouse and keys come in where the window system hands them
    to the toolkit, and messages are delivered while the rig runs. Bank 0, "Counts", is that of CountBank.h; bank 1 is
    that of RigBank.h. Controls are found by component id among what is visible; what is not found raises
    std::runtime_error. One at a time. */
class WindowRig
{
public:
    WindowRig();
    ~WindowRig();

    static bool hasDisplay();

    // Plug-in ------------------------------------------------------------------------------------------------

    CorePlugin& plugin() { return *instance; }
    SordelinMainComponent& core() { return instance->core(); }
    SordelinMainView& view() { return core().getView(); }
    SordelinAudioProcessor& processor() { return instance->processor; }
    CoreRig& files() { return rig; }
    HostLog& host() { return log; }
    /** Another one with the same home, as on the next day; its window is closed. */
    void restart();
    static constexpr int countBank = 0;
    static constexpr int rigBank = 1;
    /** Loads a slot and waits until it plays and shows. */
    void load (int bank, int slot);
    void loadCount (int parameters) { load (countBank, slotOfCount (parameters)); }
    /** Runs audio until what is under way in the engine has ended; delivers messages. */
    void settle();
    /** Runs a block with that MIDI; delivers messages. */
    void send (const juce::MidiMessage& message);

    // Window -------------------------------------------------------------------------------------------------

    /** Opens the editor; on the screen, or as an object only. */
    void open (bool onScreen = true);
    void close();
    bool isOpen() const { return editor != nullptr; }
    juce::AudioProcessorEditor& window() { return *editor; }

    juce::Component* look (const juce::String& id);
    juce::Component& find (const juce::String& id);
    template <typename Control>
    Control& as (const juce::String& id)
    {
        return dynamic_cast<Control&> (find (id));
    }
    juce::Button& button (const juce::String& id) { return as<juce::Button> (id); }
    MVKnob& knob (int slot) { return as<MVKnob> ("PARAMETER " + juce::String (slot + 1)); }
    /** Where a control stands in the view. */
    juce::Rectangle<int> placeOf (const juce::String& id);
    /** The box that shows; all empty if there is none. */
    ShownBox box();

    // User ---------------------------------------------------------------------------------------------------

    void click (juce::Component& component, juce::ModifierKeys button = juce::ModifierKeys::leftButtonModifier);
    void click (const juce::String& id) { click (find (id)); }
    void clickAt (juce::Component& component, juce::Point<int> where, int times = 1);
    /** Clicks what takes the keyboard, and waits until it has it. */
    void focus (const juce::String& id);
    void waitForFocus (const juce::String& id);
    /** What has the keyboard: "" for nothing of the plug-in's, else id, name and class. */
    static std::string focused();
    /** Presses the mouse in the middle of a component and moves it; it stays down until drop. */
    void drag (juce::Component& component, juce::Point<int> by);
    void dragFrom (juce::Component& component, juce::Point<int> from, juce::Point<int> by);
    void drop();
    void type (const juce::String& text);
    void press (int keyCode);
    /** What can be chosen in the menus that show, in order; ticked items end in " *", headers in " -". */
    Texts menu();
    /** Chooses an item of the menu that shows; opens the submenu if it is one. */
    void choose (const juce::String& item);

    // Time ---------------------------------------------------------------------------------------------------

    /** Delivers messages for a while. */
    static void run (double seconds);
    /** Delivers messages until the condition holds; false if that takes too long. */
    static bool runUntil (const std::function<bool()>& condition, double seconds = 10.0);

private:
    juce::ComponentPeer& peer();
    void takeScreenFocus();
    void mouse (juce::Point<float> inWindow, juce::ModifierKeys buttons);
    juce::Point<float> inWindow (juce::Component& component, juce::Point<int> where);

    const std::unique_ptr<host::HostDisplay> screen; ///< null without one
    CoreRig rig;
    HostLog log;
    std::unique_ptr<CorePlugin> instance;
    std::unique_ptr<juce::AudioProcessorEditor> editor;
    juce::Point<float> mousePlace;
    juce::int64 mouseTime = 0; ///< ms; its own, so that clicks are double clicks only where that is meant
};

/** A test of the window on a screen. */
class WindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (! WindowRig::hasDisplay())
            GTEST_SKIP() << "no display";
        rig.open();
    }

    WindowRig rig;
};

} // namespace morvanelab::test
