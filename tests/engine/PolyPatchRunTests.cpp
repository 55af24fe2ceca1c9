// SPDX-License-Identifier: GPL-3.0-or-later
#include "VoiceRig.h"

#include <gtest/gtest.h>

namespace morvanelab::test
{

namespace
{

/** Host input n + 1 in block n: the sum of both of a pair of branches, of which one may be late. */
MVSmartPtr<MVRiffPacker> diamond (int lateBranchPort)
{
    PatchBuilder patch;
    const int a = patch.node (PatchBuilder::input);
    const int b = patch.node (PatchBuilder::passThrough);
    const int c = patch.node (PatchBuilder::sum);
    const int d = patch.node (PatchBuilder::sum);
    const int out = patch.node (PatchBuilder::output);
    patch.route (a, 0, b, 0);
    patch.route (a, 0, c, lateBranchPort);
    patch.route (b, 0, d, 0);
    patch.route (c, 0, d, 1);
    patch.route (d, 0, out, 0);
    return patch.tree();
}

MVSmartPtr<MVRiffPacker> accumulator()
{
    PatchBuilder patch;
    const int in = patch.node (PatchBuilder::input);
    const int adder = patch.node (PatchBuilder::sum);
    const int back = patch.node (PatchBuilder::passThrough);
    const int out = patch.node (PatchBuilder::output);
    patch.route (in, 0, adder, 0);
    patch.route (back, 0, adder, 1);
    patch.route (adder, 0, back, 0);
    patch.route (adder, 0, out, 0);
    return patch.tree();
}

/** The gain at both ends of each block of a faded constant 1.0. */
struct FadeBlock
{
    double first;
    double last;
};

FadeBlock fadeBlock (VoiceRig& rig)
{
    rig.block();
    return { rig.channels[0][0], rig.channels[0][255] };
}

void expectRamp (VoiceRig& rig, double start, double end)
{
    const FadeBlock heard = fadeBlock (rig);
    EXPECT_NEAR (heard.first, start, 1e-12);
    EXPECT_NEAR (heard.last, start + 255.0 * (end - start) / 256.0, 1e-12);
    EXPECT_EQ (rig.channels[0], rig.channels[1]);
}

} // namespace

TEST (PolyPatchRun, chainIsHeardInTheSameBlock)
{
    PatchBuilder patch;
    const int out = patch.node (PatchBuilder::output);
    const int wire = patch.node (PatchBuilder::passThrough);
    const int in = patch.node (PatchBuilder::input);
    patch.route (in, 0, wire, 0);
    patch.route (wire, 0, out, 0);

    VoiceRig rig;
    rig.play (patch.tree());
    EXPECT_EQ (rig.listen (3), (std::vector<double> { 1, 2, 3 }));
}

TEST (PolyPatchRun, laterBranchOfADiamondHearsTheSourceOneBlockLate)
{
    VoiceRig rig;
    rig.play (diamond (0));
    EXPECT_EQ (rig.listen (5), (std::vector<double> { 1, 2 + 1, 3 + 2, 4 + 3, 5 + 4 }));
}

TEST (PolyPatchRun, feedbackMarkBehindAFreePortFallsOnThatPort)
{
    // The branch runs ahead of its source and reads the half that is written in this block: what it finds there is
    // two blocks old.
    VoiceRig rig;
    rig.play (diamond (1));
    EXPECT_EQ (rig.listen (5), (std::vector<double> { 1, 2, 3 + 1, 4 + 2, 5 + 3 }));
}

TEST (PolyPatchRun, cycleHearsItselfExactlyOneBlockLate)
{
    VoiceRig rig;
    rig.play (accumulator());
    EXPECT_EQ (rig.listen (5), (std::vector<double> { 1, 3, 6, 10, 15 }));

    rig.voice->reset();
    EXPECT_EQ (rig.listen (2), (std::vector<double> { 1, 3 })) << "reset silences what circulates";
}

TEST (PolyPatchRun, phaseTurnsAlsoWhileNothingRuns)
{
    // Two idle blocks bring back the phase in which the sum was written; one brings the half before it.
    for (const int idle : { 1, 2 })
    {
        VoiceRig rig;
        rig.play (accumulator());
        rig.listen (2);
        rig.voice->setPatchPlaying (0, 0, false);
        for (int n = 0; n < idle; ++n)
            rig.block (100.0);
        EXPECT_EQ (rig.channels[0][0], 0.0);
        rig.voice->setPatchPlaying (0, 0, true);
        EXPECT_EQ (rig.listen (1).front(), idle == 2 ? 1 + 3 : 1 + 1);
    }
}

TEST (PolyPatchRun, unconnectedInputReadsSilence)
{
    PatchBuilder patch;
    const int wire = patch.node (PatchBuilder::passThrough);
    const int out = patch.node (PatchBuilder::output);
    patch.route (wire, 0, out, 0);

    VoiceRig rig;
    rig.play (patch.tree());
    rig.block (1.0);
    for (const double sample : rig.channels[0])
        ASSERT_EQ (sample, 0.0);
}

TEST (PolyPatchRun, layersAddUpAndBlocksMayBeShorter)
{
    VoiceRig rig;
    rig.play (constantPatch (1.0), 0);
    rig.play (constantPatch (2.0), 2);
    rig.block (0.0, 100);
    EXPECT_EQ (rig.channels[1][99], 3.0);
    EXPECT_EQ (rig.channels[1][100], 0.0);

    rig.block (0.0, 5000);
    EXPECT_EQ (rig.channels[0][255], 3.0) << "no more than a block is ever written";
}

TEST (PolyPatchRun, fadeRampsBlockByBlockAndStops)
{
    VoiceRig rig;
    rig.play (constantPatch (1.0));
    rig.voice->setPatchPlaying (0, 4, false);
    EXPECT_EQ (rig.voice->patchState (0), PATCH_RUNNING);

    expectRamp (rig, 1.0, 0.75);
    expectRamp (rig, 0.75, 0.5);
    expectRamp (rig, 0.5, 0.25);
    EXPECT_EQ (rig.voice->patchState (0), PATCH_RUNNING);
    expectRamp (rig, 0.25, 0.0);
    EXPECT_EQ (rig.voice->patchState (0), PATCH_STOPPED);
    expectRamp (rig, 0.0, 0.0);

    rig.voice->setPatchPlaying (0, 1, true);
    expectRamp (rig, 1.0, 1.0);
}

TEST (PolyPatchRun, fadeStepIsComputedInSinglePrecision)
{
    VoiceRig rig;
    rig.play (constantPatch (1.0));
    rig.voice->beginFade (0, 3);
    EXPECT_EQ (fadeBlock (rig).first, 3.0 * static_cast<double> (1.0F / 3.0F));
}

TEST (PolyPatchRun, secondFadeOnlyShortensFromThePresentGain)
{
    VoiceRig rig;
    rig.play (constantPatch (1.0));
    rig.voice->beginFade (0, 4);
    expectRamp (rig, 1.0, 0.75);
    rig.voice->beginFade (0, 50);
    expectRamp (rig, 0.75, 0.5);
    rig.voice->beginFade (0, 1);
    expectRamp (rig, 0.5, 0.0);
    EXPECT_EQ (rig.voice->patchState (0), PATCH_STOPPED);
}

TEST (PolyPatchRun, fadeThatWasCutShortLeavesNothingForTheNextOne)
{
    VoiceRig rig;
    rig.play (constantPatch (1.0));
    rig.voice->beginFade (0, 8);
    expectRamp (rig, 1.0, 0.875);
    rig.voice->setPatchPlaying (0, 0, false);
    rig.voice->setPatchPlaying (0, 0, true);
    rig.voice->beginFade (0, 2);
    expectRamp (rig, 1.0, 0.5);
}

TEST (PolyPatchRun, resetInAFadeEndsIt)
{
    VoiceRig rig;
    rig.play (constantPatch (1.0));
    rig.voice->beginFade (0, 100);
    rig.block();
    rig.voice->reset();
    rig.block();
    EXPECT_EQ (rig.voice->patchState (0), PATCH_STOPPED);
}

TEST (PolyPatchRun, swappedLayerKeepsStateFadeAndMemory)
{
    VoiceRig rig;
    PatchBuilder named;
    named.names = { "Brightness" };
    named.node (PatchBuilder::output);
    rig.parse (named.tree(), 2);

    rig.play (accumulator(), 0);
    rig.listen (2);
    rig.voice->beginFade (0, 4);
    rig.voice->swapSubnets (0, 2);
    EXPECT_EQ (rig.voice->patchState (0), PATCH_STOPPED);
    EXPECT_EQ (rig.voice->variableName (0, 0), "Brightness");
    EXPECT_EQ (rig.voice->rootNode (2), 3);

    rig.block (1.0);
    EXPECT_NEAR (rig.channels[0][0], 3.0 + 1.0, 1e-12);
    EXPECT_NEAR (rig.channels[0][255], 4.0 * (1.0 - 0.25 * 255 / 256), 1e-12);
}

TEST (PolyPatchRun, layerWithoutDescriptionNeverPlays)
{
    VoiceRig rig;
    rig.voice->setPatchPlaying (1, 0, true);
    rig.voice->resetPatchStates();
    for (int layer = 0; layer < 4; ++layer)
        EXPECT_EQ (rig.voice->patchState (layer), PATCH_STOPPED);

    rig.play (constantPatch (1.0), 0);
    rig.play (constantPatch (1.0), 3);
    rig.voice->setPatchPlaying (0, 0, false);
    rig.voice->setPatchPlaying (3, 0, false);
    rig.voice->resetPatchStates();
    EXPECT_EQ (rig.voice->patchState (0), PATCH_RUNNING);
    EXPECT_EQ (rig.voice->patchState (3), PATCH_STOPPED) << "what faded out in the back buffer stays silent";

    rig.voice->clearLayer (0);
    rig.voice->setPatchPlaying (0, 0, false);
    rig.voice->resetPatchStates();
    EXPECT_EQ (rig.voice->patchState (0), PATCH_STOPPED);
}

TEST (PolyPatchRun, runningLayersComeBackAfterBuffersWereTakenAway)
{
    VoiceRig rig;
    rig.play (constantPatch (1.0), 0);
    rig.play (constantPatch (2.0), 1);
    rig.voice->setPatchPlaying (1, 0, false);

    rig.voice->prepareBuffers (false);
    rig.voice->setActive (false);
    rig.block();
    EXPECT_EQ (rig.channels[0][0], 0.0) << "unbound layers are skipped";
    rig.voice->setActive (true);
    rig.voice->prepareBuffers (true);
    rig.block();
    EXPECT_EQ (rig.channels[0][0], 1.0);
}

TEST (PolyPatchRun, voiceFinishesWhenEveryDescribedLayerHas)
{
    VoiceRig rig;
    rig.play (constantPatch (1.0), 0);
    rig.play (constantPatch (1.0), 1);
    rig.voice->noteOn (60, 1.0);
    EXPECT_FALSE (rig.voice->allOperatorsFinished());
    rig.voice->releaseOperators();
    rig.block();
    EXPECT_FALSE (rig.voice->allOperatorsFinished());
    rig.block();
    EXPECT_TRUE (rig.voice->allOperatorsFinished());

    rig.voice->noteOn (61, 1.0);
    EXPECT_FALSE (rig.voice->allOperatorsFinished()) << "a voice can be used again";
    EXPECT_EQ (rig.voice->getLastKey(), 61);
}

TEST (PolyPatchRun, outputLevelsComeFromTheFirstPlayingOutput)
{
    VoiceRig rig (false);
    EXPECT_EQ (rig.voice->getOutputVolume(), 0.0);
    rig.play (constantPatch (0.1), 1);
    EXPECT_DOUBLE_EQ (rig.voice->getOutputVolume(), 1.0);
    rig.voice->setOutputVolume (0.5);
    rig.voice->setCompressorThreshold (0.25);
    rig.voice->setCompressorRollOff (2.0);
    EXPECT_NEAR (rig.voice->getOutputVolume(), 0.5, 1e-8);
    EXPECT_NEAR (rig.voice->getCompressorThreshold(), 0.25, 1e-8);
    EXPECT_NEAR (rig.voice->getCompressorRollOff(), 2.0, 1e-8);
}

} // namespace morvanelab::test
