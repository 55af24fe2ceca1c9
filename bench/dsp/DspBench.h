// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <benchmark/benchmark.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

namespace morvanelab::bench
{

constexpr int blockSize = 256;
constexpr double rate = 44100.0;
using Block = std::array<double, blockSize>;

/** A repeatable signal of +-scale that has no period worth the name. */
inline Block noiseBlock (double scale, std::uint32_t seed = 1)
{
    Block block;
    for (double& value : block)
    {
        seed = seed * 1664525U + 1013904223U;
        value = (static_cast<double> (seed >> 8) / 8388608.0 - 1.0) * scale;
    }
    return block;
}

inline Block constantBlock (double value)
{
    Block block;
    block.fill (value);
    return block;
}

/** FNV-1a over the bits of everything added: a faster loop must show the same one. */
class Fingerprint
{
public:
    void add (std::span<const double> values)
    {
        for (const double value : values)
            for (auto bits = std::bit_cast<std::uint64_t> (value), i = std::uint64_t { 0 }; i < 8; ++i, bits >>= 8)
                hash = (hash ^ (bits & 0xFF)) * 1099511628211ULL;
    }

    std::string text() const
    {
        char digits[20];
        std::snprintf (digits, sizeof digits, "%016llx", static_cast<unsigned long long> (hash));
        return digits;
    }

private:
    std::uint64_t hash = 14695981039346656037ULL;
};

/** Times block(), which renders one block into out; the label is the fingerprint of the first 64 blocks. */
template <typename Function>
void measure (benchmark::State& state, Block& out, Function&& block)
{
    Fingerprint print;
    for (int i = 0; i < 64; ++i)
    {
        block();
        print.add (out);
    }

    for (auto _ : state)
    {
        block();
        benchmark::DoNotOptimize (out.data());
        benchmark::ClobberMemory();
    }

    using benchmark::Counter;
    state.SetItemsProcessed (static_cast<std::int64_t> (state.iterations()) * blockSize);
    state.counters["per_sample"] = Counter (blockSize, Counter::kIsIterationInvariantRate | Counter::kInvert);
    state.SetLabel (print.text());
}

} // namespace morvanelab::bench
