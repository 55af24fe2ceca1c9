// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVBiquadFilter.h"
#include "operators/MVOpWithAttributes.h"

#include <optional>

namespace morvanelab
{

struct BiquadAttributes
{
    std::int32_t filterType; ///< a value of MVFilterType_t
};
static_assert (sizeof (BiquadAttributes) == 4);

/** A filter of second order whose level follows its input. Centre frequency in Hz and Q are read once a block and are
    glided to; a new filter type starts a new filter, which glides faster until the next reset. */
class MVOpBiquad final : public MVOpWithAttributes<MVOpBiquad, BiquadAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpBiquad (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void attributesChanged() override;
    void slowDown();

    std::optional<MVBiquadFilter> filter;
};

} // namespace morvanelab
