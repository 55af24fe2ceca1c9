// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVNoiseGenerator.h"
#include "foundation/MVMath.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace morvanelab
{

namespace
{

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

MVNoiseGenerator makeNoise (std::int32_t type, bool interpolate)
{
    MVNoiseGenerator source;
    source.init (true, 44100.0);
    source.getRandom().setState (12345);
    source.setNoiseType (type);
    source.setInterpolate (interpolate);
    return source;
}

std::vector<double> steppedNoise (MVNoiseGenerator& source, int frames, double interval, double deviation,
                                  double intervalScale = 1.0)
{
    const std::vector<double> intervals (static_cast<std::size_t> (frames), interval);
    const std::vector<double> deviations (static_cast<std::size_t> (frames), deviation);
    std::vector<double> out (static_cast<std::size_t> (frames));
    source.stepped (out.data(), intervals.data(), deviations.data(), 1.0, frames, intervalScale);
    return out;
}

} // namespace

TEST (NoiseGenerator, whiteIsUniform)
{
    MVNoiseGenerator source = makeNoise (noiseWhite, false);
    constexpr int count = 100000;
    std::vector<double> out (count);
    source.white (out.data(), count);

    double sum = 0.0, squares = 0.0;
    int upper = 0;
    for (const double value : out)
    {
        ASSERT_GE (value, -1.0);
        ASSERT_LE (value, 1.0);
        sum += value;
        squares += value * value;
        upper += value > 0.5 ? 1 : 0;
    }

    // Mean 0, variance 1/3, a quarter in the upper quarter; six standard deviations of room.
    EXPECT_NEAR (sum / count, 0.0, 0.011);
    EXPECT_NEAR (squares / count, 1.0 / 3.0, 0.006);
    EXPECT_NEAR (upper / double (count), 0.25, 0.009);
}

TEST (NoiseGenerator, brownianWalksAndReflectsWithItsSignReversed)
{
    MVNoiseGenerator source = makeNoise (noiseBrown, false);
    MVRandom draws (12345);
    const std::vector<double> deviation (2000, 0.4);
    std::vector<double> out (2000);
    source.brownian (out.data(), deviation.data(), 0.5, 900);
    source.brownian (out.data() + 900, deviation.data(), 0.5, 1100);

    double walk = 0.0;
    int reflections = 0;
    for (const double value : out)
    {
        walk += draws.nextInFloatRange ({ -0.2, 0.4 });
        if (walk < -1.0 || walk >= 1.0)
        {
            // By 0.1 beyond 1 wraps to -0.9, whose opposite is 0.9.
            walk = walk < 0.0 ? -2.0 - walk : 2.0 - walk;
            ++reflections;
        }
        ASSERT_NEAR (value, walk, 1.0e-9);
        walk = value;
    }
    EXPECT_GT (reflections, 3);
}

TEST (NoiseGenerator, unusableDeviationsKeepTheWalkInRange)
{
    for (const double deviation : { nan, infinity, -infinity, 1.0e300, -3.0e9 })
        for (const double scale : { 1.0, -2.0, 1.0e308, nan })
        {
            MVNoiseGenerator source = makeNoise (noiseBrown, true);
            const std::vector<double> deviations (64, deviation);
            std::vector<double> walked (64);
            source.brownian (walked.data(), deviations.data(), scale, 64);
            source.reset();
            std::vector<double> stepped = steppedNoise (source, 64, 0.01, deviation * scale);
            for (const auto* out : { &walked, &stepped })
                for (const double value : *out)
                    EXPECT_LE (std::abs (value), 1.0) << deviation << " " << scale;
        }
}

TEST (NoiseGenerator, stepsLastTheirInterval)
{
    struct Row
    {
        double interval, scale;
        int samples;
    };

    // 44.1 samples a millisecond; anything that truncates to nothing lasts one sample.
    for (const Row row : { Row { 2.0, 1.0, 88 }, Row { 1.0, 0.5, 22 }, Row { 0.0, 1.0, 1 }, Row { 0.01, 1.0, 1 },
                           Row { -5.0, 1.0, 1 }, Row { nan, 1.0, 1 }, Row { infinity, 1.0, 1000 } })
    {
        MVNoiseGenerator source = makeNoise (noiseWhite, false);
        const std::vector<double> out = steppedNoise (source, 300, row.interval, 0.0, row.scale);
        for (std::size_t i = 1; i < out.size(); ++i)
            ASSERT_EQ (out[i] != out[i - 1], static_cast<int> (i) % row.samples == 0) << row.interval << " " << i;
    }
}

TEST (NoiseGenerator, interpolationReachesEachValueInAStraightLine)
{
    MVNoiseGenerator stepping = makeNoise (noiseWhite, false);
    MVNoiseGenerator gliding = makeNoise (noiseWhite, true);
    const std::vector<double> values = steppedNoise (stepping, 880, 2.0, 0.0);
    const std::vector<double> lines = steppedNoise (gliding, 880, 2.0, 0.0);

    double from = 0.0;
    for (std::size_t i = 0; i < lines.size(); ++i)
    {
        const double share = static_cast<double> (i % 88 + 1) / 88.0;
        ASSERT_NEAR (lines[i], from + (values[i] - from) * share, 1.0e-12) << i;
        if (i % 88 == 87)
            from = values[i];
    }

    // An interval of one sample is reached within it.
    MVNoiseGenerator jumping = makeNoise (noiseWhite, false);
    MVNoiseGenerator following = makeNoise (noiseWhite, true);
    const std::vector<double> jumps = steppedNoise (jumping, 50, 0.0, 0.0);
    const std::vector<double> reached = steppedNoise (following, 50, 0.0, 0.0);
    for (std::size_t i = 0; i < jumps.size(); ++i)
        ASSERT_NEAR (reached[i], jumps[i], 1.0e-12) << i;
}

TEST (NoiseGenerator, brownStepsStartFromTheInterpolatedPosition)
{
    // Without interpolation the walk never leaves its place, so no value lies further out than one deviation.
    MVNoiseGenerator held = makeNoise (noiseBrown, false);
    const std::vector<double> around = steppedNoise (held, 5000, 0.1, 0.1);
    EXPECT_LE (*std::max_element (around.begin(), around.end()), 0.1);
    EXPECT_GE (*std::min_element (around.begin(), around.end()), -0.1);
    EXPECT_GT (*std::max_element (around.begin(), around.end()), 0.08);

    MVNoiseGenerator walking = makeNoise (noiseBrown, true);
    const std::vector<double> away = steppedNoise (walking, 5000, 0.1, 0.1);
    EXPECT_GT (*std::max_element (away.begin(), away.end()), 0.2);
}

TEST (NoiseGenerator, blockSizesDoNotMatterAndResetStartsAnew)
{
    MVNoiseGenerator source = makeNoise (noiseBrown, true);
    std::vector<double> first = steppedNoise (source, 70, 2.0, 0.5);
    const std::vector<double> rest = steppedNoise (source, 130, 2.0, 0.5);
    first.insert (first.end(), rest.begin(), rest.end());
    source.reset();
    source.getRandom().setState (12345);
    EXPECT_EQ (steppedNoise (source, 200, 2.0, 0.5), first);
}

TEST (NoiseGenerator, addedNoiseKeepsTheFirstDeviationOfTheProcess)
{
    MVNoiseGenerator first = makeNoise (noiseWhite, false);
    MVNoiseGenerator second = makeNoise (noiseWhite, false);
    std::vector<double> quiet (1000, 5.0), loud (1000, 5.0);
    first.addNoise (quiet.data(), 0.25, 1000);
    second.addNoise (loud.data(), 1.0, 1000);
    EXPECT_EQ (quiet, loud);
    EXPECT_GT (*std::max_element (loud.begin(), loud.end()), 5.24);
    EXPECT_LE (*std::max_element (loud.begin(), loud.end()), 5.25);
    EXPECT_GE (*std::min_element (loud.begin(), loud.end()), 4.75);
}

} // namespace morvanelab
