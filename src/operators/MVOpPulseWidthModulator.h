// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVPulseWidthMod.h"
#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct PulseWidthModulatorAttributes
{
    std::int32_t pulseType;
    std::int32_t modulationType;
};
static_assert (sizeof (PulseWidthModulatorAttributes) == 8);

/** A pulse from a wave table whose width and shape are controlled once a block. Width and modulation, each 0 to 1,
    are the first sample of their input times the input's control. */
class MVOpPulseWidthModulator final : public MVOpWithAttributes<MVOpPulseWidthModulator, PulseWidthModulatorAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpPulseWidthModulator (MVRenderEngineAttributes* attributes,
                                      const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    void refreshControls() override { frequency.control = trackedControl (0); }
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void attributesChanged() override;

    MVPulseWidthMod pulse;
    PortControlTrack frequency;
};

} // namespace morvanelab
