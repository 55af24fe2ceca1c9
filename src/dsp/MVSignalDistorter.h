// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVBreakPointEnv.h"
#include "dsp/MVDspBase.h"

#include <array>
#include <cstdint>

namespace morvanelab
{

/** Maps a signal through a table of 4096 entries that holds a power law or a drawn curve. */
class MVSignalDistorter : public MVDspBase
{
public:
    static constexpr int tableSize = 4096;

    enum Mode : std::int32_t
    {
        modePower = 1,
        modeCurve = 2
    };

    /** A new one holds the straight line in mode modeCurve. */
    MVSignalDistorter() { rebuild(); }

    /** Takes effect with the next rebuild; a value that is no mode is ignored. */
    virtual void setMode (std::int32_t newMode);
    virtual void setPower (double exponent) { power = exponent; }
    /** The curve of modeCurve; call rebuild after editing it. */
    MVBreakPointEnv& getCurve() { return curve; }
    const MVBreakPointEnv& getCurve() const { return curve; }

    /** Computes the table: (i / 4096)^power, or the curve. Not while process runs. */
    virtual void rebuild();
    /** modeCurve: out = table[(in * scale + 1) / 2] * 2 - 1, input and output bipolar; the scale ramps over the
        block; out and in may be the same array. modePower: does nothing, the owner reads the table itself. */
    virtual void process (double* out, const double* in, int frames, double startScale, double endScale);

    /** tableSize entries. */
    const double* getTable() const { return table.data(); }

private:
    std::int32_t mode = modeCurve;
    double power = 1.0;
    std::array<double, tableSize> table {};
    MVBreakPointEnv curve;
};

} // namespace morvanelab
