// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVLocker.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <pthread.h>
#endif

namespace morvanelab
{

#if defined(_WIN32)

struct MVLocker::Native
{
    Native() { InitializeCriticalSection (&section); }
    ~Native() { DeleteCriticalSection (&section); }
    void lock() { EnterCriticalSection (&section); }
    bool tryLock() { return TryEnterCriticalSection (&section) != 0; }
    void unlock() { LeaveCriticalSection (&section); }

    CRITICAL_SECTION section;
};

#else

struct MVLocker::Native
{
    Native()
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init (&attributes);
        pthread_mutexattr_settype (&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init (&section, &attributes);
        pthread_mutexattr_destroy (&attributes);
    }
    ~Native() { pthread_mutex_destroy (&section); }
    void lock() { pthread_mutex_lock (&section); }
    bool tryLock() { return pthread_mutex_trylock (&section) == 0; }
    void unlock() { pthread_mutex_unlock (&section); }

    pthread_mutex_t section;
};

#endif

MVLocker::MVLocker() : native (std::make_unique<Native>()) {}

MVLocker::~MVLocker()
{
    if (isHeld())
        native->unlock();
}

void MVLocker::lock()
{
    held.store (true, std::memory_order_relaxed);
    native->lock();
}

bool MVLocker::tryLock() { return native->tryLock(); }

void MVLocker::unlock()
{
    native->unlock();
    held.store (false, std::memory_order_relaxed);
}

const void* MVLocker::nativeAddress() const { return &native->section; }

} // namespace morvanelab
