// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/EngineRig.h"
#include "support/TestRandom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace morvanelab::test
{

namespace
{

/** The same notes, 20480 frames, delivered in blocks of the given sizes used in turn. */
std::vector<float> playInBlocks (const std::vector<int>& sizes, int announced)
{
    MVRenderStreamFormat format;
    format.maxBlock = announced;
    EngineRig rig (format);
    EXPECT_EQ (rig.load (keyedPatch()), 1);
    rig.engine.noteOn (rig.part, 60, 0.8);
    rig.engine.noteOn (rig.part, 67, 0.5);

    std::vector<float> left;
    for (std::size_t i = 0; left.size() < 20480; ++i)
    {
        const int frames = sizes[i % sizes.size()];
        const auto block = rig.render (frames);
        // A block shorter than the channel count writes fewer channels, so only the first is compared.
        left.insert (left.end(), block.begin(), block.begin() + frames);
    }

    left.resize (20480);
    return left;
}

std::vector<float> noiseAfterSilence (int silentFrames, int frames)
{
    TestRandom random (3);
    std::vector<float> samples (static_cast<std::size_t> (silentFrames), 0.0f);
    while (static_cast<int> (samples.size()) < frames)
        samples.push_back (static_cast<float> (random.between (-0.2, 0.2)));
    return samples;
}

std::vector<float> throughEngine (int block, const std::vector<float>& input)
{
    MVRenderStreamFormat format;
    format.maxBlock = block;
    EngineRig rig (format, 1);
    // With nothing sounding a load needs no block; one without input would empty the rings.
    EXPECT_EQ (rig.post (packed (throughPatch())), 6);
    EXPECT_TRUE (rig.waitForLoads (false));
    rig.engine.noteOn (rig.part, 60, 1.0);

    std::vector<float> output;
    for (std::size_t i = 0; i + static_cast<std::size_t> (block) <= input.size(); i += static_cast<std::size_t> (block))
    {
        const auto out = rig.process ({ input.begin() + static_cast<std::ptrdiff_t> (i),
                                        input.begin() + static_cast<std::ptrdiff_t> (i) + block });
        output.insert (output.end(), out.begin(), out.begin() + block);
    }
    return output;
}

} // namespace

TEST (RenderEngine, configureRefusesWhatItCannotServe)
{
    struct Row
    {
        const char* what;
        void (*spoil) (MVRenderStreamFormat&);
    };

    const Row rows[] {
        { "input layout", [] (MVRenderStreamFormat& f) { f.inputLayout = 3; } },
        { "output layout", [] (MVRenderStreamFormat& f) { f.outputLayout = 0; } },
        { "input type 1", [] (MVRenderStreamFormat& f) { f.inputSampleType = 1; } },
        { "input type 3", [] (MVRenderStreamFormat& f) { f.inputSampleType = 3; } },
        { "output type 7", [] (MVRenderStreamFormat& f) { f.outputSampleType = 7; } },
        { "engine rate", [] (MVRenderStreamFormat& f) { f.engineSampleRate = 0.0; } },
        { "stream rate", [] (MVRenderStreamFormat& f) { f.streamSampleRate = std::nan (""); } },
        { "inputs", [] (MVRenderStreamFormat& f) { f.numIn = 9; } },
        { "outputs", [] (MVRenderStreamFormat& f) { f.numOut = -1; } },
    };

    MVRenderEngine engine;
    for (const Row& row : rows)
    {
        MVRenderStreamFormat format;
        format.maxBlock = 999;
        row.spoil (format);
        EXPECT_EQ (engine.configure (format), 11) << row.what;
        EXPECT_EQ (engine.getFormat().maxBlock, 256) << row.what;
    }

    MVRenderStreamFormat interleaved;
    interleaved.inputLayout = interleaved.outputLayout = layoutInterleaved;
    interleaved.outputSampleType = sampleUnsigned8;
    EXPECT_EQ (engine.configure (interleaved), 1);
}

TEST (RenderEngine, inactiveEngineWritesNothing)
{
    MVRenderEngine engine;
    float sample = 5.0f;
    void* out[] { &sample };
    int written = -7;
    EXPECT_EQ (engine.renderBlock (out, 1, 1, written), 19);
    EXPECT_EQ (written, -7);
    EXPECT_EQ (sample, 5.0f);
    EXPECT_EQ (engine.postPatchLoad (&sample, 4, 1, 0.0), 9);
    EXPECT_EQ (engine.getEngineControlId(), 0);
}

TEST (RenderEngine, argumentsOutOfSenseAreSafe)
{
    EngineRig rig;
    int written = -1;
    void* none[] { nullptr, nullptr };
    const void* const noInput[] { nullptr, nullptr };
    EXPECT_EQ (rig.engine.renderBlock (nullptr, 2, 64, written), 11);
    EXPECT_EQ (rig.engine.renderBlock (none, 2, -1, written), 11);
    EXPECT_EQ (rig.engine.writeInput (nullptr, 2, 64, written), 11);
    EXPECT_EQ (written, -1);
    EXPECT_EQ (rig.engine.renderBlock (none, 2, 64, written), 1);
    EXPECT_EQ (rig.engine.writeInput (noInput, 2, 64, written), 1);
    EXPECT_EQ (rig.engine.renderBlock (none, 2, 0, written), 1);
    EXPECT_EQ (written, 0);
}

TEST (RenderEngine, sizesOfTheBlocksMakeNoDifference)
{
    const auto reference = playInBlocks ({ 256 }, 256);
    ASSERT_GT (peakOf (reference), 0.05);

    TestRandom random (11);
    std::vector<std::vector<int>> sequences { { 1 }, { 64 }, { 100 }, { 441 }, { 8192 }, { 1, 8192, 3, 255, 257 } };
    for (int i = 0; i < 12; ++i)
    {
        std::vector<int> sizes;
        while (sizes.size() < 40)
            sizes.push_back (random.chance (0.5) ? 1 + random.below (300) : 1 + random.below (8192));
        sequences.push_back (sizes);
    }

    for (std::size_t i = 0; i < sequences.size(); ++i)
        for (const int announced : { 64, 512 })
            ASSERT_EQ (playInBlocks (sequences[i], announced), reference) << "sequence " << i << ", " << announced;
}

TEST (RenderEngine, blockShorterThanTheChannelCountWritesFewerChannels)
{
    EngineRig rig;
    float samples[] { 9.0f, 9.0f };
    void* out[] { &samples[0], &samples[1] };
    int written = 0;
    EXPECT_EQ (rig.engine.renderBlock (out, 2, 1, written), 1);
    EXPECT_EQ (written, 1);
    EXPECT_EQ (samples[0], 0.0f);
    EXPECT_EQ (samples[1], 9.0f);
}

TEST (RenderEngine, primedInputIsTheUnprimedOne256FramesLater)
{
    // The signal begins when the voice has risen to full level, from where on the chain keeps no time of its own.
    const auto input = noiseAfterSilence (25600, 40960);
    const auto aligned = throughEngine (256, input);
    ASSERT_GT (peakOf (aligned), 0.05);

    for (const int block : { 100, 80, 300, 1000 })
    {
        const auto primed = throughEngine (block, input);
        for (std::size_t i = 256; i < primed.size(); ++i)
            ASSERT_EQ (primed[i], aligned[i - 256]) << "block " << block << ", frame " << i;
    }

    const auto larger = throughEngine (1024, input);
    for (std::size_t i = 0; i < larger.size(); ++i)
        ASSERT_EQ (larger[i], aligned[i]);
}

TEST (RenderEngine, mutedInputIsSilence)
{
    EngineRig rig ({}, 1);
    ASSERT_EQ (rig.load (throughPatch()), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);
    const auto input = noiseAfterSilence (0, 4096);
    rig.process (input);
    EXPECT_GT (peakOf (rig.process (input)), 0.05);

    rig.engine.setInputMuted (true);
    rig.process (input);
    rig.process (std::vector<float> (44100, 0.3f));
    EXPECT_LT (peakOf (rig.process (input)), 1e-6);
}

TEST (RenderEngine, mutedOutputGoesOnUnheard)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (441.0)), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.render (8192);
    EXPECT_GT (peakOf (rig.render (1024)), 0.1);

    rig.engine.setOutputMuted (true);
    EXPECT_EQ (peakOf (rig.render (1024)), 0.0);
    rig.engine.setOutputMuted (false);
    EXPECT_GT (peakOf (rig.render (1024)), 0.1);

    rig.engine.setOutputMuted (true);
    const auto later = rig.engine.createPart (1);
    EXPECT_TRUE (rig.engine.getRendererManager().isOutputMuted (later));
}

TEST (RenderEngine, callsAnswerTheirCodes)
{
    EngineRig rig;
    MVRenderEngine& engine = rig.engine;
    const std::uint16_t volume = engine.getVolumeControlId (rig.part);
    double value = 0.0;

    EXPECT_EQ (engine.getControlValue (volume, nullptr), 11);
    EXPECT_EQ (engine.getControlValue (0, &value), 12);
    EXPECT_EQ (engine.getControlValue (60000, &value), 12);
    EXPECT_EQ (engine.getControlValue (volume, &value), 1);
    EXPECT_NEAR (value, 1.0, 1e-9);
    EXPECT_EQ (engine.setControlValue (0, 0.5), 12);
    EXPECT_EQ (engine.setControlValue (volume, 0.5), 1);
    EXPECT_EQ (engine.unmapControlId (60000), 12);

    EXPECT_EQ (engine.midiMapAddCCToControlValue (volume, 1.0, 16, 7), 13);
    EXPECT_EQ (engine.midiMapAddCCToControlValue (volume, 1.0, 0, 256), 13);
    EXPECT_EQ (engine.midiMapAddCCToControlValue (volume, 1.0, -1, 7), 13);
    EXPECT_EQ (engine.midiMapAddCCToControlValue (volume, 1.0, 15, 127), 1);
    int channel = 0;
    int controller = 0;
    EXPECT_TRUE (engine.getMidiManager().getMidiControlForValueId (volume, channel, controller));
    EXPECT_EQ (channel, 15);
    EXPECT_EQ (engine.unmapControlId (volume), 1);
    EXPECT_FALSE (engine.getMidiManager().getMidiControlForValueId (volume, channel, controller));

    const std::uint8_t byte = 1;
    EXPECT_EQ (engine.postPatchLoad (nullptr, 4, rig.part, 0.0), 14);
    EXPECT_EQ (engine.postPatchLoad (&byte, 0, rig.part, 0.0), 14);
    EXPECT_EQ (engine.postPatchLoad (&byte, 1, 42, 0.0), 9);
    EXPECT_EQ (engine.loadFullPreset (&byte, 1, 0.0), 14);
    EXPECT_EQ (engine.noteOn (42, 60, 1.0), 12);
    EXPECT_EQ (engine.setPlayMode (42, 2), 12);
    EXPECT_EQ (engine.destroyPart (42), 12);
    EXPECT_EQ (engine.createPart (0), 0U);
    EXPECT_EQ (engine.createPart (65), 0U);
    EXPECT_EQ (engine.getOutputPeak (rig.part, 0, &value), 19);
    EXPECT_EQ (engine.setOutputPeaksEnabled (rig.part, true), 1);
    EXPECT_EQ (engine.getOutputPeak (rig.part, 0, nullptr), 11);
    EXPECT_EQ (engine.getOutputPeak (rig.part, 5, &value), 13);
    EXPECT_EQ (engine.getOutputPeak (rig.part, 1, &value), 1);
}

TEST (RenderEngine, learnsTheFirstControllerOfAPieceOfMidi)
{
    EngineRig rig;
    const std::uint16_t id = rig.engine.getParameterControlId (rig.part, 0);
    ASSERT_NE (id, 0);
    int channel = -1;
    int cc = -1;
    int value = -1;
    int used = -1;

    // A note, all notes off, controller 21 on channel 2, another controller.
    const std::uint8_t data[] { 0x90, 60, 100, 0xB0, 123, 0, 0xB2, 21, 64, 0xB2, 22, 64 };
    EXPECT_EQ (rig.engine.mapMidiContinousControllerFromData (id, data, 12, channel, cc, value, used), 1);
    EXPECT_EQ (channel, 2);
    EXPECT_EQ (cc, 21);
    EXPECT_EQ (value, 64);
    EXPECT_EQ (used, 9);
    EXPECT_TRUE (rig.engine.getMidiManager().isControlMappedToValueId (id, 2, 21));
    EXPECT_FALSE (rig.engine.getMidiManager().isControlMappedToValueId (id, 2, 22));

    EXPECT_EQ (rig.engine.mapMidiContinousControllerFromData (id, data, 6, channel, cc, value, used), 9);
    EXPECT_EQ (rig.engine.mapMidiContinousControllerFromData (id, nullptr, 6, channel, cc, value, used), 11);
    EXPECT_EQ (rig.engine.mapMidiContinousControllerFromData (0, data, 6, channel, cc, value, used), 12);
}

TEST (RenderEngine, mappedControllerDrivesTheVolume)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (441.0)), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.render (8192);
    const double full = peakOf (rig.render (1024));

    const std::uint16_t volume = rig.engine.getVolumeControlId (rig.part);
    rig.engine.midiMapAddCCToControlValue (volume, 1.0, 0, 7);
    const std::uint8_t message[] { 0xB0, 7, 0 };
    rig.engine.getMidiManager().processMidiDataBuffer (message, 3, false);
    ASSERT_TRUE (rig.engine.waitForPendingWork (5.0));
    rig.render (256);
    EXPECT_GT (full, 0.1);
    EXPECT_EQ (peakOf (rig.render (1024)), 0.0);
}

TEST (RenderEngine, newPartFadesInOverOneBlock)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (sinePatch (441.0)), 1);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.render (8192);

    // Out of the mix and back in: only the stored gain tells that the renderer is new to it.
    const std::uint16_t volume = rig.engine.getVolumeControlId (rig.part);
    rig.engine.setControlValue (volume, 0.0);
    rig.engine.waitForPendingWork (5.0);
    rig.render (256);
    rig.engine.setControlValue (volume, 1.0);
    rig.engine.waitForPendingWork (5.0);
    const auto rising = rig.render (256);
    const auto level = rig.render (256);
    EXPECT_EQ (rising[0], 0.0f);
    EXPECT_LT (peakOf ({ rising.begin(), rising.begin() + 25 }), 0.1 * peakOf (level) + 1e-6);
}

TEST (RenderEngine, compressorSettingsReachTheOutputAndComeBack)
{
    EngineRig rig;
    double value = 1.0;
    EXPECT_EQ (rig.engine.getCompressorThreshold (rig.part, &value), 1);
    EXPECT_EQ (value, 0.0);

    ASSERT_EQ (rig.load (sinePatch (441.0)), 1);
    rig.engine.getCompressorThreshold (rig.part, &value);
    EXPECT_NEAR (value, 0.9, 1e-6);
    rig.engine.setCompressorThreshold (rig.part, 0.5);
    rig.engine.setCompressorRollOff (rig.part, 2.0);
    rig.engine.setPreCompressionVolume (rig.part, 0.25);
    rig.engine.getCompressorThreshold (rig.part, &value);
    EXPECT_NEAR (value, 0.5, 1e-6);
    rig.engine.getCompressorRollOff (rig.part, &value);
    EXPECT_NEAR (value, 2.0, 1e-6);
    rig.engine.getPreCompressionVolume (rig.part, &value);
    EXPECT_NEAR (value, 0.25, 1e-6);
    EXPECT_EQ (rig.engine.getPreCompressionVolume (rig.part, nullptr), 11);
    EXPECT_EQ (rig.engine.setPreCompressionVolume (42, 0.5), 12);

    // Every voice has it: full level, a quarter of it.
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.engine.noteOn (rig.part, 60, 1.0);
    rig.render (8192);
    const double reduced = peakOf (rig.render (1024));
    rig.engine.setPreCompressionVolume (rig.part, 0.125);
    rig.render (8192);
    EXPECT_NEAR (peakOf (rig.render (1024)) / reduced, 0.5, 0.02);
}

TEST (RenderEngine, reconfiguringKeepsThePartAndItsPatch)
{
    EngineRig rig;
    ASSERT_EQ (rig.load (keyedPatch()), 1);

    MVRenderStreamFormat format;
    format.engineSampleRate = format.streamSampleRate = 96000.0;
    format.maxBlock = 480;
    ASSERT_EQ (rig.engine.configure (format), 1);
    EXPECT_TRUE (rig.engine.isActive());
    rig.engine.setControlValue (rig.engine.getVolumeControlId (rig.part), 1.0);
    rig.engine.waitForPendingWork (5.0);

    EXPECT_TRUE (rig.engine.getPatchData (rig.part, 0));
    rig.engine.noteOn (rig.part, 69, 1.0);
    rig.render (9600);

    // 440 Hz at 96 kHz: 44 periods in 9600 frames, counted by upward crossings.
    const auto sound = rig.render (9600);
    int crossings = 0;
    for (std::size_t i = 1; i < 9600; ++i)
        if (sound[i - 1] < 0.0f && sound[i] >= 0.0f)
            ++crossings;
    EXPECT_NEAR (crossings, 44, 1);
}

} // namespace morvanelab::test
