// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace morvanelab
{

/** How the layers below the window speak to the user: a box with one button, or a question.
    Whoever shows windows supplies an implementation; where nobody can see a box, cautious() serves.
    Texts are UTF-8. Called on the message thread only, and may block it. */
class MVUserPrompt
{
public:
    virtual ~MVUserPrompt() = default;

    /** Shows a message that the user can only acknowledge. */
    virtual void tell (const std::string& title, const std::string& text, const std::string& button = "OK") = 0;
    /** Asks a question with the buttons "Yes" and "No"; true for yes. */
    virtual bool askYesNo (const std::string& title, const std::string& text) = 0;

    /** A process-wide implementation for places without a screen: logs both kinds and answers no. */
    static MVUserPrompt& cautious();
};

/** Writes every message to the log and answers every question with no. Any thread. */
class MVCautiousPrompt : public MVUserPrompt
{
public:
    void tell (const std::string& title, const std::string& text, const std::string& button) override;
    bool askYesNo (const std::string& title, const std::string& text) override;
};

} // namespace morvanelab
