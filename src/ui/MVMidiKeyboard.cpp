// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVMidiKeyboard.h"

#include "ui/MVIcons.h"
#include "ui/MVPaint.h"

namespace morvanelab
{

namespace
{

using enum MVThemeColour;

constexpr int lastKey = 127;
constexpr int middleC = 60;
constexpr int firstShownAtStart = 36;
constexpr int framesPerSecond = 30;
constexpr float softest = 0.2F;
constexpr float computerVelocity = 0.8F;
constexpr int stripWidth = 14;
constexpr int narrowestWhite = 10;
constexpr double whiteShape = 0.34; ///< width of a white key to its height
constexpr double blackShape = 0.62; ///< width of a black key to a white one
constexpr int none = -1;

constexpr int semitones = 12;
constexpr int whitesInOctave = 7;
constexpr int allWhites = 75;
constexpr std::array<bool, semitones> isBlackInOctave { false, true,  false, true,  false, false,
                                                        true,  false, true,  false, true,  false };
/** White keys below each key of an octave. */
constexpr std::array<int, semitones> whitesBelow { 0, 1, 1, 2, 2, 3, 4, 4, 5, 5, 6, 6 };
constexpr std::array<int, whitesInOctave> whiteInOctave { 0, 2, 4, 5, 7, 9, 11 };

/** One semitone each from the base key up. */
constexpr std::string_view computerKeys = "AWSEDFTGYHUJKOLP";
constexpr int octaveDown = 'Z';
constexpr int octaveUp = 'X';
constexpr int lowestBase = 0;
constexpr int highestBase = 108;

std::size_t inOctave (int key) { return static_cast<std::size_t> (key % semitones); }
bool isBlack (int key) { return isBlackInOctave[inOctave (key)]; }
int whiteIndex (int key) { return key / semitones * whitesInOctave + whitesBelow[inOctave (key)]; }
int keyOfWhite (int white)
{
    return white / whitesInOctave * semitones + whiteInOctave[static_cast<std::size_t> (white % whitesInOctave)];
}
std::size_t at (int key) { return static_cast<std::size_t> (key); }
bool isKey (int key) { return key >= 0 && key <= lastKey; }

} // namespace

MVMidiKeyboard::MVMidiKeyboard (juce::MidiKeyboardState& stateToUse)
    : state (stateToUse), firstWhite (whiteIndex (firstShownAtStart)), baseKey (middleC)
{
    static_assert (computerKeys.size() == computerKeyCount);
    held.fill (none);
    // The focus comes by a click on a key alone, never because the window was clicked or came to the front.
    setWantsKeyboardFocus (false);
    setMouseClickGrabsKeyboardFocus (false);
    setOpaque (true);
    state.addListener (this);
    for (int key = 0; key < numKeys; ++key)
        for (int onChannel = 1; onChannel <= 16; ++onChannel)
            if (state.isNoteOn (onChannel, key))
                handleNoteOn (&state, onChannel, key, 0.0F);
}

MVMidiKeyboard::~MVMidiKeyboard()
{
    releaseAll();
    state.removeListener (this);
}

// ------------------------------------------------------------------------------------------------------ places

MVMidiKeyboard::Layout MVMidiKeyboard::layout() const
{
    const double wanted = juce::jmax (static_cast<double> (narrowestWhite), getHeight() * whiteShape);
    if (getWidth() >= wanted * allWhites)
        return { allWhites, 0, static_cast<double> (getWidth()) / allWhites };
    const int room = juce::jmax (1, getWidth() - 2 * stripWidth);
    const int whites = juce::jlimit (1, allWhites, static_cast<int> (room / wanted));
    return { whites, stripWidth, static_cast<double> (room) / whites };
}

juce::Rectangle<int> MVMidiKeyboard::boundsOfKey (int key) const
{
    if (! isKey (key))
        return {};
    const auto place = layout();
    const int white = whiteIndex (key) - firstWhite;
    // A black key stands on the border below the white key after it; at the ends it needs both neighbours.
    if (white < (isBlack (key) ? 1 : 0) || white >= place.whites)
        return {};
    const double left = place.strip + white * place.whiteWidth;
    if (! isBlack (key))
        return { juce::roundToInt (left), 0, juce::roundToInt (left + place.whiteWidth) - juce::roundToInt (left),
                 getHeight() };
    const double width = place.whiteWidth * blackShape;
    return { juce::roundToInt (left - width / 2), 0, juce::roundToInt (width), getHeight() * 3 / 5 };
}

int MVMidiKeyboard::keyAt (juce::Point<int> position) const
{
    int found = none;
    for (int key = 0; key <= lastKey; ++key)
        if (boundsOfKey (key).contains (position) && (found < 0 || isBlack (key)))
            found = key;
    return found;
}

int MVMidiKeyboard::firstVisibleKey() const { return keyOfWhite (firstWhite); }

void MVMidiKeyboard::showFrom (int key)
{
    const int wanted = whiteIndex (juce::jlimit (0, lastKey, isKey (key) && isBlack (key) ? key - 1 : key));
    firstWhite = juce::jlimit (0, allWhites - layout().whites, wanted);
    repaint();
}

// ----------------------------------------------------------------------------------------------------- picture

void MVMidiKeyboard::paint (juce::Graphics& graphics)
{
    if (! isEnabled())
        return paintOff (graphics);

    graphics.fillAll (themeColour (keyEdge));
    for (const bool black : { false, true })
        for (int key = 0; key <= lastKey; ++key)
            if (isBlack (key) == black)
                paintKey (graphics, key);
    paintStrips (graphics);
    if (hasKeyboardFocus (false))
        paintFocus (graphics, getLocalBounds().toFloat(), 2.0F);
}

void MVMidiKeyboard::paintOff (juce::Graphics& graphics) const
{
    constexpr int textLeft = 10;
    graphics.fillAll (themeColour (keyboardOff));
    graphics.setColour (themeColour (textOnKeyboardOff));
    graphics.setFont (themeFont (fontHeights::normal));
    graphics.drawText ("Loaded patch not keyboard enabled.", getLocalBounds().withTrimmedLeft (textLeft),
                       juce::Justification::centredLeft);
}

void MVMidiKeyboard::paintKey (juce::Graphics& graphics, int key) const
{
    const auto bounds = boundsOfKey (key);
    if (bounds.isEmpty() || ! graphics.clipRegionIntersects (bounds))
        return;
    const bool black = isBlack (key);
    const bool on = isSounding (key);
    const auto colour = themeColour (on ? keySounding : black ? blackKey : whiteKey);
    const auto body = bounds.toFloat();
    juce::Path shape;
    // White keys leave a line free between them, black ones stand on a thin shadow.
    const auto area = black ? body : body.withTrimmedRight (1.0F).withTrimmedBottom (1.0F);
    const float round = black ? 1.5F : 2.5F;
    shape.addRoundedRectangle (area.getX(), area.getY(), area.getWidth(), area.getHeight(), round, round, false, false,
                               true, true);
    if (black)
    {
        graphics.setColour (themeColour (shadow));
        graphics.fillPath (shape, juce::AffineTransform::translation (0.8F, 1.2F));
    }
    graphics.setGradientFill (
        juce::ColourGradient::vertical (black ? colour.brighter (on ? 0.0F : 0.25F) : colour.darker (0.08F),
                                        body.getY(), black ? colour : colour.brighter (0.04F), body.getBottom()));
    graphics.fillPath (shape);
    paintKeyText (graphics, key, bounds);
}

/** While the computer keyboard plays here, its letters; else the names of the octaves. */
void MVMidiKeyboard::paintKeyText (juce::Graphics& graphics, int key, juce::Rectangle<int> bounds) const
{
    constexpr float textHeight = 9.0F;
    constexpr int textArea = 12;
    const bool black = isBlack (key);
    const int letter = key - baseKey;
    juce::String label;
    if (hasKeyboardFocus (false) && letter >= 0 && letter < computerKeyCount)
        label = juce::String::charToString (static_cast<juce::juce_wchar> (computerKeys[at (letter)]));
    else if (key % semitones == 0)
        label = "C" + juce::String (key / semitones - 1);
    if (label.isEmpty())
        return;
    graphics.setColour (themeColour (isSounding (key) ? textOnAccent : black ? textDim : keyLabel));
    graphics.setFont (themeFont (textHeight, MVFontWeight::semiBold));
    graphics.drawText (label, bounds.removeFromBottom (textArea).expanded (2, 0), juce::Justification::centred, false);
}

void MVMidiKeyboard::paintStrips (juce::Graphics& graphics) const
{
    const auto place = layout();
    if (place.strip == 0)
        return;
    auto area = getLocalBounds();
    const auto strip = [&] (juce::Rectangle<int> bounds, MVIcon icon, bool more)
    {
        graphics.setColour (themeColour (control));
        graphics.fillRect (bounds);
        drawIcon (graphics, icon, bounds.toFloat().reduced (2.0F), themeColour (more ? textDim : textDisabled));
    };
    strip (area.removeFromLeft (place.strip), MVIcon::previous, firstWhite > 0);
    strip (area.removeFromRight (place.strip), MVIcon::next, firstWhite < allWhites - place.whites);
}

bool MVMidiKeyboard::isSounding (int key) const { return sounding[at (key)].load (std::memory_order_relaxed) != 0; }

// ----------------------------------------------------------------------------------------------------- playing

void MVMidiKeyboard::press (int key, float velocity)
{
    if (holds[at (key)]++ == 0)
        state.noteOn (channel, key, velocity);
}

void MVMidiKeyboard::letGo (int key)
{
    if (holds[at (key)] > 0 && --holds[at (key)] == 0)
        state.noteOff (channel, key, 0.0F);
}

void MVMidiKeyboard::releaseAll()
{
    mouseKey = none;
    mouseSource = none;
    held.fill (none);
    for (int key = 0; key < numKeys; ++key)
        if (std::exchange (holds[at (key)], std::uint8_t { 0 }) > 0)
            state.noteOff (channel, key, 0.0F);
}

void MVMidiKeyboard::playAt (juce::Point<int> position)
{
    // A finger that slides off the front or back of the keys stays on them.
    position.y = juce::jlimit (0, juce::jmax (0, getHeight() - 1), position.y);
    const int key = keyAt (position);
    if (key == mouseKey)
        return;
    if (mouseKey >= 0)
        letGo (mouseKey);
    mouseKey = key;
    if (key < 0)
        return;
    const float depth = (static_cast<float> (position.y) + 0.5F) / static_cast<float> (boundsOfKey (key).getHeight());
    press (key, softest + (1.0F - softest) * juce::jlimit (0.0F, 1.0F, depth));
}

void MVMidiKeyboard::mouseDown (const juce::MouseEvent& event)
{
    if (! isEnabled() || mouseSource >= 0)
        return;
    const auto place = layout();
    if (event.x < place.strip || event.x >= getWidth() - place.strip)
    {
        showFrom (keyOfWhite (
            juce::jlimit (0, allWhites - 1, firstWhite + (event.x < place.strip ? -whitesInOctave : whitesInOctave))));
        return;
    }
    mouseSource = event.source.getIndex();
    setWantsKeyboardFocus (true);
    grabKeyboardFocus();
    playAt (event.getPosition());
}

void MVMidiKeyboard::mouseDrag (const juce::MouseEvent& event)
{
    if (event.source.getIndex() == mouseSource)
        playAt (event.getPosition());
}

void MVMidiKeyboard::mouseUp (const juce::MouseEvent& event)
{
    if (event.source.getIndex() != mouseSource)
        return;
    if (mouseKey >= 0)
        letGo (mouseKey);
    mouseKey = none;
    mouseSource = none;
}

void MVMidiKeyboard::mouseWheelMove (const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel)
{
    const float move = std::abs (wheel.deltaX) > std::abs (wheel.deltaY) ? -wheel.deltaX : wheel.deltaY;
    if (layout().strip == 0 || ! isEnabled())
        return juce::Component::mouseWheelMove (event, wheel);
    if (move != 0.0F)
        showFrom (keyOfWhite (juce::jlimit (0, allWhites - 1, firstWhite + (move > 0.0F ? 1 : -1))));
}

bool MVMidiKeyboard::keyPressed (const juce::KeyPress& key)
{
    if (key.isKeyCode (juce::KeyPress::escapeKey) || key.isKeyCode (juce::KeyPress::returnKey))
    {
        giveBackFocus();
        return true;
    }
    const auto mods = key.getModifiers();
    if (mods.isCommandDown() || mods.isCtrlDown() || mods.isAltDown())
        return false;
    const int code =
        static_cast<int> (juce::CharacterFunctions::toUpperCase (static_cast<juce::juce_wchar> (key.getKeyCode())));
    if (code == octaveDown || code == octaveUp)
    {
        moveBase (code == octaveDown ? -semitones : semitones);
        return true;
    }
    return code > 0 && code < 128 && computerKeys.find (static_cast<char> (code)) != std::string_view::npos;
}

bool MVMidiKeyboard::keyStateChanged (bool)
{
    if (! isEnabled())
        return false;
    const auto mods = juce::ModifierKeys::currentModifiers;
    const bool shortcut = mods.isCommandDown() || mods.isCtrlDown() || mods.isAltDown();
    bool used = false;
    for (int i = 0; i < computerKeyCount; ++i)
    {
        const bool down = isComputerKeyDown (computerKeys[at (i)]);
        int& playing = held[at (i)];
        if (down && playing == none && ! shortcut && isKey (baseKey + i))
        {
            playing = baseKey + i;
            press (playing, computerVelocity);
            used = true;
        }
        else if (! down && playing != none)
        {
            letGo (std::exchange (playing, none));
            used = true;
        }
    }
    return used;
}

void MVMidiKeyboard::moveBase (int semitonesUp)
{
    // Keys that are down play on where they began.
    baseKey = juce::jlimit (lowestBase, highestBase, baseKey + semitonesUp);
    if (boundsOfKey (baseKey).isEmpty() || boundsOfKey (juce::jmin (lastKey, baseKey + semitones)).isEmpty())
        showFrom (baseKey);
    repaint();
}

void MVMidiKeyboard::giveBackFocus()
{
    releaseAll();
    giveAwayKeyboardFocus();
    setWantsKeyboardFocus (false);
    if (onFocusGivenBack)
        onFocusGivenBack();
}

void MVMidiKeyboard::focusLost (FocusChangeType)
{
    releaseAll();
    setWantsKeyboardFocus (false);
    repaint();
}

void MVMidiKeyboard::enablementChanged()
{
    releaseAll();
    if (! isEnabled())
        giveAwayKeyboardFocus();
    repaint();
}

void MVMidiKeyboard::visibilityChanged()
{
    if (! isVisible())
        releaseAll();
}

// ------------------------------------------------------------------------------------------- the notes of all

void MVMidiKeyboard::showingChanged (bool showing)
{
    if (showing)
    {
        startTimerHz (framesPerSecond);
        return;
    }
    stopTimer();
    releaseAll();
}

void MVMidiKeyboard::timerCallback()
{
    if (! changed.exchange (false))
        return;
    for (int key = 0; key < numKeys; ++key)
    {
        if (drawn[at (key)] == isSounding (key))
            continue;
        drawn[at (key)] = isSounding (key);
        repaint (boundsOfKey (key).expanded (1, 2));
    }
}

void MVMidiKeyboard::handleNoteOn (juce::MidiKeyboardState*, int onChannel, int key, float)
{
    if (! isKey (key))
        return;
    sounding[at (key)].fetch_or (static_cast<std::uint16_t> (1U << ((onChannel - 1) & 15)));
    changed = true;
}

void MVMidiKeyboard::handleNoteOff (juce::MidiKeyboardState*, int onChannel, int key, float)
{
    if (! isKey (key))
        return;
    sounding[at (key)].fetch_and (static_cast<std::uint16_t> (~(1U << ((onChannel - 1) & 15))));
    changed = true;
}

} // namespace morvanelab
