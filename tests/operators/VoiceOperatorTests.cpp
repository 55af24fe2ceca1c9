// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorRig.h"
#include "dsp/MVPulseWidthMod.h"
#include "operators/MVOpSlawvox.h"
#include "support/TestRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

constexpr double rate = 44100.0;
const double notANumber = std::nan ("");

using Formants = std::array<double, formantCount>;
constexpr Formants vowel6 { 450.0, 950.0, 2300.0, 3400.0 };
constexpr Formants vowel0 { 400.0, 2050.0, 2600.0, 3500.0 };

/** The band-pass of the well-known audio equaliser recipes, 0.35 octaves wide, as a plain difference equation. Its
    coefficients glide after each sample, and its quaver pushes the numerator. */
struct Bandpass
{
    struct Coefficients
    {
        double b, a1, a2;
    };

    static Coefficients at (double hz)
    {
        const double w = std::min (2.0 * M_PI * hz / rate, 1.533097267150879);
        const double alpha = std::sin (w) * std::sinh (std::log (2.0) / 2.0 * 0.35 * w / std::sin (w));
        return { alpha / (1.0 + alpha), -2.0 * std::cos (w) / (1.0 + alpha), (1.0 - alpha) / (1.0 + alpha) };
    }

    double operator() (double x)
    {
        // Transposed: a coefficient acts when it is multiplied, not when the product is heard.
        const double y = c.b * x + s1;
        s1 = s2 - c.a1 * y;
        s2 = -c.b2 * x - c.a2 * y;
        const double push = 1.0 + quaverDepth * 0.025 * std::sin (2.0 * M_PI * quaverHz * elapsed++ / rate);
        c.b = (c.b + (goal.b - c.b) * glide) * push;
        c.b2 = (c.b2 + (goal.b - c.b2) * glide) * push;
        c.a1 += (goal.a1 - c.a1) * glide;
        c.a2 += (goal.a2 - c.a2) * glide;
        // A filter that has all but faded away gives a small constant instead.
        return y != 0.0 && std::abs (y) < 1e-15 ? 0.001 : y;
    }

    void start (double hz)
    {
        goal = at (hz);
        c = { goal.b, goal.b, goal.a1, goal.a2 };
    }

    struct
    {
        double b, b2, a1, a2;
    } c {};
    Coefficients goal {};
    double glide = 0.0;
    double quaverDepth = 0.0, quaverHz = 0.0;
    int elapsed = 0;
    double s1 = 0.0, s2 = 0.0;
};

struct Voice
{
    explicit Voice (const Formants& hz, bool isParallel = false) : parallel (isParallel)
    {
        for (std::size_t k = 0; k < hz.size(); ++k)
            filters[k].start (hz[k]);
    }

    double operator() (double x)
    {
        if (! parallel)
            return filters[3](filters[2](filters[1](filters[0](x))));
        const double first = filters[0](x), second = filters[1](x), third = filters[2](x);
        return first - second + third - filters[3](x);
    }

    std::array<Bandpass, formantCount> filters;
    bool parallel;
};

std::vector<double> impulseAt (std::size_t place)
{
    std::vector<double> block (blockFrames, 0.0);
    block[place] = 1.0;
    return block;
}

std::vector<double> noiseBlock (std::uint64_t seed)
{
    TestRandom random (seed);
    std::vector<double> block (blockFrames);
    for (double& x : block)
        x = random.between (-0.5, 0.5);
    return block;
}

/** Pi in single precision and a truncating sine table stand behind the filters, hence the tolerance. */
template <typename Reference>
void expectBlock (const OperatorRig& rig, const std::vector<double>& source, Reference&& reference)
{
    std::vector<double> expected;
    double peak = 0.0;
    for (const double x : source)
    {
        expected.push_back (reference (x));
        peak = std::max (peak, std::abs (expected.back()));
    }

    ASSERT_GT (peak, 0.0);
    for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_NEAR (rig.output (0)[i], expected[i], 5e-5 * peak) << i;
}

/** A voice operator with a silent source wired, at a place of the plane, shifted by 1. */
class VoiceRig : public OperatorRig
{
public:
    explicit VoiceRig (double x = 1.0, double y = 1.0) : OperatorRig (specOf ("MVOpSlawvox"))
    {
        setInput (0, 0.0);
        setInput (1, x);
        setInput (2, y);
        setInput (5, 0.25);
        activate();
    }
};

TEST (VowelMap, choosesByPlaceAndWraps)
{
    const struct
    {
        double x, y;
        int vowel;
    } cases[] { { 0.0, 0.0, 0 },
                { 1.0, 0.0, 3 },
                { 0.0, 1.0, 9 },
                { 1.0, 1.0, 6 },
                { 1.1, 0.0, 0 },
                { 0.0, 1.1, 0 },
                { -0.1, 0.0, 3 },
                { 0.0, -0.1, 9 },
                { 0.0, 0.5, 11 },
                { 0.0, 0.501, 10 },
                { 1.0, 0.5, 4 },
                { 1.0, 0.501, 5 },
                { 0.5, 0.8, 8 },
                { 0.72, 0.99, 7 },
                { 0.25, 0.0, 1 },
                { 0.625, 0.0, 2 },
                { 1e300, 0.0, 3 },
                { notANumber, 0.0, 0 },
                { 0.0, std::numeric_limits<double>::infinity(), 9 } };

    for (const auto& c : cases)
        EXPECT_EQ (vowelMap::vowelAt (c.x, c.y), c.vowel) << c.x << ", " << c.y;

    std::set<int> seen;
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 32; ++x)
            seen.insert (vowelMap::vowelAt ((x + 0.5) / 32.0, (y + 0.5) / 32.0));
    EXPECT_EQ (seen.size(), 12u);
    EXPECT_EQ (*seen.begin(), 0);
    EXPECT_EQ (*seen.rbegin(), 11);
}

TEST (VoiceOperator, formantsFollowVowelReductionAndShift)
{
    const struct
    {
        double x, y, reduction, control, shift;
        Formants expected;
    } cases[] { { 1.0, 1.0, 0.0, 1.0, 0.25, vowel6 },
                { 0.0, 0.0, 0.0, 1.0, 0.25, vowel0 },
                { 1.1, 0.0, 0.0, 1.0, 0.25, vowel0 },
                { 0.0, 0.5, 0.0, 1.0, 0.25, { 290.0, 2150.0, 2800.0, 3500.0 } },
                { 1.0, 1.0, 1.0, 1.0, 0.25, { 637.5, 762.5, 1100.0, 1375.0 } }, // three quarters of the way to 700
                { 1.0, 1.0, 2.0, 1.0, 0.25, { 637.5, 762.5, 1100.0, 1375.0 } },
                { 1.0, 1.0, 1.0, 0.5, 0.25, { 543.75, 856.25, 1700.0, 2387.5 } },
                { 1.0, 1.0, notANumber, 1.0, 0.25, vowel6 },
                { 1.0, 1.0, 0.0, 1.0, 0.0, { 225.0, 475.0, 1150.0, 1700.0 } },
                { 1.0, 1.0, 0.0, 1.0, -3.0, { 225.0, 475.0, 1150.0, 1700.0 } },
                { 1.0, 1.0, 0.0, 1.0, notANumber, { 225.0, 475.0, 1150.0, 1700.0 } },
                { 1.0, 1.0, 0.0, 1.0, 1.0, { 1125.0, 2375.0, 5750.0, 8500.0 } },
                { 0.0, 1.0, 0.0, 1.0, 9.0, { 2720.0, 14025.0, 18700.0, 22050.0 } }, // held to a shift of 4
                { 1.0, 1.0, 0.0, 1.0, 0.5, vowel6 } }; // as it starts: nothing has changed yet

    for (const bool parallel : { false, true })
        for (const auto& c : cases)
        {
            SCOPED_TRACE (testing::Message() << c.x << ' ' << c.y << ' ' << c.reduction << ' ' << c.shift);
            VoiceRig rig (c.x, c.y);
            rig.op().setChoiceParameter (0, parallel ? 1 : 0);
            rig.setInput (4, c.reduction);
            rig.setControl (4, c.control);
            rig.follow (4, 4);
            rig.setInput (5, c.shift);
            rig.setInput (0, impulseAt (0));
            rig.process();
            Voice voice (c.expected, parallel);
            expectBlock (rig, impulseAt (0), voice);
        }
}

TEST (VoiceOperator, articulationIsTheSpeedOfAChange)
{
    const struct
    {
        double articulation, glide;
    } cases[] { { 1.0, 1.0 }, { 4.0, 1.0 }, { 0.5, std::pow (0.535, 7.0) }, { 0.0, 0.01 } }; // 0.01 until it moves

    for (const auto& c : cases)
    {
        SCOPED_TRACE (c.articulation);
        VoiceRig rig;
        rig.setInput (3, c.articulation);
        rig.process();

        rig.setInput (1, 0.0);
        rig.setInput (2, 0.0);
        rig.setInput (0, impulseAt (20));
        rig.process();

        Voice voice (vowel6);
        for (std::size_t k = 0; k < formantCount; ++k)
        {
            voice.filters[k].goal = Bandpass::at (vowel0[k]);
            voice.filters[k].glide = c.glide;
        }
        expectBlock (rig, impulseAt (20), voice);
    }
}

TEST (VoiceOperator, quaverPushesEachFormantAtItsOwnRate)
{
    VoiceRig rig;
    const double depth = 16384.0 / 32767.0; // also the share of the highest rate
    rig.op().setFloatParameter (1, depth);
    rig.op().setFloatParameter (2, 16.0 * depth);
    rig.process();
    rig.setInput (0, impulseAt (0));
    rig.process();

    Voice voice (vowel6);
    for (int k = 0; k < formantCount; ++k)
    {
        Bandpass& filter = voice.filters[static_cast<std::size_t> (k)];
        filter.glide = 0.01;
        filter.quaverDepth = (k + 0.3) * depth * 0.05;
        filter.quaverHz = (std::sin (2.0 * M_PI * 0.2 * k) * 0.5 + 1.0) * 16.0 * depth;
    }
    for (int i = 0; i < blockFrames; ++i)
        voice (0.0);
    expectBlock (rig, impulseAt (0), voice);
}

TEST (VoiceOperator, quaverUpToAHundredthIsNone)
{
    const auto played = [] (double depth)
    {
        VoiceRig rig;
        rig.op().setFloatParameter (1, depth);
        rig.op().setFloatParameter (2, 6.0);
        rig.setInput (0, noiseBlock (3));
        return rig.render (4);
    };

    const auto still = played (0.0);
    EXPECT_EQ (played (0.005), still);
    EXPECT_EQ (played (0.0099), still);
    EXPECT_NE (played (0.0102), still);
}

TEST (VoiceOperator, levelFollowsTheSourceOneBlockLate)
{
    VoiceRig rig;
    Voice voice (vowel6);
    const auto first = noiseBlock (1);
    const auto second = noiseBlock (2);
    rig.setInput (0, first);
    rig.process();
    expectBlock (rig, first, voice);

    double sourcePower = 0.0, power = 0.0;
    for (int i = 0; i < blockFrames; ++i)
    {
        sourcePower += first[static_cast<std::size_t> (i)] * first[static_cast<std::size_t> (i)];
        power += rig.output (0)[i] * rig.output (0)[i];
    }

    rig.setInput (0, second);
    rig.process();
    // The block after the one that was measured still starts at a gain of 1.
    const double gain = std::sqrt (sourcePower / power);
    int i = 0;
    expectBlock (rig, second, [&] (double x) { return voice (x) * (1.0 + (gain - 1.0) * i++ / blockFrames); });
}

TEST (VoiceOperator, ownSourceRunsAtThePitchOfTheShiftInput)
{
    for (const bool parallel : { false, true })
    {
        VoiceRig rig;
        rig.connect (0, false);
        rig.op().setChoiceParameter (0, parallel ? 1 : 0);
        rig.op().setInputScale (5, 0.5);
        rig.setInput (5, 600.0);
        rig.process();

        std::vector<double> source (blockFrames);
        MVPulseWidthMod glottis;
        glottis.init (true, rate);
        glottis.setTable (MVWaveforms::instance().table (waveGlottalDerivative));
        glottis.setModulationType (pulseShapeModulated);
        glottis.process (source.data(), nullptr, blockFrames, 300.0, 300.0, 0.6, 0.4);
        ASSERT_GT (*std::max_element (source.begin(), source.end()), 0.1);

        // A pitch in Hz is a full shift. In parallel only the first filter hears the voice's own source.
        Voice voice ({ 3825.0, 8075.0, 19550.0, 22050.0 });
        expectBlock (rig, source, [&] (double x) { return parallel ? voice.filters[0](x) : voice (x); });
    }
}

TEST (VoiceOperator, breathIsHeardInItsOwnSourceOnly)
{
    for (const bool connected : { false, true })
    {
        VoiceRig clear;
        VoiceRig breathy;
        breathy.op().setFloatParameter (3, 0.5);

        for (VoiceRig* const rig : { &clear, &breathy })
        {
            rig->setInput (0, 0.0);
            rig->connect (0, connected);
            rig->setInput (5, 100.0);
        }

        const auto without = clear.render (4);
        const auto with = breathy.render (4);
        if (connected)
            EXPECT_EQ (with, without);
        else
            EXPECT_NE (with, without);
    }
}

TEST (VoiceOperator, storedNumbersAreFixedPointAndFold)
{
    const struct
    {
        std::int32_t topology;
        std::uint32_t depth, rate;
        int position;
        double depthValue, rateValue;
    } cases[] { { 1, 32767, 32767, 0, 1.0, 16.0 },
                { 2, 16384, 2048, 1, 16384.0 / 32767.0, 32768.0 / 32767.0 },
                { 0, 0, 0, 1, 0.0, 0.0 },
                { -7, 0, 0, 1, 0.0, 0.0 },
                { 9, 32767 + 100, 0, 0, 100.0 / 32767.0, 0.0 },
                { std::numeric_limits<std::int32_t>::min(), 0, 0, 0, 0.0, 0.0 } };

    for (const auto& c : cases)
    {
        const SlawvoxAttributes record { c.topology, c.depth, c.rate, 0 };
        OperatorRig rig (specOf ("MVOpSlawvox"), storedOperator (0xA70019, &record, sizeof (record)));
        EXPECT_EQ (rig.op().choiceParameter (0), c.position) << c.topology;
        EXPECT_NEAR (rig.op().floatParameter (1), c.depthValue, 1e-12);
        EXPECT_NEAR (rig.op().floatParameter (2), c.rateValue, 1e-12);
    }
}

} // namespace
