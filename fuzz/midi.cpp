// SPDX-License-Identifier: GPL-3.0-or-later

// MIDI bytes as a host hands them over, and stored MIDI maps. The first byte chooses: 0 the bytes of blocks, each
// headed by its length; 1 a map tree.

#include "FuzzInput.h"
#include "control/MVControlManager.h"
#include "control/MVMidiManager.h"
#include "foundation/MVEventManager.h"

#include <algorithm>

using namespace morvanelab;

namespace
{

void playBlocks (MVMidiManager& midi, const std::uint8_t* data, std::size_t size)
{
    while (size > 0)
    {
        const std::size_t count = std::min<std::size_t> (data[0], size - 1);
        const auto block = fuzz::exactCopy (data + 1, count);
        (void)midi.processMidiDataBuffer (block.data(), static_cast<int> (count), false);
        data += count + 1;
        size -= count + 1;
    }

    for (int channel = -1; channel <= MVMidiManager::numChannels; ++channel)
    {
        const MVIRange range = midi.getActiveNoteRange (channel);
        fuzz::require (range.low >= -1 && range.high() < 128, "sounding notes are notes");
    }
}

void loadMap (MVMidiManager& midi, const std::uint8_t* data, std::size_t size)
{
    const auto bytes = fuzz::exactCopy (data, size);
    auto tree = makeSmart<MVRiffPacker> (bytes.data(), static_cast<int> (size), false);
    (void)midi.loadMidiMap (tree);

    auto saved = midi.saveMidiMap();
    fuzz::require (static_cast<bool> (saved), "every map can be saved");
    (void)midi.loadMidiMap (saved);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;

    MVEventManager events;
    events.addThreadCategory (threadCategoryEvent);
    events.setActive (true);
    MVControlManager controls (&events);
    controls.resizeControls (8);
    for (int id = 1; id <= 8; ++id)
        (void)controls.acquireControl (id);
    MVMidiManager midi (&controls, &events);

    if ((data[0] & 1) == 0)
    {
        for (int controller = 0; controller < 128; controller += 7)
            (void)midi.addMidiControlToValueId (controller % 16, controller, 1 + controller % 8);
        playBlocks (midi, data + 1, size - 1);
    }
    else
    {
        loadMap (midi, data + 1, size - 1);
    }

    events.setActive (false);
    return 0;
}
