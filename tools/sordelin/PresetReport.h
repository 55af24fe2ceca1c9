// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/SordelinState.h"

#include <optional>
#include <string>

namespace morvanelab
{

/** The bank and patch that a state names, looked up in a list of banks. */
struct PresetPatch
{
    std::string bankPath; ///< empty if no bank of the list has that identity
    std::string bankName;
    std::string patchName;
    std::string problem; ///< why the patch would not load; empty if it would

    /** Throws badData if the list cannot be read. */
    static PresetPatch find (const SordelinState& state, const std::string& managerFile);
};

std::string presetAsText (const SordelinState& state, const std::optional<PresetPatch>& patch);
/** An array of one object: every field by name, and with a patch given, bankPath, bankName, patchName and problem. */
std::string presetAsJson (const SordelinState& state, const std::optional<PresetPatch>& patch);

} // namespace morvanelab
