// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVUserPrompt.h"

#include <atomic>

namespace morvanelab
{

/** Boxes of the plug-in. A message comes up as an alert that nobody waits for, and only while the plug-in's window
    shows; else it is logged. Questions would have to wait for an answer and a host must not wait for its user, so
    the cautious answer is given at once and the question is shown as a message.

    Any thread. */
class SordelinPrompt : public MVUserPrompt
{
public:
    void tell (const std::string& title, const std::string& text, const std::string& button = "OK") override;
    bool askYesNo (const std::string& title, const std::string& text) override;

    /** Told by the view, on the message thread, as it comes and goes. */
    void setShowing (bool on) { showing.store (on, std::memory_order_relaxed); }
    bool isShowing() const { return showing.load (std::memory_order_relaxed); }

private:
    std::atomic<bool> showing { false };
};

} // namespace morvanelab
