// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "host/VstInstance.h"

#include <vector>

namespace morvanelab::host
{

/** A note in seconds from the start. */
struct TuneNote
{
    int key;
    int velocity; ///< 1 to 127
    double on;
    double off;
};

/** A short tune that shows a sound in several registers: a rising arpeggio, a melody over a bass, a last chord. */
std::vector<TuneNote> builtInTune();

/** The end of the last note in seconds. */
double tuneLength (const std::vector<TuneNote>& tune);

/** The MIDI messages, on channel 1, that fall into a block, in the order in which they sound; an off comes before
    an on of the same sample. */
std::vector<MidiBytes> messagesInBlock (const std::vector<TuneNote>& tune, double rate, long firstFrame, int frames);

} // namespace morvanelab::host
