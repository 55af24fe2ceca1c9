// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab::test
{

/** Counts the heap calls (malloc, calloc, realloc, free and their aligned kin, hence also new and delete) that the
    thread that made it performs while it lives. Watches nest; each counts from its own beginning.

    Under a sanitizer, which brings an allocator of its own, the watch is inert: start such a test with
    MV_SKIP_WITHOUT_ALLOCATION_WATCH(), so that it is seen to be skipped. */
class AllocationWatch
{
public:
    AllocationWatch();
    AllocationWatch (const AllocationWatch&) = delete;
    AllocationWatch& operator= (const AllocationWatch&) = delete;

    /** Heap calls of this thread since the beginning. */
    int count() const;
    /** Whether heap calls are counted in this build. */
    static bool isActive();

private:
    int start;
};

} // namespace morvanelab::test

#define MV_SKIP_WITHOUT_ALLOCATION_WATCH()                                                                             \
    do                                                                                                                 \
    {                                                                                                                  \
        if (! morvanelab::test::AllocationWatch::isActive())                                                           \
            GTEST_SKIP() << "heap calls cannot be counted in a sanitizer build";                                       \
    } while (false)
