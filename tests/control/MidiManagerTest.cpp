// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/MVMidiManager.h"
#include "tests/control/ControlRig.h"

#include "foundation/MVDataBlock.h"
#include "foundation/MVException.h"
#include "foundation/MVResult.h"
#include "support/AllocationWatch.h"
#include "support/LockWatch.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>
#include <string>

namespace morvanelab::test
{
namespace
{

struct MidiRig : ControlRig
{
    MidiRig() : ControlRig (8), midi (&controls, &events) {}

    bool process (const std::vector<std::uint8_t>& bytes)
    {
        const bool found = midi.processMidiDataBuffer (bytes.data(), static_cast<int> (bytes.size()), false);
        controls.processAsyncValues();
        return found;
    }

    MVMidiManager midi;
};

/** Status, channel, data1, data2. */
using Token = std::array<int, 4>;

struct TokenCase
{
    std::string name;
    std::vector<std::uint8_t> bytes;
    bool found;
    std::vector<Token> tokens;
    /** On channel 0. */
    int activeNotes;
};

const TokenCase tokenCases[] {
    { "nothing", {}, false, {}, 0 },
    { "note on and off", { 0x90, 60, 100, 0x80, 60, 0 }, true, { { 144, 0, 60, 100 }, { 128, 0, 60, 0 } }, 0 },
    { "velocity 0 counts as off", { 0x90, 60, 0 }, true, { { 144, 0, 60, 0 } }, -1 },
    { "key 127 counts double", { 0x90, 127, 1 }, true, { { 144, 0, 127, 1 } }, 2 },
    { "controllers of all channels",
      { 0xB0, 1, 2, 0xBF, 127, 127 },
      true,
      { { 176, 0, 1, 2 }, { 176, 15, 127, 127 } },
      0 },
    { "the later of two values replaces the first in its place",
      { 0xB0, 1, 2, 0xB0, 3, 4, 0xB0, 1, 99 },
      true,
      { { 176, 0, 1, 99 }, { 176, 0, 3, 4 } },
      0 },
    { "merged notes are counted all the same", { 0x90, 60, 1, 0x90, 60, 2 }, true, { { 144, 0, 60, 2 } }, 2 },
    { "running status is passed over", { 0x90, 60, 100, 61, 100 }, true, { { 144, 0, 60, 100 } }, 1 },
    { "data and system bytes alone", { 10, 127, 0xF0, 0xF8, 0xFF, 0xFE }, false, {}, 0 },
    { "other channel messages are seen, not kept",
      { 0xA0, 1, 2, 0xC0, 5, 0xD0, 6, 0xE0, 7, 8, 0xB0, 1, 2 },
      true,
      { { 176, 0, 1, 2 } },
      0 },
    { "program change alone", { 0xC0, 5 }, true, {}, 0 },
    { "cut note", { 0xB0, 1, 2, 0x90, 60 }, true, { { 176, 0, 1, 2 } }, 0 },
    { "cut status", { 0x90 }, false, {}, 0 },
    { "cut program change", { 0xC0 }, false, {}, 0 },
    { "a negative key is consumed", { 0x90, 0xFF, 100, 0xB0, 1, 2 }, true, { { 176, 0, 1, 2 } }, 0 },
    { "the most negative key", { 0x80, 0x80, 0 }, false, {}, 0 },
    { "a negative value is consumed", { 0xB0, 1, 0x90, 60, 100 }, false, {}, 0 },
};

TEST (MidiManager, cutsBytesIntoTokens)
{
    for (const TokenCase& test : tokenCases)
    {
        SCOPED_TRACE (test.name);
        MidiRig rig;
        MVList<MVMidiEvent> queue;
        std::vector<Token> tokens;
        // A heap block of the exact size, so that a read beyond it can be seen.
        const std::vector<std::uint8_t> bytes (test.bytes);

        EXPECT_EQ (rig.midi.tokenizeMidiData (bytes.data(), static_cast<int> (bytes.size()), false, queue), test.found);

        for (const auto* node = queue.firstNode(); node != nullptr; node = node->next)
        {
            tokens.push_back ({ node->value.status, node->value.channel, node->value.data1, node->value.data2 });
            EXPECT_EQ (node->value.byteCount, 3);
        }
        EXPECT_EQ (tokens, test.tokens);
        EXPECT_EQ (rig.midi.getActiveNotes (0), test.activeNotes);
    }
}

TEST (MidiManager, tellsTheRangeOfSoundingNotes)
{
    const struct
    {
        std::vector<int> keys;
        int low;
        int span;
    } cases[] {
        { {}, -1, 0 },          { { 60 }, 61, 0 }, // notes count from 1
        { { 0 }, 1, 0 },        { { 60, 64, 72 }, 61, 12 }, { { 72, 60 }, 61, 12 },
        { { 126, 0 }, 1, 126 }, { { 127 }, -1, 0 }, // counted as sounding, twice, but under no note
        { { 127, 5 }, 6, 0 },
    };

    for (const auto& test : cases)
    {
        SCOPED_TRACE (testing::PrintToString (test.keys));
        MidiRig rig;
        for (const int key : test.keys)
            rig.process ({ 0x93, static_cast<std::uint8_t> (key), 64 });

        const MVIRange range = rig.midi.getActiveNoteRange (3);
        EXPECT_EQ (range.low, test.low);
        EXPECT_EQ (range.span, test.span);
        EXPECT_EQ (rig.midi.getActiveNoteRange (4).low, -1);

        rig.midi.reset();
        EXPECT_EQ (rig.midi.getActiveNotes (3), 0);
        EXPECT_EQ (rig.midi.getActiveNoteRange (3).low, -1);
    }
    EXPECT_EQ (MidiRig().midi.getActiveNoteRange (16).low, -1);
    EXPECT_EQ (MidiRig().midi.getActiveNoteRange (-1).low, -1);
}

TEST (MidiManager, writesMappedControllers)
{
    MidiRig rig;
    const double half = static_cast<double> (64.0f / 127.0f);
    rig.midi.setMidiControlToValueId (0, 7, 1);
    rig.midi.addMidiControlToValueId (0, 7, 2);
    rig.midi.addMidiControlToValueId (0, 7, 0);
    rig.midi.addMidiControlToValueId (0, 7, 3);
    rig.midi.enableMappedControlValueId (3, false);
    rig.midi.setMidiControlToValueId (0, 123, 4);
    rig.midi.setMidiKeyHandler (0, 7, 5);

    EXPECT_TRUE (rig.process ({ 0xB0, 7, 3, 0x90, 7, 127, 0xB0, 123, 127, 0xB1, 7, 127, 0xB0, 7, 64 }));

    EXPECT_EQ (rig.controls.getControlValue (1), stored (half));
    EXPECT_EQ (rig.controls.getControlValue (2), stored (half));
    for (const int untouched : { 3, 4, 5 })
        EXPECT_EQ (rig.controls.getControlValue (untouched), 0.5) << untouched;

    rig.midi.enableMappedControlValueId (3, true);
    rig.process ({ 0xB0, 7, 127 });
    EXPECT_EQ (rig.controls.getControlValue (3), 1.0);

    rig.midi.setMidiControlToValueId (0, 7, 2);
    rig.process ({ 0xB0, 7, 0 });
    EXPECT_EQ (rig.controls.getControlValue (1), 1.0) << "set drives out what was there";
    EXPECT_EQ (rig.controls.getControlValue (2), 0.0);
}

TEST (MidiManager, looksMappingsUpAndRemovesThem)
{
    MidiRig rig;
    int channel = -7;
    int controller = -7;
    EXPECT_FALSE (rig.midi.getMidiControlForValueId (2, channel, controller));
    EXPECT_EQ (channel, -7);

    rig.midi.addMidiControlToValueId (1, 200, 2);
    rig.midi.addMidiControlToValueId (9, 3, 2);
    rig.midi.addMidiControlToValueId (9, 2, 2);
    rig.midi.addMidiControlToValueId (9, 2, 5);
    rig.midi.addMidiControlToValueId (9, 2, 2);
    EXPECT_TRUE (rig.midi.getMidiControlForValueId (2, channel, controller));
    EXPECT_EQ (channel, 9) << "the last in scan order";
    EXPECT_EQ (controller, 3);

    rig.controls.releaseControl (5);
    MVEvent prune;
    prune.setType (midiEventPruneMappings);
    EXPECT_EQ (rig.midi.handleEvent (&prune), resultDone);
    EXPECT_FALSE (rig.midi.isControlMappedToValueId (5, 9, 2));
    EXPECT_TRUE (rig.midi.isControlMappedToValueId (2, 9, 2));

    rig.midi.unmapControlValueId (2);
    EXPECT_FALSE (rig.midi.getMidiControlForValueId (2, channel, controller));

    constexpr std::uint64_t handler = 0x123456789ABCULL;
    EXPECT_TRUE (rig.midi.setMidiKeyRangeHandler (4, { 10, 2 }, handler)); // both ends included
    EXPECT_TRUE (rig.midi.addMidiKeyHandler (4, 11, 77));
    for (const int key : { 9, 10, 11, 12, 13 })
        EXPECT_EQ (rig.midi.isKeyMappedToHandler (handler, 4, key), key >= 10 && key <= 12) << key;
    EXPECT_FALSE (rig.midi.addMidiKeyRangeHandler (4, { 126, INT_MAX }, 5)) << "stops behind the last key";
    EXPECT_TRUE (rig.midi.isKeyMappedToHandler (5, 4, 127));
    rig.midi.unmapKeyHandler (handler);
    EXPECT_FALSE (rig.midi.isKeyMappedToHandler (handler, 4, 11));
    EXPECT_TRUE (rig.midi.isKeyMappedToHandler (77, 4, 11));

    const std::uint16_t ids[] { 1, 2, 3 };
    EXPECT_TRUE (rig.midi.addMidiCCtoControlValueRange (0, { 254, 3 }, ids));
    EXPECT_TRUE (rig.midi.isControlMappedToValueId (2, 0, 255));
    EXPECT_TRUE (rig.midi.addMidiCCtoControlValueRange (0, { -1, 3 }, ids));
    EXPECT_TRUE (rig.midi.isControlMappedToValueId (2, 0, 0));
    EXPECT_TRUE (rig.midi.addMidiCCtoControlValueRange (0, { 9, INT_MIN }, ids));
    EXPECT_FALSE (rig.midi.isControlMappedToValueId (1, 0, 9));

    for (const int bad : { -1, 16, INT_MAX, INT_MIN })
    {
        EXPECT_FALSE (rig.midi.setMidiControlToValueId (bad, 0, 1));
        EXPECT_FALSE (rig.midi.addMidiKeyHandler (bad, 0, 1));
        EXPECT_FALSE (rig.midi.isControlMappedToValueId (1, bad, 0));
        EXPECT_FALSE (rig.midi.setMidiControlToValueId (0, bad == 16 ? 256 : bad, 1));
        EXPECT_FALSE (rig.midi.setMidiKeyHandler (0, bad == 16 ? 128 : bad, 1));
    }
}

/** The packed form as told by the format, built by hand. */
class Bytes
{
public:
    template <typename T>
    Bytes& add (T value)
    {
        const auto* const first = reinterpret_cast<const std::uint8_t*> (&value);
        bytes.insert (bytes.end(), first, first + sizeof (T));
        return *this;
    }
    Bytes& header (std::uint32_t id, std::uint32_t total, std::uint32_t payload, std::uint32_t children)
    {
        for (const char letter : { 'F', 'R', 'V', 'M', '\1', '\4', '\0', '\0' })
            add (letter);
        return add (id).add (total).add (payload).add (children);
    }
    Bytes& trailer() { return add (std::uint32_t { 0 }); }

    std::vector<std::uint8_t> bytes;
};

TEST (MidiMap, isStoredByteForByte)
{
    MidiRig rig;
    rig.midi.setMidiControlToValueId (15, 74, 3);
    rig.midi.addMidiControlToValueId (15, 74, 9);              // not in use: left out
    rig.midi.setMidiKeyHandler (2, 60, 0xAB00000000020004ULL); // low 16 bits: 4
    rig.midi.setMidiKeyHandler (2, 61, 0xAB00000000020009ULL); // 9 is not in use

    Bytes expected;
    expected.header (fourCC ("midm"), 28 + 44 + 80 + 80, 0, 3);
    expected.header (fourCC ("ver "), 44, 16, 0).add (1).add (4).add (0).add (1).trailer();
    expected.header (fourCC ("kmap"), 80, 0, 1).header (fourCC ("keyh"), 52, 24, 0);
    expected.add (2).add (60).add (0xAB00000000020004ULL).add (std::uint64_t { 1 }).trailer().trailer();
    expected.header (fourCC ("cmap"), 80, 0, 1).header (fourCC ("cnth"), 52, 24, 0);
    expected.add (15).add (74).add (std::uint64_t { 0 }).add (std::uint64_t { 3 }).trailer().trailer();
    expected.trailer();

    const auto saved = rig.midi.saveMidiMap();
    std::vector<std::uint8_t> packed (static_cast<std::size_t> (saved->packedSize()));
    ASSERT_TRUE (saved->pack (packed.data(), false));
    EXPECT_EQ (packed, expected.bytes);

    MidiRig other;
    other.midi.setMidiControlToValueId (0, 1, 1);
    auto packer = makeSmart<MVRiffPacker> (packed.data(), static_cast<int> (packed.size()), false);
    EXPECT_EQ (other.midi.loadMidiMap (packer), resultDone);
    EXPECT_TRUE (packer == nullptr);
    EXPECT_TRUE (other.midi.isControlMappedToValueId (3, 15, 74));
    EXPECT_TRUE (other.midi.isKeyMappedToHandler (0xAB00000000020004ULL, 2, 60));
    EXPECT_FALSE (other.midi.isControlMappedToValueId (1, 0, 1)) << "a load empties all mappings first";
}

TEST (MidiMap, enablesWhatItLoads)
{
    MidiRig rig;
    rig.midi.setMidiControlToValueId (0, 7, 1);
    rig.midi.enableMappedControlValueId (1, false);
    auto saved = rig.midi.saveMidiMap();
    rig.midi.loadMidiMap (saved);

    rig.process ({ 0xB0, 7, 127 });
    EXPECT_EQ (rig.controls.getControlValue (1), 1.0);
}

MVSmartPtr<MVRiffPacker> mapWith (std::uint32_t revision, const std::vector<std::array<int, 3>>& controllers)
{
    auto root = formWithVersion (fourCC ("midm"), revision);
    auto form = makeSmart<MVRiffPacker> (fourCC ("cmap"));
    for (const auto& [channel, controller, valueId] : controllers)
    {
        const std::array<std::int32_t, 6> payload { channel, controller, 0, 0, valueId, 0 };
        addChunk (*form, fourCC ("cnth"), payload);
    }
    root->addChild (form);
    return root;
}

TEST (MidiMap, refusesWhatItDoesNotKnow)
{
    MidiRig rig;
    rig.midi.setMidiControlToValueId (0, 7, 1);

    auto wrong = formWithVersion (fourCC ("cmgr"));
    MVSmartPtr<MVRiffPacker> missing;
    EXPECT_EQ (rig.midi.loadMidiMap (wrong), resultWrongForm);
    EXPECT_EQ (rig.midi.loadMidiMap (missing), resultWrongForm);
    EXPECT_TRUE (rig.midi.isControlMappedToValueId (1, 0, 7));

    auto newer = mapWith (1, { { 0, 8, 2 } });
    EXPECT_EQ (rig.midi.loadMidiMap (newer), resultDone);
    EXPECT_FALSE (rig.midi.isControlMappedToValueId (1, 0, 7)) << "emptied all the same";
    EXPECT_FALSE (rig.midi.isControlMappedToValueId (2, 0, 8));

    MVEvent event;
    event.setType (midiEventLoadMap);
    MVSmartPtr<MVObject> block (new MVDataBlock);
    event.setObjectA (block);
    try
    {
        rig.midi.handleEvent (&event);
        FAIL() << "a block is no map";
    }
    catch (const MVException& exception)
    {
        EXPECT_EQ (exception.getCode(), 9u);
        EXPECT_STREQ (exception.text(), "Error:  Bad midi preset.");
    }
    event.setTargetId (rig.midi.getId() + 1);
    EXPECT_EQ (rig.midi.handleEvent (&event), resultDone) << "not for us";
}

TEST (MidiMap, takesHostileNumbersWithoutHarm)
{
    MidiRig rig;
    std::vector<std::array<int, 3>> controllers { { INT_MIN, 0, 1 }, { 16, 0, 1 }, { 0, 256, 1 }, { 0, -1, 1 } };
    for (int index = 0; index < MVMidiManager::maxRecords + 500; ++index)
        controllers.push_back ({ 0, 5, 0x70000 + 1 }); // the id is the low half
    auto map = mapWith (0, controllers);
    auto form = map->findChild (fourCC ("cmap"));
    form->addChild (makeSmart<MVRiffPacker> (fourCC ("cnth"), "\0\0\0\0\6\0\0\0\0\0\0\0\0\0\0\0\1", 17)); // cut short

    EXPECT_EQ (rig.midi.loadMidiMap (map), resultDone);

    EXPECT_TRUE (rig.midi.isControlMappedToValueId (1, 0, 5));
    EXPECT_FALSE (rig.midi.isControlMappedToValueId (1, 0, 6));
    EXPECT_EQ (rig.midi.saveMidiMap()->findChild (fourCC ("cmap"))->childCount(), MVMidiManager::maxRecords);
    EXPECT_FALSE (rig.midi.addMidiControlToValueId (0, 5, 2)) << "the list is full";
}

TEST (MidiManager, theAudioThreadTouchesNoHeapAndNoLockInSteadyState)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();
    MV_SKIP_WITHOUT_LOCK_WATCH();
    MidiRig rig;
    rig.midi.setMidiControlToValueId (0, 1, 1);
    const std::uint8_t bytes[] { 0xB0, 1, 2, 0x90, 60, 100, 0x80, 60, 0, 0xB0, 1, 3, 0xB0, 2, 3 };
    rig.midi.processMidiDataBuffer (bytes, sizeof (bytes), false); // nodes and the one event

    const AllocationWatch heap;
    const LockWatch locks;
    rig.midi.processMidiDataBuffer (bytes, sizeof (bytes), false);
    EXPECT_EQ (heap.count(), 0);
    EXPECT_EQ (locks.count(), 0);
}

} // namespace
} // namespace morvanelab::test
