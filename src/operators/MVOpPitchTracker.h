// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpWithAttributes.h"

#include <array>

namespace morvanelab
{

/** Turns the strongest part of a signal's spectrum into a control signal in Hz. Every 256 samples the strongest bin b
    of 128 is found, and the output glides over a block to ((128 - b) / 128) * sample rate / 2. It falls as the bin
    rises: of the two bins in which a tone shows (see MVFreqTweaker.h), the mirror image is the stronger one, so this is
    the tone's frequency, in steps of 1 / 256 of the sample rate. Silence, whose strongest bin is -1, gives a little
   more than half the sample rate.

    A block that is longer than what a frame still lacks loses the rest. */
class MVOpPitchTracker final : public MVOpWithAttributes<MVOpPitchTracker, NoAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpPitchTracker (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    static constexpr int frameSize = 256;

    double pitchOfFrame();

    std::array<double, frameSize> frame {};
    std::int32_t fill = 0;
    double lastPitch = 0.0;
};

} // namespace morvanelab
