// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bit>
#include <cstdint>

namespace morvanelab
{

/** Operations on a block of doubles, shared by operators and engine. A ramp gives sample i the value
    start + i * (end - start) / frames, so that end belongs to the next block. Any frame count; 0 or less does nothing.
 */

void blockClear (double* out, int frames);
void blockFill (double* out, int frames, double value);
void blockCopy (double* out, const double* in, int frames);
/** out += in */
void blockAdd (double* out, const double* in, int frames);
/** out *= in */
void blockMultiply (double* out, const double* in, int frames);
/** out = a * b */
void blockProduct (double* out, const double* a, const double* b, int frames);
void blockScale (double* buffer, int frames, double gain);

/** out = ramp */
void rampFill (double* out, int frames, double start, double end);
/** out = in * ramp; out may be in. */
void rampCopy (double* out, const double* in, int frames, double start, double end);
/** out += in * ramp */
void rampMix (double* out, const double* in, int frames, double start, double end);
/** buffer *= ramp */
void rampMultiply (double* buffer, int frames, double start, double end);
/** out *= in * ramp */
void rampProduct (double* out, const double* in, int frames, double start, double end);

/** Whether every sample equals the first; a not-a-number equals nothing. Fast to see that a signal moves. True for an
    empty block. */
bool blockIsConstant (const double* in, int frames);
/** Greatest absolute value; values that are not numbers do not count. 0 for an empty block. */
double blockPeak (const double* in, int frames);
/** Sum of squares, added up in four interleaved lanes. */
double blockPower (const double* in, int frames);
/** Root mean square. 0 for an empty block. */
double blockRms (const double* in, int frames);

/** out = in to the power of exponent, for values in 0..1, within 1e-12 of std::pow (relative). Much faster than
    std::pow where the exponent is moderate. out may be in. */
void powBlock (double* out, const double* in, int count, double exponent);

/** 0 if low <= x < high, else (a not-a-number, too) some other number. Or-ing these over a loop tells whether all of
   its values lie inside; the detour over doubles is what lets compilers do that several values at a time. */
inline std::uint64_t outsideBits (double x, double low, double high)
{
    return std::bit_cast<std::uint64_t> (x >= low ? 0.0 : 1.0) | std::bit_cast<std::uint64_t> (x < high ? 0.0 : 1.0);
}

} // namespace morvanelab
