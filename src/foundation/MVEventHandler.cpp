// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVEventHandler.h"

#include "foundation/MVResult.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace morvanelab
{

thread_local MVEventHandler::CallMark* MVEventHandler::CallMark::innermost = nullptr;

MVEventHandler::CallMark::CallMark (MVEventHandler& handlerToMark) : handler (handlerToMark), outer (innermost)
{
    innermost = this;
    handler.callsInside.fetch_add (1);
}

MVEventHandler::CallMark::~CallMark()
{
    innermost = outer;
    handler.callsInside.fetch_sub (1);
}

int MVEventHandler::CallMark::callsOfThisThread (const MVEventHandler& handlerAsked)
{
    int calls = 0;
    for (const CallMark* mark = innermost; mark != nullptr; mark = mark->outer)
        calls += &mark->handler == &handlerAsked ? 1 : 0;
    return calls;
}

MVEventHandler::~MVEventHandler()
{
    const MVScopedLock lock (threadMsgLocker);

    if (MVEventHandler* const above = parent.load(); above != nullptr)
        above->removeChild (this);

    for (MVEventHandler* const child : children)
        child->parent.store (nullptr);
    children.clear();
}

void MVEventHandler::addChild (MVEventHandler* child)
{
    if (child == nullptr || child == this)
        return;

    child->parent.store (this);
    const MVScopedLock lock (threadMsgLocker);
    if (std::find (children.begin(), children.end(), child) == children.end())
        children.add (child);
}

void MVEventHandler::removeChild (MVEventHandler* child)
{
    const MVScopedLock lock (threadMsgLocker);
    children.removeValue (child);
}

int MVEventHandler::childCount() const
{
    const MVScopedLock lock (threadMsgLocker);
    return children.size();
}

void MVEventHandler::detach()
{
    if (MVEventHandler* const above = parent.exchange (nullptr); above != nullptr)
        above->removeChild (this);

    while (callsInside.load() > CallMark::callsOfThisThread (*this))
        std::this_thread::sleep_for (std::chrono::milliseconds (1));
}

template <typename Function>
void MVEventHandler::forEachChild (Function&& function)
{
    for (int i = 0;; ++i)
    {
        threadMsgLocker.lock();
        MVEventHandler* const child = i < children.size() ? children[i] : nullptr;
        if (child == nullptr)
        {
            threadMsgLocker.unlock();
            return;
        }

        const CallMark mark (*child);
        threadMsgLocker.unlock();
        function (*child);
    }
}

int MVEventHandler::handleEvent (MVEvent* event)
{
    int result = resultDone;
    forEachChild (
        [event, &result] (MVEventHandler& child)
        {
            if (child.handleEvent (event) == resultBusy)
                result = resultBusy;
        });
    return result;
}

void MVEventHandler::notifyThreadMsg (MVThreadCategory category)
{
    if (MVEventHandler* const above = parent.load(); above != nullptr)
        above->notifyThreadMsg (category);
    else
        pumpThreadMsgs (category);
}

void MVEventHandler::postThreadMsg (std::uint32_t message, MVThreadCategory category, std::int32_t priority)
{
    const MVThreadMsg_ posted { message, category, priority };

    {
        const MVScopedLock lock (threadMsgLocker);
        bool duplicate = false;
        int index = 0;

        for (auto* node = threadMsgs.firstNode(); node != nullptr && ! duplicate; node = node->next)
        {
            duplicate = node->value == posted;
            if (! duplicate && priority < node->value.priority)
                threadMsgs.insertAt (index, posted);
            ++index;
        }

        if (! duplicate && index >= threadMsgs.count())
            threadMsgs.addHead (posted);
    }

    MVEventHandler* const above = parent.load();
    (above != nullptr ? above : this)->notifyThreadMsg (category);
}

void MVEventHandler::pumpThreadMsgs (MVThreadCategory category)
{
    pumpOwnThreadMsgs (category);
    pumpChildren (category);
}

void MVEventHandler::pumpChildren (MVThreadCategory category)
{
    forEachChild ([category] (MVEventHandler& child) { child.pumpThreadMsgs (category); });
}

void MVEventHandler::pumpOwnThreadMsgs (MVThreadCategory category)
{
    for (int steps = threadMsgs.count(); steps > 0; --steps)
    {
        MVThreadMsg_ taken;

        {
            const MVScopedLock lock (threadMsgLocker);
            if (! threadMsgs.popTail (taken))
                return;
            if (taken.category != category)
                threadMsgs.addHead (taken);
        }

        if (taken.category == category)
            handleThreadMsg (taken.message);
    }
}

} // namespace morvanelab
