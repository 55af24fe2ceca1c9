// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <memory>

namespace morvanelab
{

/** A recursive lock. Every thread may enter again what it holds. */
class MVLocker
{
public:
    MVLocker();
    /** Leaves once if the lock is held. */
    virtual ~MVLocker();
    MVLocker (const MVLocker&) = delete;
    MVLocker& operator= (const MVLocker&) = delete;

    virtual const char* className() const { return "MVLocker"; }
    /** Notes the lock as held and then enters, so isHeld may be true while the caller still waits. */
    virtual void lock();
    /** Returns whether it entered; leaves isHeld alone. */
    virtual bool tryLock();
    /** Leaves, then clears isHeld, also if entered more than once. */
    virtual void unlock();
    virtual bool isHeld() const { return held.load (std::memory_order_relaxed); }

    /** Address of the system's lock, by which tools that watch locks can tell it. */
    const void* nativeAddress() const;

private:
    struct Native;

    std::atomic<bool> held { false };
    std::unique_ptr<Native> native;
};

/** Holds a locker for a scope. */
class MVScopedLock
{
public:
    explicit MVScopedLock (MVLocker& lockerToHold) : locker (lockerToHold) { locker.lock(); }
    ~MVScopedLock() { locker.unlock(); }
    MVScopedLock (const MVScopedLock&) = delete;
    MVScopedLock& operator= (const MVScopedLock&) = delete;

private:
    MVLocker& locker;
};

} // namespace morvanelab
