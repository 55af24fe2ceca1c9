// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "host/VstLibrary.h"

#include <array>
#include <atomic>
#include <span>
#include <string>
#include <vector>

namespace morvanelab::host
{

/** A short MIDI message (1 to 3 bytes) at a sample of the block. */
struct MidiBytes
{
    int sample;
    unsigned char data[3];
};

/** Two channels of samples. */
struct StereoBlock
{
    explicit StereoBlock (int frames) : left (static_cast<std::size_t> (frames)), right (left.size()) {}

    std::vector<float> left;
    std::vector<float> right;
};

/** One running plug-in, and the host side it talks to. All calls on one thread, or one after the other; the
    counters of what the plug-in told the host may be read at any time. */
class VstInstance
{
public:
    /** Makes an instance and opens it. Raises std::runtime_error if the plug-in refuses. */
    explicit VstInstance (const VstLibrary& library);
    /** Suspends a running instance and closes it. */
    ~VstInstance();
    VstInstance (const VstInstance&) = delete;
    VstInstance& operator= (const VstInstance&) = delete;

    vst2::AEffect& effect() { return *plugin; }
    /** How often the plug-in has called its host with an opcode. */
    int calls (int opcode) const { return received.at (static_cast<std::size_t> (opcode)).load(); }

    /** The raw dispatcher. */
    std::intptr_t dispatch (int opcode, int index = 0, std::intptr_t value = 0, void* pointer = nullptr,
                            float option = 0.0F);
    /** A text that an opcode writes; safe up to 255 bytes. */
    std::string text (int opcode, int index = 0);

    /** Tells the plug-in on its next start and block that the host is not in a hurry. */
    void setOffline (bool on) { offline = on; }
    /** Announces rate in Hz and the largest block, and starts processing. */
    void start (double rate, int largestBlock);
    void stop();

    /** Sends MIDI for the block that process runs next. */
    void send (std::span<const MidiBytes> events);
    /** Runs one block in place of a host: frames samples from in to out, which hold at least that many. */
    void process (const float* const* in, float* const* out, int frames);
    /** The same with silent input; appends the output to left and right. */
    void render (int frames, std::vector<float>& left, std::vector<float>& right);

    std::vector<std::uint8_t> getState();
    void setState (std::span<const std::uint8_t> bytes);

private:
    static vst2::VstIntPtr hostCallback (vst2::AEffect* effect, vst2::VstInt32 opcode, vst2::VstInt32 index,
                                         vst2::VstIntPtr value, void* pointer, float option);
    vst2::VstIntPtr answer (int opcode);

    static constexpr std::size_t numOpcodes = 64;

    vst2::AEffect* plugin = nullptr;
    std::array<std::atomic<int>, numOpcodes> received {};
    std::atomic<bool> offline { false };
    bool running = false;
    std::vector<vst2::VstMidiEvent> midiEvents;
    std::vector<std::uint8_t> midiList; ///< the record with its array running on behind it
    std::vector<float> silence;
};

} // namespace morvanelab::host
