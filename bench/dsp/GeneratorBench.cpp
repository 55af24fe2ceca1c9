// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/dsp/DspBench.h"

#include "dsp/MVBlockMath.h"
#include "dsp/MVExponentialPulse.h"
#include "dsp/MVNoiseGenerator.h"
#include "dsp/MVOscilBank.h"
#include "dsp/MVOscillator.h"
#include "dsp/MVPulseWidthMod.h"
#include "dsp/MVSurroundMixer.h"

#include <vector>

namespace morvanelab::bench
{

namespace
{

enum OscillatorCase : int
{
    oscillatorSteady,
    oscillatorRamped,
    oscillatorSignal,
    oscillatorThroughZero
};

void oscillator (benchmark::State& state)
{
    const auto kind = state.range (0);
    const Block signal = kind == oscillatorThroughZero ? noiseBlock (1.0) : constantBlock (1.0);
    const double* const input = kind >= oscillatorSignal ? signal.data() : nullptr;
    Block out {};
    MVOscillator source (1);
    source.init (true, rate);
    measure (state, out,
             [&] { source.process (out.data(), input, blockSize, 440.0, kind == oscillatorSteady ? 440.0 : 441.0); });
}
BENCHMARK (oscillator)
    ->Arg (oscillatorSteady)
    ->Arg (oscillatorRamped)
    ->Arg (oscillatorSignal)
    ->Arg (oscillatorThroughZero);

void oscilBank (benchmark::State& state)
{
    constexpr int partials = 32;
    const std::vector<MVOscilBank::Target> targets (partials, { 0.03, 1.0 });
    Block out {};
    MVOscilBank bank;
    bank.init (true, rate, partials, 8000.0, 4);
    measure (state, out,
             [&]
             {
                 out.fill (0.0);
                 bank.process (blockSize, targets.data(), out.data());
             });
}
BENCHMARK (oscilBank);

void pulse (benchmark::State& state)
{
    const Block signal = constantBlock (220.0);
    Block out {};
    MVPulseWidthMod source;
    source.init (true, rate);
    source.setTable (MVWaveforms::instance().table (waveGlottalDerivative));
    source.setModulationType (static_cast<std::int32_t> (state.range (0)));
    measure (state, out, [&] { source.process (out.data(), signal.data(), blockSize, 1.0, 1.0, 0.6, 0.4); });
}
BENCHMARK (pulse)->Arg (pulseStretchedAndOffset)->Arg (pulsePeriodLocked)->Arg (pulseShapeModulated);

void whiteNoise (benchmark::State& state)
{
    Block out {};
    MVNoiseGenerator source;
    source.init (true, rate);
    source.getRandom().setState (1);
    measure (state, out, [&] { source.white (out.data(), blockSize); });
}
BENCHMARK (whiteNoise);

void brownNoise (benchmark::State& state)
{
    const Block deviation = constantBlock (0.05);
    Block out {};
    MVNoiseGenerator source;
    source.init (true, rate);
    source.getRandom().setState (1);
    measure (state, out, [&] { source.brownian (out.data(), deviation.data(), 1.0, blockSize); });
}
BENCHMARK (brownNoise);

void steppedNoise (benchmark::State& state)
{
    const Block interval = constantBlock (2.0);
    const Block deviation = constantBlock (0.2);
    Block out {};
    MVNoiseGenerator source;
    source.init (true, rate);
    source.setNoiseType (noiseBrown);
    source.setInterpolate (true);
    source.getRandom().setState (1);
    measure (state, out, [&] { source.stepped (out.data(), interval.data(), deviation.data(), 1.0, blockSize, 1.0); });
}
BENCHMARK (steppedNoise);

void addedNoise (benchmark::State& state)
{
    Block out {};
    MVNoiseGenerator source;
    source.init (true, rate);
    source.getRandom().setState (1);
    measure (state, out,
             [&]
             {
                 out.fill (0.0);
                 source.addNoise (out.data(), 0.1, blockSize);
             });
}
BENCHMARK (addedNoise);

void exponentialPulse (benchmark::State& state)
{
    const bool moving = state.range (0) != 0;
    Block out {};
    MVExponentialPulse envelope;
    envelope.setShape ({ 2048, 8192, 1.0, 0.0, 0.4, 3.0 });
    measure (state, out,
             [&]
             {
                 if (moving && envelope.isAtRest())
                     envelope.trigger();
                 envelope.process (out.data(), blockSize);
             });
}
BENCHMARK (exponentialPulse)->Arg (0)->Arg (1);

void panMix (benchmark::State& state)
{
    const Block signal = noiseBlock (0.5);
    const Block pan = noiseBlock (1.0, 3);
    Block left {}, right {};
    double* const channels[] { left.data(), right.data() };
    measure (state, left,
             [&]
             {
                 left.fill (0.0);
                 MVSurroundMixer::instance().mix (channels, 2, signal.data(), pan.data(), nullptr, nullptr, blockSize,
                                                  0.2, 0.9, 0.1, 0.8);
             });
}
BENCHMARK (panMix);

void rampedMix (benchmark::State& state)
{
    const Block signal = noiseBlock (0.5);
    Block out {};
    measure (state, out,
             [&]
             {
                 out.fill (0.0);
                 rampMix (out.data(), signal.data(), blockSize, 0.3, 0.9);
             });
}
BENCHMARK (rampedMix);

} // namespace

} // namespace morvanelab::bench
