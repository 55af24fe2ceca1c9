// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinPrompt.h"

#include "foundation/MVException.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <optional>

namespace morvanelab
{

namespace
{

constexpr const char* fieldName = "text";

juce::String fromUtf8 (const std::string& bytes) { return juce::String::fromUTF8 (bytes.c_str()); }

/** The toolkit's own alert windows. */
void showAlert (SordelinPrompt::Box box)
{
    const auto icon =
        box.buttons.size() > 1 ? juce::MessageBoxIconType::QuestionIcon : juce::MessageBoxIconType::WarningIcon;
    auto* window =
        new juce::AlertWindow (box.title, box.text, box.hasTextField ? juce::MessageBoxIconType::NoIcon : icon);
    if (box.hasTextField)
        window->addTextEditor (fieldName, {});
    for (int i = 0; i < box.buttons.size(); ++i)
        window->addButton (box.buttons[i], i == 0 ? 1 : 0,
                           juce::KeyPress (i == 0 ? juce::KeyPress::returnKey : juce::KeyPress::escapeKey));
    const auto ended = [window, done = std::move (box.done), hasField = box.hasTextField] (int result)
    { done (result == 1, hasField ? window->getTextEditorContents (fieldName) : juce::String()); };
    window->enterModalState (true, juce::ModalCallbackFunction::create (ended), true);
}

} // namespace

/** What boxes hold of their prompt. The prompt cannot go while one of them uses it. */
struct SordelinPrompt::Life
{
    std::recursive_mutex lock;
    SordelinPrompt* prompt = nullptr;
    BoxMaker makeBox;
};

/** An operation that may ask, from its first run to its end. */
struct SordelinPrompt::Asking
{
    struct Message
    {
        std::string title;
        std::string text;
        std::string button;
    };
    struct Agreed
    {
        std::string title;
        std::string text;
        bool used = false; ///< in the present run
    };

    std::string failureTitle;
    std::function<void()> operation;
    std::function<void()> finished;
    std::vector<Agreed> agreed;
    // Of the present run:
    std::optional<Message> question;
    std::vector<Message> held;
    std::optional<std::string> failure;
};

SordelinPrompt::SordelinPrompt() : life (std::make_shared<Life>())
{
    life->prompt = this;
    life->makeBox = showAlert;
}

SordelinPrompt::~SordelinPrompt()
{
    const std::lock_guard<std::recursive_mutex> scope (life->lock);
    life->prompt = nullptr;
}

void SordelinPrompt::setBoxMaker (BoxMaker maker)
{
    const std::lock_guard<std::recursive_mutex> scope (life->lock);
    life->makeBox = maker != nullptr ? std::move (maker) : BoxMaker (showAlert);
}

void SordelinPrompt::show (Box box)
{
    auto done = std::move (box.done);
    box.done = [alive = life, done = std::move (done)] (bool accepted, const juce::String& typed)
    {
        const std::lock_guard<std::recursive_mutex> scope (alive->lock);
        if (alive->prompt != nullptr && done != nullptr)
            done (accepted, typed);
    };
    juce::MessageManager::callAsync (
        [alive = life, box = std::move (box)]
        {
            const std::lock_guard<std::recursive_mutex> scope (alive->lock);
            if (alive->prompt != nullptr)
                alive->makeBox (box);
        });
}

void SordelinPrompt::tell (const std::string& title, const std::string& text, const std::string& button)
{
    if (auto* asking = askingHere())
        asking->held.push_back ({ title, text, button });
    else if (isShowing())
        show ({ fromUtf8 (title), fromUtf8 (text), { fromUtf8 (button) }, false, {} });
    else
        MVUserPrompt::cautious().tell (title, text, button);
}

bool SordelinPrompt::askYesNo (const std::string& title, const std::string& text)
{
    auto* asking = askingHere();
    if (asking == nullptr)
    {
        if (isShowing())
            tell (title, text);
        return MVUserPrompt::cautious().askYesNo (title, text);
    }

    for (auto& each : asking->agreed)
        if (! each.used && each.title == title && each.text == text)
        {
            each.used = true;
            return true;
        }
    if (! isShowing())
        return MVUserPrompt::cautious().askYesNo (title, text);
    if (! asking->question)
        asking->question = Asking::Message { title, text, {} };
    return false;
}

void SordelinPrompt::askText (const std::string& title, const std::string& applyButton, const std::string& cancelButton,
                              TextAnswer answer)
{
    if (! isShowing())
    {
        MVUserPrompt::cautious().askText (title, applyButton, cancelButton, std::move (answer));
        return;
    }
    Box box { fromUtf8 (title), {}, { fromUtf8 (applyButton), fromUtf8 (cancelButton) }, true, {} };
    box.done = [answer = std::move (answer)] (bool accepted, const juce::String& typed)
    {
        if (answer != nullptr)
            answer (accepted ? std::optional<std::string> (typed.toStdString()) : std::nullopt);
    };
    show (std::move (box));
}

void SordelinPrompt::runAsking (const std::string& failureTitle, std::function<void()> operation,
                                std::function<void()> finished)
{
    if (askingHere() != nullptr) // part of an operation that can be run again as a whole
    {
        operation();
        if (finished)
            finished();
        return;
    }
    auto asking = std::make_shared<Asking>();
    asking->failureTitle = failureTitle;
    asking->operation = std::move (operation);
    asking->finished = std::move (finished);
    run (asking);
}

void SordelinPrompt::run (const std::shared_ptr<Asking>& asking)
{
    asking->question.reset();
    asking->held.clear();
    asking->failure.reset();
    for (auto& each : asking->agreed)
        each.used = false;

    setCurrent (asking.get());
    try
    {
        asking->operation();
    }
    catch (const MVException& raised)
    {
        asking->failure = raised.text();
    }
    catch (...)
    {
        setCurrent (nullptr);
        throw;
    }
    setCurrent (nullptr);

    if (asking->question)
        showQuestion (asking);
    else
        end (*asking);
}

void SordelinPrompt::showQuestion (const std::shared_ptr<Asking>& asking)
{
    const auto& question = *asking->question;
    Box box { fromUtf8 (question.title), fromUtf8 (question.text), { "Yes", "No" }, false, {} };
    box.done = [this, asking] (bool accepted, const juce::String&)
    {
        if (! accepted)
        {
            end (*asking);
            return;
        }
        asking->agreed.push_back ({ asking->question->title, asking->question->text });
        run (asking);
    };
    show (std::move (box));
}

void SordelinPrompt::end (Asking& asking)
{
    for (const auto& message : asking.held)
        tell (message.title, message.text, message.button);
    if (asking.failure)
        tell (asking.failureTitle, *asking.failure);
    if (asking.finished)
        asking.finished();
}

void SordelinPrompt::setCurrent (Asking* asking)
{
    const std::lock_guard<std::mutex> scope (askingLock);
    current = asking;
    askingThread = std::this_thread::get_id();
}

SordelinPrompt::Asking* SordelinPrompt::askingHere() const
{
    const std::lock_guard<std::mutex> scope (askingLock);
    return askingThread == std::this_thread::get_id() ? current : nullptr;
}

} // namespace morvanelab
