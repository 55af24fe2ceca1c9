// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"

namespace morvanelab
{

/** Finds the strongest bin of a spectrum. One object for the process, made at first use, without any data; any
    thread. */
class MVSpectrumAnalyzer : public MVObject
{
public:
    static MVSpectrumAnalyzer& instance();

    /** The bin of 0 to n / 2 - 1 with the greatest re * re + im * im, the lowest of equals; -1 if all are 0 (or none is
        a number). spectrum holds at least n doubles, pairs (re, im). */
    virtual int peakBin (const double* spectrum, int n) const;

    const char* className() const override { return "MVSpectrumAnalyzer"; }

private:
    MVSpectrumAnalyzer() = default;
};

} // namespace morvanelab
