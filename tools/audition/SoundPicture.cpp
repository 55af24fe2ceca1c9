// SPDX-License-Identifier: GPL-3.0-or-later
#include "SoundPicture.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <stdexcept>

#include <png.h>

namespace morvanelab
{

namespace
{

constexpr int windowSize = 4096;
constexpr double lowestHz = 30.0;
constexpr double highestHz = 20000.0;
constexpr double decibelRange = 90.0;

/** Radix-2 transform (Cooley and Tukey 1965), decimated in time by recursion; twelve levels at this size. */
void transform (std::vector<std::complex<double>>& values)
{
    const std::size_t half = values.size() / 2;
    if (half == 0)
        return;

    std::vector<std::complex<double>> even (half);
    std::vector<std::complex<double>> odd (half);
    for (std::size_t i = 0; i < half; ++i)
    {
        even[i] = values[2 * i];
        odd[i] = values[2 * i + 1];
    }
    transform (even);
    transform (odd);
    for (std::size_t i = 0; i < half; ++i)
    {
        const auto turned =
            odd[i] * std::polar (1.0, -std::numbers::pi * static_cast<double> (i) / static_cast<double> (half));
        values[i] = even[i] + turned;
        values[i + half] = even[i] - turned;
    }
}

/** Row of a frequency, 0 at the top. */
double rowOf (double hz, int rows) { return (1.0 - std::log (hz / lowestHz) / std::log (highestHz / lowestHz)) * rows; }

/** Black over blue and orange to white for 0 to 1. */
std::array<std::uint8_t, 3> heat (double level)
{
    const auto part = [level] (double from, double to)
    { return static_cast<std::uint8_t> (16.0 + 239.0 * std::clamp ((level - from) / (to - from), 0.0, 1.0)); };
    const auto blue =
        level < 0.5
            ? part (0.0, 0.4)
            : static_cast<std::uint8_t> (16.0 + 239.0 * std::abs (level - 0.75) * 4.0 * (level > 0.75 ? 1.0 : 0.9));
    return { part (0.25, 0.7), part (0.5, 0.95), blue };
}

} // namespace

SoundPicture::SoundPicture (std::array<std::vector<float>, 2> samples, double sampleRate)
    : channels (std::move (samples)), rate (sampleRate)
{
    drawWave (0, 0);
    drawWave (1, waveHeight);
    drawSpectrum (2 * waveHeight);
    drawLines (2 * waveHeight);
}

std::size_t SoundPicture::sampleAt (int x) const { return channels[0].size() * static_cast<std::size_t> (x) / width; }

void SoundPicture::set (int x, int y, Colour colour)
{
    if (x >= 0 && x < width && y >= 0 && y < height)
        std::ranges::copy (colour, pixels.begin() + 3 * (static_cast<std::ptrdiff_t> (y) * width + x));
}

void SoundPicture::drawWave (int channel, int top)
{
    const auto& samples = channels[static_cast<std::size_t> (channel)];
    const auto row = [top] (float sample)
    { return top + static_cast<int> ((1.0F - std::clamp (sample, -1.0F, 1.0F)) * 0.5F * (waveHeight - 1)); };

    for (int x = 0; x < width; ++x)
    {
        set (x, row (0.0F), { 70, 70, 70 });
        const auto begin = samples.begin() + static_cast<std::ptrdiff_t> (sampleAt (x));
        const auto end = samples.begin() + static_cast<std::ptrdiff_t> (sampleAt (x + 1));
        if (begin == end)
            continue;
        const auto [low, high] = std::minmax_element (begin, end);
        const bool clipped = *low < -1.0F || *high > 1.0F;
        for (int y = row (*high); y <= row (*low); ++y)
            set (x, y, clipped ? Colour { 255, 60, 60 } : Colour { 120, 200, 140 });
    }
}

void SoundPicture::drawSpectrum (int top)
{
    const auto frames = static_cast<std::ptrdiff_t> (channels[0].size());
    for (int x = 0; x < width; ++x)
    {
        std::vector<std::complex<double>> values (windowSize);
        const auto first = static_cast<std::ptrdiff_t> (sampleAt (x)) - windowSize / 2;
        for (std::ptrdiff_t i = 0; i < windowSize; ++i)
            if (first + i >= 0 && first + i < frames)
            {
                const auto at = static_cast<std::size_t> (first + i);
                const double window =
                    0.5 - 0.5 * std::cos (2.0 * std::numbers::pi * static_cast<double> (i) / windowSize);
                values[static_cast<std::size_t> (i)] = window * 0.5 * (channels[0][at] + channels[1][at]);
            }
        transform (values);

        // A sine of full scale has a magnitude of a quarter of the window.
        std::vector<double> decibels (windowSize / 2);
        std::transform (values.begin(), values.begin() + windowSize / 2, decibels.begin(),
                        [] (std::complex<double> v)
                        { return 20.0 * std::log10 (std::abs (v) * 4.0 / windowSize + 1e-12); });
        drawColumn (x, top, decibels);
    }
}

void SoundPicture::drawColumn (int x, int top, const std::vector<double>& spectrum)
{
    const auto binAt = [&] (int row)
    {
        const double hz = lowestHz * std::pow (highestHz / lowestHz, 1.0 - static_cast<double> (row) / spectrumHeight);
        return std::min (spectrum.size() - 1, static_cast<std::size_t> (hz * windowSize / rate));
    };
    for (int row = 0; row < spectrumHeight; ++row)
    {
        const auto loudest = *std::max_element (spectrum.begin() + static_cast<std::ptrdiff_t> (binAt (row + 1)),
                                                spectrum.begin() + static_cast<std::ptrdiff_t> (binAt (row)) + 1);
        set (x, top + row, heat (std::clamp (loudest / decibelRange + 1.0, 0.0, 1.0)));
    }
}

void SoundPicture::drawLines (int spectrumTop)
{
    for (const double hz : { 100.0, 1000.0, 10000.0 })
        for (int x = 0; x < width; x += 4)
            set (x, spectrumTop + static_cast<int> (rowOf (hz, spectrumHeight)), { 150, 150, 150 });

    const double seconds = static_cast<double> (channels[0].size()) / rate;
    for (int second = 1; second < seconds; ++second)
        for (int y = 0; y < height; y += 4)
            set (static_cast<int> (second / seconds * width), y, { 150, 150, 150 });
}

void SoundPicture::write (const std::string& path) const
{
    png_image image {};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = PNG_FORMAT_RGB;
    if (png_image_write_to_file (&image, path.c_str(), 0, pixels.data(), 0, nullptr) == 0)
        throw std::runtime_error ("Could not write " + path + ": " + image.message);
}

} // namespace morvanelab
