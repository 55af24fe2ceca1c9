// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/OperatorSpec.h"

#include "operators/AttributeRecord.h"

#include <algorithm>
#include <cstring>

namespace morvanelab
{

std::vector<std::byte> OperatorSpec::newRecord() const
{
    std::vector<std::byte> record (attributeSize);
    initialise (record.data());
    return record;
}

void OperatorSpec::initialise (void* record) const
{
    if (attributeSize == 0)
        return;

    std::memset (record, 0, attributeSize);

    for (const ParameterSpec& parameter : parameters)
    {
        constexpr double straightLine[] { 0.0, 0.0, 1.0, 1.0 };

        if (parameter.type == MVParameterType::Curve)
            attributeRecord::writeList (record, parameter, 2, straightLine, attributeRecord::ListRounding::nearest);
        else
            attributeRecord::writeNumber (record, parameter, parameter.initial);
    }

    for (const FieldSpec& field : fields)
        attributeRecord::writeField (record, field, field.initial);
}

StoredRecord OperatorSpec::readStored (std::uint32_t version, std::span<const std::byte> stored, void* record) const
{
    if (readOlder != nullptr)
        if (const StoredRecord result = readOlder (version, stored, record); result != StoredRecord::current)
            return result;

    if (stored.size() < attributeSize)
        return StoredRecord::absent;
    if (attributeSize > 0)
        std::memcpy (record, stored.data(), attributeSize);
    return StoredRecord::current;
}

int OperatorSpec::portCount (const void* record, int direction) const
{
    if (direction == portsIn)
        return inputCountOf != nullptr ? std::clamp (inputCountOf (record), 0, maxOperatorPorts) : numInputs;

    return direction == portsOut ? numOutputs : 0;
}

std::string OperatorSpec::portName (const void* record, int direction, int port) const
{
    if (port < 0 || (direction != portsIn && direction != portsOut))
        return {};

    const bool isInput = direction == portsIn;
    const auto nameOf = isInput ? inputNameOf : outputNameOf;

    if (nameOf != nullptr)
        return port < portCount (record, direction) ? nameOf (record, port) : std::string();

    const auto names = isInput ? inputNames : outputNames;
    return static_cast<std::size_t> (port) < names.size() ? names[static_cast<std::size_t> (port)] : std::string();
}

const ParameterSpec* OperatorSpec::parameter (int index) const
{
    return index >= 0 && static_cast<std::size_t> (index) < parameters.size()
               ? &parameters[static_cast<std::size_t> (index)]
               : nullptr;
}

int OperatorSpec::parameterIndex (const char* name) const
{
    const auto found =
        std::find_if (parameters.begin(), parameters.end(),
                      [name] (const ParameterSpec& candidate) { return std::strcmp (candidate.name, name) == 0; });
    return found != parameters.end() ? static_cast<int> (found - parameters.begin()) : -1;
}

std::string numberedPortName (const char* text, int port) { return text + std::to_string (port) + ' '; }

} // namespace morvanelab
