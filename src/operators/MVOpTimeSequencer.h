// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpWithAttributes.h"
#include "operators/SequenceStage.h"

namespace morvanelab
{

struct TimeSequencerAttributes
{
    std::int16_t stageIntervals[SequenceStage::count]; ///< 32767 is one second
};
static_assert (sizeof (TimeSequencerAttributes) == 32);

/** Sends a pulse of 32 samples at the start of each stage and moves on when the stage's interval is over. An interval
   is at least 33 samples, so that pulses stay apart. A new one starts with the step away from its first stage.

    Rate (0.01 to 50), start and end offset (shares of the 16 stages; start above end runs backwards) are the sizes of
    the first samples of their inputs times the inputs' controls, and act from the next stage on. An unconnected one is
    1.0, 0.0 and 1.0. Here an input counts as connected only if the node that feeds it stands behind the first one of
    its list. */
class MVOpTimeSequencer final : public MVOpWithAttributes<MVOpTimeSequencer, TimeSequencerAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpTimeSequencer (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void attributesChanged() override;

    std::int32_t intervals[SequenceStage::count] {}; ///< in samples at rate 1
    SequenceStage stage;
    std::int32_t samplesLeft = 0; ///< of the stage, its pulse included
    std::int32_t pulseLeft = 0;
};

} // namespace morvanelab
