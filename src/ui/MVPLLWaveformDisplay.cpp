// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVPLLWaveformDisplay.h"

#include "ui/MVDisplayMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr double excursion = -0.6F;   // single precision
constexpr int searchedSamples = 2048; // a whole period down to 22 Hz at 44.1 kHz
constexpr float lineWidth = 1.6F;

} // namespace

MVPLLWaveformDisplay::MVPLLWaveformDisplay() : MVRepaintPacedDisplay (shortestInterval, searchedSamples) {}

void MVPLLWaveformDisplay::resized()
{
    mid = getHeight() / 2;
    span = mid * static_cast<double> (-0.85F);
    step = static_cast<double> (getWidth()) / numPoints;
    values.fill (mid);
}

void MVPLLWaveformDisplay::sampleRateChanged() { backdrop.invalidate(); }

void MVPLLWaveformDisplay::processData (const double* samples, int byteCount)
{
    const BusyScope busy (*this, samples, byteCount);
    if (! needsData)
        return;
    if (busy.size() == 0)
    {
        values.fill (mid);
        return;
    }
    const int position = displayMath::upwardCrossing (samples, busy.size());
    const int taken = std::min (numPoints, busy.size() - position);
    const auto rest = std::transform (samples + position, samples + position + taken, values.begin(),
                                      [this] (double sample) { return mid * sample * excursion + mid; });
    std::fill (rest, values.end(), mid);
    needsData = false;
    repaint();
}

void MVPLLWaveformDisplay::paintBackdrop (juce::Graphics& graphics) const
{
    const auto bounds = getLocalBounds();
    displayAxes::paintBackground (graphics, bounds);

    const double shown = numPoints / sampleRate();
    const double stepSeconds = displayAxes::niceStep (shown, std::max (getWidth() / 70, 1));
    MVAxisMarks times;
    for (double time = stepSeconds; time < shown; time += stepSeconds)
        times.push_back ({ static_cast<float> (getWidth() * time / shown), displayAxes::secondsText (time) });
    displayAxes::paintUprights (graphics, bounds, times);

    MVAxisMarks levels;
    for (const double decibels : { 0.0, -6.0, -12.0 })
    {
        const double height = mid * std::pow (10.0, decibels / 20.0) * excursion;
        const auto text = juce::String (juce::roundToInt (decibels)) + " dB";
        levels.push_back ({ static_cast<float> (mid + height), text });
        levels.push_back ({ static_cast<float> (mid - height), text });
    }
    displayAxes::paintLevels (graphics, bounds, levels);
    graphics.setColour (themeColour (MVThemeColour::panelOutline));
    graphics.fillRect (0.0F, static_cast<float> (mid) - 0.5F, static_cast<float> (getWidth()), 1.0F);
    displayAxes::paintTitle (graphics, bounds, "Phase Lock Waveform");
}

void MVPLLWaveformDisplay::paintDisplay (juce::Graphics& graphics)
{
    backdrop.draw (graphics, getLocalBounds(), [this] (juce::Graphics& g) { paintBackdrop (g); });

    juce::Path line;
    for (int i = 0; i < numPoints; ++i)
    {
        const double value = values[static_cast<std::size_t> (i)];
        const double y = std::isfinite (value) ? std::clamp (value, -1.0 * getHeight(), 2.0 * getHeight()) : mid;
        const juce::Point<double> point (i * step, y);
        if (i == 0)
            line.startNewSubPath (point.toFloat());
        else
            line.lineTo (point.toFloat());
    }
    displayAxes::paintTrace (graphics, line, static_cast<float> ((numPoints - 1) * step), static_cast<float> (mid),
                             lineWidth);
    if (isSilent())
        displayAxes::paintNoSignal (graphics, getLocalBounds());
    needsData = true;
}

} // namespace morvanelab
