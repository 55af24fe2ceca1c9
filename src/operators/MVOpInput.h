// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct InputAttributes
{
    std::int32_t inputChannel;
};
static_assert (sizeof (InputAttributes) == 4);

/** One channel of the host's input. Its process is given the host's channels as inputs, though the operator has no
    input ports; without the channel it is silent. */
class MVOpInput final : public MVOpWithAttributes<MVOpInput, InputAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpInput (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;
};

} // namespace morvanelab
