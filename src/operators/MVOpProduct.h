// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpVariableInputs.h"

namespace morvanelab
{

/** Multiplies its inputs, each under its gain. Inputs beyond the first count only while they are connected. There is
    no limit of level. */
class MVOpProduct final : public MVOpVariableInputs<MVOpProduct>
{
public:
    static const OperatorSpec spec;

    explicit MVOpProduct (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    /** Refused if it is the present count, or 64 and more; bounded to 16. Outputs beyond the first are silent. */
    bool setPortCount (int direction, int count) override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;
};

} // namespace morvanelab
