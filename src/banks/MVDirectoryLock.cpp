// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVDirectoryLock.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#if ! JUCE_WINDOWS
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace morvanelab
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr auto pollInterval = std::chrono::milliseconds (5);

/** An open directory, and what tells it from every other however its path is spelled. */
class DirectoryHandle
{
public:
    explicit DirectoryHandle (const juce::File& directory)
    {
#if JUCE_WINDOWS
        key = directory.isDirectory() ? directory.getFullPathName().toLowerCase() : juce::String();
#else
        descriptor = ::open (directory.getFullPathName().toRawUTF8(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        struct stat facts
        {
        };
        if (descriptor >= 0 && ::fstat (descriptor, &facts) == 0)
            key = juce::String (static_cast<juce::uint64> (facts.st_dev)) + ":"
                  + juce::String (static_cast<juce::uint64> (facts.st_ino));
#endif
    }
    ~DirectoryHandle()
    {
#if ! JUCE_WINDOWS
        if (descriptor >= 0)
            ::close (descriptor);
#endif
    }
    DirectoryHandle (const DirectoryHandle&) = delete;
    DirectoryHandle& operator= (const DirectoryHandle&) = delete;

    /** Empty if the directory could not be opened. */
    const juce::String& getKey() const { return key; }

    /** False only if another process still has the lock at the deadline. */
    bool lockAgainstProcesses ([[maybe_unused]] Clock::time_point deadline)
    {
#if ! JUCE_WINDOWS
        while (::flock (descriptor, LOCK_EX | LOCK_NB) != 0)
        {
            if (errno == EINTR)
                continue;
            // A file system without such locks: there is nothing to wait for.
            if (errno != EWOULDBLOCK)
                return true;
            if (Clock::now() >= deadline)
                return false;
            std::this_thread::sleep_for (pollInterval);
        }
#endif
        return true;
    }

    /** Closing alone would not do: a process forked in the meantime shares the open directory, and with it the lock. */
    void unlock()
    {
#if ! JUCE_WINDOWS
        ::flock (descriptor, LOCK_UN);
#endif
    }

private:
    juce::String key;
#if ! JUCE_WINDOWS
    int descriptor = -1;
#endif
};

} // namespace

/** A directory locked by a thread of this process. */
struct MVDirectoryLock::Held
{
    explicit Held (const juce::File& directory) : handle (directory) {}

    DirectoryHandle handle;
    std::thread::id owner = std::this_thread::get_id();
    int depth = 1;
};

/** What this process holds. */
struct MVDirectoryLock::Registry
{
    static Registry& get()
    {
        static Registry registry;
        return registry;
    }

    /** Enters the directory for this thread, again if it holds it already. */
    std::shared_ptr<Held> enter (const juce::File& directory, Clock::time_point deadline)
    {
        auto wanted = std::make_shared<Held> (directory);
        const auto key = wanted->handle.getKey();
        if (key.isEmpty())
            return nullptr;

        std::unique_lock guard (mutex);
        if (const auto found = held.find (key); found != held.end() && found->second->owner == wanted->owner)
        {
            ++found->second->depth;
            return found->second;
        }
        if (! freed.wait_until (guard, deadline, [&] { return held.find (key) == held.end(); }))
            return nullptr;
        held[key] = wanted;
        return wanted;
    }

    void leave (const std::shared_ptr<Held>& left)
    {
        const std::lock_guard guard (mutex);
        if (--left->depth > 0)
            return;
        left->handle.unlock();
        held.erase (left->handle.getKey());
        freed.notify_all();
    }

    std::mutex mutex;
    std::condition_variable freed;
    std::map<juce::String, std::shared_ptr<Held>> held;
};

MVDirectoryLock::MVDirectoryLock (const juce::File& directory, int waitMilliseconds)
{
    const auto deadline = Clock::now() + std::chrono::milliseconds (waitMilliseconds);
    auto entered = Registry::get().enter (directory, deadline);
    if (entered == nullptr)
        return;

    if (entered->depth == 1 && ! entered->handle.lockAgainstProcesses (deadline))
    {
        Registry::get().leave (entered);
        return;
    }
    held = std::move (entered);
}

MVDirectoryLock::~MVDirectoryLock()
{
    if (held != nullptr)
        Registry::get().leave (held);
}

} // namespace morvanelab
