// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/MVControlManager.h"
#include "foundation/MVChunks.h"
#include "foundation/MVEventManager.h"
#include "foundation/MVMath.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace morvanelab::test
{

/** The table of an engine: enabled event manager, both queues, controls in use. */
struct ControlRig
{
    explicit ControlRig (int count = 8)
    {
        events.addThreadCategory (threadCategoryEvent);
        events.addThreadCategory (threadCategoryRender);
        events.setActive (true);
        controls.resizeControls (count);
        for (int id = 1; id <= count; ++id)
            controls.acquireControl (id);
        controls.setAllNotifyEnabled (true);
    }

    int queued() const { return events.queuedEvents (threadCategoryEvent); }

    MVEventManager events;
    MVControlManager controls { &events };
};

/** Notes what a listener is told. */
struct Heard
{
    static void call (void* context, std::uint64_t, const double* value, int)
    {
        static_cast<Heard*> (context)->values.push_back (*value);
    }

    std::vector<double> values;
};

/** What reading back a written value gives: the fixed point has 31 bits. */
inline double stored (double value) { return truncToInt (value * 2147483647.0) / 2147483647.0; }

inline MVSmartPtr<MVRiffPacker> formWithVersion (std::uint32_t id, std::uint32_t revision = 0)
{
    auto root = makeSmart<MVRiffPacker> (id);
    const std::uint32_t version[4] { 1, 4, revision, 1 };
    root->addChild (makeSmart<MVRiffPacker> (fourCC ("ver "), version, 16));
    return root;
}

} // namespace morvanelab::test
