// SPDX-License-Identifier: GPL-3.0-or-later
// Host MIDI and host audio on their way through the plug-in.
#include "plugin/PluginRig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace morvanelab::test
{

namespace
{

constexpr int setBypass = 44;

std::unique_ptr<host::VstInstance> openPatch (PluginRig& rig, int slot)
{
    rig.open()->start (44100.0, 512);
    return rig.openWithPatch (slot);
}

constexpr double inputAmplitude = 0.25;
constexpr double inputStep = 0.0628; ///< radians a sample, about 440 Hz

/** What went in and what came out on the left. */
struct Passage
{
    std::vector<float> in;
    std::vector<float> out;
};

/** Runs blocks of a sine as input, from sample first on. */
Passage passSine (host::VstInstance& instance, int first, int blocks)
{
    Passage passage;
    for (int block = 0; block < blocks; ++block)
    {
        std::vector<float> in (512);
        for (std::size_t i = 0; i < in.size(); ++i)
            in[i] = static_cast<float> (inputAmplitude
                                        * std::sin (inputStep * (first + 512 * block + static_cast<int> (i))));
        std::vector<float> left (in.size());
        std::vector<float> right (in.size());
        const float* inputs[2] { in.data(), in.data() };
        float* outputs[2] { left.data(), right.data() };
        instance.process (inputs, outputs, 512);
        passage.in.insert (passage.in.end(), in.begin(), in.end());
        passage.out.insert (passage.out.end(), left.begin(), left.end());
    }
    return passage;
}

} // namespace

TEST (PluginMidi, hostNotesPlayOnlyIfTheSettingSaysSo)
{
    for (const bool on : { false, true })
    {
        PluginRig rig ({ .playHostNotes = on });
        const auto instance = openPatch (rig, slotSine);
        const auto take = render (*instance, 8192, { 512 }, { noteOn (60) });
        EXPECT_EQ (take.peak() > 0.01, on) << "setting " << on;
    }
}

TEST (PluginMidi, releasedNotesEnd)
{
    PluginRig rig;
    const auto instance = openPatch (rig, slotSine);
    render (*instance, 8192, { 512 }, { noteOn (60), noteOn (64) });
    render (*instance, 44100, { 512 }, { { 0, { 0x80, 60, 0 } }, noteOn (64, 0) });
    EXPECT_LT (render (*instance, 8192).peak(), 1e-4);
}

TEST (PluginMidi, bytesBeyond256AreLost)
{
    // 256 bytes are 85 messages and one byte: a note is heard as the 85th and not as the 86th.
    for (const std::size_t place : { 84U, 85U })
    {
        PluginRig rig;
        const auto instance = openPatch (rig, slotSine);
        std::vector<host::MidiBytes> messages (place, { 0, { 0xB0, 1, 64 } });
        messages.push_back (noteOn (60));
        messages.insert (messages.end(), 200, { 0, { 0xB0, 1, 64 } });
        EXPECT_EQ (render (*instance, 8192, { 512 }, messages).peak() > 0.01, place == 84U) << place;
    }
}

TEST (PluginAudio, inputReachesThePatchWithoutAGap)
{
    PluginRig rig ({ .playMode = 1 });
    const auto instance = openPatch (rig, slotInput);
    passSine (*instance, 0, 20); // until the new patch has faded in
    const auto out = passSine (*instance, 20 * 512, 40).out;
    const double amplitude = static_cast<double> (*std::max_element (out.begin(), out.end()));
    EXPECT_GT (amplitude, 0.05);
    // A sine bends by no more than amplitude * step^2; a lost or doubled sample would bend it by amplitude * step.
    const double bend = amplitude * inputStep * inputStep;
    for (std::size_t i = 2; i < out.size(); ++i)
        ASSERT_LT (std::abs (static_cast<double> (out[i] - 2.0F * out[i - 1] + out[i - 2])), 1.5 * bend) << i;
}

TEST (PluginAudio, bypassedPluginPassesItsInputOn)
{
    PluginRig rig;
    const auto instance = openPatch (rig, slotSine);
    render (*instance, 2048, { 512 }, { noteOn (60) });
    ASSERT_EQ (instance->dispatch (setBypass, 0, 1), 1);
    const auto passage = passSine (*instance, 0, 4);
    EXPECT_EQ (passage.out, passage.in);
    instance->dispatch (setBypass, 0, 0);
    EXPECT_GT (render (*instance, 2048).peak(), 0.01) << "the note goes on afterwards";
}

} // namespace morvanelab::test
