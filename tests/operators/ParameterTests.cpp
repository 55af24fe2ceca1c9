// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorRig.h"
#include "foundation/MVChunks.h"
#include "foundation/MVMath.h"
#include "operators/AttributeRecord.h"
#include "operators/MVOpWithAttributes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

// A class with the kinds of parameter that need a list, and a choice whose ports are named by it.

struct ListAttributes
{
    std::int16_t sequence[16];
    struct
    {
        std::int32_t count;
        std::int32_t points[16][2];
    } curve;
    std::uint32_t depth;
};
static_assert (sizeof (ListAttributes) == 168);

constexpr ParameterSpec listParameters[] { sequenceSpec ("Stages", "", offsetof (ListAttributes, sequence)),
                                           curveSpec ("Curve", "", offsetof (ListAttributes, curve)),
                                           floatSpec ("Depth", "", offsetof (ListAttributes, depth), { 0.0, 16.0 }, 4.0,
                                                      Storage::fixedUnsigned15) };

class ListOperator final : public MVOpWithAttributes<ListOperator, ListAttributes>
{
public:
    static const OperatorSpec spec;

    explicit ListOperator (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& chunk = {})
        : MVOpWithAttributes (renderAttributes, chunk)
    {
        setAttributes (nullptr);
    }

    const ListAttributes& record() const { return values; }
    void putCurve (int count) { values.curve.count = count; }
};

constinit const OperatorSpec ListOperator::spec {
    .typeId = 0xA7FFFF,
    .attributeSize = sizeof (ListAttributes),
    .parameters = listParameters,
    .sequenceRefusal = 21,
};

TEST (Parameters, sequenceTruncatesAndKeepsTheRest)
{
    MVRenderEngineAttributes engine;
    ListOperator op (&engine);
    const double stages[] { 0.5, -0.5, 2.0, -2.0 };
    EXPECT_EQ (op.setSequenceParameter (0, 4, stages), 1);
    EXPECT_EQ (op.record().sequence[0], 16383); // 16383.5 truncated
    EXPECT_EQ (op.record().sequence[1], -16383);
    EXPECT_EQ (op.record().sequence[2], 32767);
    EXPECT_EQ (op.record().sequence[3], -32768);

    const double* values = nullptr;
    ASSERT_EQ (op.sequenceParameter (0, values), 16);
    EXPECT_DOUBLE_EQ (values[0], 16383 / 32767.0);
    EXPECT_EQ (values[4], 0.0);
    EXPECT_EQ (op.setSequenceParameter (0, 17, stages), 17);
    EXPECT_EQ (op.setSequenceParameter (1, 1, stages), 17);
}

TEST (Parameters, curveIsSortedAndHoldsTwoToSixteenPoints)
{
    MVRenderEngineAttributes engine;
    ListOperator op (&engine);
    const double points[] { 1.0, 0.25, 0.0, 1.0, 0.5, 0.5 };
    EXPECT_EQ (op.setCurveParameter (1, 3, points), 1);

    const double* values = nullptr;
    ASSERT_EQ (op.curveParameter (1, values), 3);
    EXPECT_DOUBLE_EQ (values[0], 0.0);
    EXPECT_DOUBLE_EQ (values[1], 1.0);
    EXPECT_DOUBLE_EQ (values[2], 16383 / 32767.0);
    EXPECT_DOUBLE_EQ (values[4], 1.0);

    for (const int count : { 1, 17, -1 })
        EXPECT_EQ (op.setCurveParameter (1, count, points), 17);

    struct
    {
        int stored;
        int folded;
    } const cases[] { { 17, 3 }, { 1, 15 }, { 16, 16 }, { 0, 14 } }; // limits 2 to 16, span 14
    for (const auto& c : cases)
    {
        op.putCurve (c.stored);
        op.setAttributes (nullptr);
        EXPECT_EQ (op.record().curve.count, c.folded) << c.stored;
    }
}

TEST (Parameters, everyStoredWordSurvivesReadingAndWriting)
{
    std::uint32_t seed = 1;
    unsigned char record[168];
    for (int round = 0; round < 200; ++round)
    {
        for (unsigned char& byte : record)
            byte = static_cast<unsigned char> ((seed = seed * 1664525u + 1013904223u) >> 24);
        record[32] = static_cast<unsigned char> (round % 17);
        record[33] = record[34] = record[35] = 0;

        unsigned char copy[168];
        std::memcpy (copy, record, sizeof (copy));
        for (const ParameterSpec& parameter : listParameters)
        {
            const auto list = attributeRecord::readList (record, parameter);
            if (parameter.type == MVParameterType::Float)
                attributeRecord::writeNumber (copy, parameter, attributeRecord::readNumber (record, parameter));
            else
                attributeRecord::writeList (copy, parameter, list.count, list.values.data(),
                                            attributeRecord::ListRounding::nearest);
        }
        ASSERT_EQ (std::memcmp (copy, record, sizeof (copy)), 0);
    }

    // The signed and unsigned 31-bit words of the output operator, at their ends and in between.
    const OperatorSpec& output = specOf ("MVOpOutput");
    for (const int index : { 2, 3, 4 })
        for (const std::uint32_t word :
             { 0u, 1u, 0x59999980u, 0x79999980u, 0x7FFFFFFEu, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu })
        {
            const ParameterSpec& parameter = *output.parameter (index);
            auto bytes = output.newRecord();
            std::memcpy (bytes.data() + parameter.offset, &word, 4);
            const auto before = bytes;
            attributeRecord::writeNumber (bytes.data(), parameter,
                                          attributeRecord::readNumber (bytes.data(), parameter));
            EXPECT_EQ (bytes, before) << index << " " << word;
        }
}

TEST (Parameters, fixedPointFollowsItsFullScale)
{
    MVRenderEngineAttributes engine;
    ListOperator op (&engine);
    EXPECT_EQ (op.record().depth, 8192u); // a quarter of 32767, to nearest
    EXPECT_EQ (op.setFloatParameter (2, 8.0), 1);
    EXPECT_EQ (op.record().depth, 16384u);
    EXPECT_NEAR (op.floatParameter (2), 8.0, 16.0 / 32767);
}

TEST (Parameters, classWithoutSequenceMayRefuseInItsOwnWay)
{
    const double value = 0.0;
    OperatorRig rig (specOf ("MVOpNoise"));
    EXPECT_EQ (rig.op().setSequenceParameter (0, 1, &value), 17);
    EXPECT_EQ (rig.op().setCurveParameter (0, 2, &value), 17);
}

TEST (Parameters, storedChoicesAreFoldedNotClamped)
{
    constexpr int lowest = std::numeric_limits<int>::min();
    const struct
    {
        const char* className;
        int parameter;
        int stored;
        int position;
    } cases[] {
        // Four choices: below 1 gives 4 - ((1 - v) mod 3), above 4 gives ((v - 4) mod 3) + 1.
        { "MVOpOscillator", 0, 0, 2 },
        { "MVOpOscillator", 0, -1, 1 },
        { "MVOpOscillator", 0, -2, 3 },
        { "MVOpOscillator", 0, 5, 1 },
        { "MVOpOscillator", 0, 7, 0 },
        { "MVOpOscillator", 0, lowest, 0 },
        { "MVOpPulseWidthModulator", 0, 12, 1 },
        { "MVOpPulseWidthModulator", 0, 0, 9 },
        // Two choices: anything above is the first, anything below the second.
        { "MVOpNoise", 0, 3, 0 },
        { "MVOpNoise", 0, 1000, 0 },
        { "MVOpNoise", 0, 0, 1 },
        { "MVOpNoise", 0, -7, 1 },
        { "MVOpNoise", 0, lowest, 0 },
    };

    for (const auto& c : cases)
    {
        const OperatorSpec& spec = specOf (c.className);
        auto record = spec.newRecord();
        std::memcpy (record.data() + spec.parameter (c.parameter)->offset, &c.stored, sizeof (c.stored));
        OperatorRig rig (spec);
        rig.op().setAttributes (record.data());
        EXPECT_EQ (rig.op().choiceParameter (c.parameter), c.position) << c.className << " " << c.stored;
    }
}

TEST (Parameters, storedNumbersAreFoldedNotClamped)
{
    OperatorRig oscillator (specOf ("MVOpOscillator"));
    struct
    {
        double phase;
        std::int32_t type[2];
    } record { 2.5, { 1, 0 } };
    oscillator.op().setAttributes (&record);
    EXPECT_DOUBLE_EQ (oscillator.op().floatParameter (1), 0.5); // folded as a fraction of the cycle

    // Shown limits are wider than the folding ones: a setter takes the value and the operator folds it.
    EXPECT_EQ (oscillator.op().setFloatParameter (1, 1.25), 1);
    EXPECT_DOUBLE_EQ (oscillator.op().floatParameter (1), 0.25);

    OperatorRig constant (specOf ("MVOpConstantPcm"));
    const struct
    {
        double stored;
        double folded;
    } values[] { { 40000.0, 7232.0 },
                 { -1.0, 32767.0 },
                 { std::nan (""), 0.0 },
                 { std::numeric_limits<double>::infinity(), 32768.0 } };
    for (const auto& value : values)
    {
        constant.op().setAttributes (&value.stored);
        EXPECT_DOUBLE_EQ (constant.op().floatParameter (0), value.folded) << value.stored;
    }

    OperatorRig key (specOf ("MVOpMidiKeyIn"));
    auto bytes = specOf ("MVOpMidiKeyIn").newRecord();
    const std::int32_t transposition = 30; // 6 above 24, counted from -24
    std::memcpy (bytes.data() + 16, &transposition, sizeof (transposition));
    key.op().setAttributes (bytes.data());
    EXPECT_EQ (key.op().intParameter (0), -18);
}

// The stored form.

TEST (StoredOperators, packWritesTheDocumentedChunksInOrder)
{
    OperatorRig rig (specOf ("MVOpSum"));
    rig.op().setInputScale (1, 0.5);
    rig.op().setInputControl (1, 7);
    const auto list = rig.op().pack();
    EXPECT_EQ (list->getChunkId(), fourCC ("op  "));

    const char* const tags[] { "clas", "attr", "guid", "ver ", "inpt" };
    const int sizes[] { 4, 4, 8, 16, 0 };
    ASSERT_EQ (list->childCount(), 5);
    for (int i = 0; i < 5; ++i)
    {
        char tag[5];
        std::memcpy (tag, tags[i], 5);
        EXPECT_EQ (list->childAt (i)->getChunkId(), fourCC (tag));
        EXPECT_EQ (list->childAt (i)->getPayloadSize(), sizes[i]);
    }

    const auto inputs = list->findChild (fourCC ("inpt"));
    ASSERT_EQ (inputs->childCount(), 8);
    EXPECT_EQ (inputs->childAt (2)->getChunkId(), fourCC ("insc"));
    EXPECT_EQ (inputs->childAt (3)->getChunkId(), fourCC ("cmap"));
    EXPECT_EQ (childNumber<double> (*inputs, fourCC ("insc"), 1), 0.5);
    EXPECT_EQ (childNumber<std::int32_t> (*inputs, fourCC ("cmap"), 1), 7);
    EXPECT_EQ (childNumber<std::int32_t> (*inputs, fourCC ("cmap"), 0), -1);
}

TEST (StoredOperators, missingOrShortRecordGivesADefaultOperator)
{
    const double value = 5.0;
    for (const bool isShort : { false, true })
    {
        auto stored = storedOperator (0xA70002, isShort ? &value : nullptr, 7);
        addChunk (*stored, fourCC ("guid"), std::uint64_t { 42 });
        OperatorRig rig (specOf ("MVOpConstantPcm"));
        const std::unique_ptr<MVOperator> op (rig.attributes().createOperator (stored));
        ASSERT_NE (op, nullptr);
        EXPECT_EQ (op->floatParameter (0), 0.0);
        EXPECT_NE (op->getId(), 42u);
    }
}

TEST (StoredOperators, unknownClassesGiveNothing)
{
    OperatorRig rig (specOf ("MVOpSum"));
    EXPECT_EQ (rig.attributes().createOperator (storedOperator (0xA7000A, nullptr, 0)), nullptr);
    EXPECT_EQ (rig.attributes().createOperator ({}), nullptr);
    EXPECT_EQ (rig.attributes().createOperator (makeSmart<MVRiffPacker> (fourCC ("op  "))), nullptr);

    // Only the low 16 bits count.
    const std::unique_ptr<MVOperator> op (rig.attributes().createOperator (storedOperator (0x12340009, nullptr, 0)));
    ASSERT_NE (op, nullptr);
    EXPECT_STREQ (op->className(), "MVOpSum");
}

TEST (StoredOperators, countsOfPortsAreBounded)
{
    const struct
    {
        int stored;
        int ports;
    } cases[] { { 16, 16 }, { 17, 16 }, { 2000000000, 16 }, { -1, 0 }, { 0, 0 }, { 2, 2 } };

    for (const auto& c : cases)
    {
        auto stored = storedOperator (0xA70009, &c.stored, sizeof (c.stored));
        auto inputs = makeSmart<MVRiffPacker> (fourCC ("inpt"));
        for (int i = 0; i < 40; ++i)
            addChunk (*inputs, fourCC ("insc"), 0.25);
        stored->addChild (inputs);

        OperatorRig rig (specOf ("MVOpSum"), stored);
        EXPECT_EQ (rig.op().portCount (portsIn), c.ports);
        EXPECT_EQ (attributeRecord::readField (rig.op().attributeData(), rig.op().getSpec().fields[0]), c.ports);
        for (int i = 0; i < c.ports; ++i)
            EXPECT_EQ (rig.op().getInputScale (i), 0.25);
        EXPECT_EQ (rig.op().getInputScale (c.ports), 1.0);
        rig.activate();
        rig.process();
        EXPECT_TRUE (rig.allFinite());
    }
}

} // namespace
