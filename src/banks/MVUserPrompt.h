// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace morvanelab
{

/** How the layers below the window speak to the user: a box with one button, a question, or a line to be typed.
    Whoever shows windows supplies an implementation; where nobody can see a box, cautious() serves.
    Texts are UTF-8. Called on the message thread only, unless an implementation takes any thread, and tell and
    askYesNo may block it. */
class MVUserPrompt
{
public:
    /** What askText found out: the text that was in the field when the first button was chosen, or nothing. */
    using TextAnswer = std::function<void (std::optional<std::string>)>;

    virtual ~MVUserPrompt() = default;

    /** Shows a message that the user can only acknowledge. */
    virtual void tell (const std::string& title, const std::string& text, const std::string& button = "OK") = 0;
    /** Asks a question with the buttons "Yes" and "No"; true for yes. */
    virtual bool askYesNo (const std::string& title, const std::string& text) = 0;
    /** Asks for a line of text in a box with a field and two buttons. Returns at once; answer is called once, on the
        message thread, possibly before this returns: with the text for the first button, with nothing for the second
        one, a closed box, or where nobody can be asked. An answer may never come if the program ends first. */
    virtual void askText (const std::string& title, const std::string& applyButton, const std::string& cancelButton,
                          TextAnswer answer) = 0;

    /** A process-wide implementation for places without a screen: logs everything, answers no and cancels. */
    static MVUserPrompt& cautious();
};

/** Writes every message to the log, answers every question with no and types nothing. Any thread. */
class MVCautiousPrompt : public MVUserPrompt
{
public:
    void tell (const std::string& title, const std::string& text, const std::string& button) override;
    bool askYesNo (const std::string& title, const std::string& text) override;
    void askText (const std::string& title, const std::string& applyButton, const std::string& cancelButton,
                  TextAnswer answer) override;
};

} // namespace morvanelab
