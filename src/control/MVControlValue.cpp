// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/MVControlValue.h"

#include "foundation/MVMath.h"

#include <cmath>
#include <mutex>

namespace morvanelab
{

namespace
{

/** Listeners are spared changes up to this; 0.01 in single precision. */
constexpr double notifyThreshold = 0.009999999776482582;

} // namespace

MVControlValue::MVControlValue (const MVControlValue& other) : MVObject (other), controlId (other.getControlId())
{
    takeStateOf (other);
}

MVObject* MVControlValue::clone() const { return new MVControlValue (*this); }

void MVControlValue::reset()
{
    previousValue.store (getValue(), std::memory_order_relaxed);
    takePending();
    firstUpdate.store (true);
}

void MVControlValue::setName (const char* text)
{
    const std::lock_guard guard (nameLock);
    name.assign (text);
}

MVString MVControlValue::getName() const
{
    const std::lock_guard guard (nameLock);
    return name;
}

void MVControlValue::attach (int valueId, std::atomic<int>& sum)
{
    controlId = valueId;
    totalPending = &sum;
}

void MVControlValue::takeStateOf (const MVControlValue& other)
{
    setName (other.getName().text());
    setNotifyEnabled (other.isNotifyEnabled());
    rawValue.store (other.getRawValue());
    previousValue.store (other.getPreviousValue());
    currentValue.store (other.getValue());
    lastNotifiedValue.store (other.getLastNotifiedValue());
    firstUpdate.store (other.firstUpdate.load());
}

void MVControlValue::clearListeners()
{
    const std::lock_guard guard (callbackLock);
    callbacks.clear();
}

void MVControlValue::makeNew()
{
    clearListeners();
    setName (nullptr);
    setNotifyEnabled (false);
    takePending();
    rawValue.store (centreRaw);
    previousValue.store (0.5);
    currentValue.store (0.5);
    lastNotifiedValue.store (0.5);
    due.store (dueNothing);
    firstUpdate.store (true);
}

void MVControlValue::recycle()
{
    clearListeners();
    setName (nullptr);
    rawValue.exchange (centreRaw);
    changePending (1);
}

void MVControlValue::write (double value)
{
    rawValue.exchange (truncToInt (value * 2147483647.0));
    changePending (1);
}

void MVControlValue::changePending (int change)
{
    pendingWrites.fetch_add (change);
    if (totalPending != nullptr)
        totalPending->fetch_add (change);
}

int MVControlValue::takePending()
{
    const int taken = pendingWrites.exchange (0);
    if (totalPending != nullptr && taken != 0)
        totalPending->fetch_sub (taken);
    return taken;
}

bool MVControlValue::applyPending()
{
    if (pendingWrites.load (std::memory_order_relaxed) < 1)
        return false;

    const int taken = pendingWrites.exchange (0);
    if (taken < 1)
        return false;

    int marks = firstUpdate.exchange (false) ? dueFirst : dueNothing;
    std::int32_t raw = rawValue.load();

    if (marks == dueFirst)
        previousValue.store (valueOf (raw), std::memory_order_relaxed);

    // Another thread may be here with a newer write and store before this one does: the raw value is read again
    // after each store, so that whoever stores last has stored the last write.
    for (;;)
    {
        const double value = valueOf (raw);
        if (currentValue.exchange (value) != value)
            marks |= dueMoved;

        const std::int32_t latest = rawValue.load();
        if (latest == raw)
            break;
        raw = latest;
    }

    if (marks != dueNothing)
        due.fetch_or (marks);

    // Last, so that nobody who waits for the sum to fall sees an old value.
    if (totalPending != nullptr)
        totalPending->fetch_sub (taken);

    return marks != dueNothing;
}

void MVControlValue::notifyIfDue()
{
    const int marks = due.exchange (dueNothing);
    if (marks == dueNothing)
        return;

    const double value = currentValue.load();

    // The first update tells its value without noting it as told.
    if ((marks & dueFirst) == 0)
    {
        if (! (std::abs (value - getLastNotifiedValue()) > notifyThreshold))
            return;
        lastNotifiedValue.store (value, std::memory_order_relaxed);
    }

    runCallbacks (value);
}

void MVControlValue::runCallbacks (double value)
{
    if (! isNotifyEnabled())
        return;

    const std::lock_guard guard (callbackLock);

    for (const auto* node = callbacks.firstNode(); node != nullptr; node = node->next)
        if (node->value.function != nullptr)
            node->value.function (node->value.context, static_cast<std::uint64_t> (getControlId()), &value, 0);
}

bool MVControlValue::addCallback (MVControlCallback function, void* context)
{
    const std::lock_guard guard (callbackLock);

    for (const auto* node = callbacks.firstNode(); node != nullptr; node = node->next)
        if (node->value.function == function && node->value.context == context)
            return true;

    return callbacks.addTail ({ function, context });
}

bool MVControlValue::removeCallback (MVControlCallback function, void* context)
{
    const std::lock_guard guard (callbackLock);

    for (auto* node = callbacks.firstNode(); node != nullptr; node = node->next)
    {
        if (node->value.function == function && node->value.context == context)
        {
            callbacks.removeNode (node);
            return true;
        }
    }

    return false;
}

} // namespace morvanelab
