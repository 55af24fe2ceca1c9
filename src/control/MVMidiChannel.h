// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/MVMidiMapList.h"

#include <array>
#include <atomic>

namespace morvanelab
{

/** The mappings and the sounding notes of one MIDI channel. */
class MVMidiChannel
{
public:
    static constexpr int numKeys = 128;
    /** Only 0 to 127 occur in MIDI data. */
    static constexpr int numControllers = 256;

    /** By key. */
    std::array<MVMidiMapList, numKeys> keyMaps;
    /** By controller number. */
    std::array<MVMidiMapList, numControllers> controllerMaps;

    /** Notes count from 1: MIDI key k is counted at k + 1, so that index 0 stays unused. Key 127 lands on the
        entry behind the last counter, which is the count of sounding notes itself: it counts double there. */
    void countNote (int key, int change)
    {
        const auto index = static_cast<std::size_t> (key + 1);
        add (noteCounts[activeNotesIndex], change);
        add (noteCounts[index], change);
    }

    int noteCount (int index) const { return noteCounts[static_cast<std::size_t> (index)].load (relaxed); }
    /** Notes sounding on the channel; may fall below 0 after unmatched note-offs. */
    int activeNotes() const { return noteCounts[activeNotesIndex].load (relaxed); }

    void clearNotes()
    {
        for (auto& count : noteCounts)
            count.store (0, relaxed);
    }

private:
    static constexpr std::size_t activeNotesIndex = numKeys;
    static constexpr auto relaxed = std::memory_order_relaxed;

    static void add (std::atomic<int>& count, int change) { count.fetch_add (change, relaxed); }

    std::array<std::atomic<int>, numKeys + 1> noteCounts {};
};

} // namespace morvanelab
