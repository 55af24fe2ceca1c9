// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace morvanelab::host
{

/** Writes two channels of equal length as a 32-bit float WAV file. Raises std::runtime_error on failure. */
void writeWave (const std::string& path, const std::vector<float>& left, const std::vector<float>& right, int rate);

} // namespace morvanelab::host
