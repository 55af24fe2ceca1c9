// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVResampleLooper.h"
#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct SamplerAttributes
{
    double capacity;
};
static_assert (sizeof (SamplerAttributes) == 8);

/** Records its input while the trigger is at 0.5 or above and then loops the recording; see MVResampleLooper. All but
    the signal is read once a block. The start offset acts only through a control: without one the loop starts at the
    beginning. A new capacity drops the recording. */
class MVOpSampler final : public MVOpWithAttributes<MVOpSampler, SamplerAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpSampler (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override { looper.reset(); }
    std::size_t runtimeBytes() const override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void attributesChanged() override;

    MVResampleLooper looper;
};

} // namespace morvanelab
