// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVExponentialPulse.h"
#include "dsp/MVOscilBank.h"
#include "dsp/MVOscillator.h"
#include "dsp/MVPulseWidthMod.h"
#include "dsp/MVWaveforms.h"
#include "tests/support/TestRandom.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <numbers>
#include <thread>
#include <vector>

namespace morvanelab
{

namespace
{

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr int sawtoothType = waveSawtoothPeriod + 1;

/** At this rate a frequency in Hz is a step in table entries. */
constexpr double entryRate = 32768.0;

/** Table entries that a sawtooth oscillator read. */
std::vector<double> entriesOf (const std::vector<double>& sawtooth)
{
    std::vector<double> entries;
    for (const double value : sawtooth)
        entries.push_back ((value + 1.0) * 16384.0);
    return entries;
}

std::vector<double> runOscillator (MVOscillator& source, const double* signal, int frames, double start, double end)
{
    std::vector<double> out (static_cast<std::size_t> (frames));
    source.process (out.data(), signal, frames, start, end);
    return entriesOf (out);
}

/** A table that holds its own index plus 1, so that 0 stands for silence alone. */
const std::vector<double>& indexTable()
{
    static const std::vector<double> table = []
    {
        std::vector<double> values (32768);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = static_cast<double> (i + 1);
        return values;
    }();
    return table;
}

/** The table entries a pulse read, or -1 for silence, with its one-pole step undone. */
std::vector<int> pulseEntries (MVPulseWidthMod& source, const double* signal, int frames, double hz, double width,
                               double modulation)
{
    std::vector<double> out (static_cast<std::size_t> (frames));
    source.process (out.data(), signal, frames, hz, hz, width, modulation);
    std::vector<int> entries;
    double last = 0.0;
    for (const double y : out)
    {
        entries.push_back (static_cast<int> (std::lround (2.0 * y - last)) - 1);
        last = y;
    }
    return entries;
}

MVPulseWidthMod makePulse (double rate, std::int32_t type)
{
    MVPulseWidthMod source;
    source.init (true, rate);
    source.setTable (indexTable().data());
    source.setModulationType (type);
    return source;
}

} // namespace

TEST (Waveforms, entriesByHand)
{
    constexpr double step = 0.0030517578125;
    constexpr double top = 0.9990000128746033;
    constexpr double fine = 0.0001220703125;

    struct Row
    {
        int table, entry;
        double value;
    };

    for (const Row row : {
             Row { waveSinePeriod, 0, 0.0 },
             Row { waveSinePeriod, 8192, 1.0 },
             Row { waveSinePeriod, 24576, -1.0 },
             Row { waveSquarePeriod, 1, step },
             Row { waveSquarePeriod, 326, 326 * step },
             Row { waveSquarePeriod, 327, top },
             Row { waveSquarePeriod, 16055, top },
             Row { waveSquarePeriod, 16056, 327 * step }, // falls from the running value, not from the flat top
             Row { waveSquarePeriod, 16710, -327 * step },
             Row { waveSquarePeriod, 16711, -top },
             Row { waveSquarePeriod, 32439, -top },
             Row { waveSquarePeriod, 32440, -328 * step },
             Row { waveSquarePeriod, 32767, -step },
             Row { waveTrianglePeriod, 0, -1.0 },
             Row { waveTrianglePeriod, 8192, 0.0 },
             Row { waveTrianglePeriod, 16383, 1.0 - fine },
             Row { waveTrianglePeriod, 16384, 1.0 - fine }, // a step below the peak again
             Row { waveTrianglePeriod, 32767, -1.0 },
             Row { waveSawtoothPeriod, 0, -1.0 },
             Row { waveSawtoothPeriod, 32767, 1.0 - 6.103515625e-05 },
             Row { waveHanningPulse, 0, 0.0 },
             Row { waveHanningPulse, 16384, 1.0 },
             Row { waveSquarePulse, 326, 326 * step },
             Row { waveSquarePulse, 327, top },
             Row { waveSquarePulse, 32111, top },
             Row { waveSquarePulse, 32112, 0.0 },
             Row { waveSquarePulse, 32767, 0.0 },
             Row { waveParabolicPulse, 0, 0.0 },
             Row { waveParabolicPulse, 16384, 1.0 },
             Row { waveParabolicPulse, 8192, 0.75 },
             Row { waveGlottalPulse, 0, 0.0 },
             Row { waveGlottalPulse, 16384, 0.5 }, // a quarter of the cosine's turn, squared time
             Row { waveInverseGlottalPulse, 16383, 0.5 },
             Row { waveInverseGlottalPulse, 32767, 0.0 },
             Row { waveCardinalSinePulse, 16384, 1.0 },
             Row { waveCardinalSinePulse, 16384 + 2048, 2.0 / (5.0 * std::numbers::pi) }, // two and a half turns out,
         })
        EXPECT_NEAR (MVWaveforms::instance().table (row.table)[row.entry], row.value, 2.0e-7)
            << MVWaveforms::name (row.table) << " " << row.entry;
}

TEST (Waveforms, glottalDerivativeIsNormalised)
{
    const double* const derivative = MVWaveforms::instance().table (waveGlottalDerivative);
    const double* const pulse = MVWaveforms::instance().table (waveGlottalPulse);
    double greatest = 0.0;
    for (int i = 0; i < MVWaveforms::tableSize; ++i)
        greatest = std::max (greatest, std::abs (derivative[i]));
    EXPECT_EQ (greatest, 1.0);
    EXPECT_EQ (derivative[32767], derivative[32766]);
    EXPECT_NEAR (derivative[20000] / derivative[10000], (pulse[20001] - pulse[20000]) / (pulse[10001] - pulse[10000]),
                 1.0e-9);
}

TEST (Waveforms, manyThreadsGetTheSameTables)
{
    std::array<std::array<const double*, waveformCount>, 4> seen {};
    std::vector<std::thread> threads;
    for (auto& row : seen)
        threads.emplace_back (
            [&row]
            {
                for (int i = 0; i < waveformCount; ++i)
                    row[static_cast<std::size_t> (i)] = MVWaveforms::instance().table (i);
            });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_NE (seen[0][0], nullptr);
    for (const auto& row : seen)
        EXPECT_EQ (row, seen[0]);
    EXPECT_EQ (MVWaveforms::instance().table (-1), nullptr);
    EXPECT_EQ (MVWaveforms::instance().table (11), nullptr);
}

TEST (Oscillator, walksTheTable)
{
    const double tenth = 0.10000000149011612;

    struct Row
    {
        double start, end;
        std::vector<double> entries;
        double position; ///< afterwards
    };

    for (const Row& row : {
             Row { 3.0, 3.0, { 0, 3, 6, 9 }, 12.0 },
             Row { 10.0, 20.0, { 0, 10, 22, 37 }, 55.0 }, // steps 10, 12.5, 15, 17.5
             Row { 0.0, 0.0, { 0, 0, 0, 0 }, 4.0 * tenth }, Row { nan, nan, { 0, 0, 0, 0 }, 4.0 * tenth },
             Row { -5.0, -5.0, { 0, 5, 0, 5 }, 0.0 }, // reflected at the start of the table
             Row { 32767.0, 32767.0, { 0, 32767, 32766, 32765 }, 32764.0 },
             Row { 32768.0, 32768.0, { 0, 0, 0, 0 }, 0.0 },
             Row { 100000.25, 100000.25, { 0, 1696, 3392, 5088 }, 6785.0 },
             Row { -100000.0, -100000.0, { 0, 1696, 0, 1696 }, 0.0 }, // -98304 reflects to three whole tables
             Row { 1.0e300, 1.0e300, { 0, 0, 0, 0 }, 0.0 },
             Row { infinity, infinity, { 0, 0, 0, 0 }, 4.0 * tenth }, // its ramp is not a number
         })
    {
        MVOscillator source (sawtoothType);
        source.init (true, entryRate);
        EXPECT_EQ (runOscillator (source, nullptr, 4, row.start, row.end), row.entries) << row.start;
        EXPECT_NEAR (source.getPosition(), row.position, 1.0e-9) << row.start;
    }
}

TEST (Oscillator, frequencySignalIsAFactor)
{
    MVOscillator source (sawtoothType);
    source.init (true, entryRate);
    const double factors[] { 1.0, 2.0, nan, 0.0, infinity, 1.0, -0.5 };
    EXPECT_EQ (runOscillator (source, factors, 7, 10.0, 10.0), (std::vector<double> { 0, 10, 30, 30, 30, 0, 10 }));
    EXPECT_EQ (source.getPosition(), 5.0);
}

TEST (Oscillator, sameWithAndWithoutASignalOfOne)
{
    const std::vector<double> ones (700, 1.0);
    for (const double start : { 440.0, -440.0, 60000.0 })
        for (const double end : { 440.0, -300.0, 90000.0 })
        {
            MVOscillator plain (sawtoothType), driven (sawtoothType);
            plain.init (true, 44100.0);
            driven.init (true, 44100.0);
            EXPECT_EQ (runOscillator (plain, nullptr, 700, start, end),
                       runOscillator (driven, ones.data(), 700, start, end))
                << start << " " << end;
            EXPECT_EQ (plain.getPosition(), driven.getPosition());
        }
}

TEST (Oscillator, phaseOffsetIsWhereResetGoes)
{
    MVOscillator source (sawtoothType);
    source.init (true, entryRate);
    source.setPhaseOffset (0.25);
    EXPECT_EQ (runOscillator (source, nullptr, 2, 7.0, 7.0), (std::vector<double> { 8192, 8199 }));
    source.reset();
    EXPECT_EQ (source.getPosition(), 8192.0);
    source.setPhaseOffset (nan);
    EXPECT_EQ (source.getPosition(), 0.0);
    source.setPhaseOffset (1.0);
    EXPECT_LT (source.getPosition(), 32768.0);
}

TEST (Oscillator, soundsAtItsFrequency)
{
    MVOscillator source (1);
    source.init (true, 44100.0);
    std::vector<double> second (44100);
    source.process (second.data(), nullptr, 44100, 440.0, 440.0);
    int rises = 0;
    for (std::size_t i = 1; i < second.size(); ++i)
        rises += second[i - 1] < 0.0 && second[i] >= 0.0 ? 1 : 0;
    EXPECT_NEAR (rises, 440, 1);
}

TEST (Oscillator, unknownTypesAreSilent)
{
    for (const int type : { 0, -7, 12, std::numeric_limits<int>::max() })
    {
        MVOscillator source (type);
        source.init (true, 44100.0);
        double out[] { nan, nan };
        source.process (out, nullptr, 2, 440.0, 440.0);
        EXPECT_EQ (out[0], 0.0);
        EXPECT_EQ (out[1], 0.0);
    }
}

TEST (OscilBank, spreadsPartialsAndTruncatesIncrements)
{
    MVOscilBank bank;
    bank.init (true, 32768.0, 24, 1000.0, 12); // 24 / 12 = 2 partials to the octave
    EXPECT_EQ (bank.getPartialCount(), 24);
    EXPECT_DOUBLE_EQ (bank.getFrequency (22), 500.0);
    EXPECT_DOUBLE_EQ (bank.getFrequency (20), 250.0);
    EXPECT_DOUBLE_EQ (bank.getFrequency (23), 1000.0 / std::sqrt (2.0));

    // Only partial 23 sounds: 707.1 entries a sample plus a ratio of 4 over 4 samples make whole steps of 708.
    std::vector<MVOscilBank::Target> targets (24);
    targets[23] = { 1.0, 4.0 };
    const double* const sine = MVWaveforms::instance().table (waveSinePeriod);
    std::vector<double> out (4, 10.0);
    bank.process (4, targets.data(), out.data());
    bank.process (4, targets.data(), out.data());
    for (std::size_t i = 0; i < out.size(); ++i)
    {
        const double rising = 0.25 * static_cast<double> (i) * sine[708 * i];
        EXPECT_DOUBLE_EQ (out[i], 10.0 + rising + sine[708 * (i + 4)]) << i;
    }

    // Runs backward without leaving the table.
    targets[23] = { 1.0, -1.0e12 };
    bank.process (4, targets.data(), out.data());
    for (const double value : out)
        EXPECT_LE (std::abs (value), 13.0);
}

TEST (PulseWidthMod, routinesByHand)
{
    struct Row
    {
        std::int32_t type;
        double width, modulation;
        std::vector<int> entries; ///< at phases 0, 1/8 ... 7/8
    };

    for (const Row& row : {
             Row { pulsePeriodLocked, 1.0, 0.3, { 0, 4096, 8192, 12288, 16384, 20480, 24576, 28672 } },
             Row { pulsePeriodLocked, 0.5, 0.3, { 0, 8192, 16384, 24576, -1, -1, -1, -1 } },
             Row { pulseStretchedAndOffset, 0.5, 0.25, { -1, -1, 0, 8192, 16384, 24576, -1, -1 } },
             // Half an entry before the pulse truncates to entry 0.
             Row { pulseStretchedAndOffset, 1.0, 0.25 + 1.0 / 65536, { -1, -1, 0, 4095, 8191, 12287, 16383, 20479 } },
             Row { pulseShapeModulated, 1.0, 0.5, { 0, 4095, 8191, 12287, 16383, 20479, 24575, 28671 } },
             Row { pulseShapeModulated, 0.5, 0.5, { 0, 8191, 16383, 24575, -1, -1, -1, -1 } },
             Row { pulseShapeModulated, 1.0, 1.0, { 0, 0, 0, 12, 127, 762, 3280, 11259 } }, // the eighth power
         })
    {
        MVPulseWidthMod source = makePulse (8.0, row.type);
        EXPECT_EQ (pulseEntries (source, nullptr, 8, 1.0, row.width, row.modulation), row.entries)
            << row.type << " " << row.width << " " << row.modulation;
        EXPECT_EQ (source.getPhase(), 0.0);
    }
}

TEST (PulseWidthMod, shapeEntriesAreThoseOfTheExactPower)
{
    test::TestRandom random (11);
    for (int round = 0; round < 200; ++round)
    {
        const double width = random.between (0.01, 1.0);
        const double modulation = random.between (0.001, 1.0);
        const double exponent = modulation < 0.5 ? modulation * 1.75 + 0.125 : (modulation - 0.5) * 14.0 + 1.0;
        MVPulseWidthMod source = makePulse (44100.0, pulseShapeModulated);
        const double hz = random.between (20.0, 900.0);
        const std::vector<int> entries = pulseEntries (source, nullptr, 200, hz, width, modulation);

        double phase = 0.0;
        for (const int entry : entries)
        {
            const double t = phase / width;
            ASSERT_EQ (entry, t < 1.0 ? static_cast<int> (std::pow (t, exponent) * 32767.0) : -1);
            phase = hz * (1.0 / 44100.0) + phase;
            phase -= std::trunc (phase);
        }
    }
}

TEST (PulseWidthMod, unusableFrequenciesAndWidths)
{
    const double idle = 0.10000000149011612 / 44100.0;

    struct Row
    {
        std::int32_t type;
        double factor, phase; ///< after one sample
    };

    for (const Row row : { Row { pulsePeriodLocked, 0.0, idle }, Row { pulsePeriodLocked, nan, idle },
                           Row { pulsePeriodLocked, -441.0, 0.01 }, Row { pulsePeriodLocked, 33075.0, 0.75 },
                           Row { pulsePeriodLocked, 44100.0 * 3.5, 0.5 }, Row { pulsePeriodLocked, infinity, 0.0 },
                           Row { pulseShapeModulated, 22050.0, 0.5 }, Row { pulseShapeModulated, 22051.0, idle },
                           Row { pulseShapeModulated, infinity, idle } })
    {
        MVPulseWidthMod source = makePulse (44100.0, row.type);
        double out = nan;
        source.process (&out, &row.factor, 1, 1.0, 1.0, 1.0, 0.5);
        EXPECT_NEAR (source.getPhase(), row.phase, 1.0e-12) << row.factor;
    }

    // A width of 0 counts as 0.001: of 1000 samples a period only the first sounds.
    for (const double width : { 0.0, nan, -1.0 })
    {
        MVPulseWidthMod source = makePulse (1000.0, pulsePeriodLocked);
        const std::vector<int> entries = pulseEntries (source, nullptr, 3, 1.0, width, 0.0);
        EXPECT_EQ (entries[0], 0);
        EXPECT_GT (entries[1], 32000); // 0.001 / 0.00100000005 of the table
        EXPECT_EQ (entries[2], -1);
    }
}

TEST (PulseWidthMod, onePoleStepHalvesTheWay)
{
    MVPulseWidthMod source;
    source.init (true, 8.0);
    source.setTable (MVWaveforms::instance().table (waveSawtoothPeriod));
    double out[3];
    source.process (out, nullptr, 3, 1.0, 1.0, 0.125, 0.0);
    EXPECT_EQ (out[0], -0.5); // half of entry 0, -1.0
    EXPECT_EQ (out[1], -0.25);
    EXPECT_EQ (out[2], -0.125);
    source.reset();
    source.process (out, nullptr, 1, 1.0, 1.0, 0.125, 0.0);
    EXPECT_EQ (out[0], -0.5);
}

TEST (ExponentialPulse, straightStages)
{
    MVExponentialPulse pulse;
    pulse.setShape ({ 4, 4, 1.0, 0.0, 1.0, 1.0 });
    std::vector<double> out (3, nan);
    pulse.process (out.data(), 3);
    EXPECT_EQ (out, (std::vector<double> { 0, 0, 0 })); // at rest when fresh

    pulse.trigger();
    out.assign (10, nan);
    pulse.process (out.data(), 10);
    EXPECT_EQ (out, (std::vector<double> { 0.25, 0.5, 0.75, 1.0, 0.75, 0.5, 0.25, 0.0, 0.0, 0.0 }));
    EXPECT_TRUE (pulse.isAtRest());
}

TEST (ExponentialPulse, curvesFollowTheirPowersAcrossBlocks)
{
    for (const double attackPower : { 0.3, 1.0, 5.0, -0.5 })
        for (const double decayPower : { 0.4, 2.0, 10.0 })
        {
            MVExponentialPulse pulse;
            pulse.setShape ({ 300, 700, 0.8, -0.2, attackPower, decayPower });
            pulse.reset();
            pulse.trigger();
            std::vector<double> out (1100);
            for (std::size_t done = 0; done < out.size(); done += 100)
                pulse.process (out.data() + done, 100);

            for (int p = 1; p <= 1100; ++p)
            {
                const double rise = std::pow (p / 300.0, attackPower) * (0.8 - -0.2) - 0.2;
                const double fall = (1.0 - std::pow ((p - 300) / 700.0, 1.0 / decayPower)) * (0.8 - -0.2) - 0.2;
                const double expected = p <= 300 ? rise : (p < 1000 ? fall : -0.2);
                ASSERT_NEAR (out[static_cast<std::size_t> (p - 1)], expected,
                             2.0e-8) // the level at the trigger is a fixed-point one
                    << p << " " << attackPower << " " << decayPower;
            }
        }
}

TEST (ExponentialPulse, retriggerGoesOnFromTheLevelReached)
{
    MVExponentialPulse pulse;
    pulse.setShape ({ 4, 4, 1.0, 0.0, 1.0, 1.0 });
    pulse.trigger();
    std::vector<double> out (6);
    pulse.process (out.data(), 6); // ends at 0.5 in the decay
    pulse.trigger();
    pulse.process (out.data(), 2);
    EXPECT_NEAR (out[0], 0.625, 1.0e-9);
    EXPECT_NEAR (out[1], 0.75, 1.0e-9);

    // A change of durations neither wakes a resting pulse nor ends a running one.
    pulse.setShape ({ 4, 100, 1.0, 0.0, 1.0, 1.0 });
    pulse.process (out.data(), 2);
    EXPECT_NEAR (out[1], 1.0, 1.0e-9);
    pulse.reset();
    pulse.setShape ({ 400, 1000, 1.0, 0.25, 1.0, 1.0 });
    pulse.process (out.data(), 1);
    EXPECT_EQ (out[0], 0.25);
}

TEST (ExponentialPulse, oddShapesStayWithinTheirStages)
{
    constexpr std::int32_t huge = std::numeric_limits<std::int32_t>::max();
    std::vector<double> out (8);

    MVExponentialPulse instant;
    instant.setShape ({ 0, 2, 1.0, 0.5, 1.0, 0.0 });
    instant.trigger();
    instant.process (out.data(), 3);
    EXPECT_EQ (out[0], 1.0); // the power 1 / 0 holds full on until the last sample
    EXPECT_EQ (out[1], 0.5);

    MVExponentialPulse longest;
    longest.setShape ({ huge, huge, 1.0, 0.0, 1.0, 1.0 });
    longest.trigger();
    longest.process (out.data(), 8);
    EXPECT_NEAR (out[7], 8.0 / huge, 1.0e-15);

    MVExponentialPulse negative;
    negative.setShape ({ -5, -5, 1.0, 0.25, 1.0, 1.0 });
    negative.trigger();
    negative.process (out.data(), 8);
    EXPECT_EQ (out[0], 0.25);
}

TEST (ExponentialPulse, triggersFromAnotherThread)
{
    MVExponentialPulse pulse;
    pulse.setShape ({ 16, 16, 1.0, 0.0, 1.0, 1.0 });
    std::atomic<bool> started { false }, stop { false };
    std::thread player (
        [&]
        {
            for (; ! stop; started = true)
                pulse.trigger();
        });

    while (! started)
        std::this_thread::yield();

    double block[8];
    double highest = 0.0;
    for (int i = 0; i < 20000; ++i)
    {
        pulse.process (block, 8);
        for (const double value : block)
            highest = std::max (highest, value);
    }
    stop = true;
    player.join();
    EXPECT_GT (highest, 0.4);
    EXPECT_LE (highest, 1.0);
}

} // namespace morvanelab
