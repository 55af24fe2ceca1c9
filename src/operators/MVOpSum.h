// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpVariableInputs.h"

namespace morvanelab
{

/** Adds its inputs, each under its gain, and holds the mean level of a block to 32768. */
class MVOpSum final : public MVOpVariableInputs<MVOpSum>
{
public:
    static const OperatorSpec spec;

    explicit MVOpSum (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    /** Inputs only: refused if it is the present count, or 16 and more. */
    bool setPortCount (int direction, int count) override;
    void reset() override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void limitLevel (double* out, int frames);

    double lastGain = 1.0;
};

} // namespace morvanelab
