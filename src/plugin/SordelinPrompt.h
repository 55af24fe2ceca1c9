// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVUserPrompt.h"

#include <juce_core/juce_core.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace morvanelab
{

/** Boxes of the plug-in. They come up as alerts that nobody waits for, and only while the plug-in's window shows; else
    they are logged and questions get the cautious answer.

    A question has to be answered before its box can have come up, since a host must not wait for its user. So what
    may ask runs through runAsking: it is first tried with the cautious answer, and tried again if the user says yes.
    A question that is asked anywhere else while the window shows gets a no, and a message says what was asked.

    tell, askYesNo, askText and isShowing: any thread; the rest: message thread. */
class SordelinPrompt : public MVUserPrompt
{
public:
    /** A box to be shown. */
    struct Box
    {
        juce::String title;
        juce::String text;         ///< empty where there is a field
        juce::StringArray buttons; ///< one or two; the first one accepts
        bool hasTextField = false;
        /** To be called once, on the message thread: whether the first button was chosen, and what is in the field.
            A box that is closed otherwise counts as declined. Never null. */
        std::function<void (bool accepted, const juce::String& typed)> done;
    };
    /** Brings a box up and returns at once. Called on the message thread. */
    using BoxMaker = std::function<void (Box)>;

    SordelinPrompt();
    ~SordelinPrompt() override;

    void tell (const std::string& title, const std::string& text, const std::string& button = "OK") override;
    bool askYesNo (const std::string& title, const std::string& text) override;
    void askText (const std::string& title, const std::string& applyButton, const std::string& cancelButton,
                  TextAnswer answer) override;

    /** Runs an operation that may ask questions; it runs in here once, with the cautious answer to each. If it asked
        and the window shows, its boxes and its MVException are held back and the real question comes up. On "Yes" the
        operation runs once more, later, with that question answered yes (and so on if it then asks another one); on
        "No" what was held back is shown. An MVException of the last run becomes a box with failureTitle. finished is
        called once after the last run. Both must stay callable as long as the prompt lives. */
    void runAsking (const std::string& failureTitle, std::function<void()> operation,
                    std::function<void()> finished = {});

    /** Told by the view as it comes and goes. */
    void setShowing (bool on) { showing.store (on, std::memory_order_relaxed); }
    bool isShowing() const { return showing.load (std::memory_order_relaxed); }

    /** Who brings boxes up from now on; null for the toolkit's alert windows. */
    void setBoxMaker (BoxMaker maker);

private:
    struct Asking;
    struct Life;

    void show (Box box);
    void run (const std::shared_ptr<Asking>& asking);
    void showQuestion (const std::shared_ptr<Asking>& asking);
    void end (Asking& asking);
    void setCurrent (Asking* asking);
    Asking* askingHere() const;

    std::atomic<bool> showing { false };
    std::shared_ptr<Life> life; ///< lets boxes that outlive the prompt find out
    mutable std::mutex askingLock;
    Asking* current = nullptr; ///< the operation under way, on that thread
    std::thread::id askingThread;
};

} // namespace morvanelab
