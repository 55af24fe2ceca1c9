// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVThreadEvent.h"

#include <algorithm>

#if defined(_WIN32)
#include <windows.h>
#else
#include <chrono>
#include <condition_variable>
#include <mutex>
#endif

namespace morvanelab
{

#if defined(_WIN32)

struct MVThreadEvent::Native
{
    Native() : handle (CreateEventW (nullptr, FALSE, FALSE, nullptr)) {}
    ~Native() { CloseHandle (handle); }
    void reset() { ResetEvent (handle); }
    void signal() { SetEvent (handle); }
    void wait() { WaitForSingleObject (handle, INFINITE); }
    bool waitFor (int milliseconds)
    {
        return WaitForSingleObject (handle, static_cast<DWORD> (milliseconds)) == WAIT_OBJECT_0;
    }

    HANDLE handle;
};

#else

struct MVThreadEvent::Native
{
    void reset()
    {
        const std::lock_guard lock (mutex);
        isSet = false;
    }

    void signal()
    {
        // Notified under the mutex: the waiter may destroy this as soon as it gets the mutex.
        const std::lock_guard lock (mutex);
        isSet = true;
        changed.notify_one();
    }

    void wait()
    {
        std::unique_lock lock (mutex);
        changed.wait (lock, [this] { return isSet; });
        isSet = false;
    }

    bool waitFor (int milliseconds)
    {
        std::unique_lock lock (mutex);
        if (! changed.wait_for (lock, std::chrono::milliseconds (milliseconds), [this] { return isSet; }))
            return false;
        isSet = false;
        return true;
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool isSet = false;
};

#endif

MVThreadEvent::MVThreadEvent() : native (std::make_unique<Native>()) {}
MVThreadEvent::~MVThreadEvent() = default;

void MVThreadEvent::reset() { native->reset(); }
void MVThreadEvent::signal() { native->signal(); }
void MVThreadEvent::wait() { native->wait(); }
bool MVThreadEvent::waitFor (int milliseconds) { return native->waitFor (std::max (0, milliseconds)); }

} // namespace morvanelab
