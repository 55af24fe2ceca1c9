// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** Operations on short-time spectra, shared by signal classes and displays. A spectrum of n points is 2 * n doubles:
    pairs (re, im), or in the polar form pairs (magnitude, phase). A block of samples is transformed as it lies, two
    neighbours making one complex point, so a spectrum of n points takes up 2 * n samples.

    Threads: any. The tables that a size needs are built at its first use under a lock; whoever transforms on the audio
    thread calls prepareSpectra for its sizes when it is activated, and from then on nothing locks or allocates. */

/** The greatest number of points of a transform. */
constexpr int largestSpectrum = 4096;

/** Builds the tables for windows and for transforms of n points. A size that no transform has is ignored. */
void prepareSpectra (int n);

/** Multiplies sample i by the "Hanning Pulse" wave table's entry trunc (i * 32768 / n). */
void applyWindow (double* buffer, int n);

/** In-place radix-2 transform of n complex points, decimated in time (Cooley and Tukey 1965); not scaled. n is a power
    of two up to largestSpectrum; for any other the buffer stays as it is.
    Twiddle k of a stage of s points is cos and sin, in double precision, of k times the single-precision number
    -6.2831855f / s. That angle misses the true one by 2.8e-8 of its size, and so far does the spectrum. */
void forwardFft (double* buffer, int n);

/** The inverse of forwardFft, divided by n. It takes the forward stages back one by one with the very same twiddles, so
    that their small error cancels: the round trip is exact to rounding. */
void inverseFft (double* buffer, int n);

/** n pairs (re, im) become (magnitude, phase). The phase is atan (im / re), and 0 if re is 0: half a circle only, so
    the sign of re is lost on the way back. */
void toPolar (int n, double* buffer);

/** n pairs (m, p) become (m * cos (p), m * sin (p)). */
void toCartesian (int n, double* buffer);

} // namespace morvanelab
