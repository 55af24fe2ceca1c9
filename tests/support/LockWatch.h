// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVLocker.h"

#include <initializer_list>

namespace morvanelab::test
{

/** Counts the mutexes that the thread that made it locks, or tries to lock, while it lives. Lockers named as exempt
    do not count. One watch a thread at a time. Inert under a sanitizer, like AllocationWatch. */
class LockWatch
{
public:
    explicit LockWatch (std::initializer_list<const MVLocker*> exemptLockers = {});
    ~LockWatch();
    LockWatch (const LockWatch&) = delete;
    LockWatch& operator= (const LockWatch&) = delete;

    /** Further lockers that do not count; 16 in all. */
    void exempt (const MVLocker& locker);
    int count() const { return locks; }
    static bool isActive();

    /** For the replaced calls. */
    void noteLock (const void* mutex);

private:
    static constexpr int maxExempt = 16;

    const void* exempted[maxExempt] {};
    int exemptCount = 0;
    int locks = 0;
};

} // namespace morvanelab::test

#define MV_SKIP_WITHOUT_LOCK_WATCH()                                                                                   \
    do                                                                                                                 \
    {                                                                                                                  \
        if (! morvanelab::test::LockWatch::isActive())                                                                 \
            GTEST_SKIP() << "locks cannot be counted in a sanitizer build";                                            \
    } while (false)
