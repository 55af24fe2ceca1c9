// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/ThemePicture.h"
#include "ui/MVMidiKeyboard.h"

#include <set>
#include <string>

namespace morvanelab
{

using enum MVThemeColour;

namespace
{

/** Writes down what happens on a keyboard state: "+60" and "-60". */
struct NoteRecorder : juce::MidiKeyboardState::Listener
{
    void handleNoteOn (juce::MidiKeyboardState*, int, int key, float velocity) override
    {
        note ('+', key);
        velocities.push_back (velocity);
    }
    void handleNoteOff (juce::MidiKeyboardState*, int, int key, float) override { note ('-', key); }
    void note (char sign, int key) { log.append (1, sign).append (std::to_string (key)).append (1, ' '); }
    std::string take() { return std::exchange (log, {}); }

    std::string log;
    std::vector<float> velocities;
};

/** A keyboard whose computer keys are pressed by the test. */
struct TestKeyboard : MVMidiKeyboard
{
    using MVMidiKeyboard::MVMidiKeyboard;
    bool isComputerKeyDown (int code) const override { return down.count (code) > 0; }
    void hit (char code)
    {
        down.insert (code);
        keyStateChanged (true);
    }
    void lift (char code)
    {
        down.erase (code);
        keyStateChanged (false);
    }

    std::set<int> down;
};

struct Keyboard : ThemeTest
{
    Keyboard() { state.addListener (&notes); }
    ~Keyboard() override
    {
        keyboard.reset();
        state.removeListener (&notes);
    }

    static std::unique_ptr<TestKeyboard> make (juce::MidiKeyboardState& keyboardState, int width = 700)
    {
        auto made = std::make_unique<TestKeyboard> (keyboardState);
        made->setSize (width, MVMidiKeyboard::usualHeight);
        made->setVisible (true);
        return made;
    }
    juce::MouseEvent mouseAt (juce::Point<int> position) const
    {
        return { juce::Desktop::getInstance().getMainMouseSource(),
                 position.toFloat(),
                 juce::ModifierKeys::leftButtonModifier,
                 0.0F,
                 0.0F,
                 0.0F,
                 0.0F,
                 0.0F,
                 keyboard.get(),
                 keyboard.get(),
                 {},
                 position.toFloat(),
                 {},
                 1,
                 true };
    }
    void pressAt (juce::Point<int> position) { keyboard->mouseDown (mouseAt (position)); }
    void dragTo (juce::Point<int> position) { keyboard->mouseDrag (mouseAt (position)); }
    void lift() { keyboard->mouseUp (mouseAt ({})); }
    /** A point on a key that no other key covers. */
    juce::Point<int> on (int key) const
    {
        return keyboard->boundsOfKey (key).getCentre().withY (keyboard->boundsOfKey (key).getBottom() - 3);
    }

    juce::MidiKeyboardState state;
    NoteRecorder notes;
    std::unique_ptr<TestKeyboard> keyboard = make (state);
};

} // namespace

TEST_F (Keyboard, findsEveryKeyWhereItIsDrawn)
{
    for (const int width : { 300, 440, 700, 1100, 1400 })
        for (const int zoom : { 1, 2 })
        {
            const auto shown = make (state, width);
            const auto image = pictureOf (*shown, static_cast<float> (zoom));
            int count = 0;
            for (int key = 0; key < 128; ++key)
            {
                const auto bounds = shown->boundsOfKey (key);
                if (bounds.isEmpty())
                    continue;
                ++count;
                EXPECT_TRUE (shown->getLocalBounds().contains (bounds)) << key << " at " << width;
                const bool black = juce::MidiMessage::isMidiNoteBlack (key);
                // The front of a white key, the middle of a black one.
                const auto place = bounds.getCentre().withY (black ? 12 : 31);
                EXPECT_EQ (shown->keyAt (place), key) << width;
                EXPECT_LE (distance (image.getPixelAt (place.x * zoom, place.y * zoom),
                                     themeColour (black ? blackKey : whiteKey)),
                           30)
                    << key << " at " << width;
            }
            EXPECT_GE (count, 24) << width;
            EXPECT_EQ (count == 128, width >= 1100) << width;
            EXPECT_FALSE (shown->boundsOfKey (60).isEmpty()) << width;
        }
}

TEST_F (Keyboard, hasWhiteKeysOfOneWidthSideBySide)
{
    int last = -1;
    int least = 1000;
    int most = 0;
    for (int key = 0; key < 128; ++key)
    {
        const auto bounds = keyboard->boundsOfKey (key);
        if (bounds.isEmpty() || juce::MidiMessage::isMidiNoteBlack (key))
            continue;
        EXPECT_TRUE (last < 0 || bounds.getX() == last) << key;
        last = bounds.getRight();
        least = std::min (least, bounds.getWidth());
        most = std::max (most, bounds.getWidth());
    }
    EXPECT_LE (most - least, 1);
    EXPECT_GE (least, 10);
}

TEST_F (Keyboard, showsTheNotesOfEveryone)
{
    const auto lit = [&] (int key)
    {
        const auto place = on (key);
        return distance (pictureOf (*keyboard).getPixelAt (place.x, place.y), themeColour (keySounding)) < 40;
    };
    EXPECT_FALSE (lit (62));
    state.noteOn (5, 62, 1.0F);
    state.noteOn (9, 62, 1.0F);
    EXPECT_TRUE (lit (62));
    EXPECT_FALSE (lit (64));
    state.noteOff (5, 62, 0.0F);
    EXPECT_TRUE (lit (62));
    state.noteOff (9, 62, 0.0F);
    EXPECT_FALSE (lit (62));

    state.noteOn (3, 64, 1.0F);
    keyboard = make (state); // one that comes later sees what sounds already
    EXPECT_TRUE (lit (64));
}

TEST_F (Keyboard, playsLouderFurtherDown)
{
    const auto bounds = keyboard->boundsOfKey (60);
    for (const int y : { 30, 36, 42 })
    {
        pressAt ({ bounds.getX() + 2, y });
        lift();
    }
    EXPECT_EQ (notes.take(), "+60 -60 +60 -60 +60 -60 ");
    ASSERT_EQ (notes.velocities.size(), 3U);
    EXPECT_LT (notes.velocities[0], notes.velocities[1]);
    EXPECT_LT (notes.velocities[1], notes.velocities[2]);
    EXPECT_GT (notes.velocities[2], 0.97F);
    notes.velocities.clear();
    pressAt ({ keyboard->boundsOfKey (61).getCentreX(), 0 });
    EXPECT_EQ (notes.take(), "+61 ");
    EXPECT_GT (notes.velocities[0], 0.1F);
    EXPECT_LT (notes.velocities[0], 0.3F);
}

TEST_F (Keyboard, glidesFromKeyToKey)
{
    pressAt (on (60));
    dragTo (on (60));
    dragTo (on (62));
    dragTo ({ keyboard->boundsOfKey (63).getCentreX(), 5 });
    EXPECT_EQ (notes.take(), "+60 -60 +62 -62 +63 ");
    dragTo ({ keyboard->boundsOfKey (63).getCentreX(), -40 }); // over the back edge the finger stays on the key
    EXPECT_EQ (notes.take(), "");
    dragTo ({ -5, 20 }); // past the end there is none
    EXPECT_EQ (notes.take(), "-63 ");
    dragTo (on (64));
    lift();
    lift();
    EXPECT_EQ (notes.take(), "+64 -64 ");
    dragTo (on (60)); // without a button nothing plays
    EXPECT_EQ (notes.take(), "");
}

TEST_F (Keyboard, playsTheComputersKeys)
{
    const std::string keys = "AWSEDFTGYHUJKOLP";
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        keyboard->hit (keys[i]);
        keyboard->keyStateChanged (true); // repetition of the same key
        keyboard->lift (keys[i]);
        NoteRecorder expected;
        expected.note ('+', 60 + static_cast<int> (i));
        expected.note ('-', 60 + static_cast<int> (i));
        EXPECT_EQ (notes.take(), expected.take());
    }
    keyboard->hit ('A');
    keyboard->hit ('D');
    EXPECT_EQ (notes.take(), "+60 +64 ");
    keyboard->lift ('A');
    keyboard->lift ('D');
    EXPECT_EQ (notes.take(), "-60 -64 ");
}

TEST_F (Keyboard, movesByOctavesAndEndsNotesWhereTheyBegan)
{
    keyboard->hit ('S');
    EXPECT_TRUE (keyboard->keyPressed (juce::KeyPress ('x')));
    EXPECT_EQ (keyboard->computerBaseKey(), 72);
    keyboard->hit ('A');
    keyboard->lift ('S');
    keyboard->lift ('A');
    EXPECT_EQ (notes.take(), "+62 +72 -62 -72 ");
    EXPECT_FALSE (keyboard->boundsOfKey (72).isEmpty());
    for (int i = 0; i < 12; ++i)
        EXPECT_TRUE (keyboard->keyPressed (juce::KeyPress ('z')));
    EXPECT_EQ (keyboard->computerBaseKey(), 0);
    EXPECT_FALSE (keyboard->boundsOfKey (0).isEmpty()); // the picture follows
    for (int i = 0; i < 12; ++i)
        keyboard->keyPressed (juce::KeyPress ('X'));
    EXPECT_LE (keyboard->computerBaseKey() + 15, 127);
    keyboard->hit ('P');
    keyboard->lift ('P');
    EXPECT_EQ (notes.take(), "+123 -123 ");
}

TEST_F (Keyboard, leavesOtherKeysToTheHost)
{
    EXPECT_TRUE (keyboard->keyPressed (juce::KeyPress ('a')));
    for (const int code : { static_cast<int> ('q'), static_cast<int> ('1'), static_cast<int> (juce::KeyPress::spaceKey),
                            static_cast<int> (juce::KeyPress::F1Key), static_cast<int> (juce::KeyPress::leftKey),
                            static_cast<int> (juce::KeyPress::deleteKey) })
        EXPECT_FALSE (keyboard->keyPressed (juce::KeyPress (code))) << code;
    EXPECT_FALSE (keyboard->keyPressed (juce::KeyPress ('s', juce::ModifierKeys::ctrlModifier, 0)));
    EXPECT_FALSE (keyboard->keyPressed (juce::KeyPress ('z', juce::ModifierKeys::altModifier, 0)));
    EXPECT_EQ (keyboard->computerBaseKey(), 60);
    juce::ModifierKeys::currentModifiers = juce::ModifierKeys::ctrlModifier;
    keyboard->hit ('S'); // saves something, perhaps
    EXPECT_EQ (notes.take(), "");
    juce::ModifierKeys::currentModifiers = {};
    keyboard->lift ('S');
}

TEST_F (Keyboard, wantsTheFocusOnlyAfterAClickOnAKey)
{
    int givenBack = 0;
    keyboard->onFocusGivenBack = [&] { ++givenBack; };
    EXPECT_FALSE (keyboard->getWantsKeyboardFocus());
    EXPECT_FALSE (keyboard->getMouseClickGrabsKeyboardFocus());
    for (const int code :
         { static_cast<int> (juce::KeyPress::escapeKey), static_cast<int> (juce::KeyPress::returnKey) })
    {
        pressAt (on (60));
        EXPECT_TRUE (keyboard->getWantsKeyboardFocus());
        lift();
        EXPECT_TRUE (keyboard->getWantsKeyboardFocus());
        EXPECT_TRUE (keyboard->keyPressed (juce::KeyPress (code)));
        EXPECT_FALSE (keyboard->getWantsKeyboardFocus());
    }
    EXPECT_EQ (givenBack, 2);
    pressAt (on (60));
    keyboard->focusLost (juce::Component::focusChangedDirectly);
    EXPECT_FALSE (keyboard->getWantsKeyboardFocus());
}

TEST_F (Keyboard, letsGoOfEverythingWhenItCannotPlayOn)
{
    const std::vector<std::pair<const char*, std::function<void()>>> ends {
        { "focus lost", [&] { keyboard->focusLost (juce::Component::focusChangedByMouseClick); } },
        { "escape", [&] { keyboard->keyPressed (juce::KeyPress (juce::KeyPress::escapeKey)); } },
        { "disabled", [&] { keyboard->setEnabled (false); } },
        { "parent disabled",
          [&]
          {
              juce::Component parent;
              parent.addAndMakeVisible (*keyboard);
              keyboard->setEnabled (true);
              parent.setEnabled (false);
              parent.removeChildComponent (keyboard.get());
          } },
        { "hidden", [&] { keyboard->setVisible (false); } },
        { "deleted", [&] { keyboard.reset(); } },
    };
    for (const auto& [name, end] : ends)
    {
        keyboard = make (state);
        pressAt (on (60));
        keyboard->hit ('S');
        notes.take();
        end();
        EXPECT_EQ (notes.take(), "-60 -62 ") << name;
        if (keyboard == nullptr)
            continue;
        lift();
        keyboard->lift ('S');
        EXPECT_EQ (notes.take(), "") << name;
    }
    keyboard = make (state);
    keyboard->setEnabled (false);
    pressAt (on (60));
    keyboard->hit ('A');
    EXPECT_EQ (notes.take(), "");
    EXPECT_FALSE (keyboard->getWantsKeyboardFocus());
}

TEST_F (Keyboard, endsANoteWhenTheLastOfItsFingersIsUp)
{
    pressAt (on (60));
    keyboard->hit ('A');
    lift();
    EXPECT_EQ (notes.take(), "+60 ");
    keyboard->lift ('A');
    EXPECT_EQ (notes.take(), "-60 ");
    keyboard->hit ('A');
    keyboard->releaseAll();
    keyboard->releaseAll();
    EXPECT_EQ (notes.take(), "+60 -60 ");
}

TEST_F (Keyboard, movesThroughTheRangeWhereItDoesNotFit)
{
    const int first = keyboard->firstVisibleKey();
    pressAt ({ 3, 20 });
    lift();
    EXPECT_EQ (keyboard->firstVisibleKey(), first - 12);
    pressAt ({ keyboard->getWidth() - 3, 20 });
    lift();
    EXPECT_EQ (keyboard->firstVisibleKey(), first);
    EXPECT_EQ (notes.take(), "");

    juce::MouseWheelDetails wheel {};
    wheel.deltaY = 0.5F;
    keyboard->mouseWheelMove (mouseAt ({ 100, 20 }), wheel);
    EXPECT_GT (keyboard->firstVisibleKey(), first);

    for (const int key : { -5, 0, 61, 127, 500 })
    {
        keyboard->showFrom (key);
        EXPECT_EQ (keyboard->firstVisibleKey() == 0, key <= 0) << key;
        EXPECT_FALSE (keyboard->boundsOfKey (key > 100 ? 127 : juce::jlimit (0, 60, key)).isEmpty()) << key;
    }
}

TEST_F (Keyboard, namesTheOctavesAndWithTheFocusTheLetters)
{
    // Middle C is the fourth; nothing is written on the D beside it.
    const auto labelOf = [&] (int key)
    { return keyboard->boundsOfKey (key).withTop (31).withHeight (10).reduced (1, 0); };
    const auto image = pictureOf (*keyboard);
    EXPECT_GT (countColour (image, labelOf (60), themeColour (keyLabel), 60), 6);
    EXPECT_EQ (countColour (image, labelOf (62), themeColour (keyLabel), 60), 0);
}

TEST_F (Keyboard, tellsWhyItIsOff)
{
    keyboard->setEnabled (false);
    const auto image = pictureOf (*keyboard);
    EXPECT_GT (countColour (image, juce::Colour (0xFF969696), 0), image.getWidth() * image.getHeight() * 8 / 10);
    int firstInk = image.getWidth();
    for (int x = 0; x < image.getWidth() && firstInk == image.getWidth(); ++x)
        if (countColour (image, { x, 0, 1, image.getHeight() }, juce::Colour (0xFF969696), 40) < image.getHeight())
            firstInk = x;
    EXPECT_NEAR (firstInk, 11, 2); // the text begins ten pixels in
}

TEST_F (Keyboard, standsEverySize)
{
    for (const auto& [width, height] :
         { std::pair { 0, 0 }, { 1, 1 }, { 5, 43 }, { 28, 43 }, { 29, 43 }, { 3000, 10 }, { 40, 900 } })
    {
        keyboard->setSize (width, height);
        for (int x = -1; x <= width; x += 7)
            EXPECT_LT (keyboard->keyAt ({ x, height / 2 }), 128);
        if (width > 0)
            pictureOf (*keyboard);
        pressAt ({ width / 2, height / 2 });
        lift();
    }
    const auto played = notes.take();
    EXPECT_EQ (std::count (played.begin(), played.end(), '+'), std::count (played.begin(), played.end(), '-'));
}

/** In a real window: the focus as the toolkit and the display see it. */
TEST_F (Keyboard, takesTheFocusOfAWindowByAClickAlone)
{
    if (! screen.isThere())
        GTEST_SKIP() << "no display";
    juce::Component window;
    juce::TextEditor editor;
    window.setBounds (50, 50, 720, 120);
    window.addAndMakeVisible (*keyboard);
    window.addAndMakeVisible (editor);
    editor.setBounds (0, 60, 200, 24);
    window.setVisible (true);
    window.addToDesktop (0);
    ASSERT_TRUE (keyboard->isShowing());

    editor.setWantsKeyboardFocus (false);
    window.grabKeyboardFocus();
    EXPECT_FALSE (keyboard->hasKeyboardFocus (false));
    pressAt (on (60));
    EXPECT_TRUE (keyboard->hasKeyboardFocus (false));
    keyboard->hit ('S');
    keyboard->keyPressed (juce::KeyPress (juce::KeyPress::returnKey));
    EXPECT_FALSE (keyboard->hasKeyboardFocus (false));
    EXPECT_EQ (notes.take(), "+60 +62 -60 -62 ");

    lift();
    keyboard->down.clear();
    pressAt (on (64));
    editor.setWantsKeyboardFocus (true);
    editor.grabKeyboardFocus();
    EXPECT_TRUE (editor.hasKeyboardFocus (true));
    EXPECT_EQ (notes.take(), "+64 -64 ");

    lift();
    pressAt (on (65));
    window.setVisible (false); // its own flag does not change, yet it is out of sight
    EXPECT_EQ (notes.take(), "+65 -65 ");
    window.setVisible (true);
    lift();
    pressAt (on (67));
    window.removeChildComponent (keyboard.get()); // as when an editor closes and its view lives on
    EXPECT_EQ (notes.take(), "+67 -67 ");
}

} // namespace morvanelab
