// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace morvanelab::test
{

/** Repeatable numbers for tests (splitmix64, Steele, Lea and Flood 2014), apart from the source under test. */
class TestRandom
{
public:
    explicit TestRandom (std::uint64_t seed) : state (seed) {}

    std::uint64_t next()
    {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }

    /** 0 to limit - 1. */
    int below (int limit) { return static_cast<int> (next() % static_cast<std::uint64_t> (limit)); }
    /** 0 to below 1. */
    double uniform() { return static_cast<double> (next() >> 11) * 0x1p-53; }
    /** low to below high. */
    double between (double low, double high) { return low + uniform() * (high - low); }
    bool chance (double probability) { return uniform() < probability; }

private:
    std::uint64_t state;
};

} // namespace morvanelab::test
