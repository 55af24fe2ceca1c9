// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVTheme.h"

#include "ui/MVResources.h"

#include <atomic>
#include <cmath>

namespace morvanelab
{

namespace
{

using enum MVThemeColour;

// The hundreds of a number tell the group; gaps are left for what may come.
constexpr std::array<MVThemeEntry, themeColourCount> table { {
    { windowBackground, 101, "Window background", 0xFF101318 },
    { titleBar, 102, "Title bar", 0xFF161A21 },
    { panel, 103, "Panel", 0xFF1A1F27 },
    { panelHeader, 104, "Panel header", 0xFF222934 },
    { panelOutline, 105, "Panel outline", 0xFF2C3541 },
    { field, 106, "Field", 0xFF12161C },
    { fieldAlternate, 107, "Field, second row", 0xFF161B22 },
    { popup, 108, "Menu and message", 0xFF20262F },
    { popupOutline, 109, "Menu outline", 0xFF3C4655 },
    { shadow, 110, "Shadow", 0x99000000 },
    { control, 201, "Button", 0xFF2A323E },
    { controlHover, 202, "Button under the mouse", 0xFF353F4D },
    { controlDown, 203, "Button pressed", 0xFF1E242D },
    { controlOutline, 204, "Button outline", 0xFF3D4858 },
    { knobBody, 205, "Knob", 0xFF323B48 },
    { knobEdge, 206, "Knob edge", 0xFF4A5668 },
    { track, 207, "Slider track", 0xFF38424F },
    { focus, 208, "Keyboard focus", 0xFF7DB3FF },
    { text, 301, "Text", 0xFFE8ECF2 },
    { textDim, 302, "Label text", 0xFFAEB8C6 },
    { textFaint, 303, "Hint text", 0xFF8A95A5 },
    { textDisabled, 304, "Disabled text", 0xFF5B6573 },
    { textOnAccent, 305, "Text on accent", 0xFF1E1404 },
    { accent, 401, "Accent", 0xFFFFB04A },
    { accentHover, 402, "Accent under the mouse", 0xFFFFC477 },
    { accentDim, 403, "Accent surface", 0xFF4A3A22 },
    { selection, 404, "Selection", 0xFF2F4562 },
    { learn, 405, "Learning", 0xFFF07AD8 },
    { mapped, 406, "Mapped controller", 0xFF5CC8E6 },
    { good, 407, "Safe level", 0xFF4CCB88 },
    { warn, 408, "High level", 0xFFFFCF4D },
    { danger, 409, "Overload", 0xFFFF6F67 },
    { textOnDanger, 410, "Text on overload", 0xFF250403 },
    { displayBackground, 501, "Display background", 0xFF0B0E12 },
    { displayGrid, 502, "Display grid", 0xFF222A34 },
    { displayAxis, 503, "Display axis text", 0xFF8E99A9 },
    { trace, 504, "Trace", 0xFF5CC8E6 },
    { traceSecond, 505, "Second trace", 0xFFFFB04A },
    { traceFill, 506, "Trace surface", 0x385CC8E6 },
    { heatLow, 507, "Spectrogram, silence", 0xFF0B0E12 },
    { heatQuarter, 508, "Spectrogram, quiet", 0xFF1F3A6B },
    { heatHalf, 509, "Spectrogram, middle", 0xFF8A3F9E },
    { heatThreeQuarters, 510, "Spectrogram, loud", 0xFFF2784B },
    { heatHigh, 511, "Spectrogram, loudest", 0xFFFFF3C4 },
    { meterTrack, 601, "Meter, unlit", 0xFF0D1014 },
    { meterTick, 602, "Meter scale", 0xFF4A5668 },
    { whiteKey, 603, "White key", 0xFFE9E7E1 },
    { blackKey, 604, "Black key", 0xFF1B1F25 },
    { keyEdge, 605, "Key edge", 0xFF6F7680 },
    { keyLabel, 606, "Key label", 0xFF5A6069 },
    { keySounding, 607, "Sounding key", 0xFFFFA436 },
    { keyboardOff, 608, "Keyboard without use", 0xFF969696 },
    { textOnKeyboardOff, 609, "Text on keyboard without use", 0xFF14171B },
} };

std::size_t indexOf (MVThemeColour colour) { return static_cast<std::size_t> (colour); }

/** The colours in use. Zero is "the default", so that nothing needs to run before the first use; a stored fully
    transparent black is kept as the next transparent colour. */
std::array<std::atomic<std::uint32_t>, themeColourCount> chosen {};
std::atomic<std::uint32_t> revision { 1 };

/** The embedded faces. The toolkit's font library must be alive while a face is, so they go when the toolkit shuts
    down and come again with its next start. */
class EmbeddedFaces : private juce::DeletedAtShutdown
{
public:
    ~EmbeddedFaces() override { clearSingletonInstance(); }

    juce::Typeface::Ptr face (MVFontWeight weight) const
    {
        return weight == MVFontWeight::regular ? regular : semiBold;
    }

    JUCE_DECLARE_SINGLETON (EmbeddedFaces, false)

private:
    static juce::Typeface::Ptr load (const char* name)
    {
        const auto data = resourceData (name);
        return juce::Typeface::createSystemTypefaceFor (data.data(), data.size());
    }

    juce::Typeface::Ptr regular { load ("fonts/Inter-Regular.otf") };
    juce::Typeface::Ptr semiBold { load ("fonts/Inter-SemiBold.otf") };
};

JUCE_IMPLEMENT_SINGLETON (EmbeddedFaces)

double linearChannel (std::uint8_t value)
{
    const double c = value / 255.0;
    return c <= 0.04045 ? c / 12.92 : std::pow ((c + 0.055) / 1.055, 2.4);
}

double relativeLuminance (juce::Colour colour)
{
    return 0.2126 * linearChannel (colour.getRed()) + 0.7152 * linearChannel (colour.getGreen())
           + 0.0722 * linearChannel (colour.getBlue());
}

} // namespace

const std::array<MVThemeEntry, themeColourCount>& themeEntries() { return table; }

juce::Colour themeColour (MVThemeColour colour)
{
    const auto argb = chosen[indexOf (colour)].load (std::memory_order_relaxed);
    return juce::Colour (argb != 0 ? argb : table[indexOf (colour)].argb);
}

void setThemeColour (MVThemeColour colour, juce::Colour value)
{
    const std::uint32_t argb = value.getARGB() != 0 ? value.getARGB() : 0x00000001U;
    if (themeColour (colour).getARGB() == argb)
        return;
    chosen[indexOf (colour)].store (argb, std::memory_order_relaxed);
    ++revision;
}

void resetThemeColours()
{
    for (auto& colour : chosen)
        colour.store (0, std::memory_order_relaxed);
    ++revision;
}

std::uint32_t themeRevision() { return revision; }

juce::Colour themeHeat (float level)
{
    constexpr std::array stops { heatLow, heatQuarter, heatHalf, heatThreeQuarters, heatHigh };
    constexpr int intervals = static_cast<int> (stops.size()) - 1;
    const float position = (level > 0.0F ? std::min (level, 1.0F) : 0.0F) * static_cast<float> (intervals);
    const int index = std::min (static_cast<int> (position), intervals - 1);
    return themeColour (stops[static_cast<std::size_t> (index)])
        .interpolatedWith (themeColour (stops[static_cast<std::size_t> (index) + 1]),
                           position - static_cast<float> (index));
}

double contrastRatio (juce::Colour first, juce::Colour second)
{
    const double a = relativeLuminance (first);
    const double b = relativeLuminance (second);
    return (std::max (a, b) + 0.05) / (std::min (a, b) + 0.05);
}

juce::Typeface::Ptr themeTypeface (MVFontWeight weight)
{
    auto* faces = EmbeddedFaces::getInstance();
    return faces != nullptr ? faces->face (weight) : nullptr;
}

juce::Font themeFont (float height, MVFontWeight weight)
{
    if (const auto face = themeTypeface (weight))
        return juce::Font (face).withHeight (height);
    return juce::Font (height, weight == MVFontWeight::regular ? juce::Font::plain : juce::Font::bold);
}

} // namespace morvanelab
