// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVThread.h"

#include "foundation/MVLog.h"
#include "foundation/MVMath.h"

#include <chrono>

#if defined(_WIN32)
#include <process.h>
#include <windows.h>
#else
#include <pthread.h>
#endif

#if defined(__linux__)
#include <unistd.h>
#endif

namespace morvanelab
{

namespace
{

constexpr int pollMilliseconds = 50;
/** How long a thread that was terminated may take to unwind. */
constexpr int unwindMilliseconds = 1000;

std::uint32_t currentThreadNumber()
{
#if defined(_WIN32)
    return static_cast<std::uint32_t> (GetCurrentThreadId());
#elif defined(__linux__)
    return static_cast<std::uint32_t> (gettid());
#else
    return 1;
#endif
}

} // namespace

#if defined(_WIN32)

struct MVThread::Native
{
    static unsigned __stdcall entry (void* thread)
    {
        static_cast<MVThread*> (thread)->enter();
        return 0;
    }

    std::uintptr_t create (MVThread* thread)
    {
        system = reinterpret_cast<HANDLE> (_beginthreadex (nullptr, 0, entry, thread, 0, nullptr));
        return reinterpret_cast<std::uintptr_t> (system);
    }

    void terminate (MVThreadEvent&) { TerminateThread (system, 1); }

    void join()
    {
        if (system != nullptr)
        {
            WaitForSingleObject (system, INFINITE);
            CloseHandle (system);
            system = nullptr;
        }
    }

    HANDLE system = nullptr;
    MVThreadEvent ended;
};

#else

struct MVThread::Native
{
    static void* entry (void* thread)
    {
        static_cast<MVThread*> (thread)->enter();
        return nullptr;
    }

    std::uintptr_t create (MVThread* thread)
    {
        joinable = pthread_create (&system, nullptr, entry, thread) == 0;
        return joinable ? 1 : 0;
    }

    /** A thread that does not reach a point where it can be cancelled is left to itself. */
    void terminate (MVThreadEvent& endSignal)
    {
        pthread_cancel (system);
        if (! endSignal.waitFor (unwindMilliseconds))
        {
            mvLog ("ERROR", "morvanelab::MVThread::stop", "thread could not be terminated");
            pthread_detach (system);
            joinable = false;
        }
    }

    void join()
    {
        if (! joinable)
            return;
        if (pthread_equal (system, pthread_self()) != 0)
            pthread_detach (system);
        else
            pthread_join (system, nullptr);
        joinable = false;
    }

    pthread_t system {};
    bool joinable = false;
    MVThreadEvent ended;
};

#endif

/** Clears handle and number however the thread leaves run, also when it is unwound by force. The thread touches
    nothing of the object afterwards. */
struct MVThread::ExitMark
{
    explicit ExitMark (MVThread& thread) : owner (thread) { owner.threadId.store (currentThreadNumber()); }
    ~ExitMark()
    {
        owner.threadId.store (0);
        owner.handle.store (0);
        owner.native->ended.signal();
    }
    ExitMark (const ExitMark&) = delete;
    ExitMark& operator= (const ExitMark&) = delete;

    MVThread& owner;
};

MVThread::MVThread (std::uint32_t threadCategory) : category (threadCategory), native (std::make_unique<Native>()) {}

MVThread::~MVThread()
{
    stopRequested.store (true);
    stop (0.1);
}

bool MVThread::start()
{
    if (isRunning())
        return false;

    joinEnded();
    native->ended.reset();
    stopRequested.store (false);

    // Set before the thread exists: a short run may clear it before create returns.
    handle.store (1);
    const std::uintptr_t created = native->create (this);
    if (created == 0)
        handle.store (0);
    return created != 0;
}

void MVThread::runHere()
{
    stopRequested.store (false);
    handle.store (1);
    enter();
}

void MVThread::enter()
{
    const ExitMark mark (*this);
    run();
}

bool MVThread::waitForExit (double seconds)
{
    const int polls = truncToInt (seconds / static_cast<double> (0.05f));

    for (int i = 0; i < polls && isRunning(); ++i)
        native->ended.waitFor (pollMilliseconds);
    return ! isRunning();
}

void MVThread::stop (double seconds)
{
    if (isRunning() && seconds > 0.0 && ! waitForExit (seconds) && isStopRequested())
        waitForExit (graceSeconds);
    if (isRunning())
        terminate();
    joinEnded();
}

void MVThread::terminate()
{
    native->terminate (native->ended);
    handle.store (0);
    threadId.store (0);
}

void MVThread::joinEnded() { native->join(); }

} // namespace morvanelab
