// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVDisplayBackdrop.h"
#include "ui/MVRepaintPacedDisplay.h"

namespace morvanelab
{

/** A waveform that stands still: each picture begins where the signal first goes up through zero. */
class MVPLLWaveformDisplay : public MVRepaintPacedDisplay
{
public:
    static constexpr int numPoints = 146;

    MVPLLWaveformDisplay();

    void processData (const double* samples, int byteCount) override;
    void paintDisplay (juce::Graphics& graphics) override;
    void resized() override;

    /** y of each point, from the trigger on; the middle behind the block's end. */
    const std::array<double, numPoints>& points() const { return values; }

private:
    void sampleRateChanged() override;
    void paintBackdrop (juce::Graphics& graphics) const;

    int mid = 0;
    double span = 0.0;
    double step = 0.0;
    std::array<double, numPoints> values {};
    MVDisplayBackdrop backdrop;
};

} // namespace morvanelab
