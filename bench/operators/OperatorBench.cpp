// SPDX-License-Identifier: GPL-3.0-or-later
// One benchmark for every row of the operator table, in ns per sample, and a few more where an operator has a second
// way to run. The label is the fingerprint of what was rendered.
#include "bench/dsp/DspBench.h"

#include "foundation/MVRandom.h"
#include "operators/MVOperator.h"
#include "operators/MVOperatorTable.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>

namespace morvanelab::bench
{

namespace
{

/** One operator with buffers for its ports. The outputs lie one after another, so that one fingerprint covers them. */
struct Rig
{
    explicit Rig (const OperatorSpec& spec)
    {
        registerOperators (attributes);
        op.reset (attributes.operatorFactoryFor (spec.typeId)->create (&attributes, {}));

        for (int i = 0; i < maxOperatorPorts; ++i)
        {
            inputs[i] = signals[i].data();
            outputs[i] = rendered[i].data();
            desc.inputSrcNode.add (-1);
        }

        inputCount = std::max (op->portCount (portsIn), attributes.numInputChannels);
        outputCount = std::max (op->portCount (portsOut), attributes.numOutputChannels);
    }

    void feed (int port, const Block& block)
    {
        signals[port] = block;
        desc.inputSrcNode.setItem (port, 0);
    }

    const OperatorSpec& spec() const { return op->getSpec(); }

    void process()
    {
        // An output operator adds to what is there.
        if (op->portCount (portsOut) == 0)
            for (int i = 0; i < outputCount; ++i)
                rendered[i].fill (0.0);

        op->process (inputCount, inputs, outputCount, outputs, blockSize, desc);
    }

    MVRenderEngineAttributes attributes;
    std::unique_ptr<MVOperator> op;
    MVOpExecDesc desc;
    Block signals[maxOperatorPorts] {};
    Block rendered[maxOperatorPorts] {};
    double* inputs[maxOperatorPorts] {};
    double* outputs[maxOperatorPorts] {};
    int inputCount = 0;
    int outputCount = 0;
};

/** A steady value that suits each kind of input, audio in the first one where nothing else is told. */
void feedUsual (Rig& rig)
{
    const bool isPitched = std::strstr (rig.spec().portName (rig.op->attributeData(), portsIn, 0).c_str(), "Frequency");

    for (int port = 0; port < rig.op->portCount (portsIn); ++port)
        rig.feed (port, constantBlock (0.5));
    if (rig.op->portCount (portsIn) > 0)
        rig.feed (0, isPitched ? constantBlock (440.0) : noiseBlock (0.5));
}

void feedInterval (Rig& rig)
{
    feedUsual (rig);
    rig.feed (1, constantBlock (2.0));
}

void feedWhite (Rig&) {}

void feedBrown (Rig& rig)
{
    rig.feed (0, constantBlock (0.1));
    rig.op->setChoiceParameter (0, 1);
}

void feedPitchOnly (Rig& rig) { rig.feed (5, constantBlock (110.0)); }

void feedMono (Rig& rig) { rig.feed (0, noiseBlock (0.5)); }

/** The trigger reaches the threshold in every block. */
void feedTriggers (Rig& rig)
{
    rig.feed (0, noiseBlock (0.5));
    rig.feed (1, constantBlock (1.0));
    rig.op->setFloatParameter (0, 2.5);
}

/** A whole recording, looped at an odd rate. */
void feedLoop (Rig& rig)
{
    rig.feed (0, noiseBlock (0.5));
    rig.feed (1, constantBlock (1.0));
    rig.feed (3, constantBlock (1.0));
    rig.feed (4, constantBlock (0.7));
}

void playBlocks (benchmark::State& state, const OperatorSpec& spec, void (*feed) (Rig&))
{
    MVRandom::startAllFrom (1);
    Rig rig (spec);
    feed (rig);
    rig.op->setActive (true);
    rig.op->noteEvent (69, 0.8);
    measure (state, rig.rendered[0], [&rig] { rig.process(); });
    MVRandom::startAllFromClock();
}

bool registerAll()
{
    for (const OperatorRow& row : operatorTable())
        benchmark::RegisterBenchmark (row.spec->className, playBlocks, std::cref (*row.spec), feedUsual);

    const struct
    {
        const char* name;
        const char* className;
        void (*feed) (Rig&);
    } variants[] { { "MVOpNoise/white", "MVOpNoise", feedWhite },
                   { "MVOpNoise/brown", "MVOpNoise", feedBrown },
                   { "MVOpNoise/interval", "MVOpNoise", feedInterval },
                   { "MVOpSlawvox/own source", "MVOpSlawvox", feedPitchOnly },
                   { "MVOpOutput/mono", "MVOpOutput", feedMono },
                   { "MVOpExponential/moving", "MVOpExponential", feedTriggers },
                   { "MVOpSampler/loop", "MVOpSampler", feedLoop } };

    for (const auto& variant : variants)
        benchmark::RegisterBenchmark (variant.name, playBlocks,
                                      std::cref (*findOperatorSpec (std::string_view (variant.className))),
                                      variant.feed);
    return true;
}

const bool registered = registerAll();

} // namespace

} // namespace morvanelab::bench
