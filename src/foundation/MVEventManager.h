// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVEvent.h"
#include "foundation/MVEventHandler.h"
#include "foundation/MVList.h"
#include "foundation/MVLocker.h"
#include "foundation/MVMap.h"
#include "foundation/MVThreadEvent.h"

#include <atomic>

namespace morvanelab
{

/** The event queues, one for each thread category, and the pool that feeds them.

    Life: starts disabled; addThreadCategory for each queue, then setActive (true) opens the gates. Posting,
    dispatching and releasing touch no heap in steady state. One locker guards handlers, queues and pool, for short
    list operations only; no handler is called under it.

    Who frees the objects of an event: whatever releases a used or driven-out event sets its objects aside;
    dispatch of category 5 destroys them on the event thread, outside the lock (and the manager's destructor those
    that are left). Only while more than 1024 are waiting, because nobody dispatches category 5, does the releasing
    thread destroy the surplus itself, under the lock. */
class MVEventManager : public MVEventHandler
{
public:
    static constexpr int poolSize = 512;

    MVEventManager();
    /** Disables, flushes, waits without limit for events that are out of the pool, then destroys them. */
    ~MVEventManager() override;

    const char* className() const override { return "MVEventManager"; }
    /** Clears the wake-up signal. */
    void reset() override;
    /** Stores the flag, then empties all queues. */
    void setActive (bool flag) override;
    void notifyThreadMsg (MVThreadCategory category) override;
    void handleThreadMsg (std::uint32_t) override {}

    /** Resets and pools every event queued under the categories 1 to 6. */
    virtual void drainAllCategories();
    virtual void addThreadCategory (MVThreadCategory category);
    /** Registers a receiver, unless it is one already. */
    virtual void addHandler (MVEventHandler* handler);
    virtual void removeHandler (std::uint64_t handlerId);
    /** A free event, or null if the manager is disabled or all 512 are out; the poster then returns 22. */
    virtual MVEvent* allocateEvent();
    /** Resets the event and returns it to the pool. */
    virtual void releaseEvent (MVEvent* event);
    /** Takes over the events and queues each by its mode; while disabled they go back to the pool. For category 5
        the event thread is woken, also by a call without events. */
    virtual void postEvents (MVThreadCategory category, int count, MVEvent* const* events);
    void postEvent (MVThreadCategory category, MVEvent* event) { postEvents (category, 1, &event); }
    /** Delivers what is queued, then pumps the category's thread messages. With wait, an empty queue is waited on
        for at most 250 ms first (category 5). Returns 6 if nothing was queued or all went well, 3 if a handler
        refused an event at least once. A refused event goes to the newest end and is tried again, about 1 ms later
        on category 5, until it is accepted, the manager is disabled, or stop becomes true. An exception from a
        handler counts as done; an MVException's code and text go to the event's completion. */
    virtual int dispatch (MVThreadCategory category, bool wait);
    int dispatch (MVThreadCategory category, bool wait, const std::atomic<bool>* stop);
    /** The first registered handler with that id, or null. */
    virtual MVEventHandler* findHandler (std::uint64_t handlerId, bool lock);
    /** Whether events are out of the pool: queued, being delivered, or held by a poster. */
    virtual bool hasOutstandingEvents() const;
    /** Empties every queue; the events go back to the pool unreset. */
    virtual void flushAllQueues();
    virtual int dispatchEventThread() { return dispatch (threadCategoryEvent, false); }

    /** The locker over handlers, queues and pool. */
    MVLocker& getLocker() const { return locker; }
    /** Events queued under a category; -1 if it has no queue. */
    int queuedEvents (MVThreadCategory category) const;

private:
    friend class MVEventThread;
    using Queue = MVList<MVEvent*>;

    void enqueue (Queue& queue, MVEvent* event);
    void enqueueExclusive (Queue& queue, MVEvent* event);
    void enqueueOrdered (Queue& queue, MVEvent* event);
    void enqueueCoalescing (Queue& queue, MVEvent* event);
    void retire (MVEvent* event);
    void setAside (const MVSmartPtr<MVObject>& object);
    void destroySetAside();
    MVEvent* takeOldest (Queue& queue);
    int deliver (MVEvent* event);
    int broadcast (MVEvent* event);
    static int call (MVEventHandler& handler, MVEvent* event);
    void putBack (Queue& queue, MVEvent* event);
    static void pauseAfter (MVThreadCategory category);
    int countOf (const Queue& queue) const;

    MVList<MVEventHandler*> handlers;
    MVMap<MVThreadCategory, Queue> queues;
    MVList<MVEvent*> freeEvents;
    MVList<MVSmartPtr<MVObject>> setAsideObjects;
    mutable MVLocker locker;
    MVThreadEvent wakeup;
};

} // namespace morvanelab
