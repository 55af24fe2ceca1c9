// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace morvanelab
{

/** A picture of a sound: the waveforms of both channels above a spectrogram of their sum. The spectrogram's height is
    logarithmic from 30 Hz to 20 kHz, with lines at 100, 1000 and 10000 Hz; its colours run over 90 dB. Vertical lines
    stand at full seconds; samples beyond full scale are red. */
class SoundPicture
{
public:
    /** Two channels of equal length. */
    SoundPicture (std::array<std::vector<float>, 2> samples, double sampleRate);

    /** Writes the picture as a PNG file. Raises std::runtime_error on failure. */
    void write (const std::string& path) const;

private:
    static constexpr int width = 1200;
    static constexpr int waveHeight = 110; ///< of each channel
    static constexpr int spectrumHeight = 400;
    static constexpr int height = 2 * waveHeight + spectrumHeight;

    using Colour = std::array<std::uint8_t, 3>;

    void set (int x, int y, Colour colour);
    void drawWave (int channel, int top);
    void drawSpectrum (int top);
    void drawColumn (int x, int top, const std::vector<double>& spectrum);
    void drawLines (int spectrumTop);
    /** First sample of a column. */
    std::size_t sampleAt (int x) const;

    std::array<std::vector<float>, 2> channels;
    double rate;
    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t> (std::size_t { 3 } * width * height, 16);
};

} // namespace morvanelab
