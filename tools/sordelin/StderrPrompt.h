// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVUserPrompt.h"

#include <cstdio>

namespace morvanelab
{

/** Boxes on stderr. Every question has the answer that the command line gave beforehand. */
class StderrPrompt : public MVUserPrompt
{
public:
    explicit StderrPrompt (bool answerToQuestions) : answer (answerToQuestions) {}

    void tell (const std::string& title, const std::string& text, const std::string&) override
    {
        std::fprintf (stderr, "%s: %s\n", title.c_str(), text.c_str());
    }

    bool askYesNo (const std::string& title, const std::string& text) override
    {
        std::fprintf (stderr, "%s: %s  %s\n", title.c_str(), text.c_str(), answer ? "Yes" : "No");
        return answer;
    }

    /** Nobody types here: cancelled. */
    void askText (const std::string& title, const std::string&, const std::string&, TextAnswer textAnswer) override
    {
        std::fprintf (stderr, "%s\n", title.c_str());
        if (textAnswer)
            textAnswer (std::nullopt);
    }

private:
    bool answer;
};

} // namespace morvanelab
