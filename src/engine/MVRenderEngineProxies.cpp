// SPDX-License-Identifier: GPL-3.0-or-later
// The calls of MVRenderEngine that give out patch snapshots and read them.
#include "engine/MVOperator_proxy.h"
#include "engine/MVPolyPatch_proxy.h"
#include "engine/MVRenderEngine.h"
#include "foundation/MVResult.h"

#include <algorithm>
#include <new>

namespace morvanelab
{

namespace
{

using Accessor = MVPatchAccessorProxy;

template <typename Read>
int readPatch (const Accessor& accessor, Read read)
{
    if (accessor.proxy == nullptr)
        return resultNotEnabled;

    read (*accessor.proxy);
    return resultDone;
}

template <typename Read>
int readNode (const Accessor& accessor, std::uint64_t nodeId, Read read)
{
    if (accessor.proxy == nullptr)
        return resultNotEnabled;

    const MVPolyPatch_proxy& patch = *accessor.proxy;
    const auto* const node = dynamic_cast<const MVOperator_proxy*> (patch.nodeById (patch.getLayer(), nodeId));
    if (node == nullptr)
        return resultUnknownId;

    read (*node);
    return resultDone;
}

void copyText (std::string& out, const char* text, int length)
{
    if (text != nullptr)
        out.assign (text, static_cast<std::size_t> (length));
    else
        out.clear();
}

} // namespace

// Giving out ------------------------------------------------------------------------------------------------------

std::uint64_t MVRenderEngine::createPatchProxy (std::uint64_t part, int layer)
{
    const MVScopedLock lock (apiLock);
    return rendererManager.createPatchProxy (part, layer);
}

int MVRenderEngine::acquirePatchAccessor (std::uint64_t proxyId, MVPatchAccessorProxy* out)
{
    if (out == nullptr)
        return resultBadArgument;

    const MVScopedLock lock (apiLock);
    Accessor record { rendererManager.acquirePatchProxy (proxyId), proxyId };
    if (record.proxy == nullptr)
        return resultUnknownId;

    try
    {
        accessors.push_back (record);
    }
    catch (const std::bad_alloc&)
    {
        rendererManager.releasePatchProxy (proxyId);
        return resultNoMemory;
    }

    *out = std::move (record);
    return resultDone;
}

int MVRenderEngine::releasePatchAccessor (std::uint64_t proxyId)
{
    Accessor released; // destroyed after the lock is free
    const MVScopedLock lock (apiLock);

    const auto found = std::find_if (accessors.begin(), accessors.end(),
                                     [proxyId] (const Accessor& each) { return each.proxyId == proxyId; });
    if (found == accessors.end())
        return resultUnknownId;

    // Its part may have gone meanwhile, and the snapshot's place there with it.
    rendererManager.releasePatchProxy (proxyId);
    released = std::move (*found);
    accessors.erase (found);
    return resultDone;
}

// Queries ---------------------------------------------------------------------------------------------------------

int MVRenderEngine::getVariableName (const Accessor& accessor, int index, std::string& out)
{
    return readPatch (accessor,
                      [&] (const MVPolyPatch_proxy& patch)
                      {
                          int length = 0;
                          const char* const text = patch.getVariableName (index, length);
                          copyText (out, text, length);
                      });
}

int MVRenderEngine::getVariableDesc (const Accessor& accessor, int index, std::string& out)
{
    return readPatch (accessor,
                      [&] (const MVPolyPatch_proxy& patch)
                      {
                          int length = 0;
                          const char* const text = patch.getVariableDesc (index, length);
                          copyText (out, text, length);
                      });
}

int MVRenderEngine::getParameterInUse (const Accessor& accessor, int index, bool& out)
{
    return readPatch (accessor, [&] (const MVPolyPatch_proxy& patch) { out = patch.isParameterInUse (index); });
}

int MVRenderEngine::getNumNodes (const Accessor& accessor, int& out)
{
    return readPatch (accessor, [&] (const MVPolyPatch_proxy& patch) { out = patch.getNumNodes(); });
}

int MVRenderEngine::getNodeIdAt (const Accessor& accessor, int index, std::uint64_t& out)
{
    return readPatch (accessor, [&] (const MVPolyPatch_proxy& patch) { out = patch.getNodeIdAt (index); });
}

int MVRenderEngine::getNodeType (const Accessor& accessor, std::uint64_t nodeId, int& out)
{
    return readNode (accessor, nodeId,
                     [&] (const MVOperator_proxy& node) { out = patchNodeTypeNumber (node.typeId()); });
}

int MVRenderEngine::getRootNode (const Accessor& accessor, int& out)
{
    return readPatch (accessor, [&] (const MVPolyPatch_proxy& patch) { out = patch.getRootNode(); });
}

int MVRenderEngine::getNumPorts (const Accessor& accessor, std::uint64_t nodeId, int direction, int& out)
{
    return readNode (accessor, nodeId, [&] (const MVOperator_proxy& node) { out = node.getNumPorts (direction); });
}

int MVRenderEngine::getPortDesc (const Accessor& accessor, std::uint64_t nodeId, int direction, int port,
                                 std::string& out)
{
    return readNode (accessor, nodeId,
                     [&] (const MVOperator_proxy& node)
                     {
                         const auto text = node.getPortDesc (direction, port);
                         out = text ? text->toStdString() : std::string();
                     });
}

int MVRenderEngine::getInputSource (const Accessor& accessor, std::uint64_t nodeId, int input, std::uint64_t& sourceId,
                                    int& sourcePort)
{
    return readNode (accessor, nodeId,
                     [&] (const MVOperator_proxy& node)
                     {
                         sourceId = node.getInputSource (input);
                         sourcePort = node.getInputSourcePort (input);
                     });
}

} // namespace morvanelab
