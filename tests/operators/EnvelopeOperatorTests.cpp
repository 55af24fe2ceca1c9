// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorRig.h"
#include "operators/MVOpAdsrEnvelope.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

void setParameters (MVOperator& op, std::initializer_list<double> values)
{
    int index = 0;
    for (const double value : values)
        EXPECT_EQ (op.setFloatParameter (index++, value), 1);
}

/** 88 samples of attack, 132 of decay to 0.5, 176 of release; the threshold is 0.25. */
struct ShortAdsr : OperatorRig
{
    ShortAdsr() : OperatorRig (specOf ("MVOpAdsrEnvelope"))
    {
        setParameters (op(), { 0.002, 0.003, 0.004, 0.5, 0.25 });
        setInput (0, 3.0);
        activate();
    }

    void trigger (double value)
    {
        std::vector<double> block (blockFrames, value > 0.1 ? 0.0 : 1.0); // only the first sample is read
        block[0] = value;
        setInput (1, block);
    }
};

double risingLevel (int n) { return n < 88 ? (n + 1) / 88.0 : n < 220 ? 1.0 - 0.5 * (n - 87) / 132.0 : 0.5; }

TEST (AdsrEnvelopeOperator, stagesLastToTheSampleAcrossBlocks)
{
    for (const int frames : { 256, 100, 44, 1 })
    {
        ShortAdsr rig;
        rig.trigger (0.3);
        for (int done = 0; done < 300; done += frames)
        {
            rig.process (frames);
            for (int i = 0; i < frames; ++i)
            {
                ASSERT_NEAR (rig.output (1)[i], risingLevel (done + i), 1e-12) << frames << " " << done + i;
                ASSERT_EQ (rig.output (0)[i], 3.0 * rig.output (1)[i]);
            }
        }

        rig.trigger (0.0);
        for (int done = 0; done < 300; done += frames)
        {
            rig.process (frames);
            for (int i = 0; i < frames; ++i)
                ASSERT_NEAR (rig.output (1)[i], done + i < 176 ? 0.5 * (1.0 - (done + i) / 176.0) : 0.0, 1e-12);
        }
        EXPECT_EQ (rig.output (1)[frames - 1], 0.0);
    }
}

TEST (AdsrEnvelopeOperator, retriggerInReleaseRisesFromTheLevelReached)
{
    ShortAdsr rig;
    rig.trigger (0.3);
    rig.process();
    rig.trigger (0.0);
    rig.process (50);
    rig.trigger (0.3);
    rig.process();
    const double level = 0.5 * (1.0 - 50.0 / 176.0);
    for (int i = 0; i < 256; ++i)
        ASSERT_NEAR (rig.output (1)[i], level + risingLevel (i), 1e-12) << i;
}

TEST (AdsrEnvelopeOperator, triggerLevels)
{
    const double above = std::nextafter (0.25, 1.0);
    const struct
    {
        double trigger;
        double sounding; ///< the same value while the envelope sustains
        bool starts;
        bool releases;
    } cases[] { { 0.25, 0.25, false, false },
                { above, 0.02, true, false },
                { -above, -0.02, true, false },
                { notANumber, notANumber, false, false },
                { 0.3, 0.0099, true, true } };

    for (const auto& c : cases)
    {
        ShortAdsr rig;
        rig.trigger (c.trigger);
        rig.process();
        EXPECT_EQ (rig.output (1)[255] != 0.0, c.starts) << c.trigger;

        rig.trigger (0.3);
        rig.process();
        rig.process(); // held: no second attack
        EXPECT_NEAR (rig.output (1)[255], 0.5, 1e-12);
        rig.trigger (c.sounding);
        rig.process();
        EXPECT_NEAR (rig.output (1)[255], c.releases ? 0.0 : 0.5, 1e-12) << c.sounding;
    }
}

TEST (AdsrEnvelopeOperator, triggerIsScaledByTheControlAlone)
{
    ShortAdsr rig;
    rig.op().setInputScale (1, 100.0);
    rig.follow (1, 3);
    rig.setControl (3, 0.5);
    rig.trigger (0.49);
    rig.process();
    EXPECT_EQ (rig.output (1)[255], 0.0);
    rig.trigger (0.51);
    rig.process();
    EXPECT_GT (rig.output (1)[255], 0.0);
}

TEST (AdsrEnvelopeOperator, storedThresholdIsTakenAsItStands)
{
    const AdsrEnvelopeAttributes stored { 2.5, 0.1, 0.1, 0.5, 7.0 };
    OperatorRig rig (specOf ("MVOpAdsrEnvelope"), storedOperator (0xA70001, &stored, sizeof (stored)));
    EXPECT_NEAR (rig.op().floatParameter (0), 0.501, 1e-9); // half a second beyond the limit, from the low end
    EXPECT_EQ (rig.op().floatParameter (4), 7.0);
}

TEST (AdsrEnvelopeOperator, stagesShorterThanASampleTakeOne)
{
    ShortAdsr rig;
    rig.attributes().sampleRate = 100.0;
    rig.activate();
    rig.trigger (0.3);
    rig.process();
    EXPECT_EQ (rig.output (1)[0], 1.0);
    EXPECT_EQ (rig.output (1)[1], 0.5);
    EXPECT_EQ (rig.output (1)[255], 0.5);
}

/** Straight attack of 882 samples, decay of 441 along a square root, threshold 0.5. */
struct StraightExponential : OperatorRig
{
    StraightExponential() : OperatorRig (specOf ("MVOpExponential"))
    {
        setParameters (op(), { 1.0, 2.0, 0.75, 0.25, 0.0200001, 0.0100001, 0.5 });
        setInput (0, -2.0);
        activate();
    }

    void peak (double value)
    {
        std::vector<double> block (blockFrames, 0.0);
        block[200] = value;
        setInput (1, block);
    }
};

TEST (ExponentialOperator, followsItsCurvesToTheSample)
{
    StraightExponential rig;
    rig.peak (0.5);
    rig.process();
    rig.peak (0.4999);

    for (int n = 0; n < 1536; ++n)
    {
        if (n > 0 && n % 256 == 0)
            rig.process();
        const double at = n + 1;
        const double decayed = 0.75 - 0.5 * std::sqrt ((at - 882.0) / 441.0);
        const double expected = at <= 882.0 ? 0.25 + 0.5 * at / 882.0 : at < 1323.0 ? decayed : 0.25;
        ASSERT_NEAR (rig.output (1)[n % 256], expected, 1e-9) << n;
        ASSERT_EQ (rig.output (0)[n % 256], -2.0 * rig.output (1)[n % 256]);
    }
}

TEST (ExponentialOperator, aPeakAtTheThresholdStartsItWithEveryBlock)
{
    StraightExponential rig;
    rig.op().setInputScale (1, 2.0);
    rig.peak (-0.25);

    double level = 0.25;
    for (int block = 0; block < 4; ++block)
    {
        rig.process();
        EXPECT_NEAR (rig.output (1)[0], level + (0.75 - level) / 882.0, 1e-8) << block;
        level = rig.output (1)[255];
    }
}

TEST (ExponentialOperator, triggerIsScaledByScaleAndControl)
{
    for (const double control : { 0.24, 0.26 })
    {
        StraightExponential rig;
        rig.op().setInputScale (1, 4.0);
        rig.follow (1, 2);
        rig.setControl (2, control);
        rig.peak (0.5);
        rig.process();
        EXPECT_EQ (rig.output (1)[255] > 0.25, control > 0.25) << control;
    }
}

TEST (ExponentialOperator, anyVelocityStaysFinite)
{
    for (const double velocity : { -1e-9, -0.01, -0.0, 0.0, 1e-9 })
    {
        StraightExponential rig;
        EXPECT_EQ (rig.op().setFloatParameter (1, velocity), 1);
        rig.peak (1.0);
        rig.process();
        rig.peak (0.0);
        for (int block = 0; block < 5; ++block)
        {
            rig.process();
            EXPECT_TRUE (rig.allFinite()) << velocity;
        }
    }
}

TEST (GateOperator, mixesByTheFractionOfTheBalance)
{
    const struct
    {
        double balance;
        double atZero; ///< share of signal A
        double atHalf;
    } cases[] { { 0.0, 0.5, 0.0 },
                { 0.25, 0.625, 0.25 },
                { 2.25, 0.625, 0.25 },
                { -0.5, 0.25, 0.5 },
                { -1.75, 0.125, 0.75 },
                { 1.0, 0.5, 0.0 },
                { 3e9 + 0.5, 0.75, 0.5 },
                { 0.999, 0.9995, 0.999 },
                { 1e300, 0.5, 0.0 },
                { notANumber, 0.5, 0.0 },
                { 18014398509481982.0, 0.5, 0.0 } };

    for (const auto& c : cases)
        for (const int choice : { 0, 1 })
        {
            OperatorRig rig (specOf ("MVOpGate"));
            EXPECT_EQ (rig.op().setChoiceParameter (0, choice), 1);
            rig.op().setInputScale (2, 4.0);
            rig.setInput (0, 10.0);
            rig.setInput (1, 2.0);
            rig.setInput (2, c.balance * 0.25);
            rig.process();
            const double share = choice == 0 ? c.atZero : c.atHalf;
            EXPECT_NEAR (rig.output (0)[255], share * 10.0 + (1.0 - share) * 2.0, 1e-12) << c.balance << choice;
        }
}

TEST (GateOperator, balanceIsScaledByItsControl)
{
    OperatorRig rig (specOf ("MVOpGate"));
    rig.setControl (1, 0.25);
    rig.follow (2, 1);
    rig.setInput (0, 1.0);
    rig.setInput (2, 1.0);
    rig.process();
    EXPECT_NEAR (rig.output (0)[255], 0.625, 1e-8);
}

TEST (EnvFollowerOperator, fallsByTheDecayRateEachSecond)
{
    OperatorRig rig (specOf ("MVOpEnvFollower"));
    EXPECT_EQ (rig.op().setFloatParameter (0, 2.0), 1);
    rig.attributes().sampleRate = 48000.0;
    rig.activate();
    std::vector<double> pulse (blockFrames, 0.0);
    pulse[3] = -0.8;
    rig.setInput (0, pulse);
    rig.process();
    EXPECT_NEAR (rig.output (0)[3], 0.8, 1e-15);
    EXPECT_NEAR (rig.output (0)[255], 0.8 - 252 * 2.0 / 48000.0, 1e-12);

    const double before = rig.output (0)[255];
    EXPECT_EQ (rig.op().setFloatParameter (0, 4.0), 1);
    rig.setInput (0, 0.0);
    rig.process();
    EXPECT_NEAR (rig.output (0)[255], before - 256 * 4.0 / 48000.0, 1e-12);
}

TEST (SmootherOperator, rateIsTheFifthPowerOfTheRest)
{
    const struct
    {
        int choice;
        double factor;
        double step; ///< first sample of a step to 1
    } cases[] { { 0, 0.0, 1.0 / 32.0 }, { 1, 0.5, 1.0 / 32.0 }, { 1, 0.0, 1.0 },
                { 0, -1.0, 1.0 },       { 1, 0.8, 0.00032 },    { 1, 9.0, std::pow (1.0 - 0.9998999834060669, 5) },
                { 1, -3.0, 1.0 },       { 1, notANumber, 1.0 } };

    for (const auto& c : cases)
    {
        OperatorRig rig (specOf ("MVOpSmoother"));
        EXPECT_EQ (rig.op().setChoiceParameter (0, c.choice), 1);
        rig.op().setInputScale (1, 4.0);
        rig.setControl (5, 0.5);
        rig.follow (1, 5);
        rig.setInput (0, 1.0);
        std::vector<double> factor (blockFrames, 0.3);
        factor[0] = c.factor * 0.5;
        rig.setInput (1, factor);
        rig.activate();
        rig.process();
        for (const int i : { 0, 1, 100 })
            EXPECT_NEAR (rig.output (0)[i], 1.0 - std::pow (1.0 - c.step, i + 1), 1e-8) << c.factor;
    }
}

TEST (SampleHoldOperator, glidesToTheSampleAtTheRiseOfTheTrigger)
{
    OperatorRig rig (specOf ("MVOpSampleHold"));
    std::vector<double> capture (blockFrames);
    std::vector<double> trigger (blockFrames, 0.0);
    for (std::size_t i = 0; i < capture.size(); ++i)
        capture[i] = 1.0 + static_cast<double> (i);
    std::fill (trigger.begin() + 10, trigger.begin() + 20, 0.5);
    std::fill (trigger.begin() + 20, trigger.begin() + 30, 0.4999);
    trigger[30] = 0.9;
    rig.setInput (0, capture);
    rig.setInput (1, trigger);
    rig.process();

    EXPECT_EQ (rig.output (0)[9], 0.0);
    for (int i = 10; i < 30; ++i)
        EXPECT_NEAR (rig.output (0)[i], 11.0 * (1.0 - std::pow (0.9, i - 9)), 1e-6) << i;
    const double reached = rig.output (0)[29];
    EXPECT_NEAR (rig.output (0)[30], reached + (31.0 - reached) * 0.1, 1e-6);
    EXPECT_NEAR (rig.output (0)[255], 31.0, 1e-6);
}

TEST (SampleHoldOperator, refusesChoicesAndSequencesAndForgetsHugeValues)
{
    OperatorRig rig (specOf ("MVOpSampleHold"));
    const double sequence[] { 0.5 };
    EXPECT_EQ (rig.op().choiceCount (0), 0u);
    EXPECT_EQ (rig.op().setChoiceParameter (0, 0), 17);
    EXPECT_EQ (rig.op().setSequenceParameter (0, 1, sequence), 21);

    for (const double value : { notANumber, 1.7e308, -1.7e308, 0.25 })
    {
        rig.setInput (0, value);
        rig.setInput (1, 1.0);
        rig.process();
        rig.setInput (1, 0.0);
        rig.process();
    }
    rig.render (40); // a tenth of the way each leads down from there in some 7000 samples
    rig.process();
    EXPECT_NEAR (rig.output (0)[255], 0.25, 1e-9);
}

} // namespace
