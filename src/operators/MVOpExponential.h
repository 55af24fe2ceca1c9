// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVExponentialPulse.h"
#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct ExponentialAttributes
{
    double attackVelocity;
    double decayVelocity;
    double fullOn;
    double fullOff;
    double attackDuration;
    double releaseDuration;
    double threshold;
};
static_assert (sizeof (ExponentialAttributes) == 56);

/** An attack and a decay along power curves, and its input scaled by them. A peak of the trigger's block that reaches
    the threshold starts the envelope, and starts it again with every such block, from the level reached. */
class MVOpExponential final : public MVOpWithAttributes<MVOpExponential, ExponentialAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpExponential (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override { pulse.reset(); }
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void attributesChanged() override;
    bool isTriggered (const double* in, int frames, const MVOpExecDesc& desc) const;

    MVExponentialPulse pulse;
};

} // namespace morvanelab
