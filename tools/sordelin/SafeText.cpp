// SPDX-License-Identifier: GPL-3.0-or-later
#include "SafeText.h"

#include <juce_core/juce_core.h>

#include <nlohmann/json.hpp>

namespace morvanelab
{

namespace
{

constexpr juce::juce_wchar replacement = 0xFFFD;
constexpr std::size_t longestFileName = 80;

bool isInvisible (juce::juce_wchar c)
{
    const auto within = [c] (juce::juce_wchar first, juce::juce_wchar last) { return c >= first && c <= last; };
    return c < 32 || within (0x7F, 0x9F) || within (0x200B, 0x200F) || within (0x2028, 0x202E)
           || within (0x2060, 0x206F) || c == 0xFEFF || within (0xFFF9, 0xFFFB) || within (0xE0000, 0xE0FFF);
}

/** The characters, controls replaced. The writer of JSON knows what is UTF-8 and what is not. */
juce::String charactersOf (std::string_view stored)
{
    using Json = nlohmann::json;
    const auto text =
        Json::parse (Json (stored).dump (-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();

    juce::String safe;
    const juce::CharPointer_UTF8 end (text.data() + text.size());
    for (juce::CharPointer_UTF8 at (text.data()); at < end;)
    {
        const auto c = at.getAndAdvance();
        safe += isInvisible (c) ? replacement : c;
    }
    return safe;
}

} // namespace

std::string printableText (std::string_view stored) { return charactersOf (stored).toStdString(); }

std::string fileNameText (std::string_view stored)
{
    const juce::String characters = charactersOf (stored.substr (0, 4 * longestFileName));
    juce::String name;
    for (auto at = characters.getCharPointer(); ! at.isEmpty();)
    {
        const auto c = at.getAndAdvance();
        const bool meansSomething = c == replacement || juce::String ("<>:\"/\\|?*").containsChar (c);
        const juce::juce_wchar safe = meansSomething ? juce::juce_wchar ('_') : c;
        if (name.getNumBytesAsUTF8() + juce::CharPointer_UTF8::getBytesRequiredFor (safe) > longestFileName)
            break;
        name += safe;
    }
    return name.trimCharactersAtStart (" .").trimCharactersAtEnd (" .").toStdString();
}

} // namespace morvanelab
