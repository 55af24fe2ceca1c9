// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plugin/SordelinOverlay.h"
#include "plugin/SordelinPrompt.h"

#include <deque>

namespace morvanelab
{

/** Brings the plug-in's boxes up inside its window, one after the other. A box that is still open when the window goes
    counts as declined. Component ids: "BOX" with its title as name, "BOX TEXT", "BOX FIELD", and the texts of the
    buttons. Message thread. */
class SordelinBoxes
{
public:
    /** The parent outlives the boxes. */
    explicit SordelinBoxes (juce::Component& parentToUse);
    ~SordelinBoxes();

    void show (SordelinPrompt::Box box);
    /** Closes the box that shows and all that wait, as declined. */
    void declineAll();
    bool isOpen() const { return overlay.isOpen(); }
    /** After the window has changed its size. */
    void fit();

private:
    class BoxComponent;

    void showNext();
    void answer (bool accepted, const juce::String& typed);

    juce::Component& parent;
    SordelinOverlay overlay { SordelinOverlay::Closing::byContentOnly };
    std::deque<SordelinPrompt::Box> waiting; ///< the first one shows
};

} // namespace morvanelab
