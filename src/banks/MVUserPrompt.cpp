// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVUserPrompt.h"

#include "foundation/MVLog.h"

namespace morvanelab
{

MVUserPrompt& MVUserPrompt::cautious()
{
    static MVCautiousPrompt prompt;
    return prompt;
}

void MVCautiousPrompt::tell (const std::string& title, const std::string& text, const std::string&)
{
    mvLog ("ERROR", "morvanelab::MVCautiousPrompt::tell", "%s: %s", title.c_str(), text.c_str());
}

bool MVCautiousPrompt::askYesNo (const std::string& title, const std::string& text)
{
    mvLog ("ERROR", "morvanelab::MVCautiousPrompt::askYesNo", "%s: %s (answered no)", title.c_str(), text.c_str());
    return false;
}

void MVCautiousPrompt::askText (const std::string& title, const std::string&, const std::string&, TextAnswer answer)
{
    mvLog ("ERROR", "morvanelab::MVCautiousPrompt::askText", "%s (cancelled)", title.c_str());
    if (answer)
        answer (std::nullopt);
}

} // namespace morvanelab
