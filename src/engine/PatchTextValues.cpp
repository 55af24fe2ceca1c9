// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/PatchTextValues.h"

#include "operators/AttributeRecord.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace morvanelab::patchText
{

namespace
{

/** Host input channels that a text may name. */
constexpr int textInputChannels = 2;

std::string numberText (double value) { return Json (value).dump(); }

bool equalInSinglePrecision (double a, double b) { return static_cast<float> (a) == static_cast<float> (b); }

std::byte* recordPlace (StoredOperator& op, const ParameterSpec& parameter)
{
    return op.record.data() + parameter.offset;
}

/** Places raw bytes given in hexadecimal. */
void storeHex (std::byte* place, std::size_t size, const Json& json, const TextPlace& where)
{
    const auto bytes = bytesOfHex (json.get_ref<const std::string&>());
    if (! bytes || bytes->size() != size)
        where.expected (std::to_string (size) + " bytes as hexadecimal text");
    std::memcpy (place, bytes->data(), size);
}

template <typename T>
void storeInteger (std::byte* place, const Json& json, const TextPlace& where)
{
    if (! json.is_number_integer())
        where.expected ("a whole number");
    const auto wide = json.get<std::int64_t>();
    if (wide < std::numeric_limits<T>::min() || wide > std::numeric_limits<T>::max())
        where.expected ("a whole number from " + std::to_string (std::numeric_limits<T>::min()) + " to "
                        + std::to_string (std::numeric_limits<T>::max()));
    const T value = static_cast<T> (wide);
    std::memcpy (place, &value, sizeof (T));
}

void storedFromJson (StoredOperator& op, const ParameterSpec& parameter, const Json& json, const TextPlace& where)
{
    std::byte* const place = recordPlace (op, parameter);

    if (json.is_string())
        return storeHex (place, storageSize (parameter.storage), json, where);

    switch (parameter.storage)
    {
        case Storage::float64:
        {
            if (! json.is_number())
                where.expected ("a number");
            const double value = json.get<double>();
            std::memcpy (place, &value, sizeof (value));
            return;
        }
        case Storage::byte:
            return storeInteger<std::uint8_t> (place, json, where);
        case Storage::int32:
        case Storage::fixedSigned31:
            return storeInteger<std::int32_t> (place, json, where);
        case Storage::fixedUnsigned31:
        case Storage::fixedUnsigned15:
            return storeInteger<std::uint32_t> (place, json, where);
        default:
            where.expected ("the bytes as hexadecimal text");
    }
}

Json storedToJson (const StoredOperator& op, const ParameterSpec& parameter)
{
    const std::byte* const place = op.record.data() + parameter.offset;
    const auto read = [place] (auto value)
    {
        std::memcpy (&value, place, sizeof (value));
        return value;
    };

    Json json = hexOf (place, storageSize (parameter.storage));
    switch (parameter.storage)
    {
        case Storage::float64:
            if (std::isfinite (read (0.0)))
                json = read (0.0);
            break;
        case Storage::byte:
            json = read (std::uint8_t {});
            break;
        case Storage::int32:
        case Storage::fixedSigned31:
            json = read (std::int32_t {});
            break;
        case Storage::fixedUnsigned31:
        case Storage::fixedUnsigned15:
            json = read (std::uint32_t {});
            break;
        default:
            break;
    }

    return { { "stored", json } };
}

double floatFromJson (const ParameterSpec& parameter, const Json& json, const TextPlace& place)
{
    const double low = parameter.range.low;
    const double high = parameter.range.high();
    const double value = json.is_number() ? json.get<double>() : std::numeric_limits<double>::quiet_NaN();

    if (equalInSinglePrecision (value, low))
        return low;
    if (equalInSinglePrecision (value, high))
        return high;
    if (! attributeRecord::acceptsFloat (parameter, value))
        place.expected ("a number from " + numberText (low) + " to " + numberText (high));
    return value;
}

double intFromJson (const ParameterSpec& parameter, const Json& json, const TextPlace& place)
{
    const MVIRange limits = attributeRecord::intLimits (parameter, textInputChannels);

    if (json.is_number_integer())
        if (const auto value = json.get<std::int64_t>(); value >= limits.low && value <= limits.high())
            return static_cast<double> (value);

    place.expected ("a whole number from " + std::to_string (limits.low) + " to " + std::to_string (limits.high()));
}

double choiceFromJson (const ParameterSpec& parameter, const Json& json, const TextPlace& place)
{
    std::string names;

    for (const ChoiceSpec& choice : parameter.choices)
    {
        if (json.is_string() && json.get_ref<const std::string&>() == choice.name)
            return choice.value;
        names += (names.empty() ? "\"" : ", \"") + std::string (choice.name) + "\"";
    }

    place.expected ("one of " + names);
}

double listEntry (const Json& json, const TextPlace& place)
{
    if (! json.is_number() || ! (std::abs (json.get<double>()) <= 1.0))
        place.expected ("a number from -1 to 1");
    return json.get<double>();
}

void listFromJson (StoredOperator& op, const ParameterSpec& parameter, const Json& json, const TextPlace& place)
{
    const bool curve = parameter.type == MVParameterType::Curve;
    const std::size_t least = curve ? 2 : 1;
    if (! json.is_array() || json.size() < least || json.size() > maxListEntries)
        place.expected (curve ? "an array of 2 to 16 points [x, y]" : "an array of 1 to 16 numbers");

    std::vector<double> values;
    for (std::size_t i = 0; i < json.size(); ++i)
    {
        const Json& entry = json[i];
        if (curve && (! entry.is_array() || entry.size() != 2))
            (place / i).expected ("a point [x, y]");
        for (std::size_t n = 0; n < (curve ? 2U : 1U); ++n)
            values.push_back (listEntry (curve ? entry[n] : entry, place / i));
    }

    attributeRecord::writeList (op.record.data(), parameter, static_cast<int> (json.size()), values.data(),
                                attributeRecord::ListRounding::nearest);
}

Json typedToJson (const StoredOperator& op, const ParameterSpec& parameter)
{
    if (parameter.type == MVParameterType::Sequence || parameter.type == MVParameterType::Curve)
    {
        const auto list = attributeRecord::readList (op.record.data(), parameter);
        Json json = Json::array();
        for (std::size_t i = 0; i < static_cast<std::size_t> (list.count); ++i)
            json.push_back (parameter.type == MVParameterType::Curve
                                ? Json::array ({ list.values[2 * i], list.values[2 * i + 1] })
                                : Json (list.values[i]));
        return json;
    }

    const double value = attributeRecord::readNumber (op.record.data(), parameter);
    switch (parameter.type)
    {
        case MVParameterType::Bool:
            return value != 0.0;
        case MVParameterType::Int:
            return static_cast<std::int64_t> (value);
        case MVParameterType::Choice:
            for (const ChoiceSpec& choice : parameter.choices)
                if (choice.value == static_cast<int> (value))
                    return choice.name;
            return nullptr;
        default:
            return value;
    }
}

} // namespace

void parameterFromJson (StoredOperator& op, const ParameterSpec& parameter, const Json& json, const TextPlace& place)
{
    if (const Json* const stored = storedValue (json); stored != nullptr)
        return storedFromJson (op, parameter, *stored, place / "stored");

    double value = 0.0;
    switch (parameter.type)
    {
        case MVParameterType::Sequence:
        case MVParameterType::Curve:
            return listFromJson (op, parameter, json, place);
        case MVParameterType::Bool:
            if (! json.is_boolean())
                place.expected ("true or false");
            value = json.get<bool>() ? 1.0 : 0.0;
            break;
        case MVParameterType::Choice:
            value = choiceFromJson (parameter, json, place);
            break;
        case MVParameterType::Int:
            value = intFromJson (parameter, json, place);
            break;
        default:
            value = floatFromJson (parameter, json, place);
            break;
    }

    attributeRecord::writeNumber (op.record.data(), parameter, value);
}

Json parameterToJson (const StoredOperator& op, const ParameterSpec& parameter)
{
    try
    {
        Json json = typedToJson (op, parameter);
        StoredOperator copy = op;
        parameterFromJson (copy, parameter, json, TextPlace ({}));
        if (copy.record == op.record)
            return json;
    }
    catch (const MVException&)
    {
        // Outside its limits: the stored form below says so.
    }

    return storedToJson (op, parameter);
}

void fieldFromJson (StoredOperator& op, const FieldSpec& field, const Json& json, const TextPlace& place)
{
    std::byte* const target = op.record.data() + field.offset;

    if (field.storage == Storage::byte)
        storeInteger<std::uint8_t> (target, json.is_boolean() ? Json (json.get<bool>() ? 1 : 0) : json, place);
    else
        storeInteger<std::int32_t> (target, json, place);
}

Json fieldToJson (const StoredOperator& op, const FieldSpec& field)
{
    const int value = attributeRecord::readField (op.record.data(), field);
    if (field.storage == Storage::byte)
    {
        const int byte = value & 0xFF;
        return byte <= 1 ? Json (byte == 1) : Json (byte);
    }
    return value;
}

Json numberToJson (double value)
{
    if (std::isfinite (value))
        return value;
    return { { "stored", hexOf (&value, sizeof (value)) } };
}

double numberFromJson (const Json& json, const TextPlace& place)
{
    double value = 0.0;

    if (const Json* const stored = storedValue (json); stored != nullptr && stored->is_string())
        storeHex (reinterpret_cast<std::byte*> (&value), sizeof (value), *stored, place / "stored");
    else if (json.is_number())
        value = json.get<double>();
    else
        place.expected ("a number");

    return value;
}

} // namespace morvanelab::patchText
