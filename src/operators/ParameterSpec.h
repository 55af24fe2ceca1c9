// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVRange.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace morvanelab
{

/** The kind of an operator's parameter. The numbers are part of the interface towards the engine's callers. */
enum class MVParameterType : int
{
    None = 0,
    Float = 1,
    Int = 2,
    Choice = 3,
    Bool = 4,
    Sequence = 6,
    Curve = 7
};

/** One named value of a choice. */
struct ChoiceSpec
{
    int value; ///< what the attribute record holds
    const char* name;
};

/** How a value lies in an attribute record. Every number is little-endian. */
enum class Storage : std::uint8_t
{
    float64,         ///< double
    int32,           ///< signed 32 bits
    byte,            ///< 8 bits, 0 is false
    fixedSigned31,   ///< signed 32 bits, 2147483647 is low + span
    fixedUnsigned31, ///< unsigned 32 bits, 2147483647 is low + span
    fixedUnsigned15, ///< unsigned 32 bits, 32767 is low + span
    sequence16,      ///< 16 signed 16-bit values, 32767 is 1.0
    curve16          ///< a 32-bit count, then 16 pairs x, y of 32 bits each, 32767 is 1.0
};

/** Bytes that a value of this storage takes in the record. */
constexpr std::size_t storageSize (Storage storage)
{
    switch (storage)
    {
        case Storage::float64:
            return 8;
        case Storage::byte:
            return 1;
        case Storage::sequence16:
            return 32;
        case Storage::curve16:
            return 132;
        default:
            return 4;
    }
}

/** Largest number of values of a sequence and of points of a curve. */
constexpr int maxListEntries = 16;

/** Everything there is to know of one parameter. Setters, folding, choices, texts and file tools read it. */
struct ParameterSpec
{
    const char* name = nullptr;
    const char* description = nullptr;
    MVParameterType type = MVParameterType::None;
    Storage storage = Storage::float64;
    std::size_t offset = 0;                 ///< place in the attribute record
    double initial = 0.0;                   ///< value of a new operator; a choice's stored value
    MVFRange range {};                      ///< limits of a Float; the upper one is excluded by setters
    MVFRange folding {};                    ///< what a stored Float is folded into, mostly equal to range
    bool folded = true;                     ///< false: a stored value is taken as it stands
    MVIRange intRange {};                   ///< limits of an Int; setters exclude the upper one, folding does not
    bool followsInputChannels = false;      ///< an Int that chooses one of the input channels
    std::span<const ChoiceSpec> choices {}; ///< of a Choice, in the order shown; stored values 1 to n

    /** The same parameter with stored values folded into other limits than the ones shown. */
    constexpr ParameterSpec foldedInto (MVFRange limits) const
    {
        ParameterSpec copy = *this;
        copy.folding = limits;
        return copy;
    }

    /** The same parameter whose stored value is used unfolded. */
    constexpr ParameterSpec unfolded() const
    {
        ParameterSpec copy = *this;
        copy.folded = false;
        return copy;
    }

    /** The same parameter, which chooses one of the input channels that the engine has. */
    constexpr ParameterSpec limitedByInputChannels() const
    {
        ParameterSpec copy = *this;
        copy.followsInputChannels = true;
        return copy;
    }
};

/** A field of an attribute record that is no parameter, such as a number of ports. */
struct FieldSpec
{
    const char* name = nullptr;
    Storage storage = Storage::int32; ///< int32 or byte
    std::size_t offset = 0;
    std::int32_t initial = 0;
};

constexpr ParameterSpec floatSpec (const char* name, const char* description, std::size_t offset, MVFRange range,
                                   double initial, Storage storage = Storage::float64)
{
    return { .name = name,
             .description = description,
             .type = MVParameterType::Float,
             .storage = storage,
             .offset = offset,
             .initial = initial,
             .range = range,
             .folding = range };
}

constexpr ParameterSpec intSpec (const char* name, const char* description, std::size_t offset, MVIRange range,
                                 int initial)
{
    return { .name = name,
             .description = description,
             .type = MVParameterType::Int,
             .storage = Storage::int32,
             .offset = offset,
             .initial = static_cast<double> (initial),
             .intRange = range };
}

constexpr ParameterSpec choiceSpec (const char* name, const char* description, std::size_t offset,
                                    std::span<const ChoiceSpec> choices, int initial)
{
    return { .name = name,
             .description = description,
             .type = MVParameterType::Choice,
             .storage = Storage::int32,
             .offset = offset,
             .initial = static_cast<double> (initial),
             .choices = choices };
}

constexpr ParameterSpec boolSpec (const char* name, const char* description, std::size_t offset, bool initial)
{
    return { .name = name,
             .description = description,
             .type = MVParameterType::Bool,
             .storage = Storage::byte,
             .offset = offset,
             .initial = initial ? 1.0 : 0.0 };
}

constexpr ParameterSpec sequenceSpec (const char* name, const char* description, std::size_t offset)
{
    return { .name = name,
             .description = description,
             .type = MVParameterType::Sequence,
             .storage = Storage::sequence16,
             .offset = offset };
}

/** A new operator's curve is the straight line from (0, 0) to (1, 1). */
constexpr ParameterSpec curveSpec (const char* name, const char* description, std::size_t offset)
{
    return { .name = name,
             .description = description,
             .type = MVParameterType::Curve,
             .storage = Storage::curve16,
             .offset = offset };
}

} // namespace morvanelab
