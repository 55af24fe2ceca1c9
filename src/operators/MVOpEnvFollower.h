// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVEnvFollower.h"
#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct EnvFollowerAttributes
{
    double decayRate;
};
static_assert (sizeof (EnvFollowerAttributes) == 8);

/** The peak level of its input: it rises at once and falls in a straight line by the decay rate each second. */
class MVOpEnvFollower final : public MVOpWithAttributes<MVOpEnvFollower, EnvFollowerAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpEnvFollower (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override { follower.reset(); }
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void attributesChanged() override { follower.setDecayStep (values.decayRate / sampleRate()); }

    MVEnvFollower follower;
};

} // namespace morvanelab
