// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVNoiseGenerator.h"
#include "operators/MVOpWithAttributes.h"

#include <optional>

namespace morvanelab
{

struct NoiseAttributes
{
    std::int32_t noiseType;
    std::uint8_t interpolate;
    std::uint8_t padding[3];
};
static_assert (sizeof (NoiseAttributes) == 8);

/** White or brown noise. Connected, input 1 gives the milliseconds between two values; not connected, every sample
    is a new value. Input 0 is the greatest step of the brown walk, scaled by what its control held before its last
    change. */
class MVOpNoise final : public MVOpWithAttributes<MVOpNoise, NoiseAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpNoise (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    /** The random source starts again too, by its own rule: from the clock, or from a state that was set. */
    void reset() override;
    void refreshControls() override { interval.control = trackedControl (1); }
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void attributesChanged() override;

    std::optional<MVNoiseGenerator> generator;
    PortControlTrack interval;
};

} // namespace morvanelab
