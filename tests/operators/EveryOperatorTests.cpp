// SPDX-License-Identifier: GPL-3.0-or-later
// The contract of an operator, run over every row of the table.
#include "OperatorRig.h"
#include "foundation/MVRandom.h"
#include "operators/AttributeRecord.h"
#include "operators/MVOpWithAttributes.h"
#include "support/AllocationWatch.h"
#include "support/LockWatch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

class EveryOperator : public testing::TestWithParam<const OperatorSpec*>
{
protected:
    void SetUp() override { MVRandom::startAllFrom (1); }
    void TearDown() override { MVRandom::startAllFromClock(); }

    const OperatorSpec& spec() const { return *GetParam(); }

    /** A signal in every input, with audio in the first and something useful as control data in the others. */
    static void feed (OperatorRig& rig)
    {
        std::vector<double> wave (blockFrames);
        for (std::size_t i = 0; i < wave.size(); ++i)
            wave[i] = std::sin (static_cast<double> (i) * 0.05);

        for (int port = 0; port < rig.op().portCount (portsIn); ++port)
            rig.setInput (port, port % 4 == 2 ? std::vector<double> (blockFrames, 0.6) : wave);
        for (int channel = 0; channel < rig.numInputs(); ++channel)
            rig.setInput (channel, wave);
        for (int port = 0; port < rig.op().portCount (portsIn); ++port)
            rig.follow (port, port);
        rig.op().setPitchBendControl (rig.control (17));
        rig.activate();
    }

    static void feedAndPlay (OperatorRig& rig)
    {
        feed (rig);
        rig.op().noteEvent (60, 0.8);
    }

    static std::vector<std::byte> recordOf (MVOperator& op)
    {
        const auto* const bytes = static_cast<const std::byte*> (op.attributeData());
        return { bytes, bytes + op.attributeSize() };
    }

    static void expectSameSound (OperatorRig& a, OperatorRig& b)
    {
        const auto first = a.render (4);
        const auto second = b.render (4);
        ASSERT_EQ (first.size(), second.size());
        EXPECT_EQ (std::memcmp (first.data(), second.data(), first.size() * sizeof (double)), 0);
    }

    /** Calls act with every parameter in turn at its lowest, highest accepted and an invalid stored value. */
    template <typename Act>
    void forEachParameterLimit (MVOperator& op, Act act) const
    {
        for (int i = 0; i < op.parameterCount(); ++i)
        {
            const MVFRange range = op.parameterFloatRange (i);
            const MVIRange whole = op.parameterIntRange (i);

            switch (op.parameterType (i))
            {
                case MVParameterType::Float:
                    for (const double value : { range.low, std::nextafter (range.high(), range.low) })
                    {
                        EXPECT_EQ (op.setFloatParameter (i, value), 1);
                        act();
                    }
                    break;
                case MVParameterType::Int:
                    for (const int value : { whole.low, whole.high() - 1 })
                    {
                        EXPECT_EQ (op.setIntParameter (i, value), 1);
                        act();
                    }
                    break;
                case MVParameterType::Choice:
                    for (std::uint32_t choice = 0; choice < op.choiceCount (i); ++choice)
                    {
                        EXPECT_EQ (op.setChoiceParameter (i, static_cast<int> (choice)), 1);
                        act();
                    }
                    break;
                case MVParameterType::Bool:
                    for (const bool value : { true, false })
                    {
                        EXPECT_EQ (op.setBoolParameter (i, value), 1);
                        act();
                    }
                    break;
                case MVParameterType::Sequence:
                case MVParameterType::Curve:
                case MVParameterType::None:
                    break;
            }
        }
    }
};

std::vector<const OperatorSpec*> allSpecs()
{
    std::vector<const OperatorSpec*> specs;
    for (const OperatorRow& row : operatorTable())
        specs.push_back (row.spec);
    return specs;
}

INSTANTIATE_TEST_SUITE_P (Table, EveryOperator, testing::ValuesIn (allSpecs()),
                          [] (const auto& tested) { return std::string (tested.param->className); });

TEST_P (EveryOperator, writesEverySampleFiniteAtParameterLimits)
{
    OperatorRig rig (spec());
    feedAndPlay (rig);

    const auto play = [&rig]
    {
        for (const int frames : { blockFrames, 32, 1, 255 })
        {
            rig.process (frames);
            EXPECT_TRUE (rig.allFinite (frames)) << frames << " frames";
        }
    };

    play();
    forEachParameterLimit (rig.op(), play);
}

TEST_P (EveryOperator, survivesAnyControlSignal)
{
    const double infinity = std::numeric_limits<double>::infinity();
    OperatorRig rig (spec());
    feedAndPlay (rig);

    for (const double value : { infinity, -infinity, std::nan (""), 1e300, -1e300, -0.0 })
        for (int port = 0; port < rig.op().portCount (portsIn); ++port)
        {
            rig.setInput (port, value);
            rig.process();
        }

    for (int port = 0; port < rig.op().portCount (portsIn); ++port)
        rig.setInput (port, 0.25);
    rig.op().reset();
    rig.process();
    rig.process();
    EXPECT_TRUE (rig.allFinite());
}

TEST_P (EveryOperator, isFiniteOnSilenceWithNothingConnected)
{
    OperatorRig rig (spec());
    rig.activate();
    for (int block = 0; block < 4; ++block)
    {
        rig.process();
        EXPECT_TRUE (rig.allFinite());
    }
}

TEST_P (EveryOperator, soundsTheSameAfterResetAsWhenNew)
{
    OperatorRig fresh (spec());
    OperatorRig used (spec());
    feed (fresh);
    feed (used);
    used.op().noteEvent (60, 0.8);
    used.render (7);
    used.op().release();
    used.render (2);
    used.op().reset();

    for (OperatorRig* const rig : { &fresh, &used })
        rig->op().noteEvent (64, 0.5);
    expectSameSound (fresh, used);
}

TEST_P (EveryOperator, touchesNoHeapAndNoLockInProcess)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();
    MV_SKIP_WITHOUT_LOCK_WATCH();
    OperatorRig rig (spec());
    feedAndPlay (rig);

    const AllocationWatch heap;
    const LockWatch locks;
    for (int block = 0; block < 4; ++block)
    {
        rig.process();
        rig.op().noteEvent (50 + block, 0.1 * block);
    }
    rig.op().release();
    rig.op().reset();
    EXPECT_EQ (heap.count(), 0);
    EXPECT_EQ (locks.count(), 0);
}

TEST_P (EveryOperator, cloneSoundsTheSameAndIsIndependent)
{
    OperatorRig rig (spec());
    forEachParameterLimit (rig.op(), [] {});
    feedAndPlay (rig);
    rig.render (3);

    OperatorRig copy (rig, rig.op().clone());
    EXPECT_STREQ (copy.op().className(), rig.op().className());
    EXPECT_NE (copy.op().getId(), rig.op().getId());
    EXPECT_EQ (copy.op().getInputControl (0), rig.op().getInputControl (0));
    expectSameSound (rig, copy);
}

TEST_P (EveryOperator, storedFormReadsBackAsTheSameBytes)
{
    OperatorRig rig (spec());

    forEachParameterLimit (rig.op(),
                           [&]
                           {
                               if (rig.op().portCount (portsIn) > 0)
                               {
                                   rig.op().setInputScale (0, 0.75);
                                   rig.op().setInputControl (0, 3);
                               }

                               const auto stored = rig.op().pack()->packToBlock (true);
                               auto parsed = makeSmart<MVRiffPacker> (stored->dataWithSize (stored->totalSize()),
                                                                      stored->totalSize(), true);
                               ASSERT_TRUE (parsed->isWellFormed());
                               const std::unique_ptr<MVOperator> read (rig.attributes().createOperator (parsed));
                               ASSERT_NE (read, nullptr);
                               EXPECT_EQ (read->getId(), rig.op().getId());

                               const auto again = read->pack()->packToBlock (true);
                               ASSERT_EQ (again->totalSize(), stored->totalSize());
                               EXPECT_EQ (std::memcmp (again->dataWithSize (again->totalSize()),
                                                       stored->dataWithSize (stored->totalSize()),
                                                       static_cast<std::size_t> (stored->totalSize())),
                                          0);
                           });
}

TEST_P (EveryOperator, newRecordIsInItsLimitsAndHasCleanPadding)
{
    OperatorRig rig (spec());
    const auto record = spec().newRecord();
    ASSERT_EQ (rig.op().attributeSize(), static_cast<int> (spec().attributeSize));
    // Applying it folded nothing, so what a new operator holds is what the table says, padding included.
    EXPECT_EQ (recordOf (rig.op()), record);

    std::vector<std::byte> untouched (record.size(), std::byte { 0xA5 });
    for (const ParameterSpec& parameter : spec().parameters)
        std::fill_n (untouched.begin() + static_cast<std::ptrdiff_t> (parameter.offset),
                     storageSize (parameter.storage), std::byte { 0 });
    for (const FieldSpec& field : spec().fields)
        std::fill_n (untouched.begin() + static_cast<std::ptrdiff_t> (field.offset), storageSize (field.storage),
                     std::byte { 0 });
    for (std::size_t i = 0; i < record.size(); ++i)
    {
        if (untouched[i] != std::byte { 0 })
        {
            EXPECT_EQ (record[i], std::byte { 0 }) << "padding byte " << i;
        }
    }
}

TEST_P (EveryOperator, foldsHostileRecords)
{
    for (const int fill : { 0x00, 0x7F, 0x80, 0xFF })
    {
        const std::vector<unsigned char> record (spec().attributeSize, static_cast<unsigned char> (fill));
        OperatorRig rig (spec(), storedOperator (spec().typeId, record.data(), static_cast<int> (record.size())));
        feedAndPlay (rig);
        rig.process();
        EXPECT_LE (rig.op().portCount (portsIn), maxOperatorPorts);
        EXPECT_LE (rig.op().portCount (portsOut), maxOperatorPorts);

        for (int i = 0; i < rig.op().parameterCount(); ++i)
            if (rig.op().parameterType (i) == MVParameterType::Float && spec().parameter (i)->folded)
            {
                EXPECT_GE (rig.op().floatParameter (i), rig.op().parameterFloatRange (i).low);
                EXPECT_LE (rig.op().floatParameter (i), rig.op().parameterFloatRange (i).high());
            }

        // Folding once more changes nothing.
        const auto folded = recordOf (rig.op());
        rig.op().setAttributes (nullptr);
        EXPECT_EQ (recordOf (rig.op()), folded);
    }
}

TEST_P (EveryOperator, settersRefuseTheHighEndAndOtherKinds)
{
    OperatorRig rig (spec());
    MVOperator& op = rig.op();

    for (int i = -1; i <= op.parameterCount(); ++i)
    {
        const MVParameterType type = op.parameterType (i);
        const double before = op.floatParameter (i);

        if (type == MVParameterType::Float)
        {
            for (const double value : { op.parameterFloatRange (i).high(), std::nan (""),
                                        std::nextafter (op.parameterFloatRange (i).low, -1e9) })
                EXPECT_EQ (op.setFloatParameter (i, value), spec().floatRejection);
            EXPECT_EQ (op.floatParameter (i), before);
        }
        else
        {
            EXPECT_EQ (op.setFloatParameter (i, 0.0), 17);
        }

        if (type == MVParameterType::Int)
        {
            EXPECT_EQ (op.setIntParameter (i, op.parameterIntRange (i).high()), 17);
            EXPECT_EQ (op.setIntParameter (i, op.parameterIntRange (i).low - 1), 17);
        }
        else
        {
            EXPECT_EQ (op.setIntParameter (i, 0), 17);
        }

        if (type != MVParameterType::Bool)
        {
            EXPECT_EQ (op.setBoolParameter (i, true), 17);
        }
        EXPECT_EQ (op.setChoiceParameter (i, -1), 17);
        EXPECT_EQ (
            op.setChoiceParameter (i, type == MVParameterType::Choice ? static_cast<int> (op.choiceCount (i)) : 0), 17);
    }
}

TEST_P (EveryOperator, monitorsSeeTheFinalOutputAndCanBeSwitchedOff)
{
    struct Seen
    {
        int blocks = 0;
        double last = 0.0;
        std::uint64_t id = 0;
    } seen;

    OperatorRig rig (spec());
    feedAndPlay (rig);
    ASSERT_TRUE (rig.op().getMonitors().addBlock (
        portsOut, 0,
        [] (void* user, std::uint64_t id, int, const void*, const double* samples, int frames)
        {
            auto& target = *static_cast<Seen*> (user);
            ++target.blocks;
            target.last = samples[frames - 1];
            target.id = id;
        },
        &seen));

    rig.process();
    EXPECT_EQ (seen.blocks, 1);
    EXPECT_EQ (seen.last, rig.output (0)[blockFrames - 1]);
    EXPECT_EQ (seen.id, rig.op().getId());

    rig.op().setMonitorsEnabled (false);
    rig.process();
    EXPECT_EQ (seen.blocks, 1);
}

} // namespace
