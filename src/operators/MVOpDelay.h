// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDelayLine.h"
#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct DelayAttributes
{
    double postDelayScalar;
    double maxDelay;
};
static_assert (sizeof (DelayAttributes) == 16);

/** Delays its input by a ratio, read once a block, of the longest delay, and scales what comes out. A new ratio is
   faded to over 512 samples. A new longest delay empties the line. */
class MVOpDelay final : public MVOpWithAttributes<MVOpDelay, DelayAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpDelay (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    std::size_t runtimeBytes() const override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    static constexpr double noRatio = -1.0;

    void attributesChanged() override;
    void prepareLine();

    MVDelayLine line;
    double lineSeconds = 0.0; ///< longest delay that the line was made for
    double lastRatio = noRatio;
};

} // namespace morvanelab
