// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_audio_basics/juce_audio_basics.h>
#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <atomic>

namespace morvanelab
{

/** A keyboard played with the mouse, bound to a keyboard state: it shows the notes of whoever else plays there.
    Message thread, but for the listener calls, which come on any thread and only set flags. */
class MVMidiKeyboard : public juce::Component, private juce::MidiKeyboardState::Listener, private juce::Timer
{
public:
    /** The state outlives the keyboard. */
    explicit MVMidiKeyboard (juce::MidiKeyboardState& stateToUse);
    ~MVMidiKeyboard() override;

    /** The key at a point of the keyboard, -1 outside. */
    int keyAt (juce::Point<int> position) const;
    /** Where a key lies; empty for a key that is not shown. */
    juce::Rectangle<int> boundsOfKey (int key) const;

    void paint (juce::Graphics& graphics) override;
    void mouseDown (const juce::MouseEvent& event) override { playAt (event); }
    void mouseDrag (const juce::MouseEvent& event) override { playAt (event); }
    void mouseUp (const juce::MouseEvent&) override { release(); }
    void visibilityChanged() override;
    void enablementChanged() override;

private:
    static constexpr int numKeys = 128;

    void handleNoteOn (juce::MidiKeyboardState*, int channel, int key, float velocity) override;
    void handleNoteOff (juce::MidiKeyboardState*, int channel, int key, float velocity) override;
    void timerCallback() override;
    void paintKeys (juce::Graphics& graphics, bool black);
    void playAt (const juce::MouseEvent& event);
    void release();

    juce::MidiKeyboardState& state;
    std::array<std::atomic<bool>, numKeys> sounding {};
    std::atomic<bool> changed { false };
    int playedKey = -1;
};

} // namespace morvanelab
