// SPDX-License-Identifier: GPL-3.0-or-later
// Host parameters and the stored state, through the plug-in's own entry.
#include "plugin/PluginRig.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace morvanelab::test
{

namespace
{

constexpr int paramDisplay = 7;
constexpr int paramName = 8;
constexpr std::size_t bankField = 32;
constexpr std::size_t patchField = 48;
constexpr std::size_t valueField = 56;
constexpr std::size_t controllerField = 184;
constexpr std::size_t channelField = 248;

class PluginParameters : public testing::Test
{
protected:
    PluginParameters()
    {
        rig.open()->start (44100.0, 512);
        instance = rig.openWithPatch (slotSine);
        render (*instance, 4096);
    }

    void set (int index, float value) { instance->effect().setParameter (&instance->effect(), index, value); }
    float get (int index) { return instance->effect().getParameter (&instance->effect(), index); }

    PluginRig rig;
    std::unique_ptr<host::VstInstance> instance;
};

} // namespace

TEST_F (PluginParameters, areTheEnabledOnesPackedFromZero)
{
    EXPECT_EQ (instance->text (paramName, 0), "Level");
    EXPECT_EQ (instance->text (paramDisplay, 0), "How loud the sine is");
    EXPECT_EQ (instance->text (paramName, 1), "-----") << "the third patch parameter, which has no name";
    EXPECT_EQ (instance->text (paramDisplay, 1), "-----");
    for (int index = 2; index < 16; ++index)
        EXPECT_EQ (instance->text (paramName, index) + instance->text (paramDisplay, index), "") << index;

    set (1, 0.25F);
    render (*instance, 1024);
    const auto state = instance->getState();
    EXPECT_NEAR (stateField<double> (state, valueField + 2 * 8), 0.25, 1e-6) << "host parameter 1 is patch parameter 2";
    EXPECT_NEAR (stateField<double> (state, valueField + 1 * 8), 0.5, 1e-6) << "patch parameter 1 is not exposed";
}

TEST_F (PluginParameters, hostReadsWholeNumbersOnly)
{
    struct Case
    {
        float written;
        float read;
    };
    for (const auto& value : { Case { 0.7F, 0.0F }, Case { 1.0F, 1.0F }, Case { 2.5F, 2.0F }, Case { 0.0F, 0.0F } })
    {
        set (0, value.written);
        EXPECT_EQ (get (0), value.read) << value.written;
    }
    set (7, 1.0F);
    EXPECT_EQ (get (7), 0.0F) << "an unused parameter holds nothing";
}

TEST_F (PluginParameters, goBackToZeroAfterAFraction)
{
    const auto level = [&] (float value)
    {
        set (0, value);
        render (*instance, 1024);
        return stateField<double> (instance->getState(), valueField);
    };
    EXPECT_NEAR (level (0.7F), 0.7, 1e-6);
    EXPECT_EQ (level (0.0F), 0.0) << "though the host has read 0 all the time";
}

TEST_F (PluginParameters, changeTheSound)
{
    set (1, 1.0F);
    render (*instance, 2048, { 512 }, { noteOn (69) });
    const auto peakAt = [&] (float value)
    {
        set (0, value);
        render (*instance, 2048);
        return render (*instance, 4096).peak();
    };
    const double full = peakAt (1.0F);
    EXPECT_GT (full, 0.1);
    EXPECT_NEAR (peakAt (0.5F) / full, 0.5, 0.05);
    EXPECT_LT (peakAt (0.0F), 1e-6);
}

TEST_F (PluginParameters, stateComesBackAsItWas)
{
    set (0, 0.125F);
    render (*instance, 1024);
    auto state = instance->getState();
    ASSERT_EQ (state.size(), 320U);
    EXPECT_EQ (stateField<std::int32_t> (state, patchField), slotSine);
    EXPECT_EQ (stateField<std::int32_t> (state, controllerField), -1) << "nothing is mapped";

    // Controller 20 of channel 3 drives the third patch parameter.
    const auto putNumber = [&] (std::size_t offset, std::int32_t value)
    {
        std::copy_n (reinterpret_cast<const std::uint8_t*> (&value), sizeof value,
                     state.begin() + static_cast<long> (offset));
    };
    putNumber (controllerField + 2 * 4, 20);
    putNumber (channelField + 2 * 4, 3);

    const auto other = rig.open();
    other->start (48000.0, 256);
    other->setState (state);
    render (*other, 2048);
    EXPECT_EQ (other->getState(), state);
    EXPECT_EQ (other->text (paramName, 0), "Level");

    render (*other, 1024, { 512 }, { { 0, { 0xB3, 20, 127 } } });
    EXPECT_EQ (stateField<double> (other->getState(), valueField + 2 * 8), 1.0) << "the mapping works, too";
}

TEST_F (PluginParameters, unknownBankLeavesThePatchAlone)
{
    auto state = instance->getState();
    state[bankField] ^= 0xFF;
    state[patchField] = slotSquare;
    instance->setState (state);
    render (*instance, 2048);
    EXPECT_EQ (instance->text (paramName, 0), "Level");
    EXPECT_EQ (instance->getState()[bankField], state[bankField]) << "the bank may come back";
}

TEST_F (PluginParameters, emptySlotLeavesThePatchAlone)
{
    instance->setState (rig.stateFor (slotEmpty));
    render (*instance, 2048);
    EXPECT_EQ (instance->text (paramName, 0), "Level");
}

TEST_F (PluginParameters, shortAndLongStatesAreTaken)
{
    auto state = instance->getState();
    state.resize (400, 0x55);
    instance->setState (state);
    render (*instance, 1024);
    EXPECT_EQ (instance->getState().size(), 320U);

    state.resize (60); // ends inside the first parameter value
    instance->setState (state);
    render (*instance, 1024);
    const auto back = instance->getState();
    ASSERT_EQ (back.size(), 320U);
    EXPECT_EQ (stateField<double> (back, valueField + 8), 0.0) << "what is missing counts as zeros";
}

} // namespace morvanelab::test
