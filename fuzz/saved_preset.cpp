// SPDX-License-Identifier: GPL-3.0-or-later

// What the user's presets are made of: the bytes are read as a preset file, restored, and kept as the list of presets,
// which is then loaded, added to and stored.

#include "FuzzInput.h"
#include "banks/SordelinPresetFile.h"
#include "plugin/SordelinMainComponent.h"

#include <juce_events/juce_events.h>

#include <cstring>

using namespace morvanelab;

namespace
{

/** A plug-in without an engine, which would only take time. It lives until the process ends. */
struct Plugin
{
    const juce::ScopedJuceInitialiser_GUI messages;
    SordelinMainComponent core;
};

void readAsPreset (SordelinMainComponent& core, const std::vector<std::uint8_t>& bytes)
{
    const juce::TemporaryFile file (SordelinPresetFile::extension);
    {
        juce::FileOutputStream stream (file.getFile());
        if (! bytes.empty())
            stream.write (bytes.data(), bytes.size());
    }
    SordelinState state;
    fuzz::require (SordelinPresetFile::read (file.getFile(), state), "a file of any size is a preset");
    const auto expected = SordelinPresetFile::fromBytes (bytes.data(), bytes.size());
    fuzz::require (std::memcmp (&state, &expected, sizeof state) == 0, "what is missing is zeros");
    core.setState (juce::MemoryBlock (&state, sizeof state));
}

void readAsList (SordelinMainComponent& core, const std::vector<std::uint8_t>& bytes)
{
    auto& properties = core.getShelf().getProperties();
    const auto text = juce::String::createStringFromData (bytes.data(), static_cast<int> (bytes.size()));
    properties.setString ("presets_list", text);
    SordelinPresetList list (properties);
    const int result = list.load();
    fuzz::require (result == 1 || result == 14 || result == 15 || result == 34, "one of the codes");
    list.add (properties.getFile());
    list.save();
    fuzz::require (list.load() == 1 && list.size() >= 1, "what was stored is read back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    static Plugin& plugin = *new Plugin;
    const auto bytes = fuzz::exactCopy (data, size);
    readAsPreset (plugin.core, bytes);
    readAsList (plugin.core, bytes);
    return 0;
}
