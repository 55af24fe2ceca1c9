// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** Turns frames host samples, stride samples apart, into doubles. Integer samples of n bits are divided by
    2^(n - 1) - 1, so that their positive full scale is 1. */
using MVSampleReader = void (*) (double* dest, const void* source, int frames, int stride);

/** Turns doubles into host samples, stride samples apart. Floats are not clipped. Integers are scaled by
    2^(n - 1) - 1, rounded to the nearest (halves away from zero) and saturated; a not-a-number becomes 0. */
using MVSampleWriter = void (*) (void* dest, const double* source, int frames, int stride);

/** The converters of a sample type (MVSampleType_t); null for a type that the side does not take. */
MVSampleReader sampleReaderFor (int sampleType);
MVSampleWriter sampleWriterFor (int sampleType);

/** Bytes of one sample; 0 for an unknown type. */
int bytesPerSample (int sampleType);

} // namespace morvanelab
