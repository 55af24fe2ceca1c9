// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/VstInstance.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace morvanelab::host
{

namespace
{

constexpr vst2::VstIntPtr offlineProcessLevel = 4;
constexpr vst2::VstIntPtr realtimeProcessLevel = 2;

/** The instance whose entry is running: the plug-in calls back before it returns its record. */
thread_local VstInstance* beingMade = nullptr;

} // namespace

VstInstance::VstInstance (const VstLibrary& library)
{
    beingMade = this;
    plugin = library.getEntry() (&VstInstance::hostCallback);
    beingMade = nullptr;
    if (plugin == nullptr || plugin->magic != vst2::kEffectMagic)
        throw std::runtime_error ("the plug-in gave no effect");
    plugin->user = this;
    dispatch (vst2::effOpen);
}

VstInstance::~VstInstance()
{
    stop();
    dispatch (vst2::effClose);
}

std::intptr_t VstInstance::dispatch (int opcode, int index, std::intptr_t value, void* pointer, float option)
{
    return plugin->dispatcher (plugin, opcode, index, value, pointer, option);
}

std::string VstInstance::text (int opcode, int index)
{
    std::array<char, 256> buffer {};
    dispatch (opcode, index, 0, buffer.data());
    buffer.back() = 0;
    return buffer.data();
}

void VstInstance::start (double rate, int largestBlock)
{
    stop();
    dispatch (vst2::effSetSampleRate, 0, 0, nullptr, static_cast<float> (rate));
    dispatch (vst2::effSetBlockSize, 0, largestBlock);
    dispatch (vst2::effMainsChanged, 0, 1);
    dispatch (vst2::effStartProcess);
    running = true;
}

void VstInstance::stop()
{
    if (! running)
        return;
    dispatch (vst2::effStopProcess);
    dispatch (vst2::effMainsChanged, 0, 0);
    running = false;
}

void VstInstance::send (std::span<const MidiBytes> events)
{
    midiEvents.assign (events.size(), vst2::VstMidiEvent {});
    midiList.assign (sizeof (vst2::VstEvents) + events.size() * sizeof (void*), 0);

    const auto count = static_cast<vst2::VstInt32> (events.size());
    std::memcpy (midiList.data() + offsetof (vst2::VstEvents, numEvents), &count, sizeof count);
    for (std::size_t i = 0; i < events.size(); ++i)
    {
        auto& event = midiEvents[i];
        event.type = vst2::kVstMidiType;
        event.byteSize = sizeof event;
        event.deltaFrames = events[i].sample;
        std::memcpy (event.midiData, events[i].data, sizeof events[i].data);
        void* address = &event;
        std::memcpy (midiList.data() + offsetof (vst2::VstEvents, events) + i * sizeof address, &address,
                     sizeof address);
    }
    dispatch (vst2::effProcessEvents, 0, 0, midiList.data());
}

void VstInstance::process (const float* const* in, float* const* out, int frames)
{
    // The interface was written without const: a plug-in does not write to its inputs.
    float* inputs[2] { const_cast<float*> (in[0]), const_cast<float*> (in[1]) };
    float* outputs[2] { out[0], out[1] };
    plugin->processReplacing (plugin, inputs, outputs, frames);
}

void VstInstance::render (int frames, std::vector<float>& left, std::vector<float>& right)
{
    const auto count = static_cast<std::size_t> (frames);
    const auto start = left.size();
    left.resize (start + count);
    right.resize (start + count);
    silence.resize (std::max (silence.size(), count), 0.0F);

    const float* in[2] { silence.data(), silence.data() };
    float* out[2] { left.data() + start, right.data() + start };
    process (in, out, frames);
}

std::vector<std::uint8_t> VstInstance::getState()
{
    void* bytes = nullptr;
    const auto size = dispatch (vst2::effGetChunk, 0, 0, &bytes);
    if (bytes == nullptr || size <= 0)
        return {};
    const auto* first = static_cast<const std::uint8_t*> (bytes);
    return { first, first + size };
}

void VstInstance::setState (std::span<const std::uint8_t> bytes)
{
    std::vector<std::uint8_t> copy (bytes.begin(), bytes.end());
    copy.reserve (1); // never a null address
    dispatch (vst2::effSetChunk, 0, static_cast<std::intptr_t> (copy.size()), copy.data());
}

vst2::VstIntPtr VstInstance::answer (int opcode)
{
    if (opcode >= 0 && opcode < static_cast<int> (numOpcodes))
        ++received[static_cast<std::size_t> (opcode)];
    switch (opcode)
    {
        case vst2::audioMasterUpdateDisplay:
        case vst2::audioMasterIOChanged:
        case vst2::audioMasterBeginEdit:
        case vst2::audioMasterEndEdit:
            return 1;
        case vst2::audioMasterGetCurrentProcessLevel:
            return offline ? offlineProcessLevel : realtimeProcessLevel;
        default:
            return 0;
    }
}

vst2::VstIntPtr VstInstance::hostCallback (vst2::AEffect* effect, vst2::VstInt32 opcode, vst2::VstInt32,
                                           vst2::VstIntPtr, void* pointer, float)
{
    if (opcode == vst2::audioMasterVersion)
        return kVstVersion;
    if (opcode == vst2::audioMasterGetVendorString || opcode == vst2::audioMasterGetProductString)
    {
        std::strcpy (static_cast<char*> (pointer), "sordelin-host");
        return 1;
    }
    auto* instance =
        effect != nullptr && effect->user != nullptr ? static_cast<VstInstance*> (effect->user) : beingMade;
    return instance != nullptr ? instance->answer (opcode) : 0;
}

} // namespace morvanelab::host
