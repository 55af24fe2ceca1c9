// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/dsp/DspBench.h"

#include "dsp/MVBiquadFilter.h"
#include "dsp/MVCompressor.h"
#include "dsp/MVDcFilter.h"
#include "dsp/MVDelayLine.h"
#include "dsp/MVEnvFollower.h"
#include "dsp/MVPcmResampler.h"
#include "dsp/MVPowerFollower.h"
#include "dsp/MVResampleLooper.h"
#include "dsp/MVSignalDistorter.h"
#include "dsp/MVSignalSmoother.h"

namespace morvanelab::bench
{

namespace
{

enum BiquadCase : int
{
    biquadSettled,
    biquadGliding,
    biquadQuavering
};

void biquad (benchmark::State& state)
{
    const Block in = noiseBlock (0.5);
    Block out {};
    MVBiquadFilter filter;
    filter.init (true, rate);
    filter.setSmoothing (1.0 / rate);
    if (state.range (0) == biquadQuavering)
        filter.setQuaver (0.1, 3.0);

    double frequency = 1000.0;
    measure (state, out,
             [&]
             {
                 if (state.range (0) == biquadGliding)
                     filter.setFrequency (frequency = 3000.0 - frequency);
                 filter.process (out.data(), in.data(), blockSize, true);
             });
}
BENCHMARK (biquad)->Arg (biquadSettled)->Arg (biquadGliding)->Arg (biquadQuavering);

void dcFilter (benchmark::State& state)
{
    const Block in = noiseBlock (0.5);
    Block out {};
    MVDcFilter filter;
    measure (state, out,
             [&]
             {
                 out = in;
                 filter.process (out.data(), blockSize);
             });
}
BENCHMARK (dcFilter);

void smoother (benchmark::State& state)
{
    const Block in = noiseBlock (0.5);
    Block out {};
    MVSignalSmoother filter;
    measure (state, out, [&] { filter.process (out.data(), in.data(), blockSize); });
}
BENCHMARK (smoother);

void powerFollower (benchmark::State& state)
{
    const Block reference = noiseBlock (0.5);
    const Block in = noiseBlock (0.25, 2);
    Block out {};
    MVPowerFollower follower;
    measure (state, out,
             [&]
             {
                 out = in;
                 follower.process (out.data(), reference.data(), blockSize);
             });
}
BENCHMARK (powerFollower);

void envFollower (benchmark::State& state)
{
    const Block in = noiseBlock (0.5);
    Block out {};
    MVEnvFollower follower;
    follower.setDecayStep (1.0);
    follower.init (true, rate);
    measure (state, out, [&] { follower.process (out.data(), in.data(), blockSize); });
}
BENCHMARK (envFollower);

void compressor (benchmark::State& state)
{
    const Block in = noiseBlock (2.0);
    Block out {};
    MVCompressor limiter;
    limiter.init (true, rate);
    limiter.setRollOff (0.1);
    measure (state, out,
             [&]
             {
                 out = in;
                 limiter.process (out.data(), blockSize);
             });
}
BENCHMARK (compressor);

void distorter (benchmark::State& state)
{
    const Block in = noiseBlock (1.2);
    Block out {};
    MVSignalDistorter shaper;
    measure (state, out, [&] { shaper.process (out.data(), in.data(), blockSize, 0.5, 0.9); });
}
BENCHMARK (distorter);

void delayLine (benchmark::State& state)
{
    const bool fading = state.range (0) != 0;
    const Block in = noiseBlock (0.5);
    Block out {};
    MVDelayLine line;
    line.setMaxDelay (0.5);
    line.init (true, rate);
    line.setDuration (0.3);

    double ratio = 0.3;
    measure (state, out,
             [&]
             {
                 if (fading)
                     line.setDuration (ratio = 1.0 - ratio);
                 line.process (blockSize, in.data(), out.data());
             });
}
BENCHMARK (delayLine)->Arg (0)->Arg (1);

void resampler (benchmark::State& state)
{
    const Block in = noiseBlock (0.5);
    Block out {};
    MVPcmResampler reader;
    double position = 0.0;
    measure (state, out,
             [&]
             {
                 reader.setPosition (0.0);
                 reader.process (out.data(), in.data(), blockSize, blockSize, 0.7, 1.0, 0.5, position);
             });
}
BENCHMARK (resampler);

void resamplerFromRing (benchmark::State& state)
{
    const Block in = noiseBlock (0.5);
    Block out {};
    MVPcmResampler reader;
    MVCircularBuffer ring (4096 * static_cast<int> (sizeof (double)));
    ring.setActive (true);
    measure (state, out,
             [&]
             {
                 int bytes = sizeof in;
                 auto* const room = reinterpret_cast<double*> (ring.writePointer (bytes));
                 std::copy_n (in.data(), bytes / static_cast<int> (sizeof (double)), room);
                 ring.commitWrite (bytes);
                 reader.pull (ring, out.data(), blockSize, static_cast<double> (state.range (0)) / 100.0);
             });
}
BENCHMARK (resamplerFromRing)->Arg (100)->Arg (92);

void looper (benchmark::State& state)
{
    const Block in = noiseBlock (0.5);
    Block out {};
    MVResampleLooper sampler;
    sampler.setCapacity (4096);
    MVResampleLooper::Controls controls;
    controls.recordTrigger = 1.0;
    controls.playbackRate = 1.3;
    for (int i = 0; i < 16; ++i)
        sampler.process (out.data(), in.data(), blockSize, controls);
    measure (state, out, [&] { sampler.process (out.data(), in.data(), blockSize, controls); });
}
BENCHMARK (looper);

} // namespace

} // namespace morvanelab::bench
