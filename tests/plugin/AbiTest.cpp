// SPDX-License-Identifier: GPL-3.0-or-later
// What a host finds in memory and at which number, asked with plain bytes: neither side's header is believed.
#include "plugin/PluginRig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include <unistd.h>

namespace morvanelab::test
{

namespace
{

template <typename Number>
Number at (const void* record, std::size_t offset)
{
    Number value {};
    std::memcpy (&value, static_cast<const char*> (record) + offset, sizeof value);
    return value;
}

} // namespace

TEST (PluginAbi, effectRecordLiesAsHostsReadIt)
{
    PluginRig rig;
    const auto instance = rig.open();
    const void* record = &instance->effect();

    EXPECT_EQ (at<std::int32_t> (record, 0), 0x56737450);
    for (const std::size_t function : { 8U, 24U, 32U, 120U, 128U })
        EXPECT_NE (at<void*> (record, function), nullptr) << "function at " << function;

    struct Field
    {
        std::size_t offset;
        std::int32_t value;
        const char* name;
    };
    constexpr Field fields[] { { 40, 1, "programs" },
                               { 44, 16, "parameters" },
                               { 48, 2, "inputs" },
                               { 52, 2, "outputs" },
                               { 56, 0x131, "flags: editor, replacing, chunks, synth" },
                               { 80, 0, "latency" },
                               { 112, 0x536F7264, "unique id" },
                               { 116, 0x10200, "version" } };
    for (const auto& field : fields)
        EXPECT_EQ (at<std::int32_t> (record, field.offset), field.value) << field.name;
    for (std::size_t offset = 136; offset < 192; offset += 8)
        EXPECT_EQ (at<std::int64_t> (record, offset), 0) << "spare bytes at " << offset;
}

TEST (PluginAbi, opcodesAnswerUnderTheirNumbers)
{
    PluginRig rig;
    const auto instance = rig.open();
    struct Question
    {
        int opcode;
        std::intptr_t answer;
        const char* text;
    };
    char canMidi[] = "receiveVstMidiEvent";
    char cannotSend[] = "sendVstMidiEvent";
    const Question questions[] { { 22, 0x4E764566, nullptr }, { 35, 2, nullptr },  { 44, 1, nullptr },
                                 { 49, 0x10200, nullptr },    { 51, 1, canMidi },  { 51, -1, cannotSend },
                                 { 52, 0, nullptr },          { 57, 0, nullptr },  { 58, 2400, nullptr },
                                 { 63, -1, nullptr },         { 78, 16, nullptr }, { 79, 0, nullptr },
                                 { 26, 1, nullptr },          { 3, 0, nullptr } };
    for (const auto& question : questions)
        EXPECT_EQ (instance->dispatch (question.opcode, 0, 0, const_cast<char*> (question.text)), question.answer)
            << "opcode " << question.opcode;
    EXPECT_EQ (instance->text (45), "Sordelin 1.2");
    EXPECT_EQ (instance->text (48), "Sordelin 1.2");
    EXPECT_EQ (instance->text (5), "sordelin");
    EXPECT_FALSE (instance->text (47).empty());
}

TEST (PluginAbi, pinRecordsAreStereoAndStayInTheirBounds)
{
    PluginRig rig;
    const auto instance = rig.open();
    constexpr std::size_t recordBytes = 128;
    for (const int opcode : { 33, 34 })
        for (const int pin : { 0, 1 })
        {
            std::array<unsigned char, 256> bytes {};
            bytes.fill (0xEE);
            ASSERT_EQ (instance->dispatch (opcode, pin, 0, bytes.data()), 1);
            EXPECT_EQ (at<std::int32_t> (bytes.data(), 64), pin == 0 ? 7 : 5) << "active, speaker used, left: stereo";
            EXPECT_EQ (at<std::int32_t> (bytes.data(), 68), 1) << "stereo arrangement";
            for (std::size_t i = recordBytes; i < bytes.size(); ++i)
                ASSERT_EQ (bytes[i], 0xEE) << "written behind the record";
        }
    std::array<unsigned char, 256> bytes {};
    EXPECT_EQ (instance->dispatch (33, 2, 0, bytes.data()), 0);
}

TEST (PluginAbi, arrangementIsTwoSpeakersAndNothingElse)
{
    PluginRig rig;
    const auto instance = rig.open();
    void* in = nullptr;
    void* out = nullptr;
    ASSERT_EQ (instance->dispatch (69, 0, reinterpret_cast<std::intptr_t> (&in), &out), 1);
    for (const void* record : { in, out })
    {
        EXPECT_EQ (at<std::int32_t> (record, 0), 1);
        EXPECT_EQ (at<std::int32_t> (record, 4), 2);
        EXPECT_EQ (at<std::int32_t> (record, 8 + 80), 1) << "left speaker";
        EXPECT_EQ (at<std::int32_t> (record, 8 + 112 + 80), 2) << "right speaker";
    }

    struct Layout
    {
        std::int32_t type;
        std::int32_t channels;
        bool taken;
    };
    for (const auto& layout : { Layout { 1, 2, true }, Layout { 0, 1, false }, Layout { 15, 6, false } })
    {
        std::array<std::int32_t, 226> record {}; // two numbers and eight speakers of 112 bytes
        record[0] = layout.type;
        record[1] = layout.channels;
        auto copy = record;
        EXPECT_EQ (instance->dispatch (42, 0, reinterpret_cast<std::intptr_t> (record.data()), copy.data()) == 1,
                   layout.taken)
            << "arrangement " << layout.type;
    }
}

TEST (PluginAbi, noteWrittenByHandSounds)
{
    PluginRig rig;
    rig.open()->start (44100.0, 512);
    const auto instance = rig.openWithPatch (slotSine);

    std::array<unsigned char, 32> event {};
    const auto put = [] (void* to, std::size_t offset, auto value)
    { std::memcpy (static_cast<char*> (to) + offset, &value, sizeof value); };
    put (event.data(), 0, std::int32_t { 1 });  // MIDI
    put (event.data(), 4, std::int32_t { 32 }); // size of the record
    event[24] = 0x90;
    event[25] = 69;
    event[26] = 127;
    std::array<unsigned char, 24> list {};
    put (list.data(), 0, std::int32_t { 1 });
    put (list.data(), 16, static_cast<void*> (event.data()));

    ASSERT_EQ (instance->dispatch (25, 0, 0, list.data()), 1);
    EXPECT_GT (render (*instance, 4096).peak(), 0.05);
}

TEST (PluginAbi, hostHearsOneUpdateAfterAPatchChange)
{
    PluginRig rig;
    rig.open()->start (44100.0, 512);
    const auto instance = rig.openWithPatch (slotSine);
    constexpr int wantMidi = 6;
    constexpr int ioChanged = 13;
    constexpr int updateDisplay = 42;
    EXPECT_GE (instance->calls (wantMidi), 1);

    // The call comes on the plug-in's own message thread, a moment after the patch is there.
    const auto updatesAfter = [&] (int slot)
    {
        const int before = instance->calls (updateDisplay);
        instance->setState (rig.stateFor (slot));
        render (*instance, 8192);
        for (int wait = 0; wait < 100 && instance->calls (updateDisplay) == before; ++wait)
            usleep (10000);
        usleep (100000);
        return instance->calls (updateDisplay) - before;
    };
    render (*instance, 8192);
    usleep (200000);
    EXPECT_EQ (updatesAfter (slotSquare), 1);
    EXPECT_EQ (updatesAfter (slotSine), 1);
    EXPECT_EQ (instance->calls (ioChanged), 0);
}

TEST (PluginFile, exportsItsEntryAndNothingElse)
{
    std::string symbols;
    FILE* listing = popen ("nm -D --defined-only \"" SORDELIN_PLUGIN_FILE "\"", "r");
    ASSERT_NE (listing, nullptr);
    for (int c = fgetc (listing); c != EOF; c = fgetc (listing))
        symbols.push_back (static_cast<char> (c));
    ASSERT_EQ (pclose (listing), 0);
    EXPECT_EQ (symbols.find ("VSTPluginMain"), symbols.size() - std::strlen ("VSTPluginMain\n")) << symbols;
    EXPECT_EQ (std::count (symbols.begin(), symbols.end(), '\n'), 1) << symbols;
}

} // namespace morvanelab::test
