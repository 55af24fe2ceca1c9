// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVMidiKeyboard.h"

namespace morvanelab
{

namespace
{

constexpr int firstKey = 24; ///< C1
constexpr int lastKey = 108; ///< C8
constexpr int channel = 1;
constexpr int framesPerSecond = 30;
constexpr float softest = 0.25F;

constexpr int semitones = 12;
constexpr int whitesInOctave = 7;
constexpr std::array<bool, semitones> isBlackInOctave { false, true,  false, true,  false, false,
                                                        true,  false, true,  false, true,  false };
/** White keys below each key of an octave. */
constexpr std::array<int, semitones> whitesBelow { 0, 1, 1, 2, 2, 3, 4, 4, 5, 5, 6, 6 };

const juce::Colour whiteColour { 0xFFF2F0EA };
const juce::Colour blackColour { 0xFF202226 };
const juce::Colour soundingColour { 0xFFE8A23D };
const juce::Colour edgeColour { 0xFF8A8A8A };
const juce::Colour disabledColour { 0xFF969696 };

std::size_t inOctave (int key) { return static_cast<std::size_t> (key % semitones); }
bool isBlack (int key) { return isBlackInOctave[inOctave (key)]; }
int whiteIndex (int key) { return key / semitones * whitesInOctave + whitesBelow[inOctave (key)]; }

} // namespace

MVMidiKeyboard::MVMidiKeyboard (juce::MidiKeyboardState& stateToUse) : state (stateToUse)
{
    // A click here must not take the host's own keyboard away.
    setWantsKeyboardFocus (false);
    setMouseClickGrabsKeyboardFocus (false);
    state.addListener (this);
}

MVMidiKeyboard::~MVMidiKeyboard()
{
    release();
    state.removeListener (this);
}

juce::Rectangle<int> MVMidiKeyboard::boundsOfKey (int key) const
{
    if (key < firstKey || key > lastKey)
        return {};
    const int firstWhite = whiteIndex (firstKey);
    const int whites = whiteIndex (lastKey) - firstWhite + 1;
    const double width = static_cast<double> (getWidth()) / whites;
    const double left = (whiteIndex (key) - firstWhite) * width;
    if (! isBlack (key))
        return { juce::roundToInt (left), 0, juce::roundToInt (left + width) - juce::roundToInt (left), getHeight() };
    const double blackWidth = width * 0.6;
    return { juce::roundToInt (left - blackWidth / 2), 0, juce::roundToInt (blackWidth), getHeight() * 3 / 5 };
}

int MVMidiKeyboard::keyAt (juce::Point<int> position) const
{
    int found = -1;
    for (int key = firstKey; key <= lastKey; ++key)
        if (boundsOfKey (key).contains (position) && (found < 0 || isBlack (key)))
            found = key;
    return found;
}

void MVMidiKeyboard::paint (juce::Graphics& graphics)
{
    if (! isEnabled())
    {
        graphics.fillAll (disabledColour);
        graphics.setColour (juce::Colours::black);
        graphics.drawText ("Loaded patch not keyboard enabled.", getLocalBounds().withTrimmedLeft (10),
                           juce::Justification::centredLeft);
        return;
    }
    paintKeys (graphics, false);
    paintKeys (graphics, true);
}

void MVMidiKeyboard::paintKeys (juce::Graphics& graphics, bool black)
{
    for (int key = firstKey; key <= lastKey; ++key)
    {
        if (isBlack (key) != black)
            continue;
        const auto bounds = boundsOfKey (key);
        const bool on = sounding[static_cast<std::size_t> (key)].load();
        graphics.setColour (on ? soundingColour : black ? blackColour : whiteColour);
        graphics.fillRect (bounds);
        graphics.setColour (edgeColour);
        graphics.drawRect (bounds);
    }
}

void MVMidiKeyboard::playAt (const juce::MouseEvent& event)
{
    const int key = isEnabled() ? keyAt (event.getPosition()) : -1;
    if (key == playedKey)
        return;
    release();
    if (key < 0)
        return;
    playedKey = key;
    const auto depth =
        static_cast<float> (event.y) / static_cast<float> (juce::jmax (1, boundsOfKey (key).getHeight()));
    state.noteOn (channel, key, juce::jlimit (softest, 1.0F, depth));
}

void MVMidiKeyboard::release()
{
    if (playedKey >= 0)
        state.noteOff (channel, playedKey, 0.0F);
    playedKey = -1;
}

void MVMidiKeyboard::visibilityChanged()
{
    if (isVisible())
        startTimerHz (framesPerSecond);
    else
        stopTimer();
}

void MVMidiKeyboard::enablementChanged()
{
    release();
    repaint();
}

void MVMidiKeyboard::timerCallback()
{
    if (changed.exchange (false))
        repaint();
}

void MVMidiKeyboard::handleNoteOn (juce::MidiKeyboardState*, int, int key, float)
{
    sounding[static_cast<std::size_t> (key)] = true;
    changed = true;
}

void MVMidiKeyboard::handleNoteOff (juce::MidiKeyboardState*, int, int key, float)
{
    sounding[static_cast<std::size_t> (key)] = false;
    changed = true;
}

} // namespace morvanelab
