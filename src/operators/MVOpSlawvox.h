// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVBiquadFilter.h"
#include "dsp/MVNoiseGenerator.h"
#include "dsp/MVPowerFollower.h"
#include "dsp/MVPulseWidthMod.h"
#include "operators/MVOpWithAttributes.h"
#include "operators/VowelMap.h"

#include <array>

namespace morvanelab
{

enum MVFilterTopology_t : std::int32_t
{
    topologySeries = 1,
    topologyParallel = 2
};

struct SlawvoxAttributes
{
    std::int32_t filterTopology; ///< a value of MVFilterTopology_t
    std::uint32_t quaverDepth;   ///< 32767 is 1
    std::uint32_t quaverRate;    ///< 32767 is 16 Hz
    std::uint32_t breathiness;   ///< 32767 is 1
};
static_assert (sizeof (SlawvoxAttributes) == 16);

/** A voice: a glottal source through four band-passes at the formants of a vowel.

    Without a signal in input 0 it runs a source of its own, at the pitch in Hz of input 5, with breath noise. The
    vowel is chosen on a plane; articulation is how fast the filters move to it (1 at once). Reduction draws the
    formants towards the middle of the first two. The first sample of input 5, held to 0 to 4, also shifts them: 0
    halves them, 0.25 leaves them as they are. All of this is read once a block, and a change is all that costs.

    In series the source runs through the filters one after another. In parallel filters 2 to 4 always listen to
    input 0, so that the voice's own source is heard through the first only. The level follows the source, one block
    late. Quaver depths up to 0.01 are none. */
class MVOpSlawvox final : public MVOpWithAttributes<MVOpSlawvox, SlawvoxAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpSlawvox (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    void setActive (bool flag) override;
    void reset() override;
    void refreshControls() override { pitch.control = trackedControl (5); }
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;

private:
    struct Formant
    {
        MVBiquadFilter filter;
        double quaverPosition = 0.0; ///< in the sine table, moved once a block
        double quaverStep = 0.0;
    };

    void attributesChanged() override;
    void start();
    void findQuaverSteps();
    const double* ownSource (double* buffer, const double* pitchSignal, int frames);
    void articulate (double speed);
    void moveFormants (int newVowel, double newReduction, double newShift);
    void quaver();
    void filterInSeries (double* out, const double* source, int frames);
    void filterInParallel (double* out, const double* source, const double* input, int frames);

    double quaverDepth = 0.0;
    double quaverRate = 0.0; ///< in Hz
    double breathiness = 0.0;

    int vowel = 0;
    double shift = 0.0;
    double articulation = 0.0;
    double reduction = 0.0;

    std::array<Formant, formantCount> formants;
    MVPulseWidthMod glottis;
    MVNoiseGenerator breath;
    MVPowerFollower level;
    PortControlTrack pitch;
    const double* sine = nullptr;
};

} // namespace morvanelab
