// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <csignal>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvanelab::test
{

/** Runs some work in a process of its own, which begins as a copy of this one, ends without its leave-taking, and lives
   for a minute at most. */
class ChildProcess
{
public:
    template <typename Work>
    explicit ChildProcess (Work work) : id (fork())
    {
        if (id != 0)
            return;
        constexpr unsigned longestLife = 60;
        alarm (longestLife);
        work();
        _exit (0);
    }
    ~ChildProcess() { kill(); }
    ChildProcess (const ChildProcess&) = delete;
    ChildProcess& operator= (const ChildProcess&) = delete;

    bool hasStarted() const { return id > 0; }

    /** Ends it on the spot, wherever it is, and returns when it has gone. */
    void kill()
    {
        if (id <= 0)
            return;
        ::kill (id, SIGKILL);
        waitForEnd();
    }

    /** Whether it came to the end of its work. */
    bool waitForEnd()
    {
        int status = -1;
        const bool ended = id > 0 && waitpid (id, &status, 0) == id;
        id = -1;
        return ended && status == 0;
    }

private:
    pid_t id;
};

} // namespace morvanelab::test
