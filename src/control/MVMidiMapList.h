// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace morvanelab
{

/** What a key or a controller is mapped to. */
struct _mv_midi_map
{
    /** Control value of a controller mapping (16 bits), 0 for a key mapping. */
    std::uint64_t valueId = 0;
    /** Handler of a key mapping, 0 for a controller mapping. */
    std::uint64_t handler = 0;
    bool enabled = true;

    bool isControl (std::uint64_t id) const { return valueId == id && handler == 0; }
    bool isHandler (std::uint64_t id) const { return valueId == 0 && handler == id; }
};

class MVMidiMapReclaimer;

/** The records of one key or controller, which the audio thread walks without a lock.

    A list never changes: whoever changes the mapping makes a new list and publishes it in one step. The old one is
    handed to the reclaimer, which destroys it once no walk is under way. Publishing belongs under the owner's lock,
    walking belongs inside a ReadScope of the reclaimer or under the same lock. */
class MVMidiMapList
{
public:
    using Records = std::vector<_mv_midi_map>;

    MVMidiMapList() = default;
    ~MVMidiMapList() { delete records.load (std::memory_order_relaxed); }
    MVMidiMapList (const MVMidiMapList&) = delete;
    MVMidiMapList& operator= (const MVMidiMapList&) = delete;

    /** The published records, or null for none. */
    const Records* get() const { return records.load (std::memory_order_seq_cst); }
    bool isEmpty() const { return get() == nullptr; }
    /** A copy to be changed and published. */
    Records copy() const;
    /** Replaces the records; an empty list is kept as none. */
    void publish (Records&& fresh, MVMidiMapReclaimer& reclaimer);

private:
    std::atomic<const Records*> records { nullptr };
};

/** Keeps replaced lists until nobody can be walking them. Readers are wait-free: they count themselves in and out.
    A replaced list is destroyed when, after its replacement was published, no reader is counted; otherwise it waits
    for the next replacement or the end of the reclaimer. */
class MVMidiMapReclaimer
{
public:
    class ReadScope
    {
    public:
        explicit ReadScope (MVMidiMapReclaimer& owner) : readers (owner.readers)
        {
            readers.fetch_add (1, std::memory_order_seq_cst);
        }
        ~ReadScope() { readers.fetch_sub (1, std::memory_order_seq_cst); }
        ReadScope (const ReadScope&) = delete;
        ReadScope& operator= (const ReadScope&) = delete;

    private:
        std::atomic<int>& readers;
    };

    /** Takes a list that is no longer published. Under the owner's lock. */
    void retire (const MVMidiMapList::Records* replaced);

private:
    std::atomic<int> readers { 0 };
    std::vector<std::unique_ptr<const MVMidiMapList::Records>> retired;
};

} // namespace morvanelab
