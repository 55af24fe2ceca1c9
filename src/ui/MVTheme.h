// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <cstdint>

/** The look of the whole window in one place: named colours, fonts and measures. Nothing is drawn in a colour that
    does not stand in the table here.

    Colours may be read and changed on any thread (each is one atomic); fonts belong to the message thread and the
    thread that paints OpenGL. Nothing here is touched before something is drawn. All instances in a process share
    the table, as they share the stored settings of their user. */
namespace morvanelab
{

/** The colours by what they are for. The order is that of the table and may change; a colour's stored number does
    not. */
enum class MVThemeColour
{
    // Surfaces, from the back to the front.
    windowBackground, ///< behind the panels
    titleBar,         ///< the strip with name, patch and preset
    panel,            ///< a section of the window
    panelHeader,      ///< the strip with a section's name
    panelOutline,     ///< around sections; also separator lines
    field,            ///< text fields, lists and tables
    fieldAlternate,   ///< every second row of a list
    popup,            ///< menus, tooltips, alert boxes
    popupOutline,     ///< around what floats
    shadow,           ///< beneath what floats

    // Things to press.
    control,        ///< a button or combo box at rest
    controlHover,   ///< under the mouse
    controlDown,    ///< while pressed
    controlOutline, ///< around buttons, fields and combo boxes
    knobBody,       ///< cap of a knob
    knobEdge,       ///< rim of the cap
    track,          ///< the part of a slider or knob without value; scroll bar's thumb
    focus,          ///< around what has the keyboard

    // Text.
    text,         ///< names, values
    textDim,      ///< labels, section names
    textFaint,    ///< hints, units, numbers of empty slots
    textDisabled, ///< of what cannot be used now
    textOnAccent, ///< on an accent fill

    // Meaning.
    accent,       ///< values, what is on, the loaded patch
    accentHover,  ///< the same under the mouse
    accentDim,    ///< a tinted surface: toggled buttons at rest, ticked rows
    selection,    ///< rows and text that are selected
    learn,        ///< waiting for a controller
    mapped,       ///< what a controller moves
    good,         ///< safe levels, done
    warn,         ///< levels near full scale, notices
    danger,       ///< overload, mute, deletion
    textOnDanger, ///< on a danger fill

    // Signal displays.
    displayBackground, ///< behind traces
    displayGrid,       ///< grid lines
    displayAxis,       ///< axis texts
    trace,             ///< the first trace
    traceSecond,       ///< a second trace
    traceFill,         ///< beneath a trace; carries its own alpha
    heatLow,           ///< spectrogram strip: silence
    heatQuarter,       ///< at a quarter
    heatHalf,          ///< at the half
    heatThreeQuarters, ///< at three quarters
    heatHigh,          ///< at the loudest

    // Meters and keyboard.
    meterTrack, ///< an unlit meter
    meterTick,  ///< scale lines of a meter
    whiteKey,
    blackKey,
    keyEdge,
    keyLabel,          ///< octave names on white keys
    keySounding,       ///< a note that sounds
    keyboardOff,       ///< the bar in place of a keyboard without use
    textOnKeyboardOff, ///< its text
    count
};

/** One row of the table. */
struct MVThemeEntry
{
    MVThemeColour colour;
    int colorId;        ///< stable number in stored colours, never given to another colour
    const char* name;   ///< readable, for a list of colours
    std::uint32_t argb; ///< default
};

constexpr std::size_t themeColourCount = static_cast<std::size_t> (MVThemeColour::count);

/** The table, in the order of MVThemeColour. */
const std::array<MVThemeEntry, themeColourCount>& themeEntries();
/** The colour in use: the default, or what the user chose. */
juce::Colour themeColour (MVThemeColour colour);
/** Uses another colour from now on. Who has drawn with the old one repaints: see MVLookAndFeel. */
void setThemeColour (MVThemeColour colour, juce::Colour value);
/** All colours back to their defaults. */
void resetThemeColours();
/** Grows with every change of a colour; a cached picture is stale when this differs. */
std::uint32_t themeRevision();
/** The strip of a spectrogram: 0 silence to 1 loudest, clamped; not-a-number is silence. */
juce::Colour themeHeat (float level);

/** Contrast of two opaque colours as WCAG 2 defines it: 1 (same) to 21 (black on white). */
double contrastRatio (juce::Colour first, juce::Colour second);

enum class MVFontWeight
{
    regular,
    semiBold
};

/** The embedded font. Height in pixels as JUCE counts it, from the ascent to the descent. Falls back to the toolkit's
   sans serif if the embedded font cannot be read. */
juce::Font themeFont (float height, MVFontWeight weight = MVFontWeight::regular);

/** The embedded face itself, null if it cannot be read. */
juce::Typeface::Ptr themeTypeface (MVFontWeight weight);

/** Font heights, pixels at zoom 1. */
namespace fontHeights
{
constexpr float tiny = 10.5F;   ///< scales, badges
constexpr float small = 12.0F;  ///< captions below knobs, section names
constexpr float normal = 14.0F; ///< buttons, lists, menus
constexpr float large = 17.0F;  ///< patch name, titles
constexpr float title = 21.0F;  ///< alert boxes, about
} // namespace fontHeights

/** Measures in pixels at zoom 1. */
namespace metrics
{
constexpr int gap = 6;              ///< between neighbours
constexpr int margin = 10;          ///< from a panel's edge to what it holds
constexpr int sectionHeader = 20;   ///< height of a section's name strip
constexpr int rowHeight = 24;       ///< a list's row, a menu's item
constexpr int controlHeight = 24;   ///< a button, a combo box, a text field
constexpr int iconSize = 16;        ///< an icon in a row or button
constexpr float corner = 4.0F;      ///< radius of buttons and fields
constexpr float panelCorner = 6.0F; ///< radius of sections and popups
constexpr float hairline = 1.0F;
} // namespace metrics

} // namespace morvanelab
