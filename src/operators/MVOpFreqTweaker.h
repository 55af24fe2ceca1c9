// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVCircularBuffer.h"
#include "dsp/MVFreqTweaker.h"
#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct FreqTweakerAttributes
{
    std::int32_t algorithm;
};
static_assert (sizeof (FreqTweakerAttributes) == 4);

/** Rewrites the spectrum of its first input by one of the twelve algorithms of MVFreqTweaker, which tells what the
    second and the third input do to each. The third is read once a block, times its scale and its control; the second
    is a signal to some algorithms, and to others gives one value a hop of 512 samples.

    The work is done hop by hop, whatever the block size: the first 512 samples after a start are silent, and at blocks
    of 256 an unchanged signal leaves 768 samples late. With blocks that do not divide a hop, the output may run dry for
    some samples while it settles. */
class MVOpFreqTweaker final : public MVOpWithAttributes<MVOpFreqTweaker, FreqTweakerAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpFreqTweaker (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    std::size_t runtimeBytes() const override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    static constexpr int hopBytes = MVFreqTweaker::hopSize * int { sizeof (double) };
    /** Between two blocks, input rings hold less than a hop and a block, and the output ring less than two hops. */
    static constexpr int ringBytes = 4 * hopBytes;

    void attributesChanged() override { tweaker.setAlgorithm (values.algorithm); }
    void tweakWaitingHops (double control);
    void readOutput (double* out, int frames);

    MVFreqTweaker tweaker;
    MVCircularBuffer inputA { ringBytes };
    MVCircularBuffer inputB { ringBytes };
    MVCircularBuffer output { ringBytes };
    int silentSamples = MVFreqTweaker::hopSize; ///< how many of the start are still to come
};

} // namespace morvanelab
