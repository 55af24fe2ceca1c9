// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/LockWatch.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>

#include "support/Sanitizers.h"

#if MV_TEST_INTERPOSES
#include <dlfcn.h>
#include <pthread.h>
#endif

namespace morvanelab::test
{

static thread_local LockWatch* watchOfThread __attribute__ ((tls_model ("initial-exec"))) = nullptr;

LockWatch::LockWatch (std::initializer_list<const MVLocker*> exemptLockers)
{
    for (const MVLocker* const locker : exemptLockers)
        exempt (*locker);
    watchOfThread = this;
}

LockWatch::~LockWatch() { watchOfThread = nullptr; }

void LockWatch::exempt (const MVLocker& locker)
{
    if (exemptCount >= maxExempt)
        std::abort();
    exempted[exemptCount++] = locker.nativeAddress();
}

bool LockWatch::isActive() { return MV_TEST_INTERPOSES != 0; }

void LockWatch::noteLock (const void* mutex)
{
    if (std::find (exempted, exempted + exemptCount, mutex) == exempted + exemptCount)
        ++locks;
}

} // namespace morvanelab::test

#if MV_TEST_INTERPOSES

namespace
{

using LockFunction = int (*) (pthread_mutex_t*);

int callReal (std::atomic<LockFunction>& real, const char* name, pthread_mutex_t* mutex)
{
    LockFunction function = real.load (std::memory_order_acquire);

    if (function == nullptr)
    {
        function = reinterpret_cast<LockFunction> (dlsym (RTLD_NEXT, name));
        if (function == nullptr)
            std::abort();
        real.store (function, std::memory_order_release);
    }

    if (morvanelab::test::watchOfThread != nullptr)
        morvanelab::test::watchOfThread->noteLock (mutex);
    return function (mutex);
}

constinit std::atomic<LockFunction> realLock { nullptr };
constinit std::atomic<LockFunction> realTryLock { nullptr };

} // namespace

extern "C" __attribute__ ((visibility ("default"))) int pthread_mutex_lock (pthread_mutex_t* mutex) noexcept
{
    return callReal (realLock, "pthread_mutex_lock", mutex);
}

extern "C" __attribute__ ((visibility ("default"))) int pthread_mutex_trylock (pthread_mutex_t* mutex) noexcept
{
    return callReal (realTryLock, "pthread_mutex_trylock", mutex);
}

#endif
