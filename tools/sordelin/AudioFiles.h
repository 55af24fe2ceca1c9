// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OutputFile.h"

#include <array>
#include <string>
#include <vector>

namespace morvanelab
{

/** Two channels of floats of one length. */
struct StereoAudio
{
    std::array<std::vector<float>, 2> channels;

    std::size_t frames() const { return channels[0].size(); }
};

/** Reads a WAV file. A mono file fills both channels; of more channels the first two are taken.
    Throws badData. */
StereoAudio readWavFile (const std::string& path);

/** A 32-bit float WAV file in memory. Throws badData if the sample rate cannot be written. */
Bytes encodeWav (const StereoAudio& audio, double sampleRate);

/** Headerless little-endian 32-bit floats, interleaved. */
Bytes encodeRaw (const StereoAudio& audio);

} // namespace morvanelab
