// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianText.h"

#include <algorithm>
#include <string>

namespace morvanelab
{

namespace
{

constexpr char32_t ellipsis = 0x2026;
constexpr int mostBytesPerCharacter = 4;

bool isControl (char32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || (character >= 0x2028 && character <= 0x202E)
           || (character >= 0x2066 && character <= 0x2069);
}

/** Bytes that hold at least that many characters, or all; no character is cut. */
int usefulBytes (const MVString& text, int characters)
{
    int count = std::min (text.length(), characters * mostBytesPerCharacter);
    while (count > 0 && count < text.length() && (static_cast<unsigned char> (text.text()[count]) & 0xC0U) == 0x80)
        --count;
    return count;
}

} // namespace

juce::String toShownText (const MVString& stored, int mostCharacters, bool keepLines)
{
    const int count = usefulBytes (stored, mostCharacters + 1);
    const bool isUtf8 = juce::CharPointer_UTF8::isValidString (stored.text(), count);
    const char* const end = stored.text() + count;

    std::u32string shown;
    for (juce::CharPointer_UTF8 at (stored.text()); at.getAddress() < end;)
    {
        char32_t character = 0;
        if (isUtf8)
        {
            character = static_cast<char32_t> (at.getAndAdvance());
        }
        else
        {
            character = static_cast<unsigned char> (*at.getAddress());
            at = juce::CharPointer_UTF8 (at.getAddress() + 1);
        }

        if (static_cast<int> (shown.size()) == mostCharacters)
        {
            shown.back() = ellipsis;
            break;
        }
        shown += isControl (character) && ! (keepLines && character == '\n') ? U' ' : character;
    }

    const auto* const text = reinterpret_cast<const juce::CharPointer_UTF32::CharType*> (shown.c_str());
    const juce::String result { juce::CharPointer_UTF32 (text) };
    return keepLines ? result : result.trim();
}

MVString toStoredText (const juce::String& typed)
{
    return MVString (std::string_view (typed.toRawUTF8(), typed.getNumBytesAsUTF8()));
}

} // namespace morvanelab
