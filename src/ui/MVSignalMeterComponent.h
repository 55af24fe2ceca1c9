// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVTheme.h"

#include <array>

namespace morvanelab
{

/** A meter drawn from a picture: the picture's lower part shows up to the level. Message thread. */
class MVSignalMeterComponent : public juce::Component
{
public:
    /** The mode in which two levels stand side by side. */
    static constexpr int twoLevels = 2;
    static constexpr int levelCount = 2;

    explicit MVSignalMeterComponent (int modeToUse = 1);

    void setMode (int modeToUse);
    int mode() const { return shownMode; }
    /** A level, 0 to 1 (clamped when drawn; not-a-number counts as 0), at an index of 0 or 1; another index does
       nothing. Repaints only if the level differs. */
    void setLevel (int index, float level);
    float level (int index) const;
    /** The picture of a full meter; an invalid image draws the theme's own. */
    void setMeterImage (const juce::Image& image);

    void paint (juce::Graphics& graphics) override;

private:
    void paintLevel (juce::Graphics& graphics, juce::Rectangle<int> area, float level) const;
    void makeOwnImage();

    int shownMode;
    std::array<float, levelCount> levels {};
    juce::Image meterImage;
    bool ownImage = true;
    std::uint32_t imageRevision = 0;
};

} // namespace morvanelab
