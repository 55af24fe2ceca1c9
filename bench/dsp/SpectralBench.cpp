// SPDX-License-Identifier: GPL-3.0-or-later
// A hop of 512 samples through every spectral algorithm, in ns a hop, and the transforms alone.
#include "bench/dsp/DspBench.h"

#include "dsp/MVFreqTweaker.h"
#include "dsp/MVSpectralMath.h"

#include <algorithm>
#include <vector>

namespace morvanelab::bench
{

namespace
{

constexpr int hop = MVFreqTweaker::hopSize;

std::vector<double> noiseHops (int hops, std::uint32_t seed)
{
    std::vector<double> samples;
    for (int i = 0; i < 2 * hops; ++i)
    {
        const Block block = noiseBlock (0.5, seed + static_cast<std::uint32_t> (i));
        samples.insert (samples.end(), block.begin(), block.end());
    }
    return samples;
}

/** The arguments are the algorithm's stored value and the control in tenths. */
void tweakHop (benchmark::State& state)
{
    const double control = static_cast<double> (state.range (1)) * 0.1;
    const auto a = noiseHops (4, 1);
    auto b = noiseHops (4, 100);
    std::vector<double> out (hop);
    MVFreqTweaker tweaker;
    tweaker.init (true, rate);
    tweaker.setAlgorithm (static_cast<std::int32_t> (state.range (0)));

    std::size_t next = 0;
    const auto play = [&]
    {
        tweaker.process (out.data(), &a[next], &b[next], control);
        next = (next + hop) % a.size();
    };

    Fingerprint print;
    for (int i = 0; i < 32; ++i)
    {
        play();
        print.add (out);
    }
    for (auto _ : state)
    {
        play();
        benchmark::DoNotOptimize (out.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel (print.text());
}
BENCHMARK (tweakHop)
    ->ArgsProduct ({ benchmark::CreateDenseRange (1, tweakCount, 1), { 4 } })
    ->Args ({ tweakStretched, 30 });

void transform (benchmark::State& state)
{
    const bool isForward = state.range (0) != 0;
    const auto in = noiseHops (2, 1);
    std::vector<double> buffer = in;
    prepareSpectra (hop);
    for (auto _ : state)
    {
        // Repeated transforms would overflow.
        std::copy (in.begin(), in.end(), buffer.begin());
        isForward ? forwardFft (buffer.data(), hop) : inverseFft (buffer.data(), hop);
        benchmark::DoNotOptimize (buffer.data());
        benchmark::ClobberMemory();
    }
    Fingerprint print;
    print.add (buffer);
    state.SetLabel (print.text());
}
BENCHMARK (transform)->Arg (1)->Arg (0);

} // namespace

} // namespace morvanelab::bench
