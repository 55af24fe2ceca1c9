// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/ParameterSpec.h"

#include <array>
#include <cstdint>

namespace morvanelab
{

/** Access to the values of a stored attribute record by their ParameterSpec, without folding: what is read is
    what stands in the bytes, and writing back what was read gives the same bytes. A record may lie at any
    address; the caller vouches that it holds offset + storageSize bytes. A padding byte is never touched.
    Not-a-number values read as they stand, and a file tool has to see to them. */
namespace attributeRecord
{

/** The value of a Float, Int, Choice (stored value) or Bool (the byte) parameter; 0 for a list. */
double readNumber (const void* record, const ParameterSpec& parameter);

/** Stores a number: fixed point is rounded to nearest, whole numbers are truncated; both saturate. */
void writeNumber (void* record, const ParameterSpec& parameter, double value);

std::int32_t readField (const void* record, const FieldSpec& field);
void writeField (void* record, const FieldSpec& field, std::int32_t value);

/** A sequence's values, or a curve's points as pairs x, y. */
struct ValueList
{
    int count = 0; ///< values of a sequence (16), points of a curve (as stored, but 0 to 16)
    std::array<double, 2 * maxListEntries> values {};
};

ValueList readList (const void* record, const ParameterSpec& parameter);

/** How a value of a list becomes fixed point: a live setter truncates, a file tool rounds to nearest so that
    reading and writing a record keeps its bytes. */
enum class ListRounding
{
    truncate,
    nearest
};

/** Stores count values (or count pairs of a curve, with its count). Entries beyond them stay as they are. */
void writeList (void* record, const ParameterSpec& parameter, int count, const double* values, ListRounding rounding);

/** Whether a Float or Int setter takes the value: not below the lower limit, and below the upper. */
bool acceptsFloat (const ParameterSpec& parameter, double value);
bool acceptsInt (const MVIRange& limits, int value);

/** Limits of an Int parameter for a number of input channels. */
MVIRange intLimits (const ParameterSpec& parameter, int numInputChannels);

/** Folds one stored parameter into its limits, as loading a record does. */
void fold (void* record, const ParameterSpec& parameter, int numInputChannels);

} // namespace attributeRecord
} // namespace morvanelab
