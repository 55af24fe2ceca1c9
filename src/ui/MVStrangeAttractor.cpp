// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVStrangeAttractor.h"

#include "dsp/MVPcmAnalyzer.h"
#include "foundation/MVMath.h"
#include "ui/MVThinLine.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr float strokeWeight = 0.25F;

// Single precision, as are the products' other constants.
constexpr double drift = 0.00001F;
constexpr double brightnessDrift = 0.0001F;
constexpr double sampleDrift = 0.01F;
constexpr double slowDrift = 0.001F;

juce::uint8 lowByte (double value) { return static_cast<juce::uint8> (truncToInt (value) & 0xFF); }

/** A sample that is a number; a phase would never recover from anything else. */
double sampleAt (const double* samples, int index) { return std::isfinite (samples[index]) ? samples[index] : 0.0; }

/** Lays the traces over the background. The many faint strokes are made stronger, and since their colours begin at
   black and wander, each also glows in the tint. */
void composeTraces (juce::Image& canvas, const juce::Image& back, const juce::Image& traces, juce::Colour tint)
{
    struct Light
    {
        juce::uint32 cover; ///< of the background, 0 to 256
        juce::uint32 glow;  ///< of the tint, 0 to 256
    };
    static const auto lights = []
    {
        std::array<Light, 256> table {};
        for (std::size_t alpha = 0; alpha < table.size(); ++alpha)
        {
            const double strength = 1.0 - std::pow (1.0 - static_cast<double> (alpha) / 255.0, 2.2);
            table[alpha] = { static_cast<juce::uint32> (256.0 * strength),
                             static_cast<juce::uint32> (170.0 * strength) };
        }
        return table;
    }();

    const juce::Image::BitmapData from (traces, juce::Image::BitmapData::readOnly);
    const juce::Image::BitmapData ground (back, juce::Image::BitmapData::readOnly);
    const juce::Image::BitmapData to (canvas, juce::Image::BitmapData::writeOnly);
    const int width = std::min ({ from.width, ground.width, to.width });
    const int height = std::min ({ from.height, ground.height, to.height });
    const auto mix = [] (juce::uint32 below, juce::uint32 trace, juce::uint32 tintPart, const Light& light)
    {
        const auto sum = ((below * (256 - light.cover) + tintPart * light.glow) >> 8) + 2 * trace;
        return static_cast<juce::uint8> (std::min<juce::uint32> (sum, 255));
    };
    for (int y = 0; y < height; ++y)
    {
        const auto* trace = reinterpret_cast<const juce::PixelARGB*> (from.getLinePointer (y));
        const auto* below = reinterpret_cast<const juce::PixelRGB*> (ground.getLinePointer (y));
        auto* out = reinterpret_cast<juce::PixelRGB*> (to.getLinePointer (y));
        std::copy_n (below, width, out);
        for (int x = 0; x < width; ++x)
        {
            if (trace[x].getAlpha() == 0)
                continue;
            const Light& light = lights[trace[x].getAlpha()];
            out[x].setARGB (255, mix (below[x].getRed(), trace[x].getRed(), tint.getRed(), light),
                            mix (below[x].getGreen(), trace[x].getGreen(), tint.getGreen(), light),
                            mix (below[x].getBlue(), trace[x].getBlue(), tint.getBlue(), light));
        }
    }
}

} // namespace

MVStrangeAttractor::MVStrangeAttractor() : MVDataAnimator (shortestInterval) {}

void MVStrangeAttractor::resized() { fitPicture(); }

void MVStrangeAttractor::fitPicture()
{
    const int width = std::max (juce::roundToInt (getWidth() * pictureScale), 1);
    const int height = std::max (juce::roundToInt (getHeight() * pictureScale), 1);
    if (picture.isNull())
        picture = juce::Image (juce::Image::ARGB, width, height, true, juce::SoftwareImageType());
    else
        picture = picture.rescaled (width, height);
}

void MVStrangeAttractor::processData (const double* samples, int byteCount)
{
    const BusyScope busy (*this, samples, byteCount);
    const int n = busy.size();
    if (n == 0 || picture.isNull())
        return;
    fadePicture (picture);

    const double d = 5.0 * MVPcmAnalyzer::zeroCrossings (samples, n) / n;
    const double width = getWidth();
    const double height = getHeight();
    juce::Image::BitmapData pixels (picture, juce::Image::BitmapData::readWrite);
    MVThinLine line (pixels, strokeWeight * static_cast<float> (pictureScale));
    int lastX = 0;
    int lastY = 0;
    for (int i = 0; i < n; ++i)
    {
        const double sample = sampleAt (samples, i);
        const int x = truncToInt ((sample + 1.0) * width / 2.0);
        const int y = truncToInt ((sampleAt (samples, n - 1 - i) + 1.0) * height / 2.0);
        const juce::Colour colour (lowByte (phaseA * d), lowByte (phaseB * d), lowByte (phaseC));
        phaseA += x * drift + d * brightnessDrift;
        phaseB += y * drift - d * brightnessDrift + sample * sampleDrift;
        phaseC += d * slowDrift;
        if (i > 0)
            line.draw (colour, lastX * pictureScale, lastY * pictureScale, x * pictureScale, y * pictureScale);
        lastX = x;
        lastY = y;
    }
    repaint();
}

void MVStrangeAttractor::paintBackdrop (juce::Graphics& graphics) const
{
    const auto bounds = getLocalBounds();
    displayAxes::paintBackground (graphics, bounds);
    graphics.setColour (themeColour (MVThemeColour::displayGrid));
    const auto centre = bounds.toFloat().getCentre();
    graphics.fillRect (0.0F, centre.y - 0.5F, static_cast<float> (getWidth()), 1.0F);
    graphics.fillRect (centre.x - 0.5F, 0.0F, 1.0F, static_cast<float> (getHeight()));
    displayAxes::paintTitle (graphics, bounds, "Strange Attractor");
}

void MVStrangeAttractor::paintDisplay (juce::Graphics& graphics)
{
    const float scale = displayScale (graphics);
    if (scale != static_cast<float> (pictureScale))
    {
        pictureScale = scale;
        fitPicture();
    }
    const auto& back = backdrop.imageFor (getLocalBounds(), scale, [this] (juce::Graphics& g) { paintBackdrop (g); });
    if (canvas.getBounds() != back.getBounds())
        canvas = juce::Image (juce::Image::RGB, back.getWidth(), back.getHeight(), false, juce::SoftwareImageType());
    composeTraces (canvas, back, picture, themeColour (MVThemeColour::trace));
    graphics.setOpacity (1.0F);
    graphics.drawImageTransformed (canvas, juce::AffineTransform::scale (1.0F / scale));
    if (isSilent())
        displayAxes::paintNoSignal (graphics, getLocalBounds());
}

} // namespace morvanelab
