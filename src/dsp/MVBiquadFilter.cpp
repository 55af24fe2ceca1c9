// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVBiquadFilter.h"

#include "dsp/MVWaveforms.h"
#include "foundation/MVMath.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace morvanelab
{

namespace
{

constexpr double lowestFrequency = 16.0;
constexpr double lowestBandwidth = dspSmallValue;
constexpr double highestBandwidth = 32.0;
/** The band that the computation itself can use is narrower than what the setter takes. */
constexpr double lowestUsedBandwidth = 9.999999747378752e-05;
constexpr double highestUsedBandwidth = 4.0;
constexpr double lowestOmega = 0.015707964077591896;
constexpr double highestOmega = 1.533097267150879;
constexpr double initialSmoothing = 0.009999999776482582;
constexpr double lowestQuaverRate = 0.009999999776482582;
constexpr double highestQuaverRate = 60.0;
constexpr double quaverPush = 0.02500000037252903;

/** Unnormalised coefficients; the denominator is {a0, a1, a2}. */
struct Prototype
{
    double b0, b1, b2, a0, a1, a2;
};

Prototype prototypeFor (std::int32_t type, double w, double q)
{
    const double sine = std::sin (w);
    const double cosine = std::cos (w);
    const bool banded = type == filterBandpass || type == filterNotch;
    const double alpha = banded ? std::sinh (0.6931471805599453 / 2.0 * q * w / sine) * sine : sine / (2.0 * q);

    Prototype p { 0.0, 0.0, 0.0, 1.0 + alpha, -2.0 * cosine, 1.0 - alpha };

    switch (type)
    {
        case filterLowpass:
            p.b0 = p.b2 = (1.0 - cosine) / 2.0;
            p.b1 = 1.0 - cosine;
            break;
        case filterHighpass:
            p.b0 = p.b2 = (1.0 + cosine) / 2.0;
            p.b1 = -1.0 - cosine;
            break;
        case filterNotch:
            p.b0 = p.b2 = 1.0;
            p.b1 = -2.0 * cosine;
            break;
        case filterAllpass:
            p.b0 = 1.0 - alpha;
            p.b1 = -2.0 * cosine;
            p.b2 = 1.0 + alpha;
            break;
        default:
            p.b0 = alpha;
            p.b2 = -alpha;
            break;
    }

    return p;
}

void glide (double& value, double target, double rate) { value += (target - value) * rate; }

/** Whether a further step of the glide gives the very same bits. */
bool stands (double value, double target, double rate)
{
    double next = value;
    glide (next, target, rate);
    return std::bit_cast<std::uint64_t> (next) == std::bit_cast<std::uint64_t> (value);
}

void glideAll (MVBiquadFilter::Coefficients& c, const MVBiquadFilter::Coefficients& goal, double rate)
{
    glide (c.a1, goal.a1, rate);
    glide (c.a2, goal.a2, rate);
    glide (c.b0, goal.b0, rate);
    glide (c.b1, goal.b1, rate);
    glide (c.b2, goal.b2, rate);
}

void pushNumerator (MVBiquadFilter::Coefficients& c, double push)
{
    c.b0 *= push;
    c.b1 *= push;
    c.b2 *= push;
}

/** A step is shorter than the table. */
double nextQuaverPosition (double position, double step)
{
    const double next = position + step;
    return next >= MVWaveforms::tableSize ? next - MVWaveforms::tableSize : next;
}

/** What may reach the next operator: a finite number that is 0 or no nearer to 0 than a signal is. */
double usable (double y)
{
    const double size = std::abs (y);
    const bool good = ((size >= dspNearZero) & (size <= std::numeric_limits<double>::max())) | (size == 0.0);
    return good ? y : dspSmallValue;
}

} // namespace

void MVBiquadFilter::init (bool on, double newRate)
{
    MVDspBase::init (on, newRate);
    sampleRate = newRate;
    smoothing = initialSmoothing;
    quaverTable = MVWaveforms::instance().table (waveSinePeriod);
    reset();
}

void MVBiquadFilter::reset()
{
    firstRun = true;
    dirty = true;
    gain = nextGain = 1.0;
    z1 = z2 = 0.0;
    current = target = Coefficients {};
    quaverPosition = 0.0;
}

void MVBiquadFilter::setFrequency (double hz)
{
    if (hz == frequency)
        return;

    double held = limitTo (hz, lowestFrequency, std::numeric_limits<double>::infinity());
    if (held > sampleRate * 0.5)
        held = sampleRate * 0.5;

    // A request that is held to what is set already changes no coefficient.
    dirty = dirty || held != frequency;
    frequency = held;
}

void MVBiquadFilter::setBandwidth (double q)
{
    if (q == bandwidth)
        return;

    bandwidth = limitTo (q, lowestBandwidth, highestBandwidth);
    dirty = true;
}

void MVBiquadFilter::setQuaver (double depth, double rateHz)
{
    quaverDepth = limitTo (depth, 0.0, 1.0);

    const double step = MVWaveforms::tableSize * limitTo (rateHz, lowestQuaverRate, highestQuaverRate) / sampleRate;
    const bool usableStep = std::isfinite (step) && step >= 0.0;
    quaverStep = usableStep ? std::fmod (step, static_cast<double> (MVWaveforms::tableSize)) : 0.0;
}

void MVBiquadFilter::setFilterType (std::int32_t type)
{
    if (type < filterLowpass || type > filterAllpass || type == filterType)
        return;

    filterType = type;
    dirty = true;
}

void MVBiquadFilter::setSmoothing (double rate) { smoothing = limitTo (rate, 0.0, 1.0); }

void MVBiquadFilter::updateCoefficients()
{
    const double w = limitTo (frequency * 2.0 / sampleRate * dspPi, lowestOmega, highestOmega);
    bandwidth = limitTo (bandwidth, lowestUsedBandwidth, highestUsedBandwidth);

    const Prototype p = prototypeFor (filterType, w, bandwidth);
    target = { p.a1 / p.a0, p.a2 / p.a0, p.b0 / p.a0, p.b1 / p.a0, p.b2 / p.a0 };

    if (firstRun)
        current = target;

    firstRun = false;
    dirty = false;
}

bool MVBiquadFilter::isSettled() const
{
    return stands (current.a1, target.a1, smoothing) && stands (current.a2, target.a2, smoothing)
           && stands (current.b0, target.b0, smoothing) && stands (current.b1, target.b1, smoothing)
           && stands (current.b2, target.b2, smoothing);
}

void MVBiquadFilter::process (double* out, const double* in, int frames, bool applyGain)
{
    if (frames <= 0)
        return;
    if (dirty)
        updateCoefficients();

    // Without the gain option every sample is scaled by exactly 1.
    const double start = applyGain ? gain : 1.0;
    const double step = applyGain ? (nextGain - gain) / frames : 0.0;
    const double ratio = filter (out, in, frames, start, step);

    if (applyGain)
    {
        gain = nextGain;
        nextGain = ratio < 1.0 ? ratio : 1.0;
    }

    recover();
}

/** Returns the level of the input over that of the unscaled output. */
double MVBiquadFilter::filter (double* out, const double* in, int frames, double start, double step)
{
    if (quaverDepth > 0.0 && quaverTable != nullptr)
        return filterBlock<Motion::quavering> (out, in, frames, start, step);

    // Without depth the push is a factor of exactly 1, so only its position moves on.
    advanceQuaver (frames);
    return isSettled() ? filterBlock<Motion::none> (out, in, frames, start, step)
                       : filterBlock<Motion::gliding> (out, in, frames, start, step);
}

/** The recursion in the order y = x b0 + z1, z1 = x b1 - y a1 + z2, z2 = b2 x - y a2: another order rounds
    differently. */
template <MVBiquadFilter::Motion motion>
double MVBiquadFilter::filterBlock (double* out, const double* in, int frames, double start, double step)
{
    Coefficients c = current;
    const Coefficients t = target;
    const double rate = smoothing;
    const double depth = quaverDepth * quaverPush;
    double s1 = z1, s2 = z2, inSum = 0.0, outSum = 0.0, position = quaverPosition;

    for (int i = 0; i < frames; ++i)
    {
        const double x = in[i];
        const double y = x * c.b0 + s1;
        s1 = x * c.b1 - y * c.a1 + s2;
        s2 = c.b2 * x - y * c.a2;
        out[i] = usable (y * (start + i * step));
        inSum += x * x;
        outSum += y * y;

        if constexpr (motion != Motion::none)
            glideAll (c, t, rate);
        if constexpr (motion == Motion::quavering)
        {
            pushNumerator (c, 1.0 + depth * quaverTable[static_cast<int> (position)]);
            position = nextQuaverPosition (position, quaverStep);
        }
    }

    current = c;
    z1 = s1;
    z2 = s2;
    quaverPosition = position;
    return outSum == 0.0 ? 1.0 : std::sqrt (inSum / outSum);
}

void MVBiquadFilter::advanceQuaver (int frames)
{
    if (quaverStep == 0.0)
        return;

    double position = quaverPosition;
    for (int i = 0; i < frames; ++i)
        position = nextQuaverPosition (position, quaverStep);
    quaverPosition = position;
}

/** Sound returns with the next block after anything has left the finite numbers. */
void MVBiquadFilter::recover()
{
    if (! (std::isfinite (z1) && std::isfinite (z2)))
        z1 = z2 = 0.0;

    // A long, deep quaver under a slow glide can push the numerator out of range.
    const auto restore = [] (double& value, double goal)
    {
        if (! std::isfinite (value))
            value = goal;
    };
    restore (current.b0, target.b0);
    restore (current.b1, target.b1);
    restore (current.b2, target.b2);
}

} // namespace morvanelab
