// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"

#include <cstdint>
#include <vector>

namespace morvanelab
{

/** Spectral algorithms, by stored value. */
enum MVTweak_t : std::int32_t
{
    tweakStretched = 1,
    tweakShifted,
    tweakConvolved,
    tweakSelfConvolved,
    tweakPhaseSwapped,
    tweakMagSwapped,
    tweakReversed,
    tweakWrapped,
    tweakTwisted,
    tweakAttractor,
    tweakMorph,
    tweakBlur,
    tweakCount = tweakBlur
};

/** Rewrites short-time spectra: frames of 1024 samples every 512, windowed, transformed, edited by one of twelve
    algorithms, transformed back, windowed again and overlapped. The overlapped sum is of squared windows and is not
    rescaled: an edit that changes nothing gives the input one hop later, sample i of a hop times
    w(i)^2 + w(i + 512)^2, where w is the window of applyWindow over 1024 samples.

    The 1024 samples of a frame make 512 complex points (see MVSpectralMath.h), so that a tone of f periods a frame,
    f < 512, shows twice: in bin f with a power of 1 - sin (2 * pi * f / 1024), and as a mirror image in bin 512 - f
   with 1 + the same. A, B are the spectra of the inputs, c is the control, b the first sample of the second input's
   hop. "Polar" stands for the form of toPolar, whose phase spans half a circle: what goes through it comes back with re
   >= 0. Where phases are not computed with, that is done without trigonometry, which gives the same numbers but for
   rounding (1e-12 of a bin's magnitude).

    1, "Stretched": polar; f = c limited to 0.009999999776482582..16 (not a number: the low end). Bin k is read at k / f
    between two neighbouring pairs; there is silence beyond the last bin. At f = 1 the spectrum is copied as it is,
    signs included.

    2, "Shifted": polar; bins move up by trunc (wrapToRange (c, -1, 1) * 256), those pushed off are lost.

    3, "Convolved": A * B, bin by bin. 4, "Self-convolved": A * A. Neither is rescaled: levels multiply.

    5, "Phase-swapped": polar; magnitudes of B, phases of A. While A is silent, so is the output.

    6, "Mag-swapped": polar; magnitudes of A, phases of B.

    7, "Reversed": bins k and 256 + k are those at 255 - k and 511 - k, times 1 - k * 0.98 / 256, never below 0. The
    second input is not heard.

    8, "Wrapped": d = trunc (wrapToRange (c, 0, 1) * 512); the array of 1024 numbers turns up by d places: its lower
    1024 - d and its upper d change places. An odd d swaps real and imaginary parts.

    9, "Twisted": bins 0..255 are read from other bins near a centre C = wrapToRange (b, 0, 1) * 255, within a spread
    S = wrapToRange (c, 0, 1) * 255. With e = k - C, bin k is read from C + e * (2 * |e| / S - 1) where |e| < S,
   reflected at 0 and 255 and rounded to a whole bin: next to the centre the spectrum is mirrored, at the spread's edge
   it joins what is untouched. Bins 257..511 follow as mirror images. S = 0 changes nothing.

    10, "Attractor": bins 0..255 move towards a centre C = wrapToRange (c, 0, 1) * 255. With r = 2^a, a = b limited to
    -10..10 (not a number: -10), a bin at the share u of the way from C to the end on its side lands at the share u^r.
    Its content is added to the two neighbours by linear interpolation. a > 0 attracts, a < 0 drives to the ends, a = 0
    changes nothing. Bins 257..511 follow as mirror images.

    In 9 and 10 a bin that moves by an odd number of places changes its sign, which keeps its phase at the middle of the
    frame: what meets in one bin adds up.

    11, "Morph": polar; m = wrapToRange (c, 0, 1). For every second bin k, the strongest bins p of A and q of B within
    k - 64..k + 64 are found (a tie goes to the lowest). With s = round (m * (q - p)), bins k and k + 1 of A are added
   at s bins higher, times 1 - m, and those of B at q - p - s bins lower, times m, so that both peaks meet. Where either
    has no peak nothing moves. m = 0 copies A and m = 1 copies B as they are, signs included.

    12, "Blur": polar; persistence p = c limited to 0..1, direction d = b limited to -1..1 (not a number: the low end),
    rate = (d + 1) / 2. A one-pole smoother y += (x - y) * rate from 0 runs up the stored line of magnitudes, then one
   of 1 - rate runs down it. Times p and plus the incoming magnitudes it is both the output's magnitudes and the next
    stored line. The phases are those of A. At p = 1 the line keeps rising; at d = -1 or 1 one of the smoothers stands
    still and nothing persists. The line starts at 0 whenever "Blur" is adopted.

    A frame whose result is not finite, or beyond 1e300, is dropped as silence, and what is not finite in the line of
    "Blur" becomes 0, so that sound returns two hops after a bad input.

    Threads: setActive and reset while the owner is inactive; process and setAlgorithm on the audio thread, or with the
    audio excluded. Only activation allocates. */
class MVFreqTweaker : public MVDspBase
{
public:
    static constexpr int hopSize = 512;
    static constexpr int fftSize = 2 * hopSize;

    MVFreqTweaker();

    MVObject* clone() const override { return new MVFreqTweaker (*this); }
    const char* className() const override { return "MVFreqTweaker"; }
    /** Allocates the frames and clears them, or frees them. */
    void setActive (bool flag) override;
    /** Forgets all signal; the algorithm stays. */
    void reset() override;

    /** A value of MVTweak_t, any other is "Stretched". It takes effect at the head of the next hop. */
    virtual void setAlgorithm (std::int32_t storedValue);
    /** Whether the algorithm last set takes the second input as a signal, and not its first sample as a control. */
    bool needsSecondInput() const { return algorithms[pending].needsSecondInput; }

    /** One hop: hopSize samples each. out may be one of the inputs. While inactive, out is silent. */
    virtual void process (double* out, const double* inA, const double* inB, double control);

private:
    struct Algorithm
    {
        void (MVFreqTweaker::*routine) (double control);
        bool needsSecondInput;
    };

    using Numbers = std::vector<double>;

    void adoptPending();
    void analyse (Numbers& frame, const double* in) const;
    void synthesise (double* out);

    void copyA();
    void stretch (double control);
    void shift (double control);
    void convolve (double control);
    void convolveSelf (double control);
    void swapPhases (double control);
    void swapMagnitudes (double control);
    void reverse (double control);
    void wrap (double control);
    void twist (double control);
    void attract (double control);
    void morph (double control);
    void blur (double control);

    static const Algorithm algorithms[tweakCount];

    /** Indices into the table of algorithms. */
    int current = 0;
    int pending = 0;
    Numbers frameA, frameB, workOut;
    Numbers overlap;
    Numbers window;
    Numbers line; ///< stored magnitudes of "Blur"
};

} // namespace morvanelab
