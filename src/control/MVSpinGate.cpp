// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/MVSpinGate.h"

#include <chrono>
#include <thread>

namespace morvanelab
{

void MVSpinGate::lock()
{
    while (count.fetch_add (1, std::memory_order_acq_rel) > 0)
    {
        count.fetch_sub (1, std::memory_order_acq_rel);
        std::this_thread::sleep_for (std::chrono::milliseconds (1));
    }
}

} // namespace morvanelab
