// SPDX-License-Identifier: GPL-3.0-or-later
// The parameter half of MVOperator: every query and setter reads the class's OperatorSpec.
#include "foundation/MVResult.h"
#include "operators/AttributeRecord.h"
#include "operators/MVOperator.h"

#include <algorithm>
#include <limits>

namespace morvanelab
{

const char* MVOperator::parameterName (int index) const
{
    const ParameterSpec* const parameter = operatorSpec->parameter (index);
    return parameter != nullptr ? parameter->name : nullptr;
}

const char* MVOperator::parameterDescription (int index) const
{
    const ParameterSpec* const parameter = operatorSpec->parameter (index);
    return parameter != nullptr ? parameter->description : nullptr;
}

MVParameterType MVOperator::parameterType (int index) const
{
    const ParameterSpec* const parameter = operatorSpec->parameter (index);
    return parameter != nullptr ? parameter->type : MVParameterType::None;
}

MVIRange MVOperator::parameterIntRange (int index) const
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Int);
    return parameter != nullptr ? attributeRecord::intLimits (*parameter, attributes->numInputChannels) : MVIRange {};
}

MVFRange MVOperator::parameterFloatRange (int index) const
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Float);
    return parameter != nullptr ? parameter->range : MVFRange {};
}

bool MVOperator::parameterHasDefault (int index) const
{
    switch (parameterType (index))
    {
        case MVParameterType::Float:
        case MVParameterType::Int:
        case MVParameterType::Bool:
            return true;
        case MVParameterType::Choice:
            return choiceCount (index) > 0;
        default:
            return false;
    }
}

double MVOperator::parameterDefault (int index) const
{
    return parameterHasDefault (index) ? operatorSpec->parameter (index)->initial : -1.0;
}

std::uint32_t MVOperator::choiceCount (int index) const
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Choice);
    return parameter != nullptr ? static_cast<std::uint32_t> (parameter->choices.size())
                                : std::numeric_limits<std::uint32_t>::max();
}

int MVOperator::choiceValue (int index, int position) const
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Choice);
    const auto place = static_cast<std::size_t> (position);
    return parameter != nullptr && place < parameter->choices.size() ? parameter->choices[place].value : 0;
}

const char* MVOperator::choiceName (int index, int position) const
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Choice);
    const auto place = static_cast<std::size_t> (position);
    return parameter != nullptr && place < parameter->choices.size() ? parameter->choices[place].name : nullptr;
}

int MVOperator::intParameter (int index) const
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Int);
    return parameter != nullptr ? static_cast<int> (attributeRecord::readNumber (attributeData(), *parameter)) : 0;
}

double MVOperator::floatParameter (int index) const
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Float);
    return parameter != nullptr ? attributeRecord::readNumber (attributeData(), *parameter) : 0.0;
}

bool MVOperator::boolParameter (int index) const
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Bool);
    return parameter != nullptr && attributeRecord::readNumber (attributeData(), *parameter) != 0.0;
}

int MVOperator::choiceParameter (int index) const
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Choice);
    if (parameter == nullptr)
        return 0;

    const auto stored = static_cast<int> (attributeRecord::readNumber (attributeData(), *parameter));
    const auto& choices = parameter->choices;
    const auto found = std::find_if (choices.begin(), choices.end(),
                                     [stored] (const ChoiceSpec& choice) { return choice.value == stored; });
    return found != choices.end() ? static_cast<int> (found - choices.begin()) : 0;
}

int MVOperator::curveParameter (int index, const double*& listValues) const
{
    return exchangeList (index, MVParameterType::Curve, listValues);
}

int MVOperator::sequenceParameter (int index, const double*& listValues) const
{
    return exchangeList (index, MVParameterType::Sequence, listValues);
}

int MVOperator::setIntParameter (int index, int value)
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Int);
    if (parameter == nullptr || ! attributeRecord::acceptsInt (parameterIntRange (index), value))
        return resultRejected;
    return storeNumber (*parameter, value);
}

int MVOperator::setFloatParameter (int index, double value)
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Float);
    if (parameter == nullptr)
        return resultRejected;
    return attributeRecord::acceptsFloat (*parameter, value) ? storeNumber (*parameter, value)
                                                             : operatorSpec->floatRejection;
}

int MVOperator::setBoolParameter (int index, bool value)
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Bool);
    return parameter != nullptr ? storeNumber (*parameter, value ? 1.0 : 0.0) : int { resultRejected };
}

int MVOperator::setChoiceParameter (int index, int position)
{
    const ParameterSpec* const parameter = parameterOf (index, MVParameterType::Choice);
    if (parameter == nullptr || position < 0 || static_cast<std::size_t> (position) >= parameter->choices.size())
        return resultRejected;
    return storeNumber (*parameter, choiceValue (index, position));
}

int MVOperator::setCurveParameter (int index, int count, const double* points)
{
    return storeList (index, MVParameterType::Curve, count, points, 2);
}

int MVOperator::setSequenceParameter (int index, int count, const double* listValues)
{
    const bool hasSequence = std::any_of (operatorSpec->parameters.begin(), operatorSpec->parameters.end(),
                                          [] (const ParameterSpec& p) { return p.type == MVParameterType::Sequence; });
    return hasSequence ? storeList (index, MVParameterType::Sequence, count, listValues, 0)
                       : operatorSpec->sequenceRefusal;
}

const ParameterSpec* MVOperator::parameterOf (int index, MVParameterType type) const
{
    const ParameterSpec* const parameter = operatorSpec->parameter (index);
    return parameter != nullptr && parameter->type == type ? parameter : nullptr;
}

int MVOperator::storeNumber (const ParameterSpec& parameter, double value)
{
    attributeRecord::writeNumber (attributeData(), parameter, value);
    setAttributes (attributeData());
    return resultDone;
}

int MVOperator::storeList (int index, MVParameterType type, int count, const double* listValues, int lowest)
{
    const ParameterSpec* const parameter = parameterOf (index, type);
    if (parameter == nullptr || listValues == nullptr || count < lowest || count > maxListEntries)
        return resultRejected;

    attributeRecord::writeList (attributeData(), *parameter, count, listValues,
                                attributeRecord::ListRounding::truncate);
    setAttributes (attributeData());
    return resultDone;
}

int MVOperator::exchangeList (int index, MVParameterType type, const double*& listValues) const
{
    const ParameterSpec* const parameter = parameterOf (index, type);
    listValues = nullptr;
    if (parameter == nullptr)
        return 0;

    const auto list = attributeRecord::readList (attributeData(), *parameter);
    exchangedList.assign (list.values.begin(), list.values.end());
    listValues = exchangedList.data();
    return list.count;
}

} // namespace morvanelab
