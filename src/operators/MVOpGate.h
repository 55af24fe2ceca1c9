// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct GateAttributes
{
    std::int32_t centerMixPos;
};
static_assert (sizeof (GateAttributes) == 4);

/** Mixes signal A and signal B, sample by sample, by the fraction of a balance signal: its whole part has no effect.
    Balanced at zero, a fraction of -1 is all B and 1 all A; balanced at a half, the size of the fraction is A's share.
   A balance that is not finite counts as 0. */
class MVOpGate final : public MVOpWithAttributes<MVOpGate, GateAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpGate (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;
};

} // namespace morvanelab
