// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVOscillator.h"
#include "operators/MVOpWithAttributes.h"

#include <optional>

namespace morvanelab
{

struct OscillatorAttributes
{
    double phase;
    std::int32_t functionType;
    std::int32_t padding;
};
static_assert (sizeof (OscillatorAttributes) == 16);

/** A table oscillator. Its frequency in Hz is the input signal times the input's scale and control, the latter
    ramped over the block. Any change of a parameter makes a new generator, so it restarts the period. */
class MVOpOscillator final : public MVOpWithAttributes<MVOpOscillator, OscillatorAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpOscillator (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    void refreshControls() override { frequency.control = trackedControl (0); }
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void attributesChanged() override;

    std::optional<MVOscillator> oscillator;
    PortControlTrack frequency;
};

} // namespace morvanelab
