// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVEventManager.h"
#include "foundation/MVException.h"
#include "foundation/MVResult.h"
#include "foundation/MVString.h"
#include "support/AllocationWatch.h"
#include "support/LockWatch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace morvanelab
{

namespace
{

class RecordingHandler : public MVEventHandler
{
public:
    using MVEventHandler::MVEventHandler;

    int handleEvent (MVEvent* event) override
    {
        tags.push_back (static_cast<char> (event->getIntArg (0)));
        return onEvent ? onEvent (*event) : resultDone;
    }
    void handleThreadMsg (std::uint32_t message) override { messages.push_back (message); }

    std::string tags;
    std::vector<std::uint32_t> messages;
    std::function<int (MVEvent&)> onEvent;
};

/** A manager with the queues of an engine, gates open, one handler. */
struct Rig
{
    Rig()
    {
        manager.addThreadCategory (threadCategoryEvent);
        manager.addThreadCategory (threadCategoryRender);
        manager.addHandler (&handler);
        manager.setActive (true);
    }

    void post (char tag, std::uint32_t mode, std::uint64_t target = 0, std::uint32_t type = 0,
               MVThreadCategory category = threadCategoryRender)
    {
        MVEvent* const event = manager.allocateEvent();
        ASSERT_NE (event, nullptr);
        event->reset();
        event->setIntArg (0, static_cast<std::int32_t> (tag));
        event->setQueueMode (mode);
        event->setTargetId (target);
        event->setType (type);
        manager.postEvent (category, event);
    }

    std::string served (MVThreadCategory category = threadCategoryRender)
    {
        handler.tags.clear();
        manager.dispatch (category, false);
        return handler.tags;
    }

    RecordingHandler handler;
    MVEventManager manager;
};

/** Tells on its destruction which thread it was and whether the manager's lock was free. */
class Witness : public MVObject
{
public:
    Witness (MVEventManager& eventManager, std::vector<std::thread::id>& threads, bool& free)
        : manager (eventManager), destroyedOn (threads), lockWasFree (free)
    {
    }
    ~Witness() override
    {
        destroyedOn.push_back (std::this_thread::get_id());
        std::thread other (
            [this]
            {
                lockWasFree = manager.getLocker().tryLock();
                if (lockWasFree)
                    manager.getLocker().unlock();
            });
        other.join();
    }

private:
    MVEventManager& manager;
    std::vector<std::thread::id>& destroyedOn;
    bool& lockWasFree;
};

} // namespace

TEST (Event, argumentsOutsideAreIgnored)
{
    MVEvent event;
    event.setIntArg (7, std::int64_t { 1 } << 40);
    event.setIntArg (8, 5);
    event.setIntArg (-1, 5);
    event.setDoubleArg (4, 1.0);
    event.setPointerArg (3, &event);
    EXPECT_EQ (event.getIntArg (7), std::int64_t { 1 } << 40);
    EXPECT_EQ (event.getIntArg (8), 0);
    EXPECT_EQ (event.getDoubleArg (4), 0.0);
    EXPECT_EQ (event.getPointerArg (-1), nullptr);
    event.reset();
    EXPECT_EQ (event.getIntArg (7), 0);
    EXPECT_EQ (event.getThreadCategory(), threadCategoryDefault);
}

TEST (Event, takesObjectsOverAndTellsItsCompletionOnce)
{
    static std::string told;
    MVEvent event;
    auto object = makeSmart<MVObject>();
    event.setObjectA (object);
    EXPECT_TRUE (object == nullptr);
    EXPECT_EQ (event.getObjectA().referenceCount(), 1U);

    event.setCompletion ([] (void*, void* text, int result, const char* message)
                         { *static_cast<std::string*> (text) += std::to_string (result) + message; },
                         nullptr, &told);
    event.complete (9, "bad");
    event.complete (1, "again");
    EXPECT_EQ (told, "9bad");
    event.reset();
    EXPECT_TRUE (event.getObjectA() == nullptr);
}

TEST (EventManager, modesDecideTheOrderOfService)
{
    struct Posting
    {
        char tag;
        std::uint32_t mode;
        std::uint64_t target = 0;
        std::uint32_t type = 0;
    };
    struct Case
    {
        const char* what;
        std::vector<Posting> postings;
        const char* expected;
    };
    const Case cases[] {
        { "plain ones in order", { { 'a', 0 }, { 'b', 0 }, { 'c', 1 } }, "abc" },
        { "no target, no coalescing", { { 'a', 0, 0, 7 }, { 'b', 0, 0, 7 } }, "ab" },
        { "replaced in its place", { { 'a', 0, 5, 7 }, { 'b', 0 }, { 'c', 0, 5, 7 } }, "cb" },
        { "other type stays", { { 'a', 0, 5, 7 }, { 'b', 0, 5, 8 } }, "ab" },
        { "the newest match is replaced", { { 'a', 2, 5, 7 }, { 'b', 2, 5, 7 }, { 'c', 0, 5, 7 } }, "ac" },
        { "ordered behind lower modes", { { 'a', 0 }, { 'b', 0 }, { 'c', 2 } }, "abc" },
        { "ordered behind its like", { { 'a', 2 }, { 'b', 0 }, { 'c', 2 } }, "acb" },
        { "ordered behind a higher one", { { 'a', 3 }, { 'b', 2 }, { 'c', 3 } }, "acb" },
        { "ordered keeps its own order", { { 'a', 2 }, { 'b', 2 }, { 'c', 0 }, { 'd', 2 } }, "abdc" },
        { "exclusive drives others out", { { 'a', 0 }, { 'b', 3 }, { 'c', 4 } }, "c" },
        { "exclusive ones keep their order", { { 'a', 4 }, { 'b', 0 }, { 'c', 4 }, { 'd', 4 } }, "acd" },
        { "an exclusive one leads ordered ones", { { 'a', 4 }, { 'b', 0 }, { 'c', 2 } }, "acb" },
    };

    for (const Case& c : cases)
    {
        Rig rig;
        for (const Posting& p : c.postings)
            rig.post (p.tag, p.mode, p.target, p.type);
        EXPECT_EQ (rig.served(), c.expected) << c.what;
        EXPECT_FALSE (rig.manager.hasOutstandingEvents()) << c.what;
    }
}

TEST (EventManager, deliversToTheTargetOrToAll)
{
    Rig rig;
    RecordingHandler second;
    rig.manager.addHandler (&second);
    rig.manager.addHandler (&second);

    rig.post ('t', 0, second.getId());
    rig.post ('n', 0, 0xFFFF); // its target has gone
    rig.served();
    EXPECT_EQ (second.tags, "tn");
    EXPECT_EQ (rig.handler.tags, "n");

    rig.manager.removeHandler (second.getId());
    EXPECT_EQ (rig.manager.findHandler (second.getId(), true), nullptr);
    rig.post ('x', 0);
    rig.served();
    EXPECT_EQ (second.tags, "tn");
}

TEST (EventManager, refusedEventsWaitAtTheNewestEnd)
{
    for (const MVThreadCategory category : { threadCategoryRender, threadCategoryEvent })
    {
        Rig rig;
        int refusals = 3;
        rig.handler.onEvent = [&refusals] (const MVEvent& event)
        { return event.getIntArg (0) == 'a' && refusals-- > 0 ? resultBusy : resultDone; };
        rig.post ('a', 0, 0, 0, category);
        rig.post ('b', 0, 0, 0, category);
        EXPECT_EQ (rig.manager.dispatch (category, false), resultBusy);
        EXPECT_EQ (rig.handler.tags, "abaaa");
        EXPECT_EQ (rig.manager.dispatch (category, false), resultQueueEmpty);
    }
}

TEST (EventManager, refusalEndsWhenDisabledOrStopped)
{
    Rig rig;
    rig.handler.onEvent = [&rig] (const MVEvent&)
    {
        if (rig.handler.tags.size() == 3)
            rig.manager.setActive (false);
        return resultBusy;
    };
    rig.post ('a', 0);
    EXPECT_EQ (rig.manager.dispatch (threadCategoryRender, false), resultBusy);
    EXPECT_FALSE (rig.manager.hasOutstandingEvents());

    rig.manager.setActive (true);
    std::atomic<bool> stop { false };
    rig.handler.onEvent = [&stop] (const MVEvent&)
    {
        stop = true;
        return resultBusy;
    };
    rig.post ('b', 0);
    EXPECT_EQ (rig.manager.dispatch (threadCategoryRender, false, &stop), resultBusy);
    EXPECT_EQ (rig.manager.queuedEvents (threadCategoryRender), 1); // kept for whoever starts again
}

TEST (EventManager, poolIsBoundedAndGatesClose)
{
    Rig rig;
    std::vector<MVEvent*> taken;
    for (int i = 0; i < MVEventManager::poolSize; ++i)
        taken.push_back (rig.manager.allocateEvent());
    EXPECT_NE (taken.back(), nullptr);
    EXPECT_EQ (rig.manager.allocateEvent(), nullptr);
    EXPECT_TRUE (rig.manager.hasOutstandingEvents());
    for (MVEvent* const event : taken)
        rig.manager.releaseEvent (event);
    EXPECT_FALSE (rig.manager.hasOutstandingEvents());

    rig.post ('a', 0);
    MVEvent* const late = rig.manager.allocateEvent();
    rig.manager.setActive (false);
    EXPECT_EQ (rig.manager.allocateEvent(), nullptr);
    EXPECT_EQ (rig.manager.queuedEvents (threadCategoryRender), 0);
    rig.manager.postEvent (threadCategoryRender, late);
    EXPECT_FALSE (rig.manager.hasOutstandingEvents());
    EXPECT_EQ (rig.served(), "");

    rig.manager.setActive (true);
    rig.post ('b', 0, 0, 0, threadCategoryEvent);
    rig.manager.drainAllCategories();
    EXPECT_FALSE (rig.manager.hasOutstandingEvents());
    MVEvent* const lost = rig.manager.allocateEvent();
    rig.manager.postEvent (static_cast<MVThreadCategory> (77), lost); // no such queue
    EXPECT_FALSE (rig.manager.hasOutstandingEvents());
}

TEST (EventManager, flushedEventsNeverTellAnOldCompletion)
{
    Rig rig;
    MVEvent* event = rig.manager.allocateEvent();
    event->setIntArg (3, 42);
    event->setCompletion ([] (void*, void*, int, const char*) { ADD_FAILURE(); }, nullptr, nullptr);
    rig.manager.postEvent (threadCategoryRender, event);
    rig.manager.flushAllQueues();

    MVEvent* const again = rig.manager.allocateEvent();
    EXPECT_EQ (again, event);
    EXPECT_EQ (again->getIntArg (3), 42);
    again->complete (resultDone);
    rig.manager.releaseEvent (again);
}

TEST (EventManager, exceptionOfAHandlerBecomesTheResult)
{
    Rig rig;
    rig.handler.onEvent = [] (const MVEvent&) -> int { throw MVException (9, "Error:  Bad midi preset."); };
    std::string told;
    MVEvent* const event = rig.manager.allocateEvent();
    event->setCompletion ([] (void* text, void*, int result, const char* message)
                          { *static_cast<std::string*> (text) = std::to_string (result) + message; },
                          &told, nullptr);
    rig.manager.postEvent (threadCategoryRender, event);
    EXPECT_EQ (rig.manager.dispatch (threadCategoryRender, false), resultQueueEmpty);
    EXPECT_EQ (told, "9Error:  Bad midi preset.");
    EXPECT_FALSE (rig.manager.hasOutstandingEvents());
}

TEST (EventManager, objectsAreDestroyedByTheEventCategoryOutsideTheLock)
{
    std::vector<std::thread::id> destroyedOn;
    bool lockWasFree = false;
    Rig rig;

    std::thread audio (
        [&]
        {
            // One is replaced while it waits, the other delivered.
            for (int i = 0; i < 2; ++i)
            {
                MVEvent* const event = rig.manager.allocateEvent();
                MVSmartPtr<Witness> object (new Witness (rig.manager, destroyedOn, lockWasFree));
                event->setObjectB (object);
                event->setTargetId (rig.handler.getId());
                rig.manager.postEvent (threadCategoryRender, event);
            }
            rig.manager.dispatch (threadCategoryRender, false);
        });
    audio.join();
    EXPECT_TRUE (destroyedOn.empty());

    rig.manager.dispatchEventThread();
    EXPECT_EQ (destroyedOn, std::vector (2, std::this_thread::get_id()));
    EXPECT_TRUE (lockWasFree);
}

TEST (EventManager, touchesNoHeapInSteadyState)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();

    Rig rig;
    rig.handler.tags.reserve (1000);
    rig.handler.messages.reserve (1000);
    MVSmartPtr<MVObject> keeper = makeSmart<MVObject>();

    const auto round = [&]
    {
        for (int i = 0; i < 20; ++i)
        {
            MVEvent* const event = rig.manager.allocateEvent();
            MVSmartPtr<MVObject> object = keeper;
            event->setObjectA (object);
            event->setTargetId (i % 2 == 0 ? rig.handler.getId() : 0);
            event->setQueueMode (static_cast<std::uint32_t> (i % 5));
            rig.manager.postEvent (i % 3 == 0 ? threadCategoryEvent : threadCategoryRender, event);
            rig.handler.postThreadMsg (static_cast<std::uint32_t> (i), threadCategoryEvent, 3);
        }
        rig.manager.dispatch (threadCategoryRender, false);
        rig.manager.dispatch (threadCategoryEvent, false);
    };

    rig.manager.addChild (&rig.handler);
    round();
    const test::AllocationWatch watch;
    for (int i = 0; i < 5; ++i)
        round();
    EXPECT_EQ (watch.count(), 0);
    EXPECT_EQ (keeper.referenceCount(), 1U);
}

TEST (ThreadMessages, areServedOldestFirstAndOnce)
{
    Rig rig;
    rig.manager.addChild (&rig.handler);
    for (const std::uint32_t message : { 1U, 2U, 1U, 3U })
        rig.handler.postThreadMsg (message, threadCategoryEvent, 3);
    rig.handler.postThreadMsg (9, threadCategoryRender, 3);
    EXPECT_TRUE (rig.handler.messages.empty());

    EXPECT_EQ (rig.manager.dispatch (threadCategoryEvent, false), resultQueueEmpty);
    EXPECT_EQ (rig.handler.messages, (std::vector<std::uint32_t> { 1, 2, 3 }));
    rig.manager.dispatch (threadCategoryRender, false);
    EXPECT_EQ (rig.handler.messages.back(), 9U);
    rig.manager.dispatch (threadCategoryEvent, false);
    EXPECT_EQ (rig.handler.messages.size(), 4U);
}

TEST (ThreadMessages, lowerPriorityValuesGoInOnceForEachHigherOne)
{
    Rig rig;
    rig.manager.addChild (&rig.handler);
    const auto served = [&rig]
    {
        rig.handler.messages.clear();
        rig.manager.dispatch (threadCategoryEvent, false);
        return rig.handler.messages;
    };

    rig.handler.postThreadMsg (1, threadCategoryEvent, 5);
    rig.handler.postThreadMsg (2, threadCategoryEvent, 6);
    rig.handler.postThreadMsg (3, threadCategoryEvent, 1);
    EXPECT_EQ (served(), (std::vector<std::uint32_t> { 1, 2, 3, 3 }));

    rig.handler.postThreadMsg (1, threadCategoryEvent, 3);
    rig.handler.postThreadMsg (1, threadCategoryEvent, 4); // another priority is another message
    EXPECT_EQ (served(), (std::vector<std::uint32_t> { 1, 1 }));
}

TEST (ThreadMessages, withoutAParentThePosterServesThem)
{
    RecordingHandler alone;
    alone.postThreadMsg (4, threadCategoryEvent, 0);
    EXPECT_EQ (alone.messages, std::vector<std::uint32_t> { 4 });

    auto* const parent = new RecordingHandler;
    RecordingHandler child (parent);
    parent->addChild (&child);
    delete parent;
    EXPECT_EQ (child.getParent(), nullptr);
    {
        RecordingHandler shortLived (&alone);
        alone.addChild (&shortLived);
        EXPECT_EQ (alone.childCount(), 1);
        MVEvent event;
        shortLived.onEvent = [] (const MVEvent&) { return resultBusy; };
        EXPECT_EQ (alone.MVEventHandler::handleEvent (&event), resultBusy);
    }
    EXPECT_EQ (alone.childCount(), 0);
}

TEST (LockWatch, seesEveryLockButExemptOnes)
{
    MV_SKIP_WITHOUT_LOCK_WATCH();

    MVLocker first, second;
    test::LockWatch watch { &first };
    first.lock();
    first.unlock();
    EXPECT_EQ (watch.count(), 0);
    EXPECT_TRUE (second.tryLock());
    second.unlock();
    MVThreadEvent event;
    event.signal();
    EXPECT_EQ (watch.count(), 2);
}

TEST (AllocationWatch, seesEveryHeapCall)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();

    const test::AllocationWatch watch;
    delete new MVObject;
    EXPECT_EQ (watch.count(), 2);
    void* volatile block = std::malloc (8);
    block = std::realloc (block, 800);
    std::free (block);
    EXPECT_EQ (watch.count(), 5);
    std::thread other ([] { delete new MVObject; });
    const int withThread = watch.count();
    other.join();
    EXPECT_LE (watch.count() - withThread, 1); // the other thread's calls are its own
}

} // namespace morvanelab
