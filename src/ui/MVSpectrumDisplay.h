// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVDisplayBackdrop.h"
#include "ui/MVRepaintPacedDisplay.h"

namespace morvanelab
{

/** The spectrum of the samples behind the first upward zero crossing, each picture scaled to its own peak. */
class MVSpectrumDisplay : public MVRepaintPacedDisplay
{
public:
    static constexpr int transformSize = 512;
    static constexpr int numBins = transformSize / 2; ///< all; the lower half is drawn, the upper mirrors it

    MVSpectrumDisplay();

    void processData (const double* samples, int byteCount) override;
    void paintDisplay (juce::Graphics& graphics) override;
    void resized() override;

    /** y of each bin. */
    const std::array<double, numBins>& bins() const { return values; }

private:
    void sampleRateChanged() override;
    void paintBackdrop (juce::Graphics& graphics) const;

    double baseline = 0.0;
    double span = 0.0;
    std::array<double, transformSize> spectrum {};
    std::array<double, numBins> values {};
    MVDisplayBackdrop backdrop;
};

} // namespace morvanelab
