// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVSignalDistorter.h"
#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct SignalShaperAttributes
{
    struct Point
    {
        std::int32_t x;
        std::int32_t y;
    };

    std::int32_t count;
    Point points[maxListEntries]; ///< 32767 is 1.0
};
static_assert (sizeof (SignalShaperAttributes) == 132);

/** Bends its input along a drawn curve: -1 is the curve's start and 1 its end, across and upward. The input is scaled
   by the scale and the control of its port first; a control is followed over the block. */
class MVOpSignalShaper final : public MVOpWithAttributes<MVOpSignalShaper, SignalShaperAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpSignalShaper (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void reset() override { scale.reset(); }
    void refreshControls() override { scale.control = trackedControl (0); }
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void attributesChanged() override;

    MVSignalDistorter distorter;
    PortControlTrack scale;
};

} // namespace morvanelab
