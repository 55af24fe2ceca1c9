// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVDisplayBackdrop.h"
#include "ui/MVHeatStrip.h"
#include "ui/MVRepaintPacedDisplay.h"

namespace morvanelab
{

/** The spectrogram: one column of pixels a picture, low frequencies at the bottom, each column scaled to its own peak,
    the newest at the right edge. */
class MVSpectrogramDisplay : public MVRepaintPacedDisplay
{
public:
    static constexpr int transformSize = 256;
    static constexpr int interval = 100; ///< milliseconds a column

    MVSpectrogramDisplay();

    void processData (const double* samples, int byteCount) override;
    void paintDisplay (juce::Graphics& graphics) override;
    void resized() override;

    /** The columns; the oldest is that at the write column. As high as 90 % of the display. */
    const juce::Image& image() const { return columns; }
    int writeColumn() const { return writePosition; }

private:
    void sampleRateChanged() override;
    void drawColumn (double factor);
    void paintAxes (juce::Graphics& graphics) const;

    double baseline = 0.0;
    double span = 0.0;
    std::array<double, transformSize> spectrum {};
    MVHeatStrip heat;
    juce::Image columns;
    int writePosition = 0;
    MVDisplayBackdrop axes;
};

} // namespace morvanelab
