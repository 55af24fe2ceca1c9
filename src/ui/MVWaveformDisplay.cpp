// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVWaveformDisplay.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr double excursion = 0.6F; // single precision
constexpr float lineWidth = 1.2F;

/** A y that can be drawn, whatever came in. */
float drawable (double y, int height)
{
    return static_cast<float> (std::isfinite (y) ? std::clamp (y, -1.0 * height, 2.0 * height) : 0.5 * height);
}

} // namespace

MVWaveformDisplay::MVWaveformDisplay() : MVDataAnimator (shortestInterval) {}

void MVWaveformDisplay::resized()
{
    mid = getHeight() / 2;
    span = mid * static_cast<double> (-0.85F);
    step = static_cast<double> (getWidth()) / columnsAcross;
    upper.fill (mid);
    lower.fill (mid);
}

void MVWaveformDisplay::sampleRateChanged() { backdrop.invalidate(); }

void MVWaveformDisplay::processData (const double* samples, int byteCount)
{
    const BusyScope busy (*this, samples, byteCount);
    double least = 1.0e7;
    double greatest = -1.0e7;
    for (int i = 0; i < busy.size(); ++i)
    {
        least = std::min (least, samples[i]);
        greatest = std::max (greatest, samples[i]);
    }
    if (busy.size() == 0)
        least = greatest = 0.0;

    const auto index = static_cast<std::size_t> (writePosition);
    upper[index] = mid * greatest * excursion + mid;
    lower[index] = mid * least * excursion + mid;
    writePosition = (writePosition + 1) % ringSize;
    repaint();
}

void MVWaveformDisplay::paintBackdrop (juce::Graphics& graphics) const
{
    const auto bounds = getLocalBounds();
    displayAxes::paintBackground (graphics, bounds);

    const double secondsAColumn = MVDisplaySource::maxFrames / sampleRate();
    const double shown = secondsAColumn * columnsAcross;
    const double stepSeconds = displayAxes::niceStep (shown, std::max (getWidth() / 70, 1));
    MVAxisMarks times;
    for (double back = stepSeconds; back < shown; back += stepSeconds)
        times.push_back ({ static_cast<float> (getWidth() * (1.0 - back / shown)), displayAxes::secondsText (-back) });
    displayAxes::paintUprights (graphics, bounds, times);

    MVAxisMarks levels;
    for (const double decibels : { 0.0, -6.0, -12.0 })
    {
        const double amplitude = std::pow (10.0, decibels / 20.0);
        const auto text = juce::String (juce::roundToInt (decibels)) + " dB";
        levels.push_back ({ static_cast<float> (mid - mid * amplitude * excursion), text });
        levels.push_back ({ static_cast<float> (mid + mid * amplitude * excursion), text });
    }
    displayAxes::paintLevels (graphics, bounds, levels);
    graphics.setColour (themeColour (MVThemeColour::panelOutline));
    graphics.fillRect (0.0F, static_cast<float> (mid) - 0.5F, static_cast<float> (getWidth()), 1.0F);
    displayAxes::paintTitle (graphics, bounds, "Scroll Waveform");
}

void MVWaveformDisplay::paintDisplay (juce::Graphics& graphics)
{
    backdrop.draw (graphics, getLocalBounds(), [this] (juce::Graphics& g) { paintBackdrop (g); });

    // The band between the rings: along the greatest samples to the left and back along the least.
    juce::Path band;
    juce::Path greatest;
    juce::Path least;
    const auto columnOf = [this] (int age)
    { return static_cast<std::size_t> ((writePosition + 2 * ringSize - 1 - age) % ringSize); };
    const auto xOf = [this] (int age) { return static_cast<float> (getWidth() - age * step); };
    for (int age = 0; age < ringSize; ++age)
    {
        const float y = drawable (upper[columnOf (age)], getHeight());
        const float yLeast = drawable (lower[columnOf (age)], getHeight());
        if (age == 0)
        {
            greatest.startNewSubPath (xOf (age), y);
            least.startNewSubPath (xOf (age), yLeast);
            continue;
        }
        greatest.lineTo (xOf (age), y);
        least.lineTo (xOf (age), yLeast);
    }
    band = greatest;
    for (int age = ringSize - 1; age >= 0; --age)
        band.lineTo (xOf (age), drawable (lower[columnOf (age)], getHeight()));
    band.closeSubPath();

    graphics.setColour (themeColour (MVThemeColour::traceFill));
    graphics.fillPath (band);
    graphics.setColour (themeColour (MVThemeColour::trace));
    const juce::PathStrokeType stroke (lineWidth, juce::PathStrokeType::curved);
    graphics.strokePath (greatest, stroke);
    graphics.strokePath (least, stroke);
    if (isSilent())
        displayAxes::paintNoSignal (graphics, getLocalBounds());
}

} // namespace morvanelab
