// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "host/Tune.h"

#include <string>
#include <vector>

namespace morvanelab::host
{

/** What the command line asked for. */
struct HostOptions
{
    std::string plugin;
    std::string state;      ///< a file of state bytes, or empty
    std::string bank;       ///< a bank file that the plug-in has in its list, or empty
    int slot = 0;           ///< in that bank
    std::string output;     ///< WAV file, or empty
    std::string screenshot; ///< PNG file, or empty
    double rate = 44100.0;
    std::vector<int> blocks { 512 }; ///< used in turn
    double seconds = 0.0;            ///< 0: until 2 s after the last note
    std::vector<TuneNote> notes;     ///< empty: the built-in tune
    bool realtime = false;
    bool reopen = false; ///< close and open the window again and again
};

extern const char* const hostUsage;

/** Reads the arguments. Raises std::invalid_argument with a sentence for wrong use. */
HostOptions parseHostOptions (int count, const char* const* arguments);

} // namespace morvanelab::host
