// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVEventThread.h"

#include "foundation/MVEventManager.h"
#include "foundation/MVResult.h"

namespace morvanelab
{

namespace
{

constexpr int pauseBetweenTries = 100;

} // namespace

MVEventThread::MVEventThread (MVEventManager* eventManager) : MVThread (threadCategoryEvent), manager (eventManager) {}

MVEventThread::~MVEventThread()
{
    if (isRunning())
        requestStop();
    stop (0.1);
}

void MVEventThread::run()
{
    stopSignal.reset();

    while (! isStopRequested())
    {
        int result = manager->dispatch (threadCategoryEvent, true, &stopRequested);

        while (result == resultBusy && ! isStopRequested())
        {
            stopSignal.waitFor (pauseBetweenTries);
            if (! isStopRequested())
                result = manager->dispatch (threadCategoryEvent, false, &stopRequested);
        }

        manager->pumpOwnThreadMsgs (threadCategoryEvent);
        manager->pumpChildren (threadCategoryEvent);
    }
}

void MVEventThread::requestStop()
{
    MVThread::requestStop();
    stopSignal.signal();
    manager->postEvents (threadCategoryEvent, 0, nullptr);
}

} // namespace morvanelab
