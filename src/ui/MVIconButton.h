// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVIcons.h"

namespace morvanelab
{

/** A button with an icon, alone or with its text beside it. It never takes the keyboard by a click. As any JUCE
    button it can be a toggle (setClickingTogglesState); being on shows in the tone's colour. Message thread. */
class MVIconButton : public juce::Button
{
public:
    /** What being pressed or on means. */
    enum class Tone
    {
        normal, ///< accent
        learn,  ///< waits for something
        danger  ///< silences or deletes
    };
    enum class Style
    {
        iconOnly,
        iconAndText, ///< getButtonText() right of the icon
        bare         ///< the icon without a body, a body only under the mouse
    };

    /** The name is the component's name and the text; the tooltip is separate (setTooltip). */
    MVIconButton (const juce::String& name, MVIcon icon, Style style = Style::iconOnly);

    void setIcon (MVIcon icon);
    MVIcon icon() const { return shownIcon; }
    void setTone (Tone tone);

    /** Width that shows icon and text whole at a height. */
    int idealWidth (int height) const;

    void paintButton (juce::Graphics& graphics, bool highlighted, bool down) override;

private:
    MVIcon shownIcon;
    Style style;
    Tone tone = Tone::normal;
};

} // namespace morvanelab
