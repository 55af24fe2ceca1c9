// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** Limits of a real value: the upper limit is low + span. */
struct MVFRange
{
    double low = 0.0;
    double span = 0.0;

    constexpr double high() const { return low + span; }
};

/** Limits of a whole value: the upper limit is low + span. */
struct MVIRange
{
    int low = 0;
    int span = 0;

    constexpr int high() const { return low + span; }
};

} // namespace morvanelab
