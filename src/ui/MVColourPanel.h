// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVLookAndFeel.h"

#include <juce_gui_extra/juce_gui_extra.h>

#include <functional>

namespace morvanelab
{

/** The table of colours with a selector: a change shows at once in the whole window it stands in. What is to be stored
   is MVLookAndFeel::customColoursAsXml. Message thread. */
class MVColourPanel : public juce::Component, private juce::ListBoxModel, private juce::ChangeListener
{
public:
    static constexpr int usualWidth = 560;
    static constexpr int usualHeight = 380;

    MVColourPanel();
    ~MVColourPanel() override;

    /** Called after every change of a colour. */
    std::function<void()> onChange;

    /** Shows a colour in the selector, as a click on its row does. */
    void choose (MVThemeColour colour);

    void paint (juce::Graphics& graphics) override;
    void resized() override;

private:
    int getNumRows() override { return static_cast<int> (themeColourCount); }
    void paintListBoxItem (int row, juce::Graphics& graphics, int width, int height, bool selected) override;
    void selectedRowsChanged (int lastRow) override;
    void changeListenerCallback (juce::ChangeBroadcaster*) override;
    void takeChange();
    const MVThemeEntry* chosen() const;

    juce::SharedResourcePointer<MVSharedLookAndFeel> shared;
    juce::ListBox list { "Colours", this };
    juce::ColourSelector selector { juce::ColourSelector::showColourAtTop | juce::ColourSelector::editableColour
                                    | juce::ColourSelector::showSliders | juce::ColourSelector::showColourspace
                                    | juce::ColourSelector::showAlphaChannel };
    juce::TextButton defaultButton { "Default", "This colour as it was at first" };
    juce::TextButton allButton { "All defaults", "All colours as they were at first" };
};

} // namespace morvanelab
