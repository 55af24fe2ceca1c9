// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVShowingWatch.h"
#include "ui/MVTheme.h"

#include <juce_audio_basics/juce_audio_basics.h>

#include <array>
#include <atomic>
#include <functional>

namespace morvanelab
{

/** A piano keyboard bound to a keyboard state: it shows the notes of whoever plays there, and plays itself by mouse and
    computer keyboard.

    Mouse: lower on a key is louder; dragging glides from key to key; the wheel and the strips at the ends move through
   the range where it does not fit. A click takes the keyboard focus; while it is here, A W S E D F T G Y H U J K O L P
   play an octave and a half from the key marked A, Z and X move that an octave down and up, Escape and Return give the
   focus back. Without a click it never takes the focus.

    It lets go of every note it holds when it is hidden, disabled, deleted or loses the focus.

    Message thread, but for the listener calls, which come on any thread and only set flags. */
class MVMidiKeyboard : public juce::Component, private juce::MidiKeyboardState::Listener, private juce::Timer
{
public:
    /** The MIDI channel of the notes played here. */
    static constexpr int channel = 1;
    /** The height it is drawn for. */
    static constexpr int usualHeight = 43;

    /** The state outlives the keyboard. */
    explicit MVMidiKeyboard (juce::MidiKeyboardState& stateToUse);
    ~MVMidiKeyboard() override;

    /** Called after Escape or Return has given the focus back. */
    std::function<void()> onFocusGivenBack;

    /** The key at a point of the keyboard, -1 where there is none. */
    int keyAt (juce::Point<int> position) const;
    /** Where a key lies; empty for a key that is not shown. */
    juce::Rectangle<int> boundsOfKey (int key) const;
    /** The white key at the left end. */
    int firstVisibleKey() const;
    /** Moves so that this key, or the white key below it, is the leftmost, as far as the range goes. */
    void showFrom (int key);
    /** The key played by "A". */
    int computerBaseKey() const { return baseKey; }
    /** Lets go of everything played here. */
    void releaseAll();

    void paint (juce::Graphics& graphics) override;
    void resized() override { showFrom (firstVisibleKey()); }
    void mouseDown (const juce::MouseEvent& event) override;
    void mouseDrag (const juce::MouseEvent& event) override;
    void mouseUp (const juce::MouseEvent& event) override;
    void mouseWheelMove (const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel) override;
    bool keyPressed (const juce::KeyPress& key) override;
    bool keyStateChanged (bool isKeyDown) override;
    void focusGained (FocusChangeType) override { repaint(); }
    void focusLost (FocusChangeType) override;
    void enablementChanged() override;
    void visibilityChanged() override;

protected:
    /** Whether a key of the computer is down now. */
    virtual bool isComputerKeyDown (int keyCode) const { return juce::KeyPress::isKeyCurrentlyDown (keyCode); }

private:
    static constexpr int numKeys = 128;
    static constexpr int computerKeyCount = 16;

    void handleNoteOn (juce::MidiKeyboardState*, int onChannel, int key, float velocity) override;
    void handleNoteOff (juce::MidiKeyboardState*, int onChannel, int key, float velocity) override;
    void timerCallback() override;
    void showingChanged (bool showing);

    /** How many white keys fit, and where. */
    struct Layout
    {
        int whites;
        int strip; ///< width of the strips at the ends; 0 when all keys fit
        double whiteWidth;
    };
    Layout layout() const;
    void paintOff (juce::Graphics& graphics) const;
    void paintKey (juce::Graphics& graphics, int key) const;
    void paintKeyText (juce::Graphics& graphics, int key, juce::Rectangle<int> bounds) const;
    void paintStrips (juce::Graphics& graphics) const;

    void press (int key, float velocity);
    void letGo (int key);
    void playAt (juce::Point<int> position);
    void moveBase (int semitones);
    void giveBackFocus();
    bool isSounding (int key) const;

    juce::MidiKeyboardState& state;
    std::array<std::atomic<std::uint16_t>, numKeys> sounding {}; ///< a bit a channel
    std::atomic<bool> changed { false };
    std::array<bool, numKeys> drawn {};         ///< what the last picture showed as sounding
    std::array<std::uint8_t, numKeys> holds {}; ///< how many fingers of ours are on a key
    std::array<int, computerKeyCount> held;     ///< the key each computer key plays, or none
    int mouseKey = -1;
    int mouseSource = -1;
    int firstWhite;
    int baseKey;
    MVShowingWatch watch { *this, [this] (bool showing) { showingChanged (showing); } };
};

} // namespace morvanelab
