// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVThreadEvent.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace morvanelab
{

/** A system thread that runs an object's run(). start, stop and the destructor belong to one owner.
    A class with a run() of its own must stop the thread in its own destructor: here its parts are gone. */
class MVThread
{
public:
    explicit MVThread (std::uint32_t threadCategory);
    /** stop (0.1), after telling the thread to stop. */
    virtual ~MVThread();
    MVThread (const MVThread&) = delete;
    MVThread& operator= (const MVThread&) = delete;

    virtual const char* className() const { return "MVThread"; }
    /** The thread's work; leaves when isStopRequested. */
    virtual void run() = 0;
    virtual void requestStop() { stopRequested.store (true); }

    /** Creates the system thread; false if it runs already or cannot be had. The stop flag is cleared here, before
        the thread exists, so that a stop requested right afterwards is not lost. */
    bool start();
    /** Runs on the calling thread, with the flag cleared as by start. */
    void runHere();
    bool isStopRequested() const { return stopRequested.load(); }
    /** Whether the system thread has a handle, that is, has not ended. */
    bool isRunning() const { return handle.load() != 0; }
    std::uint32_t getCategory() const { return category; }
    /** The system's number of the thread while it runs, else 0. */
    std::uint32_t getThreadId() const { return threadId.load(); }

    /** Looks whether the thread has ended, at most seconds / 0.05f (truncated) times, up to 50 ms apart; the wait
        ends early when it does. Returns whether it has ended. */
    bool waitForExit (double seconds);
    /** Waits as waitForExit; a thread that was told to stop but is in the middle of something gets up to
        graceSeconds more. What then still runs is terminated by force. 0 seconds terminates at once.
        On POSIX the force takes effect where the thread next waits or sleeps, and unwinds its stack; one that
        never does so is left to itself and logged. */
    void stop (double seconds);

    static constexpr double graceSeconds = 10.0;

protected:
    std::atomic<bool> stopRequested { false };

private:
    struct Native;
    struct ExitMark;

    void enter();
    void terminate();
    void joinEnded();

    const std::uint32_t category;
    std::atomic<std::uintptr_t> handle { 0 };
    std::atomic<std::uint32_t> threadId { 0 };
    std::unique_ptr<Native> native;
};

} // namespace morvanelab
