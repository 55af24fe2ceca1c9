// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <thread>

namespace morvanelab
{

/** A lock that spans several calls: a flag with the thread that set it, for asking. It blocks nobody and, unlike a
    mutex, may be freed by another thread once the one that took it has ended. Not recursive. Any thread. */
class MVTransitionLock
{
public:
    /** Returns whether the lock was free and now belongs to the calling thread. */
    bool tryLock()
    {
        if (held.exchange (true, std::memory_order_acquire))
            return false;
        owner.store (std::this_thread::get_id(), std::memory_order_relaxed);
        return true;
    }

    void unlock()
    {
        owner.store (std::thread::id(), std::memory_order_relaxed);
        held.store (false, std::memory_order_release);
    }

    bool isHeld() const { return held.load (std::memory_order_acquire); }
    bool isHeldByThisThread() const
    {
        return isHeld() && owner.load (std::memory_order_relaxed) == std::this_thread::get_id();
    }

private:
    std::atomic<bool> held { false };
    std::atomic<std::thread::id> owner { std::thread::id() };
};

} // namespace morvanelab
