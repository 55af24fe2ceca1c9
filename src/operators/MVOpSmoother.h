// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVSignalSmoother.h"
#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct SmootherAttributes
{
    std::int32_t centerSmoothPos;
};
static_assert (sizeof (SmootherAttributes) == 4);

/** A one-pole low-pass. The smoothing s, read once a block and held to 0..0.9999, gives the rate (1 - s)^5: 0 passes
    the signal unchanged. Centred at zero, an input of -1 is no smoothing and 1 the most. */
class MVOpSmoother final : public MVOpWithAttributes<MVOpSmoother, SmootherAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpSmoother (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override { smoother.reset(); }
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    double rateFor (double factor) const;

    MVSignalSmoother smoother;
};

} // namespace morvanelab
