// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <csignal>
#include <cstdlib>
#include <sys/resource.h>
#include <unistd.h>

namespace morvanelab::test
{

/** Lets no file grow beyond a number of bytes, as a full disk would. */
class FullDisk
{
public:
    explicit FullDisk (int bytes) : formerHandler (std::signal (SIGXFSZ, SIG_IGN))
    {
        getrlimit (RLIMIT_FSIZE, &former);
        const rlimit limit { static_cast<rlim_t> (bytes), former.rlim_max };
        setrlimit (RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit (RLIMIT_FSIZE, &former);
        std::signal (SIGXFSZ, formerHandler);
    }

private:
    rlimit former {};
    void (*formerHandler) (int);
};

/** Takes the rights of root away until the end of the scope, so that permissions count. Files made before may need
   wider permissions. */
class Unprivileged
{
public:
    Unprivileged() : former (geteuid()) { good = former != 0 || seteuid (nobody) == 0; }
    ~Unprivileged()
    {
        if (former == 0 && seteuid (former) != 0)
            std::abort();
    }
    Unprivileged (const Unprivileged&) = delete;
    Unprivileged& operator= (const Unprivileged&) = delete;

    /** False where a root cannot give up its rights. */
    bool isGood() const { return good; }

private:
    static constexpr uid_t nobody = 65534;
    uid_t former;
    bool good = false;
};

} // namespace morvanelab::test
