// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_core/juce_core.h>

#include <memory>

namespace morvanelab
{

/** Keeps others of this program, in this process and in others, from changing files of one directory while it lives:
    for what has to be read, changed and written without anybody coming in between.

    It is advice that only its users keep. It lies on the directory's own handle: no file is made, and it dies with its
    process, however that ends. Waiting is bounded: after waitMilliseconds the work goes on unguarded, since a stopped
    process must not stop every other. The thread that holds it may take it again.

    Between processes this works where the system knows flock on directories; elsewhere only within the process.
    Any thread. */
class MVDirectoryLock
{
public:
    static constexpr int defaultWaitMilliseconds = 2000;

    explicit MVDirectoryLock (const juce::File& directory, int waitMilliseconds = defaultWaitMilliseconds);
    ~MVDirectoryLock();
    MVDirectoryLock (const MVDirectoryLock&) = delete;
    MVDirectoryLock& operator= (const MVDirectoryLock&) = delete;

    /** False if the directory does not exist or the wait was in vain. */
    bool isHeld() const { return held != nullptr; }

private:
    struct Held;
    struct Registry;

    std::shared_ptr<Held> held;
};

} // namespace morvanelab
