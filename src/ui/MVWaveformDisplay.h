// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVDataAnimator.h"
#include "ui/MVDisplayBackdrop.h"

namespace morvanelab
{

/** The scrolling waveform: one column a block, from the block's least to its greatest sample, the newest at the right
    edge. The sign is not inverted: positive samples lie below the middle. */
class MVWaveformDisplay : public MVDataAnimator
{
public:
    static constexpr int ringSize = 68;
    static constexpr int columnsAcross = 64; ///< the ring's last columns lie beyond the left edge

    MVWaveformDisplay();

    /** Takes a block of any length as one column. */
    void processData (const double* samples, int byteCount) override;
    void paintDisplay (juce::Graphics& graphics) override;
    void resized() override;

    using Ring = std::array<double, ringSize>;
    /** y of the greatest sample of each column, oldest at the write index. */
    const Ring& maxima() const { return upper; }
    /** y of the least sample. */
    const Ring& minima() const { return lower; }
    int writeIndex() const { return writePosition; }

private:
    void sampleRateChanged() override;
    void paintBackdrop (juce::Graphics& graphics) const;

    int mid = 0;
    double span = 0.0;
    double step = 0.0;
    Ring upper {};
    Ring lower {};
    int writePosition = 0;
    MVDisplayBackdrop backdrop;
};

} // namespace morvanelab
