// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/LevelReport.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace morvanelab::host
{

namespace
{

std::string inDecibels (double level)
{
    if (level <= 0.0)
        return "    -inf";
    std::array<char, 32> text {};
    std::snprintf (text.data(), text.size(), "%8.2f", 20.0 * std::log10 (level));
    return text.data();
}

} // namespace

Level measureLevel (const std::vector<float>& left, const std::vector<float>& right, std::size_t start,
                    std::size_t frames)
{
    Level level;
    double squares = 0.0;
    const auto end = std::min (left.size(), start + frames);
    for (std::size_t i = start; i < end; ++i)
        for (const float sample : { left[i], right[i] })
        {
            const auto value = static_cast<double> (sample);
            level.finite = level.finite && std::isfinite (value);
            level.peak = std::max (level.peak, std::abs (value));
            squares += value * value;
        }
    if (end > start)
        level.rms = std::sqrt (squares / (2.0 * static_cast<double> (end - start)));
    return level;
}

std::string describeLevels (const std::vector<float>& left, const std::vector<float>& right, int rate)
{
    const auto second = static_cast<std::size_t> (rate);
    std::string report = "second   peak dB    rms dB\n";
    for (std::size_t start = 0, number = 0; start < left.size(); start += second, ++number)
    {
        const auto level = measureLevel (left, right, start, second);
        std::array<char, 16> row {};
        std::snprintf (row.data(), row.size(), "%6zu", number);
        report += row.data() + std::string ("  ") + inDecibels (level.peak) + "  " + inDecibels (level.rms) + "\n";
    }
    return report;
}

} // namespace morvanelab::host
