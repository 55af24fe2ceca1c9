// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinBoxes.h"

#include "ui/MVTheme.h"

namespace morvanelab
{

namespace
{

constexpr int boxWidth = 380;
constexpr int titleHeight = 30;
constexpr int buttonHeight = 26;
constexpr int buttonWidth = 90;
constexpr int smallestTextHeight = 28;

} // namespace

/** Title, text or field, and one or two buttons. */
class SordelinBoxes::BoxComponent : public juce::Component
{
public:
    BoxComponent (const SordelinPrompt::Box& box, SordelinBoxes& owner) : Component (box.title), boxes (owner)
    {
        setComponentID ("BOX");
        setTitle (box.title);
        setWantsKeyboardFocus (! box.hasTextField);
        if (box.hasTextField)
            addField();
        else
            addText (box.text);
        for (int i = 0; i < box.buttons.size(); ++i)
            addButton (box.buttons[i], i == 0);
        setSize (boxWidth, titleHeight + middleHeight + buttonHeight + 2 * metrics::margin);
    }

    void paint (juce::Graphics& graphics) override
    {
        graphics.setColour (themeColour (MVThemeColour::text));
        graphics.setFont (themeFont (fontHeights::title, MVFontWeight::semiBold));
        graphics.drawText (getName(), getLocalBounds().removeFromTop (titleHeight), juce::Justification::topLeft);
    }

    void resized() override
    {
        auto area = getLocalBounds().withTrimmedTop (titleHeight);
        auto row = area.removeFromBottom (buttonHeight);
        for (auto i = buttons.size(); i > 0; --i)
        {
            buttons[i - 1]->setBounds (row.removeFromRight (buttonWidth));
            row.removeFromRight (metrics::gap);
        }
        area.removeFromBottom (metrics::margin);
        text.setBounds (area);
        field.setBounds (area.removeFromTop (metrics::controlHeight));
    }

    bool keyPressed (const juce::KeyPress& key) override
    {
        if (key == juce::KeyPress::returnKey)
            boxes.answer (true, field.getText());
        else if (key == juce::KeyPress::escapeKey)
            boxes.answer (buttons.size() < 2, {});
        else
            return false;
        return true;
    }

    void focusGained (FocusChangeType) override
    {
        if (field.isVisible())
            field.grabKeyboardFocus();
    }

    void takeKeys() { field.isVisible() ? field.grabKeyboardFocus() : grabKeyboardFocus(); }

private:
    void addField()
    {
        field.setComponentID ("BOX FIELD");
        field.setFont (themeFont (fontHeights::normal));
        field.onReturnKey = [this] { boxes.answer (true, field.getText()); };
        field.onEscapeKey = [this] { boxes.answer (false, {}); };
        addAndMakeVisible (field);
        middleHeight = metrics::controlHeight;
    }

    void addText (const juce::String& shown)
    {
        text.setComponentID ("BOX TEXT");
        text.setMultiLine (true);
        text.setReadOnly (true);
        text.setCaretVisible (false);
        text.setScrollbarsShown (true);
        text.setWantsKeyboardFocus (false);
        text.setColour (juce::TextEditor::backgroundColourId, juce::Colours::transparentBlack);
        text.setColour (juce::TextEditor::outlineColourId, juce::Colours::transparentBlack);
        text.setFont (themeFont (fontHeights::normal));
        text.setBounds (0, 0, boxWidth, smallestTextHeight);
        text.setText (shown, false);
        addAndMakeVisible (text);
        constexpr int largestTextHeight = 200;
        middleHeight = juce::jlimit (smallestTextHeight, largestTextHeight, text.getTextHeight() + 2 * metrics::gap);
    }

    void addButton (const juce::String& label, bool accepts)
    {
        auto button = std::make_unique<juce::TextButton> (label);
        button->setComponentID (label);
        button->setWantsKeyboardFocus (false);
        button->setMouseClickGrabsKeyboardFocus (false);
        button->onClick = [this, accepts] { boxes.answer (accepts, field.getText()); };
        addAndMakeVisible (*button);
        buttons.push_back (std::move (button));
    }

    SordelinBoxes& boxes;
    juce::TextEditor text;
    juce::TextEditor field;
    std::vector<std::unique_ptr<juce::TextButton>> buttons;
    int middleHeight = 0;
};

SordelinBoxes::SordelinBoxes (juce::Component& parentToUse) : parent (parentToUse) {}

SordelinBoxes::~SordelinBoxes() { declineAll(); }

void SordelinBoxes::show (SordelinPrompt::Box box)
{
    waiting.push_back (std::move (box));
    if (waiting.size() == 1)
        showNext();
}

void SordelinBoxes::showNext()
{
    if (waiting.empty())
        return;
    auto content = std::make_unique<BoxComponent> (waiting.front(), *this);
    auto* box = content.get();
    overlay.show (parent, std::move (content), true);
    if (box->isShowing())
        box->takeKeys();
}

void SordelinBoxes::answer (bool accepted, const juce::String& typed)
{
    if (waiting.empty())
        return;
    auto box = std::move (waiting.front());
    waiting.pop_front();
    overlay.close();
    box.done (accepted, typed); // may bring up the next one
    if (! overlay.isOpen())
        showNext();
}

void SordelinBoxes::declineAll()
{
    while (! waiting.empty())
    {
        auto box = std::move (waiting.front());
        waiting.pop_front();
        box.done (false, {});
    }
    overlay.close();
}

void SordelinBoxes::fit()
{
    if (overlay.isOpen())
        overlay.setBounds (parent.getLocalBounds());
}

} // namespace morvanelab
