// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpWithAttributes.h"
#include "operators/SequenceStage.h"

namespace morvanelab
{

struct ValueSequencerAttributes
{
    std::int16_t stageValues[SequenceStage::count]; ///< 32767 is 1.0
};
static_assert (sizeof (ValueSequencerAttributes) == 32);

/** Steps through its stage values whenever the trigger rises to 0.5, and glides to each. A new one rests at 0 and goes
    to its second stage first. Start and end offset are shares of the 16 stages; with start above end the stages run
    backwards. Quantisation rounds values towards 0 to multiples of up to 0.25; smoothing is the square of what
    stays of a step after one sample. Inputs are times their controls, read with every sample. */
class MVOpValueSequencer final : public MVOpWithAttributes<MVOpValueSequencer, ValueSequencerAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpValueSequencer (MVRenderEngineAttributes* attributes,
                                 const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void reset() override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    double stageTarget (double quantization) const;

    bool triggered = false;
    SequenceStage stage;
    double target = 0.0;
    double output = 0.0;
};

} // namespace morvanelab
