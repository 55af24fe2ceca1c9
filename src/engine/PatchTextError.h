// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVException.h"
#include "foundation/MVResult.h"

#include <string>

namespace morvanelab
{

/** The place of a value in a text, from the root: /operators/2/inputs/Frequency Signal. */
class TextPlace
{
public:
    explicit TextPlace (std::string sourceName) : source (std::move (sourceName)) {}

    TextPlace operator/ (const std::string& key) const
    {
        TextPlace inner = *this;
        inner.path += "/" + key;
        return inner;
    }

    TextPlace operator/ (std::size_t index) const { return *this / std::to_string (index); }

    /** Raises the error that names file, place and what was expected. */
    [[noreturn]] void expected (const std::string& what) const { fail ("expected " + what); }

    [[noreturn]] void fail (const std::string& text) const
    {
        throw MVException (resultFailed, (source + ": " + (path.empty() ? "/" : path) + ": " + text).c_str());
    }

private:
    std::string source;
    std::string path;
};

} // namespace morvanelab
