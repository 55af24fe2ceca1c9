// SPDX-License-Identifier: GPL-3.0-or-later
// The twelve edits of a spectrum: workOut, which is clear, from frameA, frameB and the control.
#include "dsp/MVBlockMath.h"
#include "dsp/MVFreqTweaker.h"
#include "dsp/MVSpectralMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace morvanelab
{

namespace
{

constexpr int binCount = MVFreqTweaker::hopSize;
/** Bins of a half spectrum; the lower half ends at the last of them. */
constexpr int halfCount = binCount / 2;
constexpr double lastLowerBin = halfCount - 1;

/** How far from a bin "Morph" looks for the strongest one. */
constexpr int peakReach = 64;
/** What "Blur" takes for nothing, before numbers get so small that they cost time. */
constexpr double negligible = 1e-200;

struct Bin
{
    double re;
    double im;
};

Bin binAt (const std::vector<double>& spectrum, int bin)
{
    const auto place = static_cast<std::size_t> (2 * bin);
    return { spectrum[place], spectrum[place + 1] };
}

void setBin (std::vector<double>& spectrum, int bin, Bin value)
{
    const auto place = static_cast<std::size_t> (2 * bin);
    spectrum[place] = value.re;
    spectrum[place + 1] = value.im;
}

void addBin (std::vector<double>& spectrum, int bin, Bin value, double weight)
{
    const auto place = static_cast<std::size_t> (2 * bin);
    spectrum[place] += value.re * weight;
    spectrum[place + 1] += value.im * weight;
}

/** The bin that carries the other half of what bin carries; bin 0 is its own. */
int mirrored (int bin) { return (binCount - bin) % binCount; }

/** The factor that keeps a bin's phase at the middle of the frame, where the window is open, when the bin moves:
    neighbours that meet then add up instead of cancelling each other. */
double movedSign (int from, int to) { return (from - to) % 2 == 0 ? 1.0 : -1.0; }

/** What toPolar and back makes of a bin. */
Bin throughPolar (Bin bin)
{
    if (bin.re == 0.0)
        return { std::abs (bin.im), 0.0 };
    return { std::abs (bin.re), bin.re < 0.0 ? -bin.im : bin.im };
}

/** Sets a bin to what another one holds, moved. */
void moveBin (std::vector<double>& out, int bin, const std::vector<double>& in, int source)
{
    const Bin value = binAt (in, source);
    const double sign = movedSign (source, bin);
    setBin (out, bin, { value.re * sign, value.im * sign });
}

double magnitude (Bin bin) { return std::sqrt (bin.re * bin.re + bin.im * bin.im); }

/** Cosine and sine of the polar phase of a bin, the arc tangent of im / re. */
Bin phaseVector (Bin bin)
{
    constexpr double squareable = 1e150;
    if (bin.re == 0.0)
        return { 1.0, 0.0 };

    const double tangent = bin.im / bin.re;
    if (! (std::abs (tangent) < squareable))
        return { 0.0, std::copysign (1.0, tangent) };
    const double cosine = 1.0 / std::sqrt (1.0 + tangent * tangent);
    return { cosine, tangent * cosine };
}

/** Takes magnitudes of one spectrum and phases of the other. */
void combine (std::vector<double>& out, const std::vector<double>& magnitudes, const std::vector<double>& phases)
{
    for (int k = 0; k < binCount; ++k)
        addBin (out, k, phaseVector (binAt (phases, k)), magnitude (binAt (magnitudes, k)));
}

bool isSilent (const std::vector<double>& spectrum)
{
    return std::all_of (spectrum.begin(), spectrum.end(), [] (double value) { return value == 0.0; });
}

using Peaks = std::array<int, halfCount>;

/** For every second bin the strongest one within reach, or -1 if there is nothing but silence. Candidates wait in a
    queue of falling strength, so that each bin is looked at once. */
Peaks findPeaks (const std::vector<double>& spectrum)
{
    std::array<double, binCount> power {};
    for (int k = 0; k < binCount; ++k)
    {
        const Bin bin = binAt (spectrum, k);
        power[static_cast<std::size_t> (k)] = bin.re * bin.re + bin.im * bin.im;
    }

    Peaks peaks {};
    std::array<std::size_t, binCount> queue {};
    std::size_t head = 0, tail = 0, next = 0;

    for (std::size_t k = 0; k < binCount; k += 2)
    {
        for (; next < binCount && next <= k + peakReach; ++next)
        {
            while (tail > head && power[queue[tail - 1]] < power[next])
                --tail;
            queue[tail++] = next;
        }
        while (queue[head] + peakReach < k)
            ++head;
        peaks[k / 2] = power[queue[head]] > 0.0 ? static_cast<int> (queue[head]) : -1;
    }

    return peaks;
}

/** Adds the polar image of a bin, moved and weighted; what leaves the spectrum is lost. */
void addMoved (std::vector<double>& out, const std::vector<double>& in, int bin, int distance, double weight)
{
    const int target = bin + distance;
    if (target >= 0 && target < binCount)
        addBin (out, target, throughPolar (binAt (in, bin)), weight);
}

/** One pole over the line from 0, up (step 1) or down (step -1). */
void smoothLine (std::vector<double>& line, double rate, bool upwards)
{
    double value = 0.0;
    for (std::size_t i = 0; i < line.size(); ++i)
    {
        double& entry = line[upwards ? i : line.size() - 1 - i];
        value += (entry - value) * rate;
        value = value > negligible ? value : 0.0;
        entry = value;
    }
}

} // namespace

void MVFreqTweaker::copyA() { workOut = frameA; }

void MVFreqTweaker::stretch (double control)
{
    const double factor = limitTo (control, 0.009999999776482582, 16.0);
    if (factor == 1.0)
    {
        copyA();
        return;
    }

    toPolar (binCount, frameA.data());
    const double step = 1.0 / factor;

    for (int k = 0; k < binCount; ++k)
    {
        const double position = k * step;
        if (position >= binCount)
            break;

        const int below = static_cast<int> (position);
        const double share = position - below;
        const Bin low = binAt (frameA, below);
        const Bin high = below + 1 < binCount ? binAt (frameA, below + 1) : Bin { 0.0, 0.0 };
        const double stretched = (1.0 - share) * low.re + share * high.re;
        const double phase = (1.0 - share) * low.im + share * high.im;
        setBin (workOut, k, { stretched * std::cos (phase), stretched * std::sin (phase) });
    }
}

void MVFreqTweaker::shift (double control)
{
    const int distance = truncToInt (wrapToRange (control, -1.0, 1.0) * hopSize / 2.0);
    const int first = std::max (0, -distance);
    const int end = std::min (binCount, binCount - distance);
    for (int k = first; k < end; ++k)
        setBin (workOut, k + distance, throughPolar (binAt (frameA, k)));
}

void MVFreqTweaker::convolve (double)
{
    for (int k = 0; k < binCount; ++k)
    {
        const Bin a = binAt (frameA, k);
        const Bin b = binAt (frameB, k);
        setBin (workOut, k, { a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re });
    }
}

void MVFreqTweaker::convolveSelf (double)
{
    for (int k = 0; k < binCount; ++k)
    {
        const Bin a = binAt (frameA, k);
        setBin (workOut, k, { a.re * a.re - a.im * a.im, 2.0 * a.re * a.im });
    }
}

void MVFreqTweaker::swapPhases (double)
{
    // Bins of silence would lend their phase of 0 to the other signal.
    if (! isSilent (frameA))
        combine (workOut, frameB, frameA);
}

void MVFreqTweaker::swapMagnitudes (double) { combine (workOut, frameA, frameB); }

void MVFreqTweaker::reverse (double)
{
    for (int k = 0; k < halfCount; ++k)
    {
        const double weight = std::max (0.0, 1.0 - k * (0.98 / (fftSize / 4)));
        addBin (workOut, k, binAt (frameA, halfCount - 1 - k), weight);
        addBin (workOut, halfCount + k, binAt (frameA, binCount - 1 - k), weight);
    }
}

void MVFreqTweaker::wrap (double control)
{
    const int distance = truncToInt (wrapToRange (control, 0.0, 1.0) * hopSize);
    if (distance > 0 && distance < fftSize - 2)
        std::rotate_copy (frameA.begin(), frameA.end() - distance, frameA.end(), workOut.begin());
    else
        copyA();
}

void MVFreqTweaker::twist (double control)
{
    const double centre = wrapToRange (frameB[0], 0.0, 1.0) * lastLowerBin;
    const double spread = wrapToRange (control, 0.0, 1.0) * lastLowerBin;
    copyA();

    for (int k = 0; k < halfCount; ++k)
    {
        const double offset = k - centre;
        if (! (std::abs (offset) < spread))
            continue;

        double position = std::abs (centre + offset * (2.0 * std::abs (offset) / spread - 1.0));
        position = position > lastLowerBin ? 2.0 * lastLowerBin - position : position;
        const int source = std::clamp (truncToInt (position + 0.5), 0, halfCount - 1);
        moveBin (workOut, k, frameA, source);
        if (k > 0)
            moveBin (workOut, mirrored (k), frameA, mirrored (source));
    }
}

void MVFreqTweaker::attract (double control)
{
    const double exponent = std::exp2 (limitTo (frameB[0], -10.0, 10.0));
    const double centre = wrapToRange (control, 0.0, 1.0) * lastLowerBin;
    if (exponent == 1.0)
    {
        copyA();
        return;
    }

    const auto wayToEnd = [centre] (int k) { return k < centre ? -centre : lastLowerBin - centre; };
    std::array<double, halfCount> shares {};
    for (int k = 0; k < halfCount; ++k)
        if (const double way = wayToEnd (k); way != 0.0)
            shares[static_cast<std::size_t> (k)] = (k - centre) / way;
    powBlock (shares.data(), shares.data(), halfCount, exponent);

    for (int k = 0; k < halfCount; ++k)
    {
        const double position =
            limitTo (centre + wayToEnd (k) * shares[static_cast<std::size_t> (k)], 0.0, lastLowerBin);
        const int below = static_cast<int> (position);
        const int above = std::min (below + 1, halfCount - 1);
        const double share = position - below;

        const double sign = movedSign (k, below);
        addBin (workOut, below, binAt (frameA, k), (1.0 - share) * sign);
        addBin (workOut, above, binAt (frameA, k), -share * sign);
        if (k > 0)
        {
            addBin (workOut, mirrored (below), binAt (frameA, mirrored (k)), (1.0 - share) * sign);
            addBin (workOut, mirrored (above), binAt (frameA, mirrored (k)), -share * sign);
        }
    }

    setBin (workOut, halfCount, binAt (frameA, halfCount));
}

void MVFreqTweaker::morph (double control)
{
    const double balance = wrapToRange (control, 0.0, 1.0);
    if (balance == 0.0 || balance == 1.0)
    {
        workOut = balance == 0.0 ? frameA : frameB;
        return;
    }

    const Peaks peaksA = findPeaks (frameA);
    const Peaks peaksB = findPeaks (frameB);

    for (int pair = 0; pair < halfCount; ++pair)
    {
        const int peakA = peaksA[static_cast<std::size_t> (pair)];
        const int peakB = peaksB[static_cast<std::size_t> (pair)];
        const int distance = peakA >= 0 && peakB >= 0 ? peakB - peakA : 0;
        const int moved = truncToInt (std::round (balance * distance));

        for (const int bin : { 2 * pair, 2 * pair + 1 })
        {
            addMoved (workOut, frameA, bin, moved, 1.0 - balance);
            addMoved (workOut, frameB, bin, moved - distance, balance);
        }
    }
}

void MVFreqTweaker::blur (double control)
{
    const double persistence = limitTo (control, 0.0, 1.0);
    const double rate = (limitTo (frameB[0], -1.0, 1.0) + 1.0) * 0.5;
    smoothLine (line, rate, true);
    smoothLine (line, 1.0 - rate, false);

    for (int k = 0; k < binCount; ++k)
    {
        const Bin bin = binAt (frameA, k);
        double& stored = line[static_cast<std::size_t> (k)];
        const double blurred = stored * persistence + magnitude (bin);
        addBin (workOut, k, phaseVector (bin), blurred);
        stored = std::isfinite (blurred) ? blurred : 0.0;
    }
}

} // namespace morvanelab
