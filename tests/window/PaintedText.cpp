// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/PaintedText.h"

#include <map>

namespace morvanelab::test
{

namespace
{

/** Draws as usual and takes down which characters. */
class TextRecorder : public juce::LowLevelGraphicsSoftwareRenderer
{
public:
    explicit TextRecorder (const juce::Image& image) : LowLevelGraphicsSoftwareRenderer (image) {}

    void drawGlyph (int glyph, const juce::AffineTransform& transform) override
    {
        const auto& characters = charactersOf (getFont());
        if (const auto found = characters.find (glyph); found != characters.end())
            text += found->second;
        LowLevelGraphicsSoftwareRenderer::drawGlyph (glyph, transform);
    }

    juce::String text;

private:
    using Characters = std::map<int, juce::juce_wchar>;

    const Characters& charactersOf (const juce::Font& font)
    {
        const auto typeface = font.getTypefacePtr();
        auto& characters = known[typeface.get()];
        if (characters.empty())
            for (juce::juce_wchar character = '!'; character <= '~'; ++character)
            {
                juce::Array<int> glyphs;
                juce::Array<float> offsets;
                typeface->getGlyphPositions (juce::String::charToString (character), glyphs, offsets);
                if (! glyphs.isEmpty())
                    characters.emplace (glyphs[0], character);
            }
        return characters;
    }

    std::map<const juce::Typeface*, Characters> known;
};

} // namespace

juce::String paintedText (juce::Component& component)
{
    const juce::Image image (juce::Image::ARGB, juce::jmax (1, component.getWidth()),
                             juce::jmax (1, component.getHeight()), true);
    TextRecorder recorder (image);
    juce::Graphics graphics (recorder);
    component.paintEntireComponent (graphics, true);
    return recorder.text;
}

bool paints (juce::Component& component, const juce::String& text)
{
    return paintedText (component).contains (text.removeCharacters (" "));
}

} // namespace morvanelab::test
