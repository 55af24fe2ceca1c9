// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVSpectrumDisplay.h"

#include "dsp/MVSpectralMath.h"
#include "ui/MVDisplayMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr int stretch = MVSpectrumDisplay::transformSize / 2; // samples that are transformed
constexpr int searchedSamples = stretch + 768;                // with a whole period before, down to 57 Hz at 44.1 kHz
constexpr float lineWidth = 1.4F;

const MVFrequencyAxis& frequencyAxis()
{
    static const MVFrequencyAxis axis (stretch / 2);
    return axis;
}

} // namespace

MVSpectrumDisplay::MVSpectrumDisplay() : MVRepaintPacedDisplay (shortestInterval, searchedSamples)
{
    prepareSpectra (stretch);
}

void MVSpectrumDisplay::resized()
{
    baseline = static_cast<float> (getHeight()) * 0.95F;
    span = static_cast<float> (getHeight()) * -0.9F;
    values.fill (baseline);
}

void MVSpectrumDisplay::sampleRateChanged() { backdrop.invalidate(); }

void MVSpectrumDisplay::processData (const double* samples, int byteCount)
{
    const BusyScope busy (*this, samples, byteCount);
    if (! needsData)
        return;
    const int position = displayMath::upwardCrossing (samples, busy.size());
    if (busy.size() - position >= stretch)
        displayMath::spectrumHeights (samples + position, stretch, spectrum.data(), values.data(), baseline, span);
    else
        values.fill (baseline);
    needsData = false;
    repaint();
}

void MVSpectrumDisplay::paintBackdrop (juce::Graphics& graphics) const
{
    const auto bounds = getLocalBounds();
    displayAxes::paintBackground (graphics, bounds);

    MVAxisMarks frequencies;
    for (const double hz : frequencyAxis().marks (sampleRate()))
        frequencies.push_back ({ static_cast<float> (getWidth() * frequencyAxis().positionOf (hz, sampleRate())),
                                 displayAxes::frequencyText (hz) });
    displayAxes::paintUprights (graphics, bounds, frequencies);

    // The scale is linear, and its top the strongest part of the moment.
    MVAxisMarks levels;
    for (const double decibels : { 0.0, -3.0, -6.0, -12.0, -20.0 })
        levels.push_back ({ static_cast<float> (baseline + span * std::pow (10.0, decibels / 20.0)),
                            juce::String (juce::roundToInt (decibels)) + " dB" });
    displayAxes::paintLevels (graphics, bounds, levels);
    displayAxes::paintTitle (graphics, bounds, "Spectrum");
}

void MVSpectrumDisplay::paintDisplay (juce::Graphics& graphics)
{
    backdrop.draw (graphics, getLocalBounds(), [this] (juce::Graphics& g) { paintBackdrop (g); });

    constexpr int mostPoints = 512;
    std::array<float, mostPoints> curve;
    const int count = std::clamp (getWidth() / 2, 2, mostPoints);
    frequencyAxis().curve (values.data(), curve.data(), count, false);

    juce::Path line;
    const float distance = static_cast<float> (getWidth()) / static_cast<float> (count - 1);
    line.startNewSubPath (0.0F, curve[0]);
    for (int i = 1; i < count; ++i)
        line.lineTo (static_cast<float> (i) * distance, curve[static_cast<std::size_t> (i)]);
    displayAxes::paintTrace (graphics, line, static_cast<float> (getWidth()), static_cast<float> (baseline), lineWidth);
    if (isSilent())
        displayAxes::paintNoSignal (graphics, getLocalBounds());
    needsData = true;
}

} // namespace morvanelab
