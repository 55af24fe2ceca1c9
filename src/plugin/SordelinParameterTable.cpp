// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinParameterTable.h"

#include "engine/MVRenderEngine.h"

namespace morvanelab
{

namespace
{

// Numbers of patchNodeTypeNumber.
constexpr int keyboardInputType = 5;
constexpr int hostInputType = 12;

bool holdsNodeOf (int wantedType, const MVPatchAccessorProxy& patch, int numNodes)
{
    for (int i = 0; i < numNodes; ++i)
    {
        std::uint64_t node = 0;
        int type = 0;
        MVRenderEngine::getNodeIdAt (patch, i, node);
        MVRenderEngine::getNodeType (patch, node, type);
        if (type == wantedType)
            return true;
    }
    return false;
}

} // namespace

SordelinParameterTable::SordelinParameterTable() { rebuild ({}); }

void SordelinParameterTable::rebuild (const MVPatchAccessorProxy& patch)
{
    int numNodes = 0;
    MVRenderEngine::getNumNodes (patch, numNodes);

    const MVScopedLock scope (paramLock);
    loadedPatch = numNodes > 0 ? patch : MVPatchAccessorProxy();
    patchLoaded.store (numNodes > 0, std::memory_order_relaxed);
    keyboardInput.store (holdsNodeOf (keyboardInputType, loadedPatch, numNodes), std::memory_order_relaxed);
    hostInput.store (holdsNodeOf (hostInputType, loadedPatch, numNodes), std::memory_order_relaxed);
    rebuildIndices (loadedPatch);
}

void SordelinParameterTable::rebuildIndices (const MVPatchAccessorProxy& patch)
{
    int count = 0;
    for (int i = 0; i < hostParameterCount; ++i)
    {
        bool enabled = false;
        MVRenderEngine::getParameterInUse (patch, i, enabled);
        patchToHostParam[static_cast<std::size_t> (i)].store (enabled ? count : -1, std::memory_order_relaxed);
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

std::string SordelinParameterTable::textOf (int hostIndex, TextQuery query) const
{
    const MVScopedLock scope (paramLock);
    const int patchIndex = hostToPatch (hostIndex);
    if (patchIndex < 0 || loadedPatch.proxy == nullptr)
        return {};
    std::string found;
    query (loadedPatch, patchIndex, found);
    return found.empty() ? "-----" : found;
}

std::string SordelinParameterTable::getName (int hostIndex) const
{
    return textOf (hostIndex, &MVRenderEngine::getVariableName);
}

std::string SordelinParameterTable::getText (int hostIndex) const
{
    return textOf (hostIndex, &MVRenderEngine::getVariableDesc);
}

MVPatchAccessorProxy SordelinParameterTable::getPatch() const
{
    const MVScopedLock scope (paramLock);
    return loadedPatch;
}

} // namespace morvanelab
