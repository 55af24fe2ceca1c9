// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvanelab
{

/** A panel that floats above the window: it dims what lies behind it and takes its clicks. Nothing outside the
   plug-in's window is needed, so it works in every host. A click beside the panel or Escape closes it, unless the
   content has to be answered. Message thread. */
class SordelinOverlay : public juce::Component
{
public:
    enum class Closing
    {
        byClickBeside, ///< also by Escape
        byContentOnly
    };

    explicit SordelinOverlay (Closing closing) : closes (closing)
    {
        setMouseClickGrabsKeyboardFocus (false); // a click beside the content leaves it the keyboard
    }
    ~SordelinOverlay() override;

    /** Shows content, centred, above all of parent; the content that was there before goes. takesKeys lets it have the
        keyboard while it shows. */
    void show (juce::Component& parent, std::unique_ptr<juce::Component> content, bool takesKeys);
    void close();
    bool isOpen() const { return panel != nullptr; }
    juce::Component* getContent() const { return panel.get(); }

    /** Called after the overlay has closed, however that came about. */
    std::function<void()> onClose;

    void paint (juce::Graphics& graphics) override;
    void resized() override;
    void mouseDown (const juce::MouseEvent& event) override;
    bool keyPressed (const juce::KeyPress& key) override;

private:
    juce::Rectangle<int> frameBounds() const;

    Closing closes;
    std::unique_ptr<juce::Component> panel;
};

} // namespace morvanelab
