// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/AllocationWatch.h"

#include <cstdlib>

#include "support/Sanitizers.h"

#if MV_TEST_INTERPOSES

#include <cerrno>

// One per thread, in the program's own static block: reaching it must not allocate.
static thread_local int heapCalls __attribute__ ((tls_model ("initial-exec"))) = 0;

#define MV_REPLACES extern "C" __attribute__ ((visibility ("default")))

extern "C"
{
    void* __libc_malloc (std::size_t);
    void* __libc_calloc (std::size_t, std::size_t);
    void* __libc_realloc (void*, std::size_t);
    void* __libc_memalign (std::size_t, std::size_t);
    void __libc_free (void*);
}

MV_REPLACES void* malloc (std::size_t size)
{
    ++heapCalls;
    return __libc_malloc (size);
}

MV_REPLACES void* calloc (std::size_t count, std::size_t size)
{
    ++heapCalls;
    return __libc_calloc (count, size);
}

MV_REPLACES void* realloc (void* block, std::size_t size)
{
    ++heapCalls;
    return __libc_realloc (block, size);
}

MV_REPLACES void free (void* block)
{
    // Freeing null does nothing and waits for nobody.
    if (block == nullptr)
        return;
    ++heapCalls;
    __libc_free (block);
}

MV_REPLACES void* aligned_alloc (std::size_t alignment, std::size_t size)
{
    ++heapCalls;
    return __libc_memalign (alignment, size);
}

MV_REPLACES void* memalign (std::size_t alignment, std::size_t size)
{
    ++heapCalls;
    return __libc_memalign (alignment, size);
}

MV_REPLACES int posix_memalign (void** block, std::size_t alignment, std::size_t size)
{
    ++heapCalls;
    *block = __libc_memalign (alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

namespace morvanelab::test
{

AllocationWatch::AllocationWatch() : start (heapCalls) {}
int AllocationWatch::count() const { return heapCalls - start; }
bool AllocationWatch::isActive() { return true; }

} // namespace morvanelab::test

#else

namespace morvanelab::test
{

AllocationWatch::AllocationWatch() : start (0) {}
int AllocationWatch::count() const { return start; }
bool AllocationWatch::isActive() { return false; }

} // namespace morvanelab::test

#endif
