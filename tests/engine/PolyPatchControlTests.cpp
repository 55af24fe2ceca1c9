// SPDX-License-Identifier: GPL-3.0-or-later
#include "VoiceRig.h"

#include "control/MVControlManager.h"
#include "foundation/MVResult.h"

#include <gtest/gtest.h>

namespace morvanelab::test
{

namespace
{

/** A node of four inputs, of which all but the first take control data. */
class ControlledNode : public MVOperator
{
public:
    static constexpr std::uint32_t typeCode = 0xA7001A;
    static const OperatorSpec spec;

    ControlledNode (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& chunk)
        : MVOperator (spec, renderAttributes, chunk)
    {
    }
};

constinit const OperatorSpec ControlledNode::spec {
    .typeId = typeCode, .numInputs = 4, .numOutputs = 1, .controlInputs = 0b1110
};

class ControlledNodeFactory final : public MVVirtualOperatorFactory
{
public:
    MVOperator* create (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& chunk) const override
    {
        return new ControlledNode (attributes, chunk);
    }
};

/** A voice with sixteen parameter controls of its own. */
class ControlRig : public VoiceRig
{
public:
    ControlRig() : VoiceRig (false)
    {
        attributes.addOperatorFactory (ControlledNode::typeCode, std::make_unique<ControlledNodeFactory>());
        manager.resizeControls (16);
        for (int id = 1; id <= 16; ++id)
            controls.add (manager.acquireControl (id));
        voice->setParameterControls (&controls);
    }

    int controlOf (int node, int port) const { return voice->nodeAt (0, node)->getInputControl (port); }

    MVControlManager manager { nullptr };
    MVVector<MVControlValue*> controls;
};

} // namespace

TEST (PolyPatchControls, controlsAreDealtOutFromTheRootToScaledControlInputs)
{
    ControlRig rig;
    PatchBuilder patch;
    const int out = patch.node (PatchBuilder::output);
    const int fed = patch.node (ControlledNode::typeCode);
    const int x = patch.constantNode (1.0);
    for (const int port : { 0, 1, 2, 3 })
        patch.route (x, 0, fed, port);
    patch.route (fed, 0, out, 0);
    patch.inputEntry (fed, 0, 1.0, 8);   // no control input: left alone
    patch.inputEntry (fed, 1, 0.04, 9);  // too low: loses its control
    patch.inputEntry (fed, 2, 0.06, -1); // gets the first
    patch.inputEntry (fed, 3, 1.0, -1);  // gets the second
    patch.autoAssign = 1;

    rig.play (patch.tree());
    EXPECT_EQ (rig.controlOf (fed, 0), 8);
    EXPECT_EQ (rig.controlOf (fed, 1), -1);
    EXPECT_EQ (rig.controlOf (fed, 2), 0);
    EXPECT_EQ (rig.controlOf (fed, 3), 1);

    // Asked for once only: a patch that does not ask keeps what it stores, also behind one that asked in vain.
    PatchBuilder withoutOutput;
    withoutOutput.node (PatchBuilder::constant);
    withoutOutput.autoAssign = 1;
    rig.play (withoutOutput.tree());
    patch.autoAssign = -1;
    rig.play (patch.tree());
    EXPECT_EQ (rig.controlOf (fed, 1), 9);
    EXPECT_EQ (rig.controlOf (fed, 2), -1);
}

TEST (PolyPatchControls, operatorsHearANewControlVector)
{
    // An oscillator that is asked for 0 Hz creeps along at 0.1 Hz.
    ControlRig rig;
    PatchBuilder patch;
    const int tone = patch.node (PatchBuilder::oscillator);
    const int out = patch.node (PatchBuilder::output);
    const int hertz = patch.constantNode (1000.0);
    patch.inputEntry (tone, 0, 1.0, 2);
    patch.route (hertz, 0, tone, 0);
    patch.route (tone, 0, out, 0);
    rig.play (patch.tree());
    rig.voice->noteOn (60, 1.0);

    const auto travel = [&rig]
    {
        double sum = 0.0;
        for (int n = 0; n < 4; ++n)
            rig.block();
        for (std::size_t i = 1; i < 256; ++i)
            sum += std::abs (rig.channels[0][i] - rig.channels[0][i - 1]);
        return sum;
    };

    rig.manager.setControlValue (3, 0.0);
    rig.manager.setControlValue (5, 1.0);
    rig.manager.flushPendingValues();
    EXPECT_LT (travel(), 0.01);
    rig.controls[2] = rig.manager.acquireControl (5);
    rig.voice->setParameterControls (&rig.controls);
    EXPECT_GT (travel(), 1.0);
}

TEST (PolyPatchControls, useOfControlsIsSeenOnlyInLayersThatPlay)
{
    ControlRig rig;
    PatchBuilder patch;
    const int out = patch.node (PatchBuilder::output);
    patch.inputEntry (out, 1, 1.0, 5);
    rig.play (patch.tree(), 0);
    EXPECT_TRUE (rig.voice->isControlInUse (5));
    EXPECT_FALSE (rig.voice->isControlInUse (4));
    rig.voice->setPatchPlaying (0, 0, false);
    EXPECT_FALSE (rig.voice->isControlInUse (5));
    EXPECT_TRUE (rig.voice->isControlUsedInLayer (0, 5));

    rig.play (patch.tree(), 3);
    EXPECT_FALSE (rig.voice->isControlInUse (5)) << "the last layer does not count";
}

TEST (PolyPatchControls, compactingClosesGapsInOrder)
{
    ControlRig rig;
    PatchBuilder patch;
    const int out = patch.node (PatchBuilder::output);
    const int controls[] { 7, 2, 2, 15, -1 };
    for (int port = 0; port < 5; ++port)
        patch.inputEntry (out, port, 1.0, controls[port]);
    rig.parse (patch.tree());
    rig.voice->compactControls (0);

    const int wanted[] { 1, 0, 0, 2, -1 };
    for (int port = 0; port < 5; ++port)
        EXPECT_EQ (rig.controlOf (out, port), wanted[port]) << port;
}

TEST (PolyPatchControls, repairFindsOrMakesASignalPath)
{
    // Output is node 0. routedPort: the output's input that something is connected to, -1 for none. The node behind
    // the output is the only one that may be wired in, and only among three nodes or more.
    const struct
    {
        const char* what;
        int routedPort;
        std::uint32_t behind;
        int nodes;
        int minNodes;
        bool playable;
        int routesIntoRoot;
    } cases[] {
        { "mono input", 0, PatchBuilder::passThrough, 3, 2, true, 1 },
        { "first panned input", 1, PatchBuilder::passThrough, 3, 2, true, 1 },
        { "pan only, wire behind", 2, PatchBuilder::passThrough, 3, 2, true, 2 },
        { "pan only, source behind", 2, PatchBuilder::constant, 3, 2, false, 1 },
        { "nothing, wire behind", -1, PatchBuilder::passThrough, 3, 2, true, 1 },
        { "nothing, two nodes", -1, PatchBuilder::passThrough, 2, 1, false, 0 },
        { "strays are wired in", 0, PatchBuilder::passThrough, 5, 5, true, 4 },
        { "more asked than there are", 0, PatchBuilder::passThrough, 3, 4, false, 1 },
    };

    for (const auto& each : cases)
    {
        SCOPED_TRACE (each.what);
        PatchBuilder patch;
        const int out = patch.node (PatchBuilder::output);
        patch.node (each.behind);
        for (int i = 2; i < each.nodes; ++i)
            patch.node (PatchBuilder::constant);
        if (each.routedPort >= 0)
            patch.route (each.nodes - 1, 0, out, each.routedPort);

        ControlRig rig;
        rig.parse (patch.tree());
        EXPECT_EQ (rig.voice->repairPatch (0, out, each.minNodes, false), each.playable);
        EXPECT_EQ (rig.voice->routesIntoNode (0, out).size(), each.routesIntoRoot);
        rig.voice->setPatchPlaying (0, 0, true);
        rig.block();
    }
}

TEST (PolyPatchControls, attributesAreSetByIdentityAndKind)
{
    ControlRig rig;
    PatchBuilder patch;
    patch.node (PatchBuilder::output);
    const int tone = patch.node (PatchBuilder::oscillator);
    const int level = patch.constantNode (0.0);
    patch.identity (tone, 77);
    patch.identity (level, 78);
    rig.parse (patch.tree());

    const auto set = [&rig] (std::uint64_t id, int attribute, MVParameterType kind, double value)
    { return rig.voice->setOperatorAttribute (0, id, attribute, static_cast<int> (kind), value, nullptr); };

    EXPECT_EQ (set (78, 0, MVParameterType::Float, 12.5), resultDone);
    EXPECT_EQ (dynamic_cast<MVOperator*> (rig.voice->nodeAt (0, level))->floatParameter (0), 12.5);
    EXPECT_EQ (set (77, 0, MVParameterType::Choice, 2.0), resultDone);
    EXPECT_EQ (dynamic_cast<MVOperator*> (rig.voice->nodeAt (0, tone))->choiceParameter (0), 2);
    EXPECT_EQ (set (77, 0, MVParameterType::Float, 0.0), resultRejected);
    EXPECT_EQ (set (78, 0, MVParameterType::Sequence, 0.0), resultRejected);
    EXPECT_EQ (set (79, 0, MVParameterType::Float, 0.0), resultDone) << "no such operator";
    EXPECT_EQ (set (78, 0, static_cast<MVParameterType> (5), 0.0), resultUnknownKind);
}

} // namespace morvanelab::test
