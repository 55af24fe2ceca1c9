// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>

namespace morvanelab::test
{

/** The numbers of parameters of the patches in a bank of writeCountBank, by slot. */
constexpr int countsBySlot[] { 0, 1, 4, 5, 16 };

/** The slot of the patch with that many parameters. */
int slotOfCount (int parameters);
/** "Count 5" */
std::string nameOfCount (int parameters);
/** "Knob 3" and "Turns knob 3" of the parameter at an index, from 0. */
std::string knobName (int index);
std::string knobText (int index);

/** Writes a bank whose patches are played by keys and expose 0, 1, 4, 5 and 16 parameters: each is a factor of a
    sine's level. */
void writeCountBank (const std::filesystem::path& path);
/** Writes a bank whose first slot holds too few bytes for a patch. */
void writeBrokenBank (const std::filesystem::path& path);

} // namespace morvanelab::test
