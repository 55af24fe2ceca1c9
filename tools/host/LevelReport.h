// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace morvanelab::host
{

/** Loudness of a stereo signal. */
struct Level
{
    double peak = 0.0; ///< largest magnitude of both channels
    double rms = 0.0;  ///< over both channels
    bool finite = true;
};

/** Measures frames samples from start. */
Level measureLevel (const std::vector<float>& left, const std::vector<float>& right, std::size_t start,
                    std::size_t frames);

/** One line for each started second with peak and RMS in dB of full scale. */
std::string describeLevels (const std::vector<float>& left, const std::vector<float>& right, int rate);

} // namespace morvanelab::host
