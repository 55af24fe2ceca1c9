// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct ConstantPcmAttributes
{
    double value;
};
static_assert (sizeof (ConstantPcmAttributes) == 8);

/** The same value in every sample. */
class MVOpConstantPcm final : public MVOpWithAttributes<MVOpConstantPcm, ConstantPcmAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpConstantPcm (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;
};

} // namespace morvanelab
