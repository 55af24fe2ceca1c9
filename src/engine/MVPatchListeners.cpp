// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVPatchListeners.h"

#include <algorithm>

namespace morvanelab
{

void MVPatchListeners::add (std::vector<Entry>& list, const Entry& entry)
{
    if (entry.function == nullptr)
        return;

    const MVScopedLock lock (locker);
    flags.fetch_or (1, std::memory_order_relaxed);
    const bool known = std::any_of (list.begin(), list.end(),
                                    [&entry] (const Entry& other)
                                    { return other.function == entry.function && other.context == entry.context; });
    if (! known)
        list.push_back (entry);
}

void MVPatchListeners::remove (std::vector<Entry>& list, Function function, void* context)
{
    const MVScopedLock lock (locker);
    std::erase_if (list, [function, context] (const Entry& entry)
                   { return entry.function == function && entry.context == context; });
}

std::vector<MVPatchListeners::Entry> MVPatchListeners::copyOf (const std::vector<Entry>& list) const
{
    const MVScopedLock lock (locker);
    return list;
}

void MVPatchListeners::addPatchListener (Function function, void* context, int layer, bool wantsProxy)
{
    add (patchEntries, { function, context, layer, wantsProxy });
}

void MVPatchListeners::removePatchListener (Function function, void* context)
{
    remove (patchEntries, function, context);
}

void MVPatchListeners::addStateListener (Function function, void* context)
{
    add (stateEntries, { function, context, -1, false });
}

void MVPatchListeners::removeStateListener (Function function, void* context)
{
    remove (stateEntries, function, context);
}

void MVPatchListeners::tellPatchChanged (int layer, std::uint64_t rendererId,
                                         const std::function<std::uint64_t()>& makeProxy) const
{
    // One snapshot for all: a second one would drive out the first before its listener has acquired it.
    std::uint64_t proxyId = 0;
    for (const Entry& entry : copyOf (patchEntries))
    {
        if (entry.layer >= 0 && entry.layer != layer)
            continue;
        if (entry.wantsProxy && proxyId == 0)
            proxyId = makeProxy();
        entry.function (entry.context, layer, rendererId, entry.wantsProxy ? proxyId : 0);
    }
}

void MVPatchListeners::tellStateChanged (std::uint64_t rendererId) const
{
    for (const Entry& entry : copyOf (stateEntries))
        entry.function (entry.context, 0, rendererId, 0);
}

int MVPatchListeners::count() const
{
    const MVScopedLock lock (locker);
    return static_cast<int> (patchEntries.size() + stateEntries.size());
}

} // namespace morvanelab
