// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVSpectrogramDisplay.h"

#include "dsp/MVSpectralMath.h"
#include "foundation/MVMath.h"
#include "ui/MVDisplayMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr int stretch = MVSpectrogramDisplay::transformSize / 2; // samples that are transformed
constexpr int drawnBins = MVSpectrogramDisplay::transformSize / 4;
constexpr double rootAbove = 0.0001;

} // namespace

MVSpectrogramDisplay::MVSpectrogramDisplay() : MVRepaintPacedDisplay (interval, stretch), axes (true)
{
    prepareSpectra (stretch);
}

void MVSpectrogramDisplay::resized()
{
    baseline = static_cast<float> (getHeight()) * 0.95F;
    span = static_cast<float> (getHeight()) * -0.9F;

    const auto old = columns;
    const int oldPosition = writePosition;
    columns = juce::Image (juce::Image::RGB, std::max (getWidth(), 1), std::max (truncToInt (-span), 1), true,
                           juce::SoftwareImageType());
    writePosition = 0;
    juce::Graphics graphics (columns);
    graphics.fillAll (heat.colours().front());
    if (old.isNull())
        return;
    // What was there stays at the right edge.
    const int height = columns.getHeight();
    const int kept = old.getWidth() - oldPosition;
    graphics.setImageResamplingQuality (juce::Graphics::mediumResamplingQuality);
    const int left = columns.getWidth() - old.getWidth();
    graphics.drawImage (old, left, 0, kept, height, oldPosition, 0, kept, old.getHeight());
    graphics.drawImage (old, left + kept, 0, oldPosition, height, 0, 0, oldPosition, old.getHeight());
}

void MVSpectrogramDisplay::sampleRateChanged() { axes.invalidate(); }

void MVSpectrogramDisplay::processData (const double* samples, int byteCount)
{
    const BusyScope busy (*this, samples, byteCount);
    if (! needsData)
        return;
    if (busy.size() >= stretch)
    {
        displayMath::transformStretch (samples, spectrum.data(), stretch);
        const double peak = displayMath::takeMagnitudes (spectrum.data(), stretch, spectrum.data());
        const double factor = peak > 0.0 ? 1.0 / peak : 0.0;
        drawColumn (std::isfinite (factor) ? factor : 0.0);
    }
    else
        spectrum.fill (baseline);
    needsData = false;
    repaint();
}

void MVSpectrogramDisplay::drawColumn (double factor)
{
    const auto& strip = heat.colours();
    const int height = columns.getHeight();
    const juce::Image::BitmapData pixels (columns, juce::Image::BitmapData::writeOnly);
    for (int row = 0; row < height; ++row)
    {
        double v = spectrum[static_cast<std::size_t> (row * drawnBins / height)] * factor;
        if (v > rootAbove)
            v = std::sqrt (v);
        const int index = std::clamp (truncToInt (v * (MVHeatStrip::numColours - 1)), 0, MVHeatStrip::numColours - 1);
        pixels.setPixelColour (writePosition, height - 1 - row, strip[static_cast<std::size_t> (index)]);
    }
    writePosition = (writePosition + 1) % columns.getWidth();
}

void MVSpectrogramDisplay::paintAxes (juce::Graphics& graphics) const
{
    const auto bounds = getLocalBounds();
    const double half = sampleRate() * 0.5;
    MVAxisMarks frequencies;
    const double stepHz = displayAxes::niceStep (half, std::max (getHeight() / 36, 2));
    for (double hz = stepHz; hz < half; hz += stepHz)
        frequencies.push_back ({ static_cast<float> (baseline + span * hz / half), displayAxes::frequencyText (hz) });
    displayAxes::paintLevels (graphics, bounds, frequencies);

    const double shown = getWidth() * timerInterval / 1000.0;
    const double stepSeconds = std::max (displayAxes::niceStep (shown, std::max (getWidth() / 70, 1)), 1.0);
    MVAxisMarks times;
    for (double back = stepSeconds; back < shown; back += stepSeconds)
        times.push_back ({ static_cast<float> (getWidth() * (1.0 - back / shown)), displayAxes::secondsText (-back) });
    displayAxes::paintUprights (graphics, bounds, times);
    displayAxes::paintTitle (graphics, bounds, "Spectrogram");
}

void MVSpectrogramDisplay::paintDisplay (juce::Graphics& graphics)
{
    displayAxes::paintBackground (graphics, getLocalBounds());
    const int width = columns.getWidth();
    const int height = columns.getHeight();
    const int top = juce::roundToInt (baseline) - height;
    const int right = width - writePosition;
    graphics.setOpacity (1.0F);
    graphics.setImageResamplingQuality (juce::Graphics::lowResamplingQuality);
    graphics.drawImage (columns, 0, top, right, height, writePosition, 0, right, height);
    graphics.drawImage (columns, right, top, writePosition, height, 0, 0, writePosition, height);
    axes.draw (graphics, getLocalBounds(), [this] (juce::Graphics& g) { paintAxes (g); });
    if (isSilent())
        displayAxes::paintNoSignal (graphics, getLocalBounds());
    needsData = true;
}

} // namespace morvanelab
