// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpMonitors.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

template <typename Entry>
bool removeFirst (std::vector<Entry>& entries, const Entry& entry)
{
    const auto found = std::find (entries.begin(), entries.end(), entry);
    if (found == entries.end())
        return false;
    entries.erase (found);
    return true;
}

double absolutePeak (const double* samples, int frames)
{
    double peak = 0.0;
    for (int i = 0; i < frames; ++i)
        peak = std::max (peak, std::abs (samples[i]));
    return peak;
}

} // namespace

bool MVOpMonitors::addLevel (int direction, int port, MVLevelCallback callback, void* user)
{
    Port* const target = find (direction, port);
    if (target != nullptr)
        target->levels.push_back ({ callback, user });
    return target != nullptr;
}

bool MVOpMonitors::addBlock (int direction, int port, MVBlockCallback callback, void* user)
{
    Port* const target = find (direction, port);
    if (target != nullptr)
        target->blocks.push_back ({ callback, user });
    return target != nullptr;
}

bool MVOpMonitors::removeLevel (int direction, int port, MVLevelCallback callback, void* user)
{
    Port* const target = find (direction, port);
    return target != nullptr && removeFirst (target->levels, { callback, user });
}

bool MVOpMonitors::removeBlock (int direction, int port, MVBlockCallback callback, void* user)
{
    Port* const target = find (direction, port);
    return target != nullptr && removeFirst (target->blocks, { callback, user });
}

void MVOpMonitors::serve (std::uint64_t operatorId, int numInputs, const double* const* inputSignals, int numOutputs,
                          const double* const* outputSignals, int frames) const
{
    servePorts (inputs, operatorId, numInputs, inputSignals, frames);
    servePorts (outputs, operatorId, numOutputs, outputSignals, frames);
}

MVOpMonitors::Port* MVOpMonitors::find (int direction, int port)
{
    if (port < 0 || port >= maxOperatorPorts || (direction != portsIn && direction != portsOut))
        return nullptr;

    return &(direction == portsIn ? inputs : outputs)[static_cast<std::size_t> (port)];
}

void MVOpMonitors::servePorts (const Ports& ports, std::uint64_t operatorId, int count, const double* const* signals,
                               int frames)
{
    const int served = std::min (count, maxOperatorPorts);

    for (int i = 0; i < served; ++i)
    {
        const Port& port = ports[static_cast<std::size_t> (i)];

        if (! port.levels.empty())
        {
            const double peak = absolutePeak (signals[i], frames);
            for (const auto& entry : port.levels)
                if (entry.callback != nullptr)
                    entry.callback (entry.user, operatorId, &peak, 0);
        }

        for (const auto& entry : port.blocks)
            if (entry.callback != nullptr)
                entry.callback (entry.user, operatorId, 0, nullptr, signals[i], frames);
    }
}

} // namespace morvanelab
