// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"

#include <memory>

namespace morvanelab
{

/** An auto-reset signal, at first not set: one signal releases one wait. It has no name, so no other instance in
    this or another process can wake or starve its waiter. Any thread. */
class MVThreadEvent : public MVObject
{
public:
    MVThreadEvent();
    ~MVThreadEvent() override;
    MVThreadEvent (const MVThreadEvent&) = delete;

    const char* className() const override { return "MVThreadEvent"; }
    /** Takes a pending signal back. */
    void reset() override;
    virtual void signal();
    /** Waits without limit. */
    virtual void wait();
    /** Waits for at most that long; returns whether a signal came. */
    virtual bool waitFor (int milliseconds);

private:
    struct Native;
    std::unique_ptr<Native> native;
};

} // namespace morvanelab
