// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"

#include <array>
#include <mutex>
#include <vector>

namespace morvanelab
{

/** Indices of the shared wave tables. Operators store index + 1. */
enum MVWaveform_t : int
{
    waveSinePeriod = 0,
    waveSquarePeriod,
    waveTrianglePeriod,
    waveSawtoothPeriod,
    waveHanningPulse,
    waveSquarePulse,
    waveParabolicPulse,
    waveGlottalPulse,
    waveInverseGlottalPulse,
    waveCardinalSinePulse,
    waveGlottalDerivative,
    waveformCount
};

/** The process-wide set of wave tables, read without interpolation by every oscillator of every voice.

    Each table is built under a lock at its first request and then never changes, so any thread may ask. Since that
    first request allocates and takes its time, it belongs in init or activation, not in a block operation. */
class MVWaveforms : public MVObject
{
public:
    static constexpr int tableSize = 32768;

    /** The one instance, made at first use. */
    static MVWaveforms& instance();

    /** tableSize doubles, or null for an index outside 0..10. */
    const double* table (int index);
    /** The display name of a table, or null. */
    static const char* name (int index);

    const char* className() const override { return "MVWaveforms"; }

private:
    MVWaveforms() = default;
    void build (int index);

    std::array<std::vector<double>, waveformCount> tables;
    std::array<std::once_flag, waveformCount> built;
};

} // namespace morvanelab
