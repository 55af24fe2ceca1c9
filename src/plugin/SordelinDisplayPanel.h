// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVDataAnimator.h"
#include "ui/MVMetaDataImageView.h"
#include "ui/MVSectionPanel.h"

namespace morvanelab
{

class SordelinMainComponent;

/** Shows one of the signal displays, or the picture of the patch, and the button for the menu of them. Message
    thread. */
class SordelinDisplayPanel : public juce::Component
{
public:
    /** The main component outlives the panel. */
    explicit SordelinDisplayPanel (SordelinMainComponent& mainComponent);
    ~SordelinDisplayPanel() override;

    /** Shows the view the main component asks for, new if it is another one than now, and the present patch in it. */
    void refresh();
    /** The view that shows. */
    juce::Component& getView() { return *visualiser; }

    void resized() override;

private:
    void makeVisualiser (int mode);
    void showViewMenu();
    void showPatch();

    SordelinMainComponent& main;
    MVFeedDisplaySource source;
    std::unique_ptr<juce::Component> visualiser;
    int visualiserMode = -1;
    juce::TextButton viewButton { "VIEW" };
};

} // namespace morvanelab
