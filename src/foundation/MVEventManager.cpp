// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVEventManager.h"

#include "foundation/MVException.h"
#include "foundation/MVLog.h"
#include "foundation/MVResult.h"

#include <chrono>
#include <exception>
#include <thread>
#include <utility>

namespace morvanelab
{

namespace
{

constexpr int wakeupMilliseconds = 250;
constexpr int drainedCategories[] { 1, 2, 3, 4, 5, 6 };
constexpr int setAsideLimit = 2 * MVEventManager::poolSize;
constexpr auto pauseAfterRefusal = std::chrono::milliseconds (1);
constexpr auto pauseForOutstanding = std::chrono::milliseconds (5);

} // namespace

MVEventManager::MVEventManager() : MVEventHandler (nullptr)
{
    for (int i = 0; i < poolSize; ++i)
        freeEvents.addHead (new MVEvent);

    // Warmed up, so that setting an object aside finds a spent node.
    for (int i = 0; i < setAsideLimit; ++i)
        setAsideObjects.addHead ({});
    setAsideObjects.clear();
}

MVEventManager::~MVEventManager()
{
    enabled = false;
    flushAllQueues();

    while (hasOutstandingEvents())
        std::this_thread::sleep_for (pauseForOutstanding);

    const MVScopedLock lock (locker);
    MVEvent* event = nullptr;
    while (freeEvents.popTail (event))
        delete event;
}

void MVEventManager::reset() { wakeup.reset(); }

void MVEventManager::setActive (bool flag)
{
    enabled = flag;
    flushAllQueues();
}

void MVEventManager::notifyThreadMsg (MVThreadCategory category)
{
    if (category == threadCategoryEvent)
        wakeup.signal();
}

void MVEventManager::addThreadCategory (MVThreadCategory category)
{
    const MVScopedLock lock (locker);
    Queue& queue = queues.insert (category);

    // The queue's nodes are had now rather than on the thread that first fills it.
    if (queue.allocatedNodes() == 0)
    {
        for (int i = 0; i < poolSize; ++i)
            queue.addHead (nullptr);
        queue.clear();
    }
}

void MVEventManager::addHandler (MVEventHandler* handler)
{
    const MVScopedLock lock (locker);
    for (auto* node = handlers.firstNode(); node != nullptr; node = node->next)
        if (node->value == handler)
            return;
    handlers.addTail (handler);
}

void MVEventManager::removeHandler (std::uint64_t handlerId)
{
    const MVScopedLock lock (locker);
    for (auto* node = handlers.lastNode(); node != nullptr;)
    {
        auto* const before = node->previous;
        if (node->value != nullptr && node->value->getId() == handlerId)
            handlers.removeNode (node);
        node = before;
    }
}

MVEventHandler* MVEventManager::findHandler (std::uint64_t handlerId, bool lock)
{
    if (lock)
        locker.lock();

    auto* node = handlers.firstNode();
    while (node != nullptr && (node->value == nullptr || node->value->getId() != handlerId))
        node = node->next;
    MVEventHandler* const found = node != nullptr ? node->value : nullptr;

    if (lock)
        locker.unlock();
    return found;
}

MVEvent* MVEventManager::allocateEvent()
{
    if (! isEnabled())
        return nullptr;

    const MVScopedLock lock (locker);
    MVEvent* event = nullptr;
    if (! freeEvents.popHead (event))
        return nullptr;

    // A flushed event keeps its arguments, but a completion of its last use must never be told.
    event->setCompletion (nullptr, nullptr, nullptr);
    return event;
}

void MVEventManager::releaseEvent (MVEvent* event)
{
    if (event == nullptr)
        return;
    const MVScopedLock lock (locker);
    retire (event);
}

/** Pools an event. Its objects are set aside first: destroying one may take long, and this may be any thread. */
void MVEventManager::retire (MVEvent* event)
{
    setAside (event->getObjectA());
    setAside (event->getObjectB());
    event->reset();
    freeEvents.addHead (event);
}

void MVEventManager::setAside (const MVSmartPtr<MVObject>& object)
{
    if (object && setAsideObjects.count() < setAsideLimit)
        setAsideObjects.addTail (object);
}

void MVEventManager::destroySetAside()
{
    while (setAsideObjects.count() > 0)
    {
        MVSmartPtr<MVObject> object;
        const MVScopedLock lock (locker);
        setAsideObjects.popHead (object);
    }
}

bool MVEventManager::hasOutstandingEvents() const { return freeEvents.count() != freeEvents.allocatedNodes(); }

int MVEventManager::queuedEvents (MVThreadCategory category) const
{
    const MVScopedLock lock (locker);
    const Queue* const queue = queues.find (category);
    return queue != nullptr ? queue->count() : -1;
}

void MVEventManager::flushAllQueues()
{
    for (int i = 0; i < queues.count(); ++i)
    {
        const MVScopedLock lock (locker);
        MVEvent* event = nullptr;
        Queue* const queue = queues.valueAt (i);
        while (queue != nullptr && queue->popTail (event))
            freeEvents.addHead (event);
    }
}

void MVEventManager::drainAllCategories()
{
    const MVScopedLock lock (locker);
    for (const int category : drainedCategories)
    {
        MVEvent* event = nullptr;
        Queue* const queue = queues.find (static_cast<MVThreadCategory> (category));
        while (queue != nullptr && queue->popTail (event))
            releaseEvent (event);
    }
}

void MVEventManager::postEvents (MVThreadCategory category, int count, MVEvent* const* events)
{
    {
        const MVScopedLock lock (locker);
        Queue* const queue = queues.find (category);

        for (int i = 0; i < count; ++i)
        {
            if (events[i] == nullptr)
                continue;
            if (isEnabled() && queue != nullptr)
                enqueue (*queue, events[i]);
            else
                retire (events[i]);
        }
    }

    if (category == threadCategoryEvent)
        wakeup.signal();
}

// A queue's head is its newest end; the oldest event, at the tail, is served first.

void MVEventManager::enqueue (Queue& queue, MVEvent* event)
{
    switch (event->getQueueMode())
    {
        case queueModeExclusive:
            enqueueExclusive (queue, event);
            break;
        case queueModeOrdered:
        case queueModeOrderedHigher:
            enqueueOrdered (queue, event);
            break;
        default:
            enqueueCoalescing (queue, event);
            break;
    }
}

void MVEventManager::enqueueExclusive (Queue& queue, MVEvent* event)
{
    MVEvent* oldest = nullptr;
    for (int steps = queue.count(); steps > 0 && queue.popTail (oldest); --steps)
    {
        if (oldest->getQueueMode() == queueModeExclusive)
            queue.addHead (oldest);
        else
            retire (oldest);
    }

    queue.addHead (event);
}

void MVEventManager::enqueueOrdered (Queue& queue, MVEvent* event)
{
    int index = 0;
    auto* node = queue.firstNode();
    for (; node != nullptr && node->value->getQueueMode() < event->getQueueMode(); node = node->next)
        ++index;

    // Behind lower modes alone it waits like any other.
    queue.insertAt (node != nullptr ? index : 0, event);
}

void MVEventManager::enqueueCoalescing (Queue& queue, MVEvent* event)
{
    for (auto* node = queue.firstNode(); node != nullptr; node = node->next)
    {
        const MVEvent* const queued = node->value;
        if (queued->getTargetId() != 0 && queued->getTargetId() == event->getTargetId()
            && queued->getType() == event->getType())
        {
            retire (std::exchange (node->value, event));
            return;
        }
    }

    queue.addHead (event);
}

int MVEventManager::dispatch (MVThreadCategory category, bool wait) { return dispatch (category, wait, nullptr); }

int MVEventManager::dispatch (MVThreadCategory category, bool wait, const std::atomic<bool>* stop)
{
    locker.lock();
    Queue* const queue = queues.find (category);
    locker.unlock();
    if (queue == nullptr)
        return resultQueueEmpty;

    if (wait && countOf (*queue) == 0)
        wakeup.waitFor (wakeupMilliseconds);

    int result = resultQueueEmpty;

    while (countOf (*queue) >= 1)
    {
        MVEvent* const event = takeOldest (*queue);
        if (event == nullptr)
            break;

        const bool refused = deliver (event) == resultBusy;

        if (refused)
        {
            result = resultBusy;
            putBack (*queue, event);
        }
        else
        {
            releaseEvent (event);
        }

        if (category == threadCategoryEvent)
            destroySetAside();
        if (stop != nullptr && stop->load())
            break;
        if (refused)
            pauseAfter (category);
    }

    pumpThreadMsgs (category);
    if (category == threadCategoryEvent)
        destroySetAside();
    return result;
}

/** The oldest event, or null if there is none or the manager is disabled; then the event is pooled as it is. */
MVEvent* MVEventManager::takeOldest (Queue& queue)
{
    const MVScopedLock lock (locker);
    MVEvent* event = nullptr;
    if (! queue.popTail (event) || isEnabled())
        return event;

    freeEvents.addHead (event);
    return nullptr;
}

/** A refused event waits at the newest end; with the gates closed meanwhile it goes to the pool. */
void MVEventManager::putBack (Queue& queue, MVEvent* event)
{
    const MVScopedLock lock (locker);
    if (isEnabled())
        queue.addHead (event);
    else
        freeEvents.addHead (event);
}

/** A handler that refuses waits for something outside; trying again at once would only burn a core. */
void MVEventManager::pauseAfter (MVThreadCategory category)
{
    if (category == threadCategoryEvent)
        std::this_thread::sleep_for (pauseAfterRefusal);
    else
        std::this_thread::yield();
}

int MVEventManager::deliver (MVEvent* event)
{
    locker.lock();
    MVEventHandler* const target = findHandler (event->getTargetId(), false);
    if (target == nullptr)
    {
        locker.unlock();
        return broadcast (event);
    }

    const CallMark mark (*target);
    locker.unlock();
    return call (*target, event);
}

/** An exception must neither end the thread nor lose the event: it becomes the result that is told. */
int MVEventManager::call (MVEventHandler& handler, MVEvent* event)
{
    try
    {
        return handler.handleEvent (event);
    }
    catch (const MVException& exception)
    {
        mvLog ("ERROR", "morvanelab::MVEventManager::dispatch", "%s", exception.text());
        event->complete (static_cast<int> (exception.getCode()), exception.text());
    }
    catch (const std::exception& exception)
    {
        mvLog ("ERROR", "morvanelab::MVEventManager::dispatch", "%s", exception.what());
        event->complete (resultFailed, exception.what());
    }

    return resultDone;
}

int MVEventManager::broadcast (MVEvent* event)
{
    int result = resultDone;

    for (int i = 0;; ++i)
    {
        locker.lock();
        MVEventHandler** const entry = handlers.itemAt (i);
        if (entry == nullptr || *entry == nullptr)
        {
            locker.unlock();
            if (entry == nullptr)
                return result;
            continue;
        }

        MVEventHandler* const handler = *entry;
        const CallMark mark (*handler);
        locker.unlock();
        if (call (*handler, event) == resultBusy)
            result = resultBusy;
    }
}

int MVEventManager::countOf (const Queue& queue) const
{
    const MVScopedLock lock (locker);
    return queue.count();
}

} // namespace morvanelab
