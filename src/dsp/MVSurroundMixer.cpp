// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVSurroundMixer.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <cmath>

namespace morvanelab
{

namespace
{

/** The table's entry for a share of the power; not a number and negative shares read entry 0. */
int panEntry (double share)
{
    constexpr double last = MVSignalDistorter::tableSize - 1;
    const double place = share * MVSignalDistorter::tableSize;
    const double above = place > 0.0 ? place : 0.0;
    return static_cast<int> (above < last ? above : last);
}

} // namespace

MVSurroundMixer::MVSurroundMixer()
{
    panLaw.setMode (MVSignalDistorter::modePower);
    panLaw.setPower (0.5);
    panLaw.rebuild();
}

MVSurroundMixer& MVSurroundMixer::instance()
{
    static MVSurroundMixer shared;
    return shared;
}

void MVSurroundMixer::mix (double* const* channels, int channelCount, const double* signal, const double* panSignal,
                           const double* /*third*/, const double* /*fourth*/, int frames, double panStart,
                           double panEnd, double gainStart, double gainEnd) const
{
    if (channelCount > 2)
        channelCount -= channelCount % 2;

    if (channelCount == 1)
        rampMix (channels[0], signal, frames, gainStart, gainEnd);
    else if (channelCount == 2)
        mixPair (channels[0], channels[1], signal, panSignal, frames, panStart, panEnd, gainStart, gainEnd);
    else if (channelCount > 2)
        mixRing (channels, channelCount, signal, panSignal, frames, panStart, panEnd, gainStart, gainEnd);
}

void MVSurroundMixer::mixPair (double* left, double* right, const double* signal, const double* panSignal, int frames,
                               double panStart, double panEnd, double gainStart, double gainEnd) const
{
    const double* const law = panLaw.getTable();
    const double panStep = (panEnd - panStart) / frames;
    const double gainStep = (gainEnd - gainStart) / frames;

    // Mostly the position stands still, and then is looked up once.
    if (panStart == panEnd && std::isfinite (panStart) && blockIsConstant (panSignal, frames))
    {
        const double p = frames > 0 ? panStart * panSignal[0] : 0.0;
        const double leftShare = law[panEntry (std::abs (1.0 - p))];
        const double rightShare = law[panEntry (std::abs (p))];
        for (int i = 0; i < frames; ++i)
        {
            const double gain = gainStart + i * gainStep;
            left[i] += leftShare * signal[i] * gain;
            right[i] += rightShare * signal[i] * gain;
        }
        return;
    }

    for (int i = 0; i < frames; ++i)
    {
        const double p = (panStart + i * panStep) * panSignal[i];
        const double gain = gainStart + i * gainStep;
        left[i] += law[panEntry (std::abs (1.0 - p))] * signal[i] * gain;
        right[i] += law[panEntry (std::abs (p))] * signal[i] * gain;
    }
}

void MVSurroundMixer::mixRing (double* const* channels, int channelCount, const double* signal, const double* panSignal,
                               int frames, double panStart, double panEnd, double gainStart, double gainEnd) const
{
    const double* const law = panLaw.getTable();
    const double panStep = (panEnd - panStart) / frames;
    const double gainStep = (gainEnd - gainStart) / frames;
    // Four channels have no inner pair: everything plays between the last two, unscaled.
    const int inner = channelCount / 2 - 2;
    const double factor = inner > 0 ? 2.0 / inner : 1.0;
    const int lastPair = channelCount - 2;

    for (int i = 0; i < frames; ++i)
    {
        const double p = (panStart + i * panStep) * panSignal[i] * factor;
        const int whole = truncToInt (p);
        const int pair = inner > 0 && p >= 0.0 && whole < lastPair ? whole : lastPair;
        const double place = inner > 0 ? p - whole : p;
        const double gain = gainStart + i * gainStep;
        channels[pair][i] += law[panEntry (std::abs (1.0 - place))] * signal[i] * gain;
        channels[pair + 1][i] += law[panEntry (std::abs (place))] * signal[i] * gain;
    }
}

} // namespace morvanelab
