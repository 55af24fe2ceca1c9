// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

/** Copies its input. It also stands in for the second output operator of a patch. */
class MVOpPassThrough final : public MVOpWithAttributes<MVOpPassThrough, NoAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpPassThrough (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;
};

} // namespace morvanelab
