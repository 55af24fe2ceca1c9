// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>

namespace morvanelab
{

/** A lock for very short holds between the event thread and the threads of the user interface; never taken on the
    audio thread. A counter: whoever raises it to 1 is in. A waiter takes its raise back before it sleeps, so that
    two waiters cannot keep each other out for good. Not recursive. */
class MVSpinGate
{
public:
    void lock();
    void unlock() { count.fetch_sub (1, std::memory_order_acq_rel); }

private:
    std::atomic<int> count { 0 };
};

} // namespace morvanelab
