// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/SordelinState.h"

#include <juce_core/juce_core.h>

namespace morvanelab
{

/** A preset of the user as a file: ".sord_preset", the bytes of a SordelinState and nothing else. */
class SordelinPresetFile
{
public:
    static constexpr const char* extension = ".sord_preset";

    /** The state that these bytes stand for: what is missing at the end counts as zeros, what is beyond is ignored.
        bytes may be null if size is 0. */
    static SordelinState fromBytes (const void* bytes, std::size_t size);

    /** Reads a file, no more of it than a state holds. False, with state untouched, if it cannot be opened or read;
        an empty file is a state of zeros. */
    static bool read (const juce::File& file, SordelinState& state);
    /** Replaces the file whole; a failed write leaves the old one. */
    static bool write (const juce::File& file, const SordelinState& state);

    /** The file of a preset called name in a directory. */
    static juce::File fileFor (const juce::File& directory, const juce::String& name);
    /** Whether a preset may be called so: the name is not empty or blank, makes a file name of its own in a directory
        (no path separator of any system, no control character, not too long), and its path fits into the list of
        presets, which knows no escapes (no double quote, no ">"). */
    static bool isValidName (const juce::File& directory, const juce::String& name);
};

} // namespace morvanelab
