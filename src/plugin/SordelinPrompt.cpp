// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinPrompt.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

namespace
{

void showLater (const std::string& title, const std::string& text, const std::string& button)
{
    const auto fromUtf8 = [] (const std::string& bytes) { return juce::String::fromUTF8 (bytes.c_str()); };
    juce::MessageManager::callAsync (
        [title = fromUtf8 (title), text = fromUtf8 (text), button = fromUtf8 (button)]
        { juce::AlertWindow::showMessageBoxAsync (juce::MessageBoxIconType::WarningIcon, title, text, button); });
}

} // namespace

void SordelinPrompt::tell (const std::string& title, const std::string& text, const std::string& button)
{
    if (isShowing())
        showLater (title, text, button);
    else
        MVUserPrompt::cautious().tell (title, text, button);
}

bool SordelinPrompt::askYesNo (const std::string& title, const std::string& text)
{
    if (isShowing())
        showLater (title, text, "OK");
    return MVUserPrompt::cautious().askYesNo (title, text);
}

} // namespace morvanelab
