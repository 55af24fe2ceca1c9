// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVEvent.h"
#include "foundation/MVList.h"
#include "foundation/MVLocker.h"
#include "foundation/MVObject.h"
#include "foundation/MVVector.h"

#include <atomic>
#include <cstdint>

namespace morvanelab
{

/** Receives events from an MVEventManager, and thread messages: bare numbers queued inside the handler and served
    by the thread of their category.

    Two locks meet here, each for short list operations only: this locker guards the messages and the children.
    None is held while handleEvent or handleThreadMsg runs. */
class MVEventHandler : public MVObject
{
public:
    struct MVThreadMsg_
    {
        std::uint32_t message = 0;
        MVThreadCategory category = threadCategoryDefault;
        std::int32_t priority = 0;

        bool operator== (const MVThreadMsg_&) const = default;
    };

    /** Only notes the parent; the parent pumps this handler once addChild was called on it. */
    explicit MVEventHandler (MVEventHandler* parentHandler = nullptr) : parent (parentHandler) {}
    /** A copy has the same parent, but no children and no messages. */
    MVEventHandler (const MVEventHandler& other) : MVObject (other), parent (other.parent.load()) {}
    /** Leaves its parent and sets its children's parent to null. See detach. */
    ~MVEventHandler() override;

    /** Done (1), or refused for now (3): the event is then delivered again later. Any other result counts as done.
        Here the event goes to each child; 3 if any of them refused. */
    virtual int handleEvent (MVEvent* event);
    /** Tells that a message of the category waits: passed on to the parent, or, without one, pumped at once on the
        calling thread. */
    virtual void notifyThreadMsg (MVThreadCategory category);
    virtual void handleThreadMsg (std::uint32_t message) = 0;

    /** Queues a thread message and notifies. An equal one that is met first absorbs it. A lower priority value goes
        in once for each queued message of a higher value, on the side that is served later. Any thread; takes the
        locker, and touches the heap only while the queue grows beyond its largest size so far. */
    void postThreadMsg (std::uint32_t message, MVThreadCategory category, std::int32_t priority);
    /** Serves the waiting messages of the category, then those of the children. Belongs to the category's thread. */
    void pumpThreadMsgs (MVThreadCategory category);

    /** Appends to the children, unless it is one, and becomes its parent. */
    void addChild (MVEventHandler* child);
    void removeChild (MVEventHandler* child);
    MVEventHandler* getParent() const { return parent.load(); }
    int childCount() const;

    /** Leaves the parent and waits until no other thread is inside this handler on behalf of a manager or parent.
        A class whose handlers may be destroyed while an event thread runs calls removeHandler on the manager and
        then this, before its own parts go. The caller must hold no lock that the handler's calls wait for. */
    void detach();

protected:
    /** The first stage of pumping: this handler's own messages. */
    void pumpOwnThreadMsgs (MVThreadCategory category);
    void pumpChildren (MVThreadCategory category);

private:
    friend class MVEventManager;

    /** Marks a call into a handler, entered while the list that named it was locked. */
    class CallMark
    {
    public:
        explicit CallMark (MVEventHandler& handlerToMark);
        ~CallMark();
        CallMark (const CallMark&) = delete;
        CallMark& operator= (const CallMark&) = delete;
        static int callsOfThisThread (const MVEventHandler& handlerAsked);

    private:
        MVEventHandler& handler;
        CallMark* const outer;
        static thread_local CallMark* innermost;
    };

    /** Calls function with the child at each index, outside the lock. */
    template <typename Function>
    void forEachChild (Function&& function);

    std::atomic<MVEventHandler*> parent;
    MVVector<MVEventHandler*> children;
    MVList<MVThreadMsg_> threadMsgs;
    mutable MVLocker threadMsgLocker;
    std::atomic<int> callsInside { 0 };
};

} // namespace morvanelab
