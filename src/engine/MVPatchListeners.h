// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVLocker.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

namespace morvanelab
{

/** Who is told when the patch of a layer changes, and who is told when notes start or end.
    Lists may be changed on any thread; listeners are called without a lock, so a call under way may still end
    after a removal. A function and context pair is kept once a list. */
class MVPatchListeners
{
public:
    /** Patch listeners get (context, layer, the renderer's identity, the identity of a snapshot or 0), state
        listeners (context, 0, the renderer's identity, 0). */
    using Function = void (*) (void* context, std::int64_t layer, std::uint64_t rendererId, std::uint64_t proxyId);

    /** A layer of -1 listens to every layer. */
    void addPatchListener (Function function, void* context, int layer, bool wantsProxy);
    void removePatchListener (Function function, void* context);
    void addStateListener (Function function, void* context);
    void removeStateListener (Function function, void* context);

    /** makeProxy is called once if anybody told wants a snapshot, else not at all. */
    void tellPatchChanged (int layer, std::uint64_t rendererId, const std::function<std::uint64_t()>& makeProxy) const;
    void tellStateChanged (std::uint64_t rendererId) const;

    int count() const;
    /** Whether a listener was ever added. */
    bool everUsed() const { return (flags.load (std::memory_order_relaxed) & 1) != 0; }

private:
    struct Entry
    {
        Function function = nullptr;
        void* context = nullptr;
        int layer = -1;
        bool wantsProxy = false;
    };

    void add (std::vector<Entry>& list, const Entry& entry);
    void remove (std::vector<Entry>& list, Function function, void* context);
    std::vector<Entry> copyOf (const std::vector<Entry>& list) const;

    mutable MVLocker locker;
    std::vector<Entry> patchEntries;
    std::vector<Entry> stateEntries;
    std::atomic<unsigned> flags { 0 };
};

} // namespace morvanelab
