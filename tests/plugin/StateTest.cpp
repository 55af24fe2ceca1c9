// SPDX-License-Identifier: GPL-3.0-or-later
// The stored state inside the plug-in: every field and size, before and after the engine, with banks that change.
#include "plugin/CoreRig.h"

#include "engine/MVPatchText.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace morvanelab::test
{

namespace
{

using Boxes = std::vector<std::string>;

const Boxes missingPatch { "Missing patch|Cannot find the patch for this preset.  Check if bank was unloaded.|OK" };

/** A state of a bank that nobody knows, with something else in every field. */
SordelinState fullState()
{
    SordelinState state;
    state.compressorThreshold = 0.5;
    state.compressorRollOff = 2.0;
    state.preCompressionVolume = 0.75;
    state.outputVolume = 0.25;
    state.bankUuid.fill (0xAB);
    state.patchIndex = 7;
    for (std::size_t i = 0; i < 16; ++i)
    {
        state.parameterValues[i] = static_cast<double> (i + 1) / 32.0;
        state.midiControllers[i] = static_cast<std::int32_t> (20 + i);
        state.midiChannels[i] = static_cast<std::int32_t> (i);
    }
    state.visualiser = 4;
    state.presetItem = -1;
    return state;
}

juce::MemoryBlock bytesOf (const SordelinState& state) { return { &state, sizeof state }; }

void expectEqual (const SordelinState& actual, const SordelinState& expected)
{
    EXPECT_EQ (actual.compressorThreshold, expected.compressorThreshold);
    EXPECT_EQ (actual.compressorRollOff, expected.compressorRollOff);
    EXPECT_EQ (actual.preCompressionVolume, expected.preCompressionVolume);
    EXPECT_NEAR (actual.outputVolume, expected.outputVolume, 1e-6);
    EXPECT_EQ (actual.bankUuid, expected.bankUuid);
    EXPECT_EQ (actual.patchIndex, expected.patchIndex);
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_NEAR (actual.parameterValues[i], expected.parameterValues[i], 1e-6) << i;
    EXPECT_EQ (actual.midiControllers, expected.midiControllers);
    EXPECT_EQ (actual.midiChannels, expected.midiChannels);
    EXPECT_EQ (actual.visualiser, expected.visualiser);
    EXPECT_EQ (actual.presetItem, expected.presetItem);
}

class StoredState : public testing::Test
{
protected:
    CoreRig rig;
};

} // namespace

TEST_F (StoredState, everySizeIsTaken)
{
    const auto plugin = rig.open();
    for (const std::size_t size : { 0U, 12U, 319U, 320U, 1000U })
    {
        auto expected = fullState();
        juce::MemoryBlock bytes (std::max<std::size_t> (size, 320), true);
        std::memset (bytes.getData(), 0x55, bytes.getSize());
        bytes.copyFrom (&expected, 0, sizeof expected);
        bytes.setSize (size);
        plugin->core().setState (bytes);
        EXPECT_EQ (plugin->user.takeBoxes(), missingPatch) << size;

        if (size < 320)
            std::memset (reinterpret_cast<char*> (&expected) + size, 0, sizeof expected - size);
        if (size < 184) // controller 0 of channel 0 drives the slot that asked for it last, and nothing else
        {
            expected.midiControllers.fill (-1);
            expected.midiChannels.fill (-1);
            expected.midiControllers[15] = expected.midiChannels[15] = 0;
        }
        expected.presetItem = -1; // there are no presets
        SCOPED_TRACE (size);
        expectEqual (plugin->fields(), expected);
    }
}

TEST_F (StoredState, mappingsOutOfRangeAreNone)
{
    const auto plugin = rig.open();
    auto state = fullState();
    state.midiChannels = { 16, 0, -1, 0, INT32_MAX, INT32_MIN };
    state.midiControllers = { 1, 256, 1, -5, 1, 1 };
    plugin->core().setState (bytesOf (state));
    const auto back = plugin->fields();
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ (back.midiChannels[i], -1) << i;
}

TEST_F (StoredState, beforeTheEngineIsTheSameAsAfter)
{
    {
        const auto first = rig.open();
        for (const char* name : { "One", "Two" })
        {
            first->user.willType (name);
            first->core().savePresetAs();
            first->user.takeBoxes();
        }
    }
    const auto late = rig.open();
    SordelinState state;
    std::memcpy (static_cast<void*> (&state), stateFor (*late, 0, slotSine).getData(), sizeof state);
    state.visualiser = 3;
    state.presetItem = 1;
    state.parameterValues[0] = 0.5;
    late->core().setState (bytesOf (state));
    const auto usual = late->playNote();
    ASSERT_GT (peakOf (usual), 0.01);

    const auto early = rig.open (false);
    early->core().setState (bytesOf (state));
    EXPECT_EQ (early->state().getSize(), 0U);
    early->start();
    EXPECT_EQ (early->playNote(), usual);
    const auto volumeAndBeyond = [] (CorePlugin& plugin)
    {
        auto bytes = plugin.state();
        bytes.removeSection (0, offsetof (SordelinState, outputVolume)); // a patch brings its own compressor
        return bytes;
    };
    EXPECT_EQ (volumeAndBeyond (*early), volumeAndBeyond (*late));
    EXPECT_EQ (early->core().getVisualiser(), 3);
    EXPECT_EQ (early->core().getPresetCombo().selected, 1);
    EXPECT_TRUE (early->core().getPresetCombo().buttonsEnabled);
}

TEST_F (StoredState, unknownDisplayCountsAsTheFirst)
{
    const auto plugin = rig.open();
    for (const auto& [asked, shown] : { std::pair (0, 0), { 5, 5 }, { 6, 0 }, { 7, 7 }, { 8, 0 }, { -1, 0 } })
    {
        plugin->core().setVisualiser (asked);
        EXPECT_EQ (plugin->fields().visualiser, shown) << asked;
    }
}

TEST_F (StoredState, replacedPatchMakesOldStatesMissIt)
{
    const auto plugin = rig.open();
    plugin->core().setState (stateFor (*plugin, 0, slotSine));
    EXPECT_NEAR (pitchOf (plugin->playNote()), sinePitch, pitchTolerance);
    const auto old = plugin->state();
    EXPECT_EQ (plugin->user.takeBoxes(), Boxes {});

    plugin->banks().setBankSelected (0, true);
    auto square = plugin->banks().getPatchData (0, slotSquare);
    ASSERT_TRUE (plugin->banks().setSelectedBankPatch (slotSine, square));
    plugin->core().setState (old);
    EXPECT_EQ (plugin->user.takeBoxes(), missingPatch);
    EXPECT_NEAR (pitchOf (plugin->playNote()), sinePitch, pitchTolerance) << "what plays goes on";

    plugin->core().getPrompt().setShowing (false);
    plugin->core().setState (old);
    EXPECT_EQ (plugin->user.takeBoxes(), Boxes {}) << "nobody is there to see it";
}

TEST_F (StoredState, instancesOfOneHomeKnowEachOthersBanks)
{
    auto one = rig.open();
    auto two = rig.open();
    ASSERT_EQ (one->banks().getBankCount(), 1);
    ASSERT_EQ (two->banks().getBankCount(), 1) << "the first run is over once";
    EXPECT_TRUE (two->banks().addBankFile (1, rig.writeBank ("Two.mv_onbank")));
    EXPECT_TRUE (one->banks().addBankFile (0, rig.writeBank ("One.mv_onbank")));

    one->core().setState (stateFor (*one, 0, slotSquare)); // of a bank that the other has not seen yet
    const auto sound = one->playNote();
    const auto state = one->state();
    one.reset();
    two->core().setState (state);
    EXPECT_EQ (two->playNote(), sound);
    two.reset();

    const auto third = rig.open();
    EXPECT_EQ (third->banks().getBankCount(), 3);
    third->core().setState (state);
    EXPECT_EQ (third->playNote(), sound);
    EXPECT_EQ (third->user.takeBoxes(), Boxes {});
}

TEST_F (StoredState, patchSnapshotOutlivesEngineAndPlugin)
{
    auto plugin = rig.open();
    plugin->core().setState (stateFor (*plugin, 0, slotSine));
    plugin->playNote();
    EXPECT_TRUE (plugin->core().getParameterTable().hasKeyboardInput());
    const auto patch = plugin->core().getPatchAccessor();
    plugin->start (48000.0);
    plugin->core().setState (stateFor (*plugin, 0, slotInput));
    plugin->playNote();
    EXPECT_FALSE (plugin->core().getParameterTable().hasKeyboardInput());
    plugin.reset();

    std::string name;
    int nodes = 0;
    EXPECT_EQ (MVRenderEngine::getVariableName (patch, 0, name), 1);
    EXPECT_EQ (MVRenderEngine::getNumNodes (patch, nodes), 1);
    EXPECT_EQ (name, "Level");
    EXPECT_EQ (nodes, 5);
}

TEST_F (StoredState, anotherNumberOfVoicesKeepsEverythingWhileAudioRuns)
{
    const auto plugin = rig.open();
    SordelinState state;
    std::memcpy (static_cast<void*> (&state), stateFor (*plugin, 0, slotSine).getData(), sizeof state);
    state.midiChannels[0] = 2;
    state.midiControllers[0] = 74;
    state.parameterValues[2] = 0.5;
    plugin->core().setState (bytesOf (state));
    const auto sound = plugin->playNote();
    const auto before = plugin->state();

    std::atomic<bool> ended { false };
    plugin->processor.setNonRealtime (false);
    std::thread audio (
        [&]
        {
            juce::AudioBuffer<float> block (2, 512);
            juce::MidiBuffer midi;
            while (! ended)
            {
                // As the wrapper does it.
                const juce::ScopedLock callback (plugin->processor.getCallbackLock());
                if (! plugin->processor.isSuspended())
                    plugin->processor.processBlock (block, midi);
            }
        });
    for (const int voices : { 1, 8, 64, 3, 0, 65 })
        plugin->core().setVoices (voices);
    ended = true;
    audio.join();
    plugin->processor.setNonRealtime (true);

    EXPECT_EQ (plugin->core().getSettings().getVoices(), 3) << "what is out of range changes nothing";
    EXPECT_EQ (plugin->state(), before);
    EXPECT_EQ (plugin->playNote(), sound);
}

TEST_F (StoredState, playModeTakesEffectAtOnce)
{
    const auto plugin = rig.open();
    plugin->core().setState (stateFor (*plugin, 0, slotSine));
    plugin->render (4096);
    EXPECT_LT (peakOf (plugin->render (4096)), 1e-6) << "no key is down";
    plugin->core().setPlayMode (SordelinSettings::monoMode);
    EXPECT_GT (peakOf (plugin->render (8192)), 0.01) << "the mono voice runs for good";
    plugin->core().panic();
    EXPECT_GT (peakOf (plugin->render (8192)), 0.01);
    plugin->core().setPlayMode (SordelinSettings::polyMode);
    plugin->render (8192);
    EXPECT_LT (peakOf (plugin->render (4096)), 1e-4);
    plugin->core().setPlayMode (4);
    EXPECT_EQ (plugin->core().getSettings().getPlayMode(), SordelinSettings::polyMode);
}

TEST_F (StoredState, learnedMidiGoesToWhoeverLearns)
{
    const auto plugin = rig.open();
    plugin->core().setState (stateFor (*plugin, 0, slotSine));
    plugin->render (4096);
    plugin->core().midiMappingActive = true;
    juce::MidiBuffer midi;
    midi.addEvent (juce::MidiMessage::noteOn (1, 60, 1.0F), 0);
    midi.addEvent (juce::MidiMessage::controllerEvent (3, 20, 99), 0);
    EXPECT_LT (peakOf (plugin->render (8192, midi)), 1e-6) << "notes are swallowed, too";
    std::array<std::uint8_t, 16> bytes {};
    EXPECT_EQ (plugin->core().getLearnQueue().pull (bytes.data(), 16), 6);
    EXPECT_EQ (bytes[3], 0xB2);
    EXPECT_EQ (bytes[4], 20);
}

} // namespace morvanelab::test
