// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/OperatorSpec.h"

#include <array>
#include <cstdint>
#include <vector>

namespace morvanelab
{

/** Called once a block with the greatest absolute value of a port's block. The last argument is 0. */
using MVLevelCallback = void (*) (void* user, std::uint64_t operatorId, const double* peak, int reserved);
/** Called once a block with a port's block. The third and fourth arguments are 0 and null. */
using MVBlockCallback = void (*) (void* user, std::uint64_t operatorId, int reserved, const void* reservedData,
                                  const double* samples, int frames);

/** The four tables of callbacks through which a user interface watches an operator's ports. They are changed
    only while the audio is excluded; serve runs on the audio thread, takes no lock and allocates nothing. */
class MVOpMonitors
{
public:
    /** The adds refuse (false) a direction other than 1 and 2 and a port outside 0 to 15. */
    bool addLevel (int direction, int port, MVLevelCallback callback, void* user);
    bool addBlock (int direction, int port, MVBlockCallback callback, void* user);
    /** The removes take away the first equal pair and return whether there was one. */
    bool removeLevel (int direction, int port, MVLevelCallback callback, void* user);
    bool removeBlock (int direction, int port, MVBlockCallback callback, void* user);

    /** Inputs before outputs; in a port level callbacks before block callbacks. */
    void serve (std::uint64_t operatorId, int numInputs, const double* const* inputs, int numOutputs,
                const double* const* outputs, int frames) const;

private:
    template <typename Callback>
    struct Entry
    {
        Callback callback;
        void* user;
        bool operator== (const Entry&) const = default;
    };

    struct Port
    {
        std::vector<Entry<MVLevelCallback>> levels;
        std::vector<Entry<MVBlockCallback>> blocks;
    };

    using Ports = std::array<Port, maxOperatorPorts>;

    Port* find (int direction, int port);
    static void servePorts (const Ports& ports, std::uint64_t operatorId, int count, const double* const* signals,
                            int frames);

    Ports inputs;
    Ports outputs;
};

} // namespace morvanelab
