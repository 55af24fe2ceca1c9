// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <string>

namespace morvanelab
{

/** What a user interface shows of the patch in one layer: a copy that shares nothing with the voices. */
struct MVPatchSummary
{
    static constexpr int numVariables = 16;

    struct Variable
    {
        bool inUse = false; ///< whether an input of a playing layer listens to this parameter control
        std::string name;
        std::string description;
    };

    bool loaded = false;           ///< the layer holds a patch
    bool hasKeyboardInput = false; ///< it holds an operator that follows keys
    int numOperators = 0;
    std::array<Variable, numVariables> variables;
};

} // namespace morvanelab
