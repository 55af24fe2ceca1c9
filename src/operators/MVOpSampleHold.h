// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct SampleHoldAttributes
{
    std::int32_t dampingType; ///< kept in patches, not used
};
static_assert (sizeof (SampleHoldAttributes) == 4);

/** Takes a sample of its input whenever the trigger rises to 0.5, and glides to it by a tenth of the way with each
    sample. A captured value that is not finite counts as 0. */
class MVOpSampleHold final : public MVOpWithAttributes<MVOpSampleHold, SampleHoldAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpSampleHold (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void reset() override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    bool held = false;
    double heldValue = 0.0;
    double output = 0.0;
};

} // namespace morvanelab
