// SPDX-License-Identifier: GPL-3.0-or-later
#include "NumberText.h"

#include "CommandFailure.h"

#include <charconv>
#include <cmath>

namespace morvanelab
{

namespace
{

template <typename Number>
bool parseWhole (const std::string& text, Number& number)
{
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars (text.data(), end, number);
    return error == std::errc() && stopped == end && ! text.empty();
}

} // namespace

double numberFrom (const std::string& text, const std::string& argument)
{
    double number = 0.0;
    if (! parseWhole (text, number) || ! std::isfinite (number))
        throw wrongUse (argument + ": expected a number, got \"" + text + "\"");
    return number;
}

int wholeNumberFrom (const std::string& text, const std::string& argument)
{
    int number = 0;
    if (! parseWhole (text, number))
        throw wrongUse (argument + ": expected a whole number, got \"" + text + "\"");
    return number;
}

} // namespace morvanelab
