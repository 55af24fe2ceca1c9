// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct RouterAttributes
{
    std::int32_t maxChangeTime;
    std::int32_t padding;
    double stepStride;
    double stepOffset;
};
static_assert (sizeof (RouterAttributes) == 24);

/** Sends its input to one of 16 outputs, four sets of four. Address X chooses the set, address Y the output in it;
    a change fades over, and while a fade runs no new address is read. Addresses and interval are the first samples
    of their inputs. */
class MVOpRouter final : public MVOpWithAttributes<MVOpRouter, RouterAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpRouter (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    void attributesChanged() override;
    void readAddress (const double* const* inputs);
    void startFade (int route, double interval);
    int renderFade (const double* in, double* const* outputs, int frames);

    int currentRoute = 0;
    int previousRoute = 0;
    int fadeSamples = 0; ///< left of the fade that runs; 0 if none does
    double fade = 0.0;   ///< gain of the previous route
    double fadeStep = 0.0;
    int maxChangeSamples = 0;
    double strideInverse = 1.0;
    double offsetInverse = 1.0;
};

} // namespace morvanelab
