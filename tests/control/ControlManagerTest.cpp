// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/control/ControlRig.h"

#include "foundation/MVDataBlock.h"
#include "foundation/MVResult.h"
#include "support/AllocationWatch.h"
#include "support/LockWatch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <limits>
#include <string>
#include <thread>

namespace morvanelab::test
{
namespace
{

TEST (ControlManager, handsOutIdsAndCountsReferences)
{
    MVControlManager controls (nullptr);
    controls.resizeControls (3);

    EXPECT_EQ (controls.allocateControlId(), 1);
    EXPECT_EQ (controls.allocateControlId(), 1) << "asking takes no reference";
    EXPECT_FALSE (controls.controlExists (1));

    for (int id = 1; id <= 3; ++id)
        EXPECT_EQ (controls.acquireControl (controls.allocateControlId())->getControlId(), id);
    EXPECT_EQ (controls.allocateControlId(), 0) << "the table is full";
    EXPECT_EQ (controls.getAllocatedCount(), 3);

    controls.acquireControl (2);
    controls.releaseControl (2);
    EXPECT_TRUE (controls.controlExists (2));
    controls.releaseControl (2);
    controls.releaseControl (2);
    EXPECT_FALSE (controls.controlExists (2));
    EXPECT_EQ (controls.getAllocatedCount(), 2);
    EXPECT_EQ (controls.allocateControlId(), 2);

    for (const int outside : { 0, 4, -1, INT_MAX, INT_MIN })
    {
        EXPECT_EQ (controls.acquireControl (outside), nullptr);
        EXPECT_FALSE (controls.controlExists (outside));
        EXPECT_EQ (controls.getControlValue (outside), 0.0);
        EXPECT_TRUE (controls.setControlValue (outside, 1.0));
        EXPECT_FALSE (controls.addControlCallback (outside, Heard::call, nullptr));
        EXPECT_FALSE (controls.removeControlCallback (outside, Heard::call, nullptr));
        controls.releaseControl (outside);
    }
    EXPECT_TRUE (controls.hasPendingValues()) << "the recycled value was written";
    EXPECT_TRUE (controls.processAsyncValues());
    EXPECT_TRUE (controls.waitForPendingValues (0));
}

TEST (ControlManager, storesWritesInFixedPoint)
{
    constexpr double inf = std::numeric_limits<double>::infinity();
    constexpr struct
    {
        double written;
        std::int32_t raw;
    } cases[] {
        { 0.0, 0 },       { 1.0, INT_MAX },  { 0.5, 1073741823 }, { 0.25, 536870911 },
        { 2.0, INT_MAX }, { -2.0, INT_MIN }, { inf, INT_MAX },    { std::numeric_limits<double>::quiet_NaN(), 0 },
    };

    ControlRig rig (1);
    const MVControlValue& value = *rig.controls.acquireControl (1);
    EXPECT_EQ (value.getRawValue(), 1073741823);
    EXPECT_EQ (value.getValue(), 0.5);

    for (const auto& test : cases)
    {
        const double before = value.getValue();
        rig.controls.setControlValue (1, test.written);
        EXPECT_EQ (value.getRawValue(), test.raw);
        EXPECT_EQ (value.getValue(), before) << "a write alone changes nothing for readers";
        EXPECT_TRUE (rig.controls.processAsyncValues());
        EXPECT_EQ (rig.controls.getControlValue (1), test.raw / 2147483647.0);
    }
}

struct NotifyCase
{
    std::string name;
    /** Writes between two updates, update by update. */
    std::vector<std::vector<double>> updates;
    std::vector<double> heard;
};

const NotifyCase notifyCases[] {
    { "an unchanged first value is told", { { 0.5 } }, { 0.5 } },
    { "an update without a write tells nothing", { {}, {} }, {} },
    { "only the later of two writes is told", { { 0.2, 0.8 } }, { 0.8 } },
    { "small steps are not told", { { 0.1 }, { 0.6 }, { 0.605 }, { 0.595 } }, { 0.1, 0.6 } },
    { "small steps add up", { { 0.1 }, { 0.6 }, { 0.605 }, { 0.611 }, { 0.62 } }, { 0.1, 0.6, 0.611 } },
    { "the first value is told but not noted as told", { { 0.505 }, { 0.509 }, { 0.512 } }, { 0.505, 0.512 } },
    { "the same value again is not told", { { 0.1 }, { 0.9 }, { 0.9 } }, { 0.1, 0.9 } },
    { "there and back between two updates is not told", { { 0.1 }, { 0.9 }, { 0.2, 0.9 } }, { 0.1, 0.9 } },
};

TEST (ControlManager, tellsListenersOfChangesAboveAHundredth)
{
    // Flushing after every write must change nothing in what the listeners hear.
    for (const bool flushing : { false, true })
    {
        for (const NotifyCase& test : notifyCases)
        {
            SCOPED_TRACE (test.name + (flushing ? ", flushed" : ""));
            ControlRig rig (2);
            Heard heard;
            std::vector<double> expected;
            rig.controls.addControlCallback (1, Heard::call, &heard);

            for (const auto& writes : test.updates)
            {
                for (const double value : writes)
                {
                    rig.controls.setControlValue (1, value);
                    if (flushing)
                        rig.controls.flushPendingValues();
                }

                const double last = writes.empty() ? rig.controls.getControlValue (1) : stored (writes.back());
                EXPECT_TRUE (! flushing || rig.controls.getControlValue (1) == last);
                EXPECT_TRUE (rig.controls.processAsyncValues());
                EXPECT_FALSE (rig.controls.hasPendingValues());
                EXPECT_EQ (rig.controls.getControlValue (1), last);
            }

            for (const double value : test.heard)
                expected.push_back (stored (value));
            EXPECT_EQ (heard.values, expected);
        }
    }
}

TEST (ControlManager, managesListeners)
{
    ControlRig rig (1);
    Heard first;
    Heard second;
    const auto write = [&] (double value)
    {
        rig.controls.setControlValue (1, value);
        rig.controls.processAsyncValues();
    };

    EXPECT_TRUE (rig.controls.addControlCallback (1, Heard::call, &first));
    EXPECT_TRUE (rig.controls.addControlCallback (1, Heard::call, &first));
    EXPECT_TRUE (rig.controls.addControlCallback (1, Heard::call, &second));
    write (0.1);
    EXPECT_EQ (first.values.size(), 1u) << "an identical pair is not added twice";

    rig.controls.setAllNotifyEnabled (false);
    write (0.9);
    rig.controls.setAllNotifyEnabled (true);
    write (0.3);
    EXPECT_EQ (first.values, (std::vector<double> { stored (0.1), stored (0.3) }));

    EXPECT_TRUE (rig.controls.removeControlCallback (1, Heard::call, &first));
    EXPECT_FALSE (rig.controls.removeControlCallback (1, Heard::call, &first));
    write (0.6);
    EXPECT_EQ (first.values.size(), 2u);
    EXPECT_EQ (second.values.size(), 3u);
}

TEST (ControlManager, resetDropsWritesAndTellsTheNextUpdate)
{
    ControlRig rig (1);
    Heard heard;
    rig.controls.addControlCallback (1, Heard::call, &heard);
    rig.controls.setControlValue (1, 0.75);
    rig.controls.processAsyncValues();
    rig.controls.setControlValue (1, 0.1);

    rig.controls.reset();

    EXPECT_FALSE (rig.controls.hasPendingValues());
    EXPECT_TRUE (rig.controls.processAsyncValues());
    EXPECT_EQ (rig.controls.getControlValue (1), stored (0.75));
    EXPECT_EQ (rig.controls.acquireControl (1)->getPreviousValue(), stored (0.75));

    rig.controls.setControlValue (1, 0.75);
    rig.controls.processAsyncValues();
    EXPECT_EQ (heard.values, (std::vector<double> { stored (0.75), stored (0.75) }));
}

TEST (ControlManager, recyclesAValueWithItsLastUser)
{
    ControlRig rig (2);
    Heard heard;
    MVControlValue* const value = rig.controls.acquireControl (2);
    rig.controls.releaseControl (2);
    value->setName ("Volume");
    rig.controls.addControlCallback (2, Heard::call, &heard);
    rig.controls.setControlValue (2, 0.9);
    rig.controls.processAsyncValues();

    rig.controls.releaseControl (2);
    EXPECT_EQ (rig.controls.getControlValue (2), 0.0) << "not in use";
    EXPECT_TRUE (rig.controls.hasPendingValues());

    EXPECT_EQ (rig.controls.acquireControl (2), value);
    EXPECT_EQ (rig.controls.getControlValue (2), stored (0.9)) << "0.5 comes with the next update";
    EXPECT_TRUE (rig.controls.processAsyncValues());
    EXPECT_EQ (rig.controls.getControlValue (2), MVControlValue::centreRaw / 2147483647.0);
    EXPECT_EQ (value->getName().length(), 0);
    EXPECT_EQ (value->getCallbackCount(), 0);
    EXPECT_EQ (heard.values.size(), 1u);
}

TEST (ControlManager, resizingMakesAllValuesNewAndKeepsOldPointersSafe)
{
    ControlRig rig (200);
    MVControlValue* const old = rig.controls.acquireControl (200);
    rig.controls.setControlValue (200, 0.9);
    rig.controls.processAsyncValues();
    rig.controls.setControlValue (200, 0.1);

    rig.controls.resizeControls (0);
    EXPECT_FALSE (rig.controls.hasPendingValues());
    EXPECT_EQ (rig.controls.allocateControlId(), 0);
    old->setName ("stale");

    rig.controls.resizeControls (300);
    EXPECT_FALSE (rig.controls.controlExists (200));
    EXPECT_EQ (rig.controls.acquireControl (200), old);
    EXPECT_EQ (old->getValue(), 0.5);
    EXPECT_EQ (old->getName().length(), 0);
    EXPECT_FALSE (old->isNotifyEnabled());
    EXPECT_EQ (rig.controls.getAllocatedCount(), 1);

    rig.controls.resizeControls (INT_MAX);
    EXPECT_EQ (rig.controls.numControls(), MVControlManager::maxControls);
    EXPECT_NE (rig.controls.acquireControl (MVControlManager::maxControls), nullptr);
    rig.controls.resizeControls (-1);
    EXPECT_EQ (rig.controls.numControls(), 0);
}

TEST (ControlManager, postsOneEventUntilItIsHandled)
{
    ControlRig rig (2);
    rig.controls.setControlValue (1, 0.1);
    rig.controls.setControlValue (2, 0.2);
    rig.controls.setControlValue (1, 0.3);
    EXPECT_EQ (rig.queued(), 1);

    rig.events.dispatch (threadCategoryEvent, false);
    EXPECT_EQ (rig.queued(), 0);
    EXPECT_EQ (rig.controls.getControlValue (1), stored (0.3));
    EXPECT_EQ (rig.controls.getControlValue (2), stored (0.2));

    rig.controls.setControlValue (1, 0.4);
    EXPECT_EQ (rig.queued(), 1);
}

TEST (ControlManager, postsAgainAfterAnEventCouldNotBeHad)
{
    ControlRig rig (1);
    std::vector<MVEvent*> taken;
    while (MVEvent* const event = rig.events.allocateEvent())
        taken.push_back (event);

    rig.controls.setControlValue (1, 0.1);
    EXPECT_EQ (rig.queued(), 0);
    for (MVEvent* const event : taken)
        rig.events.releaseEvent (event);

    rig.controls.setControlValue (1, 0.2);
    EXPECT_EQ (rig.queued(), 1);

    // Switched off and on again, the event manager has forgotten the event.
    rig.events.setActive (false);
    rig.controls.setControlValue (1, 0.3);
    rig.events.setActive (true);
    rig.controls.setActive (true);
    rig.controls.setControlValue (1, 0.4);
    EXPECT_EQ (rig.queued(), 1);
    rig.events.dispatch (threadCategoryEvent, false);
    EXPECT_EQ (rig.controls.getControlValue (1), stored (0.4));
}

TEST (ControlManager, aFlushBehindTheEventThreadsBackKeepsTheEventForAnotherPass)
{
    struct Flusher
    {
        static void call (void* context, std::uint64_t, const double*, int)
        {
            auto& manager = *static_cast<MVControlManager*> (context);
            manager.setControlValue (1, 0.9);
            manager.flushPendingValues();
        }
    };

    ControlRig rig (2);
    Heard heard;
    rig.controls.addControlCallback (1, Heard::call, &heard);
    rig.controls.addControlCallback (2, Flusher::call, &rig.controls);
    rig.controls.setControlValue (2, 0.1);

    // Value 1 moves while the pass over the table has come to value 2.
    EXPECT_FALSE (rig.controls.processAsyncValues());
    EXPECT_TRUE (heard.values.empty());
    EXPECT_TRUE (rig.controls.processAsyncValues());
    EXPECT_EQ (heard.values, (std::vector<double> { stored (0.9) }));
}

TEST (ControlManager, aFlushPostsAgainWhenTheEventWasLost)
{
    ControlRig rig (1);
    Heard heard;
    rig.controls.addControlCallback (1, Heard::call, &heard);
    rig.controls.setControlValue (1, 0.9);
    rig.events.flushAllQueues();
    rig.controls.flushPendingValues();
    EXPECT_EQ (rig.queued(), 0) << "the event may still be on its way";

    std::this_thread::sleep_for (std::chrono::milliseconds (1100));
    rig.controls.flushPendingValues();
    rig.controls.flushPendingValues();
    EXPECT_EQ (rig.queued(), 1);
    rig.events.dispatch (threadCategoryEvent, false);
    EXPECT_EQ (heard.values, (std::vector<double> { stored (0.9) }));
}

TEST (ControlManager, flushLeavesTheTellingToTheQueuedEvent)
{
    ControlRig rig (1);
    Heard heard;
    rig.controls.addControlCallback (1, Heard::call, &heard);
    rig.controls.setControlValue (1, 0.9);
    rig.controls.flushPendingValues();

    EXPECT_EQ (rig.controls.getControlValue (1), stored (0.9));
    EXPECT_FALSE (rig.controls.hasPendingValues());
    EXPECT_TRUE (heard.values.empty());
    EXPECT_EQ (rig.queued(), 1);

    rig.events.dispatch (threadCategoryEvent, false);
    EXPECT_EQ (heard.values, (std::vector<double> { stored (0.9) }));
    rig.controls.flushPendingValues();
    EXPECT_EQ (rig.queued(), 0);
}

TEST (ControlManager, theAudioThreadTouchesNoHeapAndNoLockInAFlush)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();
    MV_SKIP_WITHOUT_LOCK_WATCH();
    ControlRig rig (97);

    for (int id = 1; id <= 97; ++id)
        rig.controls.setControlValue (id, id / 100.0);

    const AllocationWatch heap;
    const LockWatch locks;
    rig.controls.flushPendingValues();
    for (int id = 1; id <= 97; ++id)
        rig.controls.setControlValue (id, 0.5); // the event is in flight already
    rig.controls.flushPendingValues();
    EXPECT_EQ (heap.count(), 0);
    EXPECT_EQ (locks.count(), 0);
}

TEST (ControlManager, answersEvents)
{
    ControlRig rig (1);
    const auto answer = [&] (std::uint32_t type, MVSmartPtr<MVObject> object, std::uint64_t target = 0)
    {
        MVEvent event;
        event.setType (type);
        event.setTargetId (target);
        event.setObjectA (object);
        return rig.controls.handleEvent (&event);
    };
    const auto block = [] { return MVSmartPtr<MVObject> (new MVDataBlock); };
    const auto tree = [] { return MVSmartPtr<MVObject> (new MVRiffPacker (fourCC ("cmgr"))); };

    EXPECT_EQ (rig.controls.handleEvent (nullptr), resultDone);
    EXPECT_EQ (answer (99, block()), resultDone);
    EXPECT_EQ (answer (controlEventLoadPreset, {}), resultDone);
    EXPECT_EQ (answer (controlEventLoadPreset, block()), resultEmptyData);
    EXPECT_EQ (answer (controlEventLoadPreset, block(), rig.controls.getId()), resultEmptyData);
    EXPECT_EQ (answer (controlEventLoadPreset, block(), rig.controls.getId() + 1), resultDone) << "not for us";
    EXPECT_EQ (answer (controlEventLoadPreset, tree()), resultDone) << "a load that failed is still handled";
    EXPECT_EQ (answer (controlEventValuesChanged, {}), resultDone);
}

struct StoredControl
{
    int cvid;
    double value;
};

MVSmartPtr<MVRiffPacker> controlForm (const StoredControl& control)
{
    auto form = makeSmart<MVRiffPacker> (fourCC ("cval"));
    addChunk (*form, fourCC ("cvid"), std::int32_t { control.cvid });
    addChunk (*form, fourCC ("valu"), control.value);
    return form;
}

TEST (ControlPreset, loadsValuesByTheirIndexOrPlace)
{
    ControlRig rig (4);
    auto root = formWithVersion (fourCC ("cmgr"));
    root->addChild (makeSmart<MVRiffPacker> (fourCC ("junk")));
    for (const StoredControl& control : { StoredControl { -1, 0.1 }, { 3, 0.2 }, { 1, 0.3 } })
        root->addChild (controlForm (control));

    EXPECT_EQ (rig.controls.unpackRiff (*root), resultDone);
    EXPECT_GE (rig.queued(), 1);
    EXPECT_FALSE (rig.controls.controlExists (1)) << "all reference counts are cleared";
    EXPECT_EQ (rig.controls.allocateControlId(), 1);

    for (int id = 1; id <= 4; ++id)
        rig.controls.acquireControl (id);
    rig.controls.processAsyncValues();
    EXPECT_EQ (rig.controls.getControlValue (1), stored (0.1)) << "-1: taken by place";
    // Three forms, so index 3 is outside and the second form goes to place 1, where the third follows.
    EXPECT_EQ (rig.controls.getControlValue (2), stored (0.3));
    EXPECT_EQ (rig.controls.getControlValue (4), 0.5);
}

TEST (ControlPreset, refusesOtherFormsAndNewerVersions)
{
    ControlRig rig (2);
    const auto load = [&] (std::uint32_t id, int revision)
    {
        const auto root =
            revision >= 0 ? formWithVersion (id, static_cast<std::uint32_t> (revision)) : makeSmart<MVRiffPacker> (id);
        root->addChild (controlForm ({ 0, 0.1 }));
        return rig.controls.unpackRiff (*root);
    };

    EXPECT_EQ (load (fourCC ("cmgr"), 1), resultIncompatibleVersion);
    EXPECT_EQ (load (fourCC ("cmgr"), -1), resultIncompatibleVersion);
    EXPECT_EQ (load (fourCC ("midm"), 0), resultWrongForm);
    EXPECT_TRUE (rig.controls.controlExists (1));
    EXPECT_FALSE (rig.controls.hasPendingValues());

    auto shortChunks = formWithVersion (fourCC ("cmgr"));
    auto form = makeSmart<MVRiffPacker> (fourCC ("cval"));
    form->addChild (makeSmart<MVRiffPacker> (fourCC ("valu"), "\0\0\0", 4));
    shortChunks->addChild (form);
    shortChunks->addChild (makeSmart<MVRiffPacker> (fourCC ("cval")));
    for (int extra = 0; extra < 5; ++extra)
        shortChunks->addChild (controlForm ({ extra, 0.9 }));
    EXPECT_EQ (rig.controls.unpackRiff (*shortChunks), resultDone);
    EXPECT_FALSE (rig.controls.hasPendingValues()) << "chunks cut short count as absent, forms beyond the table too";
}

TEST (ControlPreset, readsWhatItWrote)
{
    ControlRig rig (3);
    for (int id = 1; id <= 3; ++id)
        rig.controls.setControlValue (id, id / 8.0);
    rig.controls.processAsyncValues();
    const auto written = rig.controls.packRiff();

    ControlRig other (3);
    EXPECT_EQ (other.controls.unpackRiff (*written), resultDone);
    other.controls.flushPendingValues();
    for (int id = 1; id <= 3; ++id)
        EXPECT_NEAR (other.controls.acquireControl (id)->getValue(), id / 8.0, 1e-9);
}

} // namespace
} // namespace morvanelab::test
