// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinParameterTable.h"

namespace morvanelab
{

static_assert (MVPatchSummary::numVariables == hostParameterCount);

SordelinParameterTable::SordelinParameterTable() { rebuild ({}); }

void SordelinParameterTable::rebuild (const MVPatchSummary& patch)
{
    const MVScopedLock scope (paramLock);
    loaded = patch;
    int count = 0;
    for (int i = 0; i < hostParameterCount; ++i)
    {
        const auto slot = static_cast<std::size_t> (i);
        const bool enabled = patch.loaded && patch.variables[slot].inUse;
        patchToHostParam[slot].store (enabled ? count : -1, std::memory_order_relaxed);
        if (enabled)
            hostToPatchParam[static_cast<std::size_t> (count++)].store (i, std::memory_order_relaxed);
    }
    for (int i = count; i < hostParameterCount; ++i)
        hostToPatchParam[static_cast<std::size_t> (i)].store (-1, std::memory_order_relaxed);
    activeParamCount.store (count, std::memory_order_relaxed);
}

int SordelinParameterTable::lookUp (const Indices& indices, int index)
{
    if (index < 0 || index >= hostParameterCount)
        return -1;
    return indices[static_cast<std::size_t> (index)].load (std::memory_order_relaxed);
}

std::string SordelinParameterTable::textOf (int hostIndex, std::string MVPatchSummary::Variable::*text) const
{
    const MVScopedLock scope (paramLock);
    const int patchIndex = hostToPatch (hostIndex);
    if (patchIndex < 0 || ! loaded.loaded)
        return {};
    const auto& found = loaded.variables[static_cast<std::size_t> (patchIndex)].*text;
    return found.empty() ? "-----" : found;
}

std::string SordelinParameterTable::getName (int hostIndex) const
{
    return textOf (hostIndex, &MVPatchSummary::Variable::name);
}

std::string SordelinParameterTable::getText (int hostIndex) const
{
    return textOf (hostIndex, &MVPatchSummary::Variable::description);
}

MVPatchSummary SordelinParameterTable::getPatch() const
{
    const MVScopedLock scope (paramLock);
    return loaded;
}

} // namespace morvanelab
