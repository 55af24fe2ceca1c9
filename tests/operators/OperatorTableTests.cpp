// SPDX-License-Identifier: GPL-3.0-or-later
// That the table tells the truth: what patches and users rely on, written down once more by hand.
#include "OperatorRig.h"
#include "operators/AttributeRecord.h"

#include <gtest/gtest.h>

#include <string>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

struct ExpectedParameter
{
    const char* name;
    MVParameterType type;
    double low;
    double span;
    double initial;
    std::vector<const char*> choices {};
};

struct ExpectedOperator
{
    const char* className;
    std::uint32_t typeId;
    const char* shortName;
    int attributeSize;
    std::vector<const char*> inputs;
    std::vector<const char*> outputs;
    std::vector<ExpectedParameter> parameters;
};

constexpr auto Float = MVParameterType::Float;
constexpr auto Int = MVParameterType::Int;
constexpr auto Choice = MVParameterType::Choice;
constexpr auto Bool = MVParameterType::Bool;
constexpr auto Curve = MVParameterType::Curve;
constexpr auto Sequence = MVParameterType::Sequence;

const std::vector<ExpectedOperator>& expectedOperators()
{
    static const std::vector<ExpectedOperator> rows {
        { "MVOpOutput",
          0xA70006,
          "Output",
          40,
          { "Mono Mix Input", "CH 0 Panned Mix Input", "CH 0 Left-Right Pan Pos", "CH 0 Unused", "CH 0 Unused" },
          {},
          { { "Rise time in seconds", Float, 0.05000000074505806, 9.949999999254942, 0.05000000074505806 },
            { "Release time in seconds", Float, 0.05000000074505806, 9.949999999254942, 0.05000000074505806 },
            { "Pre-compressed volume", Float, 0.0010000000474974513, 0.9989999999525025, 1.0 },
            { "Compressor Roll-off", Float, 0.0, 4.0, 1.0 },
            { "Compressor threshold", Float, 0.1, 0.8900000095367432, 0.9 } } },
        { "MVOpOscillator",
          0xA70005,
          "Oscillator",
          16,
          { "Frequency Signal" },
          { "Output Signal" },
          { { "Function Type", Choice, 0, 0, 1, { "Sine", "Square", "Triangle", "Sawtooth" } },
            { "Phase", Float, 0.0, 3.1415927410125732, 0.0 } } },
        { "MVOpConstantPcm",
          0xA70002,
          "Constant",
          8,
          {},
          { "Output Value" },
          { { "value", Float, 0.0, 32768.0, 0.0 } } },
        { "MVOpSum",
          0xA70009,
          "Sum",
          4,
          { "Mixer Input Signal #0 ", "Mixer Input Signal #1 ", "Mixer Input Signal #2 ", "Mixer Input Signal #3 " },
          { "Mixed Output Signal" },
          {} },
        { "MVOpProduct",
          0xA70007,
          "Product",
          4,
          { "Product Input Signal #0 ", "Product Input Signal #1 ", "Product Input Signal #2 ",
            "Product Input Signal #3 " },
          { "Product Output Signal" },
          {} },
        { "MVOpDelay",
          0xA70003,
          "Delay",
          16,
          { "Input Signal", "Duration Ratio" },
          { "Output Signal" },
          { { "Post Delay Scalar", Float, 0.0010000000474974513, 0.9890000094892457, 0.5 },
            { "Max Delay (sec)", Float, 0.0, 5.0, 1.0 } } },
        { "MVOpMidiKeyIn",
          0xA70004,
          "Midi Key In",
          24,
          {},
          { "Output Pitch in Hz", "Output Midi Key Velocity" },
          { { "Key Transposition", Int, -24, 48, 0 },
            { "Percussive Mode", Bool, 0, 0, 0 },
            { "Velocity Decay Rate", Float, 0.0, 4.0, 0.3000000119 },
            { "Rest Velocity Ratio", Float, 0.0, 4.0, 0.3000000119 } } },
        { "MVOpSignalShaper",
          0xA70008,
          "Signal Shaper",
          132,
          { "Input (index) Signal" },
          { "Distorted Output Signal" },
          { { "Breakpoints", Curve, 0, 0, -1 } } },
        { "MVOpAdsrEnvelope",
          0xA70001,
          "ADSR-Env",
          40,
          { "Input Signal", "Trigger Signal" },
          { "Output Scaled", "Output Envelope" },
          { { "Attack", Float, 0.0010000000474974513, 1.9989999999525025, 0.01 },
            { "Decay", Float, 0.0010000000474974513, 1.9989999999525025, 0.1 },
            { "Release", Float, 0.0010000000474974513, 14.998999999952503, 0.3 },
            { "Sustain Ratio", Float, 0.009999999776482582, 0.9890000130981207, 0.6000000238418579 },
            { "Trigger Trheshold", Float, 0.009999999776482582, 0.9890000130981207, 0.1 } } },
        { "MVOpWire", 0xA7000B, "Thru", 0, { "Input Signal" }, { "Output Signal" }, {} },
        { "MVOpInput",
          0xA7000C,
          "Input",
          4,
          {},
          { "Signal from Input" },
          { { "Input Channel", Int, 0, 2, 0 } } }, // with two input channels
        { "MVOpEnvFollower",
          0xA7000D,
          "Env Follower",
          8,
          { "Input Signal" },
          { "Output Follower Signal" },
          { { "Decay Rate", Float, 0.004999999888241291, 9.995000000111759, 1.0 } } },
        { "MVOpPitchTracker", 0xA7000E, "Pitch Tracker", 0, { "Input Signal" }, { "Instant Pitch Value" }, {} },
        { "MVOpBiquad",
          0xA7000F,
          "Biquad",
          4,
          { "Center Frequency ", "Q", "Unused", "Input Signal" },
          { "Output Signal" },
          { { "Filter Type", Choice, 0, 0, 3, { "Lowpass", "Highpass", "Bandpass", "Notch", "Allpass" } } } },
        { "MVOpExponential",
          0xA70010,
          "Exp-Env",
          56,
          { "Input Modulated Signal", "Input Trigger Signal" },
          { "Output Modulated Signal", "Output Exponential Envelope" },
          { { "Attack Velocity", Float, -10.0, 20.0, 1.0 },
            { "Decay Velocity", Float, -10.0, 20.0, 2.0 },
            { "Full On", Float, -1.0, 2.0, 1.0 },
            { "Full Off", Float, -1.0, 2.0, 0.0 },
            { "Attack Duration", Float, 0.009999999776482582, 4.990000000223517, 0.01 },
            { "Release Duration", Float, 0.004999999888241291, 9.995000000111759, 0.5 },
            { "Threshold", Float, 0.25, 0.7490000128746033, 0.8999999761581421 } } },
        { "MVOpSampler",
          0xA70011,
          "Sampler",
          8,
          { "Input Signal", "Input Record Trigger", "Input Loop Start Offset", "Input Loop Duration",
            "Input Playback Rate" },
          { "Output Signal" },
          { { "Sampler time capacity", Float, 0.25, 9.75, 2.0 } } },
        { "MVOpNoise",
          0xA70012,
          "Noise",
          8,
          { "Brownian Deviation", "Change Interval" },
          { "Noise Signal" },
          { { "Noise Type", Choice, 0, 0, 1, { "White", "Brown" } }, { "Interpolate", Bool, 0, 0, 0 } } },
        { "MVOpFreqTweaker",
          0xA70013,
          "Tweaker",
          4,
          { "Input Signal", "(Not Used)", "Stretch Factor" },
          { "Tweaked Signal" },
          { { "Algorithm",
              Choice,
              0,
              0,
              1,
              { "Stretched", "Shifted", "Convolved", "Self-convolved", "Phase-swapped", "Mag-swapped", "Reversed",
                "Wrapped", "Twisted", "Attractor", "Morph", "Blur" } } } },
        { "MVOpValueSequencer",
          0xA70014,
          "Value Sequence",
          32,
          { "Step Trigger", "Quantization Factor", "Smoothing Factor", "Start Stage Offset", "End Stage Offset" },
          { "Output Value", "Stage Counter" },
          { { "Stage Values", Sequence, 0, 0, -1 } } },
        { "MVOpTimeSequencer",
          0xA70015,
          "Time Sequence",
          32,
          { "Rate Scalar", "Stage Start Offset", "Stage End Offset" },
          { "Output Pulse", "Stage Counter" },
          { { "Stage Intervals", Sequence, 0, 0, -1 } } },
        { "MVOpSampleHold",
          0xA70016,
          "Sample Hold",
          4,
          { "Capture Signal", "Hold Trigger" },
          { "Hold Value" },
          { { "Damping Type", Choice, 0, 0, -1, {} } } },
        { "MVOpPulseWidthModulator",
          0xA70017,
          "PWM",
          8,
          { "Frequency", "Pulse Width", "Modulator" },
          { "Periodic Pulse" },
          { { "Pulse Type",
              Choice,
              0,
              0,
              6,
              { "Sine Period", "Square Period", "Triangle Period", "Sawtooth Period", "Hanning Pulse", "Square Pulse",
                "Parabolic Pulse", "Glottal Pulse", "Inverse Glottal Pulse", "Cardinal Sine Pulse",
                "Glottal Derivative" } },
            { "Modulation Type", Choice, 0, 0, 2, { "Stretched and Offset", "Period Locked", "Shape Modulated" } } } },
        { "MVOpRouter",
          0xA70018,
          "Router",
          24,
          { "Input Signal", "Route Address X", "Route Address Y", "Interval Scalar" },
          { "Routed Output #0 - 0", "Routed Output #0 - 1", "Routed Output #0 - 2", "Routed Output #0 - 3",
            "Routed Output #1 - 0", "Routed Output #1 - 1", "Routed Output #1 - 2", "Routed Output #1 - 3",
            "Routed Output #2 - 0", "Routed Output #2 - 1", "Routed Output #2 - 2", "Routed Output #2 - 3",
            "Routed Output #3 - 0", "Routed Output #3 - 1", "Routed Output #3 - 2", "Routed Output #3 - 3" },
          { { "Max Change Time", Int, 10, 9990, 10 },
            { "Modulo Step Stride", Float, 0.009999999776482582, 0.9900000002235174, 0.25 },
            { "Modulo Step Offset", Float, 0.009999999776482582, 0.9900000002235174, 0.25 } } },
        { "MVOpSlawvox",
          0xA70019,
          "Sound Color",
          16,
          { "Glottal Source", "Formant Map X", "Formant Map Y", "Articulation", "Reduction", "Formant Shift" },
          { "Vocalized Signal" },
          { { "Filter Topology", Choice, 0, 0, 1, { "Series", "Parallel" } },
            { "Quaver Depth", Float, 0.0, 1.0, 0.0 },
            { "Quaver Rate", Float, 0.0, 16.0, 0.0 },
            { "Breathniess", Float, 0.0, 1.0, 0.0 } } },
        { "MVOpGate",
          0xA7001A,
          "Gate",
          4,
          { "Signal A", "Signal B", "A/B Mix Balance" },
          { "Gate-mixed Signal" },
          { { "Center Mix Pos", Choice, 0, 0, 1, { "Balanced at zero", "Balanced at Half" } } } },
        { "MVOpSmoother",
          0xA7001B,
          "Smoother",
          4,
          { "Input Signal", "Smoothing Factor" },
          { "Smoother Signal" },
          { { "Center Smooth Pos", Choice, 0, 0, 1, { "Center at zero", "Center at Half" } } } }
    };
    return rows;
}

void expectPorts (const MVOperator& op, int direction, const std::vector<const char*>& names)
{
    ASSERT_EQ (op.portCount (direction), static_cast<int> (names.size()));
    for (int port = 0; port < op.portCount (direction); ++port)
        EXPECT_STREQ (op.portName (direction, port)->text(), names[static_cast<std::size_t> (port)]);
}

void expectParameter (const MVOperator& op, int index, const ExpectedParameter& expected)
{
    SCOPED_TRACE (expected.name);
    EXPECT_STREQ (op.parameterName (index), expected.name);
    ASSERT_EQ (op.parameterType (index), expected.type);
    const bool isPlainValue = expected.type == Float || expected.type == Int || expected.type == Bool;
    EXPECT_EQ (op.parameterHasDefault (index), isPlainValue || ! expected.choices.empty());
    EXPECT_EQ (op.parameterDefault (index), expected.initial);

    if (expected.type == Float)
    {
        EXPECT_EQ (op.parameterFloatRange (index).low, expected.low);
        EXPECT_EQ (op.parameterFloatRange (index).span, expected.span);
        EXPECT_NEAR (op.floatParameter (index), expected.initial, 1e-9);
    }
    else if (expected.type == Int)
    {
        EXPECT_EQ (op.parameterIntRange (index).low, expected.low);
        EXPECT_EQ (op.parameterIntRange (index).span, expected.span);
        EXPECT_EQ (op.intParameter (index), expected.initial);
    }
    else if (expected.type == Choice)
    {
        ASSERT_EQ (op.choiceCount (index), expected.choices.size());
        for (int position = 0; position < static_cast<int> (expected.choices.size()); ++position)
        {
            EXPECT_STREQ (op.choiceName (index, position), expected.choices[static_cast<std::size_t> (position)]);
            EXPECT_EQ (op.choiceValue (index, position), position + 1);
        }
        EXPECT_EQ (op.choiceParameter (index), expected.choices.empty() ? 0 : expected.initial - 1);
    }
}

TEST (OperatorTable, rowsStandInOrderAndTellTheTruth)
{
    const auto table = operatorTable();
    const auto& expected = expectedOperators();
    ASSERT_EQ (table.size(), expected.size());

    for (std::size_t row = 0; row < table.size(); ++row)
    {
        const ExpectedOperator& wanted = expected[row];
        SCOPED_TRACE (wanted.className);
        OperatorRig rig (*table[row].spec);
        const MVOperator& op = rig.op();

        EXPECT_STREQ (op.className(), wanted.className);
        EXPECT_EQ (op.typeId(), wanted.typeId);
        EXPECT_STREQ (op.shortName(), wanted.shortName);
        EXPECT_EQ (op.attributeSize(), wanted.attributeSize);
        expectPorts (op, portsIn, wanted.inputs);
        expectPorts (op, portsOut, wanted.outputs);

        ASSERT_EQ (op.parameterCount(), static_cast<int> (wanted.parameters.size()));
        for (int i = 0; i < op.parameterCount(); ++i)
            expectParameter (op, i, wanted.parameters[static_cast<std::size_t> (i)]);
    }
}

TEST (OperatorTable, findsByIdentifierClassAndShortName)
{
    EXPECT_STREQ (findOperatorSpec (0xA70005)->className, "MVOpOscillator");
    EXPECT_EQ (findOperatorSpec (std::string_view ("Thru")), findOperatorSpec (std::string_view ("MVOpWire")));
    EXPECT_EQ (findOperatorSpec (std::string_view ("oscillator")), nullptr);
    EXPECT_EQ (findOperatorSpec (0xA7000A), nullptr);
}

TEST (OperatorTable, portNamesFollowTheRecordAndEndWhereThePortsEnd)
{
    const OperatorSpec& output = specOf ("MVOpOutput");
    auto record = output.newRecord();
    attributeRecord::writeField (record.data(), output.fields[0], 3);
    EXPECT_EQ (output.portCount (record.data(), portsIn), 13);
    EXPECT_EQ (output.portName (record.data(), portsIn, 10), "CH 2 Left-Right Pan Pos");
    EXPECT_EQ (output.portName (record.data(), portsIn, 13), "");
    EXPECT_EQ (output.portName (record.data(), portsOut, 0), "");

    OperatorRig rig (specOf ("MVOpOscillator"));
    EXPECT_STREQ (rig.op().portName (portsIn, 1)->text(), "Phase Signal");
    for (const int port : { -1, 2, 100 })
        EXPECT_FALSE (rig.op().portName (portsIn, port));
    EXPECT_FALSE (rig.op().portName (3, 0));
}

TEST (OperatorTable, answersForMissingParametersAsStated)
{
    OperatorRig rig (specOf ("MVOpOscillator"));
    const MVOperator& op = rig.op();

    for (const int index : { -1, 2 })
    {
        EXPECT_EQ (op.parameterName (index), nullptr);
        EXPECT_EQ (op.parameterType (index), MVParameterType::None);
        EXPECT_FALSE (op.parameterHasDefault (index));
        EXPECT_EQ (op.parameterDefault (index), -1.0);
        EXPECT_EQ (op.choiceCount (index), 0xFFFFFFFFu);
    }

    EXPECT_EQ (op.choiceCount (1), 0xFFFFFFFFu);
    EXPECT_EQ (op.choiceName (0, 4), nullptr);
    EXPECT_EQ (op.choiceValue (0, -1), 0);
    const double something = 0.0;
    const double* values = &something;
    EXPECT_EQ (op.curveParameter (0, values), 0);
    EXPECT_EQ (values, nullptr);
}

TEST (OperatorTable, inputChannelFollowsTheEngine)
{
    OperatorRig rig (specOf ("MVOpInput"));
    EXPECT_EQ (rig.op().setIntParameter (0, 1), 1);
    EXPECT_EQ (rig.op().setIntParameter (0, 2), 17);
    rig.attributes().numInputChannels = 1;
    rig.op().setAttributes (nullptr);
    EXPECT_EQ (rig.op().intParameter (0), 0);
    rig.attributes().numInputChannels = 0;
    EXPECT_EQ (rig.op().setIntParameter (0, 0), 17);
}

} // namespace
