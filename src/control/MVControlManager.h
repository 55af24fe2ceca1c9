// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/MVControlValue.h"
#include "foundation/MVEvent.h"
#include "foundation/MVEventHandler.h"
#include "foundation/MVEventManager.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace morvanelab
{

/** Event types that the control manager handles. */
enum CONTROL_EVENT_t : std::uint32_t
{
    controlEventValuesChanged = 1,
    controlEventLoadPreset = 7
};

/** The table of control values, addressed by ids from 1 up; 0 means none.

    Threads. setControlValue may be called from any thread: it takes no lock and allocates nothing, but for one
    event posted when none is in flight. flushPendingValues belongs to the audio thread, handleEvent to the event
    thread; everything else to the event and message threads, with reference counts changed by one thread at a time
    (the engine's lock). getControlValue and controlExists may be called anywhere.

    Values never move and are never freed while the manager lives: when the table shrinks and grows, the same
    objects serve again. A pointer from before a resize is stale, it names whatever the id means now, but reading
    or writing through it is safe.

    How a flush and the event thread meet. A flush leaves the telling to the event that the write posted. It raises
    flushing while it takes writes, and notifyOutstanding when it has marked a value as moved. The event thread
    clears notifyOutstanding before its pass over the table, and keeps its event for another pass if it finds either
    of them raised afterwards: so a mark that was set behind its back is seen, and none is told twice.

    An event that the event manager dropped (pool empty, manager disabled, queue flushed) does no lasting harm: a
    write, a flush or a wait posts another once the last post is a second old. */
class MVControlManager : public MVEventHandler
{
public:
    /** Ids have 16 bits. */
    static constexpr int maxControls = 65535;

    /** Registers as a handler of the event manager, which must outlive this object. It may be null: then nothing
        is posted, and only processAsyncValues and the flush bring values forward. */
    explicit MVControlManager (MVEventManager* events);
    /** A table with the same values, names and reference counts on the same event manager, without listeners. */
    MVControlManager (const MVControlManager& other);
    ~MVControlManager() override;

    MVObject* clone() const override;
    const char* className() const override { return "MVControlManager"; }
    /** Resets every value: pending writes are dropped, and each value's next update tells its listeners. */
    void reset() override;
    /** Stores the flag, which gates nothing. Switching on also forgets an event that was in flight, since the
        event manager may have been flushed in between. */
    void setActive (bool flag) override;

    /** Empties the table and gives it count values (at most maxControls), ids from 1, none in use. */
    void resizeControls (int count);
    int numControls() const { return tableSize.load (std::memory_order_acquire); }
    /** First id that is not in use, or 0 if there is none. Takes no reference: acquireControl does. */
    std::uint16_t allocateControlId() const;
    /** Takes a reference and returns the value; null for an id outside the table. */
    MVControlValue* acquireControl (int valueId);
    /** Gives a reference back. The last one recycles the value: no listeners, no name, 0.5 after the next update. */
    void releaseControl (int valueId);
    /** Whether the id is in use. */
    bool controlExists (int valueId) const;
    /** The current value, 0.0 for an id that is not in use. */
    double getControlValue (int valueId) const;
    /** Writes a value; readers see it after the next update. Values outside 0 to 1 are not rejected: the fixed
        point saturates, and a not-a-number writes 0. An id outside the table is ignored. Returns true. */
    bool setControlValue (int valueId, double value);

    /** False for an id outside the table. A pair that is there already is not added again. */
    bool addControlCallback (int valueId, MVControlCallback function, void* context);
    /** False if it was not found. When it returns, the callback is not running and will not run again, so it must
        not be called with a lock that a callback waits for. */
    bool removeControlCallback (int valueId, MVControlCallback function, void* context);
    void setAllNotifyEnabled (bool flag);
    /** Ids in use. */
    int getAllocatedCount() const { return allocatedCount.load (std::memory_order_relaxed); }

    /** Updates every value and tells the listeners. True when no write is pending any more and no flush is under
        way. Event thread. */
    bool processAsyncValues();
    /** Makes pending writes current without telling anyone; listeners hear of it from the event thread. Takes no
        lock and allocates nothing (but for the one event in place of one that was lost). Audio thread, at the end
        of a block. */
    void flushPendingValues();
    /** Whether written values wait to be made current. */
    bool hasPendingValues() const { return totalPending.load (std::memory_order_acquire) > 0; }
    /** Waits for the event thread to make every written value current, at most so long; whether it did. Not for
        the audio thread in real time. */
    bool waitForPendingValues (int milliseconds);

    /** Values changed: resultDone, or resultBusy while writes are pending. Load preset, with a chunk tree as
        objectA: resultEmptyData if it is something else, resultBusy if the load said so, else resultDone. */
    int handleEvent (MVEvent* event) override;
    void handleThreadMsg (std::uint32_t) override {}

    /** Loads a 'cmgr' tree under the event manager's lock: clears all reference counts, writes the values and
        posts an update. resultIncompatibleVersion without a version up to 1.4.0, resultWrongForm for another
        tree, else resultDone. */
    int unpackRiff (const MVRiffPacker& packer);
    /** A 'cmgr' tree of every value in table order, under the event manager's lock. */
    MVSmartPtr<MVRiffPacker> packRiff();

private:
    static constexpr int chunkSize = 128;
    static constexpr int maxChunks = maxControls / chunkSize + 1;

    struct Entry
    {
        MVControlValue value;
        std::atomic<int> references { 0 };
    };
    using Chunk = std::array<Entry, chunkSize>;

    /** The entry at an index below the table's largest size so far. */
    Entry& entryAt (int index) const;
    /** The entry of an id, or null outside the table. */
    Entry* entryOf (int valueId) const;
    /** The entry of an id that is in use, or null. */
    Entry* entryInUse (int valueId) const;
    template <typename Function>
    void forEachEntry (Function&& function);
    void ensureChunks (int count);
    /** Posts a values-changed event, unless one is in flight. */
    void requestUpdate();
    void postUpdate();
    bool postEvent();
    bool postIsOld() const;
    void loadValues (const MVRiffPacker& packer);

    std::array<std::atomic<Chunk*>, maxChunks> chunks {};
    std::atomic<int> tableSize { 0 };
    MVEventManager* eventManager;
    std::atomic<int> asyncPosted { 0 };
    /** Steady clock, milliseconds. */
    std::atomic<std::int64_t> postedAt { 0 };
    std::atomic<int> totalPending { 0 };
    std::atomic<bool> flushing { false };
    std::atomic<bool> notifyOutstanding { false };
    std::atomic<int> allocatedCount { 0 };
};

} // namespace morvanelab
