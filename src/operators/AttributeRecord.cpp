// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/AttributeRecord.h"

#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace morvanelab::attributeRecord
{

namespace
{
constexpr double fullScale31 = 2147483647.0;
constexpr double fullScale15 = 32767.0;

/** A point of a stored curve. */
struct StoredPoint
{
    std::int32_t x;
    std::int32_t y;
};

struct StoredCurve
{
    std::int32_t count;
    StoredPoint points[maxListEntries];
};
static_assert (sizeof (StoredCurve) == storageSize (Storage::curve16));

using StoredSequence = std::array<std::int16_t, maxListEntries>;
static_assert (sizeof (StoredSequence) == storageSize (Storage::sequence16));

// Records may lie unaligned in a chunk, so every access goes through a copy.

template <typename T>
T load (const void* record, std::size_t offset)
{
    T value;
    std::memcpy (&value, static_cast<const std::byte*> (record) + offset, sizeof (T));
    return value;
}

template <typename T>
void store (void* record, std::size_t offset, const T& value)
{
    std::memcpy (static_cast<std::byte*> (record) + offset, &value, sizeof (T));
}

template <typename T>
T saturate (double value)
{
    return static_cast<T> (limitTo (value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

double fromFixed (double stored, double fullScale, MVFRange range)
{
    return stored / fullScale * range.span + range.low;
}

double toFixed (double value, double fullScale, MVFRange range)
{
    return std::round ((value - range.low) / range.span * fullScale);
}

template <typename T>
T toFixedEntry (double value, ListRounding rounding)
{
    const double scaled = value * fullScale15;
    return saturate<T> (rounding == ListRounding::nearest ? std::round (scaled) : std::trunc (scaled));
}

void foldCurve (void* record, const ParameterSpec& parameter)
{
    auto curve = load<StoredCurve> (record, parameter.offset);
    curve.count = wrapToIntRange (curve.count, 2, maxListEntries);
    std::stable_sort (curve.points, curve.points + curve.count,
                      [] (const StoredPoint& a, const StoredPoint& b) { return a.x < b.x; });
    store (record, parameter.offset, curve);
}

} // namespace

double readNumber (const void* record, const ParameterSpec& parameter)
{
    const std::size_t offset = parameter.offset;

    switch (parameter.storage)
    {
        case Storage::float64:
            return load<double> (record, offset);
        case Storage::int32:
            return load<std::int32_t> (record, offset);
        case Storage::byte:
            return load<std::uint8_t> (record, offset);
        case Storage::fixedSigned31:
            return fromFixed (load<std::int32_t> (record, offset), fullScale31, parameter.range);
        case Storage::fixedUnsigned31:
            return fromFixed (load<std::uint32_t> (record, offset), fullScale31, parameter.range);
        case Storage::fixedUnsigned15:
            return fromFixed (load<std::uint32_t> (record, offset), fullScale15, parameter.range);
        case Storage::sequence16:
        case Storage::curve16:
            break;
    }

    return 0.0;
}

void writeNumber (void* record, const ParameterSpec& parameter, double value)
{
    const std::size_t offset = parameter.offset;

    switch (parameter.storage)
    {
        case Storage::float64:
            store (record, offset, value);
            break;
        case Storage::int32:
            store (record, offset, truncToInt (value));
            break;
        case Storage::byte:
            store (record, offset, saturate<std::uint8_t> (value));
            break;
        case Storage::fixedSigned31:
            store (record, offset, saturate<std::int32_t> (toFixed (value, fullScale31, parameter.range)));
            break;
        case Storage::fixedUnsigned31:
            store (record, offset, saturate<std::uint32_t> (toFixed (value, fullScale31, parameter.range)));
            break;
        case Storage::fixedUnsigned15:
            store (record, offset, saturate<std::uint32_t> (toFixed (value, fullScale15, parameter.range)));
            break;
        case Storage::sequence16:
        case Storage::curve16:
            break;
    }
}

std::int32_t readField (const void* record, const FieldSpec& field)
{
    return field.storage == Storage::byte ? load<std::uint8_t> (record, field.offset)
                                          : load<std::int32_t> (record, field.offset);
}

void writeField (void* record, const FieldSpec& field, std::int32_t value)
{
    if (field.storage == Storage::byte)
        store (record, field.offset, static_cast<std::uint8_t> (value));
    else
        store (record, field.offset, value);
}

ValueList readList (const void* record, const ParameterSpec& parameter)
{
    ValueList list;

    if (parameter.storage == Storage::sequence16)
    {
        const auto stored = load<StoredSequence> (record, parameter.offset);
        list.count = maxListEntries;
        std::transform (stored.begin(), stored.end(), list.values.begin(),
                        [] (std::int16_t entry) { return entry / fullScale15; });
    }
    else if (parameter.storage == Storage::curve16)
    {
        const auto stored = load<StoredCurve> (record, parameter.offset);
        list.count = std::clamp (stored.count, 0, maxListEntries);
        double* value = list.values.data();

        for (const StoredPoint& point : stored.points)
        {
            *value++ = point.x / fullScale15;
            *value++ = point.y / fullScale15;
        }
    }

    return list;
}

void writeList (void* record, const ParameterSpec& parameter, int count, const double* values, ListRounding rounding)
{
    count = std::clamp (count, 0, maxListEntries);

    if (parameter.storage == Storage::sequence16)
    {
        auto stored = load<StoredSequence> (record, parameter.offset);
        std::transform (values, values + count, stored.begin(),
                        [rounding] (double value) { return toFixedEntry<std::int16_t> (value, rounding); });
        store (record, parameter.offset, stored);
    }
    else if (parameter.storage == Storage::curve16)
    {
        auto stored = load<StoredCurve> (record, parameter.offset);
        stored.count = count;

        for (int i = 0; i < count; ++i)
            stored.points[i] = { toFixedEntry<std::int32_t> (values[2 * i], rounding),
                                 toFixedEntry<std::int32_t> (values[2 * i + 1], rounding) };

        store (record, parameter.offset, stored);
    }
}

bool acceptsFloat (const ParameterSpec& parameter, double value)
{
    return value >= parameter.range.low && value < parameter.range.high();
}

bool acceptsInt (const MVIRange& limits, int value)
{
    return value >= limits.low && value < std::int64_t { limits.low } + limits.span;
}

MVIRange intLimits (const ParameterSpec& parameter, int numInputChannels)
{
    return parameter.followsInputChannels ? MVIRange { 0, std::max (0, numInputChannels) } : parameter.intRange;
}

void fold (void* record, const ParameterSpec& parameter, int numInputChannels)
{
    if (! parameter.folded)
        return;

    const double stored = readNumber (record, parameter);

    switch (parameter.type)
    {
        case MVParameterType::Float:
            writeNumber (record, parameter, wrapToRange (stored, parameter.folding.low, parameter.folding.high()));
            break;

        case MVParameterType::Int:
        {
            const MVIRange limits = parameter.followsInputChannels ? MVIRange { 0, std::max (0, numInputChannels - 1) }
                                                                   : parameter.intRange;
            writeNumber (record, parameter, wrapToIntRange (static_cast<int> (stored), limits.low, limits.high()));
            break;
        }

        case MVParameterType::Choice:
            if (parameter.choices.size() > 1)
                writeNumber (record, parameter,
                             foldChoice (static_cast<int> (stored), static_cast<int> (parameter.choices.size())));
            break;

        case MVParameterType::Curve:
            foldCurve (record, parameter);
            break;

        case MVParameterType::None:
        case MVParameterType::Bool:
        case MVParameterType::Sequence:
            break;
    }
}

} // namespace morvanelab::attributeRecord
