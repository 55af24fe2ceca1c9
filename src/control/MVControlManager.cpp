// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/MVControlManager.h"

#include "foundation/MVChunks.h"
#include "foundation/MVLog.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>

namespace morvanelab
{

namespace
{

/** An event that was posted this long ago and not seen since is taken as lost. */
constexpr std::int64_t lostAfterMs = 1000;

std::int64_t nowMs()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds> (now).count();
}

/** Holds the event manager's lock, if there is a manager. */
class EventManagerLock
{
public:
    explicit EventManagerLock (MVEventManager* events)
    {
        if (events != nullptr)
            lock.emplace (events->getLocker());
    }

private:
    std::optional<MVScopedLock> lock;
};

} // namespace

MVControlManager::MVControlManager (MVEventManager* events) : eventManager (events)
{
    if (eventManager != nullptr)
        eventManager->addHandler (this);
}

MVControlManager::MVControlManager (const MVControlManager& other) : MVControlManager (other.eventManager)
{
    resizeControls (other.numControls());

    for (int index = 0; index < numControls(); ++index)
    {
        Entry& entry = entryAt (index);
        const Entry& source = other.entryAt (index);
        entry.value.takeStateOf (source.value);
        entry.references.store (source.references.load());
    }

    allocatedCount.store (other.getAllocatedCount());
}

MVControlManager::~MVControlManager()
{
    if (eventManager != nullptr)
        eventManager->removeHandler (getId());
    detach();

    for (const auto& chunk : chunks)
        delete chunk.load();
}

MVObject* MVControlManager::clone() const { return new MVControlManager (*this); }

void MVControlManager::reset()
{
    forEachEntry ([] (Entry& entry) { entry.value.reset(); });
}

void MVControlManager::setActive (bool flag)
{
    MVEventHandler::setActive (flag);
    if (flag)
        asyncPosted.store (0);
}

MVControlManager::Entry& MVControlManager::entryAt (int index) const
{
    const auto place = static_cast<std::size_t> (index);
    return (*chunks[place / chunkSize].load (std::memory_order_acquire))[place % chunkSize];
}

MVControlManager::Entry* MVControlManager::entryOf (int valueId) const
{
    return valueId >= 1 && valueId <= numControls() ? &entryAt (valueId - 1) : nullptr;
}

MVControlManager::Entry* MVControlManager::entryInUse (int valueId) const
{
    Entry* const entry = entryOf (valueId);
    return entry != nullptr && entry->references.load (std::memory_order_relaxed) > 0 ? entry : nullptr;
}

template <typename Function>
void MVControlManager::forEachEntry (Function&& function)
{
    const int count = numControls();
    for (int index = 0; index < count; ++index)
        function (entryAt (index));
}

void MVControlManager::ensureChunks (int count)
{
    for (int first = 0; first < count; first += chunkSize)
    {
        std::atomic<Chunk*>& slot = chunks[static_cast<std::size_t> (first / chunkSize)];
        if (slot.load (std::memory_order_relaxed) != nullptr)
            continue;

        auto* const chunk = new Chunk;
        int valueId = first;
        for (Entry& entry : *chunk)
            entry.value.attach (++valueId, totalPending);
        slot.store (chunk, std::memory_order_release);
    }
}

void MVControlManager::resizeControls (int count)
{
    const int newSize = std::clamp (count, 0, maxControls);
    const int touched = std::max (newSize, numControls());
    ensureChunks (newSize);

    for (int index = 0; index < touched; ++index)
    {
        entryAt (index).references.store (0);
        entryAt (index).value.makeNew();
    }

    tableSize.store (newSize, std::memory_order_release);
    allocatedCount.store (0);
}

std::uint16_t MVControlManager::allocateControlId() const
{
    const int count = numControls();
    for (int valueId = 1; valueId <= count; ++valueId)
        if (entryInUse (valueId) == nullptr)
            return static_cast<std::uint16_t> (valueId);
    return 0;
}

MVControlValue* MVControlManager::acquireControl (int valueId)
{
    Entry* const entry = entryOf (valueId);
    if (entry == nullptr)
        return nullptr;

    if (entry->references.fetch_add (1) == 0)
        allocatedCount.fetch_add (1);
    return &entry->value;
}

void MVControlManager::releaseControl (int valueId)
{
    Entry* const entry = entryInUse (valueId);
    if (entry == nullptr || entry->references.fetch_sub (1) != 1)
        return;

    entry->value.recycle();
    allocatedCount.fetch_sub (1);
    requestUpdate();
}

bool MVControlManager::controlExists (int valueId) const { return entryInUse (valueId) != nullptr; }

double MVControlManager::getControlValue (int valueId) const
{
    const Entry* const entry = entryInUse (valueId);
    return entry != nullptr ? entry->value.getValue() : 0.0;
}

bool MVControlManager::setControlValue (int valueId, double value)
{
    mvLog ("CONTROL", "morvanelab::MVControlManager::setControlValue", "setting var id %d to val %f", valueId, value);

    if (Entry* const entry = entryOf (valueId); entry != nullptr)
    {
        entry->value.write (value);
        requestUpdate();
    }

    return true;
}

bool MVControlManager::addControlCallback (int valueId, MVControlCallback function, void* context)
{
    Entry* const entry = entryOf (valueId);
    return entry != nullptr && entry->value.addCallback (function, context);
}

bool MVControlManager::removeControlCallback (int valueId, MVControlCallback function, void* context)
{
    Entry* const entry = entryOf (valueId);
    return entry != nullptr && entry->value.removeCallback (function, context);
}

void MVControlManager::setAllNotifyEnabled (bool flag)
{
    forEachEntry ([=] (Entry& entry) { entry.value.setNotifyEnabled (flag); });
}

bool MVControlManager::processAsyncValues()
{
    // First, so that writes arriving from now on post a fresh event.
    asyncPosted.exchange (0);
    notifyOutstanding.exchange (false);

    forEachEntry (
        [] (Entry& entry)
        {
            entry.value.applyPending();
            entry.value.notifyIfDue();
        });

    return totalPending.load() < 1 && ! flushing.load() && ! notifyOutstanding.load();
}

void MVControlManager::flushPendingValues()
{
    if (totalPending.load() > 0)
    {
        bool moved = false;

        flushing.exchange (true);
        forEachEntry ([&] (Entry& entry) { moved |= entry.value.applyPending(); });
        if (moved)
            notifyOutstanding.exchange (true);
        flushing.exchange (false);
    }

    if (notifyOutstanding.load() && postIsOld())
        postUpdate();
}

bool MVControlManager::waitForPendingValues (int milliseconds)
{
    const std::int64_t end = nowMs() + std::max (0, milliseconds);

    while (hasPendingValues())
    {
        if (nowMs() >= end)
            return false;

        requestUpdate();
        std::this_thread::sleep_for (std::chrono::milliseconds (1));
    }

    return true;
}

void MVControlManager::requestUpdate()
{
    if (asyncPosted.exchange (1) == 0 || postIsOld())
        postUpdate();
}

void MVControlManager::postUpdate()
{
    mvLog ("CONTROL", "morvanelab::MVControlManager::setControlValue", "posting async values changed message");

    asyncPosted.exchange (1);
    postedAt.store (nowMs());

    // Without an event in flight the next write must try again.
    if (! postEvent())
        asyncPosted.exchange (0);
}

bool MVControlManager::postEvent()
{
    MVEvent* event = eventManager != nullptr ? eventManager->allocateEvent() : nullptr;
    if (event == nullptr)
        return false;

    event->setType (controlEventValuesChanged);
    event->setTargetId (getId());
    event->setThreadCategory (threadCategoryEvent);
    event->setQueueMode (queueModeOrdered);
    eventManager->postEvents (threadCategoryEvent, 1, &event);
    return true;
}

bool MVControlManager::postIsOld() const { return nowMs() - postedAt.load() > lostAfterMs; }

int MVControlManager::handleEvent (MVEvent* event)
{
    // An event whose target has gone reaches every handler.
    if (event == nullptr || (event->getTargetId() != 0 && event->getTargetId() != getId()))
        return resultDone;

    if (event->getType() == controlEventValuesChanged)
        return processAsyncValues() ? resultDone : resultBusy;

    if (event->getType() != controlEventLoadPreset || ! event->getObjectA())
        return resultDone;

    const MVSmartPtr<MVRiffPacker> packer = event->getObjectA().castTo<MVRiffPacker>();
    if (! packer || ! packer->isClassNamed ("MVRiffPacker"))
        return resultEmptyData;

    return unpackRiff (*packer) == resultBusy ? resultBusy : resultDone;
}

int MVControlManager::unpackRiff (const MVRiffPacker& packer)
{
    const EventManagerLock lock (eventManager);
    const auto version = storedVersionCode (packer);

    if (! version || *version > currentVersionCode)
        return resultIncompatibleVersion;
    if (packer.getChunkId() != fourCC ("cmgr"))
        return resultWrongForm;

    forEachEntry ([] (Entry& entry) { entry.references.store (0); });
    allocatedCount.store (0);
    loadValues (packer);
    postUpdate();
    return resultDone;
}

void MVControlManager::loadValues (const MVRiffPacker& packer)
{
    const int count = std::min (packer.countChildren (fourCC ("cval")), numControls());
    int number = 0;

    for (int child = 0; number < count; ++child)
    {
        const MVSmartPtr<MVRiffPacker> form = packer.childAt (child);
        if (form->getChunkId() != fourCC ("cval"))
            continue;

        const int stored = childNumber<std::int32_t> (*form, fourCC ("cvid")).value_or (-1);
        const int index = stored < 0 || stored >= count ? number : stored;

        if (const auto value = childNumber<double> (*form, fourCC ("valu")))
            setControlValue (index + 1, *value);
        ++number;
    }
}

MVSmartPtr<MVRiffPacker> MVControlManager::packRiff()
{
    const EventManagerLock lock (eventManager);
    auto root = makeSmart<MVRiffPacker> (fourCC ("cmgr"));
    addVersionChunk (*root);

    forEachEntry (
        [&] (const Entry& entry)
        {
            auto form = makeSmart<MVRiffPacker> (fourCC ("cval"));
            addChunk (*form, fourCC ("cvid"), std::int32_t { entry.value.getControlId() - 1 });
            addChunk (*form, fourCC ("valu"), entry.value.getValue());
            root->addChild (form);
        });

    return root;
}

} // namespace morvanelab
