// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/MVSpinGate.h"
#include "foundation/MVList.h"
#include "foundation/MVObject.h"
#include "foundation/MVString.h"

#include <atomic>
#include <cstdint>

namespace morvanelab
{

/** Told on the event thread that a control value has moved: the context given when it was added, the value's id,
    the new value, and 0. It must be brief, and must not add or remove callbacks of the same value. */
using MVControlCallback = void (*) (void* context, std::uint64_t valueId, const double* value, int reserved);

/** A number between 0 and 1 that any thread writes without a lock and that its listeners hear of later, on the
    event thread.

    A write only sets the raw value and counts itself. An update takes the count, makes the raw value the current
    one and marks the value as moved. Updates run on the event thread and at the end of each block on the audio
    thread, also both at once: whoever stores the current value reads the raw one again afterwards, so that the
    last write always wins. Listeners are told on the event thread alone, which also decides whether the value has
    moved far enough from what it last told them (more than 0.01). */
class MVControlValue : public MVObject
{
public:
    /** 0.5 in fixed point. */
    static constexpr std::int32_t centreRaw = 1073741823;

    MVControlValue() = default;
    /** The same value and name; listeners and pending writes are not taken over. */
    MVControlValue (const MVControlValue& other);

    MVObject* clone() const override;
    const char* className() const override { return "MVControlValue"; }
    /** Drops pending writes; the next update tells the listeners even of an unchanged value. */
    void reset() override;

    /** The value's place in its table plus 1. */
    int getControlId() const { return controlId; }
    /** What the last update made current. Any thread. */
    double getValue() const { return currentValue.load (std::memory_order_relaxed); }
    double getPreviousValue() const { return previousValue.load (std::memory_order_relaxed); }
    double getLastNotifiedValue() const { return lastNotifiedValue.load (std::memory_order_relaxed); }
    std::int32_t getRawValue() const { return rawValue.load (std::memory_order_relaxed); }
    int getPendingWrites() const { return pendingWrites.load (std::memory_order_relaxed); }

    /** Callbacks run only while this is set; it is clear in a new value. */
    void setNotifyEnabled (bool flag) { notifyEnabled.store (flag, std::memory_order_relaxed); }
    bool isNotifyEnabled() const { return notifyEnabled.load (std::memory_order_relaxed); }

    /** Text for the user. Not for the audio thread. */
    void setName (const char* text);
    MVString getName() const;

    int getCallbackCount() const { return callbacks.count(); }

private:
    friend class MVControlManager;

    struct MVCallbackInfo
    {
        MVControlCallback function = nullptr;
        void* context = nullptr;
    };

    /** Why listeners are to be told: the first update tells them without further test. */
    enum DUE_t : int
    {
        dueNothing = 0,
        dueMoved = 1,
        dueFirst = 2
    };

    /** Gives the value its id and the manager's sum of pending writes, once and before any other thread sees it. */
    void attach (int valueId, std::atomic<int>& sum);
    void makeNew();
    void takeStateOf (const MVControlValue& other);
    /** What is left of a value whose last user has gone: no listeners, no name, 0.5 written. */
    void recycle();
    void clearListeners();
    void write (double value);
    /** Makes pending writes current; returns whether listeners may have to be told. Event and audio thread, also
        both at once. */
    bool applyPending();
    /** Tells the listeners of what updates have marked. Event thread. */
    void notifyIfDue();
    void runCallbacks (double value);
    bool addCallback (MVControlCallback function, void* context);
    bool removeCallback (MVControlCallback function, void* context);
    void changePending (int change);
    int takePending();
    static double valueOf (std::int32_t raw) { return raw / 2147483647.0; }

    int controlId = 0;
    std::atomic<std::int32_t> rawValue { centreRaw };
    std::atomic<int> pendingWrites { 0 };
    std::atomic<double> previousValue { 0.5 };
    std::atomic<double> currentValue { 0.5 };
    std::atomic<double> lastNotifiedValue { 0.5 };
    MVList<MVCallbackInfo> callbacks;
    std::atomic<bool> firstUpdate { true };
    MVSpinGate callbackLock;
    std::atomic<bool> notifyEnabled { false };
    MVString name;
    mutable MVSpinGate nameLock;
    std::atomic<int> due { dueNothing };
    std::atomic<int>* totalPending = nullptr;
};

} // namespace morvanelab
