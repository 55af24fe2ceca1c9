// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace morvanelab
{

namespace
{

/** What is left of x / span beyond whole spans; 0 where that has no meaning. */
double fractionOfSpans (double x, double span)
{
    const double spans = x / span;
    return std::isfinite (spans) ? spans - std::trunc (spans) : 0.0;
}

} // namespace

double wrapToRange (double x, double a, double b)
{
    // The constants are single-precision ones; what was stored before depends on their exact values.
    constexpr double largest = 2147483647.0;
    constexpr double shrinkAbove = 99999997952.0;
    constexpr double shrinkBy = 0.017500000074505806;
    constexpr double smallest = 1.0000000036274937e-15;

    const double low = std::min (a, b);
    const double high = std::max (a, b);
    const double span = high - low;

    if (! (span > 0.0))
        return a;

    double value = std::abs (x) > largest ? b : (std::isnan (x) ? a : x);

    while (std::isfinite (value) && std::abs (value) > shrinkAbove)
        value *= shrinkBy;

    if (value < low)
        return high - fractionOfSpans (low - value, span) * span;
    if (value > high)
        return fractionOfSpans (value - high, span) * span + low;
    return std::abs (value) < smallest ? 0.0 : value;
}

int wrapToIntRange (int x, int a, int b)
{
    if (a == b || x == std::numeric_limits<int>::min())
        x = a;
    if (a == b)
        return a;

    const std::int64_t low = std::min (a, b);
    const std::int64_t high = std::max (a, b);
    const std::int64_t span = high - low;

    if (x < low)
        return static_cast<int> (span - (low - x) % span + low);
    if (x > high)
        return static_cast<int> (low + (x - high) % span);
    return x;
}

int wrapIndex (int x, int limit) { return wrapToIntRange (x, 0, limit); }

int foldChoice (int x, int count) { return wrapToIntRange (x, 1, count); }

std::int32_t truncToInt (double x)
{
    using Limits = std::numeric_limits<std::int32_t>;

    if (std::isnan (x))
        return 0;
    if (x >= static_cast<double> (Limits::max()))
        return Limits::max();
    if (x <= static_cast<double> (Limits::min()))
        return Limits::min();
    return static_cast<std::int32_t> (x);
}

double limitTo (double x, double low, double high)
{
    if (! (x > low))
        return low;
    return x > high ? high : x;
}

std::uint32_t versionCode (std::uint32_t major, std::uint32_t minor, std::uint32_t revision)
{
    return (revision + (minor + major * 100U) * 10U) * 100U;
}

} // namespace morvanelab
