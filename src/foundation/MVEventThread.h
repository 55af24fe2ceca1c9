// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVThread.h"

namespace morvanelab
{

class MVEventManager;

/** The background thread: delivers the events and thread messages of category 5 of one manager, which must
    outlive it. It waits at most 250 ms at a time and is woken by posts and by requestStop. */
class MVEventThread : public MVThread
{
public:
    explicit MVEventThread (MVEventManager* eventManager);
    ~MVEventThread() override;

    const char* className() const override { return "MVEventThread"; }
    void run() override;
    /** Also wakes the thread, wherever it waits. An event that a handler keeps refusing stays queued. */
    void requestStop() override;

private:
    MVEventManager* const manager;
    MVThreadEvent stopSignal;
};

} // namespace morvanelab
