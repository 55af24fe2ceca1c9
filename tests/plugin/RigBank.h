// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

namespace morvanelab::test
{

/** Slots of a bank of writeRigBank. */
enum RIG_SLOT_t : int
{
    slotSine = 0,   ///< a sine at the key's pitch; exposes the first and third of three parameters
    slotSquare = 1, ///< a square an octave higher, no parameters
    slotInput = 2,  ///< the host's left input on both sides, no keyboard
    slotEmpty = 9
};

/** Settings that the plug-in finds. */
struct RigSettings
{
    bool playHostNotes = true;
    int playMode = 2;
    int voices = 4;
    bool showHelp = false;
};

/** Writes the settings into a home, which is made. */
void writeRigSettings (const std::filesystem::path& home, const RigSettings& settings = {});
void writeRigBank (const std::filesystem::path& path);

} // namespace morvanelab::test
