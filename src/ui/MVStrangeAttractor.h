// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVDataAnimator.h"
#include "ui/MVDisplayBackdrop.h"

namespace morvanelab
{

/** A phase portrait: the signal against itself reversed, block by block, in colours that wander with the signal's
    brightness while old traces fade. */
class MVStrangeAttractor : public MVDataAnimator
{
public:
    MVStrangeAttractor();

    void processData (const double* samples, int byteCount) override;
    void paintDisplay (juce::Graphics& graphics) override;
    void resized() override;

    /** What has been drawn, as large as the display in pixels of the screen it was last painted on. */
    const juce::Image& image() const { return picture; }

private:
    void fitPicture();
    void paintBackdrop (juce::Graphics& graphics) const;

    juce::Image picture;
    double pictureScale = 1.0; ///< pixels of the screen a pixel of the display
    double phaseA = 0.0;       ///< red; none of the three is ever set back
    double phaseB = 0.0;       ///< green
    double phaseC = 0.0;       ///< blue
    juce::Image canvas;        ///< traces over the background, as it is shown
    MVDisplayBackdrop backdrop;
};

} // namespace morvanelab
