// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plugin/RigBank.h"
#include "support/TempFolder.h"

#include "host/VstInstance.h"

#include <memory>
#include <string>
#include <vector>

namespace morvanelab::test
{

/** Stereo sound that was rendered. */
struct Take
{
    std::vector<float> left;
    std::vector<float> right;

    bool operator== (const Take&) const = default;
    double peak() const;
};

/** The built plug-in as if freshly installed, with one bank beside it and a home of its own, on a machine without a
    display. One at a time. */
class PluginRig
{
public:
    explicit PluginRig (const RigSettings& settings = {});

    host::VstLibrary& library() { return *plugin; }
    /** A new instance whose blocks wait for what is under way, so that results repeat. */
    std::unique_ptr<host::VstInstance> open();
    /** The same, started and restored to a state that names a slot. */
    std::unique_ptr<host::VstInstance> openWithPatch (int slot, double rate = 44100.0, int block = 512);
    /** A state as a host would have stored it with that patch; the plug-in must have been started once. */
    std::vector<std::uint8_t> stateFor (int slot) const;

private:
    TempFolder folder;
    std::unique_ptr<host::VstLibrary> plugin;
};

/** Renders frames in blocks of the given sizes, used in turn; the messages go into the first block. */
Take render (host::VstInstance& instance, int frames, const std::vector<int>& blocks = { 512 },
             const std::vector<host::MidiBytes>& messages = {});

/** A note-on at the start of a block, on channel 1. */
host::MidiBytes noteOn (int key, int velocity = 100);
/** Reads a field of a state. */
template <typename Number>
Number stateField (const std::vector<std::uint8_t>& state, std::size_t offset);

} // namespace morvanelab::test
