// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOpWithAttributes.h"

namespace morvanelab
{

struct AdsrEnvelopeAttributes
{
    double attack;
    double decay;
    double release;
    double sustainRatio;
    double triggerThreshold;
};
static_assert (sizeof (AdsrEnvelopeAttributes) == 40);

/** A straight-line envelope of attack, decay, sustain and release, and its input scaled by it. The trigger is the first
    sample of its input's block: above the threshold it starts an idle or releasing envelope, near 0 it releases one.
    A retrigger during release rises from the level reached, by a whole attack. */
class MVOpAdsrEnvelope final : public MVOpWithAttributes<MVOpAdsrEnvelope, AdsrEnvelopeAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpAdsrEnvelope (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    enum class Stage
    {
        idle,
        attack,
        decay,
        sustain,
        release
    };

    void attributesChanged() override;
    void readTrigger (double trigger);
    void enter (Stage next);
    void render (double* out, int frames);
    int ramp (double* out, int room, int length, double step);
    int fall (double* out, int room);

    Stage stage = Stage::idle;
    int stageSample = 0; ///< samples done of the stage
    double level = 0.0;
    int attackSamples = 1;
    int decaySamples = 1;
    int releaseSamples = 1;
    double attackStep = 0.0;
    double decayStep = 0.0;
    double releaseStep = 0.0;
};

} // namespace morvanelab
