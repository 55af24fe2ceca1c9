// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/SordelinPresetFile.h"

#include "banks/MVFileSwap.h"
#include "foundation/MVXmlDocument.h"

#include <algorithm>
#include <cstring>

namespace morvanelab
{

namespace
{

constexpr std::size_t longestFileName = 255;

} // namespace

SordelinState SordelinPresetFile::fromBytes (const void* bytes, std::size_t size)
{
    SordelinState state;
    std::memset (static_cast<void*> (&state), 0, sizeof state);
    if (size > 0)
        std::memcpy (static_cast<void*> (&state), bytes, std::min (size, sizeof state));
    return state;
}

bool SordelinPresetFile::read (const juce::File& file, SordelinState& state)
{
    if (! isPlainFile (file))
        return false;
    juce::FileInputStream stream (file);
    if (stream.failedToOpen())
        return false;

    std::array<std::uint8_t, sizeof (SordelinState)> bytes {};
    std::size_t size = 0;
    while (size < bytes.size())
    {
        const int count = stream.read (bytes.data() + size, static_cast<int> (bytes.size() - size));
        if (count <= 0)
            break;
        size += static_cast<std::size_t> (count);
    }
    if (stream.getStatus().failed())
        return false;
    state = fromBytes (bytes.data(), size);
    return true;
}

bool SordelinPresetFile::write (const juce::File& file, const SordelinState& state)
{
    return replaceFileContents (file, &state, sizeof state);
}

juce::File SordelinPresetFile::fileFor (const juce::File& directory, const juce::String& name)
{
    // Not by getChildFile, which takes some names for paths.
    return juce::File (directory.getFullPathName() + juce::File::getSeparatorString() + name + extension);
}

bool SordelinPresetFile::isValidName (const juce::File& directory, const juce::String& name)
{
    if (name.trim().isEmpty() || name.containsAnyOf ("\">/\\"))
        return false;
    for (auto character = name.getCharPointer(); ! character.isEmpty(); ++character)
        if (*character < 32 || *character == 127)
            return false;

    const auto file = fileFor (directory, name);
    const auto temporaryName = temporarySiblingOf (file).getFileName();
    return temporaryName.getNumBytesAsUTF8() <= longestFileName
           && MVXmlDocument::isSafeValue (file.getFullPathName().toStdString());
}

} // namespace morvanelab
