// SPDX-License-Identifier: GPL-3.0-or-later
// The part of MVPatchRenderer that keeps snapshots of patches.
#include "engine/MVPatchRenderer.h"
#include "engine/MVPolyPatch_proxy.h"

#include <new>

namespace morvanelab
{

std::uint64_t MVPatchRenderer::createPatchProxy (int layer)
{
    const auto fresh = makePatchProxy (layer);
    if (fresh == nullptr)
        return 0;

    releasePatchProxy (fresh->getId());
    return fresh->getId();
}

/** A fresh snapshot in the list, acquired once; null for a bad layer or without memory. */
std::shared_ptr<MVPolyPatch_proxy> MVPatchRenderer::makePatchProxy (int layer)
try
{
    if (layer < 0 || layer > scratchLayer)
        return nullptr;

    // Keeps a load from beginning where it can; within one, the voice lock alone does.
    const bool keepsLoadsOut = transitionLock.tryLock();
    std::shared_ptr<MVPolyPatch_proxy> fresh;
    try
    {
        const MVScopedLock structure (voiceLock);
        fresh = std::make_shared<MVPolyPatch_proxy> (voice (0), layer);
    }
    catch (const std::bad_alloc&)
    {
        // Told by the empty pointer.
    }
    if (keepsLoadsOut)
        transitionLock.unlock();

    if (fresh != nullptr)
        keepPatchProxy (fresh);
    return fresh;
}
catch (const std::bad_alloc&)
{
    return nullptr;
}

void MVPatchRenderer::keepPatchProxy (const std::shared_ptr<MVPolyPatch_proxy>& fresh)
{
    // Destroyed after the lock is free.
    std::vector<std::shared_ptr<MVPolyPatch_proxy>> dropped;
    const MVScopedLock list (proxyLock);

    for (int index = patchProxies.size(); --index >= 0;)
        if (! patchProxies[index]->inUse())
        {
            dropped.push_back (patchProxies[index]);
            patchProxies.removeAt (index);
        }

    patchProxies.add (fresh);
    fresh->acquire();
}

std::shared_ptr<MVPolyPatch_proxy> MVPatchRenderer::findPatchProxy (std::uint64_t id) const
{
    for (const auto& each : patchProxies)
        if (each->getId() == id)
            return each;
    return nullptr;
}

std::shared_ptr<const MVPolyPatch_proxy> MVPatchRenderer::acquirePatchProxy (std::uint64_t id)
{
    const MVScopedLock list (proxyLock);
    auto found = findPatchProxy (id);
    if (found != nullptr)
        found->acquire();
    return found;
}

bool MVPatchRenderer::releasePatchProxy (std::uint64_t id)
{
    const MVScopedLock list (proxyLock);
    const auto found = findPatchProxy (id);
    if (found == nullptr)
        return false;

    found->release();
    return true;
}

void MVPatchRenderer::tellPatchChanged (int layer)
{
    if (! notifyEnabled.load (std::memory_order_relaxed))
        return;

    // Held until all have been told, so that a listener can acquire it whatever other threads create meanwhile.
    std::shared_ptr<MVPolyPatch_proxy> fresh;
    patchListeners.tellPatchChanged (layer, getId(),
                                     [&]
                                     {
                                         fresh = makePatchProxy (layer);
                                         return fresh != nullptr ? fresh->getId() : 0;
                                     });
    if (fresh != nullptr)
        releasePatchProxy (fresh->getId());
}

int MVPatchRenderer::numPatchProxies() const
{
    const MVScopedLock list (proxyLock);
    return patchProxies.size();
}

} // namespace morvanelab
