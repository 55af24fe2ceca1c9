// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace morvanelab
{

constexpr int hostParameterCount = 16;

/** What a host stores for the plug-in, and what a preset file holds: these 320 bytes, little-endian, as they lie in
    memory. There is no header, version or checksum. A zero-filled record is a valid one. */
struct SordelinState
{
    double compressorThreshold = 0.0;
    double compressorRollOff = 0.0; ///< seconds
    double preCompressionVolume = 0.0;
    double outputVolume = 1.0; ///< the master control
    std::array<std::uint8_t, 16> bankUuid {};
    std::int32_t patchIndex = -1; ///< slot in that bank
    std::int32_t unused = 0;
    std::array<double, hostParameterCount> parameterValues {};       ///< by patch parameter
    std::array<std::int32_t, hostParameterCount> midiControllers {}; ///< by patch parameter, -1 if none
    std::array<std::int32_t, hostParameterCount> midiChannels {};    ///< by patch parameter, -1 if none
    std::int32_t visualiser = 0;
    std::int32_t presetItem = 0;
};

static_assert (sizeof (SordelinState) == 320 && std::is_trivially_copyable_v<SordelinState>);
static_assert (offsetof (SordelinState, outputVolume) == 24 && offsetof (SordelinState, bankUuid) == 32);
static_assert (offsetof (SordelinState, patchIndex) == 48 && offsetof (SordelinState, parameterValues) == 56);
static_assert (offsetof (SordelinState, midiControllers) == 184 && offsetof (SordelinState, midiChannels) == 248);
static_assert (offsetof (SordelinState, visualiser) == 312 && offsetof (SordelinState, presetItem) == 316);

} // namespace morvanelab
